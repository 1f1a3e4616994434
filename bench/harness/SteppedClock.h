#pragma once

namespace Bench {

/// The clock of everything measured here, where the clock itself is not the subject: it stands
/// still, or goes on by a fixed step at each reading. Ours and the peers read it through the same
/// function.
struct SteppedClock {
  static inline double seconds{0};
  static inline double step{0};

  static double now() {
    seconds += step;
    return seconds;
  }
};

/// What a peer reads the time through.
using ClockFunction = double (*)();

}  // namespace Bench
