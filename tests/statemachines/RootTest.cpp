#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

#include "runtime/vek/Exception.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/statemachines/Watchers.h"
#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

TEST(RootFactory, MakesANewRootEachTimeHeldByTheCallerAlone) {
  auto const first = LinkFlap::rootFactory("flaps");
  auto const second = LinkFlap::rootFactory("flaps");
  EXPECT_NE(first, second);
  EXPECT_EQ(first->referenceCount(), 1U);
  EXPECT_EQ(first->name(), Vek::Name{"flaps"});
  EXPECT_EQ(first->parent(), nullptr);
  EXPECT_FALSE(first->linkFlapSm());
  EXPECT_EQ(first->changes(), 0U);
}

TEST(RootLinkFlapSmIs, BuildsAMachineForTheSevenArgumentsAndHoldsIt) {
  Switch sw;
  auto const sm = sw.root->linkFlapSmIs(sw.activity, sw.configDir, sw.statusDir,
                                        sw.errdisableConfig, sw.config, sw.causeStatus, "cause");
  EXPECT_EQ(sw.root->linkFlapSm(), sm);
  EXPECT_EQ(sm->referenceCount(), 2U);
  EXPECT_EQ(sm->vekFwkActivity(), sw.activity);
  EXPECT_EQ(sm->ethPhyIntfConfigDir(), sw.configDir);
  EXPECT_EQ(sm->ethPhyIntfStatusDir(), sw.statusDir);
  EXPECT_EQ(sm->errdisableConfig(), sw.errdisableConfig);
  EXPECT_EQ(sm->config(), sw.config);
  EXPECT_EQ(sm->causeStatus(), sw.causeStatus);
  EXPECT_EQ(sm->causeName(), "cause");
  EXPECT_TRUE(sm->hasNotificationActive());
}

TEST(RootLinkFlapSmIs, RunsTheInitialPassBeforeItReturns) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
}

TEST(RootLinkFlapSmIs, WithIdenticalArgumentsReturnsTheHeldMachineAndTellsNobody) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  LinkFlap::LinkFlapSm* const held = &sw.machine();
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
  sw.takeTraces();

  sw.start();

  EXPECT_EQ(&sw.machine(), held);
  EXPECT_EQ(told, 0);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

// Only building switches notification on; returning the held machine does nothing to it.
TEST(RootLinkFlapSmIs, LeavesTheHeldMachineSwitchedOff) {
  Switch sw;
  sw.start();
  sw.machine().hasNotificationActiveIs(false);
  sw.start();
  EXPECT_FALSE(sw.machine().hasNotificationActive());
}

TEST(RootLinkFlapSmIs, ComparesTheCauseNameByItsText) {
  Switch sw;
  sw.causeName = Vek::String{std::string{"link-"} + "flap"};
  sw.start();
  LinkFlap::LinkFlapSm* const held = &sw.machine();
  sw.causeName = Vek::String{std::string{"link"} + "-flap"};
  sw.start();
  EXPECT_EQ(&sw.machine(), held);
}

TEST(RootLinkFlapSmIs, WithAnotherActivityAloneKeepsTheMachineWhoseReactorsThenUseIt) {
  Switch sw;
  sw.start();
  LinkFlap::LinkFlapSm* const held = &sw.machine();
  sw.activity = Vek::make<Vek::ActivityConfig>();
  sw.activity->deferredIs(true);
  sw.start();
  EXPECT_EQ(&sw.machine(), held);
  EXPECT_EQ(held->vekFwkActivity(), sw.activity);

  sw.addStatus(ethernet1);
  EXPECT_EQ(sw.traced("handleIntf"), 0U);
  Vek::vekActivitySmFor(sw.activity)->deliver();
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
}

TEST(RootLinkFlapSmIs, HandsTheNewActivityToAMachineThatItThenReplaces) {
  Switch sw;
  sw.start();
  auto const old = sw.root->linkFlapSm();
  sw.activity = Vek::make<Vek::ActivityConfig>();
  sw.causeName = "another";
  sw.start();
  EXPECT_NE(sw.root->linkFlapSm(), old);
  EXPECT_EQ(old->vekFwkActivity(), sw.activity);
}

/// One of the six arguments that make another machine.
struct Replacement {
  char const* name;
  void (*replace)(Switch&);
};

void PrintTo(Replacement const& replacement, std::ostream* out) {
  *out << replacement.name;
}

class RootRebuild : public testing::TestWithParam<Replacement> {};

TEST_P(RootRebuild, MakesANewMachineReleasesTheOldOneAndTellsEachWatcherOnce) {
  Switch sw;
  sw.start();
  auto const old = sw.root->linkFlapSm();
  int first = 0;
  int second = 0;
  auto const watcher1 = RootWatcher::on(sw.root, [&] { ++first; });
  auto const watcher2 = RootWatcher::on(sw.root, [&] { ++second; });

  GetParam().replace(sw);
  sw.start();

  EXPECT_NE(sw.root->linkFlapSm(), old);
  EXPECT_EQ(old->referenceCount(), 1U);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
  EXPECT_EQ(sw.machine().ethPhyIntfConfigDir(), sw.configDir);
  EXPECT_EQ(sw.machine().ethPhyIntfStatusDir(), sw.statusDir);
  EXPECT_EQ(sw.machine().errdisableConfig(), sw.errdisableConfig);
  EXPECT_EQ(sw.machine().config(), sw.config);
  EXPECT_EQ(sw.machine().causeStatus(), sw.causeStatus);
  EXPECT_EQ(sw.machine().causeName(), sw.causeName);
}

INSTANTIATE_TEST_SUITE_P(
    Each, RootRebuild,
    testing::Values(
        Replacement{
            "ConfigDirectory",
            [](Switch& sw) { sw.configDir = Vek::make<Interface::AllEthPhyIntfConfigDir>(); }},
        Replacement{
            "StatusDirectory",
            [](Switch& sw) { sw.statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>(); }},
        Replacement{"ErrdisableConfig",
                    [](Switch& sw) { sw.errdisableConfig = Vek::make<Errdisable::Config>(); }},
        Replacement{"Config", [](Switch& sw) { sw.config = Vek::make<LinkFlap::Config>(); }},
        Replacement{"CauseStatus",
                    [](Switch& sw) { sw.causeStatusIs(Vek::make<Errdisable::CauseStatus>()); }},
        Replacement{"CauseName", [](Switch& sw) { sw.causeName = "another"; }}),
    [](testing::TestParamInfo<Replacement> const& instance) {
      return std::string{instance.param.name};
    });

TEST(RootLinkFlapSmIs, DestroysAReplacedMachineThatNobodyElseHolds) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.causeName = "another";
  sw.start();
  sw.takeTraces();
  sw.flap(ethernet1, {1});
  // Down and up, each told to one profile machine: the new one's.
  EXPECT_EQ(sw.traced("handleLinkStatus"), 2U);
}

TEST(RootLinkFlapSmIs, CountsOneChangePerCallAlsoWhenItReturnsTheHeldMachine) {
  Switch sw;
  sw.start();
  EXPECT_EQ(sw.root->changes(), 1U);
  sw.start();
  EXPECT_EQ(sw.root->changes(), 2U);
  sw.causeName = "another";
  sw.start();
  EXPECT_EQ(sw.root->changes(), 3U);
}

TEST(RootLinkFlapSmIs, TellsWatchersInOrderOfRegistrationWhenTheMachineIsInPlace) {
  Switch sw;
  std::vector<std::string> log;
  auto const saying = [&](std::string const& who) {
    return [&log, &sw, who] { log.push_back(who + (sw.root->linkFlapSm() ? " set" : " empty")); };
  };
  auto const b = RootWatcher::on(sw.root, saying("b"));
  auto const a = RootWatcher::on(sw.root, saying("a"));
  auto const c = RootWatcher::on(sw.root, saying("c"));

  sw.start();
  EXPECT_THAT(log, ElementsAre("b set", "a set", "c set"));
  log.clear();
  (void)sw.root->linkFlapSmDel();
  EXPECT_THAT(log, ElementsAre("b empty", "a empty", "c empty"));
}

TEST(RootLinkFlapSmIs, SwitchesNotificationOnAfterTheWatchersWereTold) {
  Switch sw;
  auto const watcher =
      RootWatcher::on(sw.root, [&] { sw.machine().hasNotificationActiveIs(false); });
  sw.start();
  EXPECT_TRUE(sw.machine().hasNotificationActive());
}

TEST(RootLinkFlapSmIs, DoesNotStoreWhatNewLinkFlapSmMakes) {
  Switch sw;
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
  auto const sm =
      sw.root->newLinkFlapSm(sw.activity, sw.configDir, sw.statusDir, sw.errdisableConfig,
                             sw.config, sw.causeStatus, sw.causeName);
  EXPECT_EQ(sm->referenceCount(), 1U);
  EXPECT_TRUE(sm->hasNotificationActive());
  EXPECT_FALSE(sw.root->linkFlapSm());
  EXPECT_EQ(told, 0);
  EXPECT_EQ(sw.root->changes(), 0U);
}

// The status object of Ethernet1 under two keys: the pass finds the machine of the first when it
// comes to the second, built from another configuration object.
TEST(RootLinkFlapSmIs, PassesOnWhatBuildingThrowsAndKeepsTheOldMachine) {
  Switch sw;
  sw.start();
  auto const old = sw.root->linkFlapSm();
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });

  auto const oldStatusDir = sw.statusDir;
  sw.statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
  sw.addInterface(ethernet1);
  sw.addPhyConfig(ethernet2);
  sw.statusDir->intfStatusIs(ethernet2, sw.status(ethernet1));
  EXPECT_THROW(sw.start(), Vek::NameInUseException);

  EXPECT_EQ(sw.root->linkFlapSm(), old);
  EXPECT_EQ(old->ethPhyIntfStatusDir(), oldStatusDir);
  EXPECT_TRUE(old->hasNotificationActive());
  EXPECT_EQ(told, 0);
  EXPECT_FALSE(sw.statusDir->hasNotifiees());
}

TEST(RootLinkFlapSmDel, WithoutAMachineReturnsEmptyAndTellsNobody) {
  Switch sw;
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
  EXPECT_FALSE(sw.root->linkFlapSmDel());
  EXPECT_EQ(told, 0);
  EXPECT_EQ(sw.root->changes(), 0U);
}

TEST(RootLinkFlapSmDel, TakesTheMachineOutTellsAndReturnsIt) {
  Switch sw;
  sw.start();
  LinkFlap::LinkFlapSm* const held = &sw.machine();
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });

  auto const removed = sw.root->linkFlapSmDel();

  EXPECT_EQ(removed.get(), held);
  EXPECT_EQ(removed->referenceCount(), 1U);
  EXPECT_FALSE(sw.root->linkFlapSm());
  EXPECT_EQ(told, 1);
  EXPECT_EQ(sw.root->changes(), 2U);
}

TEST(RootLinkFlapSmDel, EndsTheMonitoringWhenTheMachineIsDropped) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  (void)sw.root->linkFlapSmDel();
  sw.takeTraces();
  sw.flap(ethernet1, {1});
  sw.settingsIs(ethernet1, true);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

}  // namespace
