#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

struct mnl_socket;

namespace LinkFlapd {

/// The rtnetlink socket on which the kernel announces link changes and answers dumps.
/// It never blocks. Errors are thrown as `std::system_error`.
class NetlinkSocket {
 public:
  enum class Received { nothing, messages, overrun };

  /// `receiveBuffer`: bytes asked for, doubled and bounded by the kernel's own rules; nothing asks
  /// for a size that rides out a storm.
  explicit NetlinkSocket(std::optional<int> receiveBuffer = {});
  ~NetlinkSocket();
  NetlinkSocket(NetlinkSocket const&) = delete;
  NetlinkSocket& operator=(NetlinkSocket const&) = delete;

  int descriptor() const;
  std::uint32_t portId() const;

  /// Asks for a dump of all links; the sequence number of its replies, or nothing when the kernel
  /// has no room just now.
  std::optional<std::uint32_t> requestDump();

  /// One read. After `messages`, they are in `data()`, `size()`, until the next one.
  Received receive();
  void const* data() const { return buffer_.data(); }
  std::size_t size() const { return size_; }

 private:
  mnl_socket* socket_;
  std::vector<char> buffer_;
  std::size_t size_{0};
  std::uint32_t sequence_{0};
};

}  // namespace LinkFlapd
