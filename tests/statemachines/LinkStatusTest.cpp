#include <cmath>
#include <cstddef>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "statemachines/LinkFlapSm.h"
#include "statemachines/SourcePoints.h"

#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

/// One interface, watched by the built-in profile.
class HandleLinkStatus : public testing::Test {
 protected:
  void start(unsigned maxFlaps, double interval) {
    sw_.config->maxFlapsIs(maxFlaps);
    sw_.config->intervalIs(interval);
    sw_.addInterface(ethernet1);
    sw_.start();
    sw_.takeTraces();
  }
  LinkFlap::LinkFlapProfileSm& sm() { return *sw_.profileSm(ethernet1, "default"); }
  /// Calls of evaluateErrDisable since the last take.
  std::size_t evaluations() {
    std::size_t calls = 0;
    for (TraceLine const& line : sw_.takeTraces())
      calls += line.message.ends_with("::evaluateErrDisable") ? 1U : 0U;
    return calls;
  }

  Switch sw_;
};

TEST_F(HandleLinkStatus, TracesUnderAnotherNameThanItsFunction) {
  start(3, 10);
  sw_.linkIs(ethernet1, 2);
  EXPECT_THAT(sw_.takeTraces(),
              ElementsAre(TraceLine{8, 104, "handleLinkStatus",
                                    "@Ethernet1/default::handleLinkStatusPerProfile(): "}));
}

TEST_F(HandleLinkStatus, CountsAChangeToOneAlone) {
  start(3, 10);
  for (unsigned const value : {2U, 3U, 7U, 4294967295U, 0U}) {
    sw_.linkIs(ethernet1, value);
    EXPECT_THAT(times(sm()), IsEmpty()) << value;
    EXPECT_EQ(counters(sm()), (Counters{0, 0, 0})) << value;
  }
  EXPECT_EQ(sw_.traced("handleLinkStatus"), 5U);
  EXPECT_EQ(sw_.traced("evaluateErrDisable"), 0U);
  sw_.linkIs(ethernet1, 1);
  EXPECT_THAT(times(sm()), ElementsAre(0));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
}

TEST_F(HandleLinkStatus, DoesNotCountTheSameValueAgain) {
  start(3, 10);
  sw_.linkIs(ethernet1, 1);
  sw_.linkIs(ethernet1, 1);
  EXPECT_THAT(times(sm()), ElementsAre(0));
}

TEST_F(HandleLinkStatus, CountsNothingWhileConfigurationIsInProgress) {
  start(9, 10);
  sw_.flap(ethernet1, {1});
  sw_.phyConfigStateIs(ethernet1, 2);
  sw_.flap(ethernet1, {2});
  EXPECT_THAT(times(sm()), ElementsAre(1));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
  for (unsigned const state : {0U, 1U, 3U}) {
    sw_.phyConfigStateIs(ethernet1, state);
    sw_.flap(ethernet1, {3.0 + state});
  }
  EXPECT_THAT(times(sm()), ElementsAre(1, 3, 4, 6));
}

// The physical configuration is read when a flap arrives, it is not watched.
TEST_F(HandleLinkStatus, DoesNotRunWhenTheConfigurationStateChanges) {
  start(3, 10);
  sw_.phyConfigStateIs(ethernet1, 2);
  sw_.phyConfigStateIs(ethernet1, 0);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(HandleLinkStatus, ReachesTheMachinesOfItsInterfaceOnly) {
  start(3, 10);
  sw_.addInterface(ethernet2);
  sw_.flap(ethernet2, {1});
  EXPECT_THAT(times(sm()), IsEmpty());
  EXPECT_THAT(times(*sw_.profileSm(ethernet2, "default")), ElementsAre(1));
}

TEST_F(HandleLinkStatus, GivesEachProfileItsOwnHistoryAndValues) {
  sw_.profileIs("short", {.maxFlaps = 9, .interval = 2});
  sw_.profileIs("long", {.maxFlaps = 9, .interval = 100});
  sw_.config->defaultProfileListIs("short", true);
  sw_.config->defaultProfileListIs("long", true);
  start(3, 10);
  sw_.flap(ethernet1, {0, 1, 5});
  EXPECT_THAT(times(*sw_.profileSm(ethernet1, "short")), ElementsAre(5));
  EXPECT_THAT(times(*sw_.profileSm(ethernet1, "long")), ElementsAre(0, 1, 5));
}

TEST_F(HandleLinkStatus, FourFlapsWithinTheWindowErrDisable) {
  start(3, 10.7);  // used as 10 seconds
  sw_.flap(ethernet1, {0, 2, 4});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), std::nullopt);
  sw_.flap(ethernet1, {9.9});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 9.9);
  EXPECT_THAT(times(sm()), IsEmpty());
}

TEST_F(HandleLinkStatus, AFlapBeyondTheWindowAgesTheHistoryAndReplaysTheRest) {
  start(3, 10.7);
  sw_.flap(ethernet1, {0, 2, 4});
  sw_.takeTraces();
  sw_.flap(ethernet1, {10.5});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), std::nullopt);
  EXPECT_THAT(times(sm()), ElementsAre(2, 4, 10.5));
  EXPECT_EQ(counters(sm()), (Counters{3, 0, 0}));
  // Down; up; first counted in interval 1, then the three that remain, the newest a second time.
  EXPECT_THAT(sw_.takeMessages(),
              ElementsAre("@Ethernet1/default::handleLinkStatusPerProfile(): ",
                          "@Ethernet1/default::handleLinkStatusPerProfile(): ",
                          "@Ethernet1/default::evaluateErrDisable", "curFlaps set to 1 : 1",
                          "curFlaps: 1 macFlapsConfig: 3", "@Ethernet1/default::evaluateErrDisable",
                          "curFlaps changed to: 1", "curFlaps: 1 macFlapsConfig: 3",
                          "@Ethernet1/default::evaluateErrDisable", "curFlaps changed to: 2",
                          "curFlaps: 2 macFlapsConfig: 3", "@Ethernet1/default::evaluateErrDisable",
                          "curFlaps changed to: 3", "curFlaps: 3 macFlapsConfig: 3"));
}

TEST_F(HandleLinkStatus, AFlapExactlyTheWindowOldNeitherTriggersAgeingNorAgesOut) {
  start(9, 10);
  sw_.flap(ethernet1, {0, 5});
  sm().curViolationsIs(7);
  sw_.takeTraces();
  sw_.flap(ethernet1, {10});
  EXPECT_EQ(evaluations(), 1U);
  EXPECT_THAT(times(sm()), ElementsAre(0, 5, 10));
  EXPECT_EQ(counters(sm()), (Counters{1, 1, 7}));  // carried on from the evaluation
  sw_.flap(ethernet1, {15});                       // 0 is too old, 5 exactly at the edge
  EXPECT_THAT(times(sm()), ElementsAre(5, 10, 15));
  EXPECT_EQ(counters(sm()), (Counters{1, 1, 0}));
}

// Ages are not truncated.
TEST_F(HandleLinkStatus, AFlapAFractionBeyondTheWindowTriggersAgeing) {
  start(9, 10);
  sw_.flap(ethernet1, {0, 10.25});
  EXPECT_THAT(times(sm()), ElementsAre(10.25));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
}

TEST_F(HandleLinkStatus, TheNewestFlapAlwaysStays) {
  start(9, 10);
  sw_.flap(ethernet1, {0, 1, 2, 1000});
  EXPECT_THAT(times(sm()), ElementsAre(1000));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
}

TEST_F(HandleLinkStatus, AgeingZeroesAllCounters) {
  start(9, 10);
  sw_.flap(ethernet1, {0, 1});
  sm().curViolationsIs(7);
  sw_.flap(ethernet1, {100});
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
}

// Entries older than the window stay until the next accepted change.
TEST_F(HandleLinkStatus, OnlyAnAcceptedChangeAges) {
  start(9, 10);
  sw_.flap(ethernet1, {0});
  sw_.clock.secondsIs(100);
  sw_.linkIs(ethernet1, 2);
  EXPECT_THAT(times(sm()), ElementsAre(0));
}

// Counted from the stale head, 10 and 10.5 fall into interval 1 and 8 into interval 0; counted from
// 8, the oldest that remains, all three fall into interval 0.
TEST_F(HandleLinkStatus, TheReplayMayErrDisable) {
  start(2, 10);
  sw_.flap(ethernet1, {0, 8, 10});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), std::nullopt);
  sw_.takeTraces();
  sw_.flap(ethernet1, {10.5});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 10.5);
  EXPECT_EQ(evaluations(), 4U);
  EXPECT_THAT(times(sm()), IsEmpty());
}

// The same, once listened to and once not: it decides alike and passes as many trace points, which
// count 2 each while a level is enabled and 1 while none is.
TEST_F(HandleLinkStatus, TheReplayIsTheSameWhenNobodyListens) {
  start(2, 10);
  auto const hits = [this](double from) {
    sw_.flap(ethernet1, {from, from + 8, from + 10});
    auto const before = LinkFlap::traceHandle().hits();
    sw_.flap(ethernet1, {from + 10.5});
    EXPECT_EQ(sw_.errdisabledAt(ethernet1), from + 10.5);
    EXPECT_THAT(times(sm()), IsEmpty());
    return LinkFlap::traceHandle().hits() - before;
  };
  auto const listenedTo = hits(0);
  for (int level = 0; level < 10; ++level)
    LinkFlap::traceHandle().levelIs(level, false);
  sw_.causeStatus->intfStatusDel(ethernet1);
  EXPECT_EQ(2 * hits(1000), listenedTo);
}

TEST_F(HandleLinkStatus, TheReplayStopsAtTheFlapThatErrDisables) {
  sw_.profileIs("p1", {.maxFlaps = 1, .interval = 10});
  sw_.config->defaultProfileListIs("p1", true);
  start(3, 10);
  auto& p1 = *sw_.profileSm(ethernet1, "p1");
  // A history that no evaluation has seen.
  for (double const time : {0.0, 8.0, 8.5, 9.0})
    p1.linkFlapTimeStampEnq(time);
  sw_.flap(ethernet1, {11});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 11.0);
  // 11 in interval 1, then 8 and 8.5; neither 9 nor 11 again.
  EXPECT_EQ(evaluations(), 3U);
  EXPECT_THAT(times(p1), IsEmpty());
  EXPECT_EQ(counters(p1), (Counters{0, 0, 0}));
}

// The same when nobody listens. Passed are, one each: both changes of the link, three times three of
// the evaluations, the decision, and seven lines of the six times behind it.
TEST_F(HandleLinkStatus, TheReplayStopsAtTheFlapThatErrDisablesAlsoWhenNobodyListens) {
  sw_.profileIs("p1", {.maxFlaps = 1, .interval = 10});
  sw_.config->defaultProfileListIs("p1", true);
  start(3, 10);
  auto& p1 = *sw_.profileSm(ethernet1, "p1");
  for (double const time : {0.0, 8.0, 8.5, 9.0, 9.5, 10.0})
    p1.linkFlapTimeStampEnq(time);
  for (int level = 0; level < 10; ++level)
    LinkFlap::traceHandle().levelIs(level, false);
  auto const before = LinkFlap::traceHandle().hits();
  sw_.flap(ethernet1, {11});
  EXPECT_EQ(LinkFlap::traceHandle().hits() - before, 2U + 3U * 3U + 1U + 7U);
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 11.0);
  EXPECT_THAT(times(p1), IsEmpty());
  EXPECT_EQ(counters(p1), (Counters{0, 0, 0}));
}

// A trace sink is called in the midst of the evaluation. One that counts on, so that a history of two
// flaps exceeds a limit of nine, brings about an err-disable for which nothing was made ready.
TEST_F(HandleLinkStatus, TheReplayErrDisablesAlsoWhenATraceSinkHasCountedOn) {
  start(9, 10);
  sw_.flap(ethernet1, {0, 8});
  int limits = 0;
  Vek::traceSinkIs([&](Vek::TraceRecord const& record) {
    // The first is the newest flap's, held against the stale history; then comes that of 8.
    if (record.message.starts_with("curFlaps: ") && ++limits == 2) sm().curFlapsIs(10);
  });
  sw_.flap(ethernet1, {11});
  EXPECT_EQ(limits, 2);
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 11.0);
  EXPECT_THAT(times(sm()), IsEmpty());
  EXPECT_EQ(counters(sm()), (Counters{0, 0, 0}));
}

// One that forgets the history leaves nothing to age and nothing to replay.
TEST_F(HandleLinkStatus, AgeingEndsAlsoWhenATraceSinkHasForgottenTheHistory) {
  start(9, 10);
  sw_.flap(ethernet1, {0, 8});
  Vek::traceSinkIs([&](Vek::TraceRecord const& record) {
    if (record.message.starts_with("curFlaps: ")) sm().linkFlapTimeStampDelAll();
  });
  sw_.flap(ethernet1, {100});
  EXPECT_THAT(times(sm()), IsEmpty());
  EXPECT_EQ(counters(sm()), (Counters{0, 0, 0}));
  EXPECT_EQ(sm().linkFlapTimeStampMetadata(), (Vek::LinkQueueMetadata{3, 3}));
}

// One that makes the newest flap an old one has it aged with the others.
TEST_F(HandleLinkStatus, AgeingEndsAlsoWhenATraceSinkHasMadeTheNewestFlapOld) {
  start(9, 10);
  sw_.flap(ethernet1, {0, 8});
  Vek::traceSinkIs([&](Vek::TraceRecord const& record) {
    if (record.message.starts_with("curFlaps: ")) sm().linkFlapTimeStampIs(2, 1);
  });
  sw_.flap(ethernet1, {100});
  EXPECT_THAT(times(sm()), IsEmpty());
  EXPECT_EQ(counters(sm()), (Counters{0, 0, 0}));
}

TEST_F(HandleLinkStatus, TheReplayLeavesItsCountsToTheMachineAlsoWhenNobodyListens) {
  sw_.profileIs("p1", {.maxFlaps = 2, .interval = 5, .violations = 9, .trackedIntervals = 4});
  sw_.config->defaultProfileListIs("p1", true);
  start(3, 10);
  auto& p1 = *sw_.profileSm(ethernet1, "p1");
  sw_.flap(ethernet1, {0, 4, 5, 6, 13});
  for (int level = 0; level < 10; ++level)
    LinkFlap::traceHandle().levelIs(level, false);
  sw_.flap(ethernet1, {20.5});
  EXPECT_THAT(times(p1), ElementsAre(4, 5, 6, 13, 20.5));
  EXPECT_EQ(counters(p1), (Counters{1, 3, 1}));
  sw_.flap(ethernet1, {21});
  EXPECT_EQ(counters(p1), (Counters{2, 3, 1}));
}

// A time that is none is not older than anything: the ageing stops there.
TEST_F(HandleLinkStatus, AgeingStopsAtATimeThatIsNotANumber) {
  start(9, 10);
  for (double const time : {0.0, 1.0, std::numeric_limits<double>::quiet_NaN(), 2.0})
    sm().linkFlapTimeStampEnq(time);
  sw_.flap(ethernet1, {100});
  EXPECT_EQ(sm().linkFlapTimeStamp().count(), 3U);
  EXPECT_TRUE(std::isnan(sm().linkFlapTimeStamp().headValue()));
}

TEST_F(HandleLinkStatus, WithoutAProfileConfigOneViolationErrDisables) {
  start(1, 10);
  sw_.flap(ethernet1, {0, 1});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 1.0);
}

TEST_F(HandleLinkStatus, WithoutAProfileConfigReadsTheGlobalValuesAtEachFlap) {
  sw_.addInterface(ethernet1);
  sw_.settingsIs(ethernet1, true, {{"unconfigured", true}});
  sw_.config->maxFlapsIs(9);
  sw_.start();
  sw_.flap(ethernet1, {0, 1});
  sw_.config->maxFlapsIs(2);  // the history stays, the next flap is the third
  sw_.flap(ethernet1, {2});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 2.0);
}

TEST_F(HandleLinkStatus, WithAProfileConfigReadsItsFourValues) {
  sw_.profileIs("p1", {.maxFlaps = 1, .interval = 5.9, .violations = 2, .trackedIntervals = 2});
  sw_.config->defaultProfileListIs("p1", true);
  start(0, 1);  // the global values would err-disable at once
  sw_.flap(ethernet1, {0, 1, 5, 6});
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 6.0);
}

TEST_F(HandleLinkStatus, AnExceptionOfTheQueueGoesToTheReportAndNothingIsEvaluated) {
  start(3, 10);
  sw_.flap(ethernet1, {1});
  sm().linkFlapTimeStampMetadataIs({2, 1});
  sw_.flap(ethernet1, {2});
  auto const failures = sw_.takeFailures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].attributeName, "rawLinkStatus");
  EXPECT_EQ(failures[0].watcher, "LinkFlap::LinkFlapProfileSm::VekEthPhyIntfStatus");
  EXPECT_EQ(failures[0].message, "linkqueue index space full");
  EXPECT_THAT(times(sm()), ElementsAre(1));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
}

}  // namespace
