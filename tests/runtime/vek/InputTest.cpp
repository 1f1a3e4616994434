#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Input.h"

#include "tests/runtime/support/TestReactors.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::FlapsReactor;
using RuntimeTest::Machine;
using Vek::make;
using Vek::Ptr;

using Calls = std::vector<std::string>;

class Input : public testing::Test {
 protected:
  void objectIs(Ptr<Config const> const& object) {
    input.objectIs(object, [this](Ptr<Config const> const& made) {
      return make<FlapsReactor>(made, machine.get());
    });
  }

  Calls calls;
  Ptr<Machine> const machine = make<Machine>(calls);
  Ptr<Config> const config = make<Config>("linkFlap");
  Ptr<Config> const other = make<Config>("other");
  Vek::Input<FlapsReactor> input;
};

TEST_F(Input, IsEmptyAtFirst) {
  EXPECT_EQ(input.reactor(), nullptr);
  EXPECT_FALSE(input.object());
  EXPECT_FALSE(input.objectDel());
  objectIs(nullptr);
  EXPECT_EQ(input.reactor(), nullptr);
}

TEST_F(Input, FirstObjectMakesAReactorAndRunsNoHandler) {
  objectIs(config);
  ASSERT_NE(input.reactor(), nullptr);
  EXPECT_TRUE(input.object() == config);
  EXPECT_EQ(calls, Calls{});
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
}

TEST_F(Input, AnotherObjectRePointsTheReactorWhichRunsItsHandlers) {
  objectIs(config);
  FlapsReactor const* const reactor = input.reactor();
  objectIs(other);
  EXPECT_EQ(input.reactor(), reactor);
  EXPECT_TRUE(input.object() == other);
  EXPECT_EQ(calls, (Calls{"maxFlaps", "interval"}));
  EXPECT_FALSE(config->hasNotifiees());
}

TEST_F(Input, SameObjectChangesNothing) {
  objectIs(config);
  objectIs(config);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(Input, EmptyObjectDropsTheReactor) {
  objectIs(config);
  objectIs(nullptr);
  EXPECT_EQ(input.reactor(), nullptr);
  EXPECT_FALSE(config->hasNotifiees());
  EXPECT_EQ(config->referenceCount(), 1U);
}

TEST_F(Input, DeletingReturnsTheObjectAndLeavesADeadReactorToOthers) {
  objectIs(config);
  Ptr<FlapsReactor> const heldElsewhere{input.reactor()};
  EXPECT_TRUE(input.objectDel() == config);
  EXPECT_EQ(input.reactor(), nullptr);
  EXPECT_TRUE(heldElsewhere->vekMarkedForDeletion());
  EXPECT_FALSE(heldElsewhere->isRegisteredNotifiee());
  EXPECT_FALSE(heldElsewhere->watched());
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(Input, ReactorCanBePutInPlace) {
  input.reactorIs(make<FlapsReactor>(config, machine.get()));
  EXPECT_TRUE(input.object() == config);
}

TEST_F(Input, HandlerMayEmptyTheInputThatRunsIt) {
  objectIs(config);
  machine->then = [this] { input.objectDel(); };
  objectIs(other);
  EXPECT_EQ(calls, (Calls{"maxFlaps"})) << "the next handler finds the reactor torn down";
  EXPECT_EQ(input.reactor(), nullptr);
  EXPECT_FALSE(other->hasNotifiees());
}

}  // namespace
