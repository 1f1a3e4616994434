#include <gtest/gtest.h>

#include "runtime/vek/Exception.h"
#include "runtime/vek/LinkQueue.h"

#include "tests/runtime/support/TimeQueue.h"

namespace {

using RuntimeTest::Indexes;
using RuntimeTest::indexesOf;
using RuntimeTest::refuses;
using RuntimeTest::TimeEntry;
using RuntimeTest::TimeQueue;
using RuntimeTest::Times;
using RuntimeTest::timesOf;
using Vek::LinkQueueMetadata;

constexpr char kFull[]{"linkqueue index space full"};
constexpr std::uint32_t kLast{4294967295};

class LinkQueue : public testing::Test {
 protected:
  ~LinkQueue() override {
    queue.clear();
    EXPECT_EQ(TimeEntry::alive, 0);
  }

  /// Appends these times.
  void enq(Times const& times) {
    for (double const time : times)
      queue.enq(time);
  }
  /// An empty queue whose next index is `index`, however it came there.
  void startAt(std::uint32_t index) { queue.metadataIs({index, index}); }

  TimeQueue queue;
};

TEST_F(LinkQueue, IsEmptyAtFirst) {
  EXPECT_EQ(queue.count(), 0U);
  EXPECT_EQ(queue.version(), 0U);
  EXPECT_EQ(queue.head(), nullptr);
  EXPECT_EQ(queue.tail(), nullptr);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 0}));
}

TEST_F(LinkQueue, NumbersItsEntriesFromZero) {
  enq({10, 20, 30});
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 1, 2}));
  EXPECT_EQ(timesOf(queue), (Times{10, 20, 30}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 3}));
  EXPECT_EQ(queue.head()->value(), 10);
  EXPECT_EQ(queue.tail()->value(), 30);
  EXPECT_EQ(queue.count(), 3U);
}

TEST_F(LinkQueue, OnlyEntryIsHeadAndTail) {
  enq({10});
  EXPECT_EQ(queue.head(), queue.tail());
  EXPECT_EQ(queue.head()->vek_index(), 0U);
}

TEST_F(LinkQueue, VersionGrowsByOneWithEveryAppendAndEveryRemoval) {
  enq({10, 20, 30, 40});
  EXPECT_EQ(queue.version(), 4U);
  queue.deq();
  EXPECT_EQ(queue.version(), 5U);
  queue.del(2);
  EXPECT_EQ(queue.version(), 6U);
  queue.clear();
  EXPECT_EQ(queue.version(), 8U);
  queue.deq();
  queue.del(7);
  queue.find(7);
  EXPECT_EQ(queue.version(), 8U) << "what changes nothing does not count";
}

TEST_F(LinkQueue, DeqYieldsTheOldestFirst) {
  enq({10, 20, 30});
  EXPECT_EQ(queue.deq(), 10);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{1, 3}));
  EXPECT_EQ(queue.deq(), 20);
  EXPECT_EQ(queue.deq(), 30);
  EXPECT_EQ(queue.count(), 0U);
  EXPECT_EQ(queue.head(), nullptr);
  EXPECT_EQ(queue.tail(), nullptr);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{3, 3}));
}

TEST_F(LinkQueue, DeqWhileRemovesFromTheHeadToTheFirstThatStays) {
  enq({10, 20, 30, 5});
  queue.deqWhile([](double time) { return time < 25; });
  EXPECT_EQ(indexesOf(queue), (Indexes{2, 3})) << "what stands behind one that stays stays as well";
  EXPECT_EQ(queue.headValue(), 30);
  EXPECT_EQ(queue.head()->vek_index(), 2U);
  EXPECT_EQ(queue.tail()->vek_index(), 3U);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{2, 4}));
  EXPECT_EQ(queue.count(), 2U);
  EXPECT_EQ(queue.version(), 6U);
  enq({40});
  EXPECT_EQ(indexesOf(queue), (Indexes{2, 3, 4}));
}

TEST_F(LinkQueue, DeqWhileMayRemoveNothingOrAll) {
  queue.deqWhile([](double) { return true; });
  EXPECT_EQ(queue.version(), 0U);
  enq({10, 20, 30});
  queue.deqWhile([](double) { return false; });
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 1, 2}));
  EXPECT_EQ(queue.version(), 3U);
  queue.deqWhile([](double) { return true; });
  EXPECT_EQ(queue.head(), nullptr);
  EXPECT_EQ(queue.tail(), nullptr);
  EXPECT_EQ(queue.headValue(), 0);
  EXPECT_EQ(queue.count(), 0U);
  EXPECT_EQ(queue.version(), 6U);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{3, 3}));
  EXPECT_EQ(TimeEntry::alive, 0);
}

TEST_F(LinkQueue, DeqWhileRaisesANextIndexThatLags) {
  enq({10, 20, 30});
  queue.metadataIs({0, 1});
  queue.deqWhile([](double time) { return time < 15; });
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{1, 3}));
}

TEST_F(LinkQueue, DeqWhileThatEmptiesRaisesANextIndexThatLagsAsOneByOne) {
  enq({10, 20});
  queue.metadataIs({0, 1});
  queue.deqWhile([](double) { return true; });
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{2, 2}));
  enq({30});
  queue.metadataIs({2, 1});
  queue.deqWhile([](double) { return true; });
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{1, 1})) << "the only entry leaves none behind";
}

TEST_F(LinkQueue, DeqWhileThatFailsHasRemovedNothing) {
  enq({10, 20, 30});
  EXPECT_THROW(queue.deqWhile([](double time) { return time < 15 ? true : throw time; }), double);
  EXPECT_EQ(timesOf(queue), (Times{10, 20, 30}));
  EXPECT_EQ(queue.version(), 3U);
}

TEST_F(LinkQueue, DelTailRemovesTheNewest) {
  EXPECT_EQ(queue.delTail(), 0);
  enq({10, 20, 30});
  EXPECT_EQ(queue.delTail(), 30);
  EXPECT_EQ(queue.tail()->value(), 20);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 3}));
  EXPECT_EQ(queue.delTail(), 20);
  EXPECT_EQ(queue.delTail(), 10);
  EXPECT_EQ(queue.head(), nullptr);
  EXPECT_EQ(queue.version(), 6U);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{3, 3}));
}

TEST_F(LinkQueue, NextLeadsFromTheHeadToTheTail) {
  enq({10, 20, 30});
  Times times;
  for (auto const* entry = queue.head(); entry != nullptr; entry = queue.next(*entry))
    times.push_back(entry->value());
  EXPECT_EQ(times, (Times{10, 20, 30}));
}

// The next index of a queue may be set to one that an entry has already.
TEST_F(LinkQueue, OfTwoEntriesOfOneIndexTheOlderIsFound) {
  startAt(4294967294U);
  enq({10, 20, 30});
  queue.metadataIs({4294967294U, 4294967294U});
  enq({40});
  EXPECT_EQ(indexesOf(queue), (Indexes{4294967294U, 4294967295U, 0, 4294967294U}));
  EXPECT_EQ(queue.find(4294967294U)->value(), 10);
  EXPECT_EQ(queue.delTail(), 40) << "by its place, not by its index";
  queue.metadataIs({4294967294U, 4294967294U});
  enq({40});
  EXPECT_EQ(queue.del(4294967294U), 10);
  EXPECT_EQ(queue.find(4294967294U)->value(), 40);
}

TEST_F(LinkQueue, DeqOfAnEmptyQueueYieldsZeroAndChangesNothing) {
  startAt(5);
  EXPECT_EQ(queue.deq(), 0.0);
  EXPECT_EQ(queue.count(), 0U);
  EXPECT_EQ(queue.version(), 0U);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{5, 5}));
}

TEST_F(LinkQueue, IndexesAreNotStartedAnewWhenTheQueueWasEmptied) {
  enq({0, 1, 2, 3, 4, 5, 6, 7});
  queue.clear();
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{8, 8}));
  enq({80});
  EXPECT_EQ(indexesOf(queue), (Indexes{8}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{8, 9}));
}

TEST_F(LinkQueue, FindsEntriesAtTheHeadAtTheTailAndBetween) {
  enq({10, 20, 30, 40});
  EXPECT_EQ(queue.find(0)->value(), 10);
  EXPECT_EQ(queue.find(1)->value(), 20);
  EXPECT_EQ(queue.find(2)->value(), 30);
  EXPECT_EQ(queue.find(3)->value(), 40);
  EXPECT_EQ(queue.find(4), nullptr);
  queue.del(2);
  EXPECT_EQ(queue.find(2), nullptr);
  queue.clear();
  EXPECT_EQ(queue.find(0), nullptr);
}

TEST_F(LinkQueue, DelYieldsTheTimeOfTheEntryRemoved) {
  enq({10, 20, 30, 40});
  EXPECT_EQ(queue.del(1), 20);
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 2, 3}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 4}));
  EXPECT_EQ(queue.del(0), 10);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{2, 4}));
  EXPECT_EQ(queue.count(), 2U);
}

TEST_F(LinkQueue, DelOfTheTailMakesItsPredecessorTheTail) {
  enq({10, 20, 30});
  EXPECT_EQ(queue.del(2), 30);
  EXPECT_EQ(queue.tail()->vek_index(), 1U);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 3}));
  enq({40});
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 1, 3})) << "an index is not given twice";
  EXPECT_EQ(queue.del(3), 40);
  EXPECT_EQ(queue.del(1), 20);
  EXPECT_EQ(queue.del(0), 10);
  EXPECT_EQ(queue.tail(), nullptr);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{4, 4}));
}

TEST_F(LinkQueue, DelOfAnAbsentIndexYieldsZeroAndChangesNothing) {
  enq({10, 20});
  EXPECT_EQ(queue.del(2), 0.0);
  EXPECT_EQ(queue.count(), 2U);
  EXPECT_EQ(queue.version(), 2U);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 2}));
}

TEST_F(LinkQueue, HoldsOneReferenceOnEachEntry) {
  enq({10, 20});
  Vek::Ptr<TimeEntry> const entry{queue.head()};
  EXPECT_EQ(entry->referenceCount(), 2U);
  queue.deq();
  EXPECT_EQ(entry->referenceCount(), 1U);
  EXPECT_EQ(TimeEntry::alive, 2);
  EXPECT_EQ(queue.newMember(9, 90)->referenceCount(), 2U);
}

TEST_F(LinkQueue, EndOfTheQueueReleasesItsEntries) {
  {
    TimeQueue other;
    other.enq(1);
    other.enq(2);
    EXPECT_EQ(TimeEntry::alive, 2);
  }
  EXPECT_EQ(TimeEntry::alive, 0);
}

// ---- the next index

TEST_F(LinkQueue, MetadataIsOverwritesBothFields) {
  enq({10});
  queue.metadataIs({7, 9});
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{7, 9}));
  EXPECT_NE(queue.metadata(), (LinkQueueMetadata{7, 8}));
  EXPECT_NE(queue.metadata(), (LinkQueueMetadata{6, 9}));
}

TEST_F(LinkQueue, AppendTakesTheNextIndexThatWasSet) {
  enq({10});
  queue.metadataIs({0, 100});
  enq({20});
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 100}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 101}));
}

TEST_F(LinkQueue, NextIndexThatLagsIsRaisedToTheTailsSuccessor) {
  startAt(5);
  enq({10, 20});
  for (std::uint32_t const lagging : {0U, 5U, 6U}) {
    queue.metadataIs({5, lagging});
    std::uint32_t const tail = queue.tail()->vek_index();
    enq({30});
    EXPECT_EQ(queue.tail()->vek_index(), tail + 1);
    EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{5, tail + 2}));
  }
}

TEST_F(LinkQueue, RemovalOfTheHeadRaisesANextIndexThatLags) {
  enq({10, 20, 30});
  queue.metadataIs({0, 1});
  queue.deq();
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{1, 3}));
}

TEST_F(LinkQueue, RemovalOfTheHeadLeavesANextIndexThatIsAhead) {
  enq({10, 20, 30});
  queue.metadataIs({0, 50});
  queue.deq();
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{1, 50}));
  queue.clear();
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{50, 50}));
}

// As the removal of one after the other does; that of the last one raises nothing.
TEST_F(LinkQueue, ClearingRaisesANextIndexThatLags) {
  for (std::uint32_t const lagging : {0U, 1U, 2U}) {
    startAt(0);
    enq({10, 20, 30});
    queue.metadataIs({0, lagging});
    queue.clear();
    EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{3, 3})) << lagging;
  }
  startAt(5);
  enq({10});
  queue.metadataIs({5, 4});
  queue.clear();
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{4, 4}));
}

TEST_F(LinkQueue, RemovalInsideLeavesTheMetadataAlone) {
  enq({10, 20, 30});
  queue.metadataIs({77, 1});
  queue.del(1);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{77, 1}));
}

// ---- the wrap of the index

TEST_F(LinkQueue, IndexWrapsToZero) {
  startAt(kLast - 1);
  enq({10, 20, 30, 40});
  EXPECT_EQ(indexesOf(queue), (Indexes{kLast - 1, kLast, 0, 1}));
  EXPECT_EQ(timesOf(queue), (Times{10, 20, 30, 40}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{kLast - 1, 2}));
  EXPECT_EQ(queue.find(0)->value(), 30);
  EXPECT_EQ(queue.deq(), 10);
  EXPECT_EQ(queue.deq(), 20);
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 2}));
}

TEST_F(LinkQueue, NextIndexThatLagsBehindTheLastIndexWraps) {
  startAt(kLast);
  enq({10});
  queue.metadataIs({kLast, 3});
  enq({20});
  EXPECT_EQ(indexesOf(queue), (Indexes{kLast, 0}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{kLast, 1}));
}

// ---- the index space is full when the next entry but one would take the head's index

TEST_F(LinkQueue, AppendThatWouldReachTheHeadsIndexIsRefused) {
  enq({10});
  queue.metadataIs({0, kLast});
  EXPECT_TRUE(refuses<Vek::RangeException>(kFull, [&] { queue.enq(20); }));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, kLast}));
  EXPECT_EQ(queue.count(), 1U);
  EXPECT_EQ(queue.version(), 1U);
  EXPECT_EQ(TimeEntry::alive, 1);
  EXPECT_EQ(indexesOf(queue), (Indexes{0}));
}

TEST_F(LinkQueue, AppendThatIsRefusedHasSettledTheNextIndex) {
  enq({10});
  queue.metadataIs({0, kLast - 1});
  enq({20});
  queue.metadataIs({0, 3});
  EXPECT_TRUE(refuses<Vek::RangeException>(kFull, [&] { queue.enq(30); }));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, kLast}));
  EXPECT_EQ(queue.count(), 2U);
  EXPECT_EQ(queue.version(), 2U);
}

TEST_F(LinkQueue, FullQueueTakesEntriesAgainOnceItsHeadWasRemoved) {
  startAt(8);
  enq({10});
  queue.metadataIs({8, kLast});
  enq({20, 30});
  queue.metadataIs({8, 6});
  enq({40});
  ASSERT_EQ(indexesOf(queue), (Indexes{8, kLast, 0, 6}));
  EXPECT_TRUE(refuses<Vek::RangeException>(kFull, [&] { queue.enq(50); }));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{8, 7}));
  EXPECT_EQ(queue.deq(), 10);
  enq({50});
  EXPECT_EQ(indexesOf(queue), (Indexes{kLast, 0, 6, 7}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{kLast, 8}));
}

TEST_F(LinkQueue, EmptyQueueIsNeverFull) {
  queue.metadataIs({8, 7});
  enq({10});
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{7, 8}));
}

}  // namespace
