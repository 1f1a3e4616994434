// Entries that are given an index from outside, instead of the queue's next one.

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

class LinkQueueMember : public testing::Test {
 protected:
  ~LinkQueueMember() override {
    queue.clear();
    EXPECT_EQ(TimeEntry::alive, 0);
  }

  /// Appends these times to the empty queue, the first under index `first`.
  void enqFrom(std::uint32_t first, Times const& times) {
    queue.metadataIs({first, first});
    for (double const time : times)
      queue.enq(time);
  }

  TimeQueue queue;
};

TEST_F(LinkQueueMember, ValueIsOverwritesInPlace) {
  enqFrom(0, {10, 20, 30});
  TimeEntry const* const entry = queue.find(1);
  queue.valueIs(1, 25);
  EXPECT_EQ(queue.find(1), entry);
  EXPECT_EQ(timesOf(queue), (Times{10, 25, 30}));
  EXPECT_EQ(queue.version(), 3U);
}

TEST_F(LinkQueueMember, ValueIsMakesAnEntryThatIsAbsent) {
  enqFrom(0, {10, 20});
  queue.valueIs(2, 30);
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 1, 2}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 3}));
  EXPECT_EQ(queue.version(), 3U);
}

TEST_F(LinkQueueMember, NewMemberOfTheNextIndexIsAppended) {
  enqFrom(0, {10});
  auto const entry = queue.newMember(1, 20);
  EXPECT_EQ(entry->vek_index(), 1U);
  EXPECT_EQ(queue.tail(), entry.get());
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 2}));
  EXPECT_EQ(queue.version(), 2U);
  EXPECT_EQ(queue.count(), 2U);
}

TEST_F(LinkQueueMember, NewMemberOfAnEmptyQueueIsHeadAndTail) {
  auto const entry = queue.newMember(41, 20);
  EXPECT_EQ(queue.head(), entry.get());
  EXPECT_EQ(queue.tail(), entry.get());
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{41, 42}));
}

TEST_F(LinkQueueMember, NewMemberIsLinkedWhereTheOrderWantsIt) {
  enqFrom(10, {1, 2, 3, 4});
  queue.del(11);
  queue.del(12);
  queue.newMember(12, 30);
  queue.newMember(11, 20);
  EXPECT_EQ(indexesOf(queue), (Indexes{10, 11, 12, 13}));
  EXPECT_EQ(timesOf(queue), (Times{1, 20, 30, 4}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{10, 14}));
  EXPECT_EQ(queue.count(), 4U);
  EXPECT_EQ(queue.version(), 8U);
}

TEST_F(LinkQueueMember, NewMemberBeyondTheTailRaisesTheNextIndex) {
  enqFrom(0, {10});
  queue.newMember(5, 50);
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 5}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{0, 6}));
}

TEST_F(LinkQueueMember, NewMemberBeforeTheHeadBecomesTheHead) {
  enqFrom(10, {10, 20});
  auto const entry = queue.newMember(8, 5);
  EXPECT_EQ(queue.head(), entry.get());
  EXPECT_EQ(indexesOf(queue), (Indexes{8, 10, 11}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{8, 12}));
  EXPECT_EQ(queue.version(), 3U);
  EXPECT_EQ(queue.count(), 3U);
  EXPECT_EQ(queue.deq(), 5);
}

TEST_F(LinkQueueMember, NewMemberFindsItsPlaceAcrossTheWrap) {
  enqFrom(kLast - 1, {1, 2, 3, 4});
  queue.del(kLast);
  queue.del(0);
  queue.newMember(0, 30);
  queue.newMember(kLast, 20);
  queue.newMember(kLast - 3, 0.5);
  queue.newMember(4, 50);
  EXPECT_EQ(indexesOf(queue), (Indexes{kLast - 3, kLast - 1, kLast, 0, 1, 4}));
  EXPECT_EQ(timesOf(queue), (Times{0.5, 1, 20, 30, 4, 50}));
}

TEST_F(LinkQueueMember, NewMemberGoesToTheNearerEndAndToTheTailWhenBothAreAsNear) {
  enqFrom(10, {10});
  queue.newMember(10 + 0x80000000U, 20);  // as far from the tail as from the head
  EXPECT_EQ(queue.tail()->value(), 20);
  queue.newMember(11 + 0x80000000U, 30);
  EXPECT_EQ(queue.tail()->value(), 30);
  queue.newMember(9, 5);
  EXPECT_EQ(queue.head()->value(), 5);
}

TEST_F(LinkQueueMember, NextIndexComesBehindTheTailHoweverFarItIs) {
  enqFrom(10, {10});
  queue.metadataIs({10, 8});  // nearer to the head from below
  queue.newMember(8, 20);
  EXPECT_EQ(indexesOf(queue), (Indexes{10, 8}));
  EXPECT_EQ(queue.metadata(), (LinkQueueMetadata{10, 9}));
}

TEST_F(LinkQueueMember, NewMemberThatWouldFillTheIndexSpaceIsRefused) {
  enqFrom(10, {10});
  queue.metadataIs({10, 9});
  EXPECT_TRUE(refuses<Vek::RangeException>(kFull, [&] { queue.newMember(9, 20); }));
  EXPECT_EQ(queue.count(), 1U);
  EXPECT_EQ(queue.version(), 1U);
  EXPECT_EQ(TimeEntry::alive, 1);
}

TEST_F(LinkQueueMember, NewMemberOfAnIndexInUseIsRefused) {
  enqFrom(0, {10, 20});
  for (std::uint32_t const index : {0U, 1U})
    EXPECT_TRUE(refuses<Vek::NameInUseException>("linkqueue index in use",
                                                 [&] { queue.newMember(index, 5); }));
  EXPECT_EQ(timesOf(queue), (Times{10, 20}));
  EXPECT_EQ(queue.version(), 2U);
}

TEST(LinkQueueMetadata, AreEqualWhenBothIndexesAre) {
  using Vek::LinkQueueMetadata;
  EXPECT_EQ((LinkQueueMetadata{1, 2}), (LinkQueueMetadata{1, 2}));
  EXPECT_NE((LinkQueueMetadata{1, 2}), (LinkQueueMetadata{0, 2}));
  EXPECT_NE((LinkQueueMetadata{1, 2}), (LinkQueueMetadata{1, 3}));
}

}  // namespace
