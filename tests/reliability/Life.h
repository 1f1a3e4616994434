#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <utility>
#include <vector>

#include "runtime/vek/Clock.h"

#include "introspection/GenericIfs.h"

#include "tests/reliability/ListenerOf.h"

/// One life of a host: it makes, replaces and drops all kinds of objects in an order that the dice
/// say, holds on to machines that the library has given up, acts from inside notifications, and in
/// the end lets go of everything, in any order, sometimes from inside a notification as well.
class Life {
 public:
  struct Figures {
    unsigned long steps{0};
    unsigned long stepsInside{0};       ///< from inside a notification
    unsigned long tearDownsInside{0};   ///< everything dropped from inside a notification
    unsigned long machinesOutlived{0};  ///< inner machines held beyond the outer ones
  };

  /// Planted: one reference in a hundred lives is never given back.
  static bool plantLostReference;

  Life(std::mt19937& random, Vek::ManualClock& clock, Figures& figures);
  ~Life();
  Life(Life const&) = delete;
  Life& operator=(Life const&) = delete;

  void live(unsigned steps);

 private:
  struct RootView;
  using Machine = LinkFlap::LinkFlapSm;
  using Watcher = Vek::Ptr<Vek::PtrInterface::NotifieeConst>;

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  Tarn::IntfId const& anyId() { return ids_[below(static_cast<unsigned>(ids_.size()))]; }
  Vek::String const& anyProfile() {
    return profiles_[below(static_cast<unsigned>(profiles_.size()))];
  }

  void step();
  void replaceAnObject();
  void changeInterfaces();
  void changeSettings();
  void changeSelection();
  void changeValues();
  void changeLinks();
  void changeMachine();
  void changeHeld();
  void repoint();
  void watch();
  void install();
  void tearDown();

  template <typename T>
  Vek::Ptr<ListenerOf<T>> listen(Vek::Ptr<T> const& object);
  bool selectionEndsProcess() const;
  LinkFlap::LinkFlapIntfSm::Ptr anyIntfSm();
  LinkFlap::LinkFlapProfileSm::Ptr anyProfileSm();

  std::mt19937& random_;
  Vek::ManualClock& clock_;
  Figures& figures_;
  std::vector<Tarn::IntfId> ids_;
  std::vector<Vek::String> profiles_;
  bool deferring_;
  unsigned depth_{0};
  bool selecting_{false};
  bool over_{false};

  Vek::Ptr<Vek::ActivityConfig> activity_;
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir_;
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir_;
  Vek::Ptr<Errdisable::Config> errdisableConfig_;
  Vek::Ptr<LinkFlap::Config> config_;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  LinkFlap::Root::Ptr root_;
  std::vector<Vek::Ptr<LinkFlap::IntfConfig>> settings_;
  std::vector<Vek::Ptr<LinkFlap::ProfileConfig>> profileConfigs_;
  std::vector<Vek::Ptr<Interface::EthPhyIntfStatus>> statuses_;
  std::vector<Vek::Ptr<Interface::EthPhyIntfConfig>> phyConfigs_;
  std::vector<Vek::Ptr<Machine>> heldMachines_;
  std::vector<LinkFlap::LinkFlapIntfSm::Ptr> heldIntfSms_;
  std::vector<LinkFlap::LinkFlapProfileSm::Ptr> heldProfileSms_;
  std::vector<Vek::Ptr<LinkFlap::LinkFlapProfileSm::VekLinkFlapTimeStamp>> heldFlaps_;
  std::vector<std::unique_ptr<RootView>> views_;
  std::vector<Watcher> watchers_;
};
