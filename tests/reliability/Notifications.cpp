#include "tests/reliability/Notifications.h"

#include <tuple>

#include "statemachines/LinkFlapSm.h"

namespace {

using World = ReentryWorld;
using Vek::AttributeMask;

template <typename T>
Subject subject(Vek::Ptr<T> const& object) {
  auto* const held = object.get();
  return {object, [held](AttributeMask watching) {
            auto const listener = Vek::make<ListenerOf<T>>(watching);
            listener->notifierIs(Vek::Ptr<Vek::PtrInterface const>{held});
            listener->isRegisteredNotifieeIs(true);
            return Listener{listener, listener.get()};
          }};
}

template <typename... Attributes>
AttributeMask mask(Attributes const&... attributes) {
  return static_cast<AttributeMask>((Vek::attributeBit(attributes.id) | ...));
}

void nothing(World&) {}

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};
Tarn::IntfId const ethernet9{"Ethernet9"};

Switch::ProfileValues constexpr kValues{.maxFlaps = 3, .interval = 50};

using LinkFlap::Config;
using LinkFlap::IntfConfig;
using LinkFlap::ProfileConfig;

void configuration(std::vector<Notification>& all) {
  auto const config = [](World& w) { return subject(w.sw.config); };
  AttributeMask const values = mask(Config::maxFlapsAttr, Config::intervalAttr);
  AttributeMask const members =
      mask(Config::intfConfigAttr, Config::profileConfigAttr, Config::defaultProfileListAttr);
  all.push_back({"Config.maxFlaps", ethernet1, config, values, false, nothing, nothing,
                 [](World& w) { w.sw.config->maxFlapsIs(7); },
                 [](World& w) { w.sw.config->maxFlapsIs(8); }});
  all.push_back({"Config.interval", ethernet1, config, values, false, nothing, nothing,
                 [](World& w) { w.sw.config->intervalIs(7); },
                 [](World& w) { w.sw.config->intervalIs(8); }});
  auto const giveSettings = [](World& w) { w.sw.settingsIs(ethernet1, true, {{"p1", true}}); };
  auto const takeSettings = [](World& w) { w.sw.config->intfConfigDel(ethernet1); };
  all.push_back({"Config.intfConfig given", ethernet1, config, members, true, nothing, nothing,
                 giveSettings, takeSettings});
  all.push_back({"Config.intfConfig replaced", ethernet1, config, members, true, giveSettings,
                 nothing, giveSettings, giveSettings});
  all.push_back({"Config.intfConfig taken", ethernet1, config, members, true, giveSettings, nothing,
                 takeSettings, giveSettings});
  auto const giveProfile = [](World& w) { w.sw.profileIs("p1", kValues); };
  auto const takeProfile = [](World& w) { w.sw.config->profileConfigDel("p1"); };
  all.push_back({"Config.profileConfig given", ethernet2, config, members, true, takeProfile,
                 nothing, giveProfile, takeProfile, true});
  all.push_back({"Config.profileConfig replaced", ethernet2, config, members, true, nothing,
                 nothing, giveProfile, giveProfile, true});
  all.push_back({"Config.profileConfig taken", ethernet2, config, members, true, nothing, nothing,
                 takeProfile, giveProfile, true});
  auto const list = [](World& w) { w.sw.config->defaultProfileListIs("p1", true); };
  auto const listFalse = [](World& w) { w.sw.config->defaultProfileListIs("p1", false); };
  auto const unlist = [](World& w) { w.sw.config->defaultProfileListDel("p1"); };
  all.push_back({"Config.defaultProfileList given", ethernet1, config, members, true, nothing,
                 nothing, list, unlist, true});
  all.push_back({"Config.defaultProfileList changed", ethernet1, config, members, true, list,
                 nothing, listFalse, list, true});
  all.push_back({"Config.defaultProfileList taken", ethernet1, config, members, true, list, nothing,
                 unlist, list, true});
}

void settings(std::vector<Notification>& all) {
  auto const own = [](World& w) { return subject(w.settingsOf(ethernet2)); };
  AttributeMask const both = mask(IntfConfig::enabledAttr, IntfConfig::profileListAttr);
  // From inside, the interface may have been given other settings, or none.
  static auto const with = [](World& w, auto act) {
    if (auto const object = w.settingsOf(ethernet2)) act(*object);
  };
  all.push_back({"IntfConfig.enabled", ethernet2, own, both, false, nothing, nothing,
                 [](World& w) { w.settingsOf(ethernet2)->enabledIs(false); },
                 [](World& w) { with(w, [](IntfConfig& c) { c.enabledIs(!c.enabled()); }); }});
  all.push_back({"IntfConfig.profileList given", ethernet2, own, both, true, nothing, nothing,
                 [](World& w) { w.settingsOf(ethernet2)->profileListIs("p3", true); },
                 [](World& w) { with(w, [](IntfConfig& c) { c.profileListDel("p3"); }); }});
  all.push_back({"IntfConfig.profileList changed", ethernet2, own, both, true, nothing, nothing,
                 [](World& w) { w.settingsOf(ethernet2)->profileListIs("p1", false); },
                 [](World& w) { with(w, [](IntfConfig& c) { c.profileListIs("p1", true); }); }});
  all.push_back({"IntfConfig.profileList taken", ethernet2, own, both, true, nothing, nothing,
                 [](World& w) { w.settingsOf(ethernet2)->profileListDel("p1"); },
                 [](World& w) { with(w, [](IntfConfig& c) { c.profileListIs("p1", true); }); }});
  auto const profile = [](World& w) { return subject(w.p1); };
  AttributeMask const values =
      mask(ProfileConfig::maxFlapsAttr, ProfileConfig::intervalAttr, ProfileConfig::violationsAttr,
           ProfileConfig::trackedIntervalsAttr);
  all.push_back({"ProfileConfig.maxFlaps", ethernet2, profile, values, false, nothing, nothing,
                 [](World& w) { w.p1->maxFlapsIs(7); }, [](World& w) { w.p1->maxFlapsIs(8); }});
  all.push_back({"ProfileConfig.interval", ethernet2, profile, values, false, nothing, nothing,
                 [](World& w) { w.p1->intervalIs(7); }, [](World& w) { w.p1->intervalIs(8); }});
  all.push_back({"ProfileConfig.violations", ethernet2, profile, values, false, nothing, nothing,
                 [](World& w) { w.p1->violationsIs(7); }, [](World& w) { w.p1->violationsIs(8); }});
  all.push_back({"ProfileConfig.trackedIntervals", ethernet2, profile, values, false, nothing,
                 nothing, [](World& w) { w.p1->trackedIntervalsIs(7); },
                 [](World& w) { w.p1->trackedIntervalsIs(8); }});
}

void interfaces(std::vector<Notification>& all) {
  auto const configDir = [](World& w) { return subject(w.sw.configDir); };
  auto const statusDir = [](World& w) { return subject(w.sw.statusDir); };
  AttributeMask const config = mask(Interface::AllEthPhyIntfConfigDir::intfConfigAttr);
  AttributeMask const status = mask(Interface::AllEthPhyIntfStatusDir::intfStatusAttr);
  auto const takeConfig = [](World& w) { w.sw.configDir->intfConfigDel(ethernet1); };
  auto const takeStatus = [](World& w) { w.sw.statusDir->intfStatusDel(ethernet1); };
  auto const giveConfig = [](World& w) {
    if (!w.sw.configDir->intfConfig(ethernet1)) w.sw.addPhyConfig(ethernet1);
  };
  auto const giveStatus = [](World& w) {
    if (!w.sw.statusDir->intfStatus(ethernet1)) w.sw.addStatus(ethernet1);
  };
  // The very object: another one under the same key is refused as long as the machine is there.
  auto const putConfigBack = [](World& w) {
    w.sw.configDir->intfConfigIs(ethernet1, w.sw.phyConfig(ethernet1));
  };
  auto const putStatusBack = [](World& w) {
    w.sw.statusDir->intfStatusIs(ethernet1, w.sw.status(ethernet1));
  };
  all.push_back({"AllEthPhyIntfConfigDir.intfConfig given", ethernet1, configDir, config, true,
                 takeConfig, nothing, giveConfig, takeConfig});
  all.push_back({"AllEthPhyIntfConfigDir.intfConfig taken", ethernet1, configDir, config, true,
                 nothing, nothing, takeConfig, putConfigBack});
  all.push_back({"AllEthPhyIntfStatusDir.intfStatus given", ethernet1, statusDir, status, true,
                 takeStatus, nothing, giveStatus, takeStatus});
  all.push_back({"AllEthPhyIntfStatusDir.intfStatus taken", ethernet1, statusDir, status, true,
                 nothing, nothing, takeStatus, putStatusBack});
  all.push_back({"EthPhyIntfConfig.phyConfigState", ethernet1,
                 [](World& w) { return subject(w.sw.phyConfig(ethernet1)); }, 0, false, nothing,
                 nothing, [](World& w) { w.sw.phyConfigStateIs(ethernet1, 2); },
                 [](World& w) { w.sw.phyConfigStateIs(ethernet1, 0); }});
  // The change that err-disables.
  all.push_back({"EthPhyIntfStatus.rawLinkStatus", ethernet1,
                 [](World& w) { return subject(w.sw.status(ethernet1)); },
                 mask(Interface::EthPhyIntfStatus::rawLinkStatusAttr), false, nothing,
                 [](World& w) {
                   w.sw.flap(ethernet1, {1});
                   w.sw.clock.secondsIs(2);
                   w.sw.linkIs(ethernet1, 2);
                 },
                 [](World& w) { w.sw.linkIs(ethernet1, 1); },
                 [](World& w) { w.sw.linkIs(ethernet1, 2); }});
}

void errDisable(std::vector<Notification>& all) {
  auto const config = [](World& w) { return subject(w.sw.errdisableConfig); };
  using EdConfig = Errdisable::Config;
  AttributeMask const heard = mask(EdConfig::disabledAttr);
  auto const off = [](World& w) { w.sw.errdisableConfig->disabledIs(w.sw.causeName, true); };
  auto const on = [](World& w) { w.sw.errdisableConfig->disabledDel(w.sw.causeName); };
  all.push_back({"Errdisable::Config.disabled given", ethernet1, config, heard, true, nothing,
                 nothing, off, on});
  all.push_back({"Errdisable::Config.disabled changed", ethernet1, config, heard, true, off,
                 nothing,
                 [](World& w) { w.sw.errdisableConfig->disabledIs(w.sw.causeName, false); }, off});
  all.push_back(
      {"Errdisable::Config.disabled taken", ethernet1, config, heard, true, off, nothing, on, off});
  all.push_back({"Errdisable::Config.recoveryInterval", ethernet1, config, 0, false, nothing,
                 nothing, [](World& w) { w.sw.errdisableConfig->recoveryIntervalIs(7); },
                 [](World& w) { w.sw.errdisableConfig->recoveryIntervalIs(8); }});
  all.push_back({"Errdisable::Config.timerRecoveryEnabled", ethernet1, config, 0, true, nothing,
                 nothing,
                 [](World& w) { w.sw.errdisableConfig->timerRecoveryEnabledIs("x", true); },
                 [](World& w) { w.sw.errdisableConfig->timerRecoveryEnabledDel("x"); }});
  auto const record = [](World& w) { return subject(w.sw.causeStatus); };
  AttributeMask const records = mask(Errdisable::CauseStatus::intfStatusAttr);
  auto const write = [](World& w) {
    w.sw.causeStatus->intfStatusIs(ethernet9, 1);
    w.sw.causeStatus->intfStatusDel(ethernet9);
  };
  all.push_back({"CauseStatus.intfStatus written by the library", ethernet1, record, records, true,
                 nothing, [](World& w) { w.sw.flap(ethernet1, {1}); },
                 [](World& w) { w.sw.flap(ethernet1, {2}); }, write});
  all.push_back({"CauseStatus.intfStatus withdrawn by the library", ethernet1, record, records,
                 true, nothing,
                 [](World& w) {
                   w.sw.flap(ethernet1, {1, 2});
                 },
                 [](World& w) { w.sw.statusDir->intfStatusDel(ethernet1); }, write});
  all.push_back({"CauseStatus.intfStatus withdrawn by the host", ethernet1, record, records, true,
                 nothing,
                 [](World& w) {
                   w.sw.flap(ethernet1, {1, 2});
                 },
                 [](World& w) { w.sw.causeStatus->intfStatusDel(ethernet1); }, write});
}

void root(std::vector<Notification>& all) {
  auto const machine = [](World& w) {
    Subject watched = subject(w.sw.root);
    watched.object = nullptr;
    return watched;
  };
  auto const start = [](World& w) { w.sw.start(); };
  auto const remove = [](World& w) {
    if (w.sw.root) (void)w.sw.root->linkFlapSmDel();
  };
  all.push_back({"Root.linkFlapSm set", ethernet1, machine, 0, false, nothing, nothing, start,
                 remove, false, true});
  all.push_back({"Root.linkFlapSm replaced", ethernet1, machine, 0, false, start,
                 [](World& w) { w.sw.causeName = "replaced"; }, start, remove, false, true});
  all.push_back({"Root.linkFlapSm removed", ethernet1, machine, 0, false, start, nothing, remove,
                 [](World& w) {
                   if (w.sw.root) w.sw.start();
                 },
                 false, true});
}

template <typename O, typename V>
constexpr bool isWatchable(Vek::Derived<O, V> const& /*attribute*/) {
  return false;
}
template <typename Attribute>
constexpr bool isWatchable(Attribute const& /*attribute*/) {
  return true;
}

/// How many attributes of a type can be watched.
template <typename T>
constexpr std::size_t watchable() {
  return std::apply(
      [](auto const&... attribute) { return (std::size_t{isWatchable(attribute)} + ...); },
      T::vekAttributes);
}

}  // namespace

std::size_t watchedAttributes() {
  return watchable<LinkFlap::Config>() + watchable<IntfConfig>() + watchable<ProfileConfig>() +
         watchable<Interface::AllEthPhyIntfConfigDir>() +
         watchable<Interface::AllEthPhyIntfStatusDir>() + watchable<Interface::EthPhyIntfConfig>() +
         watchable<Interface::EthPhyIntfStatus>() + watchable<Errdisable::Config>() +
         watchable<Errdisable::CauseStatus>() + 1;  // the Root's machine
}

std::vector<Notification> allNotifications() {
  std::vector<Notification> all;
  configuration(all);
  settings(all);
  interfaces(all);
  errDisable(all);
  root(all);
  return all;
}
