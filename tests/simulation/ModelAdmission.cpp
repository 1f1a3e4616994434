#include "tests/simulation/Model.h"

// The model's top-level machine and Root: admission, fan-out, installation.

namespace Simulation::Model {

void TopSm::activeIs(bool on) {
  if (active == on) return;
  active = on;
  configDirReactor.activeIs(on);
  statusDirReactor.activeIs(on);
  errdisableReactor.activeIs(on);
  configReactor.activeIs(on);
  for (auto& sm : intfs)
    if (sm) sm->activeIs(on);
}

void TopSm::markedIs(bool on) {
  if (marked == on) return;
  configDirReactor.zombieIs(on);
  statusDirReactor.zombieIs(on);
  errdisableReactor.zombieIs(on);
  configReactor.zombieIs(on);
  marked = on;
}

std::unique_ptr<TopSm> System::newTopSm(Inputs const& inputs) {
  auto made = std::make_unique<TopSm>();
  made->serial = nextSerial_++;
  made->configDir = inputs.configDir;
  made->statusDir = inputs.statusDir;
  made->errdisable = inputs.errdisable;
  made->config = inputs.config;
  made->configDirReactor.bind(*made, inputs.configDir->watchers);
  made->statusDirReactor.bind(*made, inputs.statusDir->watchers);
  made->errdisableReactor.bind(*made, inputs.errdisable->watchers);
  made->configReactor.bind(*made, inputs.config->watchers);
  made->cause = inputs.cause;
  made->causeName = inputs.causeName;
  trace(8, 459, "handleInitialized", [] { return std::string{"LinkFlapSm::handleInitialized()"}; });
  for (int intf = 0; intf < kMaxInterfaces; ++intf)
    if (inputs.statusDir->intfStatus.has(intf)) handleIntf(*made, intf);
  made->activeIs(true);
  return made;
}

Inputs System::inputsOf(TopSm const& sm) {
  return {sm.configDir, sm.statusDir, sm.errdisable, sm.config, sm.cause, sm.causeName};
}

void System::install(Inputs const& inputs, bool keep) {
  ++rootChanges_;
  if (installed_ && inputsOf(*installed_) == inputs) {
    if (planted(Plant::rootToldAgain)) ++outcome.rootTold;
    return;
  }
  std::unique_ptr<TopSm> made;
  try {
    made = newTopSm(inputs);
  } catch (Raised const& raised) {
    outcome.thrown = raised.what();
    return;
  }
  installed_.swap(made);
  ++outcome.rootTold;
  if (keep && made) kept_ = std::move(made);
}

void System::uninstall(bool keep) {
  if (!installed_) return;
  ++rootChanges_;
  ++outcome.rootTold;
  auto removed = std::move(installed_);
  if (keep) kept_ = std::move(removed);
}

void System::newRoot() {
  uninstall(false);
  rootChanges_ = 0;
}

void System::handleIntf(TopSm& sm, int intf) {
  trace(8, 401, "handleIntf", [&] { return "LinkFlapSm::handleIntf(" + interface(intf) + ")"; });
  IntfConfig* const settings = sm.config->intfConfig.get(intf);
  PhyConfig* const phyConfig = sm.configDir->intfConfig.get(intf);
  Status* const status = sm.statusDir->intfStatus.get(intf);
  bool const governed = settings == nullptr || planted(Plant::causeGovernsAll);
  if (phyConfig == nullptr || status == nullptr ||
      (governed && sm.errdisable->disabled.on(sm.causeName))) {
    deleteIntfSm(sm, intf);
    record(*sm.cause, intf, std::nullopt);
    return;
  }
  bool const had = sm.intf(intf) != nullptr;
  if (had && sm.intf(intf)->intfConfig != settings) {
    deleteIntfSm(sm, intf);
    record(*sm.cause, intf, std::nullopt);
  }
  IntfSm& machine = intfSmIs(sm, status, settings, phyConfig);
  if (!(had && planted(Plant::enabledWhenNew)))
    machine.enable = settings == nullptr || settings->enabled;
  manageProfileSm(machine);
}

IntfSm& System::intfSmIs(TopSm& sm, Status* status, IntfConfig* settings, PhyConfig* phyConfig) {
  auto& place = sm.intf(status->intf);
  if (!place) {
    auto made = newIntfSm(sm, status, settings, phyConfig);
    made->member = true;
    place = std::move(made);
    return *place;
  }
  static Peer const none{nullptr, "0x0"};
  auto const same = [](char const* parameter, Peer const* given, Peer const* current) {
    if (given == current) return;
    throw Raised{std::string{"Reinstantiating the pointer interface where constructor parameter "
                             "attribute "} +
                 parameter + " has a different value of " +
                 (given != nullptr ? given : &none)->address + " than the current value of " +
                 (current != nullptr ? current : &none)->address + " not allowed"};
  };
  same("_ethPhyIntfStatus", status, place->status);
  same("_config", sm.config, place->config);
  same("_intfConfig", settings, place->intfConfig);
  same("_ethPhyIntfConfig", phyConfig, place->phyConfig);
  same("_causeStatus", sm.cause, place->cause);
  return *place;
}

void System::deleteIntfSm(TopSm& sm, int intf) {
  trace(8, 387, "deleteLinkFlapIntfSm",
        [&] { return "deleteLinkFlapIntfSm(" + interface(intf) + ")"; });
  sm.intf(intf).reset();
}

namespace {

/// Whether a change of the profile is a reason to select anew; `isDefault`: it is a default profile.
bool usesProfile(IntfConfig const* settings, int name, bool isDefault) {
  if (settings == nullptr) return isDefault;
  if (settings->profileList.on(name)) return true;
  return isDefault && settings->profileList.size == 0;
}

bool followsDefaults(IntfConfig const* settings) {
  return settings == nullptr || settings->profileList.size == 0;
}

}  // namespace

void System::handleProfileConfig(TopSm& sm, int name) {
  trace(8, 343, "handleProfileConfig",
        [&] { return "LinkFlapSm::handleProfileConfig(" + profile(name) + ")"; });
  bool const isDefault = sm.config->defaultProfileList.on(name);
  for (int intf = 0; intf < kMaxInterfaces; ++intf)
    if (sm.statusDir->intfStatus.has(intf) &&
        usesProfile(sm.config->intfConfig.get(intf), name, isDefault))
      manageProfileSm(*sm.intf(intf));
}

void System::handleDefaultProfileList(TopSm& sm, int name) {
  trace(8, 371, "handleDefaultProfileList",
        [&] { return "LinkFlapSm::handleDefaultProfileList(" + profile(name) + ")"; });
  for (int intf = 0; intf < kMaxInterfaces; ++intf)
    if (sm.statusDir->intfStatus.has(intf) && followsDefaults(sm.config->intfConfig.get(intf)))
      manageProfileSm(*sm.intf(intf));
}

void System::handleDisabled(TopSm& sm, int cause) {
  trace(8, 444, "handleDisabled", [&] {
    return "LinkFlapSm::handleDisabled(" + names_.causes[static_cast<std::size_t>(cause)] + ")";
  });
  if (cause != sm.causeName) return;
  for (int intf = 0; intf < kMaxInterfaces; ++intf)
    if (sm.statusDir->intfStatus.has(intf) && sm.config->intfConfig.get(intf) == nullptr)
      handleIntf(sm, intf);
}

bool System::profileChangeEndsAll(TopSm& sm, int name) {
  bool const isDefault = sm.config->defaultProfileList.on(name);
  for (int intf = 0; intf < kMaxInterfaces; ++intf)
    if (sm.statusDir->intfStatus.has(intf) && !sm.intf(intf) &&
        usesProfile(sm.config->intfConfig.get(intf), name, isDefault))
      return true;
  return false;
}

bool System::defaultListChangeEndsAll(TopSm& sm) {
  for (int intf = 0; intf < kMaxInterfaces; ++intf)
    if (sm.statusDir->intfStatus.has(intf) && !sm.intf(intf) &&
        followsDefaults(sm.config->intfConfig.get(intf)))
      return true;
  return false;
}

bool System::profileChangeEndsAll(Config const& config, int name) {
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts() && profileChangeEndsAll(*sm, name)) return true;
  return false;
}

bool System::defaultListChangeEndsAll(Config const& config) {
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts() && defaultListChangeEndsAll(*sm)) return true;
  return false;
}

// Changes of the inputs: who watches is told.

void System::intfConfigIs(Config& config, int intf, IntfConfig* settings) {
  if (!config.intfConfig.put(intf, settings)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts()) guarded("intfConfig", [&] { handleIntf(*sm, intf); });
}

void System::intfConfigDel(Config& config, int intf) {
  if (!config.intfConfig.del(intf)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts()) guarded("intfConfig", [&] { handleIntf(*sm, intf); });
}

void System::profileConfigIs(Config& config, int name, ProfileConfig* profileConfig) {
  if (!config.profileConfig.put(name, profileConfig)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts()) handleProfileConfig(*sm, name);
}

void System::profileConfigDel(Config& config, int name) {
  if (!config.profileConfig.del(name)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts()) handleProfileConfig(*sm, name);
}

void System::defaultListIs(Config& config, int name, bool on) {
  if (!config.defaultProfileList.put(name, on)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts()) handleDefaultProfileList(*sm, name);
}

void System::defaultListDel(Config& config, int name) {
  if (!config.defaultProfileList.del(name)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->configReactor.acts()) handleDefaultProfileList(*sm, name);
}

void System::phyConfigIs(ConfigDir& dir, int intf, PhyConfig* phyConfig) {
  if (!dir.intfConfig.put(intf, phyConfig)) return;
  for (TopSm* const sm : dir.watchers)
    if (sm->configDirReactor.acts()) guarded("intfConfig", [&] { handleIntf(*sm, intf); });
}

void System::phyConfigDel(ConfigDir& dir, int intf) {
  if (!dir.intfConfig.del(intf)) return;
  for (TopSm* const sm : dir.watchers)
    if (sm->configDirReactor.acts()) guarded("intfConfig", [&] { handleIntf(*sm, intf); });
}

void System::statusIs(StatusDir& dir, int intf, Status* status) {
  if (!dir.intfStatus.put(intf, status)) return;
  for (TopSm* const sm : dir.watchers)
    if (sm->statusDirReactor.acts()) guarded("intfStatus", [&] { handleIntf(*sm, intf); });
}

void System::statusDel(StatusDir& dir, int intf) {
  if (!dir.intfStatus.del(intf)) return;
  for (TopSm* const sm : dir.watchers)
    if (sm->statusDirReactor.acts()) guarded("intfStatus", [&] { handleIntf(*sm, intf); });
}

void System::disabledIs(ErrdisableConfig& config, int cause, bool on) {
  if (!config.disabled.put(cause, on)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->errdisableReactor.acts()) guarded("disabled", [&] { handleDisabled(*sm, cause); });
}

void System::disabledDel(ErrdisableConfig& config, int cause) {
  if (!config.disabled.del(cause)) return;
  for (TopSm* const sm : config.watchers)
    if (sm->errdisableReactor.acts()) guarded("disabled", [&] { handleDisabled(*sm, cause); });
}

}  // namespace Simulation::Model
