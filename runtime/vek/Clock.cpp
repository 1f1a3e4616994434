#include "runtime/vek/Clock.h"

#include <chrono>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <utility>

namespace Vek {

namespace {

constexpr double kNever{-std::numeric_limits<double>::infinity()};

struct Clock {
  ClockSource source;
  double last{kNever};
};

// Never destroyed: the clock may be read while statics are being destroyed. In memory of its own:
// reading it never fails.
Clock& clock() noexcept {
  alignas(Clock) static std::byte memory[sizeof(Clock)];
  static auto* const instance = new (memory) Clock;
  return *instance;
}

double reading(ClockSource const& source) noexcept {
  try {
    return source();
  } catch (...) {
    return std::numeric_limits<double>::quiet_NaN();
  }
}

double monotonicSeconds() {
  using std::chrono::steady_clock;
  return std::chrono::duration<double>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

double now() noexcept {
  Clock& c = clock();
  double const time = c.source ? reading(c.source) : monotonicSeconds();
  // An infinite reading would hold the clock for ever, and nothing that is no number has an age:
  // both are held like a step back. A run that begins with one begins at 0.
  if (time >= c.last && std::isfinite(time)) {
    c.last = time;
  } else if (c.last == kNever) {
    c.last = 0;
  }
  return c.last;
}

ClockSource clockSourceIs(ClockSource source) {
  clock().last = kNever;
  return std::exchange(clock().source, std::move(source));
}

ManualClock::ManualClock(double seconds)
    : seconds_{seconds}, previous_{clockSourceIs([this] {
        double const reading = seconds_;
        seconds_ += step_;
        return reading;
      })} {}

ManualClock::~ManualClock() {
  clockSourceIs(std::move(previous_));
}

}  // namespace Vek
