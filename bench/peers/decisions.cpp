#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "bench/peers/BoostSignals.h"
#include "bench/peers/HandDetector.h"
#include "bench/peers/OurDetector.h"
#include "bench/peers/SigcSignals.h"
#include "bench/peers/SignalDetector.h"

// Whether the library and the peers decide alike: random switches, random events, and after each
// event the records and the counting of the interface are compared. What is timed later does the
// same work, or nothing is timed.

namespace Bench {

namespace {

using Random = std::mt19937;

unsigned upTo(Random& random, unsigned highest) {
  return std::uniform_int_distribution<unsigned>{0, highest}(random);
}

/// What became of one interface.
struct Outcome {
  std::optional<double> errDisabledAt;
  std::vector<Counted> profiles;

  friend bool operator==(Outcome const&, Outcome const&) = default;
};

std::string text(Outcome const& outcome) {
  std::ostringstream out;
  if (outcome.errDisabledAt) out << "err-disabled at " << *outcome.errDisabledAt;
  for (Counted const& counted : outcome.profiles)
    out << " [flaps " << counted.flaps << " intervals " << counted.intervals << " violations "
        << counted.violations << " stamps " << counted.stamps << ']';
  return out.str();
}

enum class EventKind { link, configInProgress, profile, recordDel };

struct Event {
  EventKind kind;
  std::size_t interface;
  unsigned value;
  std::size_t profile;
  Limits limits;
};

template <typename Detector>
Outcome after(Detector& detector, Event const& event, std::size_t profiles) {
  auto const port = detector.handle(event.interface);
  switch (event.kind) {
    case EventKind::link:
      detector.linkIs(port, static_cast<Link>(event.value));
      break;
    case EventKind::configInProgress:
      detector.configInProgressIs(port, event.value != 0);
      break;
    case EventKind::profile:
      detector.profileIs(event.profile, event.limits);
      break;
    case EventKind::recordDel:
      detector.errDisabledDel(port);
      break;
  }
  Outcome outcome{detector.errDisabledAt(port), {}};
  for (std::size_t i = 0; i < profiles; ++i)
    outcome.profiles.push_back(detector.counted(event.interface, i));
  return outcome;
}

Limits randomLimits(Random& random) {
  return {.maxFlaps = upTo(random, 4),
          .interval = 1 + upTo(random, 20),
          .violations = 1 + upTo(random, 2),
          .trackedIntervals = 1 + upTo(random, 3)};
}

Event randomEvent(Random& random, Setup const& setup) {
  Event event{};
  event.interface = upTo(random, static_cast<unsigned>(setup.interfaces) - 1);
  event.profile = upTo(random, static_cast<unsigned>(setup.profiles.size()) - 1);
  unsigned const kind = upTo(random, 199);
  if (kind == 0) {
    event.kind = EventKind::profile;
    event.limits = randomLimits(random);
  } else if (kind < 5) {
    event.kind = EventKind::recordDel;
  } else if (kind < 15) {
    event.kind = EventKind::configInProgress;
    event.value = upTo(random, 3) == 0 ? 1 : 0;
  } else {
    event.kind = EventKind::link;
    event.value = upTo(random, 2);
  }
  return event;
}

struct Tally {
  unsigned long events{0};
  unsigned long errDisables{0};
  unsigned long aged{0};  ///< events after which a history was shorter, but not empty
};

void compare(char const* peer, Outcome const& ours, Outcome const& theirs, unsigned seed,
             unsigned event) {
  if (ours == theirs) return;
  std::printf("decisions differ: seed %u, event %u\n  ours:%s\n  %s:%s\n", seed, event,
              text(ours).c_str(), peer, text(theirs).c_str());
  std::exit(1);
}

void runOne(unsigned seed, unsigned events, Tally& tally) {
  Random random{seed};
  Setup setup{1 + upTo(random, 3), {}};
  for (unsigned i = 0, profiles = 1 + upTo(random, 3); i < profiles; ++i)
    setup.profiles.push_back(randomLimits(random));
  std::size_t const profiles = setup.profiles.size();
  bool const inBursts = upTo(random, 1) == 0;

  SteppedClock::step = 0;
  SteppedClock::seconds = 0;
  OurDetector ours{setup, SteppedClock::now};
  HandDetector<std::uint32_t> hand{setup, SteppedClock::now};
  HandDetector<std::string> handByName{setup, SteppedClock::now};
  SignalDetector<SigcSignals> sigc{setup, SteppedClock::now};
  SignalDetector<BoostSignals> boost{setup, SteppedClock::now};

  std::vector<Outcome> before(setup.interfaces);
  for (unsigned i = 0; i < events; ++i) {
    bool const pause = inBursts ? upTo(random, 9) == 0 : upTo(random, 1) == 0;
    if (pause) SteppedClock::seconds += upTo(random, inBursts ? 400 : 40) / 8.0;
    Event const event = randomEvent(random, setup);
    Outcome const outcome = after(ours, event, profiles);
    compare("hand-written", outcome, after(hand, event, profiles), seed, i);
    compare("hand-written, by name", outcome, after(handByName, event, profiles), seed, i);
    compare("libsigc++", outcome, after(sigc, event, profiles), seed, i);
    compare("Boost.Signals2", outcome, after(boost, event, profiles), seed, i);

    Outcome& last = before[event.interface];
    ++tally.events;
    if (outcome.errDisabledAt && outcome.errDisabledAt != last.errDisabledAt) ++tally.errDisables;
    if (last.profiles.size() == profiles)
      for (std::size_t p = 0; p < profiles; ++p)
        if (outcome.profiles[p].stamps > 1 &&
            outcome.profiles[p].stamps <= last.profiles[p].stamps &&
            event.kind == EventKind::link && outcome.profiles[p] != last.profiles[p])
          ++tally.aged;
    last = outcome;
  }
}

}  // namespace

}  // namespace Bench

int main() {
  Bench::Tally tally;
  for (unsigned seed = 1; seed <= 200; ++seed)
    Bench::runOne(seed, 2000, tally);
  std::printf("decisions: %lu events, %lu err-disables, %lu agings: all sides alike\n",
              tally.events, tally.errDisables, tally.aged);
  // A comparison that never saw the decisions compared nothing.
  return tally.errDisables > 1000 && tally.aged > 1000 ? 0 : 1;
}
