#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "runtime/vek/Exception.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/statemachines/Watchers.h"
#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

TEST(HandleIntf, AdmitsAnInterfaceThatHasConfigurationAndStatus) {
  Switch sw;
  sw.start();
  sw.addPhyConfig(ethernet1);
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  sw.addStatus(ethernet1);
  auto const* const sm = sw.intfSm(ethernet1);
  ASSERT_NE(sm, nullptr);
  EXPECT_EQ(sm->ethPhyIntfStatus(), sw.status(ethernet1));
  EXPECT_EQ(sm->config(), sw.config);
  EXPECT_FALSE(sm->intfConfig());
  EXPECT_EQ(sm->ethPhyIntfConfig(), sw.phyConfig(ethernet1));
  EXPECT_EQ(sm->causeStatus(), sw.causeStatus);
  EXPECT_TRUE(sm->enable());
  EXPECT_TRUE(sm->hasNotificationActive());
  EXPECT_EQ(sm->fwkKey(), ethernet1);
  EXPECT_EQ(sm->referenceCount(), 1U);
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
}

TEST(HandleIntf, AdmitsInTheOrderItsTraceShows) {
  Switch sw;
  sw.addPhyConfig(ethernet1);
  sw.start();
  sw.takeTraces();
  sw.addStatus(ethernet1);
  EXPECT_THAT(
      sw.takeTraces(),
      ElementsAre(
          TraceLine{8, 401, "handleIntf", "LinkFlapSm::handleIntf(Ethernet1)"},
          TraceLine{8, 299, "handleInitialized",
                    "LinkFlapIntfSm( Ethernet1 )::handleInitialized()"},
          TraceLine{8, 208, "manageProfileSm", "manageProfileSm(LinkFlapIntfSm( Ethernet1 ))"},
          TraceLine{8, 187, "handleInitialized", "@Ethernet1/default::handleInitialized()"}));
}

TEST(HandleIntf, OfAnInterfaceWithoutConfigurationWithdrawsItsRecordEachTime) {
  Switch sw;
  sw.addStatus(ethernet1);
  sw.start();
  for (double const time : {1.0, 2.0}) {
    sw.causeStatus->intfStatusIs(ethernet1, time);
    sw.machine().handleIntf(ethernet1);
    EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
    EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  }
  EXPECT_THAT(sw.takeWrites(), ElementsAre("Ethernet1 1", "Ethernet1 withdrawn", "Ethernet1 2",
                                           "Ethernet1 withdrawn"));
}

TEST(HandleIntf, OfAnUnknownInterfaceWithdrawsItsRecord) {
  Switch sw;
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  sw.takeTraces();
  sw.machine().handleIntf(ethernet1);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapSm::handleIntf(Ethernet1)", "deleteLinkFlapIntfSm(Ethernet1)"));
}

TEST(HandleIntf, DoesNotAdmitAMemberOfTheConfigDirectoryWithoutAValue) {
  Switch sw;
  sw.configDir->intfConfigIs(ethernet1, nullptr);
  ASSERT_TRUE(sw.configDir->intfConfig().has(ethernet1));
  sw.addStatus(ethernet1);
  sw.start();
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
}

TEST(HandleIntf, DoesNotAdmitAMemberOfTheStatusDirectoryWithoutAValue) {
  Switch sw;
  sw.addPhyConfig(ethernet1);
  sw.statusDir->intfStatusIs(ethernet1, nullptr);
  ASSERT_TRUE(sw.statusDir->intfStatus().has(ethernet1));
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  sw.start();
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
}

TEST(HandleIntf, EndsTheMonitoringWhenTheConfigurationGoes) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  sw.configDir->intfConfigDel(ethernet1);
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
  sw.takeTraces();
  sw.flap(ethernet1, {1});
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(HandleIntf, EndsTheMonitoringWhenTheStatusGoes) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  sw.takeTraces();
  sw.statusDir->intfStatusDel(ethernet1);
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
  EXPECT_THAT(
      sw.takeTraces(),
      ElementsAre(TraceLine{8, 401, "handleIntf", "LinkFlapSm::handleIntf(Ethernet1)"},
                  TraceLine{8, 387, "deleteLinkFlapIntfSm", "deleteLinkFlapIntfSm(Ethernet1)"}));
}

TEST(HandleIntf, KeepsOtherInterfacesWhenOneGoes) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet2, 1);
  auto const* const kept = sw.intfSm(ethernet2);
  sw.statusDir->intfStatusDel(ethernet1);
  EXPECT_EQ(sw.intfSm(ethernet2), kept);
  EXPECT_EQ(sw.errdisabledAt(ethernet2), 1.0);
}

TEST(HandleIntf, DoesNotAdmitWhileTheCauseIsSwitchedOff) {
  Switch sw;
  sw.errdisableConfig->disabledIs("link-flap", true);
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
}

TEST(HandleIntf, TakesAnAbsentFalseOrOtherCauseForSwitchedOn) {
  Switch sw;
  sw.errdisableConfig->disabledIs("link-flap", false);
  sw.errdisableConfig->disabledIs("other", true);
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_NE(sw.intfSm(ethernet1), nullptr);
  sw.errdisableConfig->disabledDel("link-flap");
  sw.machine().handleIntf(ethernet1);
  EXPECT_NE(sw.intfSm(ethernet1), nullptr);
}

// Deliberate: settings of its own keep an interface monitored whatever the cause switch says.
TEST(HandleIntf, AdmitsAnInterfaceWithOwnSettingsAlthoughTheCauseIsSwitchedOff) {
  Switch sw;
  sw.errdisableConfig->disabledIs("link-flap", true);
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.settingsIs(ethernet2, true);
  sw.start();
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  EXPECT_NE(sw.intfSm(ethernet2), nullptr);
}

// The tests stand in order, and the cause switch is not asked for an interface with own settings.
TEST(HandleIntf, AsksForTheConfigurationThenTheStatusThenTheCauseSwitch) {
  Switch sw;
  sw.start();
  auto const statusReads = sw.statusDir->reads();
  auto const disabledReads = sw.errdisableConfig->reads();
  sw.machine().handleIntf(ethernet1);
  EXPECT_EQ(sw.statusDir->reads(), statusReads);
  sw.addPhyConfig(ethernet1);
  EXPECT_GT(sw.statusDir->reads(), statusReads);
  EXPECT_EQ(sw.errdisableConfig->reads(), disabledReads);
  sw.settingsIs(ethernet1, true);
  sw.addStatus(ethernet1);
  EXPECT_EQ(sw.errdisableConfig->reads(), disabledReads);
  sw.config->intfConfigDel(ethernet1);
  EXPECT_GT(sw.errdisableConfig->reads(), disabledReads);
}

TEST(HandleIntf, KeepsTheMachineAndItsHistoryWhenNothingThatMattersChanged) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1});
  sw.causeStatus->intfStatusIs(ethernet1, 5);
  auto const* const kept = sw.intfSm(ethernet1);
  sw.takeTraces();
  sw.machine().handleIntf(ethernet1);
  EXPECT_EQ(sw.intfSm(ethernet1), kept);
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(1.0));
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 5.0);
  EXPECT_THAT(sw.takeMessages(), ElementsAre("LinkFlapSm::handleIntf(Ethernet1)",
                                             "manageProfileSm(LinkFlapIntfSm( Ethernet1 ))"));
}

/// What happens to the own settings of a monitored, err-disabled interface with a history.
class OwnSettings : public testing::Test {
 protected:
  OwnSettings() {
    sw_.addInterface(ethernet1);
    sw_.settingsIs(ethernet1, true);
    sw_.start();
    sw_.flap(ethernet1, {1});
    sw_.causeStatus->intfStatusIs(ethernet1, 5);
    former_ = LinkFlap::LinkFlapIntfSm::Ptr{sw_.intfSm(ethernet1)};
  }

  void expectANewMachine() {
    ASSERT_NE(sw_.intfSm(ethernet1), nullptr);
    EXPECT_NE(sw_.intfSm(ethernet1), former_.get());
    EXPECT_EQ(former_->referenceCount(), 1U);
    EXPECT_EQ(former_->linkFlapProfileSm().members(), 0U);
    EXPECT_THAT(times(*sw_.profileSm(ethernet1, "default")), IsEmpty());
    EXPECT_EQ(sw_.errdisabledAt(ethernet1), std::nullopt);
  }

  Switch sw_;
  LinkFlap::LinkFlapIntfSm::Ptr former_;
};

TEST_F(OwnSettings, WhenTheyDisappearTheMachineIsReplacedAndTheRecordWithdrawn) {
  sw_.config->intfConfigDel(ethernet1);
  expectANewMachine();
  EXPECT_FALSE(sw_.intfSm(ethernet1)->intfConfig());
  EXPECT_TRUE(sw_.intfSm(ethernet1)->enable());
}

TEST_F(OwnSettings, WhenTheyAreReplacedTheMachineIsReplacedAndTheRecordWithdrawn) {
  auto const settings = sw_.settingsIs(ethernet1, true);
  expectANewMachine();
  EXPECT_EQ(sw_.intfSm(ethernet1)->intfConfig(), settings);
}

TEST_F(OwnSettings, WhenTheyAppearTheMachineIsReplacedAndTheRecordWithdrawn) {
  sw_.config->intfConfigDel(ethernet1);
  sw_.flap(ethernet1, {2});
  sw_.causeStatus->intfStatusIs(ethernet1, 6);
  former_ = LinkFlap::LinkFlapIntfSm::Ptr{sw_.intfSm(ethernet1)};
  sw_.settingsIs(ethernet1, true);
  expectANewMachine();
}

TEST_F(OwnSettings, AreReplacedByTearingDownWithdrawingAndBuildingInThatOrder) {
  std::vector<std::string> log;
  auto const watcher = CauseWatcher::on(sw_.causeStatus, [&](Tarn::IntfId const&) {
    log.emplace_back(sw_.intfSm(ethernet1) == nullptr ? "no machine" : "a machine");
  });
  former_ = nullptr;
  sw_.takeTraces();
  sw_.settingsIs(ethernet1, true);
  EXPECT_THAT(log, ElementsAre("no machine"));
  EXPECT_THAT(sw_.takeMessages(),
              ElementsAre("LinkFlapSm::handleIntf(Ethernet1)", "deleteLinkFlapIntfSm(Ethernet1)",
                          "LinkFlapIntfSm( Ethernet1 )::handleInitialized()",
                          "manageProfileSm(LinkFlapIntfSm( Ethernet1 ))",
                          "@Ethernet1/default::handleInitialized()"));
}

TEST(HandleIntf, LeavesADisabledInterfaceItsMachine) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.settingsIs(ethernet1, false);
  sw.start();
  auto const* const sm = sw.intfSm(ethernet1);
  ASSERT_NE(sm, nullptr);
  EXPECT_FALSE(sm->enable());
  EXPECT_THAT(sw.profiles(ethernet1), IsEmpty());
}

TEST(HandleIntf, SetsTheEnableFlagOnEveryCall) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.settingsIs(ethernet2, false);
  sw.start();
  sw.intfSm(ethernet1)->enableIs(false);
  sw.intfSm(ethernet2)->enableIs(true);
  sw.machine().handleIntf(ethernet1);
  sw.machine().handleIntf(ethernet2);
  EXPECT_TRUE(sw.intfSm(ethernet1)->enable());
  EXPECT_FALSE(sw.intfSm(ethernet2)->enable());
  EXPECT_THAT(sw.profiles(ethernet2), IsEmpty());
}

// No parameter but the settings is compared beforehand.
TEST(HandleIntf, ThrowsWhenTheStatusObjectWasReplaced) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1});
  auto const* const kept = sw.intfSm(ethernet1);
  sw.addStatus(ethernet1);
  auto const failures = sw.takeFailures();
  ASSERT_THAT(failures, SizeIs(1));
  EXPECT_EQ(failures[0].attribute, 386U);
  EXPECT_EQ(failures[0].attributeName, "intfStatus");
  EXPECT_EQ(failures[0].watcher, "LinkFlap::LinkFlapSm::VekEthPhyIntfStatusDir");
  EXPECT_THAT(failures[0].message, HasSubstr("attribute _ethPhyIntfStatus has"));
  EXPECT_THROW(sw.machine().handleIntf(ethernet1), Vek::NameInUseException);
  EXPECT_EQ(sw.intfSm(ethernet1), kept);
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(1.0));
}

TEST(HandleIntf, ThrowsWhenTheConfigurationObjectWasReplaced) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.addPhyConfig(ethernet1);
  auto const failures = sw.takeFailures();
  ASSERT_THAT(failures, SizeIs(1));
  EXPECT_EQ(failures[0].watcher, "LinkFlap::LinkFlapSm::VekEthPhyIntfConfigDir");
  EXPECT_THAT(failures[0].message, HasSubstr("attribute _ethPhyIntfConfig has"));
}

// Torn down for its new settings, the machine is built anew from the new status object as well.
TEST(HandleIntf, DoesNotThrowWhenTheSettingsWereReplacedToo) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.addStatus(ethernet1);
  EXPECT_THAT(sw.takeFailures(), SizeIs(1));
  sw.settingsIs(ethernet1, true);
  EXPECT_EQ(sw.intfSm(ethernet1)->ethPhyIntfStatus(), sw.status(ethernet1));
}

}  // namespace
