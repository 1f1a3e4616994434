#include <stdexcept>
#include <string>

#include "bench/harness/Order.h"
#include "bench/harness/Subject.h"
#include "bench/peers/BoostSignals.h"
#include "bench/peers/HandDetector.h"
#include "bench/peers/OurDetector.h"
#include "bench/peers/SigcSignals.h"
#include "bench/peers/SignalDetector.h"

// Case 6: the flap that err-disables an interface, whose profiles hold 10 stamps each: the first
// profile's limit is exceeded, all histories are cleared, the record is written.

namespace Bench {

namespace {

constexpr std::size_t kInterfaces{256};
constexpr unsigned kStamps{10};

template <typename Detector>
class Offenders {
 public:
  explicit Offenders(std::size_t profiles)
      : limits_(profiles, {.maxFlaps = 1000, .interval = 100000}),
        detector_{Setup{kInterfaces, strict(limits_)}, SteppedClock::now} {
    SteppedClock::step = 1e-6;
    for (std::uint32_t const index : randomOrder(kInterfaces))
      ports_.push_back(detector_.handle(index));
  }

  /// Nothing is err-disabled, and every profile of every interface holds 10 stamps.
  void prepare() {
    for (auto const& port : ports_)
      detector_.errDisabledDel(port);
    for (std::size_t i = 0; i < limits_.size(); ++i) {
      limits_[i].interval ^= 1U;  // a change empties the histories
      detector_.profileIs(i, limits_[i]);
    }
    for (unsigned i = 0; i < kStamps; ++i) {
      all(Link::down);
      all(Link::up);
    }
    all(Link::down);
    if (detector_.errDisabledAt(ports_.front())) throw std::logic_error{"err-disabled too early"};
  }

  void all(Link link) {
    for (auto const& port : ports_)
      detector_.linkIs(port, link);
  }

 private:
  static std::vector<Limits> const& strict(std::vector<Limits>& limits) {
    limits.front().maxFlaps = kStamps;
    return limits;
  }

  std::vector<Limits> limits_;
  Detector detector_;
  std::vector<typename Detector::Handle> ports_;
};

template <typename Detector>
void add(Registry& registry, std::string const& side) {
  for (std::size_t const profiles : {1U, 4U})
    registry.add("6/" + std::to_string(profiles) + '/' + side, [profiles] {
      return subject(
          kInterfaces, std::make_unique<Offenders<Detector>>(profiles),
          [](Offenders<Detector>& state) { state.all(Link::up); },
          [](Offenders<Detector>& state) { state.prepare(); });
    });
}

}  // namespace

void addErrDisables(Registry& registry) {
  add<OurDetector>(registry, "ours");
  add<HandDetector<std::uint32_t>>(registry, "hand");
  add<SignalDetector<SigcSignals>>(registry, "sigc");
  add<SignalDetector<BoostSignals>>(registry, "boost");
}

}  // namespace Bench
