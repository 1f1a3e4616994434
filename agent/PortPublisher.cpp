#include "agent/PortPublisher.h"

namespace LinkFlapd {

namespace {

Interface::PhyConfigState configState(bool inProgress) {
  return inProgress ? Interface::PhyConfigState::inProgress : Interface::PhyConfigState::configured;
}

Interface::RawLinkStatus linkStatus(bool up) {
  return up ? Interface::RawLinkStatus::up : Interface::RawLinkStatus::down;
}

}  // namespace

PortPublisher::PortPublisher()
    : configDir_{Vek::make<Interface::AllEthPhyIntfConfigDir>()},
      statusDir_{Vek::make<Interface::AllEthPhyIntfStatusDir>()} {}

void PortPublisher::add(Tarn::IntfId const& id, bool configInProgress, bool linkUp) {
  Objects const port{Vek::make<Interface::EthPhyIntfConfig>(id),
                     Vek::make<Interface::EthPhyIntfStatus>(id)};
  port.config->phyConfigStateIs(configState(configInProgress));
  port.status->rawLinkStatusIs(linkStatus(linkUp));
  ports_.insert_or_assign(id, port);
  // Order: the configuration first, so that no walk over the status directory ever meets a port
  // without one.
  configDir_->intfConfigIs(id, port.config);
  statusDir_->intfStatusIs(id, port.status);
}

void PortPublisher::remove(Tarn::IntfId const& id) {
  ports_.erase(id);
  statusDir_->intfStatusDel(id);
  configDir_->intfConfigDel(id);
}

void PortPublisher::flap(Tarn::IntfId const& id) {
  Vek::Ptr<Interface::EthPhyIntfStatus> const status = ports_.at(id).status;
  status->rawLinkStatusIs(linkStatus(false));
  status->rawLinkStatusIs(linkStatus(true));
}

void PortPublisher::settle(Tarn::IntfId const& id, bool configInProgress, bool linkUp) {
  Objects const port = ports_.at(id);
  // A change to up would count unless a configuration is in progress while it is told.
  if (configInProgress || linkUp) port.config->phyConfigStateIs(configState(true));
  port.status->rawLinkStatusIs(linkStatus(linkUp));
  port.config->phyConfigStateIs(configState(configInProgress));
}

}  // namespace LinkFlapd
