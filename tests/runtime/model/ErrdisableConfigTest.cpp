#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "runtime/model/ErrdisableConfig.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using Errdisable::Config;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using RuntimeTest::member;
using Vek::make;
using Vek::Ptr;

class Listener : public Config::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onRecoveryInterval() override { heard_.push_back("recoveryInterval"); }
  void onDisabled(Vek::String cause) override { heard_.push_back(member("disabled", cause)); }
  void onDisabled() override { heard_.push_back("disabled()"); }
  void onDisabledvekImmediate() override { heard_.push_back("disabled!"); }
  void onTimerRecoveryEnabled(Vek::String cause) override {
    heard_.push_back(member("timerRecoveryEnabled", cause));
  }
  void onTimerRecoveryEnabled() override { heard_.push_back("timerRecoveryEnabled()"); }
  void onTimerRecoveryEnabledvekImmediate() override { heard_.push_back("timerRecoveryEnabled!"); }

 private:
  Heard& heard_;
};

class ErrdisableConfig : public testing::Test {
 protected:
  Heard heard;
  Ptr<Config> const config = make<Config>("errdisable");
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(config, heard);
};

TEST_F(ErrdisableConfig, Attributes) {
  RuntimeTest::expectAttributes(*config, {"recoveryInterval", "disabled", "timerRecoveryEnabled"});
  EXPECT_EQ(Config::disabledAttr.id, 261U);
}

TEST_F(ErrdisableConfig, AbsentCauseReadsAsFalse) {
  EXPECT_FALSE(config->disabled("link-flap"));
  EXPECT_FALSE(config->timerRecoveryEnabled("link-flap"));
  EXPECT_TRUE(config->disabled().empty());
  EXPECT_TRUE(config->timerRecoveryEnabled().empty());
}

TEST_F(ErrdisableConfig, Disabled) {
  EXPECT_EQ(counted(*config, [&] { config->disabledIs("link-flap", true); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->disabled("link-flap")); }), kOneRead);
  EXPECT_EQ(counted(*config, [&] { EXPECT_EQ(config->disabled().size(), 1U); }), kOneRead);
  EXPECT_EQ(counted(*config, [&] { config->disabledIs("link-flap", true); }), kNothing);
  EXPECT_EQ(counted(*config, [&] { config->disabledIs("link-flap", false); }), kOneChange);
  EXPECT_FALSE(config->disabled("link-flap"));
  EXPECT_TRUE(config->disabled().has("link-flap"));
  EXPECT_EQ(counted(*config, [&] { config->disabledDel("link-flap"); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { config->disabledDel("link-flap"); }), kNothing);
  EXPECT_EQ(heard, (Heard{"disabled!", "disabled[link-flap]", "disabled!", "disabled[link-flap]",
                          "disabled!", "disabled[link-flap]"}));
}

TEST_F(ErrdisableConfig, TimerRecoveryEnabled) {
  EXPECT_EQ(counted(*config, [&] { config->timerRecoveryEnabledIs("link-flap", true); }),
            kOneChange);
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->timerRecoveryEnabled("link-flap")); }),
            kOneRead);
  EXPECT_EQ(counted(*config, [&] { config->timerRecoveryEnabledIs("link-flap", true); }), kNothing);
  EXPECT_EQ(counted(*config, [&] { config->timerRecoveryEnabledDel("link-flap"); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { config->timerRecoveryEnabledDel("link-flap"); }), kNothing);
  EXPECT_EQ(heard, (Heard{"timerRecoveryEnabled!", "timerRecoveryEnabled[link-flap]",
                          "timerRecoveryEnabled!", "timerRecoveryEnabled[link-flap]"}));
  EXPECT_FALSE(config->disabled("link-flap")) << "the two collections are stored apart";
}

TEST_F(ErrdisableConfig, RecoveryInterval) {
  EXPECT_EQ(counted(*config, [&] { config->recoveryIntervalIs(30); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { config->recoveryIntervalIs(30); }), kNothing);
  EXPECT_EQ(counted(*config, [&] { EXPECT_EQ(config->recoveryInterval(), 30.0); }), kOneRead);
  double const nan = std::numeric_limits<double>::quiet_NaN();
  config->recoveryIntervalIs(nan);
  EXPECT_EQ(counted(*config, [&] { config->recoveryIntervalIs(nan); }), kNothing);
  EXPECT_EQ(heard, (Heard{"recoveryInterval", "recoveryInterval"}));
}

}  // namespace
