#include <gtest/gtest.h>
#include <type_traits>

#include "runtime/model/EthPhyIntfStatus.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using Interface::EthPhyIntfStatus;
using Interface::RawLinkStatus;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

class Listener : public EthPhyIntfStatus::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onRawLinkStatus() override { heard_.push_back("rawLinkStatus"); }

 private:
  Heard& heard_;
};

class EthPhyIntfStatusTest : public testing::Test {
 protected:
  Heard heard;
  Ptr<EthPhyIntfStatus> const object = make<EthPhyIntfStatus>(IntfId{"Ethernet1"});
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(object, heard);
};

TEST_F(EthPhyIntfStatusTest, Attributes) {
  RuntimeTest::expectAttributes(*object, {"intfId", "rawLinkStatus"});
}

TEST_F(EthPhyIntfStatusTest, NumbersThatOthersRelyOn) {
  static_assert(sizeof(RawLinkStatus) == 4);
  EXPECT_EQ(static_cast<unsigned>(RawLinkStatus::unknown), 0U);
  EXPECT_EQ(static_cast<unsigned>(RawLinkStatus::up), 1U);
  EXPECT_EQ(static_cast<unsigned>(RawLinkStatus::down), 2U);
}

TEST_F(EthPhyIntfStatusTest, IntfIdIsItsName) {
  EXPECT_EQ(object->intfId(), IntfId{"Ethernet1"});
  EXPECT_EQ(object->name(), "Ethernet1");
  EXPECT_TRUE(make<EthPhyIntfStatus>(IntfId{})->intfId().isNull());
}

TEST_F(EthPhyIntfStatusTest, ReadingTheIntfIdCounts) {
  EXPECT_EQ(counted(*object, [&] { (void)object->intfId(); }), kOneRead);
}

TEST_F(EthPhyIntfStatusTest, RawLinkStatus) {
  EXPECT_EQ(object->rawLinkStatus(), RawLinkStatus::unknown);
  EXPECT_EQ(counted(*object, [&] { object->rawLinkStatusIs(RawLinkStatus::unknown); }), kNothing);
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(counted(*object, [&] { object->rawLinkStatusIs(RawLinkStatus::up); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"rawLinkStatus"}));
  EXPECT_EQ(counted(*object, [&] { EXPECT_EQ(object->rawLinkStatus(), RawLinkStatus::up); }),
            kOneRead);
  EXPECT_EQ(counted(*object, [&] { object->rawLinkStatusIs(RawLinkStatus::up); }), kNothing);
  EXPECT_EQ(heard.size(), 1U);
}

TEST_F(EthPhyIntfStatusTest, TakesANumberThatHasNoName) {
  auto const odd = static_cast<RawLinkStatus>(4000000000U);
  object->rawLinkStatusIs(odd);
  EXPECT_EQ(object->rawLinkStatus(), odd);
  EXPECT_EQ(heard, (Heard{"rawLinkStatus"}));
}

}  // namespace
