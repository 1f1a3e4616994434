#pragma once

#include <string>
#include <vector>

#include "agent/LinkState.h"

namespace LinkFlapd {

/// Decides which interfaces are watched: those whose name matches one of the patterns, or, when
/// there are no patterns, the physical ones. Only Ethernet interfaces, in both cases.
class InterfaceFilter {
 public:
  explicit InterfaceFilter(std::vector<std::string> patterns = {});

  bool matches(LinkState const& link) const;
  std::vector<std::string> const& patterns() const { return patterns_; }

  /// Whether one name or glob matches a name.
  static bool matches(std::string const& pattern, std::string const& name);

 private:
  std::vector<std::string> patterns_;
};

}  // namespace LinkFlapd
