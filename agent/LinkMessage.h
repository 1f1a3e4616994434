#pragma once

#include <linux/netlink.h>
#include <optional>

#include "agent/LinkState.h"

namespace LinkFlapd {

/// One rtnetlink message about a link: its state, or (index and name only matter) its end.
struct LinkMessage {
  bool removed{false};
  LinkState link;
};

/// Reads one netlink message; the caller has made sure that its stated length, with the padding
/// that follows every netlink message, is really there.
/// Nothing for a message that does not describe a link of this machine:
///
/// - another type, or one too short to be a link message, or without a name;
/// - another address family. Trap: a bridge announces with AF_BRIDGE and RTM_DELLINK that a port
///   left it; the interface itself is still there;
/// - a wireless event, which travels as a link message without the link's attributes.
std::optional<LinkMessage> parseLinkMessage(nlmsghdr const& message);

}  // namespace LinkFlapd
