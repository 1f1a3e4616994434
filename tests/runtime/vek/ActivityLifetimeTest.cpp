// What goes away, falls silent or moves while notifications wait for their activity.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Activity.h"

#include "tests/runtime/support/TestReactors.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::KeysReactor;
using RuntimeTest::Machine;
using Vek::make;
using Vek::Ptr;

using Calls = std::vector<std::string>;

class WaitingReactor : public testing::Test {
 protected:
  WaitingReactor() {
    activity->deferredIs(true);
    changeProfile("strict");
    EXPECT_TRUE(activitySm->pending());
  }

  void changeProfile(char const* name) { config->newProfileConfig(name); }

  Calls calls;
  Ptr<Vek::ActivityConfig> activity = make<Vek::ActivityConfig>("main");
  Ptr<Vek::ActivitySm> activitySm = Vek::vekActivitySmFor(activity);
  Ptr<Config> config = make<Config>("linkFlap");
  Ptr<Machine> machine = make<Machine>(calls);
  Ptr<KeysReactor> reactor = make<KeysReactor>(activity, config, machine.get());
};

TEST_F(WaitingReactor, IsNotHeldByTheQueueAndLeavesItWhenItGoes) {
  EXPECT_EQ(reactor->referenceCount(), 1U);
  reactor = nullptr;
  EXPECT_FALSE(activitySm->pending());
  EXPECT_EQ(activitySm->deliver(), 0U);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(WaitingReactor, ZombieForgetsWhatWaits) {
  reactor->vekDoZombieReactors(true);
  EXPECT_FALSE(activitySm->pending());
  EXPECT_EQ(activitySm->deliver(), 0U);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(WaitingReactor, ZombieTurnedBackHearsOnlyWhatComesAfter) {
  reactor->vekDoZombieReactors(true);
  changeProfile("unheard");
  reactor->vekDoZombieReactors(false);
  EXPECT_FALSE(activitySm->pending());
  changeProfile("loose");
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile loose"})) << "one key, not several";
}

TEST_F(WaitingReactor, DeliverySwitchedOffForgetsWhatWaits) {
  reactor->hasNotificationActiveIs(false);
  EXPECT_FALSE(activitySm->pending());
  reactor->hasNotificationActiveIs(true);
  EXPECT_EQ(activitySm->deliver(), 0U);
  changeProfile("strict");
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(WaitingReactor, WithoutAnOwnerIsDeliveredToInVain) {
  reactor->machineIs(nullptr);
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(WaitingReactor, MayBeTurnedIntoAZombieByAHandlerBeforeItsTurn) {
  auto const another = make<KeysReactor>(activity, config, machine.get());
  changeProfile("strict");  // the first waits already and comes first
  machine->then = [&] { another->vekDoZombieReactors(true); };
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_FALSE(activitySm->pending());
}

TEST_F(WaitingReactor, MayBeDestroyedByAHandlerBeforeItsTurn) {
  auto another = make<KeysReactor>(activity, config, machine.get());
  changeProfile("strict");
  machine->then = [&] { another = nullptr; };
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(WaitingReactor, MayBeDestroyedByItsOwnHandler) {
  config->defaultProfileListIs("loose", true);
  machine->then = [this] {
    reactor->machineIs(nullptr);
    reactor = nullptr;
    machine = nullptr;
  };
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_FALSE(activitySm->pending()) << "its other attribute waits no longer";
  EXPECT_FALSE(config->hasNotifiees());
}

TEST_F(WaitingReactor, BecomesAZombieInItsHandler) {
  config->defaultProfileListIs("loose", true);
  machine->then = [this] { reactor->vekDoZombieReactors(true); };
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_FALSE(activitySm->pending());
}

TEST_F(WaitingReactor, EverythingMayBeDroppedByAHandler) {
  machine->then = [this] {
    reactor = nullptr;
    machine = nullptr;
    config = nullptr;
    activity = nullptr;
    activitySm = nullptr;
  };
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(WaitingReactor, RunningStateWhoseConfigurationIsGoneMayBeDroppedByAHandler) {
  auto const another = make<KeysReactor>(activity, config, machine.get());
  changeProfile("strict");
  reactor->vekFwkActivityIs(nullptr);
  another->vekFwkActivityIs(nullptr);
  activity = nullptr;
  ASSERT_EQ(activitySm->referenceCount(), 1U);
  machine->then = [this] { activitySm = nullptr; };
  EXPECT_EQ(activitySm->deliver(), 2U);
  EXPECT_EQ(calls, (Calls{"profile strict", "profile strict"}));
}

TEST_F(WaitingReactor, OfADroppedObjectIsStillDeliveredTo) {
  config = nullptr;  // the reactor holds it
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(WaitingReactor, ActivityIsHeldByItsReactors) {
  activity = nullptr;
  EXPECT_NE(activitySm->config(), nullptr);
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));

  reactor = nullptr;
  EXPECT_EQ(activitySm->config(), nullptr);
  EXPECT_FALSE(activitySm->defers());
}

TEST_F(WaitingReactor, WaitsWithTheFormerActivityWhenItIsGivenAnother) {
  auto const another = make<Vek::ActivityConfig>("another");
  another->deferredIs(true);
  reactor->vekFwkActivityIs(another);
  EXPECT_EQ(Vek::vekActivitySmFor(another)->deliver(), 0U);
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));

  changeProfile("loose");
  EXPECT_EQ(activitySm->deliver(), 0U);
  EXPECT_EQ(Vek::vekActivitySmFor(another)->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict", "profile loose"}));
}

TEST_F(WaitingReactor, LosesNoAttributeThatWaitsWithTheFormerActivityWhenItIsGivenNone) {
  config->defaultProfileListIs("loose", true);
  reactor->vekFwkActivityIs(nullptr);
  EXPECT_EQ(activitySm->deliver(), 2U);
  EXPECT_EQ(calls, (Calls{"profile strict", "default loose"}));
}

/// The former activity is dropped with what waited there; the reactor lives on.
class ReactorOfADroppedActivity : public WaitingReactor {
 protected:
  void dropActivity(Ptr<Vek::ActivityConfig> const& another) {
    reactor->vekFwkActivityIs(another);
    activity = nullptr;
    activitySm = nullptr;
  }
};

TEST_F(ReactorOfADroppedActivity, HearsAtOnceWithoutAnActivity) {
  dropActivity(nullptr);
  changeProfile("strict");
  changeProfile("loose");
  EXPECT_EQ(calls, (Calls{"profile strict", "profile loose"}));
}

TEST_F(ReactorOfADroppedActivity, HearsAtOnceWithAnotherThatDoesNotDefer) {
  dropActivity(make<Vek::ActivityConfig>("another"));
  changeProfile("strict");
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(ReactorOfADroppedActivity, HearsThroughAnotherThatDefers) {
  auto const another = make<Vek::ActivityConfig>("another");
  another->deferredIs(true);
  dropActivity(another);
  changeProfile("strict");
  EXPECT_EQ(Vek::vekActivitySmFor(another)->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(ReactorOfADroppedActivity, MayBeDestroyed) {
  dropActivity(nullptr);
  reactor = nullptr;
  EXPECT_FALSE(config->hasNotifiees());
}

// The key waits with the activity that it came under; the change that comes after runs at once.
TEST_F(WaitingReactor, ThatIsGivenNoActivityHearsTheWaitingKeyOnceMoreAtOnce) {
  reactor->vekFwkActivityIs(nullptr);
  config->profileConfigIs("strict", nullptr);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_EQ(activitySm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict", "profile strict"}));
}

TEST_F(WaitingReactor, CanBeHandedTheRunningStateOfAnotherActivity) {
  auto const another = make<Vek::ActivityConfig>("another");
  another->deferredIs(true);
  auto const anotherSm = Vek::vekActivitySmFor(another);
  EXPECT_EQ(activitySm->deliver(), 1U);
  calls.clear();

  reactor->actsmIs(anotherSm);
  EXPECT_EQ(reactor->actsm(), anotherSm);
  changeProfile("loose");
  EXPECT_FALSE(activitySm->pending());
  EXPECT_EQ(calls, Calls{});
  EXPECT_EQ(anotherSm->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile loose"}));
}

}  // namespace
