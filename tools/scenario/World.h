#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Activity.h"
#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapSm.h"

#include "tools/scenario/Output.h"
#include "tools/scenario/Watchers.h"

namespace Scenario {

/// What a scenario acts on: the state objects of a switch, a Root with its watchers, and the clock.
///
/// The accessors of the state objects return counted pointers by value, so that an object lives
/// until the end of the expression that changes it, though a nested command may put another one in
/// its place meanwhile.
class World {
 public:
  explicit World(Output& out);
  ~World();
  World(World const&) = delete;
  World& operator=(World const&) = delete;

  Output& out() { return out_; }
  Vek::ManualClock& clock() { return clock_; }

  Vek::Ptr<Vek::ActivityConfig> activity() const { return activity_; }
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> phyConfigDir() const { return phyConfigDir_; }
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir() const { return statusDir_; }
  Vek::Ptr<Errdisable::Config> errdisableConfig() const { return errdisableConfig_; }
  Vek::Ptr<LinkFlap::Config> config() const { return config_; }
  Vek::Ptr<Errdisable::CauseStatus> causeStatus() const { return causeStatus_; }

  // New objects, as at the start. The machines keep the old ones until the Root is given the new.
  void renewActivity();
  void renewPhyConfigDir();
  void renewStatusDir();
  void renewErrdisableConfig();
  void renewConfig();
  void renewCauseStatus();

  /// The top-level machine last installed, not counted; null when there is none or it has gone.
  ///
  /// While the Root builds a successor it is still the old machine. Between the old one's end and
  /// the return of `install`, when watchers are called, it is null.
  LinkFlap::LinkFlapSm* machine() const;
  /// The machine of an interface, or of a profile on an interface, below that one; empty when there
  /// is none.
  LinkFlap::LinkFlapIntfSm::Ptr intfSm(Tarn::IntfId const& intf) const;
  LinkFlap::LinkFlapProfileSm::Ptr profileSm(Tarn::IntfId const& intf,
                                             Vek::String const& profile) const;
  /// Has the Root install a machine for the current objects; tells whether it is a new one.
  bool install(Vek::String const& causeName);
  /// Has the Root remove its machine; tells whether there was one.
  bool remove();

  /// Registers a watcher of the Root. One of that name gives way to it.
  void rootWatcherIs(Vek::String const& name, bool throws);
  void rootWatcherDel(Vek::String const& name);

  /// What is to be done, once, when the next err-disable record was written and shown.
  void onErrdisableIs(std::function<void()> action) { onErrdisable_ = std::move(action); }

 private:
  /// Makes an object the beginning of paths, under that name.
  void pathRootIs(std::string const& name, Vek::Ptr<Vek::PtrInterface const> const& object);
  std::uint64_t history(Tarn::IntfId const& intf) const;
  void errdisabled();

  Output& out_;
  Vek::ManualClock clock_{0};
  Vek::Ptr<Vek::ActivityConfig> activity_;
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> phyConfigDir_;
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir_;
  Vek::Ptr<Errdisable::Config> errdisableConfig_;
  Vek::Ptr<LinkFlap::Config> config_;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  Vek::Ptr<LinkFlap::Root> root_;
  LinkFlap::LinkFlapSm* installed_{nullptr};  // see machine()
  Vek::Ptr<CauseStatusWatcher> causeStatusWatcher_;
  std::map<Vek::String, Vek::Ptr<RootWatcher>> rootWatchers_;
  std::function<void()> onErrdisable_;
  std::set<std::string> pathRoots_;
};

}  // namespace Scenario
