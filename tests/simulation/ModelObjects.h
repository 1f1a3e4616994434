#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/simulation/Outcome.h"

/// The state objects as the model sees them: plain values, and lists of who watches.
namespace Simulation::Model {

struct ProfileSm;
struct IntfSm;
struct TopSm;

template <typename Owner>
using Watchers = std::vector<Owner*>;

/// What ties a machine to an object it watches.
template <typename Owner>
class Reactor {
 public:
  Reactor() = default;
  Reactor(Reactor const&) = delete;
  Reactor& operator=(Reactor const&) = delete;
  ~Reactor() { activeIs(false); }

  void bind(Owner& owner, Watchers<Owner>& watchers) {
    activeIs(false);
    owner_ = &owner;
    watchers_ = &watchers;
    activeIs(true);
  }
  void release() {
    activeIs(false);
    watchers_ = nullptr;
    zombie_ = false;
  }
  void activeIs(bool on) {
    if (watchers_ == nullptr || on == registered_) return;
    if (on) {
      watchers_->push_back(owner_);
    } else {
      watchers_->erase(std::find(watchers_->begin(), watchers_->end(), owner_));
    }
    registered_ = on;
  }
  void zombieIs(bool on) {
    if (watchers_ == nullptr || on == zombie_) return;
    activeIs(!on);
    zombie_ = on;
  }
  bool acts() const { return !zombie_; }

 private:
  Owner* owner_{nullptr};
  Watchers<Owner>* watchers_{nullptr};
  bool registered_{false};
  bool zombie_{false};
};

/// A list of names with a switch each.
template <int Size>
struct Switches {
  std::array<std::optional<bool>, Size> members{};
  int size{0};

  bool has(int key) const { return members[at(key)].has_value(); }
  bool on(int key) const { return members[at(key)].value_or(false); }
  /// Whether anything has changed.
  bool put(int key, bool value) {
    auto& member = members[at(key)];
    if (member == value) return false;
    if (!member) ++size;
    member = value;
    return true;
  }
  bool del(int key) {
    if (!has(key)) return false;
    members[at(key)].reset();
    --size;
    return true;
  }
  static std::size_t at(int key) { return static_cast<std::size_t>(key); }
};

/// Objects by interface or name; a member's object may be null.
template <typename Object, int Size>
struct Objects {
  std::array<std::optional<Object*>, Size> members{};

  bool has(int key) const { return members[static_cast<std::size_t>(key)].has_value(); }
  Object* get(int key) const { return members[static_cast<std::size_t>(key)].value_or(nullptr); }
  bool put(int key, Object* object) {
    auto& member = members[static_cast<std::size_t>(key)];
    return std::exchange(member, object) != std::optional<Object*>{object};
  }
  bool del(int key) {
    return std::exchange(members[static_cast<std::size_t>(key)], std::nullopt).has_value();
  }
};

/// Who an object is: the library's counterpart, for comparison and as it prints in messages.
struct Peer {
  void const* peer{nullptr};
  std::string address;
};

struct Status : Peer {
  int intf{0};
  std::uint32_t rawLinkStatus{0};
  Watchers<ProfileSm> watchers;
};

struct PhyConfig : Peer {
  std::uint32_t phyConfigState{0};
};

struct IntfConfig : Peer {
  bool enabled{false};
  Switches<kProfiles> profileList;
  Watchers<IntfSm> watchers;
};

struct ProfileConfig : Peer {
  int name{0};
  std::uint32_t maxFlaps{0};
  double interval{0};
  std::uint32_t violations{0};
  std::uint32_t trackedIntervals{0};
  Watchers<ProfileSm> watchers;
};

struct Config : Peer {
  std::uint32_t maxFlaps{5};
  double interval{10};
  Objects<IntfConfig, kMaxInterfaces> intfConfig;
  Objects<ProfileConfig, kProfiles> profileConfig;
  Switches<kProfiles> defaultProfileList;
  Watchers<TopSm> watchers;
  Watchers<IntfSm> valueWatchers;
};

struct ConfigDir : Peer {
  Objects<PhyConfig, kMaxInterfaces> intfConfig;
  Watchers<TopSm> watchers;
};

struct StatusDir : Peer {
  Objects<Status, kMaxInterfaces> intfStatus;
  Watchers<TopSm> watchers;
};

struct ErrdisableConfig : Peer {
  Switches<kCauses> disabled;
  Watchers<TopSm> watchers;
};

struct CauseStatus : Peer {
  int record{0};
  std::array<std::optional<double>, kMaxInterfaces> intfStatus{};
  std::uint32_t changes{0};
};

}  // namespace Simulation::Model
