#pragma once

#include <cstdint>

#include "bench/peers/Limits.h"
#include "bench/peers/Ring.h"

namespace Bench {

/// The counting of one profile on one interface, as the peers have it: the same decisions as the
/// library's, in plain code. Who owns it clears the histories and writes the record.
class FlapCounter {
 public:
  /// A flap at `now`. Whether it err-disables the interface.
  bool flap(double now, Limits const& limits) {
    times_.push(now);
    if (evaluate(now, times_.front(), limits)) return true;

    auto const window = static_cast<double>(limits.interval * limits.trackedIntervals);
    if (!(now - times_.front() > window)) return false;
    return replay(now, window, limits);
  }

  void clear() {
    times_.clear();
    intervals_ = flaps_ = violations_ = 0;
  }

  Counted counted() const { return {flaps_, intervals_, violations_, times_.size()}; }

 private:
  /// The history reaches past the window: drops what is too old and counts the rest from the start.
  bool replay(double now, double window, Limits const& limits) {
    intervals_ = flaps_ = violations_ = 0;
    while (now - times_.front() > window)
      times_.pop();
    double const first = times_.front();
    for (std::uint32_t i = 0; i < times_.size(); ++i)
      if (evaluate(times_[i], first, limits)) return true;
    return false;
  }

  bool evaluate(double time, double first, Limits const& limits) {
    std::uint64_t const interval = static_cast<std::uint64_t>(time - first) / limits.interval;
    if (interval == intervals_) {
      ++flaps_;
    } else {
      intervals_ = static_cast<std::uint32_t>(interval);
      flaps_ = 1;
    }
    if (flaps_ != limits.maxFlaps + 1) return false;
    ++violations_;
    return violations_ == limits.violations && interval <= limits.trackedIntervals;
  }

  Ring times_;
  std::uint32_t intervals_{0};
  std::uint32_t flaps_{0};
  std::uint32_t violations_{0};
};

}  // namespace Bench
