#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "tests/statemachines/Watchers.h"
#include "tests/support/Switch.h"

/// A switch with three interfaces, and a watcher of the err-disable record that does something in
/// the middle of it all: from inside the first notification that it hears once it is armed.
///
/// Ethernet1 has no settings of its own, Ethernet2 lists p1, Ethernet3 has settings without a list.
/// p1 err-disables at the second flap within 100 s, the built-in profile at the second within 10 s.
///
/// Two more watchers, one registered before the meddler and one after it, only count.
class ReentryWorld {
 public:
  using Act = std::function<void(ReentryWorld&, Tarn::IntfId const&)>;

  ReentryWorld();
  ~ReentryWorld();
  ReentryWorld(ReentryWorld const&) = delete;
  ReentryWorld& operator=(ReentryWorld const&) = delete;

  void arm(Act act) { act_ = std::move(act); }
  /// Whether the act was run.
  bool acted() const noexcept { return acted_; }

  /// Compares what there is with what the inputs demand: machines, settings, profiles, records, and
  /// how many machines hear of one flap more.
  void expectSettled();
  /// Each change of the record was told once to each of the two watchers that were there all along.
  void expectEachChangeToldOnce() const;

  /// Takes the interface away as a driver does: the status first.
  void drop(Tarn::IntfId const& id);
  Vek::Ptr<LinkFlap::IntfConfig> settingsOf(Tarn::IntfId const& id) const;

  Switch sw{{.maxFlaps = 1, .interval = 10}};
  Tarn::IntfId const ethernet1{"Ethernet1"};
  Tarn::IntfId const ethernet2{"Ethernet2"};
  Tarn::IntfId const ethernet3{"Ethernet3"};
  Vek::Ptr<LinkFlap::ProfileConfig> p1;
  Vek::Ptr<CauseWatcher> meddler;
  Vek::Ptr<CauseWatcher> after;
  std::vector<Vek::Ptr<CauseWatcher>> latecomers;
  /// The act left a record that no input demands; it is not looked at.
  bool recordsByHand{false};
  /// The act detached `after` for good.
  bool afterLeft{false};

 private:
  void meddle(Tarn::IntfId const& id);
  void expectMonitored(Tarn::IntfId const& id);
  void expectNothingListens() const;
  void expectOneFlapMoreReaches(Tarn::IntfId const& id);
  std::vector<Tarn::IntfId> everyInterface() const;

  Act act_;
  bool acted_{false};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_{sw.causeStatus};
  std::uint32_t toldBefore_{0};
  std::uint32_t toldAfter_{0};
  Vek::Ptr<CauseWatcher> before_;
};
