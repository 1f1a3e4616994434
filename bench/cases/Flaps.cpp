#include <string>

#include "bench/harness/Order.h"
#include "bench/harness/Subject.h"
#include "bench/peers/BoostSignals.h"
#include "bench/peers/HandDetector.h"
#include "bench/peers/OurDetector.h"
#include "bench/peers/SigcSignals.h"
#include "bench/peers/SignalDetector.h"

// Cases 3 to 5: changes of the link status of many interfaces, in random order.

namespace Bench {

namespace {

/// After so many flaps of each interface the histories are emptied, outside the measurement.
constexpr unsigned kStamps{10};

/// No flap of these cases is a violation, and none is old enough to go.
constexpr Limits kGenerous{.maxFlaps = 1000, .interval = 100000};

template <typename Detector>
class Switch {
 public:
  Switch(std::size_t interfaces, std::size_t profiles)
      : detector_{Setup{interfaces, std::vector<Limits>(profiles, kGenerous)}, SteppedClock::now},
        profiles_{profiles} {
    SteppedClock::step = 1e-6;
    for (std::uint32_t const index : randomOrder(interfaces))
      ports_.push_back(detector_.handle(index));
  }

  void all(Link link) {
    for (auto const& port : ports_)
      detector_.linkIs(port, link);
  }

  /// All links are down, and no history is longer than it may be.
  void allDown() {
    all(Link::down);
    if (++flaps_ % kStamps != 0) return;
    Limits limits = kGenerous;
    limits.maxFlaps += (flaps_ / kStamps) % 2;  // a change, of no other effect
    for (std::size_t i = 0; i < profiles_; ++i)
      detector_.profileIs(i, limits);
  }

 private:
  Detector detector_;
  std::size_t profiles_;
  std::vector<typename Detector::Handle> ports_;  ///< in the order of the changes
  unsigned flaps_{0};
};

template <typename Detector>
std::unique_ptr<Subject> acceptedFlaps(std::size_t interfaces, std::size_t profiles) {
  return subject(
      interfaces, std::make_unique<Switch<Detector>>(interfaces, profiles),
      [](Switch<Detector>& state) { state.all(Link::up); },
      [](Switch<Detector>& state) { state.allDown(); });
}

template <typename Detector>
std::unique_ptr<Subject> ignoredChanges(std::size_t interfaces) {
  constexpr std::size_t kRounds{8};
  return subject(2 * kRounds * interfaces, std::make_unique<Switch<Detector>>(interfaces, 1),
                 [](Switch<Detector>& state) {
                   for (std::size_t i = 0; i < kRounds; ++i) {
                     state.all(Link::down);
                     state.all(Link::unknown);
                   }
                 });
}

template <typename Detector>
void add(Registry& registry, std::string const& side) {
  for (std::size_t const interfaces : {64U, 4096U, 100000U, 1000000U})
    registry.add("3/" + std::to_string(interfaces) + '/' + side,
                 [interfaces] { return acceptedFlaps<Detector>(interfaces, 1); });
  for (std::size_t const interfaces : {64U, 4096U}) {
    registry.add("4/" + std::to_string(interfaces) + '/' + side,
                 [interfaces] { return acceptedFlaps<Detector>(interfaces, 4); });
    registry.add("5/" + std::to_string(interfaces) + '/' + side,
                 [interfaces] { return ignoredChanges<Detector>(interfaces); });
  }
}

}  // namespace

void addFlaps(Registry& registry) {
  add<OurDetector>(registry, "ours");
  add<HandDetector<std::uint32_t>>(registry, "hand");
  add<HandDetector<std::string>>(registry, "hand-by-name");
  add<SignalDetector<SigcSignals>>(registry, "sigc");
  add<SignalDetector<BoostSignals>>(registry, "boost");
}

}  // namespace Bench
