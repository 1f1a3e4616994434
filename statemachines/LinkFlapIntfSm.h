#pragma once

#include <iosfwd>

#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/EthPhyIntfConfig.h"
#include "runtime/model/EthPhyIntfStatus.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/HashMap.h"
#include "runtime/vek/Input.h"
#include "runtime/vek/Reactor.h"

#include "statemachines/LinkFlapProfileSm.h"

#pragma GCC visibility push(default)

namespace LinkFlap {

/// The machine of one monitored interface: follows the interface's link-flap settings and owns one
/// `LinkFlapProfileSm` for each profile that applies to it.
///
/// Where its code stands: LinkFlapIntfSm.cpp (life cycle, reactors, handlers),
/// ProfileSelection.cpp (`manageProfileSm` and the collection).
///
/// Ownership: belongs to the `linkFlapIntfSm` collection of the top-level machine.
class LinkFlapIntfSm final : public Machine, public Vek::HashLink {
 public:
  using Ptr = Vek::Ptr<LinkFlapIntfSm>;
  class _Type;
  class GenericIf_;
  class VekConfig;
  class VekIntfConfig;
  using ProfileSms = Vek::HashMap<LinkFlapProfileSm, Vek::String>;

  /// `intfConfig` may be empty: the interface has no settings of its own.
  LinkFlapIntfSm(Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
                 Vek::Ptr<Config const> const& config, Vek::Ptr<IntfConfig const> const& intfConfig,
                 Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
                 Vek::Ptr<Errdisable::CauseStatus> const& causeStatus);

  /// Makes a machine and switches its notifications on.
  static Ptr LinkFlapIntfSmIs(Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
                              Vek::Ptr<Config const> const& config,
                              Vek::Ptr<IntfConfig const> const& intfConfig,
                              Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
                              Vek::Ptr<Errdisable::CauseStatus> const& causeStatus);

  static constexpr std::string_view vekTypeName{"LinkFlap::LinkFlapIntfSm"};
  /// The type's record; always the same.
  static Vek::VekType const* _fwkType();
  Vek::VekType const* fwkType() const override;

  void hasNotificationActiveIs(bool on) override;
  virtual void vekDoZombieReactors(bool on);

  /// The identifier of the interface status; the null identifier without one.
  Tarn::IntfId intfId() const;
  /// The key under which the top-level machine keeps this one.
  Tarn::IntfId fwkKey() const { return intfId(); }
  /// Always empty: the machine has no activity of its own.
  Vek::Ptr<Vek::ActivityConfig> vekFwkActivity() const { return nullptr; }

  Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus() const noexcept {
    return ethPhyIntfStatus_;
  }
  Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig() const noexcept {
    return ethPhyIntfConfig_;
  }
  Vek::Ptr<Errdisable::CauseStatus> const& causeStatus() const noexcept { return causeStatus_; }

  // The watched references. Pointing one at another object runs the reactor's handler; a reactor
  // that is only now made runs none; an empty object drops the reactor.
  Vek::Ptr<Config const> config() const;
  void configIs(Vek::Ptr<Config const> const& config);
  Vek::Ptr<Config const> configDel();
  Vek::Ptr<VekConfig> newConfig(Vek::Ptr<Config const> const& config);
  Vek::Ptr<IntfConfig const> intfConfig() const;
  void intfConfigIs(Vek::Ptr<IntfConfig const> const& intfConfig);
  Vek::Ptr<IntfConfig const> intfConfigDel();
  Vek::Ptr<VekIntfConfig> newIntfConfig(Vek::Ptr<IntfConfig const> const& intfConfig);

  /// Whether the interface is watched for flaps. Setting it only stores it: `manageProfileSm` acts.
  bool enable() const noexcept { return enable_; }
  void enableIs(bool on) noexcept { enable_ = on; }

  /// The profile machines, by profile name.
  ProfileSms const& linkFlapProfileSm() const noexcept { return linkFlapProfileSm_; }
  LinkFlapProfileSm::Ptr linkFlapProfileSm(Vek::String const& name) const;
  /// The machine of that profile, made when there is none. Throws `Vek::NameInUseException` when
  /// there is one that was made from other objects.
  LinkFlapProfileSm::Ptr linkFlapProfileSmIs(
      Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
      Vek::Ptr<Config const> const& config,
      Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
      Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
      Vek::Ptr<Errdisable::CauseStatus> const& causeStatus);
  /// Makes a machine and puts it into the collection under its name.
  LinkFlapProfileSm::Ptr newLinkFlapProfileSm(
      Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
      Vek::Ptr<Config const> const& config,
      Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
      Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
      Vek::Ptr<Errdisable::CauseStatus> const& causeStatus);
  /// Removes the machine of that profile and returns it; empty when there is none.
  LinkFlapProfileSm::Ptr linkFlapProfileSmDel(Vek::String const& name);
  /// Removes the machine that the walk stands on and returns it.
  LinkFlapProfileSm::Ptr linkFlapProfileSmDel(ProfileSms::Iterator& position);
  void linkFlapProfileSmDelAll();
  /// A hook for others; nothing is done here.
  void linkFlapProfileSmNotify(Vek::String name);

  /// Runs once, at the end of construction.
  void handleInitialized();
  /// The global `maxFlaps` or `interval` has changed: the machine of the profile named "default"
  /// starts its counting anew.
  void handleLinkFlapValues();
  /// The interface's own profile list has changed. The argument serves the trace.
  void handleProfileList(Vek::String profileName);
  /// The interface's own switch has changed. The argument serves the trace. Requires an
  /// `intfConfig`; without one the process ends.
  void handleIntfConfigEnabled(Tarn::IntfId intfId);
  void vek_handleIntfConfig_enabled();

 private:
  ~LinkFlapIntfSm() override;

  template <typename Visit>
  void forEachReactor(Visit visit);

  bool enable_{false};  // first: it fills the gap behind the collection's link
  Vek::Ptr<Interface::EthPhyIntfStatus const> ethPhyIntfStatus_;
  Vek::Input<VekConfig> config_;
  Vek::Input<VekIntfConfig> intfConfig_;
  Vek::Ptr<Interface::EthPhyIntfConfig const> ethPhyIntfConfig_;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  ProfileSms linkFlapProfileSm_{Vek::kSizeHint};
};

/// Watches the global thresholds; they matter to this interface's "default" profile machine only.
class LinkFlapIntfSm::VekConfig final : public Vek::Reactor<VekConfig, LinkFlapIntfSm, Config> {
 public:
  using Reactor::Reactor;
  void linkFlapIntfSmIs(LinkFlapIntfSm* sm) { ownerIs(sm); }

  void onMaxFlaps() override { react(&LinkFlapIntfSm::handleLinkFlapValues); }
  void onInterval() override { react(&LinkFlapIntfSm::handleLinkFlapValues); }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override {
    rebind(object, {&LinkFlapIntfSm::handleLinkFlapValues});
  }

 private:
  ~VekConfig() override = default;
};

/// Watches the interface's own settings.
class LinkFlapIntfSm::VekIntfConfig final
    : public Vek::Reactor<VekIntfConfig, LinkFlapIntfSm, IntfConfig> {
 public:
  using Reactor::Reactor;
  void linkFlapIntfSmIs(LinkFlapIntfSm* sm) { ownerIs(sm); }

  void onProfileList(Vek::String name) override { react(name, &LinkFlapIntfSm::handleProfileList); }
  /// The immediate form of a change of the list is ignored; the keyed form acts.
  void onProfileListvekImmediate() override {}
  void onEnabled() override { react(&LinkFlapIntfSm::vek_handleIntfConfig_enabled); }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override {
    rebind(object, {&LinkFlapIntfSm::vek_handleIntfConfig_enabled});
  }

 private:
  ~VekIntfConfig() override = default;
};

/// Makes the interface's profile machines match the configuration: its own profile list, else the
/// default list, else the built-in profile "default"; none, and no err-disable record, when the
/// interface is switched off. May be called after any change; `sm` must not be empty (assertion
/// "sm").
void manageProfileSm(LinkFlapIntfSm::Ptr sm);

/// The name of the built-in profile, "default": it has no configuration of its own and runs on the
/// global values.
Vek::String const& builtInProfile();

/// Writes "LinkFlapIntfSm( ", the interface's name and " )".
std::ostream& operator<<(std::ostream& out, LinkFlapIntfSm* sm);

}  // namespace LinkFlap

#pragma GCC visibility pop
