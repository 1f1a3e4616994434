// When keyed notifications reach their handlers: at once, or when the activity delivers. What may
// go away in between is in ActivityLifetimeTest.cpp.

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Activity.h"

#include "tests/runtime/support/FailureLog.h"
#include "tests/runtime/support/TestReactors.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::KeysReactor;
using RuntimeTest::Machine;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

using Calls = std::vector<std::string>;

class Activity : public testing::Test {
 protected:
  /// Marks this profile as changed.
  void changeProfile(char const* name) { config->newProfileConfig(name); }
  void changeDefault(char const* name) {
    config->defaultProfileListIs(name, !config->defaultProfileList(name));
  }
  void changeIntf(char const* name) { config->newIntfConfig(IntfId{name}); }
  std::size_t deliver() { return activitySm->deliver(); }

  Calls calls;
  Ptr<Vek::ActivityConfig> activity = make<Vek::ActivityConfig>("main");
  Ptr<Vek::ActivitySm> activitySm = Vek::vekActivitySmFor(activity);
  Ptr<Config> config = make<Config>("linkFlap");
  Ptr<Machine> machine = make<Machine>(calls);
  Ptr<KeysReactor> reactor = make<KeysReactor>(activity, config, machine.get());
};

class DeferringActivity : public Activity {
 protected:
  DeferringActivity() { activity->deferredIs(true); }
};

TEST_F(Activity, HasOneRunningStateForEachConfiguration) {
  EXPECT_TRUE(Vek::vekActivitySmFor(activity) == activitySm);
  EXPECT_EQ(activitySm->config(), activity.get());
  EXPECT_FALSE(Vek::vekActivitySmFor(make<Vek::ActivityConfig>("another")) == activitySm);
  EXPECT_FALSE(Vek::vekActivitySmFor(nullptr));
}

TEST_F(Activity, IsKeptByItsReactor) {
  EXPECT_TRUE(reactor->vekFwkActivity() == activity);
  EXPECT_TRUE(reactor->actsm() == activitySm);
  auto const another = make<Vek::ActivityConfig>("another");
  reactor->vekFwkActivityIs(another);
  EXPECT_TRUE(reactor->vekFwkActivity() == another);
  EXPECT_TRUE(reactor->actsm() == Vek::vekActivitySmFor(another));
  reactor->vekFwkActivityIs(nullptr);
  EXPECT_FALSE(reactor->vekFwkActivity());
  EXPECT_FALSE(reactor->actsm());
}

TEST_F(Activity, DeliversAtOnceByDefault) {
  EXPECT_FALSE(activity->deferred());
  EXPECT_FALSE(activitySm->defers());
  changeProfile("strict");
  changeIntf("Ethernet1");
  changeIntf("Ethernet2");
  EXPECT_EQ(calls, (Calls{"profile strict", "intf Ethernet1", "intf Ethernet2"}));
  EXPECT_FALSE(activitySm->pending());
  EXPECT_EQ(deliver(), 0U);
}

TEST_F(Activity, DeliversAtOnceToAReactorWithoutActivity) {
  activity->deferredIs(true);
  auto const alone = make<KeysReactor>(nullptr, config, machine.get());
  reactor = nullptr;
  changeProfile("strict");
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(DeferringActivity, HoldsAKeyUntilItDelivers) {
  EXPECT_TRUE(activitySm->defers());
  changeProfile("strict");
  EXPECT_EQ(calls, Calls{});
  EXPECT_TRUE(activitySm->pending());

  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_FALSE(activitySm->pending());
  EXPECT_EQ(deliver(), 0U);
  EXPECT_EQ(calls.size(), 1U);
}

TEST_F(DeferringActivity, ScalarsAreNeverDeferred) {
  config->maxFlapsIs(1);
  EXPECT_EQ(calls, (Calls{"maxFlaps"}));
}

TEST_F(DeferringActivity, SameKeyTwiceIsOneKey) {
  changeProfile("strict");
  changeProfile("strict");
  changeProfile("strict");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

// Deliberate: which of several keys have changed is not kept; the handlers of keys are not run.
TEST_F(DeferringActivity, SeveralKeysBecomeOneUnkeyedNotification) {
  changeProfile("strict");
  changeProfile("loose");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"several"}));
  EXPECT_FALSE(activitySm->pending());
}

TEST_F(DeferringActivity, SeveralKeysAreLostOnAReactorWithoutTheUnkeyedForm) {
  changeIntf("Ethernet1");
  changeIntf("Ethernet2");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(DeferringActivity, KeyThatComesBackAfterAnotherIsAmongSeveral) {
  changeProfile("strict");
  changeProfile("loose");
  changeProfile("strict");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"several"}));
}

TEST_F(DeferringActivity, KeysAreCountedAnewAfterEachDelivery) {
  changeProfile("strict");
  changeProfile("loose");
  deliver();
  changeProfile("loose");
  EXPECT_EQ(deliver(), 1U);
  changeProfile("strict");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"several", "profile loose", "profile strict"}));
}

TEST_F(DeferringActivity, AttributesWaitForThemselvesInTheOrderTheyCame) {
  changeDefault("strict");
  changeIntf("Ethernet1");
  changeProfile("strict");
  changeProfile("loose");
  changeDefault("strict");
  EXPECT_EQ(deliver(), 3U);
  EXPECT_EQ(calls, (Calls{"default strict", "intf Ethernet1", "several"}));
  EXPECT_EQ(deliver(), 0U);
}

TEST_F(DeferringActivity, EveryReactorWaitsForItself) {
  auto const another = make<KeysReactor>(activity, config, machine.get());
  changeProfile("strict");
  EXPECT_EQ(deliver(), 2U);
  EXPECT_EQ(calls, (Calls{"profile strict", "profile strict"}));
}

TEST_F(DeferringActivity, ChangesMadeByAHandlerWaitForTheNextDelivery) {
  machine->then = [this] {
    machine->then = nullptr;
    changeProfile("loose");
    changeDefault("loose");
  };
  changeProfile("strict");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_TRUE(activitySm->pending());
  EXPECT_EQ(deliver(), 2U);
  EXPECT_EQ(calls, (Calls{"profile strict", "profile loose", "default loose"}));
}

TEST_F(DeferringActivity, SameKeyChangedByItsHandlerWaitsForTheNextDelivery) {
  machine->then = [this] { changeProfile("strict"); };
  changeProfile("strict");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict", "profile strict"}));
  EXPECT_TRUE(activitySm->pending());
}

TEST_F(DeferringActivity, HandlerMayChangeAnAttributeThatWaitsAlready) {
  machine->then = [this] {
    machine->then = nullptr;
    changeDefault("loose");
  };
  changeProfile("strict");
  changeDefault("strict");
  EXPECT_EQ(deliver(), 2U);
  EXPECT_EQ(calls, (Calls{"profile strict"})) << "several of the default list, which has no form";
}

TEST_F(DeferringActivity, HandlerMayDeliver) {
  std::size_t inside = 0;
  machine->then = [&] {
    machine->then = nullptr;
    inside = deliver();
  };
  changeProfile("strict");
  changeDefault("strict");
  changeIntf("Ethernet1");
  std::size_t const outside = deliver();
  EXPECT_EQ(calls, (Calls{"profile strict", "default strict", "intf Ethernet1"}));
  EXPECT_EQ(outside + inside, 3U);
  EXPECT_FALSE(activitySm->pending());
}

TEST_F(DeferringActivity, ExceptionOfAHandlerIsReportedAndTheRestDelivered) {
  RuntimeTest::FailureLog const failures;
  auto const another = make<KeysReactor>(activity, config, machine.get());
  machine->then = [this] {
    machine->then = nullptr;
    throw std::runtime_error{"no"};
  };
  changeProfile("strict");
  changeDefault("strict");
  EXPECT_EQ(deliver(), 4U);
  EXPECT_EQ(failures.lines(), (Calls{"profileConfig (263) of RuntimeTest::KeysReactor: no"}));
  EXPECT_EQ(calls.size(), 4U);

  changeProfile("strict");
  EXPECT_EQ(deliver(), 2U) << "it is delivered to as before";
  EXPECT_EQ(calls.size(), 6U);
}

TEST_F(DeferringActivity, ExceptionOfAHandlerLeavesLaterChangesDeferred) {
  RuntimeTest::FailureLog const failures;
  machine->then = [] { throw std::runtime_error{"no"}; };
  changeProfile("strict");
  deliver();
  machine->then = nullptr;
  changeProfile("strict");
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_EQ(deliver(), 1U);
}

// The rest follows the reactor to its new activity, whether its handler ends well or not.
TEST_F(DeferringActivity, WhatElseWaitsFollowsAReactorThatIsMovedByAHandlerThatThrows) {
  RuntimeTest::FailureLog const failures;
  auto const other = make<Vek::ActivityConfig>("other");
  other->deferredIs(true);
  machine->then = [&] {
    machine->then = nullptr;
    reactor->vekFwkActivityIs(other);
    throw std::runtime_error{"no"};
  };
  changeProfile("strict");
  changeDefault("strict");
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_FALSE(activitySm->pending());
  EXPECT_EQ(Vek::vekActivitySmFor(other)->deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict", "default strict"}));
  EXPECT_EQ(failures.lines().size(), 1U);
}

TEST_F(DeferringActivity, DeferralSwitchedOffLetsLaterNotificationsRunAtOnce) {
  activity->deferredIs(false);
  changeProfile("strict");
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

// Switching deferral off concerns later notifications; what waits stays what it was.
TEST_F(DeferringActivity, WaitingKeyIsKeptWhileLaterOnesRunAtOnce) {
  changeProfile("strict");
  activity->deferredIs(false);
  changeProfile("loose");
  EXPECT_EQ(calls, (Calls{"profile loose"}));
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile loose", "profile strict"}));
}

TEST_F(DeferringActivity, WaitingKeyThatChangesAgainRunsAtOnceWhenNothingIsDeferred) {
  changeProfile("strict");
  activity->deferredIs(false);
  changeProfile("strict");
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

TEST_F(DeferringActivity, NotificationHandledByHandWaitsNoLonger) {
  changeProfile("strict");
  reactor->handleNotification(activity.get());
  EXPECT_EQ(calls, (Calls{"profile strict"}));
  EXPECT_FALSE(activitySm->pending());
  reactor->handleNotification(activity.get());
  EXPECT_EQ(calls.size(), 1U) << "with nothing waiting it does nothing";
}

TEST_F(DeferringActivity, NotificationHandledByHandLeavesTheOthersWaiting) {
  auto const another = make<KeysReactor>(activity, config, machine.get());
  changeProfile("strict");
  reactor->handleNotification(activity.get());
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict", "profile strict"}));

  changeProfile("loose");
  changeDefault("loose");
  calls.clear();
  reactor->handleNotification(activity.get());
  EXPECT_EQ(calls, (Calls{"profile loose"})) << "the attribute that has waited longest";
  EXPECT_EQ(deliver(), 3U);
}

/// A reactor that may leave a notification without passing it on.
class PickyReactor final : public Vek::ActivityReactor<PickyReactor, Machine, Config> {
 public:
  using ActivityReactor::ActivityReactor;
  bool ignores{false};
  void onProfileConfig(Vek::String name) override {
    if (!ignores) react(Config::profileConfigAttr, name, &Machine::handleProfile);
  }
};

TEST_F(DeferringActivity, NotificationThatIsIgnoredWhenDeliveredLeavesLaterOnesDeferred) {
  reactor = nullptr;
  auto const picky = make<PickyReactor>(activity, config, machine.get());
  changeProfile("strict");
  picky->ignores = true;
  EXPECT_EQ(deliver(), 1U);
  picky->ignores = false;
  changeProfile("strict");
  EXPECT_EQ(calls, Calls{}) << "the delivery before does not count for this one";
  EXPECT_EQ(deliver(), 1U);
  EXPECT_EQ(calls, (Calls{"profile strict"}));
}

}  // namespace
