#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

#include "bench/peers/Limits.h"

// The objects of a switch on a signal library: one signal for each attribute, emitted when the
// value has changed.

namespace Bench {

using PortId = std::uint32_t;

/// One attribute of an object, with its signal.
template <typename Signals, typename Value>
class Attribute {
 public:
  using Signal = typename Signals::template Signal<void()>;

  explicit Attribute(Value value) : value_{value} {}

  Value operator()() const { return value_; }
  void is(Value value) {
    if (value_ == value) return;
    value_ = value;
    changed();
  }

  Signal changed;

 private:
  Value value_;
};

template <typename Signals>
struct PortStatus {
  PortStatus(PortId portId, std::string portName) : id{portId}, name{std::move(portName)} {}

  PortId const id;
  std::string const name;
  Attribute<Signals, Link> link{Link::unknown};
};

template <typename Signals>
struct PortConfig {
  Attribute<Signals, bool> inProgress{false};
};

template <typename Signals>
struct Profile {
  explicit Profile(Limits const& limits)
      : maxFlaps{limits.maxFlaps},
        interval{limits.interval},
        violations{limits.violations},
        trackedIntervals{limits.trackedIntervals} {}

  Limits limits() const { return {maxFlaps(), interval(), violations(), trackedIntervals()}; }

  Attribute<Signals, std::uint32_t> maxFlaps;
  Attribute<Signals, std::uint32_t> interval;  ///< whole seconds
  Attribute<Signals, std::uint32_t> violations;
  Attribute<Signals, std::uint32_t> trackedIntervals;
};

/// The record of what is err-disabled, and since when.
template <typename Signals>
class Record {
 public:
  void is(PortId id, double time) {
    members_[id] = time;
    changed(id);
  }
  void del(PortId id) {
    if (members_.erase(id) != 0) changed(id);
  }
  std::unordered_map<PortId, double> const& members() const { return members_; }

  typename Signals::template Signal<void(PortId)> changed;

 private:
  std::unordered_map<PortId, double> members_;
};

}  // namespace Bench
