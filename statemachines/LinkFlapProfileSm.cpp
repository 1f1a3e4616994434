#include "statemachines/LinkFlapProfileSm.h"

#include "statemachines/SourcePoints.h"

namespace LinkFlap {

LinkFlapProfileSm::LinkFlapProfileSm(
    Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
    Vek::Ptr<Config const> const& config,
    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus, LinkFlapIntfSm* intfSm)
    : profileName_{std::move(profileName)},
      config_{config},
      ethPhyIntfConfig_{ethPhyIntfConfig},
      causeStatus_{causeStatus},
      intfSm_{intfSm} {
  if (profileConfig) profileConfig_.reactorIs(newProfileConfig(profileConfig));
  if (ethPhyIntfStatus) ethPhyIntfStatus_.reactorIs(newEthPhyIntfStatus(ethPhyIntfStatus));
  handleInitialized();
}

LinkFlapProfileSm::Ptr LinkFlapProfileSm::LinkFlapProfileSmIs(
    Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
    Vek::Ptr<Config const> const& config,
    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus, LinkFlapIntfSm* intfSm) {
  auto sm = Vek::make<LinkFlapProfileSm>(std::move(profileName), profileConfig, config,
                                         ethPhyIntfConfig, ethPhyIntfStatus, causeStatus, intfSm);
  sm->hasNotificationActiveIs(true);
  return sm;
}

LinkFlapProfileSm::~LinkFlapProfileSm() {
  // Order: silence the reactors before any member goes, so that none can call back into a husk.
  vekDoZombieReactors(true);
  forEachReactor([](auto& reactor) { reactor.linkFlapProfileSmIs(nullptr); });
}

/// Calls `visit` on each reactor that exists: the one place that states their order.
template <typename Visit>
void LinkFlapProfileSm::forEachReactor(Visit visit) {
  if (profileConfig_.reactor() != nullptr) visit(*profileConfig_.reactor());
  if (ethPhyIntfStatus_.reactor() != nullptr) visit(*ethPhyIntfStatus_.reactor());
}

void LinkFlapProfileSm::hasNotificationActiveIs(bool on) {
  notificationActiveFlagIs(on);
  forEachReactor([on](auto& reactor) { reactor.hasNotificationActiveIs(on); });
}

void LinkFlapProfileSm::vekDoZombieReactors(bool on) {
  forEachReactor([on](auto& reactor) { reactor.vekDoZombieReactors(on); });
  vekMarkedForDeletionIs(on);
}

Tarn::IntfId LinkFlapProfileSm::intfId() const {
  Interface::EthPhyIntfStatus const* const status = ethPhyIntfStatus_.get();
  return status == nullptr ? Tarn::IntfId{} : status->intfId();
}

Vek::Ptr<ProfileConfig const> LinkFlapProfileSm::profileConfig() const {
  return profileConfig_.object();
}

void LinkFlapProfileSm::profileConfigIs(Vek::Ptr<ProfileConfig const> const& profileConfig) {
  profileConfig_.objectIs(profileConfig,
                          [this](auto const& object) { return newProfileConfig(object); });
}

Vek::Ptr<ProfileConfig const> LinkFlapProfileSm::profileConfigDel() {
  return profileConfig_.objectDel();
}

Vek::Ptr<LinkFlapProfileSm::VekProfileConfig> LinkFlapProfileSm::newProfileConfig(
    Vek::Ptr<ProfileConfig const> const& profileConfig) {
  return Vek::make<VekProfileConfig>(profileConfig, this);
}

Vek::Ptr<Interface::EthPhyIntfStatus const> LinkFlapProfileSm::ethPhyIntfStatus() const {
  return ethPhyIntfStatus_.object();
}

void LinkFlapProfileSm::ethPhyIntfStatusIs(
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus) {
  ethPhyIntfStatus_.objectIs(ethPhyIntfStatus,
                             [this](auto const& object) { return newEthPhyIntfStatus(object); });
}

Vek::Ptr<Interface::EthPhyIntfStatus const> LinkFlapProfileSm::ethPhyIntfStatusDel() {
  return ethPhyIntfStatus_.objectDel();
}

Vek::Ptr<LinkFlapProfileSm::VekEthPhyIntfStatus> LinkFlapProfileSm::newEthPhyIntfStatus(
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus) {
  return Vek::make<VekEthPhyIntfStatus>(ethPhyIntfStatus, this);
}

void LinkFlapProfileSm::handleInitialized() {
  Trace::linkFlapProfileSmHandleInitialized(static_cast<void const*>(this),
                                            "::handleInitialized()");
  Assert::linkFlapProfileSmHandleInitialized(!initialized());
  initializedIs(true);
}

void LinkFlapProfileSm::handleProfileValues(Vek::String profileName, Tarn::IntfId intfId) {
  Trace::handleProfileValues(static_cast<void const*>(this), "::handleProfileValues(", profileName,
                             ", ", intfId, ")");
  Assert::handleProfileValues(initialized());
  clearHistory();
}

void LinkFlapProfileSm::clearHistory() {
  linkFlapTimeStampDelAll();
  curFlapsIs(0);
  curIntervalsIs(0);
  curViolationsIs(0);
}

void LinkFlapProfileSm::vek_handleProfileConfig_maxFlaps() {
  restartCounting();
}

void LinkFlapProfileSm::vek_handleProfileConfig_interval() {
  restartCounting();
}

void LinkFlapProfileSm::vek_handleProfileConfig_violations() {
  restartCounting();
}

void LinkFlapProfileSm::vek_handleProfileConfig_trackedIntervals() {
  restartCounting();
}

void LinkFlapProfileSm::restartCounting() {
  auto const profile = profileConfig();
  handleProfileValues(profile ? profile->name().string() : Vek::String{}, intfId());
}

}  // namespace LinkFlap
