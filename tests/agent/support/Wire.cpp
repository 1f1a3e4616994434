#include "tests/agent/support/Wire.h"

#include <array>
#include <libmnl/libmnl.h>
#include <linux/if.h>

namespace Wire {

namespace {

/// The start of a message in `buffer`, aligned as netlink asks.
nlmsghdr* begin(std::array<char, 4096>& buffer, Envelope const& envelope) {
  nlmsghdr* const header = mnl_nlmsg_put_header(buffer.data());
  header->nlmsg_type = envelope.type;
  header->nlmsg_flags = envelope.flags;
  header->nlmsg_seq = envelope.sequence;
  header->nlmsg_pid = envelope.portId;
  return header;
}

Bytes finished(nlmsghdr const* header) {
  auto const* const first = reinterpret_cast<char const*>(header);
  Bytes bytes{first, first + header->nlmsg_len};
  bytes.resize(MNL_ALIGN(bytes.size()));
  return bytes;
}

}  // namespace

Bytes message(Link const& link, Envelope const& envelope) {
  alignas(nlmsghdr) std::array<char, 4096> buffer{};
  nlmsghdr* const header = begin(buffer, envelope);
  auto* const info = static_cast<ifinfomsg*>(mnl_nlmsg_put_extra_header(header, sizeof(ifinfomsg)));
  info->ifi_family = envelope.family;
  info->ifi_type = link.hardwareType;
  info->ifi_index = link.index;
  if (link.up) info->ifi_flags |= IFF_UP;
  if (link.lowerUp) info->ifi_flags |= IFF_LOWER_UP;
  if (!link.name.empty()) mnl_attr_put_strz(header, IFLA_IFNAME, link.name.c_str());
  if (link.wireless) mnl_attr_put_u32(header, IFLA_WIRELESS, 0);
  if (link.carrier) mnl_attr_put_u8(header, IFLA_CARRIER, *link.carrier ? 1 : 0);
  if (link.count) mnl_attr_put_u32(header, IFLA_CARRIER_UP_COUNT, *link.count);
  if (!link.kind.empty() || !link.memberOf.empty()) {
    nlattr* const nest = mnl_attr_nest_start(header, IFLA_LINKINFO);
    if (!link.kind.empty()) mnl_attr_put_strz(header, IFLA_INFO_KIND, link.kind.c_str());
    if (!link.memberOf.empty())
      mnl_attr_put_strz(header, IFLA_INFO_SLAVE_KIND, link.memberOf.c_str());
    mnl_attr_nest_end(header, nest);
  }
  return finished(header);
}

Bytes verdict(int code, Envelope const& envelope) {
  alignas(nlmsghdr) std::array<char, 4096> buffer{};
  nlmsghdr* const header = begin(buffer, envelope);
  *static_cast<int*>(mnl_nlmsg_put_extra_header(header, sizeof(int))) = code;
  return finished(header);
}

Bytes joined(std::initializer_list<Bytes> messages) {
  Bytes all;
  for (Bytes const& bytes : messages)
    all.insert(all.end(), bytes.begin(), bytes.end());
  return all;
}

}  // namespace Wire
