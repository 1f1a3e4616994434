#pragma once

#include <map>
#include <string>
#include <vector>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/tarn/IntfId.h"
#include "runtime/vek/Ptr.h"

#include "agent/PortPublisher.h"

/// Watches what is published, with the eyes of the state machines, and writes it down:
/// "+config et1", "+status et1", "-status et1", "-config et1" as members come and go,
/// "et1 down", "et1 flap" and "et1 up" (uncounted, since a configuration is in progress) as the
/// raw link status changes. A port in the status directory without its configuration is written
/// down as "et1 WITHOUT CONFIGURATION".
class PortRecorder {
 public:
  explicit PortRecorder(LinkFlapd::PortPublisher const& publisher);
  ~PortRecorder();

  /// What was written down since the last call.
  std::vector<std::string> take();
  /// How many flaps of a port were seen in all.
  unsigned flaps(std::string const& name) const;

 private:
  class ConfigWatcher;
  class StatusWatcher;
  class PortWatcher;

  void configChanged(Tarn::IntfId const& id);
  void statusChanged(Tarn::IntfId const& id);
  void linkChanged(Interface::EthPhyIntfStatus const& status);

  Vek::Ptr<Interface::AllEthPhyIntfConfigDir const> configDir_;
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir const> statusDir_;
  Vek::Ptr<ConfigWatcher> configWatcher_;
  Vek::Ptr<StatusWatcher> statusWatcher_;
  std::map<Tarn::IntfId, Vek::Ptr<PortWatcher>> ports_;
  std::vector<std::string> events_;
  std::map<std::string, unsigned> flaps_;
};
