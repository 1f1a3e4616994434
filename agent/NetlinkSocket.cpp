#include "agent/NetlinkSocket.h"

#include <cerrno>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <system_error>

namespace LinkFlapd {

namespace {

constexpr int kAmpleReceiveBuffer{1 << 20};  // some hundred link messages
constexpr std::size_t kReadSize{1 << 16};    // above the 32 KiB that the kernel puts into one read

[[noreturn]] void fail(char const* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void setReceiveBuffer(int descriptor, int wanted) {
  // The first form overrides the machine's limit and needs a privilege; the second is cut to it.
  if (::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUFFORCE, &wanted, sizeof wanted) == 0) return;
  if (::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &wanted, sizeof wanted) < 0)
    fail("cannot set the size of the receive buffer");
}

}  // namespace

NetlinkSocket::NetlinkSocket(std::optional<int> receiveBuffer)
    : socket_{mnl_socket_open2(NETLINK_ROUTE, SOCK_NONBLOCK | SOCK_CLOEXEC)}, buffer_(kReadSize) {
  if (socket_ == nullptr) fail("cannot open an rtnetlink socket");
  try {
    setReceiveBuffer(descriptor(), receiveBuffer.value_or(kAmpleReceiveBuffer));
    if (mnl_socket_bind(socket_, RTMGRP_LINK, MNL_SOCKET_AUTOPID) < 0)
      fail("cannot listen to link messages");
  } catch (...) {
    mnl_socket_close(socket_);
    throw;
  }
}

NetlinkSocket::~NetlinkSocket() {
  mnl_socket_close(socket_);
}

int NetlinkSocket::descriptor() const {
  return mnl_socket_get_fd(socket_);
}

std::uint32_t NetlinkSocket::portId() const {
  return mnl_socket_get_portid(socket_);
}

std::optional<std::uint32_t> NetlinkSocket::requestDump() {
  alignas(nlmsghdr) char request[MNL_NLMSG_HDRLEN + MNL_ALIGN(sizeof(ifinfomsg)) + MNL_ATTR_HDRLEN +
                                 MNL_ALIGN(sizeof(std::uint32_t))];
  nlmsghdr* const header = mnl_nlmsg_put_header(request);
  header->nlmsg_type = RTM_GETLINK;
  header->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  header->nlmsg_seq = ++sequence_;
  auto* const link = static_cast<ifinfomsg*>(mnl_nlmsg_put_extra_header(header, sizeof(ifinfomsg)));
  link->ifi_family = AF_UNSPEC;
  mnl_attr_put_u32(header, IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);  // nobody reads them here
  if (mnl_socket_sendto(socket_, header, header->nlmsg_len) >= 0) return sequence_;
  if (errno == ENOBUFS || errno == EAGAIN || errno == EBUSY || errno == EINTR) return std::nullopt;
  fail("cannot ask for a list of the links");
}

NetlinkSocket::Received NetlinkSocket::receive() {
  for (;;) {
    ssize_t const size = mnl_socket_recvfrom(socket_, buffer_.data(), buffer_.size());
    if (size > 0) {
      size_ = static_cast<std::size_t>(size);
      return Received::messages;
    }
    if (size == 0 || errno == EAGAIN) return Received::nothing;
    if (errno == EINTR) continue;
    // ENOSPC is libmnl's word for a message that was cut: it is lost as much as one that found no
    // room in the socket's buffer.
    if (errno == ENOBUFS || errno == ENOSPC) return Received::overrun;
    fail("cannot receive link messages");
  }
}

}  // namespace LinkFlapd
