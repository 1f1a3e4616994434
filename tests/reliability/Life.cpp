#include "tests/reliability/Life.h"

#include <algorithm>

#include "runtime/vek/Exception.h"

#include "tests/reliability/LifeParts.h"

bool Life::plantLostReference = false;

namespace {

/// Whether a selection of profiles would meet an interface without a machine, which ends the
/// process.
bool gap(LinkFlap::LinkFlapSm const& sm) {
  auto const dir = sm.ethPhyIntfStatusDir();
  if (!dir) return false;
  for (auto const& member : dir->intfStatus())
    if (!sm.linkFlapIntfSm(member.key())) return true;
  return false;
}

}  // namespace

Life::Life(std::mt19937& random, Vek::ManualClock& clock, Figures& figures)
    : random_{random},
      clock_{clock},
      figures_{figures},
      ids_{Tarn::IntfId{"Ethernet1"}, Tarn::IntfId{"Ethernet2"}, Tarn::IntfId{"Ethernet3"}},
      profiles_{"p1", "p2", "default"},
      deferring_{random() % 4 == 0},
      activity_{Vek::make<Vek::ActivityConfig>()},
      configDir_{Vek::make<Interface::AllEthPhyIntfConfigDir>()},
      statusDir_{Vek::make<Interface::AllEthPhyIntfStatusDir>()},
      errdisableConfig_{Vek::make<Errdisable::Config>()},
      config_{Vek::make<LinkFlap::Config>()},
      causeStatus_{Vek::make<Errdisable::CauseStatus>()},
      root_{LinkFlap::rootFactory("life")} {
  activity_->deferredIs(deferring_);
}

Life::~Life() {
  tearDown();
}

void Life::live(unsigned steps) {
  // Most lives begin with a machine that has something to do.
  if (below(8) != 0) {
    config_->maxFlapsIs(below(3));
    for (Tarn::IntfId const& id : ids_) {
      phyConfigs_.push_back(configDir_->newIntfConfig(id));
      statuses_.push_back(statusDir_->newIntfStatus(id));
    }
    install();
  }
  for (unsigned watchers = below(6); watchers > 0; --watchers)
    watch();
  while (steps-- > 0 && !over_)
    step();
}

void Life::step() {
  if (over_) return;
  ++figures_.steps;
  if (depth_ > 0) ++figures_.stepsInside;
  try {
    switch (below(13)) {
      case 0:
        replaceAnObject();
        break;
      case 1:
      case 2:
        changeInterfaces();
        break;
      case 3:
        changeSettings();
        break;
      case 4:
        changeSelection();
        break;
      case 5:
        changeValues();
        break;
      case 6:
      case 7:
        changeLinks();
        break;
      case 8:
        changeMachine();
        break;
      case 9:
      case 10:
        changeHeld();
        break;
      case 11:
        repoint();
        break;
      default:
        watch();
    }
  } catch (Vek::Exception const&) {
    // A machine was asked for again with other objects: refused, as it should be.
  }
}

/// Top-level objects are replaced; the library keeps the old ones until it is installed anew.
void Life::replaceAnObject() {
  switch (below(8)) {
    case 0:
      activity_ = Vek::make<Vek::ActivityConfig>();
      activity_->deferredIs(deferring_);
      break;
    case 1:
      configDir_ = Vek::make<Interface::AllEthPhyIntfConfigDir>();
      break;
    case 2:
      statusDir_ = Vek::make<Interface::AllEthPhyIntfStatusDir>();
      break;
    case 3:
      errdisableConfig_ = Vek::make<Errdisable::Config>();
      break;
    case 4:
      config_ = Vek::make<LinkFlap::Config>();
      break;
    case 5:
      causeStatus_ = Vek::make<Errdisable::CauseStatus>();
      break;
    default:
      root_ = below(2) == 0 ? LinkFlap::rootFactory("another") : nullptr;
  }
  if (below(2) == 0) install();
}

void Life::changeInterfaces() {
  Tarn::IntfId const id = anyId();
  auto const configDir = configDir_;
  auto const statusDir = statusDir_;
  // While profiles are being selected, no machine may go whose interface stays.
  switch (below(selecting_ ? 2 : 5)) {
    case 0:
      statusDir->intfStatusDel(id);
      break;
    case 1:
      if (!statusDir->intfStatus(id) && !selecting_)
        statuses_.push_back(statusDir->newIntfStatus(id));
      break;
    case 2:
      configDir->intfConfigDel(id);
      break;
    case 3:
      phyConfigs_.push_back(configDir->newIntfConfig(id));
      break;
    default:
      errdisableConfig_->disabledIs("link-flap", below(2) == 0);
  }
}

void Life::changeSettings() {
  Tarn::IntfId const id = anyId();
  auto const config = config_;
  if (selecting_) return;
  switch (below(5)) {
    case 0:
      config->intfConfigDel(id);
      break;
    case 1:
      settings_.push_back(config->newIntfConfig(id));
      break;
    case 2:
      if (auto const object = oneOf(settings_, below(100))) object->enabledIs(below(3) != 0);
      break;
    case 3:
      if (auto const object = oneOf(settings_, below(100))) object->profileListDel(anyProfile());
      break;
    default:
      if (auto const object = oneOf(settings_, below(100)))
        object->profileListIs(anyProfile(), below(3) != 0);
  }
}

bool Life::selectionEndsProcess() const {
  // Deferred, or from inside a notification, nobody can say what it will meet.
  if (deferring_ || depth_ > 0) return true;
  if (root_ && root_->linkFlapSm() && gap(*root_->linkFlapSm())) return true;
  for (auto const& view : views_)
    if (view->root->linkFlapSm() && gap(*view->root->linkFlapSm())) return true;
  return std::any_of(heldMachines_.begin(), heldMachines_.end(),
                     [](Vek::Ptr<Machine> const& sm) { return gap(*sm); });
}

void Life::changeSelection() {
  if (selectionEndsProcess()) return;
  Vek::String const name = anyProfile();
  auto const config = config_;
  selecting_ = true;
  switch (below(4)) {
    case 0:
      profileConfigs_.push_back(config->newProfileConfig(name));
      break;
    case 1:
      config->profileConfigDel(name);
      break;
    case 2:
      config->defaultProfileListIs(name, below(3) != 0);
      break;
    default:
      config->defaultProfileListDel(name);
  }
  selecting_ = false;
}

void Life::changeValues() {
  auto const config = config_;
  if (auto const profile = oneOf(profileConfigs_, below(100))) {
    profile->maxFlapsIs(below(3));
    profile->intervalIs(1 + below(9));
    profile->violationsIs(1 + below(2));
  }
  config->maxFlapsIs(below(3));
  if (auto const object = oneOf(phyConfigs_, below(100)))
    object->phyConfigStateIs(static_cast<Interface::PhyConfigState>(below(3)));
}

void Life::changeLinks() {
  clock_.secondsIs(clock_.seconds() + below(4));
  // Also of interfaces that have left, whose machines the host may still hold.
  auto const status = oneOf(statuses_, below(100));
  if (!status) return;
  status->rawLinkStatusIs(Interface::RawLinkStatus::down);
  status->rawLinkStatusIs(Interface::RawLinkStatus::up);
}

void Life::install() {
  if (over_) return;  // what brought us here has ended it
  if (!root_) root_ = LinkFlap::rootFactory("life");
  // Copies: what the first pass over the interfaces causes may replace each of these.
  auto const root = root_;
  auto const activity = activity_;
  auto const configDir = configDir_;
  auto const statusDir = statusDir_;
  auto const errdisableConfig = errdisableConfig_;
  auto const config = config_;
  auto const causeStatus = causeStatus_;
  auto const sm = root->linkFlapSmIs(activity, configDir, statusDir, errdisableConfig, config,
                                     causeStatus, "link-flap");
  if (below(4) == 0) heldMachines_.push_back(sm);
}

template <typename T>
Vek::Ptr<ListenerOf<T>> Life::listen(Vek::Ptr<T> const& object) {
  if (!object) return nullptr;
  auto const listener = Vek::make<ListenerOf<T>>(Vek::kAllAttributes);
  unsigned const kind = below(16);
  auto const act = [this, kind] {
    if (over_ || depth_ > 2) return;
    ++depth_;
    if (kind == 0) {
      ++figures_.tearDownsInside;
      tearDown();
    } else {
      step();
    }
    --depth_;
    if (kind == 1) Vek::throwRangeException("a watcher's own");
  };
  (below(4) == 0 ? listener->immediate : listener->heard) = act;
  listener->notifierIs(object);
  listener->isRegisteredNotifieeIs(true);
  watchers_.push_back(listener);
  return listener;
}

void Life::watch() {
  if (below(3) == 0) return dropOne(watchers_, below(100));
  if (watchers_.size() > 6) return;
  switch (below(10)) {
    case 0:
      listen(config_);
      break;
    case 1:
      listen(configDir_);
      break;
    case 2:
      listen(statusDir_);
      break;
    case 3:
      listen(errdisableConfig_);
      break;
    case 4:
      listen(oneOf(settings_, below(100)));
      break;
    case 5:
      listen(oneOf(profileConfigs_, below(100)));
      break;
    case 6:
      listen(oneOf(statuses_, below(100)));
      break;
    case 7:
      listen(root_);
      break;
    default:
      listen(causeStatus_);
  }
}

void Life::tearDown() {
  if (std::exchange(over_, true)) return;
  if (plantLostReference && below(100) == 0) config_->addReference();
  auto const inner = heldIntfSms_.size() + heldProfileSms_.size();
  bool outerGone = false;
  auto const drop = [](auto& member) { (void)std::exchange(member, {}); };
  std::vector<std::function<void()>> drops{
      [&] { drop(activity_); },
      [&] { drop(configDir_); },
      [&] { drop(statusDir_); },
      [&] { drop(errdisableConfig_); },
      [&] { drop(config_); },
      [&] { drop(causeStatus_); },
      [&] {
        drop(root_);
        outerGone = true;
      },
      [&] { drop(settings_); },
      [&] { drop(profileConfigs_); },
      [&] { drop(statuses_); },
      [&] { drop(phyConfigs_); },
      [&] { drop(heldMachines_); },
      [&] {
        if (outerGone) figures_.machinesOutlived += inner;
        drop(heldIntfSms_);
      },
      [&] { drop(heldProfileSms_); },
      [&] { drop(heldFlaps_); },
      [&] { drop(views_); },
      [&] { drop(watchers_); },
  };
  std::shuffle(drops.begin(), drops.end(), random_);
  for (auto const& one : drops)
    one();
}
