#pragma once

#include <map>
#include <string_view>

#include "runtime/vek/Clock.h"
#include "runtime/vek/Report.h"
#include "runtime/vek/Trace.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/simulation/Model.h"

namespace Simulation {

/// A state object and what the model has for it.
template <typename Lib, typename Mod>
struct Twin {
  Vek::Ptr<Lib> lib;
  Mod model;
};

/// The library's side: every state object there is, a Root, a clock that the simulation moves, and
/// what the library lets out. One at a time: clock and sinks are the process's.
///
/// The objects are made once; an object that was replaced is still there, may still be watched by
/// the machine that was made from it, and may come back.
class World {
 public:
  static constexpr int kVariants{2};

  World(Names const& names, int interfaces);
  ~World();
  World(World const&) = delete;
  World& operator=(World const&) = delete;

  Tarn::IntfId const& id(int intf) const { return ids_[static_cast<std::size_t>(intf)]; }
  Vek::String const& profile(int name) const { return profiles_[static_cast<std::size_t>(name)]; }
  Vek::String const& cause(int number) const { return causes_[static_cast<std::size_t>(number)]; }
  Names const& names() const { return names_; }

  LinkFlap::LinkFlapSm* installed() const { return root_->linkFlapSm().get(); }
  LinkFlap::LinkFlapSm* kept() const { return kept_.get(); }
  LinkFlap::Root const& root() const { return *root_; }

  /// The variant of each input that a machine is installed with.
  struct Choice {
    int configDir;
    int statusDir;
    int errdisable;
    int config;
    int cause;
    int causeName;
    int activity;
  };
  void install(Choice const& choice, bool keep);
  Model::Inputs inputs(Choice const& choice);
  void uninstall(bool keep);
  void dropKept() { kept_ = nullptr; }
  void newRoot();

  /// Serials of the machine installed and the one kept, as messages tell them apart.
  void serialsAre(int installed, int kept) {
    installedSerial_ = installed;
    keptSerial_ = kept;
  }

  void clockPlanIs(ClockPlan const& plan) { plan_ = plan; }
  void newClockRun();

  template <typename T>
  using Variants = std::array<T, kVariants>;
  std::vector<Variants<Twin<Interface::EthPhyIntfStatus, Model::Status>>> status;
  std::vector<Variants<Twin<Interface::EthPhyIntfConfig, Model::PhyConfig>>> phyConfig;
  std::vector<Variants<Twin<LinkFlap::IntfConfig, Model::IntfConfig>>> settings;
  std::array<Variants<Twin<LinkFlap::ProfileConfig, Model::ProfileConfig>>, kProfiles> profiles;
  Variants<Twin<LinkFlap::Config, Model::Config>> config;
  Variants<Twin<Interface::AllEthPhyIntfConfigDir, Model::ConfigDir>> configDir;
  Variants<Twin<Interface::AllEthPhyIntfStatusDir, Model::StatusDir>> statusDir;
  Variants<Twin<Errdisable::Config, Model::ErrdisableConfig>> errdisable;
  Variants<Twin<Errdisable::CauseStatus, Model::CauseStatus>> causeStatus;
  Variants<Vek::Ptr<Vek::ActivityConfig>> activity;

  Outcome outcome;

 private:
  class RecordWatcher;
  class RootWatcher;

  int interfaceOf(Tarn::IntfId const& id) const;
  std::string normalised(std::string_view message) const;
  std::string labelOf(std::string_view address) const;
  void watchRoot();

  Names const& names_;
  std::vector<Tarn::IntfId> ids_;
  std::vector<Vek::String> profiles_;
  std::vector<Vek::String> causes_;
  ClockPlan plan_;
  int installedSerial_{0};
  int keptSerial_{0};
  std::array<Vek::Ptr<RecordWatcher>, kVariants> recordWatchers_;
  LinkFlap::Root::Ptr root_;
  Vek::Ptr<RootWatcher> rootWatcher_;
  LinkFlap::LinkFlapSm::Ptr kept_;
  Vek::ClockSource previousClock_;
  Vek::TraceSink previousTraceSink_;
  Vek::ExceptionSink previousExceptionSink_;
};

/// Names for a seed, numbered in the order in which the library's collections walk them.
Names namesFor(std::uint64_t seed, int interfaces);

}  // namespace Simulation
