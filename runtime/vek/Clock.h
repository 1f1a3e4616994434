#pragma once

#include <functional>

#pragma GCC visibility push(default)

namespace Vek {

/// The time in seconds on the host's monotonic clock, from an origin that is fixed for the run.
/// Always finite, and never goes backward: a source that steps back (or yields an infinite time or
/// no number, or throws) is held at the last time.
/// Thread: the activity's.
double now() noexcept;

/// Where `now()` takes the time from: seconds, called once for each reading. It must not replace
/// itself while it is called.
using ClockSource = std::function<double()>;

/// Puts `source` in place of the present one and returns that; an empty one stands for the
/// system's monotonic clock. A new source begins a new run: what the old one said is forgotten.
ClockSource clockSourceIs(ClockSource source);

/// A clock that stands still until it is moved. While it lives, `now()` reads it.
class ManualClock {
 public:
  explicit ManualClock(double seconds = 0);
  ~ManualClock();
  ManualClock(ManualClock const&) = delete;
  ManualClock& operator=(ManualClock const&) = delete;

  double seconds() const { return seconds_; }
  void secondsIs(double seconds) { seconds_ = seconds; }
  /// From now on each reading returns the time and then advances it by `seconds` (0: no advance).
  void stepIs(double seconds) { step_ = seconds; }

 private:
  double seconds_;
  double step_{0};
  ClockSource previous_;
};

}  // namespace Vek

#pragma GCC visibility pop
