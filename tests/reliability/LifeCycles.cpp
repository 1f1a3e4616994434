// Random lives: objects are made, replaced and dropped in any order, from any state.
//
//   reliability-lives [LIVES [SEED [PLANTED-FAULT]]]
//
// After each life no object of the runtime is left, by the runtime's own tracker and, at the end, by
// the count of memory blocks. Run it under the address and leak sanitizers.

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string_view>

#include "runtime/vek/Pool.h"
#include "runtime/vek/Report.h"

#include "tests/reliability/Life.h"
#include "tests/reliability/support/AllocationFaults.h"

namespace {

bool live(unsigned long lives, std::mt19937& random, Vek::ManualClock& clock,
          Life::Figures& figures, unsigned seed) {
  for (unsigned long i = 0; i < lives; ++i) {
    {
      Life life{random, clock, figures};
      life.live(10 + static_cast<unsigned>(random() % 40));
    }
    if (auto const left = Vek::PtrTrack::live(); left != 0) {
      std::printf("FAILED: %lu objects are left of life %lu, seed %u\n",
                  static_cast<unsigned long>(left), i, seed);
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // a leak checker ends the process without flushing
  unsigned long const lives = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000;
  auto const seed = static_cast<unsigned>(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1);
  Life::plantLostReference = argc > 3 && std::string_view{argv[3]} == "lost-reference";

  Vek::ptrifTrackOn_ = true;
  unsigned long reported = 0;
  Vek::exceptionSinkIs([&](Vek::CallbackFailure const&) { ++reported; });
  std::mt19937 random{seed};
  Vek::ManualClock clock{1};
  Life::Figures figures;
  // The first thousand make what is made once for the process.
  if (!live(1000, random, clock, figures, seed)) return 1;
  auto const blocks = AllocationFaults::liveBlocks();
  if (!live(lives, random, clock, figures, seed)) return 1;
  auto const left = AllocationFaults::liveBlocks() - blocks;
  // A pool keeps what was freed for later: then the objects alone can be counted.
  if (left != 0 && !Vek::Pool::pooled()) {
    std::printf("FAILED: %ld blocks of memory are left\n", static_cast<long>(left));
    return 1;
  }
  if (figures.tearDownsInside == 0 || figures.machinesOutlived == 0 || figures.stepsInside == 0) {
    std::puts("FAILED: the lives reach too little");
    return 1;
  }
  std::printf(
      "%lu steps, %lu of them inside a notification; %lu tear-downs inside a notification; "
      "%lu inner machines held beyond the outer ones; %lu exceptions of callbacks\n",
      figures.steps, figures.stepsInside, figures.tearDownsInside, figures.machinesOutlived,
      reported);
  std::printf("%lu lives, 0 live objects at the end, %s, seed %u\n", lives,
              Vek::Pool::pooled() ? "blocks not counted (pool)" : "0 blocks left", seed);
  return 0;
}
