#include "bench/netlink/Link.h"

#include <cerrno>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <system_error>

namespace Bench {

namespace {

[[noreturn]] void fail(char const* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

Link::Link(char const* name)
    : socket_{mnl_socket_open(NETLINK_ROUTE)}, index_{static_cast<int>(if_nametoindex(name))} {
  if (socket_ == nullptr) fail("no rtnetlink socket");
  if (index_ == 0) fail(name);
}

Link::~Link() {
  mnl_socket_close(socket_);
}

void Link::upIs(bool up) {
  alignas(nlmsghdr) char request[MNL_NLMSG_HDRLEN + MNL_ALIGN(sizeof(ifinfomsg))];
  nlmsghdr* const header = mnl_nlmsg_put_header(request);
  header->nlmsg_type = RTM_NEWLINK;
  header->nlmsg_flags = NLM_F_REQUEST;
  auto* const link = static_cast<ifinfomsg*>(mnl_nlmsg_put_extra_header(header, sizeof(ifinfomsg)));
  link->ifi_index = index_;
  link->ifi_change = IFF_UP;
  link->ifi_flags = up ? IFF_UP : 0;
  if (mnl_socket_sendto(socket_, header, header->nlmsg_len) < 0) fail("cannot switch a link");
}

}  // namespace Bench
