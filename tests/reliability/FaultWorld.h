#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/vek/Clock.h"
#include "runtime/vek/Report.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/reliability/SavedState.h"

/// All that can be seen of one profile machine.
struct ProfileMachineState {
  Vek::String name;
  Vek::Ptr<LinkFlap::ProfileConfig const> profileConfig;
  Vek::Ptr<Interface::EthPhyIntfStatus const> status;
  std::uint32_t flaps;
  std::uint32_t intervals;
  std::uint32_t violations;
  Vek::LinkQueueMetadata metadata;
  std::vector<std::pair<std::uint32_t, double>> times;

  friend bool operator==(ProfileMachineState const&, ProfileMachineState const&) = default;
};

/// All that can be seen of one interface machine.
struct InterfaceMachineState {
  Tarn::IntfId id;
  Vek::Ptr<Interface::EthPhyIntfStatus const> status;
  Vek::Ptr<LinkFlap::Config const> config;
  Vek::Ptr<LinkFlap::IntfConfig const> settings;
  Vek::Ptr<Interface::EthPhyIntfConfig const> phyConfig;
  bool enable;
  std::vector<ProfileMachineState> profiles;

  friend bool operator==(InterfaceMachineState const&, InterfaceMachineState const&) = default;
};

/// The whole of the library and of its inputs at one moment.
struct WorldState {
  SavedState<LinkFlap::Config> config;
  SavedState<Interface::AllEthPhyIntfConfigDir> configDir;
  SavedState<Interface::AllEthPhyIntfStatusDir> statusDir;
  SavedState<Errdisable::Config> errdisableConfig;
  SavedState<Errdisable::CauseStatus> records;
  std::vector<SavedState<LinkFlap::IntfConfig>> settings;
  std::vector<SavedState<LinkFlap::ProfileConfig>> profiles;
  std::vector<SavedState<Interface::EthPhyIntfStatus>> status;
  std::vector<SavedState<Interface::EthPhyIntfConfig>> phyConfigs;
  bool installed;
  Vek::Ptr<Vek::ActivityConfig> activity;
  std::vector<InterfaceMachineState> machines;

  /// Whether the inputs are the same; records and machines are not looked at.
  bool sameInputs(WorldState const& other) const;
  friend bool operator==(WorldState const&, WorldState const&) = default;
};

/// A switch with four interfaces and three profiles, for a scenario in which memory runs out. It can
/// be put back to where it was, so that one event is tried again and again on the living system.
///
/// Watchers of the record and of the configuration, before and after the library's own reactors and
/// one that itself needs memory, count what they are told.
class FaultWorld {
 public:
  FaultWorld();
  ~FaultWorld();
  FaultWorld(FaultWorld const&) = delete;
  FaultWorld& operator=(FaultWorld const&) = delete;

  WorldState state() const;
  /// Brings all inputs, machines, histories and records to what they were. The machines' reactors
  /// are then registered in the order of the collections.
  void load(WorldState const& state);

  void install(Vek::Ptr<Vek::ActivityConfig> const& onActivity);
  LinkFlap::LinkFlapSm& machine() const { return *root->linkFlapSm(); }
  LinkFlap::LinkFlapIntfSm::Ptr intfSm(Tarn::IntfId const& id) const;
  Vek::Ptr<Interface::EthPhyIntfStatus> status(Tarn::IntfId const& id) const;
  Vek::Ptr<LinkFlap::IntfConfig> settings(Tarn::IntfId const& id) const;
  void addInterface(Tarn::IntfId const& id);

  /// What was told wrongly since the beginning, in words; empty when each change of the record and
  /// of the configuration was told once to each watcher.
  std::string toldWrongly() const;
  /// Callbacks that failed since the last call, by what the runtime reported.
  unsigned takeReports();
  /// How many of these were the watcher's that needs memory itself.
  unsigned takeGreedyFailures();

  Vek::ManualClock clock{1};
  Vek::Ptr<Vek::ActivityConfig> activity{Vek::make<Vek::ActivityConfig>()};
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir{
      Vek::make<Interface::AllEthPhyIntfConfigDir>()};
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir{
      Vek::make<Interface::AllEthPhyIntfStatusDir>()};
  Vek::Ptr<Errdisable::Config> errdisableConfig{Vek::make<Errdisable::Config>()};
  Vek::Ptr<LinkFlap::Config> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus{Vek::make<Errdisable::CauseStatus>()};
  Vek::String const causeName{"link-flap"};
  LinkFlap::Root::Ptr root{LinkFlap::rootFactory("faults")};
  std::vector<Tarn::IntfId> const interfaces;
  std::vector<Vek::String> const profileNames{"p1", "p2", "default"};

  /// Planted: the watcher that runs out of memory withdraws the record it was told of.
  static bool plantLostRecord;
  /// Planted: a flap that is not counted has cleared the histories of its interface.
  static bool plantHalfDone;
  /// Planted: the watcher that runs out of memory loses a block.
  static bool plantLeak;
  /// Planted: the last watcher stops listening when somebody ran out of memory.
  static bool plantDeafWatcher;

 private:
  class CauseRecorder;
  class ConfigRecorder;
  class GreedyWatcher;

  template <typename T, typename Members>
  static std::vector<SavedState<T>> savedMembers(Members const& members);
  void loadMachine(InterfaceMachineState const& wanted);

  std::vector<Vek::Ptr<CauseRecorder>> causeRecorders_;
  std::vector<Vek::Ptr<ConfigRecorder>> configRecorders_;
  Vek::Ptr<GreedyWatcher> greedy_;
  unsigned reports_{0};
  Vek::ExceptionSink previousSink_;
};
