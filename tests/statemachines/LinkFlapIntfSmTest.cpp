#include <csignal>
#include <cstddef>
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

constexpr Switch::ProfileValues kProfile{.maxFlaps = 2, .interval = 10};

/// A machine that no top-level machine knows of.
LinkFlap::LinkFlapIntfSm::Ptr machineOf(Switch const& sw,
                                        Vek::Ptr<LinkFlap::IntfConfig const> const& settings) {
  return LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(sw.status(ethernet1), sw.config, settings,
                                                    sw.phyConfig(ethernet1), sw.causeStatus);
}

TEST(LinkFlapIntfSmConstruction, WithoutSettingsInitialisesAndSelectsNothing) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm = machineOf(sw, nullptr);
  EXPECT_TRUE(sm->initialized());
  EXPECT_FALSE(sm->enable());
  EXPECT_FALSE(sm->intfConfig());
  EXPECT_TRUE(sm->hasNotificationActive());
  EXPECT_EQ(sm->linkFlapProfileSm().members(), 0U);
  EXPECT_THAT(sw.takeTraces(),
              ElementsAre(TraceLine{8, 299, "handleInitialized",
                                    "LinkFlapIntfSm( Ethernet1 )::handleInitialized()"}));
}

TEST(LinkFlapIntfSmConstruction, KeepsItsFiveParameters) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const settings = Vek::make<LinkFlap::IntfConfig>();
  auto const sm = machineOf(sw, settings);
  EXPECT_EQ(sm->ethPhyIntfStatus(), sw.status(ethernet1));
  EXPECT_EQ(sm->config(), sw.config);
  EXPECT_EQ(sm->intfConfig(), settings);
  EXPECT_EQ(sm->ethPhyIntfConfig(), sw.phyConfig(ethernet1));
  EXPECT_EQ(sm->causeStatus(), sw.causeStatus);
  EXPECT_EQ(sm->intfId(), ethernet1);
  EXPECT_EQ(sm->fwkKey(), ethernet1);
  EXPECT_FALSE(sm->vekFwkActivity());
}

TEST(LinkFlapIntfSmConstruction, WithAnEmptyProfileListInitialisesAndSelectsNothing) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const settings = Vek::make<LinkFlap::IntfConfig>();
  settings->enabledIs(true);
  auto const sm = machineOf(sw, settings);
  EXPECT_TRUE(sm->enable());
  EXPECT_EQ(sm->linkFlapProfileSm().members(), 0U);
  EXPECT_EQ(sw.takeTraces().size(), 1U);
}

TEST(LinkFlapIntfSmConstruction, IsNotNotifiedBeforeItsFactorySwitchesThatOn) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm = Vek::make<LinkFlap::LinkFlapIntfSm>(sw.status(ethernet1), sw.config, nullptr,
                                                      sw.phyConfig(ethernet1), sw.causeStatus);
  EXPECT_FALSE(sm->hasNotificationActive());
  // Its reactors are registered all the same.
  sw.config->maxFlapsIs(7);
  EXPECT_EQ(sw.traced("handleLinkFlapValues"), 1U);
}

TEST(LinkFlapIntfSmConstruction, SelectsOncePerListedProfileWithTheResultOfOnce) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const settings = Vek::make<LinkFlap::IntfConfig>();
  settings->enabledIs(true);
  for (char const* const name : {"p1", "p2", "p3"})
    settings->profileListIs(name, true);
  auto const sm = machineOf(sw, settings);

  std::vector<std::string> expected{"LinkFlapIntfSm( Ethernet1 )::handleInitialized()"};
  std::vector<std::string> names;
  for (auto const& member : settings->profileList())
    names.emplace_back(member.key().charPtr());
  for (std::size_t i = 0; i < names.size(); ++i) {
    expected.push_back("LinkFlapIntfSm( Ethernet1 )::handleProfileList(" + names[i] + ")");
    expected.emplace_back("manageProfileSm(LinkFlapIntfSm( Ethernet1 ))");
    // Only the first selection finds something to make.
    if (i == 0)
      for (std::string const& name : names)
        expected.push_back("@Ethernet1/" + name + "::handleInitialized()");
  }
  EXPECT_EQ(sw.takeMessages(), expected);
  EXPECT_EQ(sm->linkFlapProfileSm().members(), 3U);
}

// The value of a member is not looked at: a false one is walked as well.
TEST(LinkFlapIntfSmConstruction, SelectsForFalseMembersToo) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const settings = Vek::make<LinkFlap::IntfConfig>();
  settings->enabledIs(true);
  settings->profileListIs("p1", false);
  auto const sm = machineOf(sw, settings);
  EXPECT_EQ(sw.traced("handleProfileList"), 1U);
  EXPECT_TRUE(sm->linkFlapProfileSm("p1"));
}

// With enabled false the selections of the constructor withdraw the record.
TEST(LinkFlapIntfSmConstruction, OfADisabledInterfaceWithAListWithdrawsTheRecord) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  auto const settings = Vek::make<LinkFlap::IntfConfig>();
  settings->profileListIs("p1", true);
  auto const sm = machineOf(sw, settings);
  EXPECT_FALSE(sm->enable());
  EXPECT_EQ(sm->linkFlapProfileSm().members(), 0U);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);
}

TEST(LinkFlapIntfSm, WithoutStatusHasTheIdentifierMadeFromTheEmptyName) {
  Switch sw;
  auto const sm = LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(nullptr, sw.config, nullptr, nullptr,
                                                             sw.causeStatus);
  EXPECT_EQ(sm->intfId(), Tarn::IntfId{""});
  EXPECT_EQ(sm->fwkKey(), Tarn::IntfId{""});
  EXPECT_TRUE(sm->intfId().isNull());
}

// An object that comes later meets no reactor, and a reactor that is only then made runs no handler.
TEST(LinkFlapIntfSmConstruction, WithoutConfigAndSettingsLeavesTheirReactorsOut) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const sm = LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(sw.status(ethernet1), nullptr, nullptr,
                                                             nullptr, sw.causeStatus);
  EXPECT_FALSE(sm->config());
  sw.takeTraces();
  sm->configIs(sw.config);
  sm->intfConfigIs(Vek::make<LinkFlap::IntfConfig>());
  EXPECT_EQ(sm->config(), sw.config);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(LinkFlapIntfSm, TheEnableSetterOnlyStores) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  sw.takeTraces();
  sw.intfSm(ethernet1)->enableIs(false);
  EXPECT_FALSE(sw.intfSm(ethernet1)->enable());
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 1.0);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(LinkFlapIntfSm, TheNotifyHookDoesNothing) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.takeTraces();
  sw.intfSm(ethernet1)->linkFlapProfileSmNotify("default");
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(HandleLinkFlapValues, WithoutADefaultMachineTracesAndChangesNothing) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.settingsIs(ethernet1, true, {{"p1", true}});
  sw.start();
  sw.flap(ethernet1, {1});
  sw.takeTraces();
  sw.config->maxFlapsIs(7);
  EXPECT_THAT(sw.takeTraces(),
              ElementsAre(TraceLine{8, 283, "handleLinkFlapValues",
                                    "LinkFlapIntfSm( Ethernet1 )::handleLinkFlapValues()"}));
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "p1")), ElementsAre(1.0));
}

TEST(HandleLinkFlapValues, EmptiesTheHistoryOfTheDefaultMachineAndZeroesItsCounters) {
  Switch sw{{.maxFlaps = 10, .interval = 2}};
  sw.addInterface(ethernet1);
  sw.start();
  // Five flaps, the last in interval 1: flaps 3, intervals 1.
  sw.flap(ethernet1, {0, 1, 2, 2, 2});
  auto& sm = *sw.profileSm(ethernet1, "default");
  sm.curViolationsIs(4);
  ASSERT_THAT(times(sm), ElementsAre(0, 1, 2, 2, 2));
  ASSERT_EQ(counters(sm), (Counters{3, 1, 4}));
  sw.config->intervalIs(30);
  EXPECT_EQ(&sm, sw.profileSm(ethernet1, "default"));
  EXPECT_THAT(times(sm), IsEmpty());
  EXPECT_EQ(counters(sm), (Counters{0, 0, 0}));
  // Indexes go on; an empty queue's head index is the next one.
  EXPECT_EQ(sm.linkFlapTimeStampMetadata(), (Vek::LinkQueueMetadata{5, 5}));
}

TEST(HandleLinkFlapValues, LeavesTheErrDisableRecord) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  sw.config->maxFlapsIs(7);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 1.0);
}

// Deliberate: the test is on the name. A listed profile without configuration runs on the global
// values too, but keeps its history when they change.
TEST(HandleLinkFlapValues, LeavesTheMachinesOfListedProfilesConfiguredOrNot) {
  Switch sw;
  sw.profileIs("p1", kProfile);
  sw.addInterface(ethernet1);
  sw.settingsIs(ethernet1, true, {{"p1", true}, {"unconfigured", true}, {"default", true}});
  sw.start();
  sw.flap(ethernet1, {1, 2});
  sw.config->maxFlapsIs(7);
  sw.config->intervalIs(7);
  for (char const* const name : {"p1", "unconfigured"}) {
    EXPECT_THAT(times(*sw.profileSm(ethernet1, name)), ElementsAre(1, 2)) << name;
    EXPECT_EQ(counters(*sw.profileSm(ethernet1, name)), (Counters{2, 0, 0})) << name;
  }
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), IsEmpty());
}

TEST(HandleLinkFlapValues, RunsForEitherValueButNotForOtherChangesOfTheConfig) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.takeTraces();
  sw.config->maxFlapsIs(7);
  sw.config->intervalIs(7);
  EXPECT_EQ(sw.traced("handleLinkFlapValues"), 2U);
  sw.takeTraces();
  sw.config->maxFlapsIs(7);
  sw.config->intervalIs(7);
  sw.profileIs("p1", kProfile);
  EXPECT_EQ(sw.traced("handleLinkFlapValues"), 0U);
}

TEST(HandleProfileList, RerunsTheSelectionOncePerChange) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const settings = sw.settingsIs(ethernet1, true);
  sw.start();
  sw.takeTraces();
  settings->profileListIs("p1", true);
  EXPECT_THAT(
      sw.takeTraces(),
      ElementsAre(
          TraceLine{8, 312, "handleProfileList",
                    "LinkFlapIntfSm( Ethernet1 )::handleProfileList(p1)"},
          TraceLine{8, 208, "manageProfileSm", "manageProfileSm(LinkFlapIntfSm( Ethernet1 ))"},
          TraceLine{8, 187, "handleInitialized", "@Ethernet1/p1::handleInitialized()"}));
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("p1"));
}

// The name serves the trace only.
TEST(HandleProfileList, SelectsWhateverMemberChanged) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.intfSm(ethernet1)->linkFlapProfileSmDelAll();
  sw.intfSm(ethernet1)->handleProfileList("unheard-of");
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
}

TEST(HandleIntfConfigEnabled, SwitchedOffEndsWithoutMachinesAndWithoutRecord) {
  Switch sw;
  sw.addInterface(ethernet1);
  auto const settings = sw.settingsIs(ethernet1, true, {{"p1", true}, {"p2", true}});
  sw.start();
  sw.flap(ethernet1, {1});
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  auto const* const kept = sw.intfSm(ethernet1);
  sw.takeTraces();
  settings->enabledIs(false);
  EXPECT_THAT(
      sw.takeTraces(),
      ElementsAre(
          TraceLine{8, 321, "handleIntfConfigEnabled",
                    "LinkFlapIntfSm( Ethernet1 )::handleIntfConfigEnabled(Ethernet1)"},
          TraceLine{8, 208, "manageProfileSm", "manageProfileSm(LinkFlapIntfSm( Ethernet1 ))"}));
  EXPECT_EQ(sw.intfSm(ethernet1), kept);
  EXPECT_THAT(sw.profiles(ethernet1), IsEmpty());
  EXPECT_EQ(sw.errdisabledAt(ethernet1), std::nullopt);

  settings->enabledIs(true);
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("p1", "p2"));
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "p1")), IsEmpty());
  EXPECT_EQ(counters(*sw.profileSm(ethernet1, "p1")), (Counters{0, 0, 0}));
}

// The interface argument serves the trace only.
TEST(HandleIntfConfigEnabled, ReadsTheSettingsWhateverItsArgument) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.settingsIs(ethernet1, true);
  sw.start();
  sw.intfSm(ethernet1)->enableIs(false);
  sw.takeTraces();
  sw.intfSm(ethernet1)->handleIntfConfigEnabled(Tarn::IntfId{"Ethernet9"});
  EXPECT_TRUE(sw.intfSm(ethernet1)->enable());
  EXPECT_EQ(sw.takeMessages()[0],
            "LinkFlapIntfSm( Ethernet1 )::handleIntfConfigEnabled(Ethernet9)");
}

TEST(LinkFlapIntfSmDeathTest, HandleIntfConfigEnabledNeedsSettings) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_EXIT(sw.intfSm(ethernet1)->handleIntfConfigEnabled(ethernet1),
              testing::KilledBySignal(SIGABRT),
              testing::Eq("Vek: an empty Ptr was dereferenced where an object is required\n"));
}

}  // namespace
