#pragma once

#include <string>
#include <vector>

#include "agent/LinkFeed.h"
#include "agent/LinkMonitor.h"
#include "agent/PortPublisher.h"

#include "tests/agent/support/PortRecorder.h"
#include "tests/agent/support/Wire.h"

/// The host's intake without its socket, at the mercy of the test: what the kernel says, and what
/// becomes of it.
class Kernel {
 public:
  static constexpr std::uint32_t kPortId{4711};

  explicit Kernel(std::vector<std::string> patterns = {})
      : recorder{publisher},
        monitor{LinkFlapd::InterfaceFilter{std::move(patterns)}, publisher},
        feed{monitor} {}

  /// The kernel announces a change.
  void says(Wire::Link const& link) { receive(Wire::message(link)); }
  void removes(Wire::Link const& link) { receive(Wire::message(link, {.type = RTM_DELLINK})); }
  void receive(Wire::Bytes const& bytes) { feed.received(bytes.data(), bytes.size()); }

  /// A dump that the host asked for, whole.
  void dumps(std::vector<Wire::Link> const& links) {
    dumpBegins();
    for (Wire::Link const& link : links)
      dumpSays(link);
    dumpEnds();
  }
  void dumpBegins() { feed.dumpRequested(++sequence, kPortId); }
  void dumpSays(Wire::Link const& link, std::uint16_t flags = 0) {
    receive(Wire::message(link, reply(RTM_NEWLINK, flags)));
  }
  void dumpEnds(int error = 0, std::uint16_t flags = 0) {
    receive(Wire::verdict(error, reply(NLMSG_DONE, flags)));
  }
  Wire::Envelope reply(std::uint16_t type, std::uint16_t flags = 0) const {
    return {.type = type,
            .flags = static_cast<std::uint16_t>(NLM_F_MULTI | flags),
            .sequence = sequence,
            .portId = kPortId};
  }

  LinkFlapd::PortPublisher publisher;
  PortRecorder recorder;
  LinkFlapd::LinkMonitor monitor;
  LinkFlapd::LinkFeed feed;
  std::uint32_t sequence{0};
};
