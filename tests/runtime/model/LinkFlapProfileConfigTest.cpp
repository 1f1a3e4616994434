#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "runtime/model/LinkFlapProfileConfig.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using LinkFlap::ProfileConfig;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using Vek::make;
using Vek::Ptr;

class Listener : public ProfileConfig::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onMaxFlaps() override { heard_.push_back("maxFlaps"); }
  void onInterval() override { heard_.push_back("interval"); }
  void onViolations() override { heard_.push_back("violations"); }
  void onTrackedIntervals() override { heard_.push_back("trackedIntervals"); }

 private:
  Heard& heard_;
};

class LinkFlapProfileConfig : public testing::Test {
 protected:
  Heard heard;
  Ptr<ProfileConfig> const profile = make<ProfileConfig>("strict");
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(profile, heard);
};

TEST_F(LinkFlapProfileConfig, AttributesInTheirOrder) {
  RuntimeTest::expectAttributes(*profile,
                                {"maxFlaps", "interval", "violations", "trackedIntervals"});
  std::vector<std::string> names;
  for (auto const& [id, name] : RuntimeTest::attributesOf<ProfileConfig>())
    names.push_back(name);
  EXPECT_EQ(names, (Heard{"maxFlaps", "interval", "violations", "trackedIntervals"}));
  EXPECT_EQ(profile->name(), "strict");
}

TEST_F(LinkFlapProfileConfig, IsZeroUntilSet) {
  EXPECT_EQ(profile->maxFlaps(), 0U);
  EXPECT_EQ(profile->interval(), 0.0);
  EXPECT_EQ(profile->violations(), 0U);
  EXPECT_EQ(profile->trackedIntervals(), 0U);
}

TEST_F(LinkFlapProfileConfig, MaxFlaps) {
  EXPECT_EQ(counted(*profile, [&] { profile->maxFlapsIs(3); }), kOneChange);
  EXPECT_EQ(counted(*profile, [&] { profile->maxFlapsIs(3); }), kNothing);
  EXPECT_EQ(counted(*profile, [&] { EXPECT_EQ(profile->maxFlaps(), 3U); }), kOneRead);
  EXPECT_EQ(heard, (Heard{"maxFlaps"}));
}

TEST_F(LinkFlapProfileConfig, Interval) {
  EXPECT_EQ(counted(*profile, [&] { profile->intervalIs(2.9); }), kOneChange);
  EXPECT_EQ(counted(*profile, [&] { profile->intervalIs(2.9); }), kNothing);
  EXPECT_EQ(counted(*profile, [&] { EXPECT_EQ(profile->interval(), 2.9); }), kOneRead)
      << "truncated by those who use it, not here";
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(counted(*profile, [&] { profile->intervalIs(nan); }), kOneChange);
  EXPECT_EQ(counted(*profile, [&] { profile->intervalIs(nan); }), kNothing);
  EXPECT_EQ(heard, (Heard{"interval", "interval"}));
}

TEST_F(LinkFlapProfileConfig, Violations) {
  EXPECT_EQ(counted(*profile, [&] { profile->violationsIs(2); }), kOneChange);
  EXPECT_EQ(counted(*profile, [&] { profile->violationsIs(2); }), kNothing);
  EXPECT_EQ(counted(*profile, [&] { EXPECT_EQ(profile->violations(), 2U); }), kOneRead);
  EXPECT_EQ(heard, (Heard{"violations"}));
}

TEST_F(LinkFlapProfileConfig, TrackedIntervals) {
  EXPECT_EQ(counted(*profile, [&] { profile->trackedIntervalsIs(6); }), kOneChange);
  EXPECT_EQ(counted(*profile, [&] { profile->trackedIntervalsIs(6); }), kNothing);
  EXPECT_EQ(counted(*profile, [&] { EXPECT_EQ(profile->trackedIntervals(), 6U); }), kOneRead);
  EXPECT_EQ(heard, (Heard{"trackedIntervals"}));
}

TEST_F(LinkFlapProfileConfig, ValuesAreStoredApart) {
  profile->maxFlapsIs(1);
  profile->intervalIs(2);
  profile->violationsIs(3);
  profile->trackedIntervalsIs(4);
  EXPECT_EQ(profile->maxFlaps(), 1U);
  EXPECT_EQ(profile->interval(), 2.0);
  EXPECT_EQ(profile->violations(), 3U);
  EXPECT_EQ(profile->trackedIntervals(), 4U);
}

}  // namespace
