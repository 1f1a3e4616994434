#include "statemachines/LinkFlapSm.h"

#include <ostream>

#include "statemachines/SourcePoints.h"

namespace LinkFlap {

LinkFlapSm::LinkFlapSm(Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
                       Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
                       Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
                       Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
                       Vek::Ptr<Config const> const& config,
                       Vek::Ptr<Errdisable::CauseStatus> const& causeStatus, Vek::String causeName)
    : vekFwkActivity_{vekFwkActivity}, causeStatus_{causeStatus}, causeName_{std::move(causeName)} {
  if (ethPhyIntfConfigDir)
    ethPhyIntfConfigDir_.reactorIs(newEthPhyIntfConfigDir(ethPhyIntfConfigDir));
  if (ethPhyIntfStatusDir)
    ethPhyIntfStatusDir_.reactorIs(newEthPhyIntfStatusDir(ethPhyIntfStatusDir));
  if (errdisableConfig) errdisableConfig_.reactorIs(newErrdisableConfig(errdisableConfig));
  if (config) config_.reactorIs(newConfig(config));
  handleInitialized();
}

LinkFlapSm::Ptr LinkFlapSm::LinkFlapSmIs(
    Vek::Ptr<Vek::ActivityConfig> const& vekFwkActivity,
    Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& ethPhyIntfConfigDir,
    Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& ethPhyIntfStatusDir,
    Vek::Ptr<Errdisable::Config const> const& errdisableConfig,
    Vek::Ptr<Config const> const& config, Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
    Vek::String causeName) {
  auto sm = Vek::make<LinkFlapSm>(vekFwkActivity, ethPhyIntfConfigDir, ethPhyIntfStatusDir,
                                  errdisableConfig, config, causeStatus, std::move(causeName));
  sm->hasNotificationActiveIs(true);
  return sm;
}

LinkFlapSm::~LinkFlapSm() {
  // Order: silence the reactors before any member goes, so that none can call back into a husk.
  vekDoZombieReactors(true);
  forEachReactor([](auto& reactor) { reactor.linkFlapSmIs(nullptr); });
  linkFlapIntfSmDelAll();
}

/// Calls `visit` on each reactor that exists: the one place that states their order.
template <typename Visit>
void LinkFlapSm::forEachReactor(Visit visit) {
  if (ethPhyIntfConfigDir_.reactor() != nullptr) visit(*ethPhyIntfConfigDir_.reactor());
  if (ethPhyIntfStatusDir_.reactor() != nullptr) visit(*ethPhyIntfStatusDir_.reactor());
  if (errdisableConfig_.reactor() != nullptr) visit(*errdisableConfig_.reactor());
  if (config_.reactor() != nullptr) visit(*config_.reactor());
}

void LinkFlapSm::hasNotificationActiveIs(bool on) {
  if (on == hasNotificationActive()) return;
  notificationActiveFlagIs(on);
  forEachReactor([on](auto& reactor) { reactor.hasNotificationActiveIs(on); });
  for (LinkFlapIntfSm& intfSm : linkFlapIntfSm_)
    intfSm.hasNotificationActiveIs(on);
}

void LinkFlapSm::vekFwkActivityIs(Vek::Ptr<Vek::ActivityConfig> const& activity) {
  (void)Vek::vekActivitySmFor(activity);  // all that can fail; the reactors find it made
  vekFwkActivity_ = activity;
  forEachReactor([this](auto& reactor) { reactor.vekFwkActivityIs(vekFwkActivity()); });
}

void LinkFlapSm::vekDoZombieReactors(bool on) {
  if (on == vekMarkedForDeletion()) return;
  forEachReactor([on](auto& reactor) { reactor.vekDoZombieReactors(on); });
  vekMarkedForDeletionIs(on);
}

Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> LinkFlapSm::ethPhyIntfConfigDir() const {
  return ethPhyIntfConfigDir_.object();
}

void LinkFlapSm::ethPhyIntfConfigDirIs(
    Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& dir) {
  ethPhyIntfConfigDir_.objectIs(
      dir, [this](auto const& object) { return newEthPhyIntfConfigDir(object); });
}

Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> LinkFlapSm::ethPhyIntfConfigDirDel() {
  return ethPhyIntfConfigDir_.objectDel();
}

Vek::Ptr<LinkFlapSm::VekEthPhyIntfConfigDir> LinkFlapSm::newEthPhyIntfConfigDir(
    Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> const& dir) {
  return Vek::make<VekEthPhyIntfConfigDir>(vekFwkActivity_, dir, this);
}

Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> LinkFlapSm::ethPhyIntfStatusDir() const {
  return ethPhyIntfStatusDir_.object();
}

void LinkFlapSm::ethPhyIntfStatusDirIs(
    Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& dir) {
  ethPhyIntfStatusDir_.objectIs(
      dir, [this](auto const& object) { return newEthPhyIntfStatusDir(object); });
}

Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> LinkFlapSm::ethPhyIntfStatusDirDel() {
  return ethPhyIntfStatusDir_.objectDel();
}

Vek::Ptr<LinkFlapSm::VekEthPhyIntfStatusDir> LinkFlapSm::newEthPhyIntfStatusDir(
    Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> const& dir) {
  return Vek::make<VekEthPhyIntfStatusDir>(vekFwkActivity_, dir, this);
}

Vek::Ptr<Errdisable::Config const> LinkFlapSm::errdisableConfig() const {
  return errdisableConfig_.object();
}

void LinkFlapSm::errdisableConfigIs(Vek::Ptr<Errdisable::Config const> const& config) {
  errdisableConfig_.objectIs(config,
                             [this](auto const& object) { return newErrdisableConfig(object); });
}

Vek::Ptr<Errdisable::Config const> LinkFlapSm::errdisableConfigDel() {
  return errdisableConfig_.objectDel();
}

Vek::Ptr<LinkFlapSm::VekErrdisableConfig> LinkFlapSm::newErrdisableConfig(
    Vek::Ptr<Errdisable::Config const> const& config) {
  return Vek::make<VekErrdisableConfig>(vekFwkActivity_, config, this);
}

Vek::Ptr<Config const> LinkFlapSm::config() const {
  return config_.object();
}

void LinkFlapSm::configIs(Vek::Ptr<Config const> const& config) {
  config_.objectIs(config, [this](auto const& object) { return newConfig(object); });
}

Vek::Ptr<Config const> LinkFlapSm::configDel() {
  return config_.objectDel();
}

Vek::Ptr<LinkFlapSm::VekConfig> LinkFlapSm::newConfig(Vek::Ptr<Config const> const& config) {
  return Vek::make<VekConfig>(vekFwkActivity_, config, this);
}

void LinkFlapSm::handleInitialized() {
  Ptr const self{this};  // whoever hears of a withdrawn record may remove this machine
  Trace::linkFlapSmHandleInitialized(this, "::handleInitialized()");
  Assert::linkFlapSmHandleInitialized(!initialized());
  initializedIs(true);
  auto const statusDir = ethPhyIntfStatusDir();
  for (auto const& status : statusDir->intfStatus())
    handleIntf(status.key());
}

void LinkFlapSm::linkFlapIntfSmNotify(Tarn::IntfId /*intfId*/) {}

std::ostream& operator<<(std::ostream& out, LinkFlapSm* /*sm*/) {
  return out << "LinkFlapSm";
}

}  // namespace LinkFlap
