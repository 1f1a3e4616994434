// What every state type gets from its base; the types themselves are tested in model/.

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/State.h"

#include "tests/runtime/support/ConfigWatcher.h"
#include "tests/runtime/support/Tracking.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::Log;
using RuntimeTest::watch;
using Tarn::IntfId;
using Vek::make;
using Vek::Ptr;

using Names = std::vector<std::string>;

class State : public testing::Test {
 protected:
  State() {
    for (char const* name : {"a", "b", "c", "d", "e", "f"})
      config->defaultProfileListIs(name, true);
  }

  Ptr<Config> config = make<Config>("linkFlap");
  Log log;
};

TEST(SameValue, IsEqualityAndTakesNoNumberForItself) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(Vek::sameValue(1.5, 1.5));
  EXPECT_FALSE(Vek::sameValue(1.5, 1.25));
  EXPECT_TRUE(Vek::sameValue(nan, nan));
  EXPECT_TRUE(Vek::sameValue(nan, -nan));
  EXPECT_FALSE(Vek::sameValue(nan, 0.0));
  EXPECT_FALSE(Vek::sameValue(0.0, nan));
  EXPECT_TRUE(Vek::sameValue(0.0, -0.0));
  EXPECT_TRUE(Vek::sameValue(7U, 7U));
  EXPECT_FALSE(Vek::sameValue(Vek::String{"a"}, Vek::String{"b"}));
}

TEST_F(State, CountsReadsAndChanges) {
  auto const fresh = make<Config>();
  EXPECT_EQ(fresh->reads(), 0U);
  EXPECT_EQ(fresh->changes(), 0U);
  fresh->maxFlapsIs(fresh->maxFlaps() + 1);
  fresh->defaultProfileListIs("a", true);
  (void)fresh->defaultProfileList("a");
  (void)fresh->defaultProfileList("absent");
  EXPECT_EQ(fresh->reads(), 3U);
  EXPECT_EQ(fresh->changes(), 2U);
}

TEST_F(State, NamesItsAttributes) {
  EXPECT_EQ(config->attributeString(264), "defaultProfileList");
  EXPECT_EQ(config->attributeString(1), "");
}

TEST_F(State, ChangeIsCountedBeforeItIsTold) {
  auto const watcher = watch(config, "w", log);
  std::uint32_t const before = config->changes();
  std::uint32_t seen = 0;
  watcher->then = [&] { seen = config->changes(); };
  config->maxFlapsIs(77);
  EXPECT_EQ(seen, before + 1);
}

TEST_F(State, MemberIsThereWhenItsComingIsToldAndGoneWhenItsGoingIs) {
  auto const watcher = watch(config, "w", log);
  bool there = false;
  bool thereAtOnce = false;
  watcher->then = [&] { there = config->defaultProfileList().has("x"); };
  watcher->thenAtOnce = [&] { thereAtOnce = config->defaultProfileList().has("x"); };
  config->defaultProfileListIs("x", true);
  EXPECT_TRUE(there);
  EXPECT_TRUE(thereAtOnce);
  config->defaultProfileListDel("x");
  EXPECT_FALSE(there);
  EXPECT_FALSE(thereAtOnce);
}

TEST_F(State, RemovedValueLivesUntilItsGoingWasTold) {
  RuntimeTest::Tracking const tracking;
  config->newProfileConfig("strict");
  auto const watcher = watch(config, "w", log);
  std::size_t seen = 0;
  std::size_t const withProfile = tracking.live();
  watcher->then = [&] { seen = tracking.live(); };
  config->profileConfigDel("strict");
  EXPECT_EQ(seen, withProfile);
  EXPECT_EQ(tracking.live(), withProfile - 1);
}

TEST_F(State, ReplacedValueLivesUntilTheChangeWasTold) {
  RuntimeTest::Tracking const tracking;
  config->newProfileConfig("strict");
  auto const watcher = watch(config, "w", log);
  std::size_t seen = 0;
  std::size_t const withProfile = tracking.live();
  watcher->then = [&] { seen = tracking.live(); };
  config->newProfileConfig("strict");
  EXPECT_EQ(seen, withProfile + 1);
  EXPECT_EQ(tracking.live(), withProfile);
  config->profileConfigDel("strict");  // what was recorded goes while it still is
}

TEST_F(State, MemberMayBeRemovedByTheKeyItStandsUnder) {
  auto const watcher = watch(config, "w", log);
  for (auto const& member : config->defaultProfileList())
    config->defaultProfileListDel(member.key());
  EXPECT_TRUE(config->defaultProfileList().empty());
  EXPECT_EQ(log.size(), 12U);
}

TEST_F(State, KeyMayGoWithItsHolderWhileTheChangeIsTold) {
  auto holder = std::make_unique<Vek::String>("k");
  auto const first = watch(config, "first", log);
  auto const second = watch(config, "second", log);
  first->then = [&] { holder = nullptr; };
  config->defaultProfileListIs(*holder, true);
  EXPECT_EQ(log.back(), "second defaultProfileList[k]");

  holder = std::make_unique<Vek::String>("k");
  config->defaultProfileListDel(*holder);
  EXPECT_EQ(log.back(), "second defaultProfileList[k]");
  EXPECT_EQ(log.size(), 8U);
}

TEST_F(State, WalkOverACollectionHoldsWhileWatchersChangeIt) {
  Names order;
  for (auto const& member : config->defaultProfileList())
    order.emplace_back(member.key().view());
  ASSERT_EQ(order.size(), 6U);

  // The watcher of each removal removes the one after it as well, and brings in another member.
  auto const watcher = watch(config, "w", log);
  watcher->then = [&] {
    if (log.size() != 2) return;
    config->defaultProfileListDel(Vek::String{order[1]});
    for (int i = 0; i < 100; ++i)
      config->defaultProfileListIs(Vek::String{"new" + std::to_string(i)}, false);
  };
  Names visited;
  for (auto const& member : config->defaultProfileList()) {
    if (member.key().size() > 1) continue;  // one of the new ones, where the order put it
    visited.emplace_back(member.key().view());
    if (visited.size() == 1) config->defaultProfileListDel(member.key());
  }
  Names expected = order;
  expected.erase(expected.begin() + 1);
  EXPECT_EQ(visited, expected);
}

TEST_F(State, CollectionYieldsValuesByKey) {
  auto const& list = config->defaultProfileList();
  ASSERT_NE(list.find("a"), nullptr);
  EXPECT_TRUE(*list.find("a"));
  EXPECT_EQ(list.find("x"), nullptr);
  EXPECT_EQ(list.size(), 6U);
  EXPECT_FALSE(list.empty());
  for (auto const& member : list)
    EXPECT_TRUE(member.value());
}

TEST_F(State, MemberHeldByAWalkKeepsItsKeyAndValue) {
  auto walk = config->defaultProfileList().begin();
  std::string const key{walk->key().view()};
  config->defaultProfileListDel(walk->key());
  EXPECT_EQ(walk->key(), std::string_view{key});
  EXPECT_TRUE(walk->value());
}

TEST_F(State, EndOfTheObjectReleasesItsMembers) {
  RuntimeTest::Tracking const tracking;
  auto other = make<Config>("other");
  for (int i = 0; i < 20; ++i)
    other->newIntfConfig(IntfId{Vek::String{"Ethernet" + std::to_string(i)}});
  EXPECT_EQ(tracking.live(), 21U);
  other = nullptr;
  EXPECT_EQ(tracking.live(), 0U);
}

TEST_F(State, DroppedByItsWatcherInAnyKindOfChange) {
  auto const cause = [this](auto change) {
    config = make<Config>();
    config->defaultProfileListIs("a", true);
    Ptr<RuntimeTest::ConfigWatcher> watcher = watch(config, "w", log);
    watcher->then = [&] {
      watcher = nullptr;
      config = nullptr;
    };
    log.clear();
    change(*config);
    EXPECT_FALSE(config);
    return log.back();
  };
  EXPECT_EQ(cause([](Config& c) { c.maxFlapsIs(77); }), "w maxFlaps");
  EXPECT_EQ(cause([](Config& c) { c.intervalIs(77); }), "w interval");
  EXPECT_EQ(cause([](Config& c) { c.defaultProfileListIs("b", true); }), "w defaultProfileList[b]");
  EXPECT_EQ(cause([](Config& c) { c.defaultProfileListIs("a", false); }),
            "w defaultProfileList[a]");
  EXPECT_EQ(cause([](Config& c) { c.defaultProfileListDel("a"); }), "w defaultProfileList[a]");
  EXPECT_EQ(cause([](Config& c) { c.newProfileConfig("p"); }), "w profileConfig[p]");
}

}  // namespace
