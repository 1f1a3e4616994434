#include <gtest/gtest.h>

#include "runtime/model/AllEthPhyIntfConfigDir.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using Interface::AllEthPhyIntfConfigDir;
using Interface::EthPhyIntfConfig;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using RuntimeTest::member;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

class Listener : public AllEthPhyIntfConfigDir::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onIntfConfig(IntfId id) override { heard_.push_back(member("intfConfig", id)); }
  void onIntfConfig() override { heard_.push_back("intfConfig()"); }
  void onIntfConfigvekImmediate() override { heard_.push_back("intfConfig!"); }

 private:
  Heard& heard_;
};

class AllEthPhyIntfConfigDirTest : public testing::Test {
 protected:
  Heard heard;
  Ptr<AllEthPhyIntfConfigDir> const dir = make<AllEthPhyIntfConfigDir>("config");
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(dir, heard);
  IntfId const ethernet1{"Ethernet1"};
};

TEST_F(AllEthPhyIntfConfigDirTest, Attributes) {
  RuntimeTest::expectAttributes(*dir, {"intfConfig"});
  EXPECT_EQ(AllEthPhyIntfConfigDir::intfConfigAttr.id, 386U);
}

TEST_F(AllEthPhyIntfConfigDirTest, AbsentInterfaceReadsAsNone) {
  EXPECT_FALSE(dir->intfConfig(ethernet1));
  EXPECT_TRUE(dir->intfConfig().empty()) << "reading makes no member";
}

TEST_F(AllEthPhyIntfConfigDirTest, MembersComeChangeAndGo) {
  auto const config = make<EthPhyIntfConfig>(ethernet1);
  EXPECT_EQ(counted(*dir, [&] { dir->intfConfigIs(ethernet1, config); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"intfConfig!", "intfConfig[Ethernet1]"}));
  EXPECT_EQ(counted(*dir, [&] { EXPECT_TRUE(dir->intfConfig(ethernet1) == config); }), kOneRead);
  EXPECT_EQ(counted(*dir, [&] { EXPECT_EQ(dir->intfConfig().size(), 1U); }), kOneRead);

  heard.clear();
  EXPECT_EQ(counted(*dir, [&] { dir->intfConfigIs(ethernet1, config); }), kNothing);
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(counted(*dir, [&] { dir->intfConfigIs(ethernet1, make<EthPhyIntfConfig>(ethernet1)); }),
            kOneChange);
  EXPECT_EQ(counted(*dir, [&] { dir->intfConfigDel(ethernet1); }), kOneChange);
  EXPECT_EQ(counted(*dir, [&] { dir->intfConfigDel(ethernet1); }), kNothing);
  EXPECT_EQ(heard, (Heard{"intfConfig!", "intfConfig[Ethernet1]", "intfConfig!",
                          "intfConfig[Ethernet1]"}));
  EXPECT_FALSE(dir->intfConfig(ethernet1));
  EXPECT_EQ(config->referenceCount(), 1U) << "the directory has let it go";
}

TEST_F(AllEthPhyIntfConfigDirTest, NewMemberIsMadeForItsInterface) {
  Ptr<EthPhyIntfConfig> const made = dir->newIntfConfig(ethernet1);
  EXPECT_TRUE(dir->intfConfig(ethernet1) == made);
  EXPECT_EQ(made->intfId(), ethernet1);
  EXPECT_EQ(made->name(), "Ethernet1");
  EXPECT_EQ(heard, (Heard{"intfConfig!", "intfConfig[Ethernet1]"}));
}

TEST_F(AllEthPhyIntfConfigDirTest, ChangeInsideAMemberIsNoChangeOfTheDirectory) {
  auto const made = dir->newIntfConfig(ethernet1);
  heard.clear();
  made->phyConfigStateIs(Interface::PhyConfigState::inProgress);
  EXPECT_EQ(heard, Heard{});
}

}  // namespace
