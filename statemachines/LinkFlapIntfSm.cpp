#include "statemachines/LinkFlapIntfSm.h"

#include <ostream>

#include "statemachines/SourcePoints.h"

namespace LinkFlap {

LinkFlapIntfSm::LinkFlapIntfSm(Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
                               Vek::Ptr<Config const> const& config,
                               Vek::Ptr<IntfConfig const> const& intfConfig,
                               Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
                               Vek::Ptr<Errdisable::CauseStatus> const& causeStatus)
    : ethPhyIntfStatus_{ethPhyIntfStatus},
      ethPhyIntfConfig_{ethPhyIntfConfig},
      causeStatus_{causeStatus} {
  if (config) config_.reactorIs(newConfig(config));
  if (intfConfig) {
    intfConfig_.reactorIs(newIntfConfig(intfConfig));
    enable_ = intfConfig->enabled();
  }
  handleInitialized();
}

LinkFlapIntfSm::Ptr LinkFlapIntfSm::LinkFlapIntfSmIs(
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
    Vek::Ptr<Config const> const& config, Vek::Ptr<IntfConfig const> const& intfConfig,
    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus) {
  auto sm = Vek::make<LinkFlapIntfSm>(ethPhyIntfStatus, config, intfConfig, ethPhyIntfConfig,
                                      causeStatus);
  sm->hasNotificationActiveIs(true);
  return sm;
}

LinkFlapIntfSm::~LinkFlapIntfSm() {
  // Order: silence the reactors before any member goes, so that none can call back into a husk.
  vekDoZombieReactors(true);
  forEachReactor([](auto& reactor) { reactor.linkFlapIntfSmIs(nullptr); });
  linkFlapProfileSmDelAll();
}

/// Calls `visit` on each reactor that exists: the one place that states their order.
template <typename Visit>
void LinkFlapIntfSm::forEachReactor(Visit visit) {
  if (config_.reactor() != nullptr) visit(*config_.reactor());
  if (intfConfig_.reactor() != nullptr) visit(*intfConfig_.reactor());
}

void LinkFlapIntfSm::hasNotificationActiveIs(bool on) {
  if (on == hasNotificationActive()) return;
  notificationActiveFlagIs(on);
  forEachReactor([on](auto& reactor) { reactor.hasNotificationActiveIs(on); });
  for (LinkFlapProfileSm& profileSm : linkFlapProfileSm_)
    profileSm.hasNotificationActiveIs(on);
}

void LinkFlapIntfSm::vekDoZombieReactors(bool on) {
  if (on == vekMarkedForDeletion()) return;
  forEachReactor([on](auto& reactor) { reactor.vekDoZombieReactors(on); });
  vekMarkedForDeletionIs(on);
}

Tarn::IntfId LinkFlapIntfSm::intfId() const {
  if (ethPhyIntfStatus_) return ethPhyIntfStatus_->intfId();
  Tarn::IntfId none;
  none.handleInitialized("");
  return none;
}

Vek::Ptr<Config const> LinkFlapIntfSm::config() const {
  return config_.object();
}

void LinkFlapIntfSm::configIs(Vek::Ptr<Config const> const& config) {
  config_.objectIs(config, [this](auto const& object) { return newConfig(object); });
}

Vek::Ptr<Config const> LinkFlapIntfSm::configDel() {
  return config_.objectDel();
}

Vek::Ptr<LinkFlapIntfSm::VekConfig> LinkFlapIntfSm::newConfig(
    Vek::Ptr<Config const> const& config) {
  return Vek::make<VekConfig>(config, this);
}

Vek::Ptr<IntfConfig const> LinkFlapIntfSm::intfConfig() const {
  return intfConfig_.object();
}

void LinkFlapIntfSm::intfConfigIs(Vek::Ptr<IntfConfig const> const& intfConfig) {
  intfConfig_.objectIs(intfConfig, [this](auto const& object) { return newIntfConfig(object); });
}

Vek::Ptr<IntfConfig const> LinkFlapIntfSm::intfConfigDel() {
  return intfConfig_.objectDel();
}

Vek::Ptr<LinkFlapIntfSm::VekIntfConfig> LinkFlapIntfSm::newIntfConfig(
    Vek::Ptr<IntfConfig const> const& intfConfig) {
  return Vek::make<VekIntfConfig>(intfConfig, this);
}

void LinkFlapIntfSm::handleInitialized() {
  Trace::linkFlapIntfSmHandleInitialized(this, "::handleInitialized()");
  Assert::linkFlapIntfSmHandleInitialized(!initialized());
  initializedIs(true);
  auto const settings = intfConfig();
  if (!settings) return;
  for (auto const& profile : settings->profileList())
    handleProfileList(profile.key());
}

void LinkFlapIntfSm::handleLinkFlapValues() {
  Trace::handleLinkFlapValues(this, "::handleLinkFlapValues()");
  Assert::handleLinkFlapValues(initialized());
  // Deliberate: the test is on the name. A listed profile that is not configured runs on the global
  // values as well, but keeps its history.
  if (auto const builtIn = linkFlapProfileSm(builtInProfile())) builtIn->clearHistory();
}

void LinkFlapIntfSm::handleProfileList(Vek::String profileName) {
  Trace::handleProfileList(this, "::handleProfileList(", profileName, ")");
  Assert::handleProfileList(initialized());
  // Whichever member changed, the whole selection is made afresh.
  manageProfileSm(this);
}

void LinkFlapIntfSm::handleIntfConfigEnabled(Tarn::IntfId intfId) {
  Trace::handleIntfConfigEnabled(this, "::handleIntfConfigEnabled(", intfId, ")");
  Assert::handleIntfConfigEnabled(initialized());
  enableIs(intfConfig()->enabled());
  manageProfileSm(this);
}

void LinkFlapIntfSm::vek_handleIntfConfig_enabled() {
  handleIntfConfigEnabled(intfId());
}

void LinkFlapIntfSm::linkFlapProfileSmNotify(Vek::String /*name*/) {}

std::ostream& operator<<(std::ostream& out, LinkFlapIntfSm* sm) {
  return out << "LinkFlapIntfSm( " << (sm == nullptr ? Tarn::IntfId{} : sm->intfId()) << " )";
}

}  // namespace LinkFlap
