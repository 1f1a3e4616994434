#pragma once

#include <cstdint>
#include <libmnl/libmnl.h>
#include <string>
#include <unordered_map>

namespace Bench {

/// What one would write on libmnl: a loop that reads each link message with all its attributes and
/// keeps a table of the links.
class PlainLoop {
 public:
  /// `receiveBuffer`: bytes, as the kernel counts them. Throws `std::system_error`.
  explicit PlainLoop(int receiveBuffer);
  ~PlainLoop();
  PlainLoop(PlainLoop const&) = delete;
  PlainLoop& operator=(PlainLoop const&) = delete;

  /// Reads all that waits; the number of link messages. Throws when some were lost.
  std::size_t drain();

  std::uint64_t changes() const { return changes_; }

 private:
  struct State {
    std::string name;
    std::string kind;
    bool adminUp{false};
    bool carrier{false};
    std::uint32_t carrierUpCount{0};
  };

  static int onMessage(nlmsghdr const* message, void* self);
  void take(nlmsghdr const& message);

  mnl_socket* socket_;
  std::unordered_map<int, State> links_;
  std::size_t messages_{0};
  std::uint64_t changes_{0};
};

}  // namespace Bench
