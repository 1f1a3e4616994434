#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// The top-level machine's switches (notification, zombie state, activity) and the setters of its
// watched inputs.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

/// One change of each watched attribute of the top-level machine; none of them concerns an
/// interface that is there.
void changeEachInput(Switch& sw) {
  sw.addPhyConfig(ethernet2);
  sw.addStatus(Tarn::IntfId{"Ethernet9"});
  sw.settingsIs(ethernet2, true);
  sw.profileIs("p1", {.maxFlaps = 1, .interval = 1});
  sw.config->defaultProfileListDel("p1");
  sw.errdisableConfig->disabledIs("other", true);
}

TEST(LinkFlapSmNotification, SwitchedOffReachesReactorsAndAllMachinesBelow) {
  Switch sw;
  sw.profileIs("p1", {.maxFlaps = 1, .interval = 1});
  sw.config->defaultProfileListIs("p1", true);
  sw.addInterface(ethernet1);
  sw.start();
  sw.machine().hasNotificationActiveIs(false);
  EXPECT_FALSE(sw.machine().hasNotificationActive());
  EXPECT_FALSE(sw.intfSm(ethernet1)->hasNotificationActive());
  EXPECT_FALSE(sw.profileSm(ethernet1, "p1")->hasNotificationActive());

  sw.takeTraces();
  changeEachInput(sw);
  sw.config->maxFlapsIs(7);
  sw.flap(ethernet1, {1});
  EXPECT_THAT(sw.takeTraces(), IsEmpty());

  sw.machine().hasNotificationActiveIs(true);
  EXPECT_TRUE(sw.profileSm(ethernet1, "p1")->hasNotificationActive());
  sw.flap(ethernet1, {2});
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "p1")), ElementsAre(2.0));
  sw.errdisableConfig->disabledIs("other", false);
  EXPECT_EQ(sw.traced("handleDisabled"), 1U);
}

TEST(LinkFlapSmNotification, SetToWhatItIsPassesNothingOn) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.intfSm(ethernet1)->hasNotificationActiveIs(false);
  sw.machine().hasNotificationActiveIs(true);
  EXPECT_FALSE(sw.intfSm(ethernet1)->hasNotificationActive());
  sw.machine().hasNotificationActiveIs(false);
  sw.intfSm(ethernet1)->hasNotificationActiveIs(true);
  sw.machine().hasNotificationActiveIs(false);
  EXPECT_TRUE(sw.intfSm(ethernet1)->hasNotificationActive());
}

TEST(LinkFlapSmZombie, RunsNoHandlerAndLeavesTheInterfaceMachinesAlone) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.machine().vekDoZombieReactors(true);
  EXPECT_TRUE(sw.machine().vekMarkedForDeletion());
  EXPECT_FALSE(sw.intfSm(ethernet1)->vekMarkedForDeletion());
  sw.takeTraces();
  changeEachInput(sw);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  sw.flap(ethernet1, {1});
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(1.0));

  sw.machine().vekDoZombieReactors(false);
  EXPECT_FALSE(sw.machine().vekMarkedForDeletion());
  sw.errdisableConfig->disabledIs("other", false);
  EXPECT_EQ(sw.traced("handleDisabled"), 1U);
}

// Delivery that was switched off otherwise stays off: an unchanged state is not passed on.
TEST(LinkFlapSmZombie, SetToWhatItIsPassesNothingOn) {
  Switch sw;
  sw.start();
  sw.machine().hasNotificationActiveIs(false);
  sw.machine().vekDoZombieReactors(false);
  sw.takeTraces();
  sw.errdisableConfig->disabledIs("other", true);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(LinkFlapSmActivity, IsPassedToEachReactor) {
  Switch sw;
  sw.start();
  auto const deferring = Vek::make<Vek::ActivityConfig>();
  deferring->deferredIs(true);
  sw.machine().vekFwkActivityIs(deferring);
  EXPECT_EQ(sw.machine().vekFwkActivity(), deferring);
  sw.takeTraces();
  changeEachInput(sw);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  Vek::vekActivitySmFor(deferring)->deliver();
  // Config directory, status directory, settings; the deletion of an absent default changed nothing.
  EXPECT_EQ(sw.traced("handleIntf"), 3U);
  EXPECT_EQ(sw.traced("handleProfileConfig"), 1U);
  EXPECT_EQ(sw.traced("handleDisabled"), 1U);
}

TEST(LinkFlapSmActivity, DoesNotConcernTheInterfaceMachines) {
  Switch sw;
  sw.activity->deferredIs(true);
  auto const settings = sw.settingsIs(ethernet1, false);
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_FALSE(sw.intfSm(ethernet1)->vekFwkActivity());
  settings->enabledIs(true);
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
  EXPECT_FALSE(sw.profileSm(ethernet1, "default")->vekFwkActivity());
  sw.flap(ethernet1, {1});
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(1.0));
}

TEST(LinkFlapSmInputs, PointedAtAnotherConfigFollowsThatOneAndRunsNoHandler) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  auto const former = sw.config;
  sw.config = Vek::make<LinkFlap::Config>();
  sw.machine().configIs(sw.config);
  EXPECT_EQ(sw.machine().config(), sw.config);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  former->defaultProfileListIs("p1", true);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  sw.config->defaultProfileListIs("p1", true);
  EXPECT_EQ(sw.traced("handleDefaultProfileList"), 1U);
}

TEST(LinkFlapSmInputs, PointedAtOtherObjectsFollowsThose) {
  Switch sw;
  sw.start();
  auto const formerConfigDir = sw.configDir;
  auto const formerStatusDir = sw.statusDir;
  auto const formerErrdisable = sw.errdisableConfig;
  sw.configDir = Vek::make<Interface::AllEthPhyIntfConfigDir>();
  sw.statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
  sw.errdisableConfig = Vek::make<Errdisable::Config>();
  sw.takeTraces();
  sw.machine().ethPhyIntfConfigDirIs(sw.configDir);
  sw.machine().ethPhyIntfStatusDirIs(sw.statusDir);
  sw.machine().errdisableConfigIs(sw.errdisableConfig);
  EXPECT_EQ(sw.machine().ethPhyIntfConfigDir(), sw.configDir);
  EXPECT_EQ(sw.machine().ethPhyIntfStatusDir(), sw.statusDir);
  EXPECT_EQ(sw.machine().errdisableConfig(), sw.errdisableConfig);
  EXPECT_FALSE(formerConfigDir->hasNotifiees());
  EXPECT_FALSE(formerStatusDir->hasNotifiees());
  EXPECT_FALSE(formerErrdisable->hasNotifiees());
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  sw.addPhyConfig(ethernet1);
  sw.addStatus(ethernet1);
  sw.errdisableConfig->disabledIs("other", true);
  EXPECT_EQ(sw.traced("handleIntf"), 2U);
  EXPECT_EQ(sw.traced("handleDisabled"), 1U);
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
}

TEST(LinkFlapSmInputs, PointedAtTheObjectHeldKeepTheirReactors) {
  Switch sw;
  sw.start();
  auto const references = sw.config->referenceCount();
  sw.takeTraces();
  sw.machine().configIs(sw.config);
  sw.machine().ethPhyIntfConfigDirIs(sw.configDir);
  sw.machine().ethPhyIntfStatusDirIs(sw.statusDir);
  sw.machine().errdisableConfigIs(sw.errdisableConfig);
  EXPECT_EQ(sw.config->referenceCount(), references);
  sw.config->defaultProfileListIs("p1", true);
  EXPECT_EQ(sw.takeTraces().size(), 1U);
}

TEST(LinkFlapSmInputs, DeletedReturnTheObjectAndHearNoMore) {
  Switch sw;
  sw.start();
  EXPECT_EQ(sw.machine().ethPhyIntfConfigDirDel(), sw.configDir);
  EXPECT_EQ(sw.machine().ethPhyIntfStatusDirDel(), sw.statusDir);
  EXPECT_EQ(sw.machine().errdisableConfigDel(), sw.errdisableConfig);
  EXPECT_EQ(sw.machine().configDel(), sw.config);
  EXPECT_FALSE(sw.machine().ethPhyIntfConfigDir());
  EXPECT_FALSE(sw.machine().ethPhyIntfStatusDir());
  EXPECT_FALSE(sw.machine().errdisableConfig());
  EXPECT_FALSE(sw.machine().config());
  EXPECT_FALSE(sw.machine().configDel());
  sw.takeTraces();
  changeEachInput(sw);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(LinkFlapSmInputs, PointedAtNothingAreDroppedAndMadeAnewWithoutRunningAHandler) {
  Switch sw;
  sw.start();
  sw.machine().configIs(nullptr);
  EXPECT_FALSE(sw.machine().config());
  EXPECT_FALSE(sw.config->hasNotifiees());
  sw.takeTraces();
  sw.machine().configIs(sw.config);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  sw.config->defaultProfileListIs("p1", true);
  EXPECT_EQ(sw.traced("handleDefaultProfileList"), 1U);
}

}  // namespace
