#include "statemachines/Root.h"

#include "runtime/vek/Exception.h"
#include "runtime/vek/Reinstantiation.h"

#include "statemachines/LinkFlapSm.h"

namespace LinkFlap {

namespace {

/// The number under which a watcher hears that its `onZeroReferences` threw.
constexpr Vek::AttributeId kZeroReferences{5};

}  // namespace

Root::Root(Vek::Name name) : Entity{std::move(name)}, whereabouts_{Vek::make<Whereabouts>(this)} {}

Root::~Root() {
  (void)linkFlapSmDel();
  whereabouts_->root = nullptr;
  notifiees_.clear();
}

template <typename Notify>
void Root::tellWatchers(Vek::AttributeId id, Notify notify) {
  if (notifiees_.empty()) return;
  Vek::SnapshotIterator<Vek::PtrInterface::NotifieeConst> walk{notifiees_};
  while (Vek::PtrInterface::NotifieeConst* const watcher = walk.next()) {
    Vek::Ptr<Vek::PtrInterface::NotifieeConst> const hold{watcher};
    Vek::Expect const none{Vek::kNoException};
    try {
      notify(static_cast<NotifieeConst&>(*watcher));
    } catch (...) {
      hold->handleNotificationException(id);
    }
  }
}

void Root::tellLinkFlapSm() {
  tellWatchers(kLinkFlapSm, [](NotifieeConst& watcher) { watcher.onLinkFlapSm(); });
}

void Root::zeroReferencesIs(bool /*zero*/) {
  tellWatchers(kZeroReferences, [](NotifieeConst& watcher) { watcher.handleZeroRef(); });
}

Vek::String Root::attributeString(Vek::AttributeId id) const {
  return id == kLinkFlapSm ? Vek::String{"linkFlapSm"} : Entity::attributeString(id);
}

Vek::Ptr<LinkFlapSm> Root::linkFlapSmIs(
    Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
    Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
    Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
    Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
    Vek::Ptr<Config const> const& config, Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
    Vek::String causeName) {
  Ptr const self{this};  // a watcher may drop the host's reference
  countChange();
  if (linkFlapSm_) {
    Vek::Ptr<LinkFlapSm> held = Vek::validPtr(linkFlapSm_);
    held->vekFwkActivityIs(vekFwkActivity);
    if (held->ethPhyIntfConfigDir() == ethPhyIntfConfigDir &&
        held->ethPhyIntfStatusDir() == ethPhyIntfStatusDir &&
        held->errdisableConfig() == errdisableConfig && held->config() == config &&
        held->causeStatus() == causeStatus && held->causeName() == causeName)
      return held;
  }
  // Order: stored only when it is complete. What building throws leaves the old machine in place.
  auto sm = newLinkFlapSm(vekFwkActivity, ethPhyIntfConfigDir, ethPhyIntfStatusDir,
                          errdisableConfig, config, causeStatus, std::move(causeName));
  linkFlapSm_ = sm;
  tellLinkFlapSm();
  sm->hasNotificationActiveIs(true);
  return sm;
}

Vek::Ptr<LinkFlapSm> Root::newLinkFlapSm(
    Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
    Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
    Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
    Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
    Vek::Ptr<Config const> const& config, Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
    Vek::String causeName) {
  return LinkFlapSm::LinkFlapSmIs(vekFwkActivity, ethPhyIntfConfigDir, ethPhyIntfStatusDir,
                                  errdisableConfig, config, causeStatus, std::move(causeName));
}

Vek::Ptr<LinkFlapSm> Root::linkFlapSmDel() {
  if (!linkFlapSm_) return nullptr;
  Ptr const self{this};  // a watcher may drop the host's reference
  auto removed = std::exchange(linkFlapSm_, nullptr);
  countChange();
  tellLinkFlapSm();
  return removed;
}

Vek::Ptr<Vek::PtrInterface const> Root::NotifieeConst::notifier() const {
  return Vek::Ptr<Vek::PtrInterface const>{root()};
}

void Root::NotifieeConst::notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) {
  auto const* const watched = dynamic_cast<Root const*>(object.get());
  if (object && watched == nullptr) Vek::throwTypeException("LinkFlap::Root");
  if (watched == root()) return;
  isRegisteredNotifieeIs(false);
  whereabouts_ = watched == nullptr ? nullptr : watched->whereabouts_;
}

void Root::NotifieeConst::isRegisteredNotifieeIs(bool on) {
  if (on == linked() || root() == nullptr) return;
  if (on) {
    root()->notifiees_.append(*this);
  } else {
    root()->notifiees_.remove(*this);
  }
}

Vek::Name Root::NotifieeConst::name() const {
  return root() == nullptr ? Vek::PtrInterface::NotifieeConst::name() : root()->name();
}

Root::NotifieeConst::~NotifieeConst() {
  // Here, not in the base: only this class knows the list.
  if (linked()) NotifieeConst::isRegisteredNotifieeIs(false);
}

Vek::Ptr<Root> rootFactory(Vek::Name name) {
  return Vek::make<Root>(std::move(name));
}

}  // namespace LinkFlap
