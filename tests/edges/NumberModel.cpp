#include "tests/edges/NumberModel.h"

#include <cmath>

namespace {

__extension__ typedef __int128 Wide;

constexpr Wide kTwoTo32{Wide{1} << 32};
constexpr Wide kTwoTo64{Wide{1} << 64};

/// The whole part of a finite number; of one beyond 2^117, another that is as great and has the same
/// low 32 bits (none).
Wide whole(double number) {
  int exponent = 0;
  double const fraction = std::frexp(number, &exponent);
  auto const digits = static_cast<Wide>(std::ldexp(fraction, 53));  // exact: 53 bits are all
  int const shift = exponent - 53;
  if (shift < -64) return 0;
  if (shift < 0) return digits >= 0 ? digits >> -shift : -(-digits >> -shift);
  return digits * (Wide{1} << (shift > 64 ? 64 : shift));
}

/// Seconds of age as the evaluation sees them: 0 to 2^64, which stands for all that is more.
Wide elapsed(double flapTime, double firstFlapTime) {
  double const age = flapTime - firstFlapTime;
  if (std::isnan(age) || age <= 0) return 0;
  if (std::isinf(age) || whole(age) > kTwoTo64) return kTwoTo64;
  return whole(age);
}

}  // namespace

NumberModel::NumberModel(Limits limits, State state, Mistake mistake)
    : limits_{limits}, state_{std::move(state)}, mistake_{mistake} {}

double NumberModel::now(double reading) {
  bool const forward = std::isfinite(reading) && (!last_ || reading >= *last_);
  if (forward || (mistake_ == Mistake::clockNotHeld && std::isfinite(reading))) last_ = reading;
  if (!last_) last_ = 0;
  return *last_;
}

std::uint32_t NumberModel::intervalSeconds() const {
  double const interval = limits_.interval;
  if (!std::isfinite(interval) || interval <= 0) return 0;
  Wide const seconds = whole(mistake_ == Mistake::intervalRounded ? interval + 0.5 : interval);
  if (mistake_ == Mistake::intervalHeldAtGreatest && seconds >= kTwoTo32) return 0xFFFFFFFFU;
  return static_cast<std::uint32_t>(seconds % kTwoTo32);
}

void NumberModel::flap(double reading) {
  double const time = now(reading);
  state_.times.push_back(time);
  if (evaluate(time, state_.times.front())) {
    state_ = {.times = {}, .errdisabledAt = now(reading)};
    return;
  }
  Wide product = Wide{intervalSeconds()} * limits_.trackedIntervals;
  if (mistake_ != Mistake::windowOf64Bits) product %= kTwoTo32;
  auto const window = static_cast<double>(product);
  auto const tooOld = [&](double then) {
    return mistake_ == Mistake::windowEdgeTooOld ? time - then >= window && then != time
                                                 : time - then > window;
  };
  if (!tooOld(state_.times.front())) return;
  state_.flaps = state_.intervals = state_.violations = 0;
  while (tooOld(state_.times.front()))
    state_.times.erase(state_.times.begin());
  for (double const then : std::vector<double>{state_.times})
    if (evaluate(then, state_.times.front())) {
      state_ = {.times = {}, .errdisabledAt = now(reading)};
      return;
    }
}

/// Whether the interface is to be err-disabled.
bool NumberModel::evaluate(double flapTime, double firstFlapTime) {
  Wide const interval = intervalSeconds();
  Wide index = interval == 0 ? 0 : elapsed(flapTime, firstFlapTime) / interval;
  if (index >= kTwoTo64) index = kTwoTo64 - 1;
  if (index == state_.intervals) {
    state_.flaps = static_cast<std::uint32_t>((Wide{state_.flaps} + 1) % kTwoTo32);
  } else {
    state_.intervals = static_cast<std::uint32_t>(index % kTwoTo32);
    state_.flaps = 1;
  }
  Wide limit = Wide{limits_.maxFlaps} + 1;
  if (mistake_ != Mistake::limitOf64Bits) limit %= kTwoTo32;
  if (mistake_ == Mistake::atLeastTheLimit ? state_.flaps < limit : state_.flaps != limit)
    return false;
  state_.violations = static_cast<std::uint32_t>((Wide{state_.violations} + 1) % kTwoTo32);
  if (state_.violations != limits_.violations) return false;
  return mistake_ == Mistake::trackedBoundExcluded ? index < limits_.trackedIntervals
                                                   : index <= limits_.trackedIntervals;
}
