#include <gtest/gtest.h>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>

#include "statemachines/LinkFlapSm.h"

#include "tests/statemachines/ReentryActions.h"

// A watcher of the Root acts from inside `onLinkFlapSm`, whatever caused that.

namespace {

struct RootSituation {
  char const* name;
  void (*prepare)(ReentryWorld&);
  void (*trigger)(ReentryWorld&);
};

void PrintTo(RootSituation const& situation, std::ostream* out) {
  *out << situation.name;
}

void nothing(ReentryWorld&) {}

void start(ReentryWorld& w) {
  w.sw.start();
}

RootSituation const kSituations[]{
    {"MachineSet", nothing, start},
    {"MachineReplaced",
     [](ReentryWorld& w) {
       w.sw.start();
       w.sw.causeName = "replaced";
     },
     start},
    {"MachineDeleted", start, [](ReentryWorld& w) { (void)w.sw.root->linkFlapSmDel(); }},
    {"RootDestroyed", start, [](ReentryWorld& w) { w.sw.root = nullptr; }},
};

class RootReentry : public testing::TestWithParam<RootSituation> {};

TEST_P(RootReentry, EndsInWhatTheInputsDemandWhateverAWatcherDoes) {
  for (ReentryAction const& action : reentryActions()) {
    SCOPED_TRACE(action.name);
    ReentryWorld w;
    GetParam().prepare(w);
    int before = 0;
    int after = 0;
    bool armed = true;
    auto const first = RootWatcher::on(w.sw.root, [&] { ++before; });
    auto const meddler = RootWatcher::on(w.sw.root, [&] {
      if (!std::exchange(armed, false)) return;
      action.act(w, w.ethernet1);
    });
    auto const last = RootWatcher::on(w.sw.root, [&] { ++after; });
    GetParam().trigger(w);
    EXPECT_FALSE(armed);
    repairAfter(action, w);
    // However the two notifications nest, both watchers hear of each.
    EXPECT_GE(before, 1);
    EXPECT_EQ(after, before);
    EXPECT_TRUE(meddler->exceptions.empty());
    w.expectEachChangeToldOnce();
    w.expectSettled();
  }
}

INSTANTIATE_TEST_SUITE_P(Situations, RootReentry, testing::ValuesIn(kSituations),
                         [](testing::TestParamInfo<RootSituation> const& instance) {
                           return std::string{instance.param.name};
                         });

// The Root is being destroyed and gets a machine once more: that one goes with it.
TEST(RootReentry, AMachineInstalledWhileTheRootIsDestroyedGoesWithIt) {
  ReentryWorld w;
  w.sw.start();
  LinkFlap::Root* const raw = w.sw.root.get();
  bool armed = true;
  auto const watcher = RootWatcher::on(w.sw.root, [&, raw] {
    if (!std::exchange(armed, false)) return;
    (void)raw->linkFlapSmIs(w.sw.activity, w.sw.configDir, w.sw.statusDir, w.sw.errdisableConfig,
                            w.sw.config, w.sw.causeStatus, "again");
    EXPECT_TRUE(raw->linkFlapSm());
  });
  w.sw.root = nullptr;
  EXPECT_FALSE(armed);
  w.expectSettled();
}

TEST(RootReentry, AWatcherMayDropItselfAndTheOthersWhileItIsTold) {
  Switch sw;
  int told = 0;
  Vek::Ptr<RootWatcher> last;
  Vek::Ptr<RootWatcher> first;
  Vek::Ptr<RootWatcher> self = RootWatcher::on(sw.root, [&] {
    ++told;
    first = nullptr;
    last = nullptr;
    self = nullptr;
  });
  first = RootWatcher::on(sw.root, [&] { ++told; });
  last = RootWatcher::on(sw.root, [&] { ++told; });
  sw.start();
  EXPECT_EQ(told, 1);
  (void)sw.root->linkFlapSmDel();
  EXPECT_EQ(told, 1);
}

// A reactor that is pointed at another status err-disables before it is bound again.

TEST(RepointReentry, AWatcherMayDropEverythingWhileAStatusIsRepointed) {
  ReentryWorld w;
  w.sw.config->maxFlapsIs(0);
  w.sw.start();
  auto const other = Vek::make<Interface::EthPhyIntfStatus>(w.ethernet1);
  other->rawLinkStatusIs(Interface::RawLinkStatus::up);
  w.arm([](ReentryWorld& world, Tarn::IntfId const& id) {
    world.drop(id);
    world.sw.root = nullptr;
  });
  w.sw.profileSm(w.ethernet1, "default")->ethPhyIntfStatusIs(other);
  EXPECT_TRUE(w.acted());
  EXPECT_FALSE(other->hasNotifiees());
  w.expectSettled();
}

TEST(RepointReentry, AWatcherMayDropEverythingWhileTheSettingsAreRepointed) {
  ReentryWorld w;
  w.sw.start();
  w.sw.causeStatus->intfStatusIs(w.ethernet2, 0.5);
  auto const other = Vek::make<LinkFlap::IntfConfig>();  // switched off
  w.arm([](ReentryWorld& world, Tarn::IntfId const& id) {
    world.drop(id);
    world.sw.root = nullptr;
  });
  w.sw.intfSm(w.ethernet2)->intfConfigIs(other);
  EXPECT_TRUE(w.acted());
  EXPECT_FALSE(other->hasNotifiees());
  w.expectSettled();
}

// On an activity that defers, the walk of deliveries goes on without what has gone.

class DeferredReentry : public testing::Test {
 protected:
  DeferredReentry() {
    w_.sw.activity->deferredIs(true);
    w_.sw.start();
    w_.sw.causeStatus->intfStatusIs(w_.ethernet1, 0.5);
    // Two reactors wait, then the record's watcher hears from the first.
    w_.sw.statusDir->intfStatusDel(w_.ethernet1);
    w_.sw.profileIs("p7", {.maxFlaps = 1, .interval = 1});
  }
  void deliver() { Vek::vekActivitySmFor(w_.sw.activity)->deliver(); }

  ReentryWorld w_;
};

TEST_F(DeferredReentry, AMachineDeletedInADeliveryHearsNoFurtherOne) {
  w_.arm([](ReentryWorld& world, Tarn::IntfId const&) { (void)world.sw.root->linkFlapSmDel(); });
  w_.sw.takeTraces();
  deliver();
  EXPECT_TRUE(w_.acted());
  EXPECT_EQ(w_.sw.traced("handleProfileConfig"), 0U);
  w_.expectSettled();
}

TEST_F(DeferredReentry, AChangeMadeInADeliveryWaitsForTheNext) {
  w_.arm([](ReentryWorld& world, Tarn::IntfId const&) { world.sw.addStatus(world.ethernet1); });
  deliver();
  EXPECT_TRUE(w_.acted());
  EXPECT_EQ(w_.sw.intfSm(w_.ethernet1), nullptr);
  deliver();
  EXPECT_NE(w_.sw.intfSm(w_.ethernet1), nullptr);
}

TEST_F(DeferredReentry, AWatcherThatThrowsInADeliveryStopsNoFurtherOne) {
  w_.arm([](ReentryWorld&, Tarn::IntfId const&) { throw std::runtime_error{"meddler"}; });
  w_.sw.takeTraces();
  deliver();
  EXPECT_EQ(w_.sw.traced("handleProfileConfig"), 1U);
  EXPECT_EQ(w_.sw.takeFailures().size(), 1U);
  w_.expectSettled();
}

}  // namespace
