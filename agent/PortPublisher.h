#pragma once

#include <map>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/tarn/IntfId.h"
#include "runtime/vek/Ptr.h"

namespace LinkFlapd {

/// The state objects that tell the library of ports.
///
/// A port is in the status directory only while it is in the configuration directory: the state
/// machines require it. Only `flap` ever publishes a change that counts as a flap.
class PortPublisher {
 public:
  PortPublisher();

  Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> configDir() const { return configDir_; }
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> statusDir() const { return statusDir_; }

  void add(Tarn::IntfId const& id, bool configInProgress, bool linkUp);
  void remove(Tarn::IntfId const& id);

  /// One return to up: the link goes down, unless it is down, and up. No configuration is in
  /// progress.
  void flap(Tarn::IntfId const& id);
  /// Brings a port to a state without a flap.
  void settle(Tarn::IntfId const& id, bool configInProgress, bool linkUp);

 private:
  struct Objects {
    Vek::Ptr<Interface::EthPhyIntfConfig> config;
    Vek::Ptr<Interface::EthPhyIntfStatus> status;
  };

  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir_;
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir_;
  std::map<Tarn::IntfId, Objects> ports_;
};

}  // namespace LinkFlapd
