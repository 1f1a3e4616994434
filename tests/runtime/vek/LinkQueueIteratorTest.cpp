#include <gtest/gtest.h>
#include <utility>

#include "runtime/vek/LinkQueue.h"

#include "tests/runtime/support/TimeQueue.h"

namespace {

using RuntimeTest::Indexes;
using RuntimeTest::indexesOf;
using RuntimeTest::TimeEntry;
using RuntimeTest::TimeQueue;
using RuntimeTest::Times;

constexpr std::uint32_t kLast{4294967295};

class LinkQueueIterator : public testing::Test {
 protected:
  explicit LinkQueueIterator(std::uint32_t first = 0) {
    queue.metadataIs({first, first});
    for (double const time : {10, 20, 30, 40, 50})
      queue.enq(time);
  }
  ~LinkQueueIterator() override {
    queue.clear();
    EXPECT_EQ(TimeEntry::alive, 0);
  }

  /// A walk that stands on the entry of that index.
  TimeQueue::Iterator at(std::uint32_t index) {
    TimeQueue::Iterator walk = queue.iterator();
    while (walk && walk->vek_index() != index)
      ++walk;
    return walk;
  }
  /// What the walk visits from here on.
  static Indexes rest(TimeQueue::Iterator& walk) {
    Indexes indexes;
    for (; walk; ++walk)
      indexes.push_back(walk->vek_index());
    return indexes;
  }
  static Indexes restBeyond(TimeQueue::Iterator& walk) { return rest(++walk); }

  TimeQueue queue;
};

TEST_F(LinkQueueIterator, VisitsFromHeadToTail) {
  TimeQueue::Iterator walk = queue.iterator();
  EXPECT_EQ(walk->value(), 10);
  EXPECT_EQ((*walk).vek_index(), 0U);
  EXPECT_EQ(rest(walk), (Indexes{0, 1, 2, 3, 4}));
  EXPECT_FALSE(walk);
  ++walk;
  EXPECT_FALSE(walk) << "the end stays the end";
}

TEST_F(LinkQueueIterator, OfAnEmptyQueueIsAtItsEnd) {
  queue.clear();
  TimeQueue::Iterator walk = queue.iterator();
  EXPECT_FALSE(walk);
  queue.del(walk);
  EXPECT_FALSE(walk);
}

TEST_F(LinkQueueIterator, RemovingTheHeadAgainAndAgainEmptiesTheQueueFromTheOldestOn) {
  Times removed;
  TimeQueue::Iterator walk = queue.iterator();
  while (walk) {
    EXPECT_EQ(queue.head(), &*walk);
    removed.push_back(walk->value());
    queue.del(walk);
  }
  EXPECT_EQ(removed, (Times{10, 20, 30, 40, 50}));
  EXPECT_EQ(queue.count(), 0U);
  EXPECT_EQ(queue.version(), 10U);
  EXPECT_EQ(queue.metadata(), (Vek::LinkQueueMetadata{5, 5}));
}

TEST_F(LinkQueueIterator, StandsOnTheFollowingEntryAfterARemovalThroughIt) {
  TimeQueue::Iterator walk = at(2);
  queue.del(walk);
  EXPECT_EQ(walk->vek_index(), 3U);
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 1, 3, 4}));
  queue.del(walk);
  EXPECT_EQ(rest(walk), (Indexes{4}));
}

TEST_F(LinkQueueIterator, IsAtItsEndAfterTheRemovalOfTheTailThroughIt) {
  TimeQueue::Iterator walk = at(4);
  queue.del(walk);
  EXPECT_FALSE(walk);
  EXPECT_EQ(queue.tail()->vek_index(), 3U);
}

TEST_F(LinkQueueIterator, EverySecondEntryCanBeRemovedInOneWalk) {
  for (TimeQueue::Iterator walk = queue.iterator(); walk; ++walk) {
    queue.del(walk);
    if (!walk) break;
  }
  EXPECT_EQ(indexesOf(queue), (Indexes{1, 3}));
}

TEST_F(LinkQueueIterator, HoldsAnEntryThatOthersRemove) {
  TimeQueue::Iterator walk = at(1);
  EXPECT_EQ(walk->referenceCount(), 2U);
  queue.del(1);
  EXPECT_EQ(walk->value(), 20);
  EXPECT_EQ(TimeEntry::alive, 5);
  EXPECT_EQ(restBeyond(walk), (Indexes{2, 3, 4}));
  EXPECT_EQ(TimeEntry::alive, 4);
}

TEST_F(LinkQueueIterator, GoesOnWhenItsEntryAndThoseAroundItAreRemoved) {
  TimeQueue::Iterator walk = at(1);
  for (std::uint32_t const index : {0U, 1U, 2U, 3U})
    queue.del(index);
  EXPECT_EQ(restBeyond(walk), (Indexes{4}));
}

TEST_F(LinkQueueIterator, GoesOnWhenTheHeadsBehindItLeave) {
  TimeQueue::Iterator walk = at(2);
  queue.deq();
  queue.deq();
  EXPECT_EQ(restBeyond(walk), (Indexes{3, 4}));
}

TEST_F(LinkQueueIterator, EndsWhenTheQueueIsEmptiedUnderIt) {
  TimeQueue::Iterator walk = at(2);
  queue.clear();
  EXPECT_EQ(walk->value(), 30);
  EXPECT_EQ(restBeyond(walk), Indexes{});
}

TEST_F(LinkQueueIterator, MeetsWhatIsAppended) {
  TimeQueue::Iterator walk = at(4);
  queue.enq(60);
  EXPECT_EQ(restBeyond(walk), (Indexes{5}));
}

TEST_F(LinkQueueIterator, MeetsWhatIsAppendedAfterTheQueueWasEmptiedUnderIt) {
  TimeQueue::Iterator walk = at(2);
  queue.clear();
  queue.enq(60);
  queue.enq(70);
  EXPECT_EQ(restBeyond(walk), (Indexes{5, 6}));
}

TEST_F(LinkQueueIterator, DoesNotMeetAnEntryThatComesBackUnderTheIndexItStandsOn) {
  TimeQueue::Iterator walk = at(2);
  queue.del(2);
  queue.newMember(2, 35);
  EXPECT_EQ(restBeyond(walk), (Indexes{3, 4}));
}

TEST_F(LinkQueueIterator, MeetsInsertionsBeyondItAndNoneBehindIt) {
  queue.del(1);
  queue.del(3);
  TimeQueue::Iterator walk = at(2);
  queue.newMember(1, 20);
  queue.newMember(3, 40);
  EXPECT_EQ(restBeyond(walk), (Indexes{3, 4}));
}

TEST_F(LinkQueueIterator, RemovalThroughItOfAnEntryThatIsGoneGoesOn) {
  TimeQueue::Iterator walk = at(1);
  queue.del(1);
  std::uint32_t const version = queue.version();
  queue.del(walk);
  EXPECT_EQ(walk->vek_index(), 2U);
  EXPECT_EQ(queue.version(), version) << "nothing more was removed";
  EXPECT_EQ(indexesOf(queue), (Indexes{0, 2, 3, 4}));
}

TEST_F(LinkQueueIterator, SeveralWalksDoNotDisturbEachOther) {
  TimeQueue::Iterator one = at(1);
  TimeQueue::Iterator other = at(1);
  queue.del(one);
  EXPECT_EQ(one->vek_index(), 2U);
  EXPECT_EQ(other->value(), 20);
  queue.del(one);
  EXPECT_EQ(restBeyond(other), (Indexes{3, 4}));
  EXPECT_EQ(rest(one), (Indexes{3, 4}));
}

TEST_F(LinkQueueIterator, OverwrittenTimeIsSeen) {
  TimeQueue::Iterator walk = at(1);
  queue.valueIs(1, 25);
  queue.valueIs(2, 35);
  EXPECT_EQ(walk->value(), 25);
  ++walk;
  EXPECT_EQ(walk->value(), 35);
}

// An entry of a lower index that comes before the head is behind the walk, whatever then leaves.
class LinkQueueIteratorFromTen : public LinkQueueIterator {
 protected:
  LinkQueueIteratorFromTen() : LinkQueueIterator{10} {}
};

TEST_F(LinkQueueIteratorFromTen, DoesNotMeetAnEntryThatComesBeforeTheHead) {
  TimeQueue::Iterator walk = at(11);
  queue.newMember(9, 5);
  EXPECT_EQ(restBeyond(walk), (Indexes{12, 13, 14}));
}

TEST_F(LinkQueueIteratorFromTen, DoesNotTurnBackWhenOnlyAnEntryBeforeItIsLeft) {
  TimeQueue::Iterator walk = at(11);
  queue.newMember(9, 5);
  for (std::uint32_t const index : {10U, 11U, 12U, 13U, 14U})
    queue.del(index);
  ASSERT_EQ(indexesOf(queue), (Indexes{9}));
  EXPECT_EQ(restBeyond(walk), Indexes{});
}

TEST_F(LinkQueueIteratorFromTen, DoesNotTurnBackToALowerIndexInTheEmptiedQueue) {
  for (std::uint32_t const lower : {9U, 3U}) {
    TimeQueue::Iterator walk = at(queue.head()->vek_index());
    queue.clear();
    queue.newMember(lower, 5);
    EXPECT_EQ(restBeyond(walk), Indexes{}) << lower;
  }
}

// The same across the wrap: the indexes are kLast - 1, kLast, 0, 1, 2.
class LinkQueueIteratorAcrossTheWrap : public LinkQueueIterator {
 protected:
  LinkQueueIteratorAcrossTheWrap() : LinkQueueIterator{kLast - 1} {}
};

TEST_F(LinkQueueIteratorAcrossTheWrap, VisitsFromHeadToTail) {
  EXPECT_EQ(indexesOf(queue), (Indexes{kLast - 1, kLast, 0, 1, 2}));
}

TEST_F(LinkQueueIteratorAcrossTheWrap, GoesOnWhenItsEntryIsRemoved) {
  for (std::uint32_t const index : {kLast - 1, kLast, 0U, 1U}) {
    TimeQueue::Iterator walk = queue.iterator();
    ASSERT_EQ(walk->vek_index(), index);
    queue.del(index);
    EXPECT_EQ(restBeyond(walk), indexesOf(queue));
  }
}

TEST_F(LinkQueueIteratorAcrossTheWrap, GoesOnWhenTheHeadsHaveWrapped) {
  TimeQueue::Iterator walk = at(kLast);
  queue.deq();
  queue.deq();
  queue.deq();
  EXPECT_EQ(restBeyond(walk), (Indexes{1, 2}));
}

TEST_F(LinkQueueIteratorAcrossTheWrap, EmptiesTheQueueFromTheOldestOn) {
  Indexes removed;
  TimeQueue::Iterator walk = queue.iterator();
  while (walk) {
    removed.push_back(walk->vek_index());
    queue.del(walk);
  }
  EXPECT_EQ(removed, (Indexes{kLast - 1, kLast, 0, 1, 2}));
}

TEST_F(LinkQueueIteratorAcrossTheWrap, MeetsWhatIsAppendedAfterTheQueueWasEmptiedUnderIt) {
  TimeQueue::Iterator walk = at(kLast);
  queue.clear();
  queue.enq(60);
  EXPECT_EQ(restBeyond(walk), (Indexes{3}));
}

// Entries far apart, more than half of the index space from head to tail, and the wrap between.
TEST(LinkQueueIteratorFarApart, GoesOnToATailMoreThanHalfARoundAway) {
  TimeQueue queue;
  queue.metadataIs({0x90000000, 0x90000000});
  queue.enq(10);
  queue.metadataIs({0x90000000, kLast});
  queue.enq(20);
  queue.enq(30);
  queue.metadataIs({0x90000000, 0x30000000});
  queue.enq(40);
  ASSERT_EQ(indexesOf(queue), (Indexes{0x90000000, kLast, 0, 0x30000000}));

  TimeQueue::Iterator walk = queue.iterator();
  ++walk;
  queue.del(0);
  ++walk;
  ASSERT_TRUE(walk) << "the tail was there all along";
  EXPECT_EQ(walk->value(), 40);
}

/// An entry whose end takes the head out of its queue.
class TakingEntry final : public Vek::LinkQueueEntry<double> {
 public:
  using Queue = Vek::LinkQueue<TakingEntry, std::uint32_t, double>;

  TakingEntry(std::uint32_t index, double time) : LinkQueueEntry{index, time} {}

  static inline Queue* taken{nullptr};

 private:
  friend Queue;
  ~TakingEntry() override {
    if (Queue* const queue = std::exchange(taken, nullptr)) (void)queue->deq();
  }
};

// What a walk leaves behind may go with that step, and its end may change the queue.
TEST(LinkQueueIteratorReentry, MissesNobodyWhenTheEndOfTheEntryItLeavesRemovesTheNext) {
  TakingEntry::Queue queue;
  for (double const time : {10, 20, 30})
    queue.enq(time);
  TakingEntry::Queue::Iterator walk = queue.iterator();
  (void)queue.deq();
  TakingEntry::taken = &queue;
  ++walk;  // the walk's was the last reference
  ASSERT_EQ(queue.count(), 1U);
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->value(), 20) << "held by the walk, though it has left the queue";
  ++walk;
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->value(), 30);
}

TEST(LinkQueueIteratorReentry, StandsWhenTheEndOfTheEntryItLeavesEmptiesTheQueue) {
  TakingEntry::Queue queue;
  for (double const time : {10, 20})
    queue.enq(time);
  TakingEntry::Queue::Iterator walk = queue.iterator();
  (void)queue.deq();
  TakingEntry::taken = &queue;
  ++walk;
  ASSERT_EQ(queue.count(), 0U);
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->value(), 20);
  ++walk;
  EXPECT_FALSE(walk);
}

}  // namespace
