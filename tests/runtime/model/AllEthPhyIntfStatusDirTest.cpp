#include <gtest/gtest.h>

#include "runtime/model/AllEthPhyIntfStatusDir.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using Interface::AllEthPhyIntfStatusDir;
using Interface::EthPhyIntfStatus;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using RuntimeTest::member;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

class Listener : public AllEthPhyIntfStatusDir::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onIntfStatus(IntfId id) override { heard_.push_back(member("intfStatus", id)); }
  void onIntfStatus() override { heard_.push_back("intfStatus()"); }
  void onIntfStatusvekImmediate() override { heard_.push_back("intfStatus!"); }

 private:
  Heard& heard_;
};

class AllEthPhyIntfStatusDirTest : public testing::Test {
 protected:
  Heard heard;
  Ptr<AllEthPhyIntfStatusDir> const dir = make<AllEthPhyIntfStatusDir>("status");
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(dir, heard);
  IntfId const ethernet1{"Ethernet1"};
};

TEST_F(AllEthPhyIntfStatusDirTest, Attributes) {
  RuntimeTest::expectAttributes(*dir, {"intfStatus"});
  EXPECT_EQ(AllEthPhyIntfStatusDir::intfStatusAttr.id, 386U);
}

TEST_F(AllEthPhyIntfStatusDirTest, AbsentInterfaceReadsAsNone) {
  EXPECT_FALSE(dir->intfStatus(ethernet1));
  EXPECT_TRUE(dir->intfStatus().empty()) << "reading makes no member";
}

TEST_F(AllEthPhyIntfStatusDirTest, MembersComeChangeAndGo) {
  auto const status = make<EthPhyIntfStatus>(ethernet1);
  EXPECT_EQ(counted(*dir, [&] { dir->intfStatusIs(ethernet1, status); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"intfStatus!", "intfStatus[Ethernet1]"}));
  EXPECT_EQ(counted(*dir, [&] { EXPECT_TRUE(dir->intfStatus(ethernet1) == status); }), kOneRead);
  EXPECT_EQ(counted(*dir, [&] { EXPECT_EQ(dir->intfStatus().size(), 1U); }), kOneRead);

  heard.clear();
  EXPECT_EQ(counted(*dir, [&] { dir->intfStatusIs(ethernet1, status); }), kNothing);
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(counted(*dir, [&] { dir->intfStatusIs(ethernet1, make<EthPhyIntfStatus>(ethernet1)); }),
            kOneChange);
  EXPECT_EQ(counted(*dir, [&] { dir->intfStatusDel(ethernet1); }), kOneChange);
  EXPECT_EQ(counted(*dir, [&] { dir->intfStatusDel(ethernet1); }), kNothing);
  EXPECT_EQ(heard, (Heard{"intfStatus!", "intfStatus[Ethernet1]", "intfStatus!",
                          "intfStatus[Ethernet1]"}));
  EXPECT_FALSE(dir->intfStatus(ethernet1));
  EXPECT_EQ(status->referenceCount(), 1U) << "the directory has let it go";
}

TEST_F(AllEthPhyIntfStatusDirTest, NewMemberIsMadeForItsInterface) {
  Ptr<EthPhyIntfStatus> const made = dir->newIntfStatus(ethernet1);
  EXPECT_TRUE(dir->intfStatus(ethernet1) == made);
  EXPECT_EQ(made->intfId(), ethernet1);
  EXPECT_EQ(made->name(), "Ethernet1");
  EXPECT_EQ(heard, (Heard{"intfStatus!", "intfStatus[Ethernet1]"}));
}

TEST_F(AllEthPhyIntfStatusDirTest, ChangeInsideAMemberIsNoChangeOfTheDirectory) {
  auto const made = dir->newIntfStatus(ethernet1);
  heard.clear();
  made->rawLinkStatusIs(Interface::RawLinkStatus::up);
  EXPECT_EQ(heard, Heard{});
}

}  // namespace
