#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace LinkFlapd {

/// What the kernel says of one network interface at one instant.
struct LinkState {
  int index{0};
  std::string name;
  unsigned hardwareType{0};  ///< an ARPHRD_ number
  std::string kind;          ///< of a virtual interface ("veth", "bridge"); empty for hardware
  bool adminUp{false};       ///< IFF_UP
  bool carrier{false};
  /// How often the interface gained carrier since it exists; wraps at 2^32. Kernels before 4.16
  /// do not tell.
  std::optional<std::uint32_t> carrierUpCount;

  bool linkUp() const { return adminUp && carrier; }
};

}  // namespace LinkFlapd
