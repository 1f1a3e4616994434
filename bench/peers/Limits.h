#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Bench {

/// The four values of a profile.
struct Limits {
  std::uint32_t maxFlaps;
  std::uint32_t interval;  ///< whole seconds
  std::uint32_t violations{1};
  std::uint32_t trackedIntervals{1};
};

/// What a detector is made for: interfaces 0 to `interfaces` - 1, each with all the profiles.
struct Setup {
  std::size_t interfaces;
  std::vector<Limits> profiles;
};

/// Values of the link status; a change to `up` is a flap.
enum class Link : std::uint32_t { unknown = 0, up = 1, down = 2 };

/// What became of one profile of one interface, for the comparison of decisions.
struct Counted {
  std::uint32_t flaps;
  std::uint32_t intervals;
  std::uint32_t violations;
  std::size_t stamps;

  friend bool operator==(Counted const&, Counted const&) = default;
};

inline std::string interfaceName(std::size_t index) {
  return "Ethernet" + std::to_string(index + 1);
}

}  // namespace Bench
