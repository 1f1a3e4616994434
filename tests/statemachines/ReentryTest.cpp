#include <gtest/gtest.h>
#include <ostream>
#include <stdexcept>
#include <string>

#include "statemachines/LinkFlapSm.h"

#include "tests/statemachines/ReentryActions.h"

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

class Reentry : public testing::TestWithParam<Situation> {};

TEST_P(Reentry, EndsInWhatTheInputsDemandWhateverAWatcherDoes) {
  Situation const& situation = GetParam();
  for (ReentryAction const& action : reentryActions()) {
    // An interface that has a status but no machine, met by a walk that selects profiles, ends the
    // process. That is meant so, and tested where the walks are.
    if ((situation.gap && action.selects) || (situation.fanOut && action.removes)) continue;
    SCOPED_TRACE(action.name);
    ReentryWorld w;
    situation.prepare(w);
    w.arm(action.act);
    EXPECT_NO_THROW(situation.trigger(w));
    EXPECT_TRUE(w.acted());
    repairAfter(action, w);
    w.expectEachChangeToldOnce();
    w.expectSettled();
  }
}

TEST_P(Reentry, SurvivesAWatcherThatThrows) {
  ReentryWorld w;
  GetParam().prepare(w);
  w.arm([](ReentryWorld&, Tarn::IntfId const&) { throw std::runtime_error{"meddler"}; });
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
