#include <gtest/gtest.h>
#include <limits>
#include <type_traits>
#include <utility>

#include "runtime/model/ErrdisableCauseStatus.h"

#include "tests/runtime/support/ModelChecks.h"

namespace {

using Errdisable::CauseStatus;
using RuntimeTest::counted;
using RuntimeTest::Heard;
using RuntimeTest::kNothing;
using RuntimeTest::kOneChange;
using RuntimeTest::kOneRead;
using RuntimeTest::member;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

class Listener : public CauseStatus::NotifieeConst {
 public:
  explicit Listener(Heard& heard) : heard_{heard} {}
  void onIntfStatus(IntfId id) override { heard_.push_back(member("intfStatus", id)); }
  void onIntfStatus() override { heard_.push_back("intfStatus()"); }
  void onIntfStatusvekImmediate() override { heard_.push_back("intfStatus!"); }

 private:
  Heard& heard_;
};

class ErrdisableCauseStatus : public testing::Test {
 protected:
  Heard heard;
  Ptr<CauseStatus> const cause = make<CauseStatus>("link-flap");
  Ptr<Listener> const listener = RuntimeTest::listen<Listener>(cause, heard);
  IntfId const ethernet1{"Ethernet1"};
};

TEST_F(ErrdisableCauseStatus, Attributes) {
  RuntimeTest::expectAttributes(*cause, {"intfStatus"});
  static_assert(std::is_same_v<decltype(&CauseStatus::intfStatusIs),
                               void (CauseStatus::*)(IntfId, double const&)>);
  static_assert(
      std::is_same_v<decltype(&CauseStatus::intfStatusDel), void (CauseStatus::*)(IntfId)>);
}

TEST_F(ErrdisableCauseStatus, AbsentInterfaceReadsAsZeroAndHasNoRecord) {
  EXPECT_EQ(cause->intfStatus(ethernet1), 0.0);
  EXPECT_FALSE(cause->intfStatus().has(ethernet1));
}

TEST_F(ErrdisableCauseStatus, RecordsComeChangeAndGo) {
  EXPECT_EQ(counted(*cause, [&] { cause->intfStatusIs(ethernet1, 6.5); }), kOneChange);
  EXPECT_EQ(heard, (Heard{"intfStatus!", "intfStatus[Ethernet1]"}));
  EXPECT_EQ(counted(*cause, [&] { EXPECT_EQ(cause->intfStatus(ethernet1), 6.5); }), kOneRead);
  EXPECT_EQ(counted(*cause, [&] { EXPECT_EQ(cause->intfStatus().size(), 1U); }), kOneRead);
  EXPECT_EQ(counted(*cause, [&] { cause->intfStatusIs(ethernet1, 6.5); }), kNothing);
  EXPECT_EQ(counted(*cause, [&] { cause->intfStatusIs(ethernet1, 7); }), kOneChange);
  EXPECT_EQ(cause->intfStatus(ethernet1), 7.0);
  EXPECT_EQ(counted(*cause, [&] { cause->intfStatusDel(ethernet1); }), kOneChange);
  EXPECT_EQ(counted(*cause, [&] { cause->intfStatusDel(ethernet1); }), kNothing);
  EXPECT_EQ(heard.size(), 6U);
  EXPECT_FALSE(cause->intfStatus().has(ethernet1));
}

TEST_F(ErrdisableCauseStatus, RecordOfTimeZeroIsARecord) {
  cause->intfStatusIs(ethernet1, 0);
  EXPECT_EQ(heard.size(), 2U);
  EXPECT_TRUE(cause->intfStatus().has(ethernet1));
}

TEST_F(ErrdisableCauseStatus, TimeThatIsNoNumberEqualsItself) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(counted(*cause, [&] { cause->intfStatusIs(ethernet1, nan); }), kOneChange);
  EXPECT_EQ(counted(*cause, [&] { cause->intfStatusIs(ethernet1, nan); }), kNothing);
  EXPECT_EQ(heard.size(), 2U);
}

TEST_F(ErrdisableCauseStatus, InterfacesAreKeptApart) {
  cause->intfStatusIs(ethernet1, 1);
  cause->intfStatusIs(IntfId{"Ethernet2"}, 2);
  cause->intfStatusIs(IntfId{}, 3);
  cause->intfStatusDel(ethernet1);
  EXPECT_EQ(cause->intfStatus(IntfId{"Ethernet2"}), 2.0);
  EXPECT_EQ(cause->intfStatus(IntfId{}), 3.0) << "the null identifier is a key like any";
  EXPECT_EQ(heard.back(), "intfStatus[Ethernet1]");
}

TEST_F(ErrdisableCauseStatus, RoomForARecordIsNotSeenUntilItIsUsed) {
  {
    auto const dropped = CauseStatus::intfStatusRoom(ethernet1);
    EXPECT_TRUE(dropped);
  }
  auto room = CauseStatus::intfStatusRoom(ethernet1);
  EXPECT_FALSE(cause->intfStatus().has(ethernet1));
  EXPECT_EQ(cause->changes(), 0U);
  EXPECT_TRUE(heard.empty());
  cause->intfStatusRoomIs(std::move(room), 2.5);
  EXPECT_EQ(cause->intfStatus(ethernet1), 2.5);
  EXPECT_EQ(cause->changes(), 1U);
  EXPECT_EQ(heard, (Heard{"intfStatus!", member("intfStatus", ethernet1)}));
}

// Of a new record, no value is one that it had already.
TEST_F(ErrdisableCauseStatus, RoomForARecordIsUsedAtTheTimeZeroToo) {
  cause->intfStatusRoomIs(CauseStatus::intfStatusRoom(ethernet1), 0);
  EXPECT_TRUE(cause->intfStatus().has(ethernet1));
  EXPECT_EQ(cause->changes(), 1U);
  EXPECT_EQ(heard, (Heard{"intfStatus!", member("intfStatus", ethernet1)}));
}

TEST_F(ErrdisableCauseStatus, RoomForARecordThatThereIsWritesIt) {
  cause->intfStatusIs(ethernet1, 1);
  heard.clear();
  cause->intfStatusRoomIs(CauseStatus::intfStatusRoom(ethernet1), 1);
  EXPECT_TRUE(heard.empty());
  cause->intfStatusRoomIs(CauseStatus::intfStatusRoom(ethernet1), 2);
  EXPECT_EQ(cause->intfStatus(ethernet1), 2);
  EXPECT_EQ(heard, (Heard{"intfStatus!", member("intfStatus", ethernet1)}));
  EXPECT_EQ(cause->intfStatus().size(), 1U);
}

}  // namespace
