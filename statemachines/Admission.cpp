#include "runtime/vek/Reinstantiation.h"

#include "statemachines/LinkFlapSm.h"
#include "statemachines/SourcePoints.h"

namespace LinkFlap {

/// Whether an interface is to be monitored.
///
/// Deliberate: the cause switch is not asked for an interface that has link-flap settings of its
/// own; such a one stays monitored while the cause is switched off.
bool LinkFlapSm::admissible(Tarn::IntfId const& intfId,
                            Vek::Ptr<IntfConfig const> const& lfIntfConfig) const {
  if (!ethPhyIntfConfigDir()->intfConfig(intfId)) return false;
  if (!ethPhyIntfStatusDir()->intfStatus(intfId)) return false;
  return lfIntfConfig || !errdisableConfig()->disabled(causeName_);
}

/// Ends the monitoring of an interface: its machines go, its err-disable record is withdrawn,
/// whether or not there were any.
void LinkFlapSm::withdraw(Tarn::IntfId const& intfId) {
  deleteLinkFlapIntfSm(this, intfId);
  causeStatus_->intfStatusDel(intfId);
}

/// The machine of an interface as all inputs now want it; empty when it is not to be monitored.
///
/// Both withdrawing a record and making a machine may call others (watchers of the record), who may
/// change the inputs and so end in this very function for the same interface. What was decided
/// before is then void: it is decided anew until the inputs hold still.
LinkFlapIntfSm::Ptr LinkFlapSm::admitted(Tarn::IntfId const& intfId) {
  for (;;) {
    auto const lfIntfConfig = config()->intfConfig(intfId);
    if (!admissible(intfId, lfIntfConfig)) {
      withdraw(intfId);
      return nullptr;
    }
    // Not counted: a machine that is withdrawn must be gone when its record's watchers hear of it.
    LinkFlapIntfSm const* const existing = linkFlapIntfSm_.find(intfId);
    if (existing != nullptr && existing->intfConfig() != lfIntfConfig) {
      withdraw(intfId);
      continue;
    }
    auto const status = ethPhyIntfStatusDir()->intfStatus(intfId);
    auto const phyConfig = ethPhyIntfConfigDir()->intfConfig(intfId);
    auto child = linkFlapIntfSmIs(status, config(), lfIntfConfig, phyConfig, causeStatus_);
    if (child.get() == existing || (config()->intfConfig(intfId) == lfIntfConfig &&
                                    ethPhyIntfStatusDir()->intfStatus(intfId) == status &&
                                    ethPhyIntfConfigDir()->intfConfig(intfId) == phyConfig &&
                                    admissible(intfId, lfIntfConfig)))
      return child;
    // Made from what has been replaced meanwhile.
    deleteLinkFlapIntfSm(this, child->fwkKey());
  }
}

void LinkFlapSm::handleIntf(Tarn::IntfId intfId) {
  Ptr const self{this};  // whoever hears of a withdrawn record may remove this machine
  Trace::handleIntf(this, "::handleIntf(", intfId, ")");
  Assert::handleIntf(initialized());
  auto const child = admitted(intfId);
  if (!child) return;
  auto const settings = child->intfConfig();
  child->enableIs(!settings || settings->enabled());
  manageProfileSm(child);
}

void deleteLinkFlapIntfSm(LinkFlapSm::Ptr sm, Tarn::IntfId intfId) {
  Trace::deleteLinkFlapIntfSm("deleteLinkFlapIntfSm(", intfId, ")");
  auto const child = sm->linkFlapIntfSm(intfId);
  if (!child) return;
  child->linkFlapProfileSmDelAll();
  sm->linkFlapIntfSmDel(intfId);
}

LinkFlapIntfSm::Ptr LinkFlapSm::linkFlapIntfSm(Tarn::IntfId const& intfId) const {
  return linkFlapIntfSm_[intfId];
}

LinkFlapIntfSm::Ptr LinkFlapSm::linkFlapIntfSmIs(
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
    Vek::Ptr<Config const> const& config, Vek::Ptr<IntfConfig const> const& intfConfig,
    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus) {
  auto child = linkFlapIntfSm(ethPhyIntfStatus ? ethPhyIntfStatus->intfId() : Tarn::IntfId{});
  if (!child) {
    child = newLinkFlapIntfSm(ethPhyIntfStatus, config, intfConfig, ethPhyIntfConfig, causeStatus);
    child->hasNotificationActiveIs(true);
    return child;
  }
  Vek::requireSame("_ethPhyIntfStatus", ethPhyIntfStatus, child->ethPhyIntfStatus());
  Vek::requireSame("_config", config, child->config());
  Vek::requireSame("_intfConfig", intfConfig, child->intfConfig());
  Vek::requireSame("_ethPhyIntfConfig", ethPhyIntfConfig, child->ethPhyIntfConfig());
  Vek::requireSame("_causeStatus", causeStatus, child->causeStatus());
  return child;
}

LinkFlapIntfSm::Ptr LinkFlapSm::newLinkFlapIntfSm(
    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
    Vek::Ptr<Config const> const& config, Vek::Ptr<IntfConfig const> const& intfConfig,
    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus) {
  auto child = LinkFlapIntfSm::LinkFlapIntfSmIs(ethPhyIntfStatus, config, intfConfig,
                                                ethPhyIntfConfig, causeStatus);
  linkFlapIntfSm_.newMember(child);
  return child;
}

LinkFlapIntfSm::Ptr LinkFlapSm::linkFlapIntfSmDel(Tarn::IntfId const& intfId) {
  return linkFlapIntfSm_.deleteMember(intfId);
}

LinkFlapIntfSm::Ptr LinkFlapSm::linkFlapIntfSmDel(IntfSms::Iterator& position) {
  return linkFlapIntfSm_.deleteMember(position);
}

void LinkFlapSm::linkFlapIntfSmDelAll() {
  for (auto machine = linkFlapIntfSm_.iterator(); machine; ++machine)
    linkFlapIntfSmDel(machine);
}

}  // namespace LinkFlap
