#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "runtime/vek/Exception.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};

/// A monitored interface whose only profile is p1, with the flaps 1 and 2 behind it: room for many
/// more, so that only resets can empty its history.
class ProfileSm : public testing::Test {
 protected:
  ProfileSm() {
    profile_ = sw_.profileIs(
        "p1", {.maxFlaps = 50, .interval = 10, .violations = 3, .trackedIntervals = 4});
    sw_.addInterface(ethernet1);
    sw_.settingsIs(ethernet1, true, {{"p1", true}});
    sw_.start();
    sw_.flap(ethernet1, {1, 2});
    sm().curViolationsIs(1);
    sw_.takeTraces();
  }

  LinkFlap::LinkFlapProfileSm& sm() { return *sw_.profileSm(ethernet1, "p1"); }

  void expectReset() {
    EXPECT_THAT(times(sm()), IsEmpty());
    EXPECT_EQ(counters(sm()), (Counters{0, 0, 0}));
  }
  void expectKept() {
    EXPECT_THAT(times(sm()), ElementsAre(1, 2));
    EXPECT_EQ(counters(sm()), (Counters{2, 0, 1}));
  }

  Switch sw_;
  Vek::Ptr<LinkFlap::ProfileConfig> profile_;
};

TEST(LinkFlapProfileSmConstruction, IsInitialisedEmptyAndTraced) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"p1"});
  auto const sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
      "p1", profile, sw.config, sw.phyConfig(ethernet1), sw.status(ethernet1), sw.causeStatus,
      nullptr);
  EXPECT_EQ(sm->profileName(), "p1");
  EXPECT_EQ(sm->profileConfig(), profile);
  EXPECT_EQ(sm->config(), sw.config);
  EXPECT_EQ(sm->ethPhyIntfConfig(), sw.phyConfig(ethernet1));
  EXPECT_EQ(sm->ethPhyIntfStatus(), sw.status(ethernet1));
  EXPECT_EQ(sm->causeStatus(), sw.causeStatus);
  EXPECT_EQ(sm->intfId(), ethernet1);
  EXPECT_FALSE(sm->vekFwkActivity());
  EXPECT_TRUE(sm->initialized());
  EXPECT_TRUE(sm->hasNotificationActive());
  EXPECT_EQ(counters(*sm), (Counters{0, 0, 0}));
  EXPECT_EQ(sm->linkFlapTimeStamp().count(), 0U);
  EXPECT_EQ(sm->linkFlapTimeStampMetadata(), (Vek::LinkQueueMetadata{0, 0}));
  EXPECT_THAT(sw.takeTraces(), ElementsAre(TraceLine{8, 187, "handleInitialized",
                                                     "@Ethernet1/p1::handleInitialized()"}));
}

// Neither the link status nor the profile's values are looked at.
TEST(LinkFlapProfileSmConstruction, DoesNotEvaluateALinkThatIsUp) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.linkIs(ethernet1, 1);
  sw.start();
  EXPECT_EQ(sw.traced("handleLinkStatus"), 0U);
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), IsEmpty());
}

TEST(LinkFlapProfileSmConstruction, IsNotNotifiedBeforeItsFactorySwitchesThatOn) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm =
      Vek::make<LinkFlap::LinkFlapProfileSm>("p1", nullptr, sw.config, sw.phyConfig(ethernet1),
                                             sw.status(ethernet1), sw.causeStatus, nullptr);
  EXPECT_FALSE(sm->hasNotificationActive());
  // Its reactors are registered all the same.
  sw.flap(ethernet1, {1});
  EXPECT_THAT(times(*sm), ElementsAre(1));
}

// An object that comes later meets no reactor, and a reactor that is only then made runs no handler.
TEST(LinkFlapProfileSmConstruction, WithoutProfileAndStatusLeavesTheirReactorsOut) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.linkIs(ethernet1, 1);
  auto const sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
      "p1", nullptr, sw.config, sw.phyConfig(ethernet1), nullptr, sw.causeStatus, nullptr);
  sm->linkFlapTimeStampEnq(1);
  sw.takeTraces();
  sm->ethPhyIntfStatusIs(sw.status(ethernet1));
  sm->profileConfigIs(Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"p1"}));
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  EXPECT_THAT(times(*sm), ElementsAre(1));
}

TEST(LinkFlapProfileSm, TracesItsAddressAsAPointer) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  auto* const sm = sw.profileSm(ethernet1, "default");
  std::vector<std::string> raw;
  Vek::traceSinkIs([&](Vek::TraceRecord const& record) { raw.emplace_back(record.message); });
  sm->handleProfileValues("p", ethernet1);
  std::ostringstream expected;
  expected << static_cast<void const*>(sm) << "::handleProfileValues(p, Ethernet1)";
  EXPECT_THAT(raw, ElementsAre(expected.str()));
}

TEST(LinkFlapProfileSm, WithoutStatusHasTheEmptyIdentifierAndResetsWithIt) {
  Switch sw;
  auto const profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"p1"});
  auto const sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
      "p1", profile, sw.config, nullptr, nullptr, sw.causeStatus, nullptr);
  EXPECT_TRUE(sm->intfId().isNull());
  EXPECT_EQ(sm->intfId(), Tarn::IntfId{""});
  sm->linkFlapTimeStampEnq(1);
  sm->curFlapsIs(2);
  sm->curIntervalsIs(3);
  sm->curViolationsIs(4);
  sw.takeTraces();
  profile->maxFlapsIs(7);
  EXPECT_THAT(sw.takeTraces(), ElementsAre(TraceLine{8, 176, "handleProfileValues",
                                                     "@-/p1::handleProfileValues(p1, )"}));
  EXPECT_THAT(times(*sm), IsEmpty());
  EXPECT_EQ(counters(*sm), (Counters{0, 0, 0}));
}

/// One of the four values of a profile.
struct Value {
  char const* name;
  void (*change)(LinkFlap::ProfileConfig&);
  void (LinkFlap::LinkFlapProfileSm::*handler)();
};

void PrintTo(Value const& value, std::ostream* out) {
  *out << value.name;
}

class ProfileValue : public ProfileSm, public testing::WithParamInterface<Value> {};

TEST_P(ProfileValue, ChangedRestartsTheCountingAndLeavesTheRecord) {
  sw_.causeStatus->intfStatusIs(ethernet1, 5);
  expectKept();
  GetParam().change(*profile_);
  expectReset();
  EXPECT_THAT(sw_.takeTraces(),
              ElementsAre(TraceLine{8, 176, "handleProfileValues",
                                    "@Ethernet1/p1::handleProfileValues(p1, Ethernet1)"}));
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 5.0);
}

TEST_P(ProfileValue, HasAHandlerThatResetsWithTheNameOfTheWatchedProfile) {
  (sm().*GetParam().handler)();
  expectReset();
  EXPECT_THAT(sw_.takeMessages(), ElementsAre("@Ethernet1/p1::handleProfileValues(p1, Ethernet1)"));
}

// Without a watched profile the name is empty, although the machine has one.
TEST_P(ProfileValue, HasAHandlerThatResetsWithTheEmptyNameWithoutAProfile) {
  sm().profileConfigDel();
  (sm().*GetParam().handler)();
  expectReset();
  EXPECT_THAT(sw_.takeMessages(), ElementsAre("@Ethernet1/p1::handleProfileValues(, Ethernet1)"));
}

TEST_P(ProfileValue, ChangedDoesNothingToAZombie) {
  sm().vekDoZombieReactors(true);
  GetParam().change(*profile_);
  expectKept();
}

INSTANTIATE_TEST_SUITE_P(
    Each, ProfileValue,
    testing::Values(Value{"MaxFlaps", [](LinkFlap::ProfileConfig& p) { p.maxFlapsIs(7); },
                          &LinkFlap::LinkFlapProfileSm::vek_handleProfileConfig_maxFlaps},
                    Value{"Interval", [](LinkFlap::ProfileConfig& p) { p.intervalIs(7); },
                          &LinkFlap::LinkFlapProfileSm::vek_handleProfileConfig_interval},
                    Value{"Violations", [](LinkFlap::ProfileConfig& p) { p.violationsIs(7); },
                          &LinkFlap::LinkFlapProfileSm::vek_handleProfileConfig_violations},
                    Value{"TrackedIntervals",
                          [](LinkFlap::ProfileConfig& p) { p.trackedIntervalsIs(7); },
                          &LinkFlap::LinkFlapProfileSm::vek_handleProfileConfig_trackedIntervals}),
    [](testing::TestParamInfo<Value> const& instance) { return std::string{instance.param.name}; });

TEST_F(ProfileSm, IsNotResetByGlobalValues) {
  sw_.config->maxFlapsIs(7);
  sw_.config->intervalIs(7);
  expectKept();
}

TEST_F(ProfileSm, CounterSettersOnlyStore) {
  sm().curFlapsIs(51);
  sm().curIntervalsIs(4294967295U);
  sm().curViolationsIs(3);
  EXPECT_EQ(counters(sm()), (Counters{51, 4294967295U, 3}));
  EXPECT_THAT(times(sm()), ElementsAre(1, 2));
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), std::nullopt);
}

TEST_F(ProfileSm, WithoutAProfileConfigNeverRunsHandleProfileValuesByItsReactors) {
  sw_.settingsIs(ethernet1, true, {{"unconfigured", true}});
  sw_.flap(ethernet1, {3});
  sw_.takeTraces();
  sw_.profileIs("unconfigured", {.maxFlaps = 1, .interval = 1})->maxFlapsIs(2);
  EXPECT_EQ(sw_.traced("handleProfileValues"), 0U);
  EXPECT_THAT(times(*sw_.profileSm(ethernet1, "unconfigured")), ElementsAre(3));
}

TEST_F(ProfileSm, SwitchedOffHearsNothing) {
  sm().hasNotificationActiveIs(false);
  profile_->maxFlapsIs(7);
  sw_.flap(ethernet1, {3});
  expectKept();
  sm().hasNotificationActiveIs(true);
  sw_.flap(ethernet1, {4});
  EXPECT_THAT(times(sm()), ElementsAre(1, 2, 4));
  profile_->maxFlapsIs(8);
  expectReset();
}

TEST_F(ProfileSm, AsAZombieHearsNothing) {
  sm().vekDoZombieReactors(true);
  EXPECT_TRUE(sm().vekMarkedForDeletion());
  profile_->intervalIs(7);
  sw_.flap(ethernet1, {3});
  expectKept();
  sm().vekDoZombieReactors(false);
  EXPECT_FALSE(sm().vekMarkedForDeletion());
  sw_.flap(ethernet1, {4});
  EXPECT_THAT(times(sm()), ElementsAre(1, 2, 4));
}

TEST_F(ProfileSm, ReactorsMarkedForDeletionOrDetachedRunNoHandler) {
  auto const values = sm().newProfileConfig(profile_);
  auto const status = sm().newEthPhyIntfStatus(sw_.status(ethernet1));
  auto const callAll = [&] {
    values->onMaxFlaps();
    values->onInterval();
    values->onViolations();
    values->onTrackedIntervals();
    status->onRawLinkStatus();
  };
  values->vekMarkedForDeletionIs(true);
  status->vekMarkedForDeletionIs(true);
  callAll();
  expectKept();
  values->vekMarkedForDeletionIs(false);
  status->vekMarkedForDeletionIs(false);
  values->linkFlapProfileSmIs(nullptr);
  status->linkFlapProfileSmIs(nullptr);
  callAll();
  expectKept();
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(ProfileSm, PointedAtAnotherProfileRunsAllFourHandlersWithItsName) {
  auto const other = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"other"});
  sm().profileConfigIs(other);
  EXPECT_EQ(sm().profileConfig(), other);
  expectReset();
  std::string const message{"@Ethernet1/p1::handleProfileValues(other, Ethernet1)"};
  EXPECT_THAT(sw_.takeMessages(), ElementsAre(message, message, message, message));
  profile_->maxFlapsIs(7);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  other->maxFlapsIs(7);
  EXPECT_EQ(sw_.traced("handleProfileValues"), 1U);
}

TEST_F(ProfileSm, PointedAtAnotherStatusHandlesItOnce) {
  auto const other = Vek::make<Interface::EthPhyIntfStatus>(Tarn::IntfId{"Ethernet7"});
  other->rawLinkStatusIs(Interface::RawLinkStatus::up);
  sw_.clock.secondsIs(3);
  sm().ethPhyIntfStatusIs(other);
  EXPECT_EQ(sm().intfId(), Tarn::IntfId{"Ethernet7"});
  EXPECT_EQ(sw_.traced("handleLinkStatus"), 1U);
  EXPECT_THAT(times(sm()), ElementsAre(1, 2, 3));
  sw_.flap(ethernet1, {4});
  EXPECT_THAT(times(sm()), ElementsAre(1, 2, 3));
}

TEST_F(ProfileSm, PointedAtTheObjectHeldDoesNothing) {
  sm().profileConfigIs(profile_);
  sm().ethPhyIntfStatusIs(sw_.status(ethernet1));
  expectKept();
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(ProfileSm, WithoutReactorMakesOneAndRunsNoHandler) {
  EXPECT_EQ(sm().profileConfigDel(), profile_);
  EXPECT_EQ(sm().ethPhyIntfStatusDel(), sw_.status(ethernet1));
  EXPECT_FALSE(sm().profileConfig());
  EXPECT_FALSE(sm().ethPhyIntfStatus());
  EXPECT_FALSE(sm().profileConfigDel());
  profile_->maxFlapsIs(7);
  sw_.flap(ethernet1, {3});
  expectKept();
  sm().profileConfigIs(profile_);
  sm().ethPhyIntfStatusIs(sw_.status(ethernet1));
  expectKept();
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  sw_.flap(ethernet1, {4});
  EXPECT_THAT(times(sm()), ElementsAre(1, 2, 4));
  profile_->maxFlapsIs(8);
  expectReset();
}

TEST_F(ProfileSm, PointedAtNothingDropsTheReactor) {
  sm().profileConfigIs(nullptr);
  sm().ethPhyIntfStatusIs(nullptr);
  EXPECT_FALSE(profile_->hasNotifiees());
  EXPECT_FALSE(sw_.status(ethernet1)->hasNotifiees());
  expectKept();
}

TEST_F(ProfileSm, AReactorTakesOnlyObjectsOfItsType) {
  auto const values = sm().newProfileConfig(profile_);
  EXPECT_THROW(values->notifierIs(sw_.status(ethernet1)), Vek::TypeException);
  EXPECT_EQ(values->watched(), profile_);
}

}  // namespace
