#include "bench/netlink/PlainLoop.h"

#include <cerrno>
#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <system_error>

namespace Bench {

namespace {

[[noreturn]] void fail(char const* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

struct Table {
  nlattr const* of[IFLA_MAX + 1];
};
struct InfoTable {
  nlattr const* of[IFLA_INFO_MAX + 1];
};

/// Keeps an attribute that has the size of its type.
int keep(nlattr const* attribute, void* data) {
  if (mnl_attr_type_valid(attribute, IFLA_MAX) < 0) return MNL_CB_OK;
  std::uint16_t const type = mnl_attr_get_type(attribute);
  int valid = 0;
  switch (type) {
    case IFLA_IFNAME:
    case IFLA_QDISC:
    case IFLA_IFALIAS:
      valid = mnl_attr_validate(attribute, MNL_TYPE_NUL_STRING);
      break;
    case IFLA_MTU:
    case IFLA_LINK:
    case IFLA_MASTER:
    case IFLA_TXQLEN:
    case IFLA_GROUP:
    case IFLA_CARRIER_CHANGES:
    case IFLA_CARRIER_UP_COUNT:
    case IFLA_CARRIER_DOWN_COUNT:
      valid = mnl_attr_validate(attribute, MNL_TYPE_U32);
      break;
    case IFLA_CARRIER:
    case IFLA_OPERSTATE:
    case IFLA_LINKMODE:
      valid = mnl_attr_validate(attribute, MNL_TYPE_U8);
      break;
    case IFLA_LINKINFO:
      valid = mnl_attr_validate(attribute, MNL_TYPE_NESTED);
      break;
    default:
      break;
  }
  if (valid < 0) return MNL_CB_ERROR;
  static_cast<Table*>(data)->of[type] = attribute;
  return MNL_CB_OK;
}

int keepInfo(nlattr const* attribute, void* data) {
  if (mnl_attr_type_valid(attribute, IFLA_INFO_MAX) >= 0)
    static_cast<InfoTable*>(data)->of[mnl_attr_get_type(attribute)] = attribute;
  return MNL_CB_OK;
}

}  // namespace

PlainLoop::PlainLoop(int receiveBuffer)
    : socket_{mnl_socket_open2(NETLINK_ROUTE, SOCK_NONBLOCK | SOCK_CLOEXEC)} {
  if (socket_ == nullptr) fail("no rtnetlink socket");
  int const half = receiveBuffer / 2;  // the kernel doubles what it is asked for
  int const descriptor = mnl_socket_get_fd(socket_);
  if (::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUFFORCE, &half, sizeof half) < 0 &&
      ::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &half, sizeof half) < 0)
    fail("cannot set the size of the receive buffer");
  if (mnl_socket_bind(socket_, RTMGRP_LINK, MNL_SOCKET_AUTOPID) < 0) fail("cannot listen");
}

PlainLoop::~PlainLoop() {
  mnl_socket_close(socket_);
}

std::size_t PlainLoop::drain() {
  alignas(nlmsghdr) char buffer[32768];
  messages_ = 0;
  for (;;) {
    ssize_t const size = mnl_socket_recvfrom(socket_, buffer, sizeof buffer);
    if (size <= 0) {
      if (size == 0 || errno == EAGAIN) return messages_;
      fail("the plain loop lost messages");
    }
    if (mnl_cb_run(buffer, static_cast<std::size_t>(size), 0, 0, onMessage, this) < 0)
      fail("a message that is none");
  }
}

int PlainLoop::onMessage(nlmsghdr const* message, void* self) {
  static_cast<PlainLoop*>(self)->take(*message);
  return MNL_CB_OK;
}

void PlainLoop::take(nlmsghdr const& message) {
  if (message.nlmsg_type != RTM_NEWLINK) return;
  ++messages_;
  Table attributes{};
  if (mnl_attr_parse(&message, sizeof(ifinfomsg), keep, &attributes) < 0) return;
  auto const& header = *static_cast<ifinfomsg const*>(mnl_nlmsg_get_payload(&message));
  State& held = links_[header.ifi_index];

  if (auto const* const name = attributes.of[IFLA_IFNAME]) held.name = mnl_attr_get_str(name);
  if (auto const* const linkInfo = attributes.of[IFLA_LINKINFO]) {
    InfoTable info{};
    mnl_attr_parse_nested(linkInfo, keepInfo, &info);
    if (auto const* const kind = info.of[IFLA_INFO_KIND]) held.kind = mnl_attr_get_str(kind);
  }
  if (auto const* const count = attributes.of[IFLA_CARRIER_UP_COUNT])
    held.carrierUpCount = mnl_attr_get_u32(count);
  bool const adminUp = (header.ifi_flags & IFF_UP) != 0;
  bool const carrier = attributes.of[IFLA_CARRIER] != nullptr
                           ? mnl_attr_get_u8(attributes.of[IFLA_CARRIER]) != 0
                           : (header.ifi_flags & IFF_LOWER_UP) != 0;
  if (held.adminUp != adminUp || held.carrier != carrier) ++changes_;
  held.adminUp = adminUp;
  held.carrier = carrier;
}

}  // namespace Bench
