#include <array>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "runtime/vek/LinkQueue.h"
#include "runtime/vek/Pool.h"

#include "tests/runtime/support/Tracking.h"

// Queues of entries that are used again instead of being destroyed.

namespace {

class Stamp final : public Vek::LinkQueueEntry<double> {
 public:
  static constexpr bool kRecycled{true};

  Stamp(std::uint32_t index, double time) : LinkQueueEntry{index, time} {}

 private:
  template <typename E, typename I, typename V>
  friend class Vek::LinkQueue;
  ~Stamp() override = default;
};

using Queue = Vek::LinkQueue<Stamp, std::uint32_t, double>;
using Held = Vek::Ptr<Stamp>;

std::set<Stamp const*> entriesOf(Queue const& queue) {
  std::set<Stamp const*> entries;
  for (auto walk = queue.iterator(); walk; ++walk)
    entries.insert(&*walk);
  return entries;
}

std::vector<std::pair<std::uint32_t, double>> contentsOf(Queue const& queue) {
  std::vector<std::pair<std::uint32_t, double>> contents;
  for (auto walk = queue.iterator(); walk; ++walk)
    contents.emplace_back(walk->vek_index(), walk->value());
  return contents;
}

void fill(Queue& queue, unsigned count, double from) {
  for (unsigned i = 0; i < count; ++i)
    queue.enq(from + i);
}

class LinkQueueRecycling : public testing::Test {
 protected:
  void SetUp() override {
    if (!Vek::Pool::pooled()) GTEST_SKIP() << "built without the pool: entries are destroyed";
  }
};

TEST_F(LinkQueueRecycling, ClearedEntriesServeTheNextAppendsOfAnyQueue) {
  Queue queue;
  fill(queue, 5, 0);
  auto const before = entriesOf(queue);
  queue.clear();
  Queue other;
  fill(other, 5, 100);
  EXPECT_EQ(entriesOf(other), before);
  EXPECT_EQ(contentsOf(other), (std::vector<std::pair<std::uint32_t, double>>{
                                   {0, 100}, {1, 101}, {2, 102}, {3, 103}, {4, 104}}));
}

TEST_F(LinkQueueRecycling, EntryRemovedAtTheHeadServesTheNextAppend) {
  Queue queue;
  fill(queue, 2, 0);
  Stamp const* const head = queue.head();
  EXPECT_EQ(queue.deq(), 0);
  queue.enq(7);
  EXPECT_EQ(queue.tail(), head);
  EXPECT_EQ(contentsOf(queue), (std::vector<std::pair<std::uint32_t, double>>{{1, 1}, {2, 7}}));
}

TEST_F(LinkQueueRecycling, EntriesThatLeaveTogetherServeTheNextAppends) {
  Queue queue;
  fill(queue, 6, 0);
  Held const held{queue.find(2)};
  auto const before = entriesOf(queue);
  queue.deqWhile([](double value) { return value < 4; });
  EXPECT_EQ(contentsOf(queue), (std::vector<std::pair<std::uint32_t, double>>{{4, 4}, {5, 5}}));
  fill(queue, 3, 10);
  EXPECT_EQ(held->value(), 2);
  auto entries = entriesOf(queue);
  EXPECT_EQ(entries.count(held.get()), 0U);
  entries.insert(held.get());
  EXPECT_EQ(entries, before);
}

TEST_F(LinkQueueRecycling, EntrySomebodyHoldsStaysAsItIs) {
  Queue queue;
  fill(queue, 3, 10);
  Held const held{queue.find(1)};
  queue.clear();
  fill(queue, 20, 50);
  EXPECT_EQ(held->vek_index(), 1U);
  EXPECT_EQ(held->value(), 11);
  EXPECT_EQ(entriesOf(queue).count(held.get()), 0U);
  EXPECT_EQ(held->referenceCount(), 1U) << "nobody else's once it was passed over";
}

TEST_F(LinkQueueRecycling, WalkThatStandsOnAClearedEntryGoesOnToTheNewOnes) {
  Queue queue;
  fill(queue, 3, 10);
  auto walk = queue.iterator();
  queue.clear();
  fill(queue, 2, 50);
  EXPECT_EQ(walk->value(), 10);
  ++walk;
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->value(), 50);
}

TEST_F(LinkQueueRecycling, WalkThatStandsOnOneOfManyThatLeftGoesOnToTheFirstThatStayed) {
  Queue queue;
  fill(queue, 6, 10);
  auto walk = queue.iterator();
  ++walk;
  queue.deqWhile([](double value) { return value < 14; });
  fill(queue, 2, 50);
  EXPECT_EQ(walk->value(), 11);
  ++walk;
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->value(), 14);
}

TEST_F(LinkQueueRecycling, EntryThatWasMarkedIsNotUsedAgain) {
  Queue queue;
  fill(queue, 1, 0);
  Stamp* const marked = queue.head();
  marked->vekMarkedForDeletionIs(true);
  queue.clear();
  fill(queue, 3, 0);
  for (auto const* const entry : entriesOf(queue))
    EXPECT_FALSE(entry->vekMarkedForDeletion());
}

TEST_F(LinkQueueRecycling, WhileObjectsAreTrackedEntriesAreMadeAndDestroyed) {
  Queue queue;
  fill(queue, 4, 0);
  queue.clear();  // there are some to be used again
  RuntimeTest::Tracking const tracked;
  Queue counted;
  fill(counted, 4, 0);
  EXPECT_EQ(tracked.live(), 4U);
  (void)counted.deq();
  EXPECT_EQ(tracked.live(), 3U);
  counted.deqWhile([](double value) { return value < 3; });
  EXPECT_EQ(tracked.live(), 1U);
  counted.clear();
  EXPECT_EQ(tracked.live(), 0U);
}

TEST_F(LinkQueueRecycling, WhileCountingIsAtomicEntriesAreMadeAndDestroyed) {
  Queue queue;
  fill(queue, 3, 0);
  Held const held{queue.head()};
  Held const next{queue.find(1)};
  Vek::VFPtrInterface::enableThreadSafePointers = true;
  queue.deqWhile([](double value) { return value < 1; });
  EXPECT_EQ(held->referenceCount(), 1U);
  queue.clear();
  EXPECT_EQ(next->referenceCount(), 1U);
  fill(queue, 3, 20);
  EXPECT_EQ(queue.headValue(), 20);
  queue.clear();
  Vek::VFPtrInterface::enableThreadSafePointers = false;
}

// Whatever is appended, removed, cleared and held: what is held never changes, and the queues hold
// what was appended to them.
TEST_F(LinkQueueRecycling, HoldsUnderARandomHistory) {
  std::mt19937 random{1};
  auto const below = [&random](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  struct Kept {
    Held entry;
    std::uint32_t index;
    double value;
  };
  std::array<Queue, 3> queues;
  std::array<std::vector<double>, 3> expected;
  std::vector<Kept> kept;
  double next = 0;
  for (unsigned step = 0; step < 20000; ++step) {
    unsigned const chosen = below(3);
    Queue& queue = queues[chosen];
    auto& values = expected[chosen];
    switch (below(9)) {
      case 8: {
        std::size_t const leave = below(4);
        double const last = values.size() <= leave ? 0 : values[values.size() - leave - 1];
        queue.deqWhile([last](double value) { return value <= last; });
        while (!values.empty() && values.front() <= last)
          values.erase(values.begin());
        break;
      }
      case 0:
        if (below(4) == 0) {
          queue.clear();
          values.clear();
        }
        break;
      case 1:
        if (values.empty()) break;
        EXPECT_EQ(queue.deq(), values.front());
        values.erase(values.begin());
        break;
      case 2:
        if (Stamp* const entry = below(2) == 0 ? queue.head() : queue.tail())
          kept.push_back({Held{entry}, entry->vek_index(), entry->value()});
        break;
      case 3:
        if (!kept.empty()) kept.erase(kept.begin() + below(static_cast<unsigned>(kept.size())));
        break;
      default:
        values.push_back(++next);
        queue.enq(next);
        break;
    }
    ASSERT_EQ(queue.count(), values.size());
    for (Kept const& one : kept) {
      ASSERT_EQ(one.entry->vek_index(), one.index);
      ASSERT_EQ(one.entry->value(), one.value);
    }
    if (step % 50 != 0) continue;
    std::size_t at = 0;
    for (auto walk = queue.iterator(); walk; ++walk, ++at)
      ASSERT_EQ(walk->value(), values.at(at));
    ASSERT_EQ(at, values.size());
  }
}

}  // namespace
