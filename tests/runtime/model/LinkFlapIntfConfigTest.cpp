#include <gtest/gtest.h>
#include <string>

#include "runtime/model/LinkFlapIntfConfig.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using LinkFlap::IntfConfig;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using RuntimeTest::member;
using Vek::make;
using Vek::Ptr;

class Listener : public IntfConfig::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onProfileList(Vek::String name) override { heard_.push_back(member("profileList", name)); }
  void onProfileList() override { heard_.push_back("profileList()"); }
  void onProfileListvekImmediate() override { heard_.push_back("profileList!"); }
  void onEnabled() override { heard_.push_back("enabled"); }

 private:
  Heard& heard_;
};

class LinkFlapIntfConfig : public testing::Test {
 protected:
  Heard heard;
  Ptr<IntfConfig> const config = make<IntfConfig>("Ethernet1");
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(config, heard);
};

TEST_F(LinkFlapIntfConfig, Attributes) {
  RuntimeTest::expectAttributes(*config, {"enabled", "profileList"});
  EXPECT_EQ(config->name(), "Ethernet1");
}

TEST_F(LinkFlapIntfConfig, Enabled) {
  EXPECT_FALSE(config->enabled());
  EXPECT_EQ(counted(*config, [&] { config->enabledIs(false); }), kNothing);
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(counted(*config, [&] { config->enabledIs(true); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"enabled"}));
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->enabled()); }), kOneRead);
  config->enabledIs(true);
  EXPECT_EQ(heard.size(), 1U);
  config->enabledIs(false);
  EXPECT_EQ(heard.size(), 2U);
}

TEST_F(LinkFlapIntfConfig, ProfileList) {
  EXPECT_FALSE(config->profileList("strict"));
  EXPECT_EQ(counted(*config, [&] { config->profileListIs("strict", true); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"profileList!", "profileList[strict]"}));
  EXPECT_EQ(counted(*config, [&] { EXPECT_TRUE(config->profileList("strict")); }), kOneRead);
  EXPECT_EQ(counted(*config, [&] { EXPECT_EQ(config->profileList().size(), 1U); }), kOneRead);

  heard.clear();
  EXPECT_EQ(counted(*config, [&] { config->profileListIs("strict", true); }), kNothing);
  EXPECT_EQ(counted(*config, [&] { config->profileListIs("strict", false); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { config->profileListIs("loose", false); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { config->profileListDel("strict"); }), kOneChange);
  EXPECT_EQ(counted(*config, [&] { config->profileListDel("strict"); }), kNothing);
  EXPECT_EQ(heard, (Heard{"profileList!", "profileList[strict]", "profileList!",
                          "profileList[loose]", "profileList!", "profileList[strict]"}));
  EXPECT_TRUE(config->profileList().has("loose"));
  EXPECT_FALSE(config->profileList().has("strict"));
}

}  // namespace
