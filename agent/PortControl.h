#pragma once

#include <map>
#include <string>
#include <vector>

#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/tarn/IntfId.h"
#include "runtime/vek/Ptr.h"

#include "agent/LinkMonitor.h"

namespace LinkFlapd {

class ErrDisableTrace;
class Journal;
class PortSwitch;

/// Acts on the err-disable record: shuts ports, says what was done, and withdraws the record of a
/// port that the operator sets up again.
class PortControl final : public LinkMonitor::Listener {
 public:
  struct Surroundings {
    LinkMonitor& monitor;
    ErrDisableTrace& trace;
    Journal& journal;
    PortSwitch* portSwitch;  ///< null: monitor only, ports are left up
  };

  /// Ownership: what it is given outlives it, except for the state objects, which it shares.
  PortControl(Vek::Ptr<Errdisable::CauseStatus> const& causeStatus,
              Vek::Ptr<LinkFlap::Config const> const& config, Surroundings const& surroundings);
  ~PortControl();
  PortControl(PortControl const&) = delete;
  PortControl& operator=(PortControl const&) = delete;

  /// The names of the ports that this host shut and that are shut still, in order.
  std::vector<std::string> shutPorts() const;

  void portAdminUp(Port const& port) override;
  void portAdded(Port const& port) override;
  void portRemoved(Port const& port, std::string const& renamedTo) override;

 private:
  class Watcher;

  void recordChanged(Tarn::IntfId const& id);
  std::string reason() const;
  std::string act(Tarn::IntfId const& id);

  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  Vek::Ptr<LinkFlap::Config const> config_;
  Surroundings with_;
  std::map<int, std::string> shut_;  ///< the names of the ports that we shut, by interface index
  Vek::Ptr<Watcher> watcher_;
};

}  // namespace LinkFlapd
