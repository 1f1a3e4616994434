#include "tests/reliability/FaultEvents.h"

#include <utility>

#include "runtime/vek/Activity.h"

namespace {

using World = FaultWorld;
using Random = std::mt19937;

unsigned below(Random& random, unsigned limit) {
  return static_cast<unsigned>(random() % limit);
}

bool coin(Random& random) {
  return below(random, 2) == 0;
}

/// Whether an interface has a status but no machine: a selection for it would end the process.
bool gap(World const& world) {
  for (auto const& status : world.statusDir->intfStatus())
    if (!world.intfSm(status.key())) return true;
  return false;
}

void admitAgain(World& world, Tarn::IntfId const& id) {
  if (world.root->linkFlapSm()) world.machine().handleIntf(id);
}

FaultEvent flap(World& world, Random& random, Tarn::IntfId const& id) {
  static constexpr double kPauses[]{0.1, 0.4, 0.9, 1.5, 2.5, 4, 9, 25};
  world.clock.secondsIs(world.clock.seconds() + kPauses[below(random, 8)]);
  world.status(id)->rawLinkStatusIs(Interface::RawLinkStatus::down);
  return {"flap of " + std::string{id.name().view()},
          [status = world.status(id)](World&) {
            status->rawLinkStatusIs(Interface::RawLinkStatus::up);
          },
          nullptr, id};
}

FaultEvent settingsChange(World& world, Random& random, Tarn::IntfId const& id) {
  auto const held = world.settings(id);
  auto const again = [id](World& w) { admitAgain(w, id); };
  unsigned const kind = below(random, 5);
  if (!held || kind == 0) {
    auto settings = Vek::make<LinkFlap::IntfConfig>(Vek::Name{id.name()});
    settings->enabledIs(below(random, 4) != 0);
    for (Vek::String const& name : world.profileNames)
      if (below(random, 3) == 0) settings->profileListIs(name, below(random, 4) != 0);
    return {"settings given", [id, settings](World& w) { w.config->intfConfigIs(id, settings); },
            again};
  }
  if (kind == 1) return {"settings taken", [id](World& w) { w.config->intfConfigDel(id); }, again};
  if (kind == 2)
    return {"settings switched", [held, on = !held->enabled()](World&) { held->enabledIs(on); },
            [id](World& w) {
              if (auto const sm = w.intfSm(id)) sm->vek_handleIntfConfig_enabled();
            }};
  Vek::String const name = world.profileNames[below(random, 3)];
  auto const selectAgain = [id, name](World& w) {
    if (auto const sm = w.intfSm(id)) sm->handleProfileList(name);
  };
  if (held->profileList().has(name) && coin(random))
    return {"profile unlisted", [held, name](World&) { held->profileListDel(name); }, selectAgain};
  return {"profile listed",
          [held, name, on = below(random, 4) != 0](World&) { held->profileListIs(name, on); },
          selectAgain};
}

FaultEvent profileChange(World& world, Random& random) {
  Vek::String const name = world.profileNames[below(random, 2)];
  auto const again = [name](World& w) {
    if (w.root->linkFlapSm()) w.machine().handleProfileConfig(name);
  };
  auto const held = world.config->profileConfig(name);
  if (held && coin(random))
    return {"profile removed", [name](World& w) { w.config->profileConfigDel(name); }, again};
  auto profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{name});
  profile->maxFlapsIs(1 + below(random, 2));
  profile->intervalIs(2 + below(random, 10));
  profile->violationsIs(1 + below(random, 2));
  profile->trackedIntervalsIs(1 + below(random, 4));
  return {"profile configured",
          [name, profile](World& w) { w.config->profileConfigIs(name, profile); }, again};
}

FaultEvent defaultListChange(World& world, Random& random) {
  Vek::String const name = world.profileNames[below(random, 3)];
  auto const again = [name](World& w) {
    if (w.root->linkFlapSm()) w.machine().handleDefaultProfileList(name);
  };
  if (world.config->defaultProfileList().has(name))
    return {"default unlisted", [name](World& w) { w.config->defaultProfileListDel(name); }, again};
  return {
      "default listed",
      [name, on = below(random, 4) != 0](World& w) { w.config->defaultProfileListIs(name, on); },
      again};
}

FaultEvent valueChange(World& world, Random& random) {
  if (coin(random))
    return {"global value changed",
            [flaps = 1 + below(random, 3)](World& w) { w.config->maxFlapsIs(flaps); }, nullptr};
  auto const held = world.config->profileConfig("p1");
  if (!held)
    return {"global value changed",
            [seconds = 5 + below(random, 9)](World& w) { w.config->intervalIs(seconds); }, nullptr};
  auto profile =
      Vek::Ptr<LinkFlap::ProfileConfig>{const_cast<LinkFlap::ProfileConfig*>(held.get())};
  return {"profile value changed",
          [profile, flaps = 1 + below(random, 3)](World&) { profile->maxFlapsIs(flaps); }, nullptr};
}

FaultEvent directoryChange(World& world, Random& random, Tarn::IntfId const& id) {
  auto const again = [id](World& w) { admitAgain(w, id); };
  if (!world.statusDir->intfStatus(id)) {
    auto status = Vek::make<Interface::EthPhyIntfStatus>(id);
    return {"status given", [id, status](World& w) { w.statusDir->intfStatusIs(id, status); },
            again};
  }
  if (!world.configDir->intfConfig(id)) {
    auto object = Vek::make<Interface::EthPhyIntfConfig>(id);
    return {"configuration given",
            [id, object](World& w) { w.configDir->intfConfigIs(id, object); }, again};
  }
  if (coin(random))
    return {"status taken", [id](World& w) { w.statusDir->intfStatusDel(id); }, again};
  return {"configuration taken", [id](World& w) { w.configDir->intfConfigDel(id); }, again};
}

FaultEvent causeSwitch(World& world) {
  bool const off = !world.errdisableConfig->disabled(world.causeName);
  return {off ? "cause switched off" : "cause switched on",
          [off](World& w) { w.errdisableConfig->disabledIs(w.causeName, off); },
          [](World& w) {
            if (w.root->linkFlapSm()) w.machine().handleDisabled(w.causeName);
          }};
}

FaultEvent installation(World& world, Random& random) {
  if (!world.root->linkFlapSm())
    return {"machine installed", [](World& w) { w.install(w.activity); }, nullptr};
  switch (below(random, 3)) {
    case 0:
      return {
          "machine removed", [](World& w) { (void)w.root->linkFlapSmDel(); }, nullptr, {}, true};
    case 1:
      return {"another activity",
              [activity = Vek::make<Vek::ActivityConfig>()](World& w) { w.install(activity); },
              nullptr,
              {},
              true};
    default: {
      auto other = Vek::make<Errdisable::CauseStatus>();
      return {"machine replaced",
              [other](World& w) {
                (void)w.root->linkFlapSmIs(w.activity, w.configDir, w.statusDir, w.errdisableConfig,
                                           w.config, other, w.causeName);
              },
              nullptr,
              {},
              true};
    }
  }
}

/// What a host may do to the machines themselves, and to the record.
FaultEvent byHand(World& world, Random& random, Tarn::IntfId const& id) {
  auto const sm = world.intfSm(id);
  if (!sm || sm->linkFlapProfileSm().members() == 0) return causeSwitch(world);
  Vek::String const name = sm->linkFlapProfileSm().iterator()->profileName();
  switch (below(random, 5)) {
    case 0:
      return {"settings re-pointed",
              [id, object = Vek::make<LinkFlap::IntfConfig>()](World& w) {
                w.intfSm(id)->intfConfigIs(object);
              },
              nullptr,
              {},
              true};
    case 1:
      return {"configuration re-pointed",
              [id, object = Vek::make<LinkFlap::Config>()](World& w) {
                w.intfSm(id)->configIs(object);
              },
              nullptr,
              {},
              true};
    case 2:
      return {"profile re-pointed",
              [id, name, object = Vek::make<LinkFlap::ProfileConfig>("p1")](World& w) {
                w.intfSm(id)->linkFlapProfileSm(name)->profileConfigIs(object);
              },
              nullptr,
              {},
              true};
    case 3:
      return {"flap time written by hand",
              [id, name](World& w) {
                w.intfSm(id)->linkFlapProfileSm(name)->linkFlapTimeStampEnq(w.clock.seconds());
              },
              nullptr,
              {},
              true};
    default:
      return {"record written by hand",
              [id](World& w) { w.causeStatus->intfStatusIs(id, w.clock.seconds()); }, nullptr};
  }
}

}  // namespace

FaultEvent nextEvent(World& world, Random& random) {
  Tarn::IntfId const id = world.interfaces[below(random, 4)];
  if (!world.root->linkFlapSm()) return installation(world, random);
  // An interface that lost its status or configuration gets it back soon.
  if (gap(world) && coin(random)) {
    for (Tarn::IntfId const& each : world.interfaces)
      if (!world.configDir->intfConfig(each)) return directoryChange(world, random, each);
    if (world.errdisableConfig->disabled(world.causeName)) return causeSwitch(world);
  }
  switch (below(random, 40)) {
    case 0:
    case 1:
      return settingsChange(world, random, id);
    case 2:
      if (!gap(world)) return profileChange(world, random);
      break;
    case 3:
      if (!gap(world)) return defaultListChange(world, random);
      break;
    case 4:
      return valueChange(world, random);
    case 5:
      return directoryChange(world, random, id);
    case 6:
      if (coin(random)) return causeSwitch(world);
      break;
    case 7:
      if (coin(random)) return installation(world, random);
      break;
    case 8:
      return byHand(world, random, id);
    case 9:
      return {"record withdrawn by the host", [id](World& w) { w.causeStatus->intfStatusDel(id); },
              nullptr};
    default:
      break;
  }
  if (!world.status(id)) return directoryChange(world, random, id);
  return flap(world, random, id);
}
