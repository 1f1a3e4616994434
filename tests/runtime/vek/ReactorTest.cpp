#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/model/LinkFlapProfileConfig.h"
#include "runtime/vek/Exception.h"
#include "runtime/vek/Reactor.h"

#include "tests/runtime/support/ConfigWatcher.h"
#include "tests/runtime/support/FailureLog.h"
#include "tests/runtime/support/TestReactors.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::FlapsReactor;
using RuntimeTest::Machine;
using Vek::make;
using Vek::Ptr;

using Calls = std::vector<std::string>;

class Reactor : public testing::Test {
 protected:
  Calls calls;
  Ptr<Config> config = make<Config>("linkFlap");
  Ptr<Config> other = make<Config>("other");
  Ptr<Machine> machine = make<Machine>(calls);
  Ptr<FlapsReactor> reactor = make<FlapsReactor>(config, machine.get());
};

TEST_F(Reactor, ConstructionBindsAndRegistersAndRunsNoHandler) {
  EXPECT_EQ(calls, Calls{});
  EXPECT_TRUE(reactor->watched() == config);
  EXPECT_TRUE(reactor->isRegisteredNotifiee());
  EXPECT_EQ(machine->referenceCount(), 1U) << "the owner is not held";
  EXPECT_EQ(config->referenceCount(), 2U) << "the object is";
}

TEST_F(Reactor, RunsTheHandlerOfTheAttributeThatChanged) {
  config->maxFlapsIs(1);
  config->intervalIs(2);
  config->defaultProfileListIs("strict", true);
  EXPECT_EQ(calls, (Calls{"maxFlaps", "interval", "default strict"}));
}

TEST_F(Reactor, HandlerGetsItsOwnCopyOfTheKey) {
  config->defaultProfileListIs("strict", true);
  machine->then = [this] {
    machine->then = nullptr;
    config->defaultProfileListIs("strict", true);
  };
  calls.clear();
  for (auto const& member : config->defaultProfileList())
    config->defaultProfileListDel(member.key());
  EXPECT_EQ(calls, (Calls{"default strict", "default strict"}));
}

TEST_F(Reactor, BindingAnotherObjectRunsTheHandlersInOrderAndRegisters) {
  bool registeredInside = true;
  machine->then = [&] { registeredInside = reactor->isRegisteredNotifiee(); };
  reactor->notifierIs(other);
  EXPECT_EQ(calls, (Calls{"maxFlaps", "interval"}));
  EXPECT_FALSE(registeredInside) << "what a handler changes does not come back to it";
  EXPECT_TRUE(reactor->watched() == other);
  EXPECT_TRUE(reactor->isRegisteredNotifiee());

  calls.clear();
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, Calls{});
  machine->then = nullptr;
  other->maxFlapsIs(1);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
}

TEST_F(Reactor, BindingTheObjectAlreadyHeldRunsNothing) {
  reactor->notifierIs(config);
  EXPECT_EQ(calls, Calls{});
  EXPECT_TRUE(reactor->isRegisteredNotifiee());
}

TEST_F(Reactor, BindingNothingDetachesAndRunsNothing) {
  reactor->notifierIs(nullptr);
  EXPECT_EQ(calls, Calls{});
  EXPECT_FALSE(reactor->watched());
  EXPECT_FALSE(reactor->isRegisteredNotifiee());
  EXPECT_FALSE(config->hasNotifiees());
}

TEST_F(Reactor, BindingStopsAtTheHandlerThatTearsItDown) {
  machine->then = [this] { reactor->vekDoZombieReactors(true); };
  reactor->notifierIs(other);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));

  calls.clear();
  other->maxFlapsIs(1);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(Reactor, BindingStopsAtTheHandlerThatEndsTheOwner) {
  machine->then = [this] {
    reactor->machineIs(nullptr);
    reactor = nullptr;
    machine = nullptr;
  };
  reactor->notifierIs(other);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
  EXPECT_FALSE(other->hasNotifiees()) << "with its last holder the reactor is gone";
}

TEST_F(Reactor, BindingWithAHandlerThatThrowsLeavesItRegistered) {
  machine->then = [] { throw std::runtime_error{"no"}; };
  EXPECT_THROW(reactor->notifierIs(other), std::runtime_error);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
  machine->then = nullptr;
  other->intervalIs(1);
  EXPECT_EQ(calls, (Calls{"maxFlaps", "interval"}));
}

TEST_F(Reactor, BindingAnObjectOfAnotherTypeIsRefused) {
  auto const profile = make<LinkFlap::ProfileConfig>("strict");
  try {
    reactor->notifierIs(profile);
    ADD_FAILURE() << "a profile was taken for the configuration";
  } catch (Vek::TypeException const& exception) {
    EXPECT_STREQ(exception.what(), "LinkFlap::Config");
  }
  EXPECT_EQ(calls, Calls{});
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, (Calls{"maxFlaps"})) << "it watches what it watched before";
}

TEST_F(Reactor, ZombieRunsNoHandlerAndIsOffDelivery) {
  reactor->vekDoZombieReactors(true);
  EXPECT_TRUE(reactor->vekMarkedForDeletion());
  EXPECT_FALSE(reactor->hasNotificationActive());
  EXPECT_FALSE(reactor->isRegisteredNotifiee());
  config->maxFlapsIs(1);
  reactor->onMaxFlaps();
  reactor->onDefaultProfileList("strict");
  EXPECT_EQ(calls, Calls{});
}

TEST_F(Reactor, ZombieTurnedBackHearsAgain) {
  reactor->vekDoZombieReactors(true);
  reactor->vekDoZombieReactors(false);
  EXPECT_FALSE(reactor->vekMarkedForDeletion());
  EXPECT_TRUE(reactor->hasNotificationActive());
  EXPECT_TRUE(reactor->isRegisteredNotifiee());
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
}

TEST_F(Reactor, ZombieTwiceIsZombieOnce) {
  reactor->vekDoZombieReactors(true);
  reactor->isRegisteredNotifieeIs(true);
  reactor->vekDoZombieReactors(true);
  EXPECT_TRUE(reactor->isRegisteredNotifiee()) << "a call that changes no state does nothing";
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, Calls{}) << "even a registered zombie runs no handler";

  reactor->vekDoZombieReactors(false);
  reactor->isRegisteredNotifieeIs(false);
  reactor->vekDoZombieReactors(false);
  EXPECT_FALSE(reactor->isRegisteredNotifiee());
}

TEST_F(Reactor, ZombieWithoutAnObjectTakesTheMarkAlone) {
  reactor->hasNotificationActiveIs(true);
  reactor->notifierIs(nullptr);
  reactor->vekDoZombieReactors(true);
  EXPECT_TRUE(reactor->vekMarkedForDeletion());
  EXPECT_TRUE(reactor->hasNotificationActive());
}

TEST_F(Reactor, ZombieThatIsBoundAnewRunsNoHandler) {
  reactor->vekDoZombieReactors(true);
  reactor->notifierIs(other);
  other->maxFlapsIs(1);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(Reactor, WithoutAnOwnerRunsNoHandler) {
  reactor->machineIs(nullptr);
  config->maxFlapsIs(1);
  config->defaultProfileListIs("strict", true);
  EXPECT_EQ(calls, Calls{});
  reactor->machineIs(machine.get());
  config->maxFlapsIs(2);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
}

TEST_F(Reactor, HandlerMayEndOwnerAndReactor) {
  machine->then = [this] {
    reactor->machineIs(nullptr);
    reactor = nullptr;
    machine = nullptr;
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
  EXPECT_FALSE(config->hasNotifiees());
}

TEST_F(Reactor, ExceptionOfAHandlerIsReportedUnderTheReactor) {
  RuntimeTest::FailureLog const failures;
  machine->then = [] { throw std::runtime_error{"no"}; };
  config->maxFlapsIs(1);
  EXPECT_EQ(failures.lines(), (Calls{"maxFlaps (260) of RuntimeTest::FlapsReactor: no"}));
}

TEST_F(Reactor, HandlerCalledDirectlyThrowsToItsCaller) {
  machine->then = [] { throw std::runtime_error{"no"}; };
  EXPECT_THROW(reactor->onMaxFlaps(), std::runtime_error);
}

// ---- which notifications a reactor overrides, and so what it is offered

struct Owner {
  void handle() {}
  void handleKey(Vek::String /*name*/) {}
};

/// Reactors of one kind each; their bodies do not matter.
template <typename Self>
using Base = Vek::Reactor<Self, Owner, Config>;

struct ScalarOnly final : Base<ScalarOnly> {
  using Base<ScalarOnly>::Base;
  void onInterval() override {}
};
struct KeyOnly final : Base<KeyOnly> {
  using Base<KeyOnly>::Base;
  void onDefaultProfileList(Vek::String /*name*/) override {}
};
struct ImmediateOnly final : Base<ImmediateOnly> {
  using Base<ImmediateOnly>::Base;
  void onDefaultProfileListvekImmediate() override {}
};
struct KeyWithUnkeyed final : Base<KeyWithUnkeyed> {
  using Base<KeyWithUnkeyed>::Base;
  void onProfileConfig(Vek::String /*name*/) override {}
  void onProfileConfig() override {}
};
template <typename Self>
struct Middle : Base<Self> {
  using Base<Self>::Base;
  void onMaxFlaps() override {}
};
struct Inheriting final : Middle<Inheriting> {
  using Middle<Inheriting>::Middle;
  void onInterval() override {}
};

template <typename R>
Vek::AttributeMask watching() {
  return make<R>(make<Config>(), nullptr)->watching();
}

// The bit of an attribute is its identifier modulo 16: maxFlaps 4, interval 5, profileConfig 7,
// defaultProfileList 8.
TEST(ReactorWatches, TheAttributesWhoseNotificationsItOverrides) {
  EXPECT_EQ(watching<ScalarOnly>(), 1U << 5U);
  EXPECT_EQ(watching<KeyOnly>(), 1U << 8U);
  EXPECT_EQ(watching<ImmediateOnly>(), 1U << 8U);
  EXPECT_EQ(watching<KeyWithUnkeyed>(), 1U << 7U);
  EXPECT_EQ(watching<FlapsReactor>(), (1U << 4U) | (1U << 5U) | (1U << 8U));
}

TEST(ReactorWatches, WhatABaseOfItsOwnOverrides) {
  EXPECT_EQ(watching<Inheriting>(), (1U << 4U) | (1U << 5U));
}

}  // namespace
