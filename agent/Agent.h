#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>

#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Activity.h"

#include "statemachines/Root.h"

#include "agent/ErrDisableTrace.h"
#include "agent/Journal.h"
#include "agent/LinkFeed.h"
#include "agent/LinkMonitor.h"
#include "agent/NetlinkSocket.h"
#include "agent/Options.h"
#include "agent/PortControl.h"
#include "agent/PortPublisher.h"
#include "agent/PortReporter.h"
#include "agent/PortSwitch.h"
#include "agent/Signals.h"

namespace LinkFlapd {

/// The host: owns the state objects, the library's root and the loop, and wires them.
///
/// What comes from the kernel becomes a setter of a state object; what is done to a port follows
/// from a notification of one. One thread, one loop; notifications are delivered at once.
class Agent {
 public:
  /// Events go to `events`, the library's trace to `trace`; both outlive the agent. Throws
  /// `std::system_error` when the kernel does not give what is needed.
  Agent(Options const& options, std::ostream& events, std::ostream& trace);
  ~Agent();

  /// Runs until a signal ends it.
  void run();

 private:
  void readKernel();
  void requestDump();
  void inSync();
  void end(std::string const& signal);

  /// The objects at which the tree of `dumpTree` begins, by name.
  std::map<std::string, Vek::Ptr<Vek::PtrInterface const>> tree() const;

  Options options_;
  Signals signals_;
  std::ostream& events_;
  Journal journal_;

  Vek::Ptr<LinkFlap::Config> config_;
  Vek::Ptr<Errdisable::Config> errdisableConfig_;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  PortPublisher publisher_;

  ErrDisableTrace trace_;
  KernelPortSwitch portSwitch_;
  LinkMonitor monitor_;
  PortReporter reporter_;
  std::optional<PortControl> control_;
  LinkFeed feed_;
  NetlinkSocket socket_;
  bool ready_{false};  ///< the first dump is complete

  Vek::Ptr<Vek::ActivityConfig> activity_;
  Vek::Ptr<LinkFlap::Root> root_;
};

}  // namespace LinkFlapd
