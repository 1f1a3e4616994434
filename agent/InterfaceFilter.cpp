#include "agent/InterfaceFilter.h"

#include <algorithm>
#include <fnmatch.h>
#include <linux/if_arp.h>
#include <utility>

namespace LinkFlapd {

InterfaceFilter::InterfaceFilter(std::vector<std::string> patterns)
    : patterns_{std::move(patterns)} {}

bool InterfaceFilter::matches(LinkState const& link) const {
  // Deliberate: '*' does not take in the loopback interface, nor a tunnel; neither has a link that
  // could flap.
  if (link.hardwareType != ARPHRD_ETHER) return false;
  if (patterns_.empty()) return link.kind.empty();
  return std::any_of(patterns_.begin(), patterns_.end(),
                     [&](std::string const& pattern) { return matches(pattern, link.name); });
}

bool InterfaceFilter::matches(std::string const& pattern, std::string const& name) {
  return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

}  // namespace LinkFlapd
