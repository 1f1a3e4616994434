#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include "runtime/vek/Exception.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Metadata = LinkFlap::LinkFlapProfileSm::LinkFlapTimeStampMetadata;

/// The queue of a machine that nothing else touches.
class FlapTimeStamps : public testing::Test {
 protected:
  std::vector<std::uint32_t> indexes() const {
    std::vector<std::uint32_t> all;
    for (auto entry = queue().iterator(); entry; ++entry)
      all.push_back(entry->vek_index());
    return all;
  }
  LinkFlap::LinkFlapProfileSm::LinkFlapTimeStampQueue const& queue() const {
    return sm_->linkFlapTimeStamp();
  }
  void enq(std::initializer_list<double> times) {
    for (double const time : times)
      sm_->linkFlapTimeStampEnq(time);
  }

  Switch sw_;
  LinkFlap::LinkFlapProfileSm::Ptr sm_{LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
      "p1", nullptr, sw_.config, nullptr, nullptr, sw_.causeStatus, nullptr)};
};

TEST_F(FlapTimeStamps, AreAppendedUnderIncreasingIndexesFromZero) {
  enq({1.5, 2.5, 3.5});
  EXPECT_THAT(times(*sm_), ElementsAre(1.5, 2.5, 3.5));
  EXPECT_THAT(indexes(), ElementsAre(0U, 1U, 2U));
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{0, 3}));
  EXPECT_EQ(queue().count(), 3U);
  EXPECT_EQ(queue().head()->time(), 1.5);
  EXPECT_EQ(queue().tail()->time(), 3.5);
}

TEST_F(FlapTimeStamps, CountVersionsOnEveryAppendAndRemoval) {
  EXPECT_EQ(queue().version(), 0U);
  enq({1, 2, 3});
  EXPECT_EQ(queue().version(), 3U);
  sm_->linkFlapTimeStampDeq();
  EXPECT_EQ(queue().version(), 4U);
  sm_->linkFlapTimeStampDel(1U);
  EXPECT_EQ(queue().version(), 5U);
  sm_->linkFlapTimeStampDel(99U);
  sm_->linkFlapTimeStampIs(2, 7);  // overwritten in place
  EXPECT_EQ(queue().version(), 5U);
}

TEST_F(FlapTimeStamps, AreTakenFromTheHead) {
  enq({1, 2});
  EXPECT_EQ(sm_->linkFlapTimeStampDeq(), 1.0);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{1, 2}));
  EXPECT_EQ(sm_->linkFlapTimeStampDeq(), 2.0);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{2, 2}));
  EXPECT_EQ(queue().head(), nullptr);
  EXPECT_EQ(queue().tail(), nullptr);
}

TEST_F(FlapTimeStamps, OfAnEmptyQueueAreZeroWhenTaken) {
  EXPECT_EQ(sm_->linkFlapTimeStampDeq(), 0.0);
  EXPECT_EQ(queue().count(), 0U);
  EXPECT_EQ(queue().version(), 0U);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{0, 0}));
}

TEST_F(FlapTimeStamps, KeepTheirIndexesGoingAfterAllWereDeleted) {
  enq({0, 1, 2, 3, 4, 5, 6, 7});
  sm_->linkFlapTimeStampDelAll();
  EXPECT_THAT(times(*sm_), IsEmpty());
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{8, 8}));
  enq({8});
  EXPECT_THAT(indexes(), ElementsAre(8U));
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{8, 9}));
}

TEST_F(FlapTimeStamps, AreReadByIndex) {
  enq({1, 2, 3, 4});
  EXPECT_EQ(sm_->linkFlapTimeStamp(0), 1.0);
  EXPECT_EQ(sm_->linkFlapTimeStamp(1), 2.0);
  EXPECT_EQ(sm_->linkFlapTimeStamp(2), 3.0);
  EXPECT_EQ(sm_->linkFlapTimeStamp(3), 4.0);
  EXPECT_EQ(sm_->linkFlapTimeStamp(4), 0.0);
}

TEST_F(FlapTimeStamps, ReadZeroUnderADeletedIndex) {
  enq({1, 2, 3});
  EXPECT_EQ(sm_->linkFlapTimeStampDel(1U), 2.0);
  EXPECT_EQ(sm_->linkFlapTimeStamp(1), 0.0);
  EXPECT_EQ(sm_->linkFlapTimeStampDel(1U), 0.0);
  EXPECT_THAT(times(*sm_), ElementsAre(1, 3));
}

TEST_F(FlapTimeStamps, AreDeletedByIndexAtEitherEndAndInside) {
  enq({1, 2, 3, 4, 5});
  EXPECT_EQ(sm_->linkFlapTimeStampDel(2U), 3.0);
  EXPECT_THAT(times(*sm_), ElementsAre(1, 2, 4, 5));
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{0, 5}));
  EXPECT_EQ(sm_->linkFlapTimeStampDel(4U), 5.0);
  EXPECT_EQ(queue().tail()->time(), 4.0);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{0, 5}));
  EXPECT_EQ(sm_->linkFlapTimeStampDel(0U), 1.0);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{1, 5}));
  EXPECT_EQ(queue().count(), 2U);
  enq({6});
  EXPECT_THAT(indexes(), ElementsAre(1U, 3U, 5U));
}

TEST_F(FlapTimeStamps, AreOverwrittenInPlaceUnderAnExistingIndex) {
  enq({1, 2, 3});
  auto const* const entry = queue().head();
  sm_->linkFlapTimeStampIs(0, 9);
  sm_->linkFlapTimeStampIs(2, 7);
  EXPECT_EQ(queue().head(), entry);
  EXPECT_THAT(times(*sm_), ElementsAre(9, 2, 7));
}

TEST_F(FlapTimeStamps, AreMadeUnderTheNextIndexAtTheTail) {
  enq({1});
  sm_->linkFlapTimeStampIs(1, 2);
  auto const entry = sm_->newLinkFlapTimeStamp(2, 3);
  EXPECT_EQ(entry->vek_index(), 2U);
  EXPECT_EQ(entry->time(), 3.0);
  EXPECT_EQ(queue().tail(), entry.get());
  EXPECT_THAT(times(*sm_), ElementsAre(1, 2, 3));
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{0, 3}));
}

TEST_F(FlapTimeStamps, AreMadeUnderALaterIndexBehindTheTail) {
  enq({1});
  sm_->linkFlapTimeStampIs(7, 2);
  EXPECT_THAT(indexes(), ElementsAre(0U, 7U));
  enq({3});
  EXPECT_THAT(indexes(), ElementsAre(0U, 7U, 8U));
}

TEST_F(FlapTimeStamps, DeletedThroughAWalkNeitherSkipNorRepeat) {
  enq({1, 2, 3, 4, 5});
  std::vector<double> seen;
  for (auto entry = queue().iterator(); entry;) {
    seen.push_back(entry->time());
    sm_->linkFlapTimeStampDel(entry);
  }
  EXPECT_THAT(seen, ElementsAre(1, 2, 3, 4, 5));
  EXPECT_EQ(queue().count(), 0U);
}

TEST_F(FlapTimeStamps, InsideAreDeletedThroughAWalkThatThenStandsOnTheNext) {
  enq({1, 2, 3, 4});
  auto entry = queue().iterator();
  ++entry;
  sm_->linkFlapTimeStampDel(entry);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->time(), 3.0);
  ++entry;
  sm_->linkFlapTimeStampDel(entry);
  EXPECT_FALSE(entry);
  EXPECT_THAT(times(*sm_), ElementsAre(1, 3));
  EXPECT_EQ(queue().tail()->time(), 3.0);
}

TEST_F(FlapTimeStamps, WalkedWhileOthersRemoveAndAppendNeitherSkipNorRepeat) {
  enq({1, 2, 3, 4});
  std::vector<double> seen;
  for (auto entry = queue().iterator(); entry; ++entry) {
    seen.push_back(entry->time());
    if (entry->time() == 2) {
      sm_->linkFlapTimeStampDel(1U);  // the one it stands on
      sm_->linkFlapTimeStampDel(0U);
      enq({5});
    }
  }
  EXPECT_THAT(seen, ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(FlapTimeStamps, ContinueAfterTheTailWhenTheNextIndexLagsBehind) {
  enq({1, 2, 3});
  sm_->linkFlapTimeStampMetadataIs({0, 1});
  enq({4});
  EXPECT_THAT(indexes(), ElementsAre(0U, 1U, 2U, 3U));
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{0, 4}));
}

TEST_F(FlapTimeStamps, RaiseALaggingNextIndexWhenTheHeadLeaves) {
  enq({1, 2, 3});
  sm_->linkFlapTimeStampMetadataIs({0, 1});
  sm_->linkFlapTimeStampDeq();
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{1, 3}));
}

TEST_F(FlapTimeStamps, LeaveTheHeadIndexAtTheNextIndexWhenTheLastGoes) {
  sm_->linkFlapTimeStampMetadataIs({0, 40});
  enq({1});
  EXPECT_THAT(indexes(), ElementsAre(40U));
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{40, 41}));
  sm_->linkFlapTimeStampDel(40U);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{41, 41}));
}

TEST_F(FlapTimeStamps, GoOnAcrossTheWrapOfTheIndex) {
  sm_->linkFlapTimeStampMetadataIs({4294967294U, 4294967294U});
  enq({1, 2, 3, 4});
  EXPECT_THAT(indexes(), ElementsAre(4294967294U, 4294967295U, 0U, 1U));
  EXPECT_THAT(times(*sm_), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(sm_->linkFlapTimeStamp(0), 3.0);
  EXPECT_EQ(sm_->linkFlapTimeStampDeq(), 1.0);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{4294967295U, 2}));
}

TEST_F(FlapTimeStamps, AreWalkedAcrossTheWrapWhileTheyAreDeleted) {
  sm_->linkFlapTimeStampMetadataIs({4294967294U, 4294967294U});
  enq({1, 2, 3, 4});
  std::vector<double> seen;
  for (auto entry = queue().iterator(); entry; ++entry) {
    seen.push_back(entry->time());
    sm_->linkFlapTimeStampDel(entry->vek_index());
  }
  EXPECT_THAT(seen, ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(times(*sm_), IsEmpty());
}

// The tail's index is the greatest: the next one is 0 also when nextIndex lags behind.
TEST_F(FlapTimeStamps, WrapFromTheTailToo) {
  sm_->linkFlapTimeStampMetadataIs({4294967295U, 4294967295U});
  enq({1});
  sm_->linkFlapTimeStampMetadataIs({4294967295U, 5});
  enq({2});
  EXPECT_THAT(indexes(), ElementsAre(4294967295U, 0U));
}

TEST_F(FlapTimeStamps, AreRefusedWhenTheIndexSpaceIsFull) {
  enq({1, 2});
  sm_->linkFlapTimeStampMetadataIs({3, 1});
  auto const version = queue().version();
  try {
    sm_->linkFlapTimeStampEnq(3);
    FAIL() << "not refused";
  } catch (Vek::RangeException const& exception) {
    EXPECT_STREQ(exception.what(), "linkqueue index space full");
  }
  EXPECT_THAT(times(*sm_), ElementsAre(1, 2));
  EXPECT_EQ(queue().count(), 2U);
  EXPECT_EQ(queue().version(), version);
  // The first step had settled the next index before.
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{3, 2}));
}

// An empty queue has no head to run into.
TEST_F(FlapTimeStamps, AreNotRefusedByAnEmptyQueue) {
  sm_->linkFlapTimeStampMetadataIs({6, 5});
  enq({1});
  EXPECT_THAT(indexes(), ElementsAre(5U));
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata(), (Metadata{5, 6}));
}

TEST_F(FlapTimeStamps, MetadataAreEqualWhenBothFieldsAre) {
  EXPECT_TRUE((Metadata{1, 2} == Metadata{1, 2}));
  EXPECT_TRUE((Metadata{1, 2} != Metadata{3, 2}));
  EXPECT_TRUE((Metadata{1, 2} != Metadata{1, 3}));
  enq({1});
  sm_->linkFlapTimeStampMetadataIs({11, 12});
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata().headIndex, 11U);
  EXPECT_EQ(sm_->linkFlapTimeStampMetadata().nextIndex, 12U);
}

}  // namespace
