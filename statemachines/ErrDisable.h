#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/vek/Wrap.h"

#include "statemachines/LinkFlapProfileSm.h"
#include "statemachines/SourcePoints.h"

// The counting of one flap, for the two who count: `evaluateErrDisable` and, on every flap,
// `handleLinkStatus`. Internal: not installed.

namespace LinkFlap {

/// The limits against which a flap is counted; see `evaluateErrDisable`.
struct ProfileValues {
  std::uint32_t maxFlaps;
  double interval;  ///< whole seconds
  std::uint32_t violations;
  std::uint32_t trackedIntervals;
};

/// The counters of a profile machine, apart from it: what they were, to go back to when a flap
/// cannot be counted after all; or what they come to, while nobody looks.
struct Counters {
  std::uint32_t flaps;
  std::uint32_t intervals;
  std::uint32_t violations;

  // For `countFlap`, to which these are a machine's.
  std::uint32_t curFlaps() const noexcept { return flaps; }
  void curFlapsIs(std::uint32_t value) noexcept { flaps = value; }
  std::uint32_t curIntervals() const noexcept { return intervals; }
  void curIntervalsIs(std::uint32_t value) noexcept { intervals = value; }
  std::uint32_t curViolations() const noexcept { return violations; }
  void curViolationsIs(std::uint32_t value) noexcept { violations = value; }

  void storeTo(LinkFlapProfileSm& sm) const noexcept {
    sm.curFlapsIs(flaps);
    sm.curIntervalsIs(intervals);
    sm.curViolationsIs(violations);
  }
};

/// What the record of an err-disable of this machine's interface needs memory for. Throws
/// `std::bad_alloc`.
inline Errdisable::CauseStatus::Room recordRoom(LinkFlapProfileSm const& sm) {
  return Errdisable::CauseStatus::intfStatusRoom(sm.intfId());
}

/// Err-disables the interface: logs why, clears the history of every profile of the interface and
/// writes the record, for which `room` is needed: from here on nothing fails. The machine may be
/// gone when it returns.
void declareErrDisable(LinkFlapProfileSm& sm, std::uint32_t maxFlaps,
                       Errdisable::CauseStatus::Room&& room) noexcept;

/// `value` truncated toward zero. Left open: what no unsigned number can hold becomes the nearest
/// one that can, and not-a-number becomes 0, so that no conversion is undefined.
inline std::uint64_t truncated(double value) {
  constexpr double kTwoTo63{9223372036854775808.0};
  if (!(value >= 1)) return 0;
  // By way of the signed type, to which the processor converts in one step.
  if (value < kTwoTo63) [[likely]]
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
  if (value >= 2 * kTwoTo63) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(value);
}

/// The interval of a profile, counted from 0, in which a flap falls.
///
/// Deliberate: the age is truncated to whole seconds before it is divided, so with a 5 s interval
/// a flap 4.99 s after the first falls in interval 0, one 5.0 s after it in interval 1.
/// Left open: with an interval below 1, or not a number, every flap falls in interval 0.
inline std::uint64_t intervalOf(double flapTime, double firstFlapTime, double interval) {
  double const age = flapTime - firstFlapTime;
  // Most flaps are younger than an interval, and need no division. An interval below 1 and what is
  // not a number end here as well.
  if (!(interval >= 1) || !(age >= interval)) return 0;
  // Truncating the age can make it less than an interval that is not whole.
  return truncated(static_cast<double>(truncated(age)) / interval);
}

/// The traces of `countFlap`, while anybody listens. `counted`: whether the flap fell into the
/// interval being counted.
[[gnu::cold, gnu::noinline]] void traceCounted(LinkFlapProfileSm const& sm, bool counted,
                                               std::uint32_t maxFlaps);

/// How many trace points `countFlap` passes.
inline constexpr std::uint32_t kPointsOfCounting{3};

/// Counts one flap; the result says whether it err-disables the interface, which is then for the
/// caller to declare, and only then `before` is set. `sm`: a machine, and then nobody is called but
/// the trace sink; or `Counters`, and then it is for the caller to pass the trace points.
template <typename Sm>
[[gnu::always_inline]] inline bool countFlap(Sm& sm, double flapTime, double firstFlapTime,
                                             ProfileValues const& values, Counters& before) {
  constexpr bool silently = std::is_same_v<Sm, Counters>;
  if constexpr (!silently)
    Trace::evaluateErrDisable(static_cast<void const*>(&sm), "::evaluateErrDisable");
  std::uint64_t const intervalIndex = intervalOf(flapTime, firstFlapTime, values.interval);

  // Deliberate: compared as 64-bit numbers, so an index of 2^32 or more always begins an interval.
  std::uint32_t const flaps = sm.curFlaps();
  std::uint32_t const intervals = sm.curIntervals();
  bool const counted = intervalIndex == intervals;
  if (counted) {
    sm.curFlapsIs(Vek::wrappingSum(flaps, 1));
  } else {
    sm.curIntervalsIs(static_cast<std::uint32_t>(intervalIndex));
    sm.curFlapsIs(1);
  }
  if constexpr (!silently) {
    if (traceHandle().active()) [[unlikely]]
      traceCounted(sm, counted, values.maxFlaps);
    else
      traceHandle().pass(kPointsOfCounting - 1);
  }

  // Deliberate: equality, in 32 bits. Only the flap that first exceeds the limit within an interval
  // is a violation; those that follow it there add nothing.
  if (sm.curFlaps() != Vek::wrappingSum(values.maxFlaps, 1)) [[likely]]
    return false;
  std::uint32_t const violations = sm.curViolations();
  sm.curViolationsIs(Vek::wrappingSum(violations, 1));

  // Deliberate: the count is not taken back when a test fails. Once it has passed `violations`, no
  // flap err-disables until something starts the counting anew.
  if (sm.curViolations() != values.violations) return false;
  // Deliberate: intervals 0 to `trackedIntervals` inclusive, which is one more than the name says.
  if (intervalIndex > values.trackedIntervals) return false;
  before = {flaps, intervals, violations};
  return true;
}

}  // namespace LinkFlap
