#include <gtest/gtest.h>
#include <type_traits>

#include "runtime/model/EthPhyIntfConfig.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using Interface::EthPhyIntfConfig;
using Interface::PhyConfigState;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

class Listener : public EthPhyIntfConfig::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onPhyConfigState() override { heard_.push_back("phyConfigState"); }

 private:
  Heard& heard_;
};

class EthPhyIntfConfigTest : public testing::Test {
 protected:
  Heard heard;
  Ptr<EthPhyIntfConfig> const object = make<EthPhyIntfConfig>(IntfId{"Ethernet1"});
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(object, heard);
};

TEST_F(EthPhyIntfConfigTest, Attributes) {
  RuntimeTest::expectAttributes(*object, {"intfId", "phyConfigState"});
}

TEST_F(EthPhyIntfConfigTest, NumbersThatOthersRelyOn) {
  static_assert(sizeof(PhyConfigState) == 4);
  EXPECT_EQ(static_cast<unsigned>(PhyConfigState::configured), 0U);
  EXPECT_EQ(static_cast<unsigned>(PhyConfigState::inProgress), 2U);
}

TEST_F(EthPhyIntfConfigTest, IntfIdIsItsName) {
  EXPECT_EQ(object->intfId(), IntfId{"Ethernet1"});
  EXPECT_EQ(object->name(), "Ethernet1");
  EXPECT_TRUE(make<EthPhyIntfConfig>(IntfId{})->intfId().isNull());
}

TEST_F(EthPhyIntfConfigTest, ReadingTheIntfIdCounts) {
  EXPECT_EQ(counted(*object, [&] { (void)object->intfId(); }), kOneRead);
}

TEST_F(EthPhyIntfConfigTest, PhyConfigState) {
  EXPECT_EQ(object->phyConfigState(), PhyConfigState::configured);
  EXPECT_EQ(counted(*object, [&] { object->phyConfigStateIs(PhyConfigState::configured); }),
            kNothing);
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(counted(*object, [&] { object->phyConfigStateIs(PhyConfigState::inProgress); }),
            kOneChange);
  EXPECT_EQ(heard, (Heard{"phyConfigState"}));
  EXPECT_EQ(
      counted(*object, [&] { EXPECT_EQ(object->phyConfigState(), PhyConfigState::inProgress); }),
      kOneRead);
  EXPECT_EQ(counted(*object, [&] { object->phyConfigStateIs(PhyConfigState::inProgress); }),
            kNothing);
  EXPECT_EQ(heard.size(), 1U);
}

TEST_F(EthPhyIntfConfigTest, TakesANumberThatHasNoName) {
  auto const odd = static_cast<PhyConfigState>(4000000000U);
  object->phyConfigStateIs(odd);
  EXPECT_EQ(object->phyConfigState(), odd);
  EXPECT_EQ(heard, (Heard{"phyConfigState"}));
}

}  // namespace
