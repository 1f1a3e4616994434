#pragma once

#include <vector>

#include "statemachines/LinkFlapSm.h"
#include "statemachines/Root.h"

#include "bench/peers/Limits.h"

namespace Bench {

/// What a host publishes for a switch of so many interfaces; they are made, but not published, and
/// no machine is installed.
struct Chassis {
  explicit Chassis(std::size_t interfaces) {
    for (std::size_t i = 0; i < interfaces; ++i) {
      ids.emplace_back(interfaceName(i).c_str());
      configs.push_back(Vek::make<Interface::EthPhyIntfConfig>(ids.back()));
      statuses.push_back(Vek::make<Interface::EthPhyIntfStatus>(ids.back()));
    }
  }

  void publish(std::size_t index) {
    configDir->intfConfigIs(ids[index], configs[index]);
    statusDir->intfStatusIs(ids[index], statuses[index]);
  }
  void withdraw(std::size_t index) {
    statusDir->intfStatusDel(ids[index]);
    configDir->intfConfigDel(ids[index]);
  }
  void publishAll() {
    for (std::size_t i = 0; i < ids.size(); ++i)
      publish(i);
  }
  void install() {
    root->linkFlapSmIs(activity, configDir, statusDir, errdisableConfig, config, causeStatus,
                       causeName);
  }
  void remove() { root->linkFlapSmDel(); }

  Vek::String const causeName{"link-flap"};
  Vek::Ptr<Vek::ActivityConfig> activity{Vek::make<Vek::ActivityConfig>()};
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir{
      Vek::make<Interface::AllEthPhyIntfConfigDir>()};
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir{
      Vek::make<Interface::AllEthPhyIntfStatusDir>()};
  Vek::Ptr<Errdisable::Config> errdisableConfig{Vek::make<Errdisable::Config>()};
  Vek::Ptr<LinkFlap::Config> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus{Vek::make<Errdisable::CauseStatus>()};
  std::vector<Tarn::IntfId> ids;
  std::vector<Vek::Ptr<Interface::EthPhyIntfConfig>> configs;
  std::vector<Vek::Ptr<Interface::EthPhyIntfStatus>> statuses;
  LinkFlap::Root::Ptr root{LinkFlap::rootFactory("bench")};
};

}  // namespace Bench
