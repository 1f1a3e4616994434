#pragma once

#include <functional>
#include <map>

#include "runtime/model/ErrdisableCauseStatus.h"

#include "statemachines/Root.h"

#include "tools/scenario/Output.h"

namespace Scenario {

/// Prints what becomes of the err-disable records: `S` and `S-` lines.
///
/// It remembers what it has printed and prints only what differs from that, so the lines do not
/// depend on whether the runtime notifies of a write that changes nothing.
class CauseStatusWatcher final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  /// How much flap history the machines of an interface hold.
  using History = std::function<std::uint64_t(Tarn::IntfId const&)>;

  /// `errdisabled` is called after each `S` line.
  CauseStatusWatcher(Output& out, History history, std::function<void()> errdisabled)
      : out_{out}, history_{std::move(history)}, errdisabled_{std::move(errdisabled)} {}

  /// Watches `causeStatus` from now on, of which nothing was printed yet.
  void watch(Vek::Ptr<Errdisable::CauseStatus> const& causeStatus);

  void onIntfStatus(Tarn::IntfId intf) override;

 private:
  ~CauseStatusWatcher() override = default;

  Output& out_;
  History history_;
  std::function<void()> errdisabled_;
  std::map<Tarn::IntfId, double> printed_;
};

/// A watcher of the Root that says what it hears.
class RootWatcher final : public LinkFlap::Root::NotifieeConst {
 public:
  /// `throws`: whether it throws when the machine changes.
  RootWatcher(Output& out, Vek::String name, bool throws)
      : out_{out}, name_{std::move(name)}, throws_{throws} {}

  void onLinkFlapSm() override;
  void onNotificationException(Vek::AttributeId id) override;

 private:
  ~RootWatcher() override = default;

  Output& out_;
  Vek::String name_;
  bool throws_;
};

}  // namespace Scenario
