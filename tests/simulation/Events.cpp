#include "tests/simulation/Run.h"

// The events that change configuration, directories and switches.

namespace Simulation {

namespace {

std::size_t at(int number) {
  return static_cast<std::size_t>(number);
}

}  // namespace

/// The event drawn would have reached an interface that is selected but has no machine, which ends
/// the process ("sm"), as it is documented to. Deliberate: it is not played. Half the time one such
/// interface leaves the status directories instead, so that later ones can be.
Run::Touched Run::steered(int intf) {
  ++tally_.avoided;
  if (random_.oneIn(2)) return {Touched::kNone};
  for (int i = 0, count = static_cast<int>(names_.interfaces.size()); i < count; ++i) {
    int const id = (intf + i) % count;
    for (Model::TopSm* const machine : {model_.installed(), model_.kept()}) {
      if (machine == nullptr || machine->intf(id) || !machine->statusDir->intfStatus.has(id))
        continue;
      auto& dir = machine->statusDir == &world_.statusDir[0].model ? world_.statusDir[0]
                                                                   : world_.statusDir[1];
      both(
          "status removed from a directory", [&] { dir.lib->intfStatusDel(world_.id(id)); },
          [&] { model_.statusDel(dir.model, id); });
      return {};
    }
  }
  return {Touched::kNone};
}

/// Global values, the default list, the set of profiles.
Run::Touched Run::configurationEvent() {
  auto& config = world_.config[variant()];
  int const id = name();
  switch (random_.below(8)) {
    case 0: {
      std::uint32_t const value = limit();
      both(
          "global maxFlaps", [&] { config.lib->maxFlapsIs(value); },
          [&] { model_.maxFlapsIs(config.model, value); });
      return {};
    }
    case 1: {
      double const value = intervalValue();
      both(
          "global interval", [&] { config.lib->intervalIs(value); },
          [&] { model_.intervalIs(config.model, value); });
      return {};
    }
    case 2:
    case 3: {
      if (Model::System::defaultListChangeEndsAll(config.model)) return steered(intf());
      bool const on = !random_.oneIn(4);
      both(
          "default list", [&] { config.lib->defaultProfileListIs(world_.profile(id), on); },
          [&] { model_.defaultListIs(config.model, id, on); });
      return {};
    }
    case 4:
    case 5:
      if (Model::System::defaultListChangeEndsAll(config.model)) return steered(intf());
      both(
          "default list, removal", [&] { config.lib->defaultProfileListDel(world_.profile(id)); },
          [&] { model_.defaultListDel(config.model, id); });
      return {};
    case 6: {
      if (Model::System::profileChangeEndsAll(config.model, id)) return steered(intf());
      // Now and then the configuration of another name.
      int const of = random_.oneIn(16) ? name() : id;
      auto& profile = world_.profiles[at(of)][random_.oneIn(4) ? 1 : 0];
      bool const none = random_.oneIn(32);
      both(
          "profile configured",
          [&] {
            config.lib->profileConfigIs(world_.profile(id),
                                        none ? Vek::Ptr<LinkFlap::ProfileConfig>{} : profile.lib);
          },
          [&] { model_.profileConfigIs(config.model, id, none ? nullptr : &profile.model); });
      return {};
    }
    default:
      if (Model::System::profileChangeEndsAll(config.model, id)) return steered(intf());
      if (!random_.oneIn(4)) return {Touched::kNone};
      both(
          "profile removed", [&] { config.lib->profileConfigDel(world_.profile(id)); },
          [&] { model_.profileConfigDel(config.model, id); });
      return {};
  }
}

/// An interface's own settings.
Run::Touched Run::interfaceEvent() {
  int const id = intf();
  auto& settings = world_.settings[at(id)][variant()];
  auto& config = world_.config[variant()];
  int const profile = name();
  switch (random_.below(8)) {
    case 0: {
      bool const on = !random_.oneIn(3);
      both(
          "enabled", [&] { settings.lib->enabledIs(on); },
          [&] { model_.enabledIs(settings.model, on); });
      return {};
    }
    case 1:
    case 2: {
      bool const on = !random_.oneIn(4);
      both(
          "own list", [&] { settings.lib->profileListIs(world_.profile(profile), on); },
          [&] { model_.ownListIs(settings.model, profile, on); });
      return {};
    }
    case 3:
    case 4:
      both(
          "own list, removal", [&] { settings.lib->profileListDel(world_.profile(profile)); },
          [&] { model_.ownListDel(settings.model, profile); });
      return {};
    case 5:
    case 6:
      both(
          "own settings", [&] { config.lib->intfConfigIs(world_.id(id), settings.lib); },
          [&] { model_.intfConfigIs(config.model, id, &settings.model); });
      return {};
    default:
      if (!random_.oneIn(2)) return {Touched::kNone};
      both(
          "own settings, removal", [&] { config.lib->intfConfigDel(world_.id(id)); },
          [&] { model_.intfConfigDel(config.model, id); });
      return {};
  }
}

/// A value of a profile.
Run::Touched Run::profileEvent() {
  using Value = Model::System::Value;
  auto& profile = world_.profiles[at(name())][random_.oneIn(4) ? 1 : 0];
  auto& lib = *profile.lib;
  auto& model = profile.model;
  switch (random_.below(4)) {
    case 0: {
      std::uint32_t const value = limit();
      both(
          "profile's maxFlaps", [&] { lib.maxFlapsIs(value); },
          [&] { model_.profileValueIs(model, Value::maxFlaps, value); });
      return {};
    }
    case 1: {
      std::uint32_t const value = violationsValue();
      both(
          "profile's violations", [&] { lib.violationsIs(value); },
          [&] { model_.profileValueIs(model, Value::violations, value); });
      return {};
    }
    case 2: {
      std::uint32_t const value = trackedValue();
      both(
          "profile's trackedIntervals", [&] { lib.trackedIntervalsIs(value); },
          [&] { model_.profileValueIs(model, Value::trackedIntervals, value); });
      return {};
    }
    default: {
      double const value = intervalValue();
      both(
          "profile's interval", [&] { lib.intervalIs(value); },
          [&] { model_.profileIntervalIs(model, value); });
      return {};
    }
  }
}

/// Interfaces come, go and are replaced; the cause is switched.
Run::Touched Run::directoryEvent() {
  int const id = intf();
  auto& configDir = world_.configDir[variant()];
  auto& statusDir = world_.statusDir[variant()];
  bool const empty = random_.oneIn(64);
  switch (random_.below(16)) {
    case 0:
    case 1:
    case 2:
    case 3: {
      auto& phyConfig = world_.phyConfig[at(id)][variant()];
      both(
          "physical configuration",
          [&] {
            configDir.lib->intfConfigIs(
                world_.id(id), empty ? Vek::Ptr<Interface::EthPhyIntfConfig>{} : phyConfig.lib);
          },
          [&] { model_.phyConfigIs(configDir.model, id, empty ? nullptr : &phyConfig.model); });
      return {};
    }
    case 4:
    case 5:
    case 6:
    case 7:
    case 8: {
      int const of = temper_.misplaced && random_.oneIn(32) ? intf() : id;
      auto& status = world_.status[at(of)][variant()];
      both(
          "status",
          [&] {
            statusDir.lib->intfStatusIs(
                world_.id(id), empty ? Vek::Ptr<Interface::EthPhyIntfStatus>{} : status.lib);
          },
          [&] { model_.statusIs(statusDir.model, id, empty ? nullptr : &status.model); });
      return {};
    }
    case 9:
      both(
          "physical configuration removed", [&] { configDir.lib->intfConfigDel(world_.id(id)); },
          [&] { model_.phyConfigDel(configDir.model, id); });
      return {};
    case 10:
      both(
          "status removed", [&] { statusDir.lib->intfStatusDel(world_.id(id)); },
          [&] { model_.statusDel(statusDir.model, id); });
      return {};
    case 11:
    case 12: {
      auto& config = world_.errdisable[variant()];
      int const cause = random_.oneIn(4) ? random_.index(kCauses) : 0;
      bool const on = random_.oneIn(2);
      both(
          "cause switch", [&] { config.lib->disabledIs(world_.cause(cause), on); },
          [&] { model_.disabledIs(config.model, cause, on); });
      return {};
    }
    default: {
      auto& config = world_.errdisable[variant()];
      int const cause = random_.oneIn(4) ? random_.index(kCauses) : 0;
      both(
          "cause switch removed", [&] { config.lib->disabledDel(world_.cause(cause)); },
          [&] { model_.disabledDel(config.model, cause); });
      return {};
    }
  }
}

/// What the host does with the Root.
Run::Touched Run::hostEvent() {
  bool const keep = random_.oneIn(8);
  std::uint32_t const kind = random_.below(32);
  if (kind == 0) {
    both(
        "machine removed", [&] { world_.uninstall(keep); }, [&] { model_.uninstall(keep); });
  } else if (kind == 1) {
    both(
        "new Root", [&] { world_.newRoot(); }, [&] { model_.newRoot(); });
  } else if (kind < 4 || (kind < 16 && model_.kept() != nullptr)) {
    both(
        "kept machine dropped", [&] { world_.dropKept(); }, [&] { model_.dropKept(); });
  } else if (kind < 8 || model_.installed() == nullptr) {
    auto const rare = [&] { return random_.oneIn(8) ? 1 : 0; };
    World::Choice const choice{rare(), rare(), rare(), rare(), rare(), rare(), rare()};
    both(
        "machine installed", [&] { world_.install(choice, keep); },
        [&] { model_.install(world_.inputs(choice), keep); });
  } else {
    // An operator, or a timer that recovers the interface.
    auto& record = world_.causeStatus[variant()];
    int const id = intf();
    std::optional<double> const time =
        random_.oneIn(4) ? std::optional<double>{clock_} : std::nullopt;
    both(
        "record written by others",
        [&] {
          if (time) {
            record.lib->intfStatusIs(world_.id(id), *time);
          } else {
            record.lib->intfStatusDel(world_.id(id));
          }
        },
        [&] { model_.record(record.model, id, time); });
  }
  return {};
}

}  // namespace Simulation
