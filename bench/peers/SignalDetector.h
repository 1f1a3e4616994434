#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "bench/harness/SteppedClock.h"
#include "bench/peers/FlapCounter.h"
#include "bench/peers/SignalObjects.h"

namespace Bench {

template <typename Signals>
class PortMonitor;

/// One profile on one interface: hears of the link and of the profile's values.
template <typename Signals>
class FlapDetector : public Signals::Receiver {
 public:
  FlapDetector(PortMonitor<Signals>& monitor, Profile<Signals>& profile)
      : monitor_{monitor}, profile_{profile} {
    Signals::connect(monitor.status.link.changed, *this, &FlapDetector::onLink);
    Signals::connect(profile.maxFlaps.changed, *this, &FlapDetector::onProfile);
    Signals::connect(profile.interval.changed, *this, &FlapDetector::onProfile);
    Signals::connect(profile.violations.changed, *this, &FlapDetector::onProfile);
    Signals::connect(profile.trackedIntervals.changed, *this, &FlapDetector::onProfile);
  }

  void onLink();
  void onProfile() { counter_.clear(); }
  void clear() { counter_.clear(); }
  Counted counted() const { return counter_.counted(); }

 private:
  PortMonitor<Signals>& monitor_;
  Profile<Signals> const& profile_;
  FlapCounter counter_;
};

/// One interface: what the driver reports of it, and its detectors.
template <typename Signals>
class PortMonitor {
 public:
  PortMonitor(PortId id, std::vector<std::unique_ptr<Profile<Signals>>> const& profiles,
              Record<Signals>& errDisabled, ClockFunction portClock)
      : status{id, interfaceName(id - 1)}, record{errDisabled}, clock{portClock} {
    detectors.reserve(profiles.size());
    for (auto const& profile : profiles)
      detectors.push_back(std::make_unique<FlapDetector<Signals>>(*this, *profile));
  }

  void errDisable(double now) {
    for (auto const& detector : detectors)
      detector->clear();
    record.is(status.id, now);
  }

  PortStatus<Signals> status;
  PortConfig<Signals> config;
  Record<Signals>& record;
  ClockFunction clock;
  std::vector<std::unique_ptr<FlapDetector<Signals>>> detectors;
};

template <typename Signals>
void FlapDetector<Signals>::onLink() {
  if (monitor_.status.link() != Link::up || monitor_.config.inProgress()) return;
  double const now = monitor_.clock();
  if (counter_.flap(now, profile_.limits())) monitor_.errDisable(now);
}

/// The detector on a signal library: an object for each interface, for each profile on it one that
/// is connected to its signals. The driver holds the object that it reports to.
template <typename Signals>
class SignalDetector {
 public:
  using Handle = PortMonitor<Signals>*;

  SignalDetector(Setup const& setup, ClockFunction clock) {
    for (Limits const& limits : setup.profiles)
      profiles_.push_back(std::make_unique<Profile<Signals>>(limits));
    ports_.reserve(setup.interfaces);
    for (std::size_t i = 0; i < setup.interfaces; ++i) {
      auto const id = static_cast<PortId>(i + 1);
      ports_.emplace(id,
                     std::make_unique<PortMonitor<Signals>>(id, profiles_, errDisabled_, clock));
    }
  }

  Handle handle(std::size_t index) const { return ports_.at(static_cast<PortId>(index + 1)).get(); }

  void linkIs(Handle port, Link link) { port->status.link.is(link); }
  void configInProgressIs(Handle port, bool on) { port->config.inProgress.is(on); }

  void profileIs(std::size_t profile, Limits const& limits) {
    Profile<Signals>& object = *profiles_[profile];
    object.maxFlaps.is(limits.maxFlaps);
    object.interval.is(limits.interval);
    object.violations.is(limits.violations);
    object.trackedIntervals.is(limits.trackedIntervals);
  }

  std::optional<double> errDisabledAt(Handle port) const {
    auto const found = errDisabled_.members().find(port->status.id);
    return found == errDisabled_.members().end() ? std::nullopt : std::optional{found->second};
  }
  void errDisabledDel(Handle port) { errDisabled_.del(port->status.id); }

  Counted counted(std::size_t index, std::size_t profile) const {
    return handle(index)->detectors[profile]->counted();
  }

 private:
  // Order: the ports go first, and with them the connections to what stands above.
  std::vector<std::unique_ptr<Profile<Signals>>> profiles_;
  Record<Signals> errDisabled_;
  std::unordered_map<PortId, std::unique_ptr<PortMonitor<Signals>>> ports_;
};

}  // namespace Bench
