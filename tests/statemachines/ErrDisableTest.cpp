#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <ostream>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// evaluateErrDisable, called directly: the counting and the decision.

namespace {

using testing::ElementsAre;

Tarn::IntfId const ethernet1{"Ethernet1"};

constexpr unsigned kGreatest{std::numeric_limits<unsigned>::max()};
constexpr double kTwoTo32{4294967296.0};

/// The built-in machine of one interface, from which each call counts a flap.
class EvaluateErrDisable : public testing::Test {
 protected:
  EvaluateErrDisable() {
    sw_.addInterface(ethernet1);
    sw_.start();
    sw_.takeTraces();
  }

  LinkFlap::LinkFlapProfileSm& sm() { return *sw_.profileSm(ethernet1, "default"); }

  /// Counts a flap at `flapTime`, the first one having been at 0.
  bool evaluate(double flapTime) {
    return LinkFlap::evaluateErrDisable(&sm(), flapTime, 0, maxFlaps_, interval_, violations_,
                                        trackedIntervals_);
  }

  Switch sw_;
  unsigned maxFlaps_{2};
  double interval_{10};
  unsigned violations_{1};
  unsigned trackedIntervals_{1};
};

TEST_F(EvaluateErrDisable, ThirdFlapWithinOneIntervalErrDisables) {
  EXPECT_FALSE(evaluate(0));
  EXPECT_FALSE(evaluate(3));
  EXPECT_EQ(counters(sm()), (Counters{2, 0, 0}));
  sw_.clock.secondsIs(6.5);
  EXPECT_TRUE(evaluate(6));
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 6.5);
  EXPECT_EQ(counters(sm()), (Counters{0, 0, 0}));
}

// Deliberate: equality. Only the flap that first exceeds the limit counts.
TEST_F(EvaluateErrDisable, FlapsBeyondTheViolatingOneAddNoViolation) {
  violations_ = 2;
  for (double const time : {0.0, 1.0, 2.0, 3.0, 4.0})
    EXPECT_FALSE(evaluate(time));
  EXPECT_EQ(counters(sm()), (Counters{5, 0, 1}));
}

TEST_F(EvaluateErrDisable, TracesTheCountThenTheLimit) {
  evaluate(0);
  evaluate(10);
  EXPECT_THAT(
      sw_.takeTraces(),
      ElementsAre(TraceLine{8, 76, "evaluateErrDisable", "@Ethernet1/default::evaluateErrDisable"},
                  TraceLine{8, 80, "evaluateErrDisable", "curFlaps changed to: 1"},
                  TraceLine{8, 90, "evaluateErrDisable", "curFlaps: 1 macFlapsConfig: 2"},
                  TraceLine{8, 76, "evaluateErrDisable", "@Ethernet1/default::evaluateErrDisable"},
                  TraceLine{8, 87, "evaluateErrDisable", "curFlaps set to 1 : 1"},
                  TraceLine{8, 90, "evaluateErrDisable", "curFlaps: 1 macFlapsConfig: 2"}));
}

TEST_F(EvaluateErrDisable, PrintsCountersAsUnsignedDecimals) {
  maxFlaps_ = 4294967294U;
  sm().curFlapsIs(4294967293U);
  evaluate(0);
  auto const lines = sw_.takeTraces();
  EXPECT_EQ(lines[1].message, "curFlaps changed to: 4294967294");
  EXPECT_EQ(lines[2].message, "curFlaps: 4294967294 macFlapsConfig: 4294967294");
}

/// A flap this long after the first falls into that interval of that length.
struct Fall {
  double age;
  double interval;
  unsigned index;
};

void PrintTo(Fall const& fall, std::ostream* out) {
  *out << fall.age << " s in intervals of " << fall.interval << " s: " << fall.index;
}

class IntervalIndex : public EvaluateErrDisable, public testing::WithParamInterface<Fall> {};

TEST_P(IntervalIndex, IsTheNumberOfWholeIntervalsInTheWholeSeconds) {
  interval_ = GetParam().interval;
  evaluate(GetParam().age);
  EXPECT_EQ(counters(sm()), (Counters{1, GetParam().index, 0}));
  // Measured from the first flap, wherever that lies.
  LinkFlap::evaluateErrDisable(&sm(), 1000 + GetParam().age, 1000, 9, interval_, 1, 1);
  EXPECT_EQ(counters(sm()), (Counters{2, GetParam().index, 0}));
}

INSTANTIATE_TEST_SUITE_P(
    Boundaries, IntervalIndex,
    testing::Values(Fall{0, 10, 0}, Fall{9.75, 10, 0}, Fall{9.9990234375, 10, 0}, Fall{10, 10, 1},
                    Fall{10.875, 10, 1}, Fall{19.9375, 10, 1}, Fall{20, 10, 2}, Fall{4.96875, 5, 0},
                    Fall{5, 5, 1}, Fall{9.875, 5, 1},
                    // Whole seconds first: 0.75 s of an interval of 1 s are 0 s.
                    Fall{0.75, 1, 0}, Fall{1.75, 1, 1}, Fall{3.5, 2, 1},
                    // The direct caller may give a fraction: 4 whole seconds in 1.5 s are 2.
                    Fall{4.5, 1.5, 2},
                    // And the whole second of 1.95 is less than 1.9.
                    Fall{1.95, 1.9, 0},
                    // An age of 2^63 + 2^32 s, in intervals of 2^33 s.
                    Fall{9223372041149743104.0, 8589934592.0, 1U << 30U}));

INSTANTIATE_TEST_SUITE_P(IntervalsBelowOne, IntervalIndex,
                         testing::Values(Fall{100, 0, 0}, Fall{100, -0.0, 0}, Fall{100, 0.5, 0},
                                         Fall{100, 0.999, 0}, Fall{100, -10, 0},
                                         Fall{100, std::numeric_limits<double>::quiet_NaN(), 0},
                                         Fall{100, std::numeric_limits<double>::infinity(), 0},
                                         Fall{100, -std::numeric_limits<double>::infinity(), 0}));

INSTANTIATE_TEST_SUITE_P(FlapsBeforeTheFirst, IntervalIndex,
                         testing::Values(Fall{-0.5, 10, 0}, Fall{-50, 10, 0}));

TEST_F(EvaluateErrDisable, CountsAnewInEachIntervalThatBegins) {
  maxFlaps_ = 9;
  evaluate(0);
  evaluate(1);
  evaluate(10);
  EXPECT_EQ(counters(sm()), (Counters{1, 1, 0}));
  evaluate(11);
  EXPECT_EQ(counters(sm()), (Counters{2, 1, 0}));
  evaluate(5);  // back in interval 0: another interval than the one being counted
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
}

// Compared as 64-bit numbers: interval 2^32 is not interval 0, although its low 32 bits are.
TEST_F(EvaluateErrDisable, AnIntervalIndexOf32BitsAndMoreNeverMatches) {
  maxFlaps_ = 9;
  interval_ = 1;
  EXPECT_FALSE(evaluate(kTwoTo32));
  EXPECT_FALSE(evaluate(kTwoTo32));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
  EXPECT_FALSE(evaluate(kTwoTo32 + 7));
  EXPECT_FALSE(evaluate(kTwoTo32 + 7));
  EXPECT_EQ(counters(sm()), (Counters{1, 7, 0}));
}

TEST_F(EvaluateErrDisable, AnIntervalIndexOf32BitsAndMoreIsAboveEveryTrackedInterval) {
  maxFlaps_ = 0;
  interval_ = 1;
  trackedIntervals_ = kGreatest;
  EXPECT_FALSE(evaluate(kTwoTo32));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 1}));
  sm().curViolationsIs(0);
  EXPECT_TRUE(evaluate(kTwoTo32 - 1));
}

TEST_F(EvaluateErrDisable, TakesAnAgeBeyond64BitsForTheGreatest) {
  maxFlaps_ = 9;
  interval_ = 1;
  EXPECT_FALSE(evaluate(1e30));
  EXPECT_EQ(counters(sm()), (Counters{1, kGreatest, 0}));
  EXPECT_FALSE(evaluate(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(counters(sm()), (Counters{1, kGreatest, 0}));
  EXPECT_FALSE(evaluate(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(counters(sm()), (Counters{1, 0, 0}));
}

TEST_F(EvaluateErrDisable, WithNoFlapAllowedErrDisablesAtTheFirst) {
  maxFlaps_ = 0;
  EXPECT_TRUE(evaluate(0));
}

// maxFlaps + 1 wraps to 0, which a counter reaches only by wrapping itself.
TEST_F(EvaluateErrDisable, TheLimitWrapsAt32Bits) {
  maxFlaps_ = kGreatest;
  EXPECT_FALSE(evaluate(0));
  EXPECT_FALSE(evaluate(10));
  EXPECT_EQ(counters(sm()), (Counters{1, 1, 0}));
  sm().curFlapsIs(kGreatest);
  EXPECT_TRUE(evaluate(10));
}

TEST_F(EvaluateErrDisable, TheFirstOfTwoViolationsIsRemembered) {
  violations_ = 2;
  trackedIntervals_ = 3;
  for (double const time : {0.0, 1.0, 2.0})
    EXPECT_FALSE(evaluate(time));
  EXPECT_EQ(counters(sm()).violations, 1U);
  EXPECT_FALSE(evaluate(20));
  EXPECT_FALSE(evaluate(21));
  EXPECT_TRUE(evaluate(22));
}

// Deliberate: intervals 0 to trackedIntervals inclusive.
TEST_F(EvaluateErrDisable, TheLastTrackedIntervalIsTheOneOfThatNumber) {
  maxFlaps_ = 0;
  trackedIntervals_ = 3;
  EXPECT_TRUE(evaluate(39));
  EXPECT_FALSE(evaluate(40));
  EXPECT_EQ(counters(sm()), (Counters{1, 4, 1}));
}

// Deliberate: the count is not taken back; once beyond, it never equals again.
TEST_F(EvaluateErrDisable, AViolationTooLateStillCountsAndSpoilsAllThatFollow) {
  maxFlaps_ = 0;
  EXPECT_FALSE(evaluate(20));
  EXPECT_EQ(counters(sm()), (Counters{1, 2, 1}));
  EXPECT_FALSE(evaluate(0));
  EXPECT_FALSE(evaluate(10));
  EXPECT_EQ(counters(sm()), (Counters{1, 1, 3}));
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), std::nullopt);
  sm().curViolationsIs(0);
  EXPECT_TRUE(evaluate(0));
}

TEST_F(EvaluateErrDisable, NoViolationsToReachIsReachedOnlyByWrapping) {
  maxFlaps_ = 0;
  violations_ = 0;
  EXPECT_FALSE(evaluate(0));
  sm().curViolationsIs(kGreatest);
  sm().curFlapsIs(0);
  EXPECT_TRUE(evaluate(0));
}

TEST_F(EvaluateErrDisable, WithNoTrackedIntervalsStillTracksIntervalZero) {
  maxFlaps_ = 0;
  trackedIntervals_ = 0;
  EXPECT_FALSE(evaluate(10));
  sm().curViolationsIs(0);
  EXPECT_TRUE(evaluate(9));
}

}  // namespace
