#include "agent/PortSwitch.h"

#include <array>
#include <cerrno>
#include <libmnl/libmnl.h>
#include <limits>
#include <linux/if.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <sys/socket.h>
#include <sys/time.h>
#include <system_error>

namespace LinkFlapd {

namespace {

[[noreturn]] void fail(int error, char const* what) {
  throw std::system_error(error, std::generic_category(), what);
}

struct Close {
  void operator()(mnl_socket* socket) const { mnl_socket_close(socket); }
};

/// Sends one request and returns the kernel's verdict, an error number or 0. The kernel carries the
/// request out before the answer is there to read.
///
/// A socket of its own for each request: the socket that listens must not see the answer.
int answerTo(nlmsghdr* request) {
  std::unique_ptr<mnl_socket, Close> const socket{mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC)};
  if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0)
    fail(errno, "cannot open an rtnetlink socket");
  timeval const limit{5, 0};
  ::setsockopt(mnl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  request->nlmsg_seq = 1;
  if (mnl_socket_sendto(socket.get(), request, request->nlmsg_len) < 0) return errno;
  alignas(nlmsghdr) std::array<char, 8192> answer{};
  ssize_t const size = mnl_socket_recvfrom(socket.get(), answer.data(), answer.size());
  if (size < 0) return errno;
  int const verdict = mnl_cb_run(answer.data(), static_cast<std::size_t>(size), 1,
                                 mnl_socket_get_portid(socket.get()), nullptr, nullptr);
  return verdict < 0 ? errno : 0;
}

int setDown(int index) {
  alignas(nlmsghdr) std::array<char, MNL_NLMSG_HDRLEN + MNL_ALIGN(sizeof(ifinfomsg))> buffer{};
  nlmsghdr* const request = mnl_nlmsg_put_header(buffer.data());
  request->nlmsg_type = RTM_NEWLINK;
  request->nlmsg_flags = NLM_F_REQUEST | NLM_F_ACK;
  auto* const link =
      static_cast<ifinfomsg*>(mnl_nlmsg_put_extra_header(request, sizeof(ifinfomsg)));
  link->ifi_family = AF_UNSPEC;
  link->ifi_index = index;
  link->ifi_change = IFF_UP;
  link->ifi_flags = 0;
  return answerTo(request);
}

}  // namespace

void KernelPortSwitch::shut(int index) {
  if (int const error = setDown(index); error != 0) fail(error, "cannot set the link down");
}

void KernelPortSwitch::checkPermission() {
  // No interface has this index: whoever may, hears that there is none.
  int const error = setDown(std::numeric_limits<int>::max());
  if (error != 0 && error != ENODEV) fail(error, "cannot shut ports (CAP_NET_ADMIN is needed)");
}

}  // namespace LinkFlapd
