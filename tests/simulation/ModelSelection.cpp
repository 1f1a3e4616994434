#include "tests/simulation/Model.h"
#include "tests/simulation/Text.h"

// The model's interface machines: life, settings, which profiles apply.

namespace Simulation::Model {

void IntfSm::activeIs(bool on) {
  if (active == on) return;
  active = on;
  globalValues.activeIs(on);
  settings.activeIs(on);
  for (auto& sm : profiles)
    if (sm) sm->activeIs(on);
}

void IntfSm::markedIs(bool on) {
  if (marked == on) return;
  globalValues.zombieIs(on);
  settings.zombieIs(on);
  marked = on;
}

std::string System::textOf(IntfSm const& sm) const {
  return "LinkFlapIntfSm( " + interface(sm.status->intf) + " )";
}

std::string System::textOf(ProfileSm const& sm) const {
  if (!sm.owner->member) return "@new";
  return "@" + std::to_string(sm.owner->owner->serial) + "/" + interface(sm.status->intf) + "/" +
         profile(sm.name);
}

std::unique_ptr<IntfSm> System::newIntfSm(TopSm& sm, Status* status, IntfConfig* settings,
                                          PhyConfig* phyConfig) {
  auto made = std::make_unique<IntfSm>();
  made->owner = &sm;
  made->status = status;
  made->config = sm.config;
  made->globalValues.bind(*made, sm.config->valueWatchers);
  made->intfConfig = settings;
  if (settings != nullptr) made->settings.bind(*made, settings->watchers);
  made->phyConfig = phyConfig;
  made->cause = sm.cause;
  made->enable = settings != nullptr && settings->enabled;
  trace(8, 299, "handleInitialized", [&] { return textOf(*made) + "::handleInitialized()"; });
  if (settings != nullptr)
    for (int name = 0; name < kProfiles; ++name)
      if (settings->profileList.has(name)) handleProfileList(*made, name);
  made->activeIs(true);
  return made;
}

void System::handleProfileList(IntfSm& sm, int name) {
  trace(8, 312, "handleProfileList",
        [&] { return textOf(sm) + "::handleProfileList(" + profile(name) + ")"; });
  manageProfileSm(sm);
}

void System::handleIntfConfigEnabled(IntfSm& sm) {
  trace(8, 321, "handleIntfConfigEnabled", [&] {
    return textOf(sm) + "::handleIntfConfigEnabled(" + interface(sm.status->intf) + ")";
  });
  sm.enable = sm.intfConfig->enabled;
  manageProfileSm(sm);
}

void System::handleLinkFlapValues(IntfSm& sm) {
  trace(8, 283, "handleLinkFlapValues", [&] { return textOf(sm) + "::handleLinkFlapValues()"; });
  if (planted(Plant::everyMachineReset)) {
    for (auto& machine : sm.profiles)
      if (machine && machine->profileConfig == nullptr) machine->forget();
    return;
  }
  if (auto& machine = sm.profile(names_.defaultProfile)) machine->forget();
}

void System::manageProfileSm(IntfSm& sm) {
  trace(8, 208, "manageProfileSm", [&] { return "manageProfileSm(" + textOf(sm) + ")"; });
  if (!sm.enable) {
    for (auto& machine : sm.profiles)
      machine.reset();
    if (!planted(Plant::switchedOffKeepsRecord)) record(*sm.cause, sm.status->intf, std::nullopt);
    return;
  }
  auto const& defaults = sm.config->defaultProfileList;
  bool own = sm.intfConfig != nullptr && sm.intfConfig->profileList.size > 0;
  if (own && planted(Plant::emptyByValue)) {
    own = false;
    for (int name = 0; name < kProfiles; ++name)
      own = own || sm.intfConfig->profileList.on(name);
  }
  int const builtIn = names_.defaultProfile;
  if (defaults.size > 0 || own) sm.profile(builtIn).reset();
  if (own) return select(sm, sm.intfConfig->profileList);
  if (defaults.size > 0) return select(sm, defaults);
  if (sm.profile(builtIn)) return;
  for (auto& machine : sm.profiles)
    machine.reset();
  newProfileSm(sm, builtIn, nullptr);
}

void System::select(IntfSm& sm, Switches<kProfiles> const& list) {
  for (int name = 0; name < kProfiles; ++name) {
    bool const kept = planted(Plant::falseMemberKept) ? list.has(name) : list.on(name);
    if (!kept) sm.profile(name).reset();
  }
  for (int name = 0; name < kProfiles; ++name)
    if (list.has(name) && !sm.profile(name))
      newProfileSm(sm, name, sm.config->profileConfig.get(name));
}

void System::configIs(IntfSm& sm, Config& config) {
  if (sm.config == &config) return;
  sm.config = &config;
  sm.globalValues.bind(sm, config.valueWatchers);
  if (sm.globalValues.acts()) handleLinkFlapValues(sm);
}

void System::intfConfigIs(IntfSm& sm, IntfConfig* settings) {
  if (sm.intfConfig == settings) return;
  bool const had = std::exchange(sm.intfConfig, settings) != nullptr;
  if (settings == nullptr) return sm.settings.release();
  sm.settings.bind(sm, settings->watchers);
  if (had && sm.settings.acts()) handleIntfConfigEnabled(sm);
}

void System::enabledIs(IntfConfig& settings, bool on) {
  if (std::exchange(settings.enabled, on) == on) return;
  for (IntfSm* const sm : settings.watchers)
    if (sm->settings.acts()) handleIntfConfigEnabled(*sm);
}

void System::ownListIs(IntfConfig& settings, int name, bool on) {
  if (!settings.profileList.put(name, on)) return;
  for (IntfSm* const sm : settings.watchers)
    if (sm->settings.acts()) handleProfileList(*sm, name);
}

void System::ownListDel(IntfConfig& settings, int name) {
  if (!settings.profileList.del(name)) return;
  for (IntfSm* const sm : settings.watchers)
    if (sm->settings.acts()) handleProfileList(*sm, name);
}

void System::maxFlapsIs(Config& config, std::uint32_t value) {
  if (std::exchange(config.maxFlaps, value) == value) return;
  for (IntfSm* const sm : config.valueWatchers)
    if (sm->globalValues.acts()) handleLinkFlapValues(*sm);
}

void System::intervalIs(Config& config, double seconds) {
  if (sameNumber(config.interval, seconds)) return;
  config.interval = seconds;
  for (IntfSm* const sm : config.valueWatchers)
    if (sm->globalValues.acts()) handleLinkFlapValues(*sm);
}

}  // namespace Simulation::Model
