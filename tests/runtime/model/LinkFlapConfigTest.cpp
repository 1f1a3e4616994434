#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "runtime/model/LinkFlapConfig.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using LinkFlap::Config;
using LinkFlap::IntfConfig;
using LinkFlap::ProfileConfig;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using RuntimeTest::listen;
using RuntimeTest::member;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

class Listener : public Config::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onMaxFlaps() override { heard_.push_back("maxFlaps"); }
  void onInterval() override { heard_.push_back("interval"); }
  void onIntfConfig(IntfId id) override { heard_.push_back(member("intfConfig", id)); }
  void onIntfConfig() override { heard_.push_back("intfConfig()"); }
  void onIntfConfigvekImmediate() override { heard_.push_back("intfConfig!"); }
  void onProfileConfig(Vek::String name) override {
    heard_.push_back(member("profileConfig", name));
  }
  void onProfileConfig() override { heard_.push_back("profileConfig()"); }
  void onProfileConfigvekImmediate() override { heard_.push_back("profileConfig!"); }
  void onDefaultProfileList(Vek::String name) override {
    heard_.push_back(member("defaultProfileList", name));
  }
  void onDefaultProfileList() override { heard_.push_back("defaultProfileList()"); }
  void onDefaultProfileListvekImmediate() override { heard_.push_back("defaultProfileList!"); }

 private:
  Heard& heard_;
};

class LinkFlapConfig : public testing::Test {
 protected:
  Heard heard;
  Ptr<Config> const config = make<Config>("linkFlap");
  Ptr<Listener> const listener = listen<Listener>(config, heard);
  IntfId const ethernet1{"Ethernet1"};
};

TEST_F(LinkFlapConfig, Attributes) {
  RuntimeTest::expectAttributes(
      *config, {"maxFlaps", "interval", "intfConfig", "profileConfig", "defaultProfileList"});
  EXPECT_EQ(Config::intfConfigAttr.id, 262U);
  EXPECT_EQ(Config::profileConfigAttr.id, 263U);
  EXPECT_EQ(Config::defaultProfileListAttr.id, 264U);
  EXPECT_EQ(config->name(), "linkFlap");
}

TEST_F(LinkFlapConfig, MaxFlaps) {
  EXPECT_EQ(counted(*config, [&] { config->maxFlapsIs(7); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"maxFlaps"}));
  EXPECT_EQ(counted(*config, [&] { EXPECT_EQ(config->maxFlaps(), 7U); }), kOneRead);

  EXPECT_EQ(counted(*config, [&] { config->maxFlapsIs(7); }), kNothing);
  EXPECT_EQ(heard.size(), 1U);

  config->maxFlapsIs(4294967295);
  EXPECT_EQ(config->maxFlaps(), 4294967295U);
}

TEST_F(LinkFlapConfig, Interval) {
  EXPECT_EQ(counted(*config, [&] { config->intervalIs(2.5); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"interval"}));
  EXPECT_EQ(counted(*config, [&] { EXPECT_EQ(config->interval(), 2.5); }), kOneRead);

  EXPECT_EQ(counted(*config, [&] { config->intervalIs(2.5); }), kNothing);
  EXPECT_EQ(heard.size(), 1U);
}

TEST_F(LinkFlapConfig, IntervalThatIsNoNumberEqualsItself) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  config->intervalIs(nan);
  EXPECT_EQ(heard, (Heard{"interval"}));
  EXPECT_NE(config->interval(), config->interval());

  EXPECT_EQ(counted(*config, [&] { config->intervalIs(nan); }), kNothing);
  EXPECT_EQ(heard.size(), 1U);
  EXPECT_EQ(counted(*config, [&] { config->intervalIs(3); }), kOneChange);
  EXPECT_EQ(heard.size(), 2U);
}

TEST_F(LinkFlapConfig, IntervalOfTheOtherZeroIsNoChange) {
  config->intervalIs(0.0);
  heard.clear();
  config->intervalIs(-0.0);
  EXPECT_EQ(heard, Heard{});
}

TEST_F(LinkFlapConfig, IntfConfig) {
  EXPECT_FALSE(config->intfConfig(ethernet1));
  EXPECT_FALSE(config->intfConfig().has(ethernet1));

  auto const settings = make<IntfConfig>("Ethernet1");
  EXPECT_EQ(counted(*config, [&] { config->intfConfigIs(ethernet1, settings); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"intfConfig!", "intfConfig[Ethernet1]"}));
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->intfConfig(ethernet1) == settings); }),
            kOneRead);
  EXPECT_EQ(counted(*config, [&] { EXPECT_EQ(config->intfConfig().size(), 1U); }), kOneRead);

  heard.clear();
  EXPECT_EQ(counted(*config, [&] { config->intfConfigIs(ethernet1, settings); }), kNothing);
  EXPECT_EQ(heard, Heard{});
  config->intfConfigIs(ethernet1, make<IntfConfig>("Ethernet1"));
  EXPECT_EQ(heard, (Heard{"intfConfig!", "intfConfig[Ethernet1]"})) << "another object, if alike";

  heard.clear();
  EXPECT_EQ(counted(*config, [&] { config->intfConfigDel(ethernet1); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"intfConfig!", "intfConfig[Ethernet1]"}));
  EXPECT_FALSE(config->intfConfig(ethernet1));
  EXPECT_EQ(counted(*config, [&] { config->intfConfigDel(ethernet1); }), kNothing);
  EXPECT_EQ(heard.size(), 2U);
}

TEST_F(LinkFlapConfig, NewIntfConfigMakesAMemberOfThatName) {
  Ptr<IntfConfig> const made = config->newIntfConfig(ethernet1);
  EXPECT_TRUE(config->intfConfig(ethernet1) == made);
  EXPECT_EQ(made->name(), "Ethernet1");
  EXPECT_EQ(heard, (Heard{"intfConfig!", "intfConfig[Ethernet1]"}));
  EXPECT_FALSE(config->newIntfConfig(ethernet1) == made) << "a new one each time";
}

TEST_F(LinkFlapConfig, ChangeInsideAMemberIsNoChangeOfTheCollection) {
  auto const settings = config->newIntfConfig(ethernet1);
  auto const profile = config->newProfileConfig("strict");
  heard.clear();
  settings->enabledIs(true);
  profile->maxFlapsIs(3);
  EXPECT_EQ(heard, Heard{});
}

TEST_F(LinkFlapConfig, ProfileConfig) {
  EXPECT_FALSE(config->profileConfig("strict"));
  Ptr<ProfileConfig> const made = config->newProfileConfig("strict");
  EXPECT_EQ(made->name(), "strict");
  EXPECT_EQ(heard, (Heard{"profileConfig!", "profileConfig[strict]"}));
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->profileConfig("strict") == made); }),
            kOneRead);
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->profileConfig().has("strict")); }),
            kOneRead);

  heard.clear();
  EXPECT_EQ(counted(*config, [&] { config->profileConfigIs("strict", made); }), kNothing);
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(counted(*config, [&] { config->profileConfigDel("strict"); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"profileConfig!", "profileConfig[strict]"}));
  EXPECT_EQ(counted(*config, [&] { config->profileConfigDel("strict"); }), kNothing);
  EXPECT_FALSE(config->profileConfig("strict"));
}

TEST_F(LinkFlapConfig, DefaultProfileListReadsFalseForAnAbsentName) {
  EXPECT_FALSE(config->defaultProfileList("strict"));
  EXPECT_TRUE(config->defaultProfileList().empty()) << "reading makes no member";
}

TEST_F(LinkFlapConfig, DefaultProfileList) {
  EXPECT_EQ(counted(*config, [&] { config->defaultProfileListIs("strict", true); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->defaultProfileList("strict")); }), kOneRead);
  EXPECT_EQ(counted(*config, [&] { config->defaultProfileListIs("strict", true); }), kNothing);
  EXPECT_EQ(counted(*config, [&] { config->defaultProfileListIs("strict", false); }), kOneChange);
  EXPECT_FALSE(config->defaultProfileList("strict"));
  EXPECT_TRUE(config->defaultProfileList().has("strict"));
  EXPECT_EQ(counted(*config, [&] { config->defaultProfileListDel("strict"); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { config->defaultProfileListDel("strict"); }), kNothing);
  EXPECT_EQ(heard, (Heard{"defaultProfileList!", "defaultProfileList[strict]",
                          "defaultProfileList!", "defaultProfileList[strict]",
                          "defaultProfileList!", "defaultProfileList[strict]"}));
}

TEST_F(LinkFlapConfig, FalseMemberIsAMemberAndItsComingIsAChange) {
  config->defaultProfileListIs("strict", false);
  EXPECT_EQ(heard, (Heard{"defaultProfileList!", "defaultProfileList[strict]"}));
  EXPECT_TRUE(config->defaultProfileList().has("strict"));
}

}  // namespace
