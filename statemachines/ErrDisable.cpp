#include "statemachines/ErrDisable.h"

#include <cstdint>
#include <utility>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapIntfSm.h"
#include "statemachines/LinkFlapProfileSm.h"
#include "statemachines/SourcePoints.h"

namespace LinkFlap {

namespace {

/// Logs the flap times behind an err-disable: up to five are shown whole, of more the four oldest
/// and the newest.
void logTimeStamps(LinkFlapProfileSm const& sm) {
  auto const& times = sm.linkFlapTimeStamp();
  if (times.count() == 0) return;
  if (!traceHandle().active()) {
    // Nobody listens: the points below are passed all the same.
    traceHandle().pass(times.count() < 5 ? 1 + times.count() : times.count() == 5 ? 6 : 7);
    return;
  }
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
  // To forget calls nobody, so the machines stay where they are.
  owner->linkFlapProfileSm().forEach(
      [](LinkFlapProfileSm& profileSm) { profileSm.clearHistory(); });
}

}  // namespace

void traceCounted(LinkFlapProfileSm const& sm, bool counted, std::uint32_t maxFlaps) {
  if (counted)
    Trace::evaluateErrDisableFlapCounted("curFlaps changed to: ", sm.curFlaps());
  else
    Trace::evaluateErrDisableNewInterval("curFlaps set to 1 : ", sm.curFlaps());
  Trace::evaluateErrDisableLimit("curFlaps: ", sm.curFlaps(), " macFlapsConfig: ", maxFlaps);
}

void declareErrDisable(LinkFlapProfileSm& sm, std::uint32_t maxFlaps,
                       Errdisable::CauseStatus::Room&& room) noexcept {
  LinkFlapProfileSm::Ptr const hold{&sm};  // whoever hears of the record may remove this machine
  // Deliberate: no blank stands between the count and "violations".
  Trace::declareErrDisable("Interface exceeded ", sm.curViolations(),
                           "violations, each with at least ", maxFlaps, " flaps; errdisabling it");
  logTimeStamps(sm);
  // Order: the histories are cleared before the record is written. Whoever hears of the record may
  // change this very interface's link, and that must start from nothing.
  clearHistories(sm);
  sm.causeStatus()->intfStatusRoomIs(std::move(room), Vek::now());
}

bool evaluateErrDisable(Vek::Ptr<LinkFlapProfileSm> profileSm, double flapTime,
                        double firstFlapTime, std::uint32_t maxFlaps, double interval,
                        std::uint32_t violations, std::uint32_t trackedIntervals) {
  LinkFlapProfileSm& sm = *profileSm;
  Counters before;
  if (!countFlap(sm, flapTime, firstFlapTime, {maxFlaps, interval, violations, trackedIntervals},
                 before))
    return false;
  // Order: the memory for the record comes first. A flap that err-disables does so with all that
  // belongs to it, or is not counted, so that the next one does in its place.
  Errdisable::CauseStatus::Room room;
  try {
    room = recordRoom(sm);
  } catch (...) {
    before.storeTo(sm);
    throw;
  }
  declareErrDisable(sm, maxFlaps, std::move(room));
  return true;
}

}  // namespace LinkFlap
