#include <bit>
#include <cmath>
#include <limits>

#include "tests/simulation/Model.h"
#include "tests/simulation/Text.h"

// The model's profile machines: the queue of flap times, link status, evaluation.

namespace Simulation::Model {

void FlapQueue::append(double time) {
  std::uint32_t index = nextIndex;
  if (!flaps.empty() && flaps.back().index >= index) index = flaps.back().index + 1;
  nextIndex = index;
  if (flaps.empty()) {
    headIndex = index;
  } else if (index + 1 == headIndex) {
    throw Raised{"linkqueue index space full"};
  }
  flaps.push_back({index, time});
  nextIndex = index + 1;
  ++version;
}

void FlapQueue::remove(std::size_t position) {
  flaps.erase(flaps.begin() + static_cast<std::ptrdiff_t>(position));
  ++version;
  if (position != 0) return;
  if (flaps.empty()) {
    headIndex = nextIndex;
  } else {
    headIndex = flaps.front().index;
    if (nextIndex <= flaps.back().index) nextIndex = flaps.back().index + 1;
  }
}

void FlapQueue::removeIndex(std::uint32_t index) {
  for (std::size_t i = 0; i < flaps.size(); ++i)
    if (flaps[i].index == index) return remove(i);
}

void FlapQueue::clear() {
  if (flaps.empty()) return;
  // As if one by one from the head: only the tail's index matters in the end.
  std::uint32_t const tail = flaps.back().index;
  version += static_cast<std::uint32_t>(flaps.size());
  if (flaps.size() > 1 && nextIndex <= tail) nextIndex = tail + 1;
  flaps.clear();
  if (restarts) nextIndex = 0;
  headIndex = nextIndex;
}

/// Unlike the machines above: also when nothing changes, the reactors are told.
void ProfileSm::activeIs(bool on) {
  active = on;
  values.activeIs(on);
  link.activeIs(on);
}

void ProfileSm::markedIs(bool on) {
  values.zombieIs(on);
  link.zombieIs(on);
  marked = on;
}

double System::now() {
  double const reading = plan_.reading(outcome.readings++);
  bool const usable = std::isfinite(reading);
  if (usable && (!last_ || reading >= *last_ || planted(Plant::clockFollowsBack))) {
    last_ = reading;
  } else if (!last_) {
    last_ = 0;
  }
  return *last_;
}

void System::rawLinkStatusIs(Status& status, std::uint32_t value) {
  if (status.rawLinkStatus == value) return;
  status.rawLinkStatus = value;
  std::size_t const count = status.watchers.size();
  for (std::size_t i = 0; i < count; ++i) {
    ProfileSm* const sm = status.watchers[planted(Plant::toldBackward) ? count - 1 - i : i];
    if (!sm->link.acts()) continue;
    guarded("rawLinkStatus", [&] { handleLinkStatus(*sm); });
  }
}

namespace {

/// Whole seconds as an unsigned 32-bit number: the low bits of the number truncated toward zero.
/// What is below one second, or no finite number, counts as 0.
std::uint32_t wholeSeconds(double seconds) {
  if (!std::isfinite(seconds) || seconds < 1) return 0;
  return static_cast<std::uint32_t>(std::fmod(std::floor(seconds), 4294967296.0));
}

/// Truncated toward zero; the nearest number that 64 bits can hold.
std::uint64_t truncated(double value) {
  if (!(value >= 1)) return 0;
  if (value >= 18446744073709551616.0) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(value);
}

}  // namespace

void System::handleLinkStatus(ProfileSm& sm) {
  trace(8, 104, "handleLinkStatus",
        [&] { return textOf(sm) + "::handleLinkStatusPerProfile(): "; });
  if (sm.status->rawLinkStatus != 1) return;
  if (sm.phyConfig->phyConfigState == 2) return;

  ProfileConfig const* const own = sm.profileConfig;
  std::uint32_t const interval = wholeSeconds(own != nullptr ? own->interval : sm.config->interval);
  std::uint32_t const maxFlaps = own != nullptr ? own->maxFlaps : sm.config->maxFlaps;
  std::uint32_t const violations = own != nullptr ? own->violations : 1;
  std::uint32_t const tracked = own != nullptr ? own->trackedIntervals : 1;

  double const time = now();
  sm.queue.append(time);
  double first = sm.queue.flaps.front().time;
  if (evaluate(sm, time, first, maxFlaps, interval, violations, tracked)) return;

  auto const window = static_cast<double>(interval * tracked);
  bool const old = planted(Plant::windowInclusive) ? time - first >= window : time - first > window;
  if (!old) return;
  if (!planted(Plant::ageingKeepsCounters)) sm.restart();
  while (!sm.queue.flaps.empty() && time - sm.queue.flaps.front().time > window)
    sm.queue.remove(0);
  first = sm.queue.flaps.front().time;
  for (std::size_t i = 0; i < sm.queue.flaps.size(); ++i) {
    if (planted(Plant::newestNotReplayed) && i + 1 == sm.queue.flaps.size()) break;
    double const flap = sm.queue.flaps[i].time;
    if (evaluate(sm, flap, first, maxFlaps, interval, violations, tracked)) break;
  }
}

bool System::evaluate(ProfileSm& sm, double flapTime, double firstFlapTime, std::uint32_t maxFlaps,
                      std::uint32_t interval, std::uint32_t violations,
                      std::uint32_t trackedIntervals) {
  constexpr char const* kFunction{"evaluateErrDisable"};
  trace(8, 76, kFunction, [&] { return textOf(sm) + "::evaluateErrDisable"; });
  std::uint64_t const elapsed = truncated(flapTime - firstFlapTime);
  double length = static_cast<double>(interval);
  if (planted(Plant::fractionalInterval)) length += 0.5;
  std::uint64_t const index = interval == 0 ? 0 : truncated(static_cast<double>(elapsed) / length);

  if (index == sm.curIntervals) {
    ++sm.curFlaps;
    trace(8, 80, kFunction, [&] { return "curFlaps changed to: " + number(sm.curFlaps); });
  } else {
    sm.curIntervals = static_cast<std::uint32_t>(index & 0xFFFFFFFFU);
    sm.curFlaps = 1;
    trace(8, 87, kFunction, [&] { return "curFlaps set to 1 : " + number(sm.curFlaps); });
  }
  trace(8, 90, kFunction, [&] {
    return "curFlaps: " + number(sm.curFlaps) + " macFlapsConfig: " + number(maxFlaps);
  });
  bool const violation =
      planted(Plant::atLeastLimit) ? sm.curFlaps > maxFlaps : sm.curFlaps == maxFlaps + 1;
  if (!violation) return false;
  ++sm.curViolations;
  if (sm.curViolations != violations) return false;
  if (index > trackedIntervals) return false;
  if (planted(Plant::trackedExclusive) && index == trackedIntervals) return false;

  trace(2, 50, "declareErrDisable", [&] {
    return "Interface exceeded " + number(sm.curViolations) +
           (planted(Plant::blankInMessage) ? " " : "") + "violations, each with at least " +
           number(maxFlaps) + " flaps; errdisabling it";
  });
  logTimeStamps(sm);
  for (auto& other : sm.owner->profiles)
    if (other && (other.get() == &sm || !planted(Plant::ownHistoryOnly))) other->forget();
  record(*sm.cause, sm.status->intf, planted(Plant::recordAtFlapTime) ? flapTime : now());
  return true;
}

void System::logTimeStamps(ProfileSm const& sm) {
  auto const& flaps = sm.queue.flaps;
  if (flaps.empty()) return;
  constexpr char const* kFunction{"logTimeStamps"};
  trace(2, 21, kFunction, [&] {
    return "Flaps occurred as per " + profile(sm.name) + " in the following time frame : ";
  });
  std::size_t const oldest = flaps.size() < 4 ? flaps.size() : 4;
  for (std::size_t i = 0; i < oldest; ++i)
    trace(2, 28, kFunction, [&] { return number(flaps[i].time); });
  if (flaps.size() < 5) return;
  if (flaps.size() > 5) trace(2, 32, kFunction, [] { return std::string{"..."}; });
  trace(2, 33, kFunction, [&] { return number(flaps.back().time); });
}

void System::record(CauseStatus& cause, int intf, std::optional<double> time) {
  auto& member = cause.intfStatus[static_cast<std::size_t>(intf)];
  // A record of the same time over again is no change.
  if (member == time) return;
  member = time;
  ++cause.changes;
  outcome.writes.push_back({cause.record, intf, time.has_value(), time.value_or(0)});
}

void System::handleProfileValues(ProfileSm& sm, int name, int intf) {
  trace(8, 176, "handleProfileValues", [&] {
    return textOf(sm) + "::handleProfileValues(" + profile(name) + ", " + interface(intf) + ")";
  });
  if (planted(Plant::profileChangeKeepsFlaps)) return sm.restart();
  sm.forget();
}

void System::profileValueChanged(ProfileConfig& changed) {
  for (ProfileSm* const sm : changed.watchers)
    if (sm->values.acts()) handleProfileValues(*sm, changed.name, sm->status->intf);
}

void System::profileValueIs(ProfileConfig& changed, Value which, std::uint32_t value) {
  std::uint32_t& held = which == Value::maxFlaps     ? changed.maxFlaps
                        : which == Value::violations ? changed.violations
                                                     : changed.trackedIntervals;
  if (std::exchange(held, value) != value) profileValueChanged(changed);
}

void System::profileIntervalIs(ProfileConfig& changed, double seconds) {
  if (sameNumber(changed.interval, seconds)) return;
  changed.interval = seconds;
  profileValueChanged(changed);
}

void System::profileConfigIs(ProfileSm& sm, ProfileConfig* profileConfig) {
  if (sm.profileConfig == profileConfig) return;
  bool const had = std::exchange(sm.profileConfig, profileConfig) != nullptr;
  if (profileConfig == nullptr) return sm.values.release();
  sm.values.bind(sm, profileConfig->watchers);
  // Once for each of the four values.
  for (int value = 0; had && value < 4; ++value)
    if (sm.values.acts()) handleProfileValues(sm, profileConfig->name, sm.status->intf);
}

void System::statusIs(ProfileSm& sm, Status& status) {
  if (sm.status == &status) return;
  sm.status = &status;
  sm.link.bind(sm, status.watchers);
  if (sm.link.acts()) handleLinkStatus(sm);
}

void System::newProfileSm(IntfSm& sm, int name, ProfileConfig* profileConfig) {
  auto made = std::make_unique<ProfileSm>();
  made->owner = &sm;
  made->name = name;
  made->profileConfig = profileConfig;
  made->config = sm.config;
  made->phyConfig = sm.phyConfig;
  made->status = sm.status;
  made->cause = sm.cause;
  made->queue.restarts = planted(Plant::indexRestarts);
  if (profileConfig != nullptr) made->values.bind(*made, profileConfig->watchers);
  made->link.bind(*made, sm.status->watchers);
  trace(8, 187, "handleInitialized", [] { return std::string{"@new::handleInitialized()"}; });
  made->activeIs(true);
  sm.profile(name) = std::move(made);
}

}  // namespace Simulation::Model
