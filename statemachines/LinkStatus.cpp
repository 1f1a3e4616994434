#include <cmath>
#include <cstdint>
#include <utility>

#include "runtime/vek/Clock.h"
#include "runtime/vek/Wrap.h"

#include "statemachines/ErrDisable.h"
#include "statemachines/LinkFlapProfileSm.h"
#include "statemachines/SourcePoints.h"

namespace LinkFlap {

namespace {

/// `seconds` truncated toward zero, of which the low 32 bits are kept.
///
/// Left open: below 1, negative or not a number gives 0, with which every flap falls in interval 0;
/// so does an infinite interval.
double wholeSeconds(double seconds) {
  constexpr double kTwoTo32{4294967296.0};
  if (!(seconds >= 1)) return 0;
  if (seconds < kTwoTo32) [[likely]]
    return static_cast<double>(static_cast<std::int64_t>(seconds));
  if (std::isinf(seconds)) return 0;
  // The remainder of a division by a power of two is exact, so this is the low 32 bits of the whole
  // number, however large.
  return std::fmod(std::trunc(seconds), kTwoTo32);
}

/// Whether a history of `flaps`, counted from the start, can err-disable: each violation takes one
/// flap more than the limit. The product of the two is less than 2^64.
bool canErrDisable(std::uint32_t flaps, ProfileValues const& values) {
  return values.violations != 0 &&
         flaps >= std::uint64_t{values.violations} * (std::uint64_t{values.maxFlaps} + 1);
}

}  // namespace

inline ProfileValues LinkFlapProfileSm::profileValues() const {
  if (ProfileConfig const* const profile = profileConfig_.get())
    return {profile->maxFlaps(), wholeSeconds(profile->interval()), profile->violations(),
            profile->trackedIntervals()};
  // Deliberate: the global configuration knows no violations and no tracked intervals; without a
  // profile of its own, one violation err-disables.
  Config const& config = *config_;
  return {config.maxFlaps(), wholeSeconds(config.interval()), 1, 1};
}

void LinkFlapProfileSm::handleLinkStatus() {
  // Deliberate: the message names the handler differently from the trace point's function.
  Trace::handleLinkStatus(static_cast<void const*>(this), "::handleLinkStatusPerProfile(): ");
  Assert::handleLinkStatus(initialized());
  if ((*ethPhyIntfStatus_).rawLinkStatus() != Interface::RawLinkStatus::up) return;
  if (ethPhyIntfConfig_->phyConfigState() == Interface::PhyConfigState::inProgress) return;
  handleFlap();
}

void LinkFlapProfileSm::handleFlap() {
  ProfileValues const values = profileValues();
  double const now = Vek::now();
  linkFlapTimeStamp_.enq(now);
  double const firstFlapTime = linkFlapTimeStamp_.headValue();
  // Deliberate: the product wraps at 2^32 before it becomes a time.
  auto const trackingWindow = static_cast<double>(
      Vek::wrappingProduct(static_cast<std::uint32_t>(values.interval), values.trackedIntervals));
  Counters before;
  if (now - firstFlapTime > trackingWindow) [[unlikely]] {
    countAndAge(now, firstFlapTime, trackingWindow, values);
  } else if (countFlap(*this, now, firstFlapTime, values, before)) {
    errDisable(before, values.maxFlaps, {});
  }
}

/// The newest flap err-disables. Order: the memory for the record (`room`, unless it is there
/// already) comes first; without it, it is as if the link had not come up, and the next flap finds
/// what this one found. `before`: what the counters were then.
void LinkFlapProfileSm::errDisable(Counters const& before, std::uint32_t maxFlaps,
                                   Errdisable::CauseStatus::Room&& room) {
  if (!room) {
    try {
      room = recordRoom(*this);
    } catch (...) {
      before.storeTo(*this);
      linkFlapTimeStampTakeBack();
      throw;
    }
  }
  declareErrDisable(*this, maxFlaps, std::move(room));
}

/// The history reaches past the window: counts the newest flap against it all the same, then drops
/// what is too old and counts the rest from the start.
void LinkFlapProfileSm::countAndAge(double now, double firstFlapTime, double trackingWindow,
                                    ProfileValues const& values) {
  Errdisable::CauseStatus::Room room;
  if (canErrDisable(linkFlapTimeStamp_.count(), values)) {
    // Order: the memory for a record comes before the ageing, which cannot be undone.
    try {
      room = recordRoom(*this);
    } catch (...) {
      linkFlapTimeStampTakeBack();
      throw;
    }
  }
  Counters before;
  if (countFlap(*this, now, firstFlapTime, values, before)) {
    errDisable(before, values.maxFlaps, std::move(room));
    return;
  }

  curFlapsIs(0);
  curIntervalsIs(0);
  curViolationsIs(0);
  // The flap that was just added is 0 s old and stays.
  linkFlapTimeStamp_.deqWhile(
      [now, trackingWindow](double time) { return now - time > trackingWindow; });

  // Deliberate: the newest flap is evaluated a second time; the first time it was held against a
  // stale history.
  if (!replay(values, before)) return;
  if (!room) room = recordRoom(*this);
  declareErrDisable(*this, values.maxFlaps, std::move(room));
}

/// Counts the whole history, from its first flap on; stops at one that err-disables, and tells.
bool LinkFlapProfileSm::replay(ProfileValues const& values, Counters& before) {
  double const head = linkFlapTimeStamp_.headValue();
  if (traceHandle().active()) {
    // A sink may do anything, so the walk holds where it stands.
    for (auto flap = linkFlapTimeStamp_.iterator(); flap; ++flap)
      if (countFlap(*this, flap->time(), head, values, before)) return true;
    return false;
  }
  // Nobody is called meanwhile: the entries stay where they are, the counters are kept apart, and
  // the trace points are passed all at once.
  Counters counters{curFlaps_, curIntervals_, curViolations_};
  std::uint32_t points = 0;
  bool errDisables = false;
  for (auto const* flap = linkFlapTimeStamp_.head(); flap != nullptr && !errDisables;
       flap = linkFlapTimeStamp_.next(*flap)) {
    errDisables = countFlap(counters, flap->time(), head, values, before);
    points += kPointsOfCounting;
  }
  counters.storeTo(*this);
  traceHandle().pass(points);
  return errDisables;
}

}  // namespace LinkFlap
