#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <vector>

#include "runtime/vek/Clock.h"

namespace {

constexpr double kNan{std::numeric_limits<double>::quiet_NaN()};
constexpr double kInfinity{std::numeric_limits<double>::infinity()};

/// Lets the clock say these times, one for each reading, while it lives.
class Says {
 public:
  explicit Says(std::vector<double> times)
      : times_{std::move(times)}, previous_{Vek::clockSourceIs([this] {
          EXPECT_LT(read_, times_.size());
          return times_.at(read_++);
        })} {}
  ~Says() { Vek::clockSourceIs(previous_); }
  Says(Says const&) = delete;
  Says& operator=(Says const&) = delete;

  std::size_t read() const { return read_; }

 private:
  std::vector<double> times_;
  std::size_t read_{0};
  Vek::ClockSource previous_;
};

TEST(Now, ReadsTheMonotonicClockByDefault) {
  double last = Vek::now();
  EXPECT_GT(last, 0);
  // It advances without help: bounded by readings, not by a sleep.
  double const first = last;
  for (int i = 0; i < 100000000 && last == first; ++i) {
    double const time = Vek::now();
    ASSERT_GE(time, last);
    last = time;
  }
  EXPECT_GT(last, first);
}

TEST(Now, ReadsItsSourceOncePerCall) {
  Says const source{{1.5, 2.25}};
  EXPECT_EQ(Vek::now(), 1.5);
  EXPECT_EQ(source.read(), 1U);
  EXPECT_EQ(Vek::now(), 2.25);
  EXPECT_EQ(source.read(), 2U);
}

TEST(Now, HoldsASourceThatStepsBack) {
  Says const source{{10, 9.5, 9.75, 10.5, -1}};
  EXPECT_EQ(Vek::now(), 10);
  EXPECT_EQ(Vek::now(), 10);
  EXPECT_EQ(Vek::now(), 10);
  EXPECT_EQ(Vek::now(), 10.5);
  EXPECT_EQ(Vek::now(), 10.5);
}

TEST(Now, HoldsASourceThatYieldsNoNumber) {
  Says const source{{3, kNan, 4}};
  EXPECT_EQ(Vek::now(), 3);
  EXPECT_EQ(Vek::now(), 3);
  EXPECT_EQ(Vek::now(), 4);
}

TEST(Now, HoldsASourceThatYieldsInfinity) {
  Says const source{{3, kInfinity, 4, -kInfinity, 4.5}};
  EXPECT_EQ(Vek::now(), 3);
  EXPECT_EQ(Vek::now(), 3);
  EXPECT_EQ(Vek::now(), 4) << "one infinite reading must not hold the clock for ever";
  EXPECT_EQ(Vek::now(), 4);
  EXPECT_EQ(Vek::now(), 4.5);
}

TEST(Now, IsZeroWhileThereWasNoFiniteTimeYet) {
  for (double const first : {kInfinity, -kInfinity}) {
    Says const source{{first, -1, kInfinity, 5}};
    EXPECT_EQ(Vek::now(), 0);
    EXPECT_EQ(Vek::now(), 0);
    EXPECT_EQ(Vek::now(), 0);
    EXPECT_EQ(Vek::now(), 5);
  }
}

TEST(Now, FollowsASourceThatLeaps) {
  constexpr double kYear{365.0 * 86400};
  constexpr double kGreatest{std::numeric_limits<double>::max()};
  Says const source{{1, 1 + kYear, 2, kGreatest, 3, kInfinity}};
  EXPECT_EQ(Vek::now(), 1);
  EXPECT_EQ(Vek::now(), 1 + kYear);
  EXPECT_EQ(Vek::now(), 1 + kYear);
  EXPECT_EQ(Vek::now(), kGreatest);
  EXPECT_EQ(Vek::now(), kGreatest);
  EXPECT_EQ(Vek::now(), kGreatest);
}

TEST(Now, IsZeroWhileThereWasNoNumberYet) {
  Says const source{{kNan, 5}};
  EXPECT_EQ(Vek::now(), 0);
  EXPECT_EQ(Vek::now(), 5);
}

TEST(Now, NeverGoesBehindTheZeroItSaidForWantOfANumber) {
  Says const source{{kNan, -5, 1}};
  EXPECT_EQ(Vek::now(), 0);
  EXPECT_EQ(Vek::now(), 0);
  EXPECT_EQ(Vek::now(), 1);
}

TEST(Now, MayBeginBelowZero) {
  Says const source{{-5, -6, -4}};
  EXPECT_EQ(Vek::now(), -5);
  EXPECT_EQ(Vek::now(), -5);
  EXPECT_EQ(Vek::now(), -4);
}

TEST(ClockSourceIs, BeginsANewRunWithEachSource) {
  Vek::ClockSource const before = Vek::clockSourceIs([] { return 100.0; });
  EXPECT_EQ(Vek::now(), 100);
  Vek::ClockSource const replaced = Vek::clockSourceIs([] { return 7.0; });
  EXPECT_EQ(Vek::now(), 7) << "what the former source said is forgotten";
  ASSERT_TRUE(replaced);
  EXPECT_EQ(replaced(), 100);
  Vek::clockSourceIs(before);
}

TEST(ClockSourceIs, EmptySourceStandsForTheMonotonicClock) {
  Vek::ClockSource const before = Vek::clockSourceIs([] { return -7.0; });
  Vek::clockSourceIs(nullptr);
  EXPECT_GT(Vek::now(), 0);
  Vek::clockSourceIs(before);
}

TEST(Clock, ASourceThatThrowsIsHeldAtTheLastTime) {
  bool throws = false;
  auto const before = Vek::clockSourceIs([&]() -> double {
    if (throws) throw std::runtime_error{"no time"};
    return 7;
  });
  EXPECT_EQ(Vek::now(), 7);
  throws = true;
  EXPECT_EQ(Vek::now(), 7);
  throws = false;
  EXPECT_EQ(Vek::now(), 7);
  Vek::clockSourceIs(before);
}

TEST(ManualClock, StandsStillUntilItIsMoved) {
  Vek::ManualClock clock{5};
  EXPECT_EQ(Vek::now(), 5);
  EXPECT_EQ(Vek::now(), 5);
  clock.secondsIs(7.5);
  EXPECT_EQ(Vek::now(), 7.5);
  EXPECT_EQ(clock.seconds(), 7.5);
}

TEST(ManualClock, BeginsAtZero) {
  Vek::ManualClock const clock;
  EXPECT_EQ(Vek::now(), 0);
}

TEST(ManualClock, IsHeldWhenItIsMovedBack) {
  Vek::ManualClock clock{5};
  EXPECT_EQ(Vek::now(), 5);
  clock.secondsIs(4);
  EXPECT_EQ(Vek::now(), 5);
  EXPECT_EQ(clock.seconds(), 4);
}

TEST(ManualClock, AdvancesByTheStepAfterEachReading) {
  Vek::ManualClock clock{1};
  clock.stepIs(0.5);
  EXPECT_EQ(Vek::now(), 1);
  EXPECT_EQ(Vek::now(), 1.5);
  EXPECT_EQ(clock.seconds(), 2);
  clock.stepIs(0);
  EXPECT_EQ(Vek::now(), 2);
  EXPECT_EQ(Vek::now(), 2);
}

TEST(ManualClock, GivesTheClockBackWhenItEnds) {
  Vek::ManualClock const outer{100};
  {
    Vek::ManualClock const inner{3};
    EXPECT_EQ(Vek::now(), 3);
  }
  EXPECT_EQ(Vek::now(), 100);
}

}  // namespace
