#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// The numbers at the edges of handleLinkStatus: what becomes of an interval, of the tracking window,
// of the clock.

namespace {

using testing::ElementsAre;

Tarn::IntfId const ethernet1{"Ethernet1"};

constexpr double kInfinity{std::numeric_limits<double>::infinity()};

/// An interval as configured, and the whole seconds that it is used as.
struct Interval {
  char const* name;
  double configured;
  double seconds;
};

void PrintTo(Interval const& interval, std::ostream* out) {
  *out << interval.configured << " as " << interval.seconds;
}

class ConfiguredInterval : public testing::TestWithParam<Interval> {
 protected:
  /// What remains of these flaps, on the global values or on those of a profile.
  struct Outcome {
    std::vector<double> times;
    Counters counters;
  };
  static Outcome after(std::initializer_list<double> flaps, bool ownProfile) {
    Switch sw{{.maxFlaps = 1000, .interval = GetParam().configured}};
    if (ownProfile) {
      sw.profileIs("p1", {.maxFlaps = 1000, .interval = GetParam().configured});
      sw.config->defaultProfileListIs("p1", true);
      sw.config->intervalIs(77);
    }
    sw.addInterface(ethernet1);
    sw.start();
    sw.flap(ethernet1, flaps);
    auto const& sm = *sw.profileSm(ethernet1, ownProfile ? "p1" : "default");
    return {times(sm), counters(sm)};
  }
};

TEST_P(ConfiguredInterval, IsUsedAsItsWholeSecondsModulo32Bits) {
  double const seconds = GetParam().seconds;
  for (bool const ownProfile : {false, true}) {
    // A flap as old as the window stays, and the new one falls into the next interval; with a
    // window of 0 both are equally old, and every flap falls into interval 0.
    Outcome const within = after({0, seconds}, ownProfile);
    EXPECT_THAT(within.times, ElementsAre(0, seconds));
    EXPECT_EQ(within.counters, (seconds == 0 ? Counters{2, 0, 0} : Counters{1, 1, 0}));
    // Half a second more is too old.
    Outcome const beyond = after({0, seconds + 0.5}, ownProfile);
    EXPECT_THAT(beyond.times, ElementsAre(seconds + 0.5));
    EXPECT_EQ(beyond.counters, (Counters{1, 0, 0}));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Each, ConfiguredInterval,
    testing::Values(Interval{"One", 1, 1}, Interval{"JustBelowTwo", 1.999999, 1},
                    Interval{"TwoPointNine", 2.9, 2}, Interval{"TenPointSeven", 10.7, 10},
                    Interval{"Zero", 0, 0}, Interval{"NegativeZero", -0.0, 0},
                    Interval{"Half", 0.5, 0}, Interval{"JustBelowOne", 0.999999, 0},
                    Interval{"Negative", -3, 0}, Interval{"GreatNegative", -1e30, 0},
                    Interval{"NotANumber", std::numeric_limits<double>::quiet_NaN(), 0},
                    Interval{"Infinite", kInfinity, 0}, Interval{"NegativeInfinite", -kInfinity, 0},
                    Interval{"Greatest32Bits", 4294967295.0, 4294967295.0},
                    Interval{"JustBelowTwoTo32", 4294967295.5, 4294967295.0},
                    Interval{"TwoTo32", 4294967296.0, 0},
                    Interval{"TwoTo32AndFive", 4294967301.0, 5},
                    Interval{"TwoTo32AndFivePointNine", 4294967301.9, 5},
                    Interval{"TwoTo33AndSeven", 8589934599.0, 7},
                    // 10^18 is hexadecimal 0de0b6b3 a7640000.
                    Interval{"TenTo18", 1e18, 2808348672.0},
                    // Divisible by 2^30 * 2^17, so nothing is left of the low 32 bits.
                    Interval{"TenTo30", 1e30, 0}),
    [](testing::TestParamInfo<Interval> const& instance) {
      return std::string{instance.param.name};
    });

// Flaps of one instant are all that an interval of 0 leaves to count.
TEST(IntervalOfZero, ErrDisablesFlapsOfOneInstant) {
  Switch sw{{.maxFlaps = 2, .interval = 0.5}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1, 2, 3, 4});
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
  sw.flap(ethernet1, {5, 5, 5});
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 5.0);
}

/// Profile p1 over `interval` whole seconds and `trackedIntervals`, with flaps at 0 and `second`.
std::vector<double> flapsKept(double interval, unsigned trackedIntervals, double second) {
  Switch sw;
  sw.profileIs("p1", {.maxFlaps = 1000,
                      .interval = interval,
                      .violations = 1,
                      .trackedIntervals = trackedIntervals});
  sw.config->defaultProfileListIs("p1", true);
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {0, second});
  return times(*sw.profileSm(ethernet1, "p1"));
}

TEST(TrackingWindow, IsIntervalTimesTrackedIntervals) {
  EXPECT_THAT(flapsKept(10, 3, 30), ElementsAre(0, 30));
  EXPECT_THAT(flapsKept(10, 3, 30.5), ElementsAre(30.5));
  EXPECT_THAT(flapsKept(10.9, 3, 30.5), ElementsAre(30.5));
}

TEST(TrackingWindow, OfNoTrackedIntervalsIsZero) {
  EXPECT_THAT(flapsKept(10, 0, 0), ElementsAre(0, 0));
  EXPECT_THAT(flapsKept(10, 0, 0.5), ElementsAre(0.5));
}

// 100000 * 50000 = 5,000,000,000 = 2^32 + 705,032,704.
TEST(TrackingWindow, WrapsAt32Bits) {
  EXPECT_THAT(flapsKept(100000, 50000, 705032704.0), ElementsAre(0, 705032704.0));
  EXPECT_THAT(flapsKept(100000, 50000, 705032705.0), ElementsAre(705032705.0));
}

TEST(TrackingWindow, ThatWrapsToZeroKeepsOnlyTheInstant) {
  EXPECT_THAT(flapsKept(65536, 65536, 1), ElementsAre(1));
}

/// Each reading advances the clock by a second, so the clock tells how often it was read.
class ClockReadings : public testing::Test {
 protected:
  double readingsOf(double time, unsigned rawLinkStatus) {
    sw_.clock.secondsIs(time);
    sw_.linkIs(ethernet1, rawLinkStatus);
    return sw_.clock.seconds() - time;
  }
  void start() {
    sw_.addInterface(ethernet1);
    sw_.start();
    sw_.clock.stepIs(1);
  }

  Switch sw_{{.maxFlaps = 1, .interval = 10}};
};

TEST_F(ClockReadings, AreNoneForIgnoredChanges) {
  start();
  EXPECT_EQ(readingsOf(0, 2), 0.0);
  sw_.phyConfigStateIs(ethernet1, 2);
  EXPECT_EQ(readingsOf(1, 1), 0.0);
}

TEST_F(ClockReadings, AreNoneForConfigurationChanges) {
  start();
  sw_.config->maxFlapsIs(7);
  sw_.settingsIs(ethernet1, true, {{"p1", true}});
  sw_.statusDir->intfStatusDel(ethernet1);
  EXPECT_EQ(sw_.clock.seconds(), 0.0);
}

TEST_F(ClockReadings, AreOnePerHandledFlapAndOneMoreForTheRecord) {
  start();
  EXPECT_EQ(readingsOf(0, 1), 1.0);
  readingsOf(5, 2);
  // The flap is read at 5, the record gets the next reading.
  EXPECT_EQ(readingsOf(5, 1), 2.0);
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 6.0);
}

TEST_F(ClockReadings, AreOnePerProfile) {
  for (char const* const name : {"p1", "p2", "p3"}) {
    sw_.profileIs(name, {.maxFlaps = 5, .interval = 100});
    sw_.config->defaultProfileListIs(name, true);
  }
  start();
  EXPECT_EQ(readingsOf(0, 1), 3.0);
}

TEST_F(ClockReadings, AreOneAlsoWhenTheHistoryIsReplayed) {
  sw_.config->maxFlapsIs(5);
  start();
  readingsOf(0, 1);
  readingsOf(5, 2);
  readingsOf(5, 1);
  readingsOf(12, 2);
  EXPECT_EQ(readingsOf(12, 1), 1.0);
  EXPECT_THAT(times(*sw_.profileSm(ethernet1, "default")), ElementsAre(5, 12));
}

TEST(Clock, ThatStepsBackIsHeld) {
  Switch sw{{.maxFlaps = 2, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {10, 5});
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(10, 10));
  sw.flap(ethernet1, {9.5});
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 10.0);
}

// One mad reading must neither stop the clock, which would make all later flaps simultaneous, nor
// enter the history.
TEST(Clock, ThatOnceYieldsInfinityCountsOnAfterwards) {
  Switch sw{{.maxFlaps = 2, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1, kInfinity, 20, 40, 60});
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(60));
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
}

TEST(Clock, ThatLeapsAYearLeavesOldFlapsBehind) {
  constexpr double kYear{365.0 * 86400};
  Switch sw{{.maxFlaps = 2, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1, 2, kYear, kYear + 0.5});
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(kYear, kYear + 0.5));
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
  sw.flap(ethernet1, {kYear + 1});
  EXPECT_EQ(sw.errdisabledAt(ethernet1), kYear + 1);
}

TEST(Violations, OfZeroNeverErrDisableAnAgedHistoryEither) {
  Switch sw;
  sw.profileIs("p1", {.maxFlaps = 0, .interval = 1, .violations = 0, .trackedIntervals = 1});
  sw.config->defaultProfileListIs("p1", true);
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1, 2, 5});
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "p1")), ElementsAre(5));
  EXPECT_EQ(counters(*sw.profileSm(ethernet1, "p1")), (Counters{1, 0, 1}));
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
}

constexpr char const* kEmptyPtr{"Vek: an empty Ptr was dereferenced where an object is required\n"};

TEST(HandleLinkStatusDeathTest, NeedsTheInterfaceStatus) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  auto* const sm = sw.profileSm(ethernet1, "default");
  sm->ethPhyIntfStatusDel();
  EXPECT_EXIT(sm->handleLinkStatus(), testing::KilledBySignal(SIGABRT), testing::Eq(kEmptyPtr));
}

TEST(HandleLinkStatusDeathTest, NeedsTheInterfaceConfiguration) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
      "p1", nullptr, sw.config, nullptr, sw.status(ethernet1), sw.causeStatus, nullptr);
  EXPECT_EXIT(sw.linkIs(ethernet1, 1), testing::KilledBySignal(SIGABRT), testing::Eq(kEmptyPtr));
}

TEST(HandleLinkStatusDeathTest, NeedsTheConfigWithoutAProfileConfig) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
      "p1", nullptr, nullptr, sw.phyConfig(ethernet1), sw.status(ethernet1), sw.causeStatus,
      nullptr);
  EXPECT_EXIT(sw.linkIs(ethernet1, 1), testing::KilledBySignal(SIGABRT), testing::Eq(kEmptyPtr));
}

}  // namespace
