#include <fstream>
#include <malloc.h>
#include <stdexcept>
#include <unistd.h>

#include "bench/harness/Memory.h"
#include "bench/peers/BoostSignals.h"
#include "bench/peers/HandDetector.h"
#include "bench/peers/OurDetector.h"
#include "bench/peers/SigcSignals.h"
#include "bench/peers/SignalDetector.h"

namespace Bench {

namespace {

constexpr unsigned kStamps{10};

/// What malloc has handed out: from its arenas, and mapped directly.
std::size_t allocated() {
  struct mallinfo2 const info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

std::size_t resident() {
  std::size_t all = 0;
  std::size_t pages = 0;
  std::ifstream{"/proc/self/statm"} >> all >> pages;
  return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

template <typename Detector>
Footprint measured(std::size_t profiles, std::size_t interfaces) {
  std::size_t const allocatedBefore = allocated();
  std::size_t const residentBefore = resident();
  SteppedClock::step = 1e-6;
  Detector detector{Setup{interfaces, std::vector<Limits>(profiles, {1000, 100000})},
                    SteppedClock::now};
  for (unsigned stamp = 0; stamp < kStamps; ++stamp) {
    for (std::size_t i = 0; i < interfaces; ++i) {
      detector.linkIs(detector.handle(i), Link::down);
      detector.linkIs(detector.handle(i), Link::up);
    }
  }
  auto const each = [&](std::size_t now, std::size_t before) {
    return static_cast<double>(now - before) / static_cast<double>(interfaces);
  };
  return {each(allocated(), allocatedBefore), each(resident(), residentBefore)};
}

}  // namespace

Footprint footprint(std::string const& side, std::size_t profiles, std::size_t interfaces) {
  if (side == "ours") return measured<OurDetector>(profiles, interfaces);
  if (side == "hand") return measured<HandDetector<std::uint32_t>>(profiles, interfaces);
  if (side == "sigc") return measured<SignalDetector<SigcSignals>>(profiles, interfaces);
  if (side == "boost") return measured<SignalDetector<BoostSignals>>(profiles, interfaces);
  throw std::invalid_argument{"no such side: " + side};
}

}  // namespace Bench
