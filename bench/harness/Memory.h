#pragma once

#include <cstddef>
#include <string>

namespace Bench {

/// What one side takes for each interface.
struct Footprint {
  double allocated;  ///< bytes that the allocator has handed out, its own overhead included
  double resident;   ///< bytes of the process that are in memory
};

/// Case 8: `interfaces` interfaces with `profiles` profiles, each with 10 stamps. Allocations of
/// libraries count like our own. To be asked once in a process. Throws `std::invalid_argument` when
/// there is no such side.
Footprint footprint(std::string const& side, std::size_t profiles, std::size_t interfaces);

}  // namespace Bench
