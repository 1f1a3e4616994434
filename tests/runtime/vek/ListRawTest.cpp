#include <algorithm>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "runtime/vek/ListRaw.h"

namespace {

using Vek::ListRaw;

struct Item : ListRaw<Item>::Link {
  explicit Item(int number = 0) : name{number} {}
  int name;
};

using List = ListRaw<Item>;
using Walk = Vek::SnapshotIterator<Item>;
using Names = std::vector<int>;

class ListRawTest : public testing::Test {
 protected:
  ListRawTest() {
    for (Item* item : {&a, &b, &c, &d})
      list->append(*item);
  }

  /// Walks the list; `act` runs at each member.
  Names walked(std::function<void(Item&)> const& act = {}) {
    Names names;
    Walk walk{*list};
    while (Item* const item = walk.next()) {
      names.push_back(item->name);
      if (act) act(*item);
    }
    return names;
  }

  Item a{1}, b{2}, c{3}, d{4}, late{5};
  std::optional<List> list{std::in_place};
};

TEST_F(ListRawTest, IsWalkedInOrderOfInsertion) {
  EXPECT_EQ(walked(), (Names{1, 2, 3, 4}));
  EXPECT_EQ(list->front(), &a);
  EXPECT_FALSE(list->empty());
}

TEST_F(ListRawTest, EmptyListHasNoFirst) {
  List const empty;
  EXPECT_TRUE(empty.empty());
  EXPECT_EQ(empty.front(), nullptr);
}

TEST_F(ListRawTest, MembersAreRemovedFromAnywhere) {
  list->remove(b);
  EXPECT_EQ(walked(), (Names{1, 3, 4}));
  list->remove(a);
  EXPECT_EQ(walked(), (Names{3, 4}));
  list->remove(d);
  EXPECT_EQ(walked(), (Names{3}));
  list->append(b);
  EXPECT_EQ(walked(), (Names{3, 2}));
  list->remove(c);
  list->remove(b);
  EXPECT_TRUE(list->empty());
  list->append(late);
  EXPECT_EQ(walked(), (Names{5}));
}

TEST_F(ListRawTest, MemberKnowsWhetherItIsInAList) {
  EXPECT_TRUE(a.linked());
  EXPECT_FALSE(late.linked());
  list->remove(a);
  EXPECT_FALSE(a.linked());
  list->clear();
  EXPECT_FALSE(b.linked());
  EXPECT_TRUE(list->empty());
}

TEST_F(ListRawTest, EndOfTheListSetsItsMembersFree) {
  list.reset();
  EXPECT_FALSE(a.linked());
  EXPECT_FALSE(d.linked());
  List other;
  other.append(a);
  EXPECT_EQ(other.front(), &a);
}

TEST_F(ListRawTest, WalkSkipsAMemberRemovedBeforeItsTurn) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item == &a) list->remove(b);
            }),
            (Names{1, 3, 4}));
}

TEST_F(ListRawTest, WalkSkipsSeveralMembersRemovedInFrontOfIt) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item != &a) return;
              list->remove(c);
              list->remove(b);
              list->remove(d);
            }),
            (Names{1}));
}

TEST_F(ListRawTest, WalkGoesOnWhenItsMemberIsRemoved) {
  EXPECT_EQ(walked([&](Item& item) { list->remove(item); }), (Names{1, 2, 3, 4}));
  EXPECT_TRUE(list->empty());
}

TEST_F(ListRawTest, WalkGoesOnWhenItsMemberAndTheNextAreRemoved) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item != &b) return;
              list->remove(b);
              list->remove(c);
            }),
            (Names{1, 2, 4}));
}

TEST_F(ListRawTest, WalkIsNotDisturbedByARemovalBehindIt) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item == &c) list->remove(a);
            }),
            (Names{1, 2, 3, 4}));
}

TEST_F(ListRawTest, WalkSeesNobodyWhoComesLater) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item == &a || &item == &d) {
                if (late.linked()) list->remove(late);
                list->append(late);
              }
            }),
            (Names{1, 2, 3, 4}));
  EXPECT_EQ(walked(), (Names{1, 2, 3, 4, 5}));
}

TEST_F(ListRawTest, MemberThatLeavesAndComesBackIsNewToTheWalk) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item == &a) {
                list->remove(b);
                list->append(b);
              }
              if (&item == &c) {
                list->remove(c);
                list->append(c);
              }
            }),
            (Names{1, 3, 4}));
  EXPECT_EQ(walked(), (Names{1, 4, 2, 3}));
}

TEST_F(ListRawTest, WalkEndsWhereTheListEndedThoughItsLastMemberLeft) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item != &b) return;
              list->append(late);
              list->remove(d);
            }),
            (Names{1, 2, 3}));
  EXPECT_EQ(walked(), (Names{1, 2, 3, 5}));
}

TEST_F(ListRawTest, WalkEndsWhereTheListEndedThoughTheLastTwoLeftAndCameBack) {
  EXPECT_EQ(walked([&](Item& item) {
              if (&item != &a) return;
              for (Item* last : {&d, &c}) {
                list->remove(*last);
                list->append(*last);
              }
            }),
            (Names{1, 2}));
}

TEST_F(ListRawTest, WalkOverAnEmptiedListSeesNobodyWhoComesLater) {
  EXPECT_EQ(walked([&](Item&) {
              while (!list->empty())
                list->remove(*list->front());
              list->append(late);
            }),
            (Names{1}));
}

TEST_F(ListRawTest, WalksOverSeveralListsNest) {
  List other;
  other.append(late);
  Walk outer{*list};
  ASSERT_EQ(outer.next(), &a);
  {
    Walk inner{other};
    list->remove(b);
    other.clear();
    EXPECT_EQ(inner.next(), nullptr);
  }
  EXPECT_EQ(outer.next(), &c);
}

TEST_F(ListRawTest, WalkEndsWhenTheListIsClearedOrDestroyed) {
  for (bool const destroy : {false, true}) {
    Walk walk{*list};
    ASSERT_EQ(walk.next(), &a);
    destroy ? list.reset() : list->clear();
    EXPECT_EQ(walk.next(), nullptr);
    EXPECT_EQ(walk.current(), nullptr);
    if (destroy) continue;
    for (Item* item : {&a, &b, &c, &d})
      list->append(*item);
    EXPECT_EQ(walk.next(), nullptr) << "it does not come back to life";
  }
}

TEST_F(ListRawTest, CurrentIsEmptyOnceTheMemberHasLeft) {
  Walk walk{*list};
  EXPECT_EQ(walk.current(), nullptr);
  walk.next();
  EXPECT_EQ(walk.current(), &a);
  list->remove(b);
  EXPECT_EQ(walk.current(), &a);
  list->remove(a);
  EXPECT_EQ(walk.current(), nullptr);
  list->append(a);
  EXPECT_EQ(walk.current(), nullptr) << "not even when it comes back";
  EXPECT_EQ(walk.next(), &c);
  EXPECT_EQ(walk.next(), &d);
  EXPECT_EQ(walk.next(), nullptr);
  EXPECT_EQ(walk.current(), nullptr);
  EXPECT_EQ(walk.next(), nullptr);
}

TEST_F(ListRawTest, NestedWalksAllHoldUnderARemoval) {
  Walk outer{*list};
  ASSERT_EQ(outer.next(), &a);
  {
    Walk inner{*list};
    ASSERT_EQ(inner.next(), &a);
    ASSERT_EQ(inner.next(), &b);
    list->remove(a);
    list->remove(b);
    list->remove(c);
    EXPECT_EQ(outer.current(), nullptr);
    EXPECT_EQ(inner.current(), nullptr);
    EXPECT_EQ(inner.next(), &d);
  }
  EXPECT_EQ(outer.next(), &d);
  EXPECT_EQ(outer.next(), nullptr);
}

TEST_F(ListRawTest, OuterWalkIsKnownAgainAfterTheInnerOne) {
  Walk outer{*list};
  outer.next();
  { Walk const inner{*list}; }
  list->remove(b);
  EXPECT_EQ(outer.next(), &c);
}

// Walks three deep at each member, with removals and insertions at random between the steps. What
// was in the list when a walk began, and still is, must come once and in order; nothing else may.
class RandomWalks {
 public:
  int steps{0};

  void walk(int depth) {
    std::vector<Item*> expected = present_;
    snapshots_.push_back(&expected);
    Walk walk{list_};
    while (true) {
      ++steps;
      change();
      Item* const item = walk.next();
      if (expected.empty()) {
        EXPECT_EQ(item, nullptr);
        break;
      }
      EXPECT_EQ(item, expected.front());
      if (item != expected.front()) break;
      expected.erase(expected.begin());
      change();
      EXPECT_EQ(walk.current(), isPresentSince(*item) ? item : nullptr);
      if (depth > 0 && chance(4)) this->walk(depth - 1);
    }
    snapshots_.pop_back();
  }

 private:
  bool chance(unsigned oneIn) { return random_() % oneIn == 0; }

  // Insertions are counted for each item, to tell one that stayed from one that came back.
  bool isPresentSince(Item const& item) const {
    return item.linked() && removedSinceStep_.count(&item) == 0;
  }

  void change() {
    removedSinceStep_.clear();
    for (int i = 0; i < 2; ++i) {
      if (chance(3)) {
        Item& item = items_[random_() % items_.size()];
        if (item.linked()) {
          list_.remove(item);
          removedSinceStep_.insert(&item);
          std::erase(present_, &item);
          for (auto* snapshot : snapshots_)
            std::erase(*snapshot, &item);
        } else {
          list_.append(item);
          present_.push_back(&item);
        }
      }
    }
  }

  std::mt19937 random_{20240229};  // NOLINT: the same run every time
  std::deque<Item> items_ = std::deque<Item>(12);
  List list_;
  std::vector<Item*> present_;
  std::vector<std::vector<Item*>*> snapshots_;
  std::set<Item const*> removedSinceStep_;
};

TEST(ListRawRandom, EveryMemberThatStaysIsVisitedOnceByEveryWalk) {
  RandomWalks walks;
  while (walks.steps < 100000 && !testing::Test::HasFailure())
    walks.walk(2);
}

}  // namespace
