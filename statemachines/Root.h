#pragma once

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Activity.h"
#include "runtime/vek/Entity.h"
#include "runtime/vek/ListRaw.h"
#include "runtime/vek/Notifiee.h"

#pragma GCC visibility push(default)

namespace LinkFlap {

class LinkFlapSm;

/// The object through which a host drives the library: it holds at most one top-level machine and
/// tells its watchers when that member changes.
///
/// Ownership: the host's. Watchers do not keep a Root alive. When the host's last reference goes,
/// the watchers hear `onZeroReferences`, then, if there is a machine, `onLinkFlapSm` a last time.
/// Trap: a reference taken in `onZeroReferences` and kept keeps the Root; one kept in that last
/// `onLinkFlapSm` comes too late, and the process ends.
class Root final : public Vek::Entity {
 public:
  using Ptr = Vek::Ptr<Root>;
  class _Type;
  class GenericIf_;
  class NotifieeConst;
  class Notifiee;

  static constexpr Vek::AttributeId kLinkFlapSm{258};

  explicit Root(Vek::Name name);

  static constexpr std::string_view vekTypeName{"LinkFlap::Root"};
  /// The type's record; always the same.
  static Vek::VekType const* _fwkType();
  Vek::VekType const* fwkType() const override;

  void zeroReferencesIs(bool zero) override;
  Vek::String attributeString(Vek::AttributeId id) const override;

  /// The machine held, or empty.
  Vek::Ptr<LinkFlapSm> const& linkFlapSm() const noexcept { return linkFlapSm_; }

  /// Installs a machine for these objects and returns it. When one is held that was made from the
  /// same six objects, it gets the new activity and is returned, and nobody is told; otherwise a new
  /// one takes its place, which includes the first pass over all interfaces.
  /// What that pass throws is passed on, and the machine held before stays.
  Vek::Ptr<LinkFlapSm> linkFlapSmIs(
      Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
      Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
      Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
      Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
      Vek::Ptr<Config const> const& config, Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
      Vek::String causeName);
  /// Makes a machine; does not store it.
  Vek::Ptr<LinkFlapSm> newLinkFlapSm(
      Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
      Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
      Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
      Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
      Vek::Ptr<Config const> const& config, Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
      Vek::String causeName);
  /// Takes the machine out and returns it; empty, and nobody is told, when there is none.
  Vek::Ptr<LinkFlapSm> linkFlapSmDel();

 private:
  using Watchers = Vek::ListRaw<Vek::PtrInterface::NotifieeConst>;

  /// Where watchers find the Root without holding it; outlives it.
  struct Whereabouts;

  ~Root() override;

  template <typename Notify>
  void tellWatchers(Vek::AttributeId id, Notify notify);
  void tellLinkFlapSm();

  Vek::Ptr<LinkFlapSm> linkFlapSm_;
  Watchers notifiees_;
  Vek::Ptr<Whereabouts> whereabouts_;
};

struct Root::Whereabouts final : Vek::PtrInterface {
  explicit Whereabouts(Root* r) : root{r} {}
  Root* root;  ///< null once the Root has gone
};

/// Base of the watchers of a Root, who are told in order of registration.
class Root::NotifieeConst : public Vek::PtrInterface::NotifieeConst {
 public:
  Vek::Ptr<Vek::PtrInterface const> notifier() const override;
  /// Throws `Vek::TypeException` when the object is not a Root.
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override;
  void isRegisteredNotifieeIs(bool on) override;
  /// The name of the Root watched; without one, the watcher's class.
  Vek::Name name() const override;

  /// The member `linkFlapSm` was set or cleared.
  virtual void onLinkFlapSm() {}

 protected:
  NotifieeConst() = default;
  ~NotifieeConst() override;

  /// The Root watched; null when there is none or it has gone.
  Root* root() const noexcept { return whereabouts_ ? whereabouts_->root : nullptr; }

 private:
  Vek::Ptr<Root::Whereabouts> whereabouts_;
};

/// Base of the watchers that may modify the Root they watch.
class Root::Notifiee : public Root::NotifieeConst {
 public:
  Vek::Ptr<Root> watched() const { return Vek::Ptr<Root>{root()}; }

 protected:
  Notifiee() = default;
  ~Notifiee() override = default;
};

/// Makes a new Root; the caller holds its one reference.
Vek::Ptr<Root> rootFactory(Vek::Name name);

}  // namespace LinkFlap

#pragma GCC visibility pop
