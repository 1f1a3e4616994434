#include "tests/simulation/Run.h"

// The events that go to a machine itself: notification on and off, handlers called by name, members
// removed, values written. Tools can do all of it.

namespace Simulation {

Run::Touched Run::switchEvent() {
  auto* const library = world_.installed();
  auto* const model = model_.installed();
  if (library == nullptr || model == nullptr) return {Touched::kNone};
  // On three times as often as off, so that most machines hear most of the time.
  bool const on = !random_.oneIn(4);
  bool const zombie = random_.oneIn(4);
  std::uint32_t const which = random_.below(8);
  if (which == 0) {
    both(
        zombie ? "machine marked" : "machine's notification",
        [&] { zombie ? library->vekDoZombieReactors(!on) : library->hasNotificationActiveIs(on); },
        [&] { zombie ? model->markedIs(!on) : model->activeIs(on); });
    return {};
  }
  int const id = intf();
  auto* const intfSm = library->linkFlapIntfSm().find(world_.id(id));
  auto* const intfModel = model->intf(id).get();
  if (intfSm == nullptr || intfModel == nullptr) return {Touched::kNone};
  if (which < 4) {
    both(
        zombie ? "interface machine marked" : "interface machine's notification",
        [&] { zombie ? intfSm->vekDoZombieReactors(!on) : intfSm->hasNotificationActiveIs(on); },
        [&] { zombie ? intfModel->markedIs(!on) : intfModel->activeIs(on); });
    return {id};
  }
  int const profile = name();
  auto* const sm = intfSm->linkFlapProfileSm().find(world_.profile(profile));
  auto* const smModel = intfModel->profile(profile).get();
  if (sm == nullptr || smModel == nullptr) return {Touched::kNone};
  both(
      zombie ? "profile machine marked" : "profile machine's notification",
      [&] { zombie ? sm->vekDoZombieReactors(!on) : sm->hasNotificationActiveIs(on); },
      [&] { zombie ? smModel->markedIs(!on) : smModel->activeIs(on); });
  return {id};
}

Run::Touched Run::callEvent() {
  bool const kept = model_.kept() != nullptr && random_.oneIn(4);
  auto* const library = kept ? world_.kept() : world_.installed();
  auto* const model = kept ? model_.kept() : model_.installed();
  if (library == nullptr || model == nullptr) return {Touched::kNone};
  return random_.oneIn(4) ? callTop(*library, *model) : callIntf(*library, *model);
}

Run::Touched Run::callTop(LinkFlap::LinkFlapSm& library, Model::TopSm& model) {
  int const id = intf();
  int const profile = name();
  int const cause = random_.index(kCauses);
  switch (random_.below(16)) {
    case 0:
      if (Model::System::profileChangeEndsAll(model, profile)) return steered(id);
      both(
          "handleProfileConfig", [&] { library.handleProfileConfig(world_.profile(profile)); },
          [&] { model_.handleProfileConfig(model, profile); });
      return {};
    case 1:
      if (Model::System::defaultListChangeEndsAll(model)) return steered(id);
      both(
          "handleDefaultProfileList",
          [&] { library.handleDefaultProfileList(world_.profile(profile)); },
          [&] { model_.handleDefaultProfileList(model, profile); });
      return {};
    case 2:
      both(
          "handleDisabled", [&] { library.handleDisabled(world_.cause(cause)); },
          [&] { model_.handleDisabled(model, cause); });
      return {};
    case 3:
      both(
          "deleteLinkFlapIntfSm",
          [&] {
            LinkFlap::deleteLinkFlapIntfSm(LinkFlap::LinkFlapSm::Ptr{&library}, world_.id(id));
          },
          [&] { model_.deleteIntfSm(model, id); });
      return {};
    case 4:
      both(
          "linkFlapIntfSmDel", [&] { (void)library.linkFlapIntfSmDel(world_.id(id)); },
          [&] { model.intf(id).reset(); });
      return {};
    case 5:
      return replaceInput(library, model);
    default:
      both(
          "handleIntf", [&] { library.handleIntf(world_.id(id)); },
          [&] { model_.handleIntf(model, id); });
      return {};
  }
}

/// Another object in place of one the machine was made from; no handler runs.
Run::Touched Run::replaceInput(LinkFlap::LinkFlapSm& library, Model::TopSm& model) {
  // Mostly back to the first one, so that few machines run on different objects.
  std::size_t const v = random_.oneIn(4) ? 1 : 0;
  switch (random_.below(4)) {
    case 0:
      both(
          "machine's configuration directory",
          [&] { library.ethPhyIntfConfigDirIs(world_.configDir[v].lib); },
          [&] {
            auto& object = world_.configDir[v].model;
            if (model.configDir == &object) return;
            model.configDir = &object;
            model.configDirReactor.bind(model, object.watchers);
          });
      return {};
    case 1:
      both(
          "machine's status directory",
          [&] { library.ethPhyIntfStatusDirIs(world_.statusDir[v].lib); },
          [&] {
            auto& object = world_.statusDir[v].model;
            if (model.statusDir == &object) return;
            model.statusDir = &object;
            model.statusDirReactor.bind(model, object.watchers);
          });
      return {};
    case 2:
      both(
          "machine's err-disable configuration",
          [&] { library.errdisableConfigIs(world_.errdisable[v].lib); },
          [&] {
            auto& object = world_.errdisable[v].model;
            if (model.errdisable == &object) return;
            model.errdisable = &object;
            model.errdisableReactor.bind(model, object.watchers);
          });
      return {};
    default:
      both(
          "machine's configuration", [&] { library.configIs(world_.config[v].lib); },
          [&] {
            auto& object = world_.config[v].model;
            if (model.config == &object) return;
            model.config = &object;
            model.configReactor.bind(model, object.watchers);
          });
      return {};
  }
}

Run::Touched Run::callIntf(LinkFlap::LinkFlapSm& library, Model::TopSm& model) {
  int const id = intf();
  auto* const sm = library.linkFlapIntfSm().find(world_.id(id));
  auto* const smModel = model.intf(id).get();
  if (sm == nullptr || smModel == nullptr) return {Touched::kNone};
  int const profile = name();
  switch (random_.below(16)) {
    case 0:
      both(
          "handleLinkFlapValues", [&] { sm->handleLinkFlapValues(); },
          [&] { model_.handleLinkFlapValues(*smModel); });
      return {id};
    case 1:
      both(
          "handleProfileList", [&] { sm->handleProfileList(world_.profile(profile)); },
          [&] { model_.handleProfileList(*smModel, profile); });
      return {id};
    case 2:
      both(
          "manageProfileSm", [&] { LinkFlap::manageProfileSm(LinkFlap::LinkFlapIntfSm::Ptr{sm}); },
          [&] { model_.manageProfileSm(*smModel); });
      return {id};
    case 3: {
      // A write that runs no selection.
      bool const on = !random_.oneIn(3);
      both(
          "enableIs", [&] { sm->enableIs(on); }, [&] { smModel->enable = on; });
      return {id};
    }
    case 4:
      both(
          "linkFlapProfileSmDel", [&] { (void)sm->linkFlapProfileSmDel(world_.profile(profile)); },
          [&] { smModel->profile(profile).reset(); });
      return {id};
    case 5: {
      auto& object = world_.config[random_.oneIn(4) ? 1 : 0];
      both(
          "interface machine's config", [&] { sm->configIs(object.lib); },
          [&] { model_.configIs(*smModel, object.model); });
      return {id};
    }
    case 6: {
      auto& object = world_.settings[static_cast<std::size_t>(id)][variant()];
      bool const none = random_.oneIn(4);
      both(
          "interface machine's settings",
          [&] { sm->intfConfigIs(none ? Vek::Ptr<LinkFlap::IntfConfig>{} : object.lib); },
          [&] { model_.intfConfigIs(*smModel, none ? nullptr : &object.model); });
      return {id};
    }
    default: {
      if (callProfile(*sm, *smModel).intf == Touched::kNone) return {Touched::kNone};
      return {id};
    }
  }
}

Run::Touched Run::callProfile(LinkFlap::LinkFlapIntfSm& library, Model::IntfSm& model) {
  int profile = name();
  for (int i = 0; i < kProfiles && !model.profile(profile); ++i)
    profile = (profile + 1) % kProfiles;
  auto* const sm = library.linkFlapProfileSm().find(world_.profile(profile));
  auto* const smModel = model.profile(profile).get();
  if (sm == nullptr || smModel == nullptr) return {Touched::kNone};
  auto& queue = smModel->queue;
  std::uint32_t const value =
      odd() ? random_.of(std::array{4294967295U, 4294967294U, 2147483648U}) : random_.below(4);
  switch (random_.below(14)) {
    case 12: {
      auto& object = world_.profiles[static_cast<std::size_t>(profile)][variant()];
      bool const none = random_.oneIn(8);
      both(
          "profile machine's configuration",
          [&] { sm->profileConfigIs(none ? Vek::Ptr<LinkFlap::ProfileConfig>{} : object.lib); },
          [&] { model_.profileConfigIs(*smModel, none ? nullptr : &object.model); });
      return {};
    }
    case 13: {
      // Of the same interface: the one that its link events are known to touch.
      auto& object = world_.status[static_cast<std::size_t>(smModel->status->intf)][variant()];
      both(
          "profile machine's status", [&] { sm->ethPhyIntfStatusIs(object.lib); },
          [&] { model_.statusIs(*smModel, object.model); });
      return {};
    }
    case 0: {
      int const other = name();
      int const id = intf();
      both(
          "handleProfileValues",
          [&] { sm->handleProfileValues(world_.profile(other), world_.id(id)); },
          [&] { model_.handleProfileValues(*smModel, other, id); });
      return {};
    }
    case 1:
    case 2:
      both(
          "handleLinkStatus", [&] { sm->handleLinkStatus(); },
          [&] { model_.handleLinkStatus(*smModel); });
      return {};
    case 3:
      both(
          "curFlapsIs", [&] { sm->curFlapsIs(value); }, [&] { smModel->curFlaps = value; });
      return {};
    case 4:
      both(
          "curIntervalsIs", [&] { sm->curIntervalsIs(value); },
          [&] { smModel->curIntervals = value; });
      return {};
    case 5:
      both(
          "curViolationsIs", [&] { sm->curViolationsIs(value); },
          [&] { smModel->curViolations = value; });
      return {};
    case 6:
      both(
          "linkFlapTimeStampDelAll", [&] { sm->linkFlapTimeStampDelAll(); },
          [&] { queue.clear(); });
      return {};
    case 7:
      both(
          "linkFlapTimeStampDeq", [&] { (void)sm->linkFlapTimeStampDeq(); },
          [&] {
            if (!queue.flaps.empty()) queue.remove(0);
          });
      return {};
    case 8: {
      std::uint32_t const index = queue.headIndex + random_.below(8);
      both(
          "linkFlapTimeStampDel", [&] { (void)sm->linkFlapTimeStampDel(index); },
          [&] { queue.removeIndex(index); });
      return {};
    }
    case 9: {
      double const time = clock_ - static_cast<double>(random_.below(40)) / 8;
      both(
          "linkFlapTimeStampEnq", [&] { sm->linkFlapTimeStampEnq(time); },
          [&] { queue.append(time); });
      return {};
    }
    case 10: {
      if (queue.flaps.empty()) return {Touched::kNone};
      auto& flap = queue.flaps[random_.below(static_cast<std::uint32_t>(queue.flaps.size()))];
      double const time = flap.time + static_cast<double>(random_.below(64)) / 8 - 4;
      both(
          "linkFlapTimeStampIs", [&] { sm->linkFlapTimeStampIs(flap.index, time); },
          [&] { flap.time = time; });
      return {};
    }
    default: {
      if (!random_.oneIn(4)) return {Touched::kNone};
      // An empty queue goes on near the end of the index space; one that is not, closer to full, or
      // with a gap in its indexes.
      LinkFlap::LinkFlapProfileSm::LinkFlapTimeStampMetadata metadata{};
      if (queue.flaps.empty()) {
        metadata.headIndex = metadata.nextIndex = 4294967295U - random_.below(8);
      } else if (random_.oneIn(4)) {
        metadata.headIndex = queue.nextIndex + 1;
        metadata.nextIndex = queue.nextIndex;
      } else {
        metadata.headIndex = queue.headIndex;
        metadata.nextIndex = queue.nextIndex + random_.below(1000);
      }
      both(
          "linkFlapTimeStampMetadataIs", [&] { sm->linkFlapTimeStampMetadataIs(metadata); },
          [&] {
            queue.headIndex = metadata.headIndex;
            queue.nextIndex = metadata.nextIndex;
          });
      return {};
    }
  }
}

}  // namespace Simulation
