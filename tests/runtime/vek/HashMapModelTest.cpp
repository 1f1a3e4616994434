// A keyed collection against an ordered map of the standard library, step by step, with walks under
// way all the time.

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "runtime/vek/HashMap.h"

#include "tests/runtime/support/KeyedEntry.h"

namespace {

using RuntimeTest::ChosenKey;
using RuntimeTest::KeyedEntry;
using RuntimeTest::KeyedMap;

constexpr int kSteps{100000};

/// The place of a key in a walk: its bit-reversed hash, then the key.
using Place = std::pair<std::uint32_t, ChosenKey>;

Place placeOf(ChosenKey const& key) {
  return {RuntimeTest::reversed(key.hash()), key};
}

class RandomSteps {
 public:
  void run() {
    for (int step = 0; step < kSteps && !testing::Test::HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      // The number of members swings between none and some hundreds, over several sizes of table.
      bool const filling = step % 20000 < 12000;
      switch (below(16)) {
        case 0:
        case 1:
        case 2:
        case 3:
          filling ? insert() : remove();
          break;
        case 4:
        case 5:
          filling ? remove() : insert();
          break;
        case 6:
        case 7:
          look();
          break;
        case 8:
          beginWalk();
          break;
        case 9:
          removeByWalk();
          break;
        case 10:
          if (below(400) == 0) clear();
          break;
        default:
          advance();
      }
      ASSERT_EQ(map_.members(), model_.size());
      if (step % 500 == 0) compare();
    }
    compare();
    EXPECT_GT(finishedWalks_, 100);
    EXPECT_GT(mostMembers_, 200U);
    map_.clear();
    walks_.clear();
    EXPECT_EQ(KeyedEntry::alive, 0);
  }

 private:
  struct Walk {
    KeyedMap::Iterator iterator;
    std::set<int> owed;  // members there from the start, still there, and not yet visited
    std::optional<Place> last;
  };

  unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

  // 700 keys of 256 hashes: keys of one hash, and hashes that differ in their high bits only.
  ChosenKey randomKey() {
    unsigned const number = below(700);
    unsigned const kind = number % 256;
    return {kind < 128 ? kind : (kind << 24U) | 5U, static_cast<int>(number)};
  }

  void forget(int member) {
    for (Walk& walk : walks_)
      walk.owed.erase(member);
  }

  void insert() {
    ChosenKey const key = randomKey();
    auto const [place, isNew] = model_.try_emplace(placeOf(key), 0);
    if (!isNew) forget(place->second);
    place->second = ++lastMember_;
    map_.newMember(Vek::make<KeyedEntry>(key, lastMember_));
    mostMembers_ = std::max(mostMembers_, model_.size());
  }

  void remove() {
    ChosenKey const key = randomKey();
    auto const removed = map_.deleteMember(key);
    auto const place = model_.find(placeOf(key));
    ASSERT_EQ(bool{removed}, place != model_.end());
    if (!removed) return;
    EXPECT_EQ(removed->value, place->second);
    forget(place->second);
    model_.erase(place);
  }

  void look() {
    ChosenKey const key = randomKey();
    KeyedEntry const* const member = map_.find(key);
    auto const place = model_.find(placeOf(key));
    ASSERT_EQ(member != nullptr, place != model_.end());
    if (member != nullptr) {
      EXPECT_EQ(member->value, place->second);
    }
  }

  void clear() {
    map_.clear();
    model_.clear();
    for (Walk& walk : walks_)
      walk.owed.clear();
  }

  void beginWalk() {
    if (walks_.size() >= 4) return;
    Walk walk{map_.iterator(), {}, {}};
    for (auto const& [place, member] : model_)
      walk.owed.insert(member);
    walks_.push_back(std::move(walk));
    visit(walks_.back());
  }

  void advance() {
    if (walks_.empty()) return;
    std::size_t const chosen = below(static_cast<unsigned>(walks_.size()));
    Walk& walk = walks_[chosen];
    if (walk.iterator) {
      ++walk.iterator;
      visit(walk);
      return;
    }
    EXPECT_TRUE(walk.owed.empty()) << "a member was skipped";
    ++finishedWalks_;
    walks_.erase(walks_.begin() + static_cast<std::ptrdiff_t>(chosen));
  }

  void visit(Walk& walk) {
    if (!walk.iterator) return;
    Place const place = placeOf(walk.iterator->fwkKey());
    EXPECT_TRUE(!walk.last || *walk.last < place) << "a member was repeated, or out of order";
    walk.last = place;
    walk.owed.erase(walk.iterator->value);
    auto const expected = model_.find(place);
    ASSERT_NE(expected, model_.end()) << "a walk came to a member that is none";
    EXPECT_EQ(walk.iterator->value, expected->second);
  }

  void removeByWalk() {
    if (walks_.empty()) return;
    Walk& walk = walks_[below(static_cast<unsigned>(walks_.size()))];
    bool const atEnd = !walk.iterator;
    auto const removed = map_.deleteMember(walk.iterator);
    if (atEnd) {
      EXPECT_FALSE(removed);
      return;
    }
    auto const place = model_.find(placeOf(walk.iterator->fwkKey()));
    bool const isMember = place != model_.end() && place->second == walk.iterator->value;
    ASSERT_EQ(bool{removed}, isMember);
    if (!isMember) return;
    forget(place->second);
    model_.erase(place);
  }

  void compare() {
    auto expected = model_.begin();
    for (KeyedEntry const& member : map_) {
      ASSERT_NE(expected, model_.end());
      EXPECT_EQ(placeOf(member.fwkKey()), expected->first);
      EXPECT_EQ(member.value, expected->second);
      ++expected;
    }
    EXPECT_EQ(expected, model_.end());
  }

  std::mt19937 random_{4294967};  // NOLINT: the same run every time
  KeyedMap map_{4};
  std::map<Place, int> model_;
  std::vector<Walk> walks_;
  int lastMember_{0};
  int finishedWalks_{0};
  std::size_t mostMembers_{0};
};

TEST(HashMapModel, AgreesWithAnOrderedMapAndWalksSkipAndRepeatNothing) {
  RandomSteps{}.run();
}

}  // namespace
