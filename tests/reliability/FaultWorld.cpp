#include "tests/reliability/FaultWorld.h"

#include <new>

bool FaultWorld::plantLostRecord = false;
bool FaultWorld::plantHalfDone = false;
bool FaultWorld::plantLeak = false;
bool FaultWorld::plantDeafWatcher = false;

class FaultWorld::CauseRecorder final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  void onIntfStatus(Tarn::IntfId /*id*/) override { ++told; }

  unsigned told{0};

 private:
  ~CauseRecorder() override = default;
};

class FaultWorld::ConfigRecorder final : public LinkFlap::Config::NotifieeConst {
 public:
  void onMaxFlaps() override { ++told; }
  void onInterval() override { ++told; }
  void onIntfConfig(Tarn::IntfId /*id*/) override { ++told; }
  void onProfileConfig(Vek::String /*name*/) override { ++told; }
  void onDefaultProfileList(Vek::String /*name*/) override { ++told; }

  unsigned told{0};

 private:
  ~ConfigRecorder() override = default;
};

/// A host's watcher that needs memory for what it does with a record.
class FaultWorld::GreedyWatcher final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  explicit GreedyWatcher(FaultWorld& world) : world_{world} {}

  void onIntfStatus(Tarn::IntfId id) override {
    try {
      ::operator delete(::operator new(1));  // called as functions: a compiler may drop `new`
    } catch (std::bad_alloc const&) {
      ++failures;
      if (plantLostRecord) world_.causeStatus->intfStatusDel(id);
      if (plantDeafWatcher) world_.causeRecorders_.back()->isRegisteredNotifieeIs(false);
      if (plantLeak) lost_ = true;
      throw;
    }
    if (std::exchange(lost_, false)) lostBlock_ = ::operator new(1);
  }

  unsigned failures{0};

 private:
  ~GreedyWatcher() override = default;

  FaultWorld& world_;
  bool lost_{false};
  inline static void* lostBlock_{nullptr};
};

bool WorldState::sameInputs(WorldState const& other) const {
  return config == other.config && configDir == other.configDir && statusDir == other.statusDir &&
         errdisableConfig == other.errdisableConfig && settings == other.settings &&
         profiles == other.profiles && status == other.status && phyConfigs == other.phyConfigs &&
         installed == other.installed && activity == other.activity;
}

FaultWorld::FaultWorld()
    : interfaces{Tarn::IntfId{"Ethernet1"}, Tarn::IntfId{"Ethernet2"}, Tarn::IntfId{"Ethernet3"},
                 Tarn::IntfId{"Ethernet4"}},
      greedy_{Vek::make<GreedyWatcher>(*this)},
      previousSink_{Vek::exceptionSinkIs([this](Vek::CallbackFailure const&) { ++reports_; })} {
  auto const watch = [](auto const& watcher, auto const& object) {
    watcher->notifierIs(object);
    watcher->isRegisteredNotifieeIs(true);
  };
  config->maxFlapsIs(2);
  config->intervalIs(10);
  for (Vek::String const& name : {Vek::String{"p1"}, Vek::String{"p2"}}) {
    auto const profile = config->newProfileConfig(name);
    profile->maxFlapsIs(name == "p1" ? 2 : 1);
    profile->intervalIs(name == "p1" ? 8 : 3);
    profile->violationsIs(name == "p1" ? 1 : 2);
    profile->trackedIntervalsIs(name == "p1" ? 1 : 4);
  }
  for (Tarn::IntfId const& id : interfaces)
    addInterface(id);
  auto const both = config->newIntfConfig(interfaces[1]);
  both->profileListIs("p1", true);
  both->profileListIs("p2", true);
  both->enabledIs(true);
  config->newIntfConfig(interfaces[2])->enabledIs(true);
  auto const one = config->newIntfConfig(interfaces[3]);
  one->profileListIs("p2", true);
  one->enabledIs(true);

  causeRecorders_.push_back(Vek::make<CauseRecorder>());
  configRecorders_.push_back(Vek::make<ConfigRecorder>());
  causeRecorders_.push_back(Vek::make<CauseRecorder>());
  configRecorders_.push_back(Vek::make<ConfigRecorder>());
  watch(causeRecorders_[0], causeStatus);
  watch(configRecorders_[0], config);
  watch(greedy_, causeStatus);
  install(activity);
  watch(causeRecorders_[1], causeStatus);
  watch(configRecorders_[1], config);
  for (auto const& recorder : configRecorders_)
    recorder->told = config->changes();
}

FaultWorld::~FaultWorld() {
  root = nullptr;
  Vek::exceptionSinkIs(std::move(previousSink_));
}

void FaultWorld::install(Vek::Ptr<Vek::ActivityConfig> const& onActivity) {
  (void)root->linkFlapSmIs(onActivity, configDir, statusDir, errdisableConfig, config, causeStatus,
                           causeName);
}

LinkFlap::LinkFlapIntfSm::Ptr FaultWorld::intfSm(Tarn::IntfId const& id) const {
  return root->linkFlapSm() ? machine().linkFlapIntfSm(id) : nullptr;
}

Vek::Ptr<Interface::EthPhyIntfStatus> FaultWorld::status(Tarn::IntfId const& id) const {
  return Vek::Ptr<Interface::EthPhyIntfStatus>{
      const_cast<Interface::EthPhyIntfStatus*>(statusDir->intfStatus(id).get())};
}

Vek::Ptr<LinkFlap::IntfConfig> FaultWorld::settings(Tarn::IntfId const& id) const {
  return Vek::Ptr<LinkFlap::IntfConfig>{
      const_cast<LinkFlap::IntfConfig*>(config->intfConfig(id).get())};
}

void FaultWorld::addInterface(Tarn::IntfId const& id) {
  configDir->intfConfigIs(id, Vek::make<Interface::EthPhyIntfConfig>(id));
  statusDir->intfStatusIs(id, Vek::make<Interface::EthPhyIntfStatus>(id));
}

template <typename T, typename Members>
std::vector<SavedState<T>> FaultWorld::savedMembers(Members const& members) {
  std::vector<SavedState<T>> saved;
  for (auto const& member : members)
    saved.emplace_back(member.value());
  return saved;
}

WorldState FaultWorld::state() const {
  WorldState all{SavedState<LinkFlap::Config>{config},
                 SavedState<Interface::AllEthPhyIntfConfigDir>{configDir},
                 SavedState<Interface::AllEthPhyIntfStatusDir>{statusDir},
                 SavedState<Errdisable::Config>{errdisableConfig},
                 SavedState<Errdisable::CauseStatus>{causeStatus},
                 savedMembers<LinkFlap::IntfConfig>(config->intfConfig()),
                 savedMembers<LinkFlap::ProfileConfig>(config->profileConfig()),
                 savedMembers<Interface::EthPhyIntfStatus>(statusDir->intfStatus()),
                 savedMembers<Interface::EthPhyIntfConfig>(configDir->intfConfig()),
                 bool{root->linkFlapSm()},
                 root->linkFlapSm() ? machine().vekFwkActivity() : nullptr,
                 {}};
  if (!root->linkFlapSm()) return all;
  for (LinkFlap::LinkFlapIntfSm& sm : machine().linkFlapIntfSm()) {
    InterfaceMachineState one{
        sm.intfId(),           sm.ethPhyIntfStatus(), sm.config(), sm.intfConfig(),
        sm.ethPhyIntfConfig(), sm.enable(),           {}};
    for (LinkFlap::LinkFlapProfileSm& profileSm : sm.linkFlapProfileSm()) {
      ProfileMachineState profile{profileSm.profileName(),
                                  profileSm.profileConfig(),
                                  profileSm.ethPhyIntfStatus(),
                                  profileSm.curFlaps(),
                                  profileSm.curIntervals(),
                                  profileSm.curViolations(),
                                  profileSm.linkFlapTimeStampMetadata(),
                                  {}};
      for (auto entry = profileSm.linkFlapTimeStamp().iterator(); entry; ++entry)
        profile.times.emplace_back(entry->vek_index(), entry->time());
      one.profiles.push_back(std::move(profile));
    }
    all.machines.push_back(std::move(one));
  }
  return all;
}

void FaultWorld::loadMachine(InterfaceMachineState const& wanted) {
  auto sm = intfSm(wanted.id);
  if (sm && (sm->ethPhyIntfStatus() != wanted.status || sm->config() != wanted.config ||
             sm->intfConfig() != wanted.settings || sm->ethPhyIntfConfig() != wanted.phyConfig)) {
    deleteLinkFlapIntfSm(root->linkFlapSm(), wanted.id);
    sm = nullptr;
  }
  if (!sm)
    sm = machine().linkFlapIntfSmIs(wanted.status, wanted.config, wanted.settings, wanted.phyConfig,
                                    causeStatus);
  sm->enableIs(wanted.enable);
  for (auto profileSm = sm->linkFlapProfileSm().iterator(); profileSm; ++profileSm) {
    bool keep = false;
    for (ProfileMachineState const& profile : wanted.profiles)
      keep = keep || (profile.name == profileSm->profileName() &&
                      profile.profileConfig == profileSm->profileConfig() &&
                      profile.status == profileSm->ethPhyIntfStatus());
    if (!keep) (void)sm->linkFlapProfileSmDel(profileSm);
  }
  for (ProfileMachineState const& profile : wanted.profiles) {
    auto const profileSm =
        sm->linkFlapProfileSmIs(profile.name, profile.profileConfig, wanted.config,
                                wanted.phyConfig, profile.status, causeStatus);
    profileSm->linkFlapTimeStampDelAll();
    for (auto const& [index, time] : profile.times)
      (void)profileSm->newLinkFlapTimeStamp(index, time);
    profileSm->linkFlapTimeStampMetadataIs(profile.metadata);
    profileSm->curFlapsIs(profile.flaps);
    profileSm->curIntervalsIs(profile.intervals);
    profileSm->curViolationsIs(profile.violations);
  }
}

void FaultWorld::load(WorldState const& state) {
  // The library does not hear what is put back: the result does not depend on where it stood.
  if (root->linkFlapSm()) machine().hasNotificationActiveIs(false);
  state.config.load();
  state.configDir.load();
  state.statusDir.load();
  state.errdisableConfig.load();
  for (auto const& object : state.settings)
    object.load();
  for (auto const& object : state.profiles)
    object.load();
  for (auto const& object : state.status)
    object.load();
  for (auto const& object : state.phyConfigs)
    object.load();
  if (state.installed) {
    install(state.activity);
    for (auto machine = this->machine().linkFlapIntfSm().iterator(); machine; ++machine) {
      bool keep = false;
      for (InterfaceMachineState const& wanted : state.machines)
        keep = keep || wanted.id == machine->intfId();
      if (!keep) (void)this->machine().linkFlapIntfSmDel(machine);
    }
    for (InterfaceMachineState const& wanted : state.machines)
      loadMachine(wanted);
    // On, off and on again: what was made just now is registered already, the rest is not.
    for (bool const on : {true, false, true})
      this->machine().hasNotificationActiveIs(on);
  } else if (root->linkFlapSm()) {
    (void)root->linkFlapSmDel();
  }
  state.records.load();
}

std::string FaultWorld::toldWrongly() const {
  for (auto const& recorder : causeRecorders_)
    if (recorder->told != causeStatus->changes())
      return "a watcher of the record was told " + std::to_string(recorder->told) + " of " +
             std::to_string(causeStatus->changes()) + " changes";
  for (auto const& recorder : configRecorders_)
    if (recorder->told != config->changes())
      return "a watcher of the configuration was told " + std::to_string(recorder->told) + " of " +
             std::to_string(config->changes()) + " changes";
  return {};
}

unsigned FaultWorld::takeReports() {
  return std::exchange(reports_, 0U);
}

unsigned FaultWorld::takeGreedyFailures() {
  return std::exchange(greedy_->failures, 0U);
}
