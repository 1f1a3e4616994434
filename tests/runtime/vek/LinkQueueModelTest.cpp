// The queue against a plain list of (index, time), step by step, across the wrap of the index, with
// walks under way all the time.

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "runtime/vek/LinkQueue.h"

#include "tests/runtime/support/TimeQueue.h"

namespace {

using RuntimeTest::TimeEntry;
using RuntimeTest::TimeQueue;

constexpr int kSteps{100000};
// Far enough below the wrap for it to come in the middle of the run.
constexpr std::uint32_t kStart{4294967295U - 15000};

class RandomSteps {
 public:
  RandomSteps() { queue_.metadataIs({kStart, kStart}); }

  void run() {
    for (int step = 0; step < kSteps && !testing::Test::HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      bool const filling = step % 2000 < 1000;
      switch (below(16)) {
        case 0:
        case 1:
        case 2:
        case 3:
          filling ? enq() : deq();
          break;
        case 13:
          if (below(filling ? 40 : 4) == 0) deqWhile();
          break;
        case 4:
        case 5:
          del();
          break;
        case 6:
        case 7:
          newMember();
          break;
        case 8:
          overwrite();
          break;
        case 9:
        case 10:
          beginWalk();
          break;
        case 11:
          delByWalk();
          break;
        case 12:
          if (below(300) == 0) clear();
          break;
        default:
          advance();
      }
      compare();
    }
    EXPECT_GT(finishedWalks_, 1000);
    EXPECT_LT(nextIndex_, kStart) << "the index has wrapped";
    walks_.clear();
    queue_.clear();
    EXPECT_EQ(TimeEntry::alive, 0);
  }

 private:
  struct Entry {
    std::uint32_t index;
    double time;
    int name;
  };
  using Place = std::vector<Entry>::iterator;
  struct Walk {
    TimeQueue::Iterator iterator;
    std::set<int> owed;     // entries there from the start, still there, and not yet visited
    std::set<int> visited;  // no entry twice
  };

  unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

  Place placeOf(std::uint32_t index) {
    return std::find_if(model_.begin(), model_.end(),
                        [index](Entry const& entry) { return entry.index == index; });
  }
  std::uint32_t randomIndex() {
    if (model_.empty() || below(8) == 0) return nextIndex_ + below(3);
    return model_[below(static_cast<unsigned>(model_.size()))].index;
  }

  Entry made(std::uint32_t index) {
    ++lastName_;
    return {index, lastName_ + 0.5, lastName_};
  }
  void erase(Place place) {
    for (Walk& walk : walks_)
      walk.owed.erase(place->name);
    bool const wasHead = place == model_.begin();
    model_.erase(place);
    ++version_;
    if (wasHead && !model_.empty() && nextIndex_ <= model_.back().index)
      nextIndex_ = model_.back().index + 1;
  }

  void enq() {
    // The number is compared as such, also across the wrap.
    bool const lags = !model_.empty() && model_.back().index >= nextIndex_;
    Entry const entry = made(lags ? model_.back().index + 1 : nextIndex_);
    queue_.enq(entry.time);
    model_.push_back(entry);
    nextIndex_ = entry.index + 1;
    ++version_;
  }

  void deq() {
    double const expected = model_.empty() ? 0.0 : model_.front().time;
    EXPECT_EQ(queue_.deq(), expected);
    if (!model_.empty()) erase(model_.begin());
  }

  void deqWhile() {
    unsigned const wanted = below(20);
    unsigned asked = 0;
    queue_.deqWhile([&](double time) {
      EXPECT_EQ(time, model_.at(asked).time) << "asked once of each, from the head on";
      return asked++ < wanted;
    });
    for (unsigned i = 0; i < wanted && !model_.empty(); ++i)
      erase(model_.begin());
  }

  void del() {
    std::uint32_t const index = randomIndex();
    Place const place = placeOf(index);
    EXPECT_EQ(queue_.del(index), place == model_.end() ? 0.0 : place->time);
    if (place != model_.end()) erase(place);
  }

  void newMember() {
    if (model_.empty()) return;
    Entry entry = made(0);
    Place place = model_.end();
    switch (below(3)) {
      case 0:  // behind the tail
        entry.index = model_.back().index + 1 + below(3);
        nextIndex_ = entry.index + 1;
        break;
      case 1:  // before the head; while nobody walks, who might have been past it
        if (!walks_.empty()) return;
        entry.index = model_.front().index - 1 - below(3);
        place = model_.begin();
        break;
      default:  // into a gap, if there is one where we look
        place = model_.begin() + below(static_cast<unsigned>(model_.size()));
        if (place == model_.begin() || place->index - (place - 1)->index < 2) return;
        entry.index = place->index - 1;
    }
    EXPECT_EQ(queue_.newMember(entry.index, entry.time)->value(), entry.time);
    model_.insert(place, entry);
    ++version_;
  }

  void overwrite() {
    if (model_.empty()) return;
    Entry& entry = model_[below(static_cast<unsigned>(model_.size()))];
    entry.time += 1000000;
    queue_.valueIs(entry.index, entry.time);
  }

  void clear() {
    queue_.clear();
    while (!model_.empty())
      erase(model_.begin());
  }

  void beginWalk() {
    if (walks_.size() >= 4) return;
    Walk walk{queue_.iterator(), {}, {}};
    for (Entry const& entry : model_)
      walk.owed.insert(entry.name);
    walks_.push_back(std::move(walk));
    visit(walks_.back());
  }

  void visit(Walk& walk) {
    if (!walk.iterator) return;
    Place const place = placeOf(walk.iterator->vek_index());
    ASSERT_NE(place, model_.end()) << "a walk came to an entry that is none";
    EXPECT_EQ(walk.iterator->value(), place->time);
    walk.owed.erase(place->name);
    EXPECT_TRUE(walk.visited.insert(place->name).second) << "an entry was repeated";
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
    EXPECT_TRUE(walk.owed.empty()) << "an entry was skipped";
    ++finishedWalks_;
    walks_.erase(walks_.begin() + static_cast<std::ptrdiff_t>(chosen));
  }

  void delByWalk() {
    if (walks_.empty()) return;
    Walk& walk = walks_[below(static_cast<unsigned>(walks_.size()))];
    if (!walk.iterator) return;
    Place const place = placeOf(walk.iterator->vek_index());
    bool const isThere = place != model_.end() && queue_.find(place->index) == &*walk.iterator;
    queue_.del(walk.iterator);
    if (isThere) erase(place);
    visit(walk);
  }

  void compare() {
    ASSERT_EQ(queue_.count(), model_.size());
    ASSERT_EQ(queue_.version(), version_);
    ASSERT_EQ(queue_.metadata().nextIndex, nextIndex_);
    ASSERT_EQ(queue_.metadata().headIndex, model_.empty() ? nextIndex_ : model_.front().index);
    TimeQueue::Iterator walk = queue_.iterator();
    for (Entry const& entry : model_) {
      ASSERT_TRUE(walk);
      ASSERT_EQ(walk->vek_index(), entry.index);
      ASSERT_EQ(walk->value(), entry.time);
      ++walk;
    }
    ASSERT_FALSE(walk);
    ASSERT_EQ(queue_.head() == nullptr, model_.empty());
    if (!model_.empty()) {
      ASSERT_EQ(queue_.tail()->vek_index(), model_.back().index);
    }
  }

  std::mt19937 random_{1103515245};  // NOLINT: the same run every time
  TimeQueue queue_;
  std::vector<Entry> model_;
  std::uint32_t nextIndex_{kStart};
  std::uint32_t version_{0};
  std::vector<Walk> walks_;
  int lastName_{0};
  int finishedWalks_{0};
};

TEST(LinkQueueModel, AgreesWithAPlainListAndWalksSkipAndRepeatNothing) {
  RandomSteps{}.run();
}

}  // namespace
