#include <cmath>
#include <cstdint>

#include "runtime/vek/Clock.h"

#include "statemachines/ErrDisable.h"
#include "statemachines/LinkFlapProfileSm.h"
#include "statemachines/SourcePoints.h"

namespace LinkFlap {

namespace {

/// The limits against which a flap is counted.
struct ProfileValues {
  std::uint32_t maxFlaps;
  std::uint32_t interval;  ///< whole seconds
  std::uint32_t violations;
  std::uint32_t trackedIntervals;
};

/// `seconds` truncated toward zero, of which the low 32 bits are kept.
///
/// Left open: below 1, negative or not a number gives 0, with which every flap falls in interval 0;
/// so does an infinite interval.
std::uint32_t wholeSeconds(double seconds) {
  constexpr double kTwoTo32{4294967296.0};
  if (!(seconds >= 1) || std::isinf(seconds)) return 0;
  // The remainder of a division by a power of two is exact, so this is the low 32 bits of the whole
  // number, however large.
  return static_cast<std::uint32_t>(std::fmod(std::trunc(seconds), kTwoTo32));
}

ProfileValues profileValues(LinkFlapProfileSm const& sm) {
  if (auto const profile = sm.profileConfig())
    return {profile->maxFlaps(), wholeSeconds(profile->interval()), profile->violations(),
            profile->trackedIntervals()};
  // Deliberate: the global configuration knows no violations and no tracked intervals; without a
  // profile of its own, one violation err-disables.
  Config const& config = *sm.config();
  return {config.maxFlaps(), wholeSeconds(config.interval()), 1, 1};
}

/// Whether a history of `flaps`, counted from the start, can err-disable: each violation takes one
/// flap more than the limit.
bool canErrDisable(std::uint32_t flaps, ProfileValues const& values) {
  return values.violations != 0 &&
         flaps / (std::uint64_t{values.maxFlaps} + 1) >= values.violations;
}

}  // namespace

void LinkFlapProfileSm::handleLinkStatus() {
  // Deliberate: the message names the handler differently from the trace point's function.
  Trace::handleLinkStatus(static_cast<void const*>(this), "::handleLinkStatusPerProfile(): ");
  Assert::handleLinkStatus(initialized());
  if (ethPhyIntfStatus()->rawLinkStatus() != Interface::RawLinkStatus::up) return;
  if (ethPhyIntfConfig()->phyConfigState() == Interface::PhyConfigState::inProgress) return;

  ProfileValues const values = profileValues(*this);
  auto const interval = static_cast<double>(values.interval);
  double const now = Vek::now();
  linkFlapTimeStampEnq(now);
  double firstFlapTime = linkFlapTimeStamp_.head()->time();
  // Deliberate: the product wraps at 2^32 before it becomes a time.
  auto const trackingWindow = static_cast<double>(values.interval * values.trackedIntervals);
  bool const ages = now - firstFlapTime > trackingWindow;
  Errdisable::CauseStatus::Room room;
  try {
    // Order: the memory for a record comes before the ageing, which cannot be undone.
    if (ages && canErrDisable(linkFlapTimeStamp_.count(), values))
      room = Errdisable::CauseStatus::intfStatusRoom(intfId());
    if (evaluateErrDisable(this, now, firstFlapTime, values.maxFlaps, interval, values.violations,
                           values.trackedIntervals, room))
      return;
  } catch (...) {
    // As if the link had not come up: the next flap finds what this one found.
    linkFlapTimeStampTakeBack();
    throw;
  }
  if (!ages) return;

  // The history reaches past the window: drop what is too old and count the rest from the start.
  curFlapsIs(0);
  curIntervalsIs(0);
  curViolationsIs(0);
  for (auto oldest = linkFlapTimeStamp_.iterator();
       oldest && now - oldest->time() > trackingWindow;)
    linkFlapTimeStampDel(oldest);

  // Deliberate: the newest flap is evaluated a second time; the first time it was held against a
  // stale history.
  auto flap = linkFlapTimeStamp_.iterator();
  firstFlapTime = flap->time();
  for (; flap; ++flap)
    if (evaluateErrDisable(this, flap->time(), firstFlapTime, values.maxFlaps, interval,
                           values.violations, values.trackedIntervals, room))
      return;
}

}  // namespace LinkFlap
