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

constinit double last{kNever};
constinit ClockSource* source{nullptr};  // null: the system's clock

// Never destroyed: the clock may be read while statics are being destroyed. In memory of its own:
// reading the clock never fails.
ClockSource& heldSource() noexcept {
  alignas(ClockSource) static std::byte memory[sizeof(ClockSource)];
  static auto* const instance = new (memory) ClockSource;
  return *instance;
}

double reading(ClockSource const& read) noexcept {
  try {
    return read();
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
  double const time = source != nullptr ? reading(*source) : monotonicSeconds();
  // An infinite reading would hold the clock for ever, and nothing that is no number has an age:
  // both are held like a step back. A run that begins with one begins at 0.
  if (time >= last && std::isfinite(time)) [[likely]] {
    last = time;
  } else if (last == kNever) {
    last = 0;
  }
  return last;
}

ClockSource clockSourceIs(ClockSource newSource) {
  last = kNever;
  ClockSource previous = std::exchange(heldSource(), std::move(newSource));
  source = heldSource() ? &heldSource() : nullptr;
  return previous;
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
