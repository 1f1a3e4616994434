#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};

constexpr Switch::ProfileValues kProfile{.maxFlaps = 9, .interval = 10};

/// One interface; `settings_` only where a test makes them.
class ManageProfileSm : public testing::Test {
 protected:
  void start(Switch::ProfileList const& own) {
    sw_.addInterface(ethernet1);
    settings_ = sw_.settingsIs(ethernet1, true, own);
    sw_.start();
    sw_.takeTraces();
  }
  LinkFlap::LinkFlapIntfSm& sm() { return *sw_.intfSm(ethernet1); }
  LinkFlap::LinkFlapProfileSm* profile(char const* name) { return sw_.profileSm(ethernet1, name); }
  void select() { LinkFlap::manageProfileSm(&sm()); }

  Switch sw_;
  Vek::Ptr<LinkFlap::IntfConfig> settings_;
};

TEST_F(ManageProfileSm, TracesTheMachineWithoutAColonPart) {
  start({});
  select();
  EXPECT_THAT(sw_.takeTraces(),
              ElementsAre(TraceLine{8, 208, "manageProfileSm",
                                    "manageProfileSm(LinkFlapIntfSm( Ethernet1 ))"}));
}

TEST_F(ManageProfileSm, OwnListMakesOneMachinePerMemberConfiguredOrNot) {
  auto const p1 = sw_.profileIs("p1", kProfile);
  sw_.profileIs("d1", kProfile);
  sw_.config->defaultProfileListIs("d1", true);
  start({{"p1", true}, {"p2", true}});
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("p1", "p2"));
  EXPECT_EQ(profile("p1")->profileConfig(), p1);
  EXPECT_FALSE(profile("p2")->profileConfig());
  for (char const* const name : {"p1", "p2"}) {
    EXPECT_EQ(profile(name)->config(), sw_.config);
    EXPECT_EQ(profile(name)->ethPhyIntfConfig(), sw_.phyConfig(ethernet1));
    EXPECT_EQ(profile(name)->ethPhyIntfStatus(), sw_.status(ethernet1));
    EXPECT_EQ(profile(name)->causeStatus(), sw_.causeStatus);
    EXPECT_EQ(profile(name)->intfSm(), &sm());
    EXPECT_TRUE(profile(name)->hasNotificationActive());
    EXPECT_EQ(profile(name)->referenceCount(), 1U);
  }
}

TEST_F(ManageProfileSm, RemovingAMemberDeletesItsMachineAndLeavesTheOthersTheirHistory) {
  start({{"p1", true}, {"p2", true}});
  sw_.flap(ethernet1, {1, 2});
  settings_->profileListDel("p2");
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("p1"));
  EXPECT_THAT(times(*profile("p1")), ElementsAre(1, 2));
}

// Deliberate: the prune honours the value, the creation does not.
TEST_F(ManageProfileSm, AFalseMemberIsDeletedAndMadeAfreshOnEveryRun) {
  start({{"p1", false}});
  for (int run = 0; run < 3; ++run) {
    auto const former = LinkFlap::LinkFlapProfileSm::Ptr{profile("p1")};
    ASSERT_TRUE(former);
    sw_.flap(ethernet1, {10.0 + run});
    EXPECT_EQ(times(*former).size(), 1U);
    select();
    EXPECT_NE(profile("p1"), former.get());
    EXPECT_EQ(former->referenceCount(), 1U);
    EXPECT_THAT(times(*profile("p1")), IsEmpty());
  }
}

TEST_F(ManageProfileSm, AMemberThatTurnsFalseLosesItsHistory) {
  start({{"p1", true}, {"p2", true}});
  sw_.flap(ethernet1, {1});
  settings_->profileListIs("p1", false);
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("p1", "p2"));
  EXPECT_THAT(times(*profile("p1")), IsEmpty());
  EXPECT_THAT(times(*profile("p2")), ElementsAre(1));
}

TEST_F(ManageProfileSm, EmptyingTheOwnListFallsBackToTheDefaultList) {
  sw_.config->defaultProfileListIs("d1", true);
  start({{"p1", true}});
  settings_->profileListDel("p1");
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("d1"));
}

TEST_F(ManageProfileSm, DefaultListMakesOneMachinePerMemberRegardlessOfItsValue) {
  auto const d1 = sw_.profileIs("d1", kProfile);
  sw_.config->defaultProfileListIs("d1", true);
  sw_.config->defaultProfileListIs("d2", false);
  start({});
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("d1", "d2"));
  EXPECT_EQ(profile("d1")->profileConfig(), d1);
  EXPECT_FALSE(profile("d2")->profileConfig());
  sw_.flap(ethernet1, {1});
  select();
  EXPECT_THAT(times(*profile("d1")), ElementsAre(1));
  EXPECT_THAT(times(*profile("d2")), IsEmpty());
}

TEST_F(ManageProfileSm, DefaultListAppliesToInterfacesWithoutSettings) {
  sw_.config->defaultProfileListIs("d1", true);
  sw_.addInterface(ethernet1);
  sw_.start();
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("d1"));
}

TEST_F(ManageProfileSm, AMachineThatStaysSelectedAcrossListsKeepsItsHistory) {
  sw_.config->defaultProfileListIs("p1", true);
  start({{"p1", true}, {"p2", true}});
  sw_.flap(ethernet1, {1});
  // Member by member, then the last one goes: the default list takes over and has p1 too.
  settings_->profileListDel("p2");
  settings_->profileListDel("p1");
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("p1"));
  EXPECT_THAT(times(*profile("p1")), ElementsAre(1));
}

TEST_F(ManageProfileSm, EmptyingBothListsLeavesExactlyTheBuiltInProfile) {
  sw_.profileIs("default", kProfile);
  sw_.config->defaultProfileListIs("d1", true);
  sw_.config->defaultProfileListIs("d2", true);
  start({});
  sw_.config->defaultProfileListDel("d1");
  sw_.config->defaultProfileListDel("d2");
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("default"));
  // Never with a configuration, although one of that name exists.
  EXPECT_FALSE(profile("default")->profileConfig());
  sw_.flap(ethernet1, {1});
  select();
  EXPECT_THAT(times(*profile("default")), ElementsAre(1));
}

TEST_F(ManageProfileSm, ListsThatFillUpReplaceTheBuiltInProfile) {
  start({});
  ASSERT_THAT(sw_.profiles(ethernet1), ElementsAre("default"));
  sw_.config->defaultProfileListIs("d1", true);
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("d1"));
  sw_.config->defaultProfileListDel("d1");
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("default"));
  settings_->profileListIs("p1", false);  // the number of members decides
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("p1"));
}

// Deliberate: a machine that exists is never revisited.
TEST_F(ManageProfileSm, ConfiguringAProfileAfterItsMachineWasMadeChangesNothing) {
  start({{"p2", true}});
  sw_.flap(ethernet1, {1});
  auto const* const kept = profile("p2");
  auto const p2 = sw_.profileIs("p2", kProfile);
  EXPECT_EQ(profile("p2"), kept);
  EXPECT_FALSE(profile("p2")->profileConfig());
  EXPECT_THAT(times(*profile("p2")), ElementsAre(1));
  // Until it goes for another reason.
  settings_->enabledIs(false);
  settings_->enabledIs(true);
  EXPECT_EQ(profile("p2")->profileConfig(), p2);
}

TEST_F(ManageProfileSm, RemovingTheConfigurationLeavesTheMachineTheObjectItHas) {
  auto const p1 = sw_.profileIs("p1", kProfile);
  start({{"p1", true}});
  sw_.config->profileConfigDel("p1");
  EXPECT_EQ(profile("p1")->profileConfig(), p1);
  sw_.profileIs("p1", kProfile);
  EXPECT_EQ(profile("p1")->profileConfig(), p1);
}

// Deliberate: deleted before and created after, on every run, with the configuration of its name.
TEST_F(ManageProfileSm, AListedDefaultIsDeletedAndMadeAfreshOnEveryRun) {
  auto const configured = sw_.profileIs("default", kProfile);
  start({{"default", true}});
  sw_.flap(ethernet1, {1});
  auto const former = LinkFlap::LinkFlapProfileSm::Ptr{profile("default")};
  select();
  EXPECT_NE(profile("default"), former.get());
  EXPECT_EQ(profile("default")->profileConfig(), configured);
  EXPECT_THAT(times(*profile("default")), IsEmpty());
}

// The list is emptied: step 8 finds a machine of that name and keeps it for the built-in one.
TEST_F(ManageProfileSm, EmptyingAListOfDefaultKeepsItsMachineWithItsHistory) {
  auto const configured = sw_.profileIs("default", kProfile);
  start({{"default", true}});
  sw_.flap(ethernet1, {1});
  auto const* const kept = profile("default");
  settings_->profileListDel("default");
  EXPECT_EQ(profile("default"), kept);
  EXPECT_EQ(profile("default")->profileConfig(), configured);
  EXPECT_THAT(times(*profile("default")), ElementsAre(1));
}

TEST_F(ManageProfileSm, EmptyingAListWithDefaultKeepsTheOtherMachinesToo) {
  sw_.addInterface(ethernet1);
  sw_.settingsIs(ethernet1, true, {{"default", true}, {"p1", true}});
  sw_.start();
  // Both leave the selection at one stroke, and the interface machine stays.
  sm().intfConfigIs(nullptr);
  select();
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("default", "p1"));
}

// The same in the default list.
TEST_F(ManageProfileSm, ADefaultProfileNamedDefaultIsMadeAfreshOnEveryRun) {
  sw_.config->defaultProfileListIs("default", true);
  start({});
  auto const former = LinkFlap::LinkFlapProfileSm::Ptr{profile("default")};
  select();
  EXPECT_NE(profile("default"), former.get());
}

TEST_F(ManageProfileSm, DisabledDeletesAllAndWithdrawsTheRecordOnEveryRun) {
  start({{"p1", true}, {"p2", true}});
  settings_->enabledIs(false);
  for (double const time : {1.0, 2.0}) {
    sw_.causeStatus->intfStatusIs(ethernet1, time);
    select();
    EXPECT_EQ(sw_.errdisabledAt(ethernet1), std::nullopt);
    EXPECT_THAT(sw_.profiles(ethernet1), IsEmpty());
  }
}

TEST_F(ManageProfileSm, EnabledLeavesTheRecord) {
  start({{"p1", true}});
  sw_.causeStatus->intfStatusIs(ethernet1, 1);
  select();
  settings_->profileListIs("p2", true);
  settings_->profileListDel("p1");
  settings_->profileListDel("p2");
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 1.0);
}

TEST_F(ManageProfileSm, CreatesInTheOrderOfTheList) {
  start({{"p1", true}, {"p2", true}, {"p3", true}});
  sm().linkFlapProfileSmDelAll();
  std::vector<std::string> expected{"manageProfileSm(LinkFlapIntfSm( Ethernet1 ))"};
  for (auto const& member : settings_->profileList())
    expected.push_back(std::string{"@Ethernet1/"} + member.key().charPtr() +
                       "::handleInitialized()");
  sw_.takeTraces();
  select();
  EXPECT_EQ(sw_.takeMessages(), expected);
}

constexpr char const* kEmptyPtr{"Vek: an empty Ptr was dereferenced where an object is required\n"};

TEST(ManageProfileSmDeathTest, EndsTheProcessForAnEmptyPointer) {
  EXPECT_EXIT(LinkFlap::manageProfileSm(nullptr), testing::KilledBySignal(SIGABRT),
              testing::Eq("LinkFlapSm:210: void "
                          "LinkFlap::manageProfileSm(LinkFlap::LinkFlapIntfSm::Ptr): Assertion "
                          "`sm' failed.\n"));
}

// The trace line comes first, the machine printed as empty.
TEST(ManageProfileSmDeathTest, TracesAnEmptyPointerBeforeItEndsTheProcess) {
  Switch sw;
  Vek::traceSinkIs({});
  EXPECT_EXIT(LinkFlap::manageProfileSm(nullptr), testing::KilledBySignal(SIGABRT),
              testing::Eq("LinkFlap 8 LinkFlapSm:208 manageProfileSm: "
                          "manageProfileSm(LinkFlapIntfSm(  ))\n"
                          "LinkFlapSm:210: void "
                          "LinkFlap::manageProfileSm(LinkFlap::LinkFlapIntfSm::Ptr): Assertion "
                          "`sm' failed.\n"));
}

TEST(ManageProfileSmDeathTest, NeedsTheCauseStatusOfADisabledInterface) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm = LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(
      sw.status(ethernet1), sw.config, nullptr, sw.phyConfig(ethernet1), nullptr);
  EXPECT_EXIT(LinkFlap::manageProfileSm(sm), testing::KilledBySignal(SIGABRT),
              testing::Eq(kEmptyPtr));
}

TEST(ManageProfileSmDeathTest, NeedsTheConfigOfAnEnabledInterface) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm = LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(
      sw.status(ethernet1), nullptr, nullptr, sw.phyConfig(ethernet1), sw.causeStatus);
  sm->enableIs(true);
  EXPECT_EXIT(LinkFlap::manageProfileSm(sm), testing::KilledBySignal(SIGABRT),
              testing::Eq(kEmptyPtr));
}

}  // namespace
