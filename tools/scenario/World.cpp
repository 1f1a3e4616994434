#include "tools/scenario/World.h"

#include <utility>

#include "runtime/vek/ObjectPath.h"

#include "tools/scenario/StateObjects.h"

namespace Scenario {

namespace {

constexpr char const* kRootName{"linkFlap"};

}  // namespace

World::World(Output& out)
    : out_{out},
      root_{LinkFlap::rootFactory(Vek::Name{kRootName})},
      causeStatusWatcher_{Vek::make<CauseStatusWatcher>(
          out, [this](Tarn::IntfId const& intf) { return history(intf); },
          [this] { errdisabled(); })} {
  pathRootIs(kRootName, root_);
  renewActivity();
  renewPhyConfigDir();
  renewStatusDir();
  renewErrdisableConfig();
  renewConfig();
  renewCauseStatus();
}

World::~World() {
  // Order: the watchers first. What happens from here on belongs to no command and is not shown.
  rootWatchers_.clear();
  causeStatusWatcher_ = nullptr;
  for (std::string const& name : pathRoots_)
    Vek::PathRoots::global().rootDel(name);
}

void World::pathRootIs(std::string const& name, Vek::Ptr<Vek::PtrInterface const> const& object) {
  Vek::PathRoots::global().rootIs(name, object);
  pathRoots_.insert(name);
}

void World::renewActivity() {
  activity_ = Vek::make<Vek::ActivityConfig>();
  pathRootIs("activity", activity_);
}

void World::renewPhyConfigDir() {
  phyConfigDir_ = Vek::make<Interface::AllEthPhyIntfConfigDir>();
  pathRootIs("ethPhyIntfConfigDir", phyConfigDir_);
}

void World::renewStatusDir() {
  statusDir_ = Vek::make<Interface::AllEthPhyIntfStatusDir>();
  pathRootIs("ethPhyIntfStatusDir", statusDir_);
}

void World::renewErrdisableConfig() {
  errdisableConfig_ = Vek::make<Errdisable::Config>();
  pathRootIs("errdisableConfig", errdisableConfig_);
}

void World::renewConfig() {
  config_ = configOf({});
  pathRootIs("config", config_);
}

void World::renewCauseStatus() {
  causeStatus_ = Vek::make<Errdisable::CauseStatus>();
  causeStatusWatcher_->watch(causeStatus_);
  pathRootIs("causeStatus", causeStatus_);
}

// A counted pointer would keep a machine alive that the Root has let go, and with it reactors that
// still react. The Root tells whether the plain one still stands for a machine: it lets go of a
// machine only for another one, which is then made already and so stands elsewhere, or in remove().
LinkFlap::LinkFlapSm* World::machine() const {
  return root_->linkFlapSm().get() == installed_ ? installed_ : nullptr;
}

LinkFlap::LinkFlapIntfSm::Ptr World::intfSm(Tarn::IntfId const& intf) const {
  LinkFlap::LinkFlapSm const* const top = machine();
  return top == nullptr ? nullptr : top->linkFlapIntfSm(intf);
}

LinkFlap::LinkFlapProfileSm::Ptr World::profileSm(Tarn::IntfId const& intf,
                                                  Vek::String const& profile) const {
  auto const sm = intfSm(intf);
  return sm ? sm->linkFlapProfileSm(profile) : nullptr;
}

bool World::install(Vek::String const& causeName) {
  LinkFlap::LinkFlapSm const* const before = machine();
  LinkFlap::LinkFlapSm* const installed =
      root_
          ->linkFlapSmIs(activity(), phyConfigDir(), statusDir(), errdisableConfig(), config(),
                         causeStatus(), causeName)
          .get();
  installed_ = installed;
  return installed != before;
}

bool World::remove() {
  bool const removed{root_->linkFlapSmDel()};
  installed_ = nullptr;
  return removed;
}

void World::rootWatcherIs(Vek::String const& name, bool throws) {
  auto const watcher = Vek::make<RootWatcher>(out_, name, throws);
  watcher->notifierIs(root_);
  watcher->isRegisteredNotifieeIs(true);
  rootWatchers_[name] = watcher;
}

void World::rootWatcherDel(Vek::String const& name) {
  rootWatchers_.erase(name);
}

std::uint64_t World::history(Tarn::IntfId const& intf) const {
  auto const sm = intfSm(intf);
  if (!sm) return 0;
  std::uint64_t sum{0};
  for (LinkFlap::LinkFlapProfileSm const& profile : sm->linkFlapProfileSm())
    sum += std::uint64_t{profile.linkFlapTimeStamp().count()} + profile.curFlaps() +
           profile.curIntervals() + profile.curViolations();
  return sum;
}

void World::errdisabled() {
  // Emptied before it is called: it may set another one.
  if (auto const action = std::exchange(onErrdisable_, nullptr)) action();
}

}  // namespace Scenario
