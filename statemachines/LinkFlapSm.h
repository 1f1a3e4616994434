#pragma once

#include <iosfwd>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/HashMap.h"
#include "runtime/vek/Input.h"
#include "runtime/vek/Reactor.h"

#include "statemachines/LinkFlapIntfSm.h"
#include "statemachines/LinkFlapProfileSm.h"
#include "statemachines/Root.h"

#pragma GCC visibility push(default)

/// Link-flap detection: the chief header. It declares the top-level machine and, by what it
/// includes, the other three: `Root` (which a host makes), `LinkFlapIntfSm`, `LinkFlapProfileSm`.
namespace LinkFlap {

/// The top-level machine: admits interfaces, keeps one `LinkFlapIntfSm` for each, and hands changes
/// of the global configuration on to those they concern.
///
/// Where its code stands: LinkFlapSm.cpp (life cycle, inputs, reactors), Admission.cpp
/// (`handleIntf` and the collection), FanOut.cpp (the other three handlers).
///
/// Ownership: belongs to a `Root`.
class LinkFlapSm final : public Machine {
 public:
  using Ptr = Vek::Ptr<LinkFlapSm>;
  class _Type;
  class GenericIf_;
  class VekEthPhyIntfConfigDir;
  class VekEthPhyIntfStatusDir;
  class VekErrdisableConfig;
  class VekConfig;
  using IntfSms = Vek::HashMap<LinkFlapIntfSm, Tarn::IntfId>;

  /// Attaches to the inputs and admits the interfaces that are there. `causeName`: the err-disable
  /// cause that the library serves. `ethPhyIntfStatusDir` must be present; so must all other inputs
  /// as soon as there is an interface to handle. What admission throws
  /// leaves the constructor, and what was built so far is released.
  LinkFlapSm(Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
             Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
             Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
             Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
             Vek::Ptr<Config const> const& config,
             Vek::Ptr<Errdisable::CauseStatus> const& causeStatus, Vek::String causeName);

  /// Makes a machine and switches its notifications on.
  static Ptr LinkFlapSmIs(
      Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
      Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
      Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
      Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
      Vek::Ptr<Config const> const& config, Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
      Vek::String causeName);

  static constexpr std::string_view vekTypeName{"LinkFlap::LinkFlapSm"};
  /// The type's record; always the same.
  static Vek::VekType const* _fwkType();
  Vek::VekType const* fwkType() const override;

  void hasNotificationActiveIs(bool on) override;
  /// Sets the activity on which deferred notifications of the reactors run.
  virtual void vekFwkActivityIs(Vek::Ptr<Vek::ActivityConfig> const& activity);
  virtual void vekDoZombieReactors(bool on);

  Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity() const noexcept { return vekFwkActivity_; }

  // The watched inputs, each empty when its reactor is absent. Pointing one at another object makes,
  // keeps or drops the reactor and runs no handler. Without one of the four, handling an interface
  // ends the process.
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> ethPhyIntfConfigDir() const;
  void ethPhyIntfConfigDirIs(Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& dir);
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> ethPhyIntfConfigDirDel();
  Vek::Ptr<VekEthPhyIntfConfigDir> newEthPhyIntfConfigDir(
      Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& dir);
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> ethPhyIntfStatusDir() const;
  void ethPhyIntfStatusDirIs(Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& dir);
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> ethPhyIntfStatusDirDel();
  Vek::Ptr<VekEthPhyIntfStatusDir> newEthPhyIntfStatusDir(
      Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& dir);
  Vek::Ptr<Errdisable::Config const> errdisableConfig() const;
  void errdisableConfigIs(Vek::Ptr<Errdisable::Config const> const& config);
  Vek::Ptr<Errdisable::Config const> errdisableConfigDel();
  Vek::Ptr<VekErrdisableConfig> newErrdisableConfig(
      Vek::Ptr<Errdisable::Config const> const& config);
  Vek::Ptr<Config const> config() const;
  void configIs(Vek::Ptr<Config const> const& config);
  Vek::Ptr<Config const> configDel();
  Vek::Ptr<VekConfig> newConfig(Vek::Ptr<Config const> const& config);

  Vek::Ptr<Errdisable::CauseStatus> const& causeStatus() const noexcept { return causeStatus_; }
  Vek::String const& causeName() const noexcept { return causeName_; }

  /// The machines of the admitted interfaces.
  IntfSms const& linkFlapIntfSm() const noexcept { return linkFlapIntfSm_; }
  LinkFlapIntfSm::Ptr linkFlapIntfSm(Tarn::IntfId const& intfId) const;
  /// The machine of that interface, made when there is none. Throws `Vek::NameInUseException` when
  /// there is one that was made from other objects.
  LinkFlapIntfSm::Ptr linkFlapIntfSmIs(
      Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
      Vek::Ptr<Config const> const& config, Vek::Ptr<IntfConfig const> const& intfConfig,
      Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
      Vek::Ptr<Errdisable::CauseStatus> const& causeStatus);
  /// Makes a machine and puts it into the collection under its key.
  LinkFlapIntfSm::Ptr newLinkFlapIntfSm(
      Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
      Vek::Ptr<Config const> const& config, Vek::Ptr<IntfConfig const> const& intfConfig,
      Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
      Vek::Ptr<Errdisable::CauseStatus> const& causeStatus);
  /// Removes the machine of that interface and returns it; empty when there is none.
  LinkFlapIntfSm::Ptr linkFlapIntfSmDel(Tarn::IntfId const& intfId);
  /// Removes the machine that the walk stands on and returns it.
  LinkFlapIntfSm::Ptr linkFlapIntfSmDel(IntfSms::Iterator& position);
  void linkFlapIntfSmDelAll();
  /// A hook for others; nothing is done here.
  void linkFlapIntfSmNotify(Tarn::IntfId intfId);

  /// Runs once, at the end of construction: admits every interface of the status directory.
  void handleInitialized();
  /// Something about one interface has changed: brings its machine in line with all inputs.
  void handleIntf(Tarn::IntfId intfId);
  /// A profile was configured, replaced or removed: selects anew for the interfaces that use it.
  void handleProfileConfig(Vek::String name);
  /// The default list has changed: selects anew for every interface that follows it.
  void handleDefaultProfileList(Vek::String name);
  /// A cause was switched off or on: if it is ours, admits anew the interfaces it governs.
  void handleDisabled(Vek::String cause);

 private:
  ~LinkFlapSm() override;

  template <typename Visit>
  void forEachReactor(Visit visit);
  template <typename Visit>
  void forEachInterface(Visit visit);
  bool admissible(Tarn::IntfId const& intfId, Vek::Ptr<IntfConfig const> const& lfIntfConfig) const;
  void withdraw(Tarn::IntfId const& intfId);
  LinkFlapIntfSm::Ptr admitted(Tarn::IntfId const& intfId);

  Vek::Ptr<Vek::ActivityConfig> vekFwkActivity_;
  Vek::Input<VekEthPhyIntfConfigDir> ethPhyIntfConfigDir_;
  Vek::Input<VekEthPhyIntfStatusDir> ethPhyIntfStatusDir_;
  Vek::Input<VekErrdisableConfig> errdisableConfig_;
  Vek::Input<VekConfig> config_;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  Vek::String causeName_;
  IntfSms linkFlapIntfSm_{Vek::kSizeHint};
};

// The four reactors. All their unkeyed notifications stay empty on purpose: when several keys of
// one attribute accumulate before a deferring activity delivers, the machine does nothing for them.

class LinkFlapSm::VekEthPhyIntfConfigDir final
    : public Vek::ActivityReactor<VekEthPhyIntfConfigDir, LinkFlapSm,
                                  Interface::AllEthPhyIntfConfigDir> {
 public:
  using ActivityReactor::ActivityReactor;
  void linkFlapSmIs(LinkFlapSm* sm) { ownerIs(sm); }

  void onIntfConfig(Tarn::IntfId intfId) override {
    react(Interface::AllEthPhyIntfConfigDir::intfConfigAttr, intfId, &LinkFlapSm::handleIntf);
  }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override { rebind(object, {}); }

 private:
  ~VekEthPhyIntfConfigDir() override = default;
};

class LinkFlapSm::VekEthPhyIntfStatusDir final
    : public Vek::ActivityReactor<VekEthPhyIntfStatusDir, LinkFlapSm,
                                  Interface::AllEthPhyIntfStatusDir> {
 public:
  using ActivityReactor::ActivityReactor;
  void linkFlapSmIs(LinkFlapSm* sm) { ownerIs(sm); }

  void onIntfStatus(Tarn::IntfId intfId) override {
    react(Interface::AllEthPhyIntfStatusDir::intfStatusAttr, intfId, &LinkFlapSm::handleIntf);
  }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override { rebind(object, {}); }

 private:
  ~VekEthPhyIntfStatusDir() override = default;
};

class LinkFlapSm::VekErrdisableConfig final
    : public Vek::ActivityReactor<VekErrdisableConfig, LinkFlapSm, Errdisable::Config> {
 public:
  using ActivityReactor::ActivityReactor;
  void linkFlapSmIs(LinkFlapSm* sm) { ownerIs(sm); }

  void onDisabled(Vek::String cause) override {
    react(Errdisable::Config::disabledAttr, cause, &LinkFlapSm::handleDisabled);
  }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override { rebind(object, {}); }

 private:
  ~VekErrdisableConfig() override = default;
};

class LinkFlapSm::VekConfig final : public Vek::ActivityReactor<VekConfig, LinkFlapSm, Config> {
 public:
  using ActivityReactor::ActivityReactor;
  void linkFlapSmIs(LinkFlapSm* sm) { ownerIs(sm); }

  void onIntfConfig(Tarn::IntfId intfId) override {
    react(Config::intfConfigAttr, intfId, &LinkFlapSm::handleIntf);
  }
  void onProfileConfig(Vek::String name) override {
    react(Config::profileConfigAttr, name, &LinkFlapSm::handleProfileConfig);
  }
  void onDefaultProfileList(Vek::String name) override {
    react(Config::defaultProfileListAttr, name, &LinkFlapSm::handleDefaultProfileList);
  }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override { rebind(object, {}); }

 private:
  ~VekConfig() override = default;
};

/// Removes the machine of one interface, its profile machines first. Does nothing (but trace) when
/// there is none. The err-disable record is the caller's business.
void deleteLinkFlapIntfSm(LinkFlapSm::Ptr sm, Tarn::IntfId intfId);

/// Writes "LinkFlapSm".
std::ostream& operator<<(std::ostream& out, LinkFlapSm* sm);

}  // namespace LinkFlap

#pragma GCC visibility pop
