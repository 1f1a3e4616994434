#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
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
Tarn::IntfId const ethernet2{"Ethernet2"};
Tarn::IntfId const ethernet3{"Ethernet3"};

LinkFlap::LinkFlapSm::Ptr machineOf(Switch const& sw) {
  return LinkFlap::LinkFlapSm::LinkFlapSmIs(sw.activity, sw.configDir, sw.statusDir,
                                            sw.errdisableConfig, sw.config, sw.causeStatus,
                                            sw.causeName);
}

std::vector<std::string> handleIntfMessages(std::vector<TraceLine> const& lines) {
  std::vector<std::string> messages;
  for (TraceLine const& line : lines)
    if (line.function == "handleIntf") messages.push_back(line.message);
  return messages;
}

TEST(LinkFlapSmConstruction, AdmitsEveryInterfaceOfTheStatusDirectoryBeforeNotificationIsActive) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.addInterface(ethernet3);
  auto const sm =
      Vek::make<LinkFlap::LinkFlapSm>(sw.activity, sw.configDir, sw.statusDir, sw.errdisableConfig,
                                      sw.config, sw.causeStatus, sw.causeName);
  EXPECT_EQ(sw.traced("handleIntf"), 3U);
  EXPECT_TRUE(sm->initialized());
  EXPECT_FALSE(sm->hasNotificationActive());
  EXPECT_EQ(sm->linkFlapIntfSm().members(), 3U);
}

TEST(LinkFlapSmConstruction, TracesItselfFirstThenWalksInTheOrderOfTheDirectory) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.addInterface(ethernet3);
  auto const sm = machineOf(sw);
  auto const lines = sw.takeTraces();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0], (TraceLine{8, 459, "handleInitialized", "LinkFlapSm::handleInitialized()"}));
  std::vector<std::string> expected;
  for (Tarn::IntfId const& id : sw.walkOrder())
    expected.push_back(std::string{"LinkFlapSm::handleIntf("} + id.name().charPtr() + ")");
  EXPECT_EQ(handleIntfMessages(lines), expected);
}

TEST(LinkFlapSmConstruction, DoesNotVisitInterfacesThatHaveConfigurationOnly) {
  Switch sw;
  sw.addPhyConfig(ethernet1);
  sw.settingsIs(ethernet2, true);
  auto const sm = machineOf(sw);
  EXPECT_EQ(sw.traced("handleIntf"), 0U);
}

TEST(LinkFlapSmConstruction, WithEmptyInputsLeavesTheirReactorsOut) {
  Switch sw;
  auto const sm = LinkFlap::LinkFlapSm::LinkFlapSmIs(nullptr, nullptr, sw.statusDir, nullptr,
                                                     nullptr, nullptr, "");
  EXPECT_FALSE(sm->vekFwkActivity());
  EXPECT_FALSE(sm->ethPhyIntfConfigDir());
  EXPECT_EQ(sm->ethPhyIntfStatusDir(), sw.statusDir);
  EXPECT_FALSE(sm->errdisableConfig());
  EXPECT_FALSE(sm->config());
  EXPECT_FALSE(sm->causeStatus());
  EXPECT_TRUE(sm->initialized());
}

TEST(LinkFlapSmConstruction, ReleasesEverythingWhenTheInitialPassThrows) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addPhyConfig(ethernet2);
  sw.statusDir->intfStatusIs(ethernet2, sw.status(ethernet1));
  auto const configReferences = sw.config->referenceCount();
  auto const causeReferences = sw.causeStatus->referenceCount();
  auto const statusReferences = sw.status(ethernet1)->referenceCount();
  EXPECT_THROW(machineOf(sw), Vek::NameInUseException);
  EXPECT_EQ(sw.config->referenceCount(), configReferences);
  EXPECT_EQ(sw.causeStatus->referenceCount(), causeReferences);
  EXPECT_EQ(sw.status(ethernet1)->referenceCount(), statusReferences);
  EXPECT_EQ(sw.activity->referenceCount(), 1U);
  EXPECT_FALSE(sw.config->hasNotifiees());
  EXPECT_FALSE(sw.configDir->hasNotifiees());
  EXPECT_FALSE(sw.statusDir->hasNotifiees());
  EXPECT_FALSE(sw.errdisableConfig->hasNotifiees());
  EXPECT_FALSE(sw.status(ethernet1)->hasNotifiees());
}

TEST(LinkFlapSmConstructionDeathTest, NeedsTheStatusDirectory) {
  Switch sw;
  EXPECT_EXIT((void)LinkFlap::LinkFlapSm::LinkFlapSmIs(sw.activity, sw.configDir, nullptr,
                                                       sw.errdisableConfig, sw.config,
                                                       sw.causeStatus, sw.causeName),
              testing::KilledBySignal(SIGABRT),
              testing::Eq("Vek: an empty Ptr was dereferenced where an object is required\n"));
}

TEST(LinkFlapSm, PrintsAsItsClassAlone) {
  Switch sw;
  sw.start();
  std::ostringstream out;
  out << &sw.machine();
  EXPECT_EQ(out.str(), "LinkFlapSm");
}

TEST(LinkFlapSm, TheNotifyHookDoesNothing) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.machine().linkFlapIntfSmNotify(ethernet1);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

// Each input: a member added, changed and removed runs its handler once with its key.

TEST(LinkFlapSmReactors, ConfigDirectoryMembersReachHandleIntf) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.addPhyConfig(ethernet1);
  sw.addPhyConfig(ethernet1);
  sw.configDir->intfConfigDel(ethernet1);
  std::string const message{"LinkFlapSm::handleIntf(Ethernet1)"};
  EXPECT_THAT(handleIntfMessages(sw.takeTraces()), ElementsAre(message, message, message));
}

TEST(LinkFlapSmReactors, StatusDirectoryMembersReachHandleIntf) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.addStatus(ethernet1);
  sw.addStatus(ethernet1);
  sw.statusDir->intfStatusDel(ethernet1);
  std::string const message{"LinkFlapSm::handleIntf(Ethernet1)"};
  EXPECT_THAT(handleIntfMessages(sw.takeTraces()), ElementsAre(message, message, message));
}

TEST(LinkFlapSmReactors, InterfaceSettingsReachHandleIntf) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.settingsIs(ethernet1, true);
  sw.settingsIs(ethernet1, true);
  sw.config->intfConfigDel(ethernet1);
  std::string const message{"LinkFlapSm::handleIntf(Ethernet1)"};
  EXPECT_THAT(handleIntfMessages(sw.takeTraces()), ElementsAre(message, message, message));
}

TEST(LinkFlapSmReactors, ProfilesReachHandleProfileConfig) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.profileIs("p1", {.maxFlaps = 1, .interval = 1});
  sw.profileIs("p1", {.maxFlaps = 1, .interval = 1});
  sw.config->profileConfigDel("p1");
  TraceLine const line{8, 343, "handleProfileConfig", "LinkFlapSm::handleProfileConfig(p1)"};
  EXPECT_THAT(sw.takeTraces(), ElementsAre(line, line, line));
}

TEST(LinkFlapSmReactors, DefaultProfilesReachHandleDefaultProfileList) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.config->defaultProfileListIs("p1", true);
  sw.config->defaultProfileListIs("p1", false);
  sw.config->defaultProfileListDel("p1");
  TraceLine const line{8, 371, "handleDefaultProfileList",
                       "LinkFlapSm::handleDefaultProfileList(p1)"};
  EXPECT_THAT(sw.takeTraces(), ElementsAre(line, line, line));
}

TEST(LinkFlapSmReactors, DisabledCausesReachHandleDisabled) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.errdisableConfig->disabledIs("other", true);
  sw.errdisableConfig->disabledIs("other", false);
  sw.errdisableConfig->disabledDel("other");
  TraceLine const line{8, 444, "handleDisabled", "LinkFlapSm::handleDisabled(other)"};
  EXPECT_THAT(sw.takeTraces(), ElementsAre(line, line, line));
}

TEST(LinkFlapSmReactors, WhatTheyDoNotWatchReachesNothing) {
  Switch sw;
  sw.start();
  sw.takeTraces();
  sw.errdisableConfig->timerRecoveryEnabledIs("link-flap", true);
  sw.errdisableConfig->recoveryIntervalIs(7);
  sw.config->maxFlapsIs(77);  // there is no interface that would follow it
  auto const profile = sw.profileIs("p1", {.maxFlaps = 1, .interval = 1});
  sw.takeTraces();
  profile->maxFlapsIs(2);  // a change inside a member is not a change of the collection
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(LinkFlapSmReactors, UnkeyedAndImmediateNotificationsAreLeftEmpty) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  auto const configDir = sw.machine().newEthPhyIntfConfigDir(sw.configDir);
  auto const statusDir = sw.machine().newEthPhyIntfStatusDir(sw.statusDir);
  auto const errdisable = sw.machine().newErrdisableConfig(sw.errdisableConfig);
  auto const config = sw.machine().newConfig(sw.config);
  sw.takeTraces();
  Interface::AllEthPhyIntfConfigDir::NotifieeConst& c = *configDir;
  c.onIntfConfig();
  c.onIntfConfigvekImmediate();
  Interface::AllEthPhyIntfStatusDir::NotifieeConst& s = *statusDir;
  s.onIntfStatus();
  s.onIntfStatusvekImmediate();
  Errdisable::Config::NotifieeConst& e = *errdisable;
  e.onDisabled();
  e.onDisabledvekImmediate();
  LinkFlap::Config::NotifieeConst& l = *config;
  l.onIntfConfig();
  l.onIntfConfigvekImmediate();
  l.onProfileConfig();
  l.onProfileConfigvekImmediate();
  l.onDefaultProfileList();
  l.onDefaultProfileListvekImmediate();
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  // The same reactors do act on the keyed form.
  configDir->onIntfConfig(ethernet1);
  statusDir->onIntfStatus(ethernet1);
  errdisable->onDisabled("other");
  config->onDefaultProfileList("p1");
  EXPECT_EQ(sw.traced("handleIntf"), 2U);
  EXPECT_EQ(sw.traced("handleDisabled"), 1U);
  EXPECT_EQ(sw.traced("handleDefaultProfileList"), 1U);
}

TEST(LinkFlapSmReactors, OneMarkedForDeletionDoesNotCallItsHandler) {
  Switch sw;
  sw.start();
  auto const reactor = sw.machine().newConfig(sw.config);
  sw.takeTraces();
  reactor->vekMarkedForDeletionIs(true);
  reactor->onIntfConfig(ethernet1);
  reactor->onProfileConfig("p1");
  reactor->onDefaultProfileList("p1");
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  reactor->vekMarkedForDeletionIs(false);
  reactor->onIntfConfig(ethernet1);
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
}

TEST(LinkFlapSmReactors, OneDetachedFromItsMachineDoesNotCallIt) {
  Switch sw;
  sw.start();
  auto const reactor = sw.machine().newErrdisableConfig(sw.errdisableConfig);
  reactor->linkFlapSmIs(nullptr);
  sw.takeTraces();
  reactor->onDisabled("other");
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(LinkFlapSmReactors, OthersDetachedFromTheirMachineDoNotCallIt) {
  Switch sw;
  sw.start();
  auto const configDir = sw.machine().newEthPhyIntfConfigDir(sw.configDir);
  auto const statusDir = sw.machine().newEthPhyIntfStatusDir(sw.statusDir);
  auto const config = sw.machine().newConfig(sw.config);
  sw.takeTraces();
  configDir->onIntfConfig(ethernet1);
  statusDir->onIntfStatus(ethernet1);
  config->onProfileConfig("p1");
  EXPECT_EQ(sw.traced("handleIntf"), 2U);
  EXPECT_EQ(sw.traced("handleProfileConfig"), 1U);
  sw.takeTraces();
  configDir->linkFlapSmIs(nullptr);
  statusDir->linkFlapSmIs(nullptr);
  config->linkFlapSmIs(nullptr);
  configDir->onIntfConfig(ethernet1);
  statusDir->onIntfStatus(ethernet1);
  config->onIntfConfig(ethernet1);
  config->onProfileConfig("p1");
  config->onDefaultProfileList("p1");
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

}  // namespace
