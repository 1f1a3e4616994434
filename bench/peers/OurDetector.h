#pragma once

#include <optional>
#include <vector>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapSm.h"
#include "statemachines/Root.h"

#include "bench/harness/SteppedClock.h"
#include "bench/peers/Limits.h"

namespace Bench {

/// The library with what a host publishes for it, behind the same few functions as the peers.
/// The clock is the process's: all that live at a time have the same one.
class OurDetector {
 public:
  using Handle = Vek::Ptr<Interface::EthPhyIntfStatus>;

  OurDetector(Setup const& setup, ClockFunction clock);
  ~OurDetector();
  OurDetector(OurDetector const&) = delete;
  OurDetector& operator=(OurDetector const&) = delete;

  Handle handle(std::size_t index) const { return statuses_[index]; }

  void linkIs(Handle const& port, Link link) {
    port->rawLinkStatusIs(static_cast<Interface::RawLinkStatus>(link));
  }
  void configInProgressIs(Handle const& port, bool on);
  void profileIs(std::size_t profile, Limits const& limits);
  std::optional<double> errDisabledAt(Handle const& port) const;
  void errDisabledDel(Handle const& port) { causeStatus_->intfStatusDel(port->intfId()); }
  Counted counted(std::size_t index, std::size_t profile) const;

 private:
  Vek::Ptr<Vek::ActivityConfig> activity_;
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir_;
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir_;
  Vek::Ptr<Errdisable::Config> errdisableConfig_;
  Vek::Ptr<LinkFlap::Config> config_;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  std::vector<Vek::Ptr<LinkFlap::ProfileConfig>> profiles_;
  std::vector<Vek::String> profileNames_;
  std::vector<Handle> statuses_;
  std::vector<Vek::Ptr<Interface::EthPhyIntfConfig>> configs_;
  LinkFlap::Root::Ptr root_;
};

}  // namespace Bench
