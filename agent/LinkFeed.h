#pragma once

#include <cstddef>
#include <cstdint>

namespace LinkFlapd {

class LinkMonitor;

/// The rtnetlink conversation, without its socket: it sorts what arrives into announced changes and
/// replies to a dump, and says when a dump is needed.
///
/// A dump is needed at the start, after messages were lost, and again when the kernel marks a dump
/// as interrupted (the list of interfaces changed under it). Announcements and dump replies come
/// through one socket, hence in the order in which the kernel made them.
class LinkFeed {
 public:
  /// Ownership: `monitor` outlives the feed.
  explicit LinkFeed(LinkMonitor& monitor) : monitor_{monitor} {}

  /// Whether a dump is to be requested now.
  bool dumpWanted() const { return wanted_ && !running_; }
  /// The request is sent; `sequence` and `portId` mark its replies.
  void dumpRequested(std::uint32_t sequence, std::uint32_t portId);

  /// What one read from the socket gave: some whole netlink messages. Throws `std::system_error`
  /// when the kernel refuses the dump for good.
  void received(void const* data, std::size_t size);
  /// The socket's buffer overran: messages were lost.
  void overrun();

  /// Whether every interface has been told since the start or the last loss.
  bool inSync() const { return !wanted_ && !running_; }

 private:
  void dumpDone(int error);

  LinkMonitor& monitor_;
  bool wanted_{true};
  bool running_{false};
  bool disturbed_{false};  ///< the running dump was interrupted, or messages were lost during it
  std::uint32_t sequence_{0};
  std::uint32_t portId_{0};
};

}  // namespace LinkFlapd
