#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/introspection/support/Machines.h"

namespace {

using namespace IntrospectionTest;
using testing::ElementsAre;
using testing::IsEmpty;

class LinkFlapProfileSmView : public testing::Test, protected Machines {
 protected:
  LinkFlapProfileSmView() {
    sw.flap(kEthernet1, {1, 2.5});
    (void)sw.takeTraces();
  }

  LinkFlap::LinkFlapProfileSm::GenericIf_ view{&profile(), false};
};

TEST_F(LinkFlapProfileSmView, ReadsEveryAttribute) {
  EXPECT_EQ(objectOf<Vek::ActivityConfig>(get(view, "vekFwkActivity")), nullptr);
  EXPECT_EQ(get(view, "profileName"), text("fast"));
  EXPECT_EQ(objectOf<LinkFlap::ProfileConfig const>(get(view, "profileConfig")),
            sw.config->profileConfig("fast").get());
  EXPECT_EQ(objectOf<LinkFlap::Config const>(get(view, "config")), sw.config.get());
  EXPECT_EQ(objectOf<Interface::EthPhyIntfConfig const>(get(view, "ethPhyIntfConfig")),
            sw.phyConfig(kEthernet1).get());
  EXPECT_EQ(objectOf<Interface::EthPhyIntfStatus const>(get(view, "ethPhyIntfStatus")),
            sw.status(kEthernet1).get());
  EXPECT_EQ(objectOf<Errdisable::CauseStatus>(get(view, "causeStatus")), sw.causeStatus.get());
  EXPECT_EQ(get(view, "intfId"), Vek::Value{kEthernet1});
  EXPECT_EQ(get(view, "curIntervals"), Vek::Value{0U});
  EXPECT_EQ(get(view, "curFlaps"), Vek::Value{2U});
  EXPECT_EQ(get(view, "curViolations"), Vek::Value{0U});
  EXPECT_EQ(get(view, "initialized"), Vek::Value{true});
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(get(view, "intfSm")), &intf());
  EXPECT_EQ(get(view, "fwkKey"), text("fast"));
  EXPECT_EQ(size(view, "linkFlapTimeStamp"), 2U);
  EXPECT_EQ(get(view, "linkFlapTimeStamp", Vek::Value{0U}), Vek::Value{1.0});
  EXPECT_EQ(get(view, "linkFlapTimeStamp", text("1")), Vek::Value{2.5});
  EXPECT_EQ(getText(view, "linkFlapTimeStampMetadata"), "0:2");
}

TEST_F(LinkFlapProfileSmView, AnAbsentTimeIsNoValueAtAll) {
  EXPECT_TRUE(get(view, "linkFlapTimeStamp", text("2")).empty());
  EXPECT_TRUE(get(view, "linkFlapTimeStamp", Vek::Value{4294967295U}).empty());
}

TEST_F(LinkFlapProfileSmView, AMachineThatWasTakenOutHasNoOwner) {
  Vek::Ptr<LinkFlap::LinkFlapProfileSm> const hold{&profile()};
  (void)intf().linkFlapProfileSmDel("fast");
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(get(view, "intfSm")), nullptr);
  EXPECT_EQ(getText(view, "intfSm"), "null");
}

TEST_F(LinkFlapProfileSmView, WritesTheCounters) {
  set(view, "curIntervals", Vek::Value{3U});
  set(view, "curFlaps", text("4"));
  set(view, "curViolations", text("4294967295"));
  EXPECT_EQ(counters(profile()), (Counters{4, 3, 4294967295U}));
  set(view, "initialized", text("false"));
  EXPECT_FALSE(profile().initialized());
}

// What an earlier operation has left there is not taken for the result of this one.
TEST_F(LinkFlapProfileSmView, OperationsWithoutAResultLeaveNone) {
  using Op = Vek::GenericIf::Op;
  auto const queue = view.attributeId("linkFlapTimeStamp");
  Vek::Value result{7U};
  view.attributeOp(Op{view.attributeId("curFlaps"), OpCode::set, {}}, {text("4")}, result);
  EXPECT_TRUE(result.empty());
  result = Vek::Value{7U};
  view.attributeOp(Op{queue, OpCode::set, Vek::Value{1U}}, {Vek::Value{2.75}}, result);
  EXPECT_TRUE(result.empty());
  result = Vek::Value{7U};
  view.attributeOp(Op{view.attributeId("handleLinkStatus"), OpCode::call, {}}, {}, result);
  EXPECT_TRUE(result.empty());
  EXPECT_EQ(profile().curFlaps(), 5U) << "4 was written, the call has counted one more";
}

TEST_F(LinkFlapProfileSmView, WritesTimesByIndex) {
  setAt(view, "linkFlapTimeStamp", Vek::Value{1U}, Vek::Value{2.75});
  EXPECT_EQ(times(profile()), (std::vector<double>{1, 2.75}));
  setAt(view, "linkFlapTimeStamp", text("2"), text("3.5"));  // the next index: appended
  EXPECT_EQ(times(profile()), (std::vector<double>{1, 2.75, 3.5}));
  EXPECT_EQ(getText(view, "linkFlapTimeStampMetadata"), "0:3");
}

TEST_F(LinkFlapProfileSmView, RemovesTimesByIndexAndReturnsThem) {
  EXPECT_EQ(del(view, "linkFlapTimeStamp", text("0")), Vek::Value{1.0});
  EXPECT_EQ(times(profile()), (std::vector<double>{2.5}));
  EXPECT_TRUE(del(view, "linkFlapTimeStamp", text("0")).empty());
  EXPECT_EQ(getText(view, "linkFlapTimeStampMetadata"), "1:2");
}

TEST_F(LinkFlapProfileSmView, WritesTheQueuesIndexSpace) {
  Vek::Value const before = get(view, "linkFlapTimeStampMetadata");
  set(view, "linkFlapTimeStampMetadata", text("0:4294967295"));
  EXPECT_EQ(profile().linkFlapTimeStampMetadata().nextIndex, 4294967295U);
  EXPECT_EQ(thrownBy([&] { profile().linkFlapTimeStampEnq(9); }),
            "Vek::RangeException 1: linkqueue index space full");
  set(view, "linkFlapTimeStampMetadata", before);
  EXPECT_EQ(get(view, "linkFlapTimeStampMetadata"), before);
  EXPECT_EQ(profile().linkFlapTimeStampMetadata().nextIndex, 2U);
}

TEST_F(LinkFlapProfileSmView, RefusesWhatIsNoIndexSpace) {
  EXPECT_EQ(thrownBy([&] { set(view, "linkFlapTimeStampMetadata", text("1;2")); }),
            "Vek::RangeException 1: cannot convert \"1;2\" to Vek::LinkQueueMetadata");
  EXPECT_EQ(thrownBy([&] { set(view, "linkFlapTimeStampMetadata", text("1:2:3")); }),
            "Vek::RangeException 1: junk at column 4 deserializing 1:2:3");
  EXPECT_EQ(thrownBy([&] { set(view, "linkFlapTimeStampMetadata", Vek::Value{1U}); }),
            "Vek::TypeException 3: LinkFlapProfileSm");
  EXPECT_EQ(getText(view, "linkFlapTimeStampMetadata"), "0:2");
}

TEST_F(LinkFlapProfileSmView, PointsTheInputsAtOtherObjectsWhichRunsTheirHandlers) {
  auto const another = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"another"});
  set(view, "profileConfig", Vek::Value{another});
  EXPECT_EQ(profile().profileConfig(), another);
  EXPECT_THAT(times(profile()), IsEmpty());
  EXPECT_EQ(sw.traced("handleProfileValues"), 4U);  // one for each value of the profile
  sw.takeTraces();

  Tarn::IntfId const ethernet2{"Ethernet2"};
  auto const status = Vek::make<Interface::EthPhyIntfStatus>(ethernet2);
  set(view, "ethPhyIntfStatus", Vek::Value{status});
  EXPECT_EQ(profile().ethPhyIntfStatus(), status);
  EXPECT_EQ(get(view, "intfId"), Vek::Value{ethernet2});
  EXPECT_EQ(sw.traced("handleLinkStatus"), 1U);
}

TEST_F(LinkFlapProfileSmView, RemovesTheInputsAndReturnsWhatTheyWere) {
  auto const config = profile().profileConfig();
  EXPECT_EQ(objectOf<LinkFlap::ProfileConfig const>(del(view, "profileConfig")), config.get());
  EXPECT_FALSE(profile().profileConfig());
  EXPECT_EQ(objectOf<Interface::EthPhyIntfStatus const>(del(view, "ethPhyIntfStatus")),
            sw.status(kEthernet1).get());
  EXPECT_EQ(get(view, "intfId"), Vek::Value{Tarn::IntfId{}});
  EXPECT_EQ(objectOf<LinkFlap::ProfileConfig const>(del(view, "profileConfig")), nullptr);
}

TEST_F(LinkFlapProfileSmView, CallsEveryHandlerWithItsArguments) {
  (void)call(view, "handleProfileValues", {text("any, name"), text("\"an interface\"")});
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("@Ethernet1/fast::handleProfileValues(any, name, an interface)"));
  EXPECT_THAT(times(profile()), IsEmpty());

  sw.clock.secondsIs(10);
  (void)call(view, "handleLinkStatus");  // the link is up: one more flap
  EXPECT_EQ(times(profile()), (std::vector<double>{10}));
  EXPECT_EQ(sw.traced("handleLinkStatus"), 1U);
  sw.takeTraces();

  set(view, "initialized", Vek::Value{false});
  (void)call(view, "handleInitialized");
  EXPECT_TRUE(profile().initialized());
  EXPECT_THAT(sw.takeMessages(), ElementsAre("@Ethernet1/fast::handleInitialized()"));
}

TEST_F(LinkFlapProfileSmView, SwitchesByHandlerAndByOperation) {
  (void)call(view, "hasNotificationActiveIs", {text("false")});
  EXPECT_FALSE(profile().hasNotificationActive());
  sw.flap(kEthernet1, {3});
  EXPECT_THAT(times(profile()), ElementsAre(1, 2.5));
  view.hasNotificationActiveIs(true);
  view.vekDoZombieReactors(true);
  EXPECT_TRUE(profile().vekMarkedForDeletion());
  sw.flap(kEthernet1, {4});
  EXPECT_THAT(times(profile()), ElementsAre(1, 2.5));
  (void)call(view, "vekDoZombieReactors", {Vek::Value{false}});
  sw.flap(kEthernet1, {5});
  EXPECT_THAT(times(profile()), ElementsAre(1, 2.5, 5));

  LinkFlap::LinkFlapProfileSm::GenericIf_ readOnly{&profile(), true};
  EXPECT_EQ(thrownBy([&] { readOnly.hasNotificationActiveIs(false); }), kConst);
  EXPECT_EQ(thrownBy([&] { readOnly.vekDoZombieReactors(true); }), kConst);
}

TEST_F(LinkFlapProfileSmView, RefusesWhatItDoesNotTake) {
  EXPECT_EQ(thrownBy([&] { call(view, "handleProfileValues", {text("a")}); }),
            "Vek::RangeException 1: argument intfId of handleProfileValues is missing");
  EXPECT_EQ(thrownBy([&] {
              call(view, "handleProfileValues", {text("a"), text("b"), text("c")});
            }),
            "Vek::Exception 4: unknown argument c");
  EXPECT_EQ(thrownBy([&] {
              call(view, "handleProfileValues", {text("a"), Vek::Value{1U}});
            }),
            "Vek::TypeException 3: LinkFlapProfileSm");
  EXPECT_EQ(thrownBy([&] { set(view, "curFlaps", Vek::Value{1.0}); }),
            "Vek::TypeException 3: LinkFlapProfileSm");
  EXPECT_EQ(thrownBy([&] { set(view, "curFlaps", text("-1")); }),
            "Vek::RangeException 1: cannot convert \"-1\" to unsigned int");
  EXPECT_EQ(thrownBy([&] { set(view, "curFlaps", text("4294967296")); }),
            "Vek::RangeException 1: cannot convert \"4294967296\" to unsigned int");
  EXPECT_EQ(thrownBy([&] { set(view, "curFlaps", text("12 ")); }),
            "Vek::RangeException 1: junk at column 3 deserializing 12 ");
  EXPECT_EQ(thrownBy([&] { setAt(view, "linkFlapTimeStamp", text("x"), text("1")); }),
            "Vek::RangeException 1: cannot convert \"x\" to unsigned int");
  EXPECT_EQ(thrownBy([&] { setAt(view, "linkFlapTimeStamp", text("1"), text("soon")); }),
            "Vek::RangeException 1: cannot convert \"soon\" to double");
  EXPECT_EQ(thrownBy([&] { get(view, "linkFlapTimeStamp", Vek::Value{true}); }),
            "Vek::TypeException 3: LinkFlapProfileSm");
  EXPECT_EQ(thrownBy([&] { operate(view, OpCode::set, "linkFlapTimeStamp", text("1"), {}); }),
            "Vek::RangeException 1: a value is missing");
  EXPECT_EQ(thrownBy([&] {
              operate(view, OpCode::set, "linkFlapTimeStamp", text("1"), {text("1"), text("2")});
            }),
            "Vek::Exception 4: unknown argument 2");
  EXPECT_EQ(times(profile()), (std::vector<double>{1, 2.5}));
  EXPECT_EQ(counters(profile()), (Counters{2, 0, 0}));
}

// What an attribute's own operation throws, reaches the tool.
TEST_F(LinkFlapProfileSmView, PassesOnWhatTheQueueThrows) {
  setAt(view, "linkFlapTimeStamp", text("4294967295"), text("0.5"));  // before the head
  EXPECT_EQ(times(profile()), (std::vector<double>{0.5, 1, 2.5}));
  set(view, "linkFlapTimeStampMetadata", text("3:2"));
  EXPECT_EQ(thrownBy([&] { setAt(view, "linkFlapTimeStamp", text("2"), text("3")); }),
            "Vek::RangeException 1: linkqueue index space full");
}

TEST_F(LinkFlapProfileSmView, TakesNoHalfOfAnIndexSpace) {
  for (char const* const half : {"3", "3:", "3;4", ":4"})
    EXPECT_THAT(thrownBy([&] { set(view, "linkFlapTimeStampMetadata", text(half)); }),
                testing::StartsWith("Vek::RangeException 1: "))
        << half;
}

}  // namespace
