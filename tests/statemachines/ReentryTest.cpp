#include <gtest/gtest.h>
#include <ostream>
#include <stdexcept>
#include <string>

#include "statemachines/LinkFlapSm.h"

#include "tests/statemachines/ReentryWorld.h"

// A watcher of the err-disable record acts from inside each notification that the library causes.
// Whatever it does, nothing is left dangling, every other watcher is told once, and what there is in
// the end is what the inputs demand in the end.

namespace {

constexpr Switch::ProfileValues kValues{.maxFlaps = 3, .interval = 50};

/// What causes the notification.
struct Situation {
  char const* name;
  void (*prepare)(ReentryWorld&);
  void (*trigger)(ReentryWorld&);
  /// A walk that selects profiles is under way.
  bool fanOut{false};
  /// An interface that has a status has no machine at that moment.
  bool gap{false};
};

void PrintTo(Situation const& situation, std::ostream* out) {
  *out << situation.name;
}

/// What the watcher does, given the interface that the notification is about.
struct Action {
  char const* name;
  ReentryWorld::Act act;
  /// It makes the top-level machine select profiles for every interface that it finds.
  bool selects{false};
  /// It leaves an interface that has a status without a machine.
  bool removes{false};
  /// It goes behind the inputs' back; a handleIntf for each interface makes up for it.
  bool repair{false};
  /// It installs for other objects. An installation under way comes to its end later and wins, so
  /// it is repeated.
  bool reinstall{false};
};

void start(ReentryWorld& w) {
  w.sw.start();
}

void startWithRecord(ReentryWorld& w) {
  w.sw.start();
  for (Tarn::IntfId const& id : {w.ethernet1, w.ethernet2, w.ethernet3})
    w.sw.causeStatus->intfStatusIs(id, 0.5);
}

void switchOff(ReentryWorld& w, Tarn::IntfId const& id) {
  w.sw.start();
  w.settingsOf(id)->enabledIs(false);
  w.sw.causeStatus->intfStatusIs(id, 0.5);
}

Situation const kSituations[]{
    {"ErrDisable", start,
     [](ReentryWorld& w) {
       w.sw.flap(w.ethernet1, {1, 2});
     }},
    {"ErrDisableByAListedProfile", start,
     [](ReentryWorld& w) {
       w.sw.flap(w.ethernet2, {1, 2});
     }},
    {"ErrDisableInTheReplay",
     [](ReentryWorld& w) {
       w.sw.config->maxFlapsIs(2);
       w.sw.start();
       w.sw.flap(w.ethernet1, {0, 8, 10});
     },
     [](ReentryWorld& w) { w.sw.flap(w.ethernet1, {10.5}); }},
    {"StatusLeaves", startWithRecord,
     [](ReentryWorld& w) { w.sw.statusDir->intfStatusDel(w.ethernet1); }},
    {"ConfigurationLeaves", startWithRecord,
     [](ReentryWorld& w) { w.sw.configDir->intfConfigDel(w.ethernet2); }, false, true},
    {"CauseSwitchedOff", startWithRecord,
     [](ReentryWorld& w) { w.sw.errdisableConfig->disabledIs("link-flap", true); }, false, true},
    {"SettingsAppear", startWithRecord,
     [](ReentryWorld& w) {
       w.sw.settingsIs(w.ethernet1, true, {{"p1", true}});
     },
     false, true},
    {"SettingsReplaced", startWithRecord,
     [](ReentryWorld& w) {
       w.sw.settingsIs(w.ethernet2, true, {{"p3", true}});
     },
     false, true},
    {"SettingsDisappear", startWithRecord,
     [](ReentryWorld& w) { w.sw.config->intfConfigDel(w.ethernet2); }, false, true},
    {"SwitchedOffInSettings", startWithRecord,
     [](ReentryWorld& w) { w.settingsOf(w.ethernet2)->enabledIs(false); }},
    {"ListChangedWhileSwitchedOff", [](ReentryWorld& w) { switchOff(w, w.ethernet2); },
     [](ReentryWorld& w) { w.settingsOf(w.ethernet2)->profileListIs("p3", true); }},
    {"DefaultListChangedWhileSwitchedOff", [](ReentryWorld& w) { switchOff(w, w.ethernet3); },
     [](ReentryWorld& w) { w.sw.config->defaultProfileListIs("d1", true); }, true, false},
    {"ProfileChangedWhileSwitchedOff", [](ReentryWorld& w) { switchOff(w, w.ethernet2); },
     [](ReentryWorld& w) { w.sw.profileIs("p1", kValues); }, true, false},
    {"InitialPassOverAnInterfaceWithoutConfiguration",
     [](ReentryWorld& w) {
       w.sw.configDir->intfConfigDel(w.ethernet1);
       w.sw.causeStatus->intfStatusIs(w.ethernet1, 0.5);
     },
     start, false, true},
    {"InitialPassOverASwitchedOffListOfProfiles",
     [](ReentryWorld& w) {
       w.sw.settingsIs(w.ethernet2, false, {{"p1", true}, {"p3", true}});
       w.sw.causeStatus->intfStatusIs(w.ethernet2, 0.5);
     },
     start, false, true},
    {"InitialPassOverASwitchedOffInterface",
     [](ReentryWorld& w) {
       w.sw.settingsIs(w.ethernet3, false);
       w.sw.causeStatus->intfStatusIs(w.ethernet3, 0.5);
     },
     start, false, true},
    {"AdmissionOfASwitchedOffListOfProfiles",
     [](ReentryWorld& w) {
       w.sw.statusDir->intfStatusDel(w.ethernet2);
       w.sw.settingsIs(w.ethernet2, false, {{"p1", true}, {"p3", true}});
       w.sw.start();
       w.sw.causeStatus->intfStatusIs(w.ethernet2, 0.5);
     },
     [](ReentryWorld& w) { w.sw.addStatus(w.ethernet2); }, false, true},
    {"RebuildOfTheMachine",
     [](ReentryWorld& w) {
       w.sw.start();
       w.sw.configDir->intfConfigDel(w.ethernet1);
       w.sw.causeStatus->intfStatusIs(w.ethernet1, 0.5);
       w.sw.causeName = "another";
     },
     start, false, true},
    {"AdmissionOfAnUnknownInterface",
     [](ReentryWorld& w) {
       w.sw.start();
       w.sw.causeStatus->intfStatusIs(Tarn::IntfId{"Ethernet9"}, 0.5);
     },
     [](ReentryWorld& w) { w.sw.machine().handleIntf(Tarn::IntfId{"Ethernet9"}); }},
    {"SelectionForASwitchedOffInterface", [](ReentryWorld& w) { switchOff(w, w.ethernet3); },
     [](ReentryWorld& w) { LinkFlap::manageProfileSm(w.sw.intfSm(w.ethernet3)); }},
};

using Id = Tarn::IntfId const&;

void eachInterface(ReentryWorld& w, void (*act)(ReentryWorld&, Id)) {
  for (Tarn::IntfId const& id : w.sw.walkOrder())
    act(w, id);
}

/// The machine that is being notified; null once the Root or its machine has gone.
LinkFlap::LinkFlapSm* machine(ReentryWorld& w) {
  return w.sw.root && w.sw.root->linkFlapSm() ? &w.sw.machine() : nullptr;
}

Action const kActions[]{
    {"Nothing", [](ReentryWorld&, Id) {}},
    {"DropsTheInterface", [](ReentryWorld& w, Id id) { w.drop(id); }},
    {"DropsTheStatus", [](ReentryWorld& w, Id id) { w.sw.statusDir->intfStatusDel(id); }},
    {"DropsTheConfiguration", [](ReentryWorld& w, Id id) { w.sw.configDir->intfConfigDel(id); },
     false, true},
    {"ReplacesTheInterface",
     [](ReentryWorld& w, Id id) {
       w.drop(id);
       w.sw.addInterface(id);
     }},
    {"DropsEveryInterface",
     [](ReentryWorld& w, Id) {
       eachInterface(w, [](ReentryWorld& world, Id each) { world.drop(each); });
     }},
    {"ReplacesEveryInterface",
     [](ReentryWorld& w, Id) {
       eachInterface(w, [](ReentryWorld& world, Id each) {
         world.drop(each);
         world.sw.addInterface(each);
       });
     }},
    {"AddsManyInterfaces",
     [](ReentryWorld& w, Id) {
       for (int i = 10; i < 50; ++i)
         w.sw.addInterface(Tarn::IntfId{("Ethernet" + std::to_string(i)).c_str()});
     }},
    {"GivesSettings",
     [](ReentryWorld& w, Id id) {
       w.sw.settingsIs(id, true, {{"p1", true}, {"p4", false}});
     }},
    {"GivesSettingsSwitchedOff",
     [](ReentryWorld& w, Id id) {
       w.sw.settingsIs(id, false, {{"p1", true}});
     }},
    {"GivesSettingsTwice",
     [](ReentryWorld& w, Id id) {
       w.sw.settingsIs(id, false);
       w.sw.settingsIs(id, true);
     }},
    {"TakesSettings", [](ReentryWorld& w, Id id) { w.sw.config->intfConfigDel(id); }},
    {"SwitchesOffInSettings",
     [](ReentryWorld& w, Id) {
       for (Id each : {w.ethernet2, w.ethernet3})
         if (auto const settings = w.settingsOf(each)) settings->enabledIs(false);
     }},
    {"SwitchesOffAndOnInSettings",
     [](ReentryWorld& w, Id) {
       for (Id each : {w.ethernet2, w.ethernet3})
         if (auto const settings = w.settingsOf(each)) {
           settings->enabledIs(!settings->enabled());
           settings->enabledIs(!settings->enabled());
         }
     }},
    {"ListsOtherProfiles",
     [](ReentryWorld& w, Id) {
       for (Id each : {w.ethernet2, w.ethernet3})
         if (auto const settings = w.settingsOf(each)) {
           settings->profileListIs("p5", true);
           settings->profileListDel("p1");
         }
     }},
    {"ListsAProfileWithFalse",
     [](ReentryWorld& w, Id) {
       if (auto const settings = w.settingsOf(w.ethernet2)) settings->profileListIs("p1", false);
     }},
    {"ReplacesTheProfile", [](ReentryWorld& w, Id) { w.sw.profileIs("p1", kValues); }, true},
    {"RemovesTheProfile", [](ReentryWorld& w, Id) { w.sw.config->profileConfigDel("p1"); }, true},
    {"ChangesTheProfilesValues",
     [](ReentryWorld& w, Id) {
       w.p1->maxFlapsIs(4);
       w.p1->intervalIs(40);
       w.p1->violationsIs(4);
       w.p1->trackedIntervalsIs(4);
     }},
    {"ChangesTheDefaultList",
     [](ReentryWorld& w, Id) {
       w.sw.config->defaultProfileListIs("p1", true);
       w.sw.config->defaultProfileListIs("d2", true);
       w.sw.config->defaultProfileListDel("p1");
     },
     true},
    {"ChangesTheGlobalValues",
     [](ReentryWorld& w, Id) {
       w.sw.config->maxFlapsIs(4);
       w.sw.config->intervalIs(40);
     }},
    {"SwitchesTheCauseOff",
     [](ReentryWorld& w, Id) { w.sw.errdisableConfig->disabledIs(w.sw.causeName, true); }, false,
     true},
    {"SwitchesTheCauseOffAndOn",
     [](ReentryWorld& w, Id) {
       w.sw.errdisableConfig->disabledIs(w.sw.causeName, true);
       w.sw.errdisableConfig->disabledDel(w.sw.causeName);
     }},
    {"TakesTheLinkDown",
     [](ReentryWorld& w, Id id) {
       if (w.sw.statusDir->intfStatus(id)) w.sw.linkIs(id, 2);
     }},
    {"FlapsOn",
     [](ReentryWorld& w, Id id) {
       if (w.sw.statusDir->intfStatus(id)) w.sw.flap(id, {20, 21, 22, 23, 24});
     }},
    {"FlapsEveryInterface",
     [](ReentryWorld& w, Id) {
       eachInterface(w, [](ReentryWorld& world, Id each) {
         world.sw.flap(each, {20, 21, 22, 23});
       });
     }},
    {"BeginsAConfiguration",
     [](ReentryWorld& w, Id id) {
       if (w.sw.configDir->intfConfig(id)) w.sw.phyConfigStateIs(id, 2);
     }},
    {"DeletesTheMachine",
     [](ReentryWorld& w, Id) {
       if (w.sw.root) (void)w.sw.root->linkFlapSmDel();
     }},
    {"DropsTheRoot", [](ReentryWorld& w, Id) { w.sw.root = nullptr; }},
    {"InstallsTheSameAgain", [](ReentryWorld& w, Id) { w.sw.start(); }},
    {"Rebuilds",
     [](ReentryWorld& w, Id) {
       w.sw.causeName = "rebuilt";
       w.sw.start();
     },
     false, false, false, true},
    {"RebuildsWithAnotherRecord",
     [](ReentryWorld& w, Id) {
       w.sw.causeStatusIs(Vek::make<Errdisable::CauseStatus>());
       w.sw.start();
     },
     false, false, false, true},
    {"RebuildsWithOtherDirectories",
     [](ReentryWorld& w, Id) {
       w.sw.configDir = Vek::make<Interface::AllEthPhyIntfConfigDir>();
       w.sw.statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
       for (Id each : {w.ethernet1, w.ethernet2, w.ethernet3})
         w.sw.addInterface(each);
       w.sw.start();
     },
     false, false, false, true},
    {"RemovesTheInterfaceMachine",
     [](ReentryWorld& w, Id id) {
       if (auto* const sm = machine(w)) (void)sm->linkFlapIntfSmDel(id);
     },
     false, true, true},
    {"RemovesEveryInterfaceMachine",
     [](ReentryWorld& w, Id) {
       if (auto* const sm = machine(w)) sm->linkFlapIntfSmDelAll();
     },
     false, true, true},
    {"RemovesTheProfileMachines",
     [](ReentryWorld& w, Id) {
       for (Id each : {w.ethernet1, w.ethernet2, w.ethernet3})
         if (auto* const sm = w.sw.intfSm(each)) sm->linkFlapProfileSmDelAll();
     },
     false, false, true},
    {"AdmitsAgain",
     [](ReentryWorld& w, Id) {
       eachInterface(w, [](ReentryWorld& world, Id each) {
         if (auto* const sm = machine(world)) sm->handleIntf(each);
       });
     }},
    {"SelectsAgain",
     [](ReentryWorld& w, Id) {
       eachInterface(w, [](ReentryWorld& world, Id each) {
         if (auto* const sm = world.sw.intfSm(each)) LinkFlap::manageProfileSm(sm);
       });
     }},
    {"WithdrawsTheRecord", [](ReentryWorld& w, Id id) { w.sw.causeStatus->intfStatusDel(id); }},
    {"WritesAnotherRecord",
     [](ReentryWorld& w, Id id) {
       w.sw.causeStatus->intfStatusIs(id, 99);
       w.recordsByHand = true;
     }},
    {"SwitchesNotificationOffAndOn",
     [](ReentryWorld& w, Id) {
       if (auto* const sm = machine(w)) {
         sm->hasNotificationActiveIs(false);
         sm->hasNotificationActiveIs(true);
       }
     }},
    {"MakesZombiesAndBack",
     [](ReentryWorld& w, Id) {
       if (auto* const sm = machine(w)) {
         sm->vekDoZombieReactors(true);
         sm->vekDoZombieReactors(false);
       }
     }},
    {"LeavesAndSendsOthers",
     [](ReentryWorld& w, Id) {
       auto const self = w.meddler;
       w.meddler = nullptr;
       for (int i = 0; i < 3; ++i)
         w.latecomers.push_back(CauseWatcher::on(w.sw.causeStatus, {}));
     }},
    {"DropsTheNextWatcher",
     [](ReentryWorld& w, Id) {
       w.after = nullptr;
       w.afterLeft = true;
     }},
    {"ReplacesTheInterfaceAndDropsTheMachine",
     [](ReentryWorld& w, Id id) {
       w.drop(id);
       w.sw.addInterface(id);
       if (w.sw.root) (void)w.sw.root->linkFlapSmDel();
     }},
};

class Reentry : public testing::TestWithParam<Situation> {};

TEST_P(Reentry, EndsInWhatTheInputsDemandWhateverAWatcherDoes) {
  Situation const& situation = GetParam();
  for (Action const& action : kActions) {
    // An interface that has a status but no machine, met by a walk that selects profiles, ends the
    // process. That is meant so, and tested where the walks are.
    if ((situation.gap && action.selects) || (situation.fanOut && action.removes)) continue;
    SCOPED_TRACE(action.name);
    ReentryWorld w;
    situation.prepare(w);
    w.arm(action.act);
    EXPECT_NO_THROW(situation.trigger(w));
    EXPECT_TRUE(w.acted());
    if (action.reinstall && w.sw.root) w.sw.start();
    if (action.repair && machine(w) != nullptr)
      eachInterface(w, [](ReentryWorld& world, Id each) { world.sw.machine().handleIntf(each); });
    w.expectEachChangeToldOnce();
    w.expectSettled();
  }
}

TEST_P(Reentry, SurvivesAWatcherThatThrows) {
  ReentryWorld w;
  GetParam().prepare(w);
  w.arm([](ReentryWorld&, Id) { throw std::runtime_error{"meddler"}; });
  EXPECT_NO_THROW(GetParam().trigger(w));
  auto const failures = w.sw.takeFailures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].attributeName, "intfStatus");
  EXPECT_EQ(failures[0].watcher, "CauseWatcher");
  EXPECT_EQ(failures[0].message, "meddler");
  w.expectEachChangeToldOnce();
  w.expectSettled();
}

INSTANTIATE_TEST_SUITE_P(Situations, Reentry, testing::ValuesIn(kSituations),
                         [](testing::TestParamInfo<Situation> const& instance) {
                           return std::string{instance.param.name};
                         });

}  // namespace
