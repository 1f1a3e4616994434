#pragma once

#include <optional>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "bench/harness/SteppedClock.h"
#include "bench/peers/FlapCounter.h"
#include "bench/peers/Limits.h"

namespace Bench {

/// The detector that one would write by hand: a hash map of structs, found by the identifier that
/// comes with the event, and nobody to tell but whoever reads the record.
///
/// `Id`: a number, as the kernel's index of an interface, or the interface's name.
template <typename Id>
class HandDetector {
 public:
  using Handle = Id;

  HandDetector(Setup const& setup, ClockFunction clock) : clock_{clock}, profiles_{setup.profiles} {
    interfaces_.reserve(setup.interfaces);
    for (std::size_t i = 0; i < setup.interfaces; ++i)
      interfaces_[handle(i)].counters.resize(profiles_.size());
  }

  Handle handle(std::size_t index) const {
    if constexpr (std::is_same_v<Id, std::string>)
      return interfaceName(index);
    else
      return static_cast<Id>(index + 1);
  }

  void linkIs(Handle const& id, Link link) {
    auto const found = interfaces_.find(id);
    if (found == interfaces_.end()) return;
    Interface& interface = found->second;
    if (interface.link == link) return;
    interface.link = link;
    if (link != Link::up || interface.configInProgress) return;
    double const now = clock_();
    for (std::size_t i = 0; i < interface.counters.size(); ++i)
      if (interface.counters[i].flap(now, profiles_[i])) errDisable(id, interface, now);
  }

  void configInProgressIs(Handle const& id, bool on) { interfaces_[id].configInProgress = on; }

  /// A change of a profile starts the counting anew on every interface.
  void profileIs(std::size_t profile, Limits const& limits) {
    profiles_[profile] = limits;
    for (auto& [id, interface] : interfaces_)
      interface.counters[profile].clear();
  }

  std::optional<double> errDisabledAt(Handle const& id) const {
    auto const found = errDisabled_.find(id);
    return found == errDisabled_.end() ? std::nullopt : std::optional{found->second};
  }
  void errDisabledDel(Handle const& id) { errDisabled_.erase(id); }

  Counted counted(std::size_t index, std::size_t profile) const {
    return interfaces_.at(handle(index)).counters[profile].counted();
  }

 private:
  struct Interface {
    Link link{Link::unknown};
    bool configInProgress{false};
    std::vector<FlapCounter> counters;  ///< in the order of the profiles
  };

  void errDisable(Handle const& id, Interface& interface, double now) {
    for (FlapCounter& counter : interface.counters)
      counter.clear();
    errDisabled_[id] = now;
  }

  ClockFunction clock_;
  std::vector<Limits> profiles_;
  std::unordered_map<Id, Interface> interfaces_;
  std::unordered_map<Id, double> errDisabled_;
};

}  // namespace Bench
