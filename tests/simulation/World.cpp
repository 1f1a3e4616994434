#include "tests/simulation/World.h"

#include <cstdio>

#include "runtime/vek/Exception.h"

#include "statemachines/SourcePoints.h"

#include "tests/simulation/Random.h"

namespace Simulation {

class World::RecordWatcher final : public Errdisable::CauseStatus::NotifieeConst {
 public:
  RecordWatcher(World& world, int record) : world_{world}, record_{record} {}

  void onIntfStatus(Tarn::IntfId id) override {
    auto const& records = watched()->intfStatus();
    double const* const time = records.find(id);
    world_.outcome.writes.push_back(
        {record_, world_.interfaceOf(id), time != nullptr, time != nullptr ? *time : 0});
  }

 private:
  ~RecordWatcher() override = default;
  World& world_;
  int record_;
};

class World::RootWatcher final : public LinkFlap::Root::NotifieeConst {
 public:
  explicit RootWatcher(World& world) : world_{world} {}
  void onLinkFlapSm() override { ++world_.outcome.rootTold; }

 private:
  ~RootWatcher() override = default;
  World& world_;
};

namespace {

template <typename Lib, typename Mod>
void twinIs(Twin<Lib, Mod>& twin, Vek::Ptr<Lib> object) {
  char address[32];
  (void)std::snprintf(address, sizeof address, "0x%llx",
                      static_cast<unsigned long long>(
                          reinterpret_cast<std::uintptr_t>(static_cast<void*>(object.get()))));
  twin.model.peer = object.get();
  twin.model.address = address;
  twin.lib = std::move(object);
}

}  // namespace

World::World(Names const& names, int interfaces) : names_{names} {
  for (auto const& name : names.interfaces)
    ids_.emplace_back(name.c_str());
  for (auto const& name : names.profiles)
    profiles_.emplace_back(name.c_str());
  for (auto const& name : names.causes)
    causes_.emplace_back(name.c_str());

  auto const count = static_cast<std::size_t>(interfaces);
  status = decltype(status)(count);
  phyConfig = decltype(phyConfig)(count);
  settings = decltype(settings)(count);
  for (std::size_t v = 0; v < kVariants; ++v) {
    for (std::size_t i = 0; i < count; ++i) {
      twinIs(status[i][v], Vek::make<Interface::EthPhyIntfStatus>(ids_[i]));
      status[i][v].model.intf = static_cast<int>(i);
      twinIs(phyConfig[i][v], Vek::make<Interface::EthPhyIntfConfig>(ids_[i]));
      twinIs(settings[i][v], Vek::make<LinkFlap::IntfConfig>(Vek::Name{ids_[i].name()}));
    }
    for (std::size_t p = 0; p < profiles.size(); ++p) {
      twinIs(profiles[p][v], Vek::make<LinkFlap::ProfileConfig>(Vek::Name{profiles_[p]}));
      profiles[p][v].model.name = static_cast<int>(p);
    }
    twinIs(config[v], Vek::make<LinkFlap::Config>());
    twinIs(configDir[v], Vek::make<Interface::AllEthPhyIntfConfigDir>());
    twinIs(statusDir[v], Vek::make<Interface::AllEthPhyIntfStatusDir>());
    twinIs(errdisable[v], Vek::make<Errdisable::Config>());
    twinIs(causeStatus[v], Vek::make<Errdisable::CauseStatus>());
    causeStatus[v].model.record = static_cast<int>(v);
    activity[v] = Vek::make<Vek::ActivityConfig>();
    recordWatchers_[v] = Vek::make<RecordWatcher>(*this, static_cast<int>(v));
    recordWatchers_[v]->notifierIs(causeStatus[v].lib);
    recordWatchers_[v]->isRegisteredNotifieeIs(true);
  }
  root_ = LinkFlap::rootFactory(Vek::Name{"simulation"});
  watchRoot();

  previousClock_ = Vek::clockSourceIs(nullptr);
  newClockRun();
  previousTraceSink_ = Vek::traceSinkIs([this](Vek::TraceRecord const& record) {
    if (record.facility != "LinkFlap" || record.source != "LinkFlapSm" || !record.levelFlag)
      outcome.thrown = "a trace record of another facility, source or level";
    outcome.traces.push_back(
        {record.level, record.line, std::string{record.function}, normalised(record.message)});
  });
  previousExceptionSink_ = Vek::exceptionSinkIs([this](Vek::CallbackFailure const& failure) {
    outcome.failures.push_back({failure.attributeName, failure.message});
  });
}

World::~World() {
  kept_ = nullptr;
  root_ = nullptr;
  Vek::traceSinkIs(std::move(previousTraceSink_));
  Vek::exceptionSinkIs(std::move(previousExceptionSink_));
  Vek::clockSourceIs(std::move(previousClock_));
  LinkFlap::traceHandle().levelIs(2, false);
  LinkFlap::traceHandle().levelIs(8, false);
}

void World::newClockRun() {
  Vek::clockSourceIs([this] { return plan_.reading(outcome.readings++); });
}

void World::watchRoot() {
  rootWatcher_ = Vek::make<RootWatcher>(*this);
  rootWatcher_->notifierIs(root_);
  rootWatcher_->isRegisteredNotifieeIs(true);
}

Model::Inputs World::inputs(Choice const& choice) {
  auto const at = [](int variant) { return static_cast<std::size_t>(variant); };
  return {&configDir[at(choice.configDir)].model,   &statusDir[at(choice.statusDir)].model,
          &errdisable[at(choice.errdisable)].model, &config[at(choice.config)].model,
          &causeStatus[at(choice.cause)].model,     choice.causeName};
}

void World::install(Choice const& choice, bool keep) {
  auto const at = [](int variant) { return static_cast<std::size_t>(variant); };
  LinkFlap::LinkFlapSm::Ptr former = root_->linkFlapSm();
  try {
    auto const made = root_->linkFlapSmIs(
        activity[at(choice.activity)], configDir[at(choice.configDir)].lib,
        statusDir[at(choice.statusDir)].lib, errdisable[at(choice.errdisable)].lib,
        config[at(choice.config)].lib, causeStatus[at(choice.cause)].lib, cause(choice.causeName));
    if (made == former) return;
  } catch (Vek::Exception const& thrown) {
    outcome.thrown = thrown.what();
    return;
  }
  if (keep && former) kept_ = std::move(former);
}

void World::uninstall(bool keep) {
  auto removed = root_->linkFlapSmDel();
  if (keep && removed) kept_ = std::move(removed);
}

void World::newRoot() {
  root_ = nullptr;
  root_ = LinkFlap::rootFactory(Vek::Name{"simulation"});
  watchRoot();
}

int World::interfaceOf(Tarn::IntfId const& id) const {
  for (std::size_t i = 0; i < ids_.size(); ++i)
    if (ids_[i] == id) return static_cast<int>(i);
  return -1;
}

std::string World::normalised(std::string_view message) const {
  std::size_t const end = message.find("::");
  if (!message.starts_with("0x") || end == std::string_view::npos) return std::string{message};
  return labelOf(message.substr(0, end)) + std::string{message.substr(end)};
}

std::string World::labelOf(std::string_view address) const {
  auto const wanted = std::stoull(std::string{address}, nullptr, 16);
  auto const search = [&](LinkFlap::LinkFlapSm const* machine, int serial) {
    std::string label;
    if (machine == nullptr) return label;
    for (auto const& intfSm : machine->linkFlapIntfSm())
      for (auto const& sm : intfSm.linkFlapProfileSm())
        if (reinterpret_cast<std::uintptr_t>(&sm) == wanted)
          label = "@" + std::to_string(serial) + "/" + std::string{sm.intfId().name().view()} +
                  "/" + std::string{sm.profileName().view()};
    return label;
  };
  std::string label = search(root_->linkFlapSm().get(), installedSerial_);
  if (label.empty()) label = search(kept_.get(), keptSerial_);
  return label.empty() ? "@new" : label;
}

Names namesFor(std::uint64_t seed, int interfaces) {
  Random random{seed};
  auto const all = Vek::make<LinkFlap::Config>();
  auto const settings = Vek::make<LinkFlap::IntfConfig>();
  char const* const kinds[]{"Ethernet", "et-", "Management", "x"};
  while (all->intfConfig().size() < static_cast<std::uint32_t>(interfaces)) {
    // Drawn one by one: the order of an expression's operands is the compiler's.
    std::uint32_t const number = 1 + random.below(96);
    std::string const name = kinds[random.below(4)] + std::to_string(number);
    all->intfConfigIs(Tarn::IntfId{name.c_str()}, settings);
  }
  all->defaultProfileListIs("default", true);
  while (all->defaultProfileList().size() < kProfiles) {
    std::uint32_t const number = random.below(99);
    std::string const name = (random.oneIn(2) ? "p" : "profile-") + std::to_string(number);
    all->defaultProfileListIs(name.c_str(), true);
  }
  Names names;
  for (auto const& member : all->intfConfig())
    names.interfaces.emplace_back(member.key().name().view());
  for (auto const& member : all->defaultProfileList()) {
    if (member.key() == "default") names.defaultProfile = static_cast<int>(names.profiles.size());
    names.profiles.emplace_back(member.key().view());
  }
  names.causes = {"link-flap", "loop", "storm"};
  return names;
}

}  // namespace Simulation
