#include "tests/statemachines/ReentryActions.h"

#include <string>

#include "statemachines/LinkFlapSm.h"

namespace {

constexpr Switch::ProfileValues kValues{.maxFlaps = 3, .interval = 50};

using Id = Tarn::IntfId const&;

void eachInterface(ReentryWorld& w, void (*act)(ReentryWorld&, Id)) {
  for (Tarn::IntfId const& id : w.sw.walkOrder())
    act(w, id);
}

/// The machine that is being notified; null once the Root or its machine has gone.
LinkFlap::LinkFlapSm* machine(ReentryWorld& w) {
  return w.sw.root && w.sw.root->linkFlapSm() ? &w.sw.machine() : nullptr;
}

void install(ReentryWorld& w) {
  if (w.sw.root) w.sw.start();
}

std::vector<ReentryAction> allActions() {
  return {
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
      {"InstallsTheSameAgain", [](ReentryWorld& w, Id) { install(w); }},
      {"Rebuilds",
       [](ReentryWorld& w, Id) {
         w.sw.causeName = "rebuilt";
         install(w);
       },
       false, false, false, true},
      {"RebuildsWithAnotherRecord",
       [](ReentryWorld& w, Id) {
         w.sw.causeStatusIs(Vek::make<Errdisable::CauseStatus>());
         install(w);
       },
       false, false, false, true},
      {"RebuildsWithOtherDirectories",
       [](ReentryWorld& w, Id) {
         w.sw.configDir = Vek::make<Interface::AllEthPhyIntfConfigDir>();
         w.sw.statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
         for (Id each : {w.ethernet1, w.ethernet2, w.ethernet3})
           w.sw.addInterface(each);
         install(w);
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
}

}  // namespace

std::vector<ReentryAction> const& reentryActions() {
  static auto const* const all = new std::vector<ReentryAction>{allActions()};
  return *all;
}

void repairAfter(ReentryAction const& action, ReentryWorld& world) {
  if (action.reinstall) install(world);
  if (action.repair && machine(world) != nullptr)
    eachInterface(world, [](ReentryWorld& w, Id each) { w.sw.machine().handleIntf(each); });
}
