#pragma once

#include <cstdint>
#include <initializer_list>
#include <linux/if_arp.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <optional>
#include <string>
#include <vector>

/// Link messages as the kernel would send them, made by hand.
namespace Wire {

using Bytes = std::vector<char>;

/// What a message says of a link; the defaults are a healthy physical port.
struct Link {
  int index{3};
  std::string name{"et1"};
  bool up{true};
  std::optional<bool> carrier{true};
  std::optional<std::uint32_t> count{1};
  std::string kind{};
  std::string memberOf{};  ///< kind of the bridge or bond that it belongs to
  std::uint16_t hardwareType{ARPHRD_ETHER};
  bool lowerUp{false};   ///< the flag IFF_LOWER_UP
  bool wireless{false};  ///< the message is a wireless event
};

/// Where a message comes from and what it answers.
struct Envelope {
  std::uint16_t type{RTM_NEWLINK};
  std::uint16_t flags{0};
  std::uint32_t sequence{0};
  std::uint32_t portId{0};
  unsigned char family{0};
};

Bytes message(Link const& link, Envelope const& envelope = {});
/// A message whose payload is one int: NLMSG_DONE or NLMSG_ERROR.
Bytes verdict(int code, Envelope const& envelope);

/// Several messages, as one read may give them.
Bytes joined(std::initializer_list<Bytes> messages);

}  // namespace Wire
