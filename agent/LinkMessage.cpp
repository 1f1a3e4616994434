#include "agent/LinkMessage.h"

#include <array>
#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace LinkFlapd {

namespace {

using Attributes = std::array<nlattr const*, IFLA_MAX + 1>;

int keep(nlattr const* attribute, void* table) {
  std::uint16_t const type = mnl_attr_get_type(attribute);
  if (type <= IFLA_MAX) (*static_cast<Attributes*>(table))[type] = attribute;
  return MNL_CB_OK;
}

/// The attribute, if it is there and long enough for its type.
nlattr const* valid(Attributes const& attributes, int type, mnl_attr_data_type dataType) {
  nlattr const* const attribute = attributes[static_cast<std::size_t>(type)];
  return attribute != nullptr && mnl_attr_validate(attribute, dataType) >= 0 ? attribute : nullptr;
}

/// Hardware that belongs to a bridge or a bond has link information too, but no kind of its own.
std::string kindIn(nlattr const* linkInfo) {
  std::string kind;
  auto const take = [](nlattr const* attribute, void* result) {
    if (mnl_attr_get_type(attribute) == IFLA_INFO_KIND &&
        mnl_attr_validate(attribute, MNL_TYPE_NUL_STRING) >= 0)
      *static_cast<std::string*>(result) = mnl_attr_get_str(attribute);
    return MNL_CB_OK;
  };
  mnl_attr_parse_nested(linkInfo, take, &kind);
  return kind;
}

}  // namespace

std::optional<LinkMessage> parseLinkMessage(nlmsghdr const& message) {
  if (message.nlmsg_type != RTM_NEWLINK && message.nlmsg_type != RTM_DELLINK) return std::nullopt;
  if (message.nlmsg_len < mnl_nlmsg_size(sizeof(ifinfomsg))) return std::nullopt;
  auto const& header = *static_cast<ifinfomsg const*>(mnl_nlmsg_get_payload(&message));
  if (header.ifi_family != AF_UNSPEC) return std::nullopt;

  Attributes attributes{};
  mnl_attr_parse(&message, sizeof(ifinfomsg), keep, &attributes);
  nlattr const* const name = valid(attributes, IFLA_IFNAME, MNL_TYPE_NUL_STRING);
  if (name == nullptr || attributes[IFLA_WIRELESS] != nullptr) return std::nullopt;

  LinkMessage result;
  result.removed = message.nlmsg_type == RTM_DELLINK;
  LinkState& link = result.link;
  link.index = header.ifi_index;
  link.name = mnl_attr_get_str(name);
  link.hardwareType = header.ifi_type;
  link.adminUp = (header.ifi_flags & IFF_UP) != 0;
  // The operational state would lag behind: the kernel works it out in a deferred job, up to a
  // second later, and a message may carry new carrier together with an old operational state.
  if (nlattr const* const carrier = valid(attributes, IFLA_CARRIER, MNL_TYPE_U8))
    link.carrier = mnl_attr_get_u8(carrier) != 0;
  else
    link.carrier = (header.ifi_flags & IFF_LOWER_UP) != 0;
  if (nlattr const* const count = valid(attributes, IFLA_CARRIER_UP_COUNT, MNL_TYPE_U32))
    link.carrierUpCount = mnl_attr_get_u32(count);
  if (nlattr const* const linkInfo = valid(attributes, IFLA_LINKINFO, MNL_TYPE_NESTED))
    link.kind = kindIn(linkInfo);
  return result;
}

}  // namespace LinkFlapd
