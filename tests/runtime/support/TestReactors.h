#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Reactor.h"

namespace RuntimeTest {

/// The owner of a reactor, as a machine is: its handlers write down that they were called.
class Machine : public Vek::PtrInterface {
 public:
  explicit Machine(std::vector<std::string>& calls) : calls_{calls} {}

  /// Run inside of every handler, after it was written down.
  std::function<void()> then;

  void handleMaxFlaps() { called("maxFlaps"); }
  void handleInterval() { called("interval"); }
  void handleIntf(Tarn::IntfId id) { called("intf " + std::string{id.name().view()}); }
  void handleProfile(Vek::String name) { called("profile " + std::string{name.view()}); }
  void handleDefault(Vek::String name) { called("default " + std::string{name.view()}); }
  void handleSeveral() { called("several"); }

 private:
  void called(std::string const& what) {
    calls_.push_back(what);
    auto const run = then;  // held here: it may destroy this machine
    if (run) run();
  }

  std::vector<std::string>& calls_;
};

/// A reactor whose notifications all run at once.
class FlapsReactor final : public Vek::Reactor<FlapsReactor, Machine, LinkFlap::Config> {
 public:
  using Reactor::Reactor;
  void machineIs(Machine* machine) { ownerIs(machine); }

  void onMaxFlaps() override { react(&Machine::handleMaxFlaps); }
  void onInterval() override { react(&Machine::handleInterval); }
  void onDefaultProfileList(Vek::String name) override { react(name, &Machine::handleDefault); }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override {
    rebind(object, {&Machine::handleMaxFlaps, &Machine::handleInterval});
  }
};

/// A reactor whose keyed notifications may wait for an activity. Several profiles at once become
/// one call, several of the other attributes none.
class KeysReactor final : public Vek::ActivityReactor<KeysReactor, Machine, LinkFlap::Config> {
 public:
  using ActivityReactor::ActivityReactor;
  void machineIs(Machine* machine) { ownerIs(machine); }

  void onMaxFlaps() override { Reactor::react(&Machine::handleMaxFlaps); }
  void onIntfConfig(Tarn::IntfId id) override {
    react(LinkFlap::Config::intfConfigAttr, id, &Machine::handleIntf);
  }
  void onProfileConfig(Vek::String name) override {
    react(LinkFlap::Config::profileConfigAttr, name, &Machine::handleProfile);
  }
  void onProfileConfig() override { Reactor::react(&Machine::handleSeveral); }
  void onDefaultProfileList(Vek::String name) override {
    react(LinkFlap::Config::defaultProfileListAttr, name, &Machine::handleDefault);
  }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override { rebind(object, {}); }
};

}  // namespace RuntimeTest
