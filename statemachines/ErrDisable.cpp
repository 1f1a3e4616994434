#include "statemachines/ErrDisable.h"

#include <cstdint>
#include <limits>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapIntfSm.h"
#include "statemachines/LinkFlapProfileSm.h"
#include "statemachines/SourcePoints.h"

namespace LinkFlap {

namespace {

/// `value` truncated toward zero. Left open: what no unsigned number can hold becomes the nearest
/// one that can, and not-a-number becomes 0, so that no conversion is undefined.
std::uint64_t truncated(double value) {
  constexpr double kTwoTo64{18446744073709551616.0};
  if (!(value >= 1)) return 0;
  if (value >= kTwoTo64) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(value);
}

/// The interval of a profile, counted from 0, in which a flap falls.
///
/// Deliberate: the age is truncated to whole seconds before it is divided, so with a 5 s interval
/// a flap 4.99 s after the first falls in interval 0, one 5.0 s after it in interval 1.
/// Left open: with an interval below 1, or not a number, every flap falls in interval 0.
std::uint64_t intervalOf(double flapTime, double firstFlapTime, double interval) {
  if (!(interval >= 1)) return 0;
  std::uint64_t const elapsedSeconds = truncated(flapTime - firstFlapTime);
  return truncated(static_cast<double>(elapsedSeconds) / interval);
}

/// Logs the flap times behind an err-disable: up to five are shown whole, of more the four oldest
/// and the newest.
void logTimeStamps(LinkFlapProfileSm const& sm) {
  auto const& times = sm.linkFlapTimeStamp();
  if (times.count() == 0) return;
  Trace::logTimeStampsTitle("Flaps occurred as per ", sm.profileName(),
                            " in the following time frame : ");
  unsigned countdown = 5;
  for (auto time = times.iterator(); time; ++time) {
    if (--countdown == 0) {
      if (times.count() > 5) Trace::logTimeStampsEllipsis("...");
      Trace::logTimeStampsNewest(times.tail()->time());
      return;
    }
    Trace::logTimeStampsTime(time->time());
  }
}

/// Forgets the flaps of every profile of the interface.
void clearHistories(LinkFlapProfileSm& sm) {
  LinkFlapIntfSm* const owner = sm.intfSm();
  if (owner == nullptr) {
    // Taken out of its interface's machine and still held by someone: it speaks for itself alone.
    sm.clearHistory();
    return;
  }
  for (LinkFlapProfileSm& profileSm : owner->linkFlapProfileSm())
    profileSm.clearHistory();
}

/// From here on nothing fails: `room` is what the record needs.
void declareErrDisable(LinkFlapProfileSm& sm, std::uint32_t maxFlaps,
                       Errdisable::CauseStatus::Room room) noexcept {
  // Deliberate: no blank stands between the count and "violations".
  Trace::declareErrDisable("Interface exceeded ", sm.curViolations(),
                           "violations, each with at least ", maxFlaps, " flaps; errdisabling it");
  logTimeStamps(sm);
  // Order: the histories are cleared before the record is written. Whoever hears of the record may
  // change this very interface's link, and that must start from nothing.
  clearHistories(sm);
  sm.causeStatus()->intfStatusIs(std::move(room), Vek::now());
}

}  // namespace

bool evaluateErrDisable(Vek::Ptr<LinkFlapProfileSm> profileSm, double flapTime,
                        double firstFlapTime, std::uint32_t maxFlaps, double interval,
                        std::uint32_t violations, std::uint32_t trackedIntervals) {
  Errdisable::CauseStatus::Room room;
  return evaluateErrDisable(std::move(profileSm), flapTime, firstFlapTime, maxFlaps, interval,
                            violations, trackedIntervals, room);
}

bool evaluateErrDisable(Vek::Ptr<LinkFlapProfileSm> profileSm, double flapTime,
                        double firstFlapTime, std::uint32_t maxFlaps, double interval,
                        std::uint32_t violations, std::uint32_t trackedIntervals,
                        Errdisable::CauseStatus::Room& room) {
  LinkFlapProfileSm& sm = *profileSm;
  Trace::evaluateErrDisable(static_cast<void const*>(&sm), "::evaluateErrDisable");
  std::uint64_t const intervalIndex = intervalOf(flapTime, firstFlapTime, interval);

  std::uint32_t const flapsBefore = sm.curFlaps();
  std::uint32_t const intervalsBefore = sm.curIntervals();
  // Deliberate: compared as 64-bit numbers, so an index of 2^32 or more always begins an interval.
  if (intervalIndex == sm.curIntervals()) {
    sm.curFlapsIs(sm.curFlaps() + 1);
    Trace::evaluateErrDisableFlapCounted("curFlaps changed to: ", sm.curFlaps());
  } else {
    sm.curIntervalsIs(static_cast<std::uint32_t>(intervalIndex));
    sm.curFlapsIs(1);
    Trace::evaluateErrDisableNewInterval("curFlaps set to 1 : ", sm.curFlaps());
  }
  Trace::evaluateErrDisableLimit("curFlaps: ", sm.curFlaps(), " macFlapsConfig: ", maxFlaps);

  // Deliberate: equality, in 32 bits. Only the flap that first exceeds the limit within an interval
  // is a violation; those that follow it there add nothing.
  if (sm.curFlaps() != maxFlaps + 1) return false;
  sm.curViolationsIs(sm.curViolations() + 1);

  // Deliberate: the count is not taken back when a test fails. Once it has passed `violations`, no
  // flap err-disables until something starts the counting anew.
  if (sm.curViolations() != violations) return false;
  // Deliberate: intervals 0 to `trackedIntervals` inclusive, which is one more than the name says.
  if (intervalIndex > trackedIntervals) return false;

  // Order: the memory for the record comes first. A flap that err-disables does so with all that
  // belongs to it, or is not counted, so that the next one does in its place.
  if (!room) {
    try {
      room = Errdisable::CauseStatus::intfStatusRoom(sm.intfId());
    } catch (...) {
      sm.curFlapsIs(flapsBefore);
      sm.curIntervalsIs(intervalsBefore);
      sm.curViolationsIs(sm.curViolations() - 1);
      throw;
    }
  }
  declareErrDisable(sm, maxFlaps, std::move(room));
  return true;
}

}  // namespace LinkFlap
