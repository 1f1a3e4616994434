#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "runtime/vek/Exception.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// The interface machine's switches, its reactors, and the setters of its watched objects.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

/// A monitored interface with settings that list p1, and one flap at 1.
class IntfSm : public testing::Test {
 protected:
  IntfSm() {
    sw_.addInterface(ethernet1);
    settings_ = sw_.settingsIs(ethernet1, true, {{"p1", true}});
    sw_.start();
    sw_.flap(ethernet1, {1});
    sw_.takeTraces();
  }

  LinkFlap::LinkFlapIntfSm& sm() { return *sw_.intfSm(ethernet1); }

  Switch sw_;
  Vek::Ptr<LinkFlap::IntfConfig> settings_;
};

TEST_F(IntfSm, SwitchedOffReachesReactorsAndProfileMachines) {
  sm().hasNotificationActiveIs(false);
  EXPECT_FALSE(sw_.profileSm(ethernet1, "p1")->hasNotificationActive());
  sw_.config->maxFlapsIs(7);
  settings_->enabledIs(false);
  settings_->profileListIs("p2", true);
  sw_.flap(ethernet1, {2});
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());

  sm().hasNotificationActiveIs(true);
  sw_.flap(ethernet1, {3});
  EXPECT_THAT(times(*sw_.profileSm(ethernet1, "p1")), ElementsAre(1, 3));
  settings_->enabledIs(true);
  EXPECT_EQ(sw_.traced("handleIntfConfigEnabled"), 1U);
  sw_.config->maxFlapsIs(8);
  EXPECT_EQ(sw_.traced("handleLinkFlapValues"), 1U);
}

TEST_F(IntfSm, NotificationSetToWhatItIsPassesNothingOn) {
  sw_.profileSm(ethernet1, "p1")->hasNotificationActiveIs(false);
  sm().hasNotificationActiveIs(true);
  EXPECT_FALSE(sw_.profileSm(ethernet1, "p1")->hasNotificationActive());
  sm().hasNotificationActiveIs(false);
  sw_.profileSm(ethernet1, "p1")->hasNotificationActiveIs(true);
  sm().hasNotificationActiveIs(false);
  EXPECT_TRUE(sw_.profileSm(ethernet1, "p1")->hasNotificationActive());
}

TEST_F(IntfSm, AsAZombieRunsNoHandlerAndLeavesItsProfileMachinesAlone) {
  sm().vekDoZombieReactors(true);
  EXPECT_TRUE(sm().vekMarkedForDeletion());
  EXPECT_FALSE(sw_.profileSm(ethernet1, "p1")->vekMarkedForDeletion());
  sw_.config->intervalIs(7);
  settings_->enabledIs(false);
  settings_->profileListIs("p2", true);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  sw_.flap(ethernet1, {2});
  EXPECT_THAT(times(*sw_.profileSm(ethernet1, "p1")), ElementsAre(1, 2));

  sm().vekDoZombieReactors(false);
  EXPECT_FALSE(sm().vekMarkedForDeletion());
  settings_->enabledIs(true);
  EXPECT_EQ(sw_.traced("handleIntfConfigEnabled"), 1U);
}

TEST_F(IntfSm, ZombieStateSetToWhatItIsPassesNothingOn) {
  sm().hasNotificationActiveIs(false);
  sm().vekDoZombieReactors(false);
  settings_->enabledIs(false);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

// The immediate form of a profile-list change is ignored, the keyed one acts.
TEST_F(IntfSm, IgnoresTheImmediateAndTheUnkeyedProfileListNotification) {
  auto const reactor = sm().newIntfConfig(settings_);
  LinkFlap::IntfConfig::NotifieeConst& base = *reactor;
  base.onProfileListvekImmediate();
  base.onProfileList();
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  base.onProfileList("p1");
  EXPECT_EQ(sw_.traced("handleProfileList"), 1U);
}

TEST_F(IntfSm, LeavesTheCollectionsOfTheConfigToTheTopLevelMachine) {
  auto const reactor = sm().newConfig(sw_.config);
  LinkFlap::Config::NotifieeConst& base = *reactor;
  base.onIntfConfig(ethernet1);
  base.onIntfConfig();
  base.onIntfConfigvekImmediate();
  base.onProfileConfig("p1");
  base.onProfileConfig();
  base.onProfileConfigvekImmediate();
  base.onDefaultProfileList("p1");
  base.onDefaultProfileList();
  base.onDefaultProfileListvekImmediate();
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  base.onMaxFlaps();
  base.onInterval();
  EXPECT_EQ(sw_.traced("handleLinkFlapValues"), 2U);
}

TEST_F(IntfSm, ReactorsMarkedForDeletionOrDetachedRunNoHandler) {
  auto const config = sm().newConfig(sw_.config);
  auto const intfConfig = sm().newIntfConfig(settings_);
  config->vekMarkedForDeletionIs(true);
  intfConfig->vekMarkedForDeletionIs(true);
  config->onMaxFlaps();
  config->onInterval();
  intfConfig->onEnabled();
  intfConfig->onProfileList("p1");
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  config->vekMarkedForDeletionIs(false);
  intfConfig->vekMarkedForDeletionIs(false);
  config->linkFlapIntfSmIs(nullptr);
  intfConfig->linkFlapIntfSmIs(nullptr);
  config->onMaxFlaps();
  intfConfig->onEnabled();
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(IntfSm, ConfigIsRunsTheHandlerOnceAndFollowsTheNewObject) {
  auto const other = Vek::make<LinkFlap::Config>();
  sm().configIs(other);
  EXPECT_EQ(sm().config(), other);
  EXPECT_THAT(sw_.takeMessages(),
              ElementsAre("LinkFlapIntfSm( Ethernet1 )::handleLinkFlapValues()"));
  sw_.config->maxFlapsIs(7);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  other->maxFlapsIs(7);
  EXPECT_EQ(sw_.takeTraces().size(), 1U);
}

TEST_F(IntfSm, IntfConfigIsRunsTheEnabledHandlerOnceAndFollowsTheNewObject) {
  auto const other = Vek::make<LinkFlap::IntfConfig>();
  other->enabledIs(true);
  other->profileListIs("p2", true);
  sm().intfConfigIs(other);
  EXPECT_EQ(sm().intfConfig(), other);
  EXPECT_EQ(sw_.traced("handleIntfConfigEnabled"), 1U);
  EXPECT_EQ(sw_.traced("handleProfileList"), 0U);
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("p2"));
  sw_.takeTraces();
  settings_->enabledIs(false);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  other->enabledIs(false);
  EXPECT_THAT(sw_.profiles(ethernet1), IsEmpty());
}

TEST_F(IntfSm, PointedAtTheObjectHeldDoesNothing) {
  sm().configIs(sw_.config);
  sm().intfConfigIs(settings_);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(IntfSm, DeletersReturnTheObjectAndDropTheReactor) {
  EXPECT_EQ(sm().configDel(), sw_.config);
  EXPECT_EQ(sm().intfConfigDel(), settings_);
  EXPECT_FALSE(sm().config());
  EXPECT_FALSE(sm().intfConfig());
  EXPECT_FALSE(sm().configDel());
  EXPECT_FALSE(sm().intfConfigDel());
  sw_.config->maxFlapsIs(7);
  settings_->enabledIs(false);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(IntfSm, PointedAtNothingDropsTheReactor) {
  sm().configIs(nullptr);
  sm().intfConfigIs(nullptr);
  EXPECT_FALSE(sm().config());
  EXPECT_FALSE(sm().intfConfig());
  EXPECT_FALSE(settings_->hasNotifiees());
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

// A reactor that is only now made is bound already: no handler runs.
TEST_F(IntfSm, WithoutReactorMakesOneAndRunsNoHandler) {
  sm().configDel();
  sm().intfConfigDel();
  sm().configIs(sw_.config);
  sm().intfConfigIs(settings_);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
  sw_.config->maxFlapsIs(7);
  settings_->enabledIs(false);
  EXPECT_EQ(sw_.traced("handleLinkFlapValues"), 1U);
  EXPECT_EQ(sw_.traced("handleIntfConfigEnabled"), 1U);
}

TEST_F(IntfSm, AReactorTakesOnlyObjectsOfItsType) {
  auto const reactor = sm().newConfig(sw_.config);
  EXPECT_THROW(reactor->notifierIs(settings_), Vek::TypeException);
  EXPECT_EQ(reactor->watched(), sw_.config);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(IntfSm, AZombieReactorIsRepointedWithoutRunningItsHandler) {
  auto const reactor = sm().newIntfConfig(settings_);
  auto const other = Vek::make<LinkFlap::IntfConfig>();
  reactor->vekDoZombieReactors(true);
  reactor->notifierIs(other);
  EXPECT_EQ(reactor->watched(), other);
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

// Two machines of one Config are told in the order in which they registered; switched off and on
// again, they register in the order of the collection.
TEST(IntfSmOrder, ProfileAndConfigChangesReachEachInterfaceOnce) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.start();
  sw.takeTraces();
  sw.config->maxFlapsIs(7);
  EXPECT_THAT(sw.takeMessages(),
              testing::UnorderedElementsAre("LinkFlapIntfSm( Ethernet1 )::handleLinkFlapValues()",
                                            "LinkFlapIntfSm( Ethernet2 )::handleLinkFlapValues()"));
}

}  // namespace
