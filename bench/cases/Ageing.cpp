#include <stdexcept>
#include <string>

#include "bench/harness/Subject.h"
#include "bench/peers/BoostSignals.h"
#include "bench/peers/HandDetector.h"
#include "bench/peers/OurDetector.h"
#include "bench/peers/SigcSignals.h"
#include "bench/peers/SignalDetector.h"

// Case 7: a flap that finds half of the history too old: that half goes, the other is counted
// again. The time is that of one flap of the history.

namespace Bench {

namespace {

/// The window is 100 seconds, and no number of flaps is too many.
constexpr Limits kPatient{.maxFlaps = 1000000000, .interval = 10, .trackedIntervals = 10};

template <typename Detector>
class Histories {
 public:
  Histories(std::size_t interfaces, std::size_t stamps)
      : stamps_{stamps},
        detector_{Setup{interfaces, {kPatient}}, SteppedClock::now},
        interfaces_{interfaces} {
    for (std::size_t i = 0; i < interfaces; ++i)
      ports_.push_back(detector_.handle(i));
  }

  /// Half of the stamps is of now, the other half of a minute later; the next flap comes 110 s
  /// after the first half.
  void prepare() {
    Limits limits = kPatient;
    limits.maxFlaps += ++turn_ % 2;  // a change empties the histories
    detector_.profileIs(0, limits);
    SteppedClock::step = 0;
    SteppedClock::seconds += 1000;
    flaps(stamps_ / 2);
    SteppedClock::seconds += 60;
    flaps(stamps_ - stamps_ / 2);
    if (detector_.counted(interfaces_ - 1, 0).stamps != stamps_)
      throw std::logic_error{"the histories are not what they should be"};
    SteppedClock::seconds += 50;
    all(Link::down);
  }

  void all(Link link) {
    for (auto const& port : ports_)
      detector_.linkIs(port, link);
  }

 private:
  void flaps(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      all(Link::down);
      all(Link::up);
    }
  }

  std::size_t stamps_;
  Detector detector_;
  std::size_t interfaces_;
  std::vector<typename Detector::Handle> ports_;
  unsigned turn_{0};
};

template <typename Detector>
std::unique_ptr<Subject> ageing(std::size_t stamps) {
  std::size_t const interfaces = stamps < 100 ? 256 : stamps < 10000 ? 32 : 1;
  return subject(
      stamps * interfaces, std::make_unique<Histories<Detector>>(interfaces, stamps),
      [](Histories<Detector>& state) { state.all(Link::up); },
      [](Histories<Detector>& state) { state.prepare(); });
}

template <typename Detector>
void add(Registry& registry, std::string const& side) {
  for (std::size_t const stamps : {10U, 100U, 10000U})
    registry.add("7/" + std::to_string(stamps) + '/' + side,
                 [stamps] { return ageing<Detector>(stamps); });
}

}  // namespace

void addAgeing(Registry& registry) {
  add<OurDetector>(registry, "ours");
  add<HandDetector<std::uint32_t>>(registry, "hand");
  add<SignalDetector<SigcSignals>>(registry, "sigc");
  add<SignalDetector<BoostSignals>>(registry, "boost");
  for (std::size_t const stamps : {100U, 10000U})
    registry.add("7/linear/" + std::to_string(stamps),
                 [stamps] { return ageing<OurDetector>(stamps); });
}

}  // namespace Bench
