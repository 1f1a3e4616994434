// What watchers may do from inside of a notification: anything. Whoever was registered before the
// change, and still is when its turn comes, is told once.

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Notifiee.h"

#include "tests/runtime/support/ConfigWatcher.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::ConfigWatcher;
using RuntimeTest::kInterval;
using RuntimeTest::kMaxFlaps;
using RuntimeTest::Log;
using RuntimeTest::watch;
using Vek::make;
using Vek::Ptr;

/// Four watchers of one kind, a to d, that the test can do away with.
class NotifieeReentry : public testing::Test {
 protected:
  NotifieeReentry() {
    for (char const* label : {"a", "b", "c", "d"})
      watchers[label] = watch(config, label, log);
  }

  /// Has `label` do something when it hears.
  void when(char const* label, std::function<void()> act) {
    watchers[label]->then = std::move(act);
  }
  /// Destroys a watcher: nobody else holds it.
  void drop(char const* label) { watchers.erase(label); }
  /// The labels of those who hear when `maxFlaps` changes.
  std::string told() {
    log.clear();
    config->maxFlapsIs(++flaps);
    std::string labels;
    for (std::string const& line : log)
      labels += line.substr(0, line.find(' '));
    return labels;
  }

  Ptr<Config> config = make<Config>("linkFlap");
  Log log;
  std::map<std::string, Ptr<ConfigWatcher>> watchers;
  unsigned flaps{100};
};

TEST_F(NotifieeReentry, WatcherMayDestroyItself) {
  when("b", [this] { drop("b"); });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "acd");
}

TEST_F(NotifieeReentry, FirstAndLastMayDestroyThemselves) {
  when("a", [this] { drop("a"); });
  when("d", [this] { drop("d"); });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "bc");
}

TEST_F(NotifieeReentry, AllMayDestroyThemselves) {
  for (char const* label : {"a", "b", "c", "d"})
    when(label, [this, label] { drop(label); });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "");
  EXPECT_FALSE(config->hasNotifiees());
}

TEST_F(NotifieeReentry, WatcherMayDestroyTheNextOne) {
  when("b", [this] { drop("c"); });
  EXPECT_EQ(told(), "abd");
}

TEST_F(NotifieeReentry, WatcherMayDestroyThePreviousOne) {
  when("b", [this] { drop("a"); });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "bcd");
}

TEST_F(NotifieeReentry, WatcherMayDestroyTheLastOne) {
  when("b", [this] { drop("d"); });
  EXPECT_EQ(told(), "abc");
}

TEST_F(NotifieeReentry, WatcherMayDestroyItselfAndTheNextOne) {
  when("b", [this] {
    drop("c");
    drop("b");
  });
  EXPECT_EQ(told(), "abd");
}

TEST_F(NotifieeReentry, WatcherMayDestroyAllOthers) {
  when("b", [this] {
    for (char const* label : {"a", "c", "d"})
      drop(label);
  });
  EXPECT_EQ(told(), "ab");
  EXPECT_EQ(told(), "b");
}

TEST_F(NotifieeReentry, WatcherMayDestroyAllIncludingItself) {
  when("a", [this] { watchers.clear(); });
  EXPECT_EQ(told(), "a");
  EXPECT_EQ(told(), "");
}

TEST_F(NotifieeReentry, WatcherMayDeregisterOthersWhichThenDoNotHear) {
  when("a", [this] { watchers["c"]->isRegisteredNotifieeIs(false); });
  EXPECT_EQ(told(), "abd");
  when("a", [this] { watchers["b"]->hasNotificationActiveIs(false); });
  EXPECT_EQ(told(), "ad");
  when("a", [this] { watchers["d"]->notifierIs(nullptr); });
  EXPECT_EQ(told(), "a");
}

TEST_F(NotifieeReentry, WatcherRegisteredMeanwhileHearsTheNextChange) {
  when("b", [this] {
    if (watchers.count("e") == 0) watchers["e"] = watch(config, "e", log);
  });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "abcde");
}

TEST_F(NotifieeReentry, WatcherRegisteredByTheLastOneHearsTheNextChange) {
  when("d", [this] {
    if (watchers.count("e") == 0) watchers["e"] = watch(config, "e", log);
  });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "abcde");
}

TEST_F(NotifieeReentry, WatcherOfANewKindRegisteredMeanwhileHearsTheNextChange) {
  when("b", [this] {
    if (watchers.count("e") == 0) watchers["e"] = watch(config, "e", log, kMaxFlaps);
  });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "abcde");
}

// The kind of all who are here becomes one of two while they are told, and then their last one goes.
TEST_F(NotifieeReentry, WatcherOfANewKindAndOneOfTheOldDoNotHearThoughTheLastOneLeaves) {
  when("a", [this] {
    if (watchers.count("e") != 0) return;
    watchers["e"] = watch(config, "e", log, kMaxFlaps);
    drop("d");
    watchers["f"] = watch(config, "f", log);
  });
  EXPECT_EQ(told(), "abc");
  EXPECT_EQ(told(), "abcfe");
}

TEST_F(NotifieeReentry, WatcherRegisteredWithALaterKindHearsTheNextChange) {
  watchers["x"] = watch(config, "x", log, kMaxFlaps);
  when("a", [this] {
    if (watchers.count("y") == 0) watchers["y"] = watch(config, "y", log, kMaxFlaps);
  });
  EXPECT_EQ(told(), "abcdx");
  EXPECT_EQ(told(), "abcdxy");
}

TEST_F(NotifieeReentry, WatcherOfALaterKindMayBeDestroyed) {
  watchers["x"] = watch(config, "x", log, kMaxFlaps);
  watchers["y"] = watch(config, "y", log, kMaxFlaps);
  when("b", [this] { drop("x"); });
  EXPECT_EQ(told(), "abcdy");
  when("b", [this] { drop("y"); });
  EXPECT_EQ(told(), "abcd");
}

TEST_F(NotifieeReentry, WatcherOfAnEarlierKindMayBeDestroyed) {
  watchers["x"] = watch(config, "x", log, kMaxFlaps);
  when("x", [this] { drop("c"); });
  EXPECT_EQ(told(), "abcdx");
  EXPECT_EQ(told(), "abdx");
}

TEST_F(NotifieeReentry, WatcherThatLeavesAndComesBackIsNotToldTwice) {
  when("b", [this] {
    watchers["b"]->isRegisteredNotifieeIs(false);
    watchers["b"]->isRegisteredNotifieeIs(true);
  });
  EXPECT_EQ(told(), "abcd");
  EXPECT_EQ(told(), "acdb");
}

TEST_F(NotifieeReentry, WatcherMayMoveToAnotherObjectAndBack) {
  auto const other = make<Config>("other");
  when("a", [&] {
    watchers["a"]->notifierIs(other);
    watchers["b"]->notifierIs(other);
    watchers["b"]->isRegisteredNotifieeIs(true);
  });
  EXPECT_EQ(told(), "acd");
  log.clear();
  other->maxFlapsIs(1);
  EXPECT_EQ(log, (Log{"b maxFlaps"}));
}

TEST_F(NotifieeReentry, ChangeFromInsideIsToldToAllBeforeTheFirstOneGoesOn) {
  when("b", [this] {
    if (flaps < 102) config->maxFlapsIs(++flaps);
  });
  // First change: a, b; inside of b the second one: a, b, c, d; then the first goes on: c, d.
  EXPECT_EQ(told(), "ababcdcd");
  EXPECT_EQ(config->maxFlaps(), 102U);
}

TEST_F(NotifieeReentry, ChangeOfAnotherAttributeFromInside) {
  when("a", [this] {
    if (config->interval() != 60) config->intervalIs(60);
  });
  log.clear();
  config->maxFlapsIs(++flaps);
  EXPECT_EQ(log, (Log{"a maxFlaps", "a interval", "b interval", "c interval", "d interval",
                      "b maxFlaps", "c maxFlaps", "d maxFlaps"}));
}

TEST_F(NotifieeReentry, WatcherDestroyedDuringANestedChangeIsNotToldAfterIt) {
  when("a", [this] {
    if (flaps < 102) config->maxFlapsIs(++flaps);
  });
  when("b", [this] { drop("c"); });
  // a, inside of it a and b (which destroys c) and d, then b and d.
  EXPECT_EQ(told(), "aabdbd");
}

TEST_F(NotifieeReentry, WatcherRegisteredDuringTheOuterChangeHearsTheNestedOne) {
  when("a", [this] {
    if (watchers.count("e") != 0) return;
    watchers["e"] = watch(config, "e", log);
    config->maxFlapsIs(++flaps);
  });
  EXPECT_EQ(told(), "aabcdebcd");
}

TEST_F(NotifieeReentry, ObjectMayBeDroppedByItsWatchers) {
  when("b", [this] {
    for (auto const& [label, watcher] : watchers)
      watcher->notifierIs(nullptr);
    config = nullptr;
  });
  config->maxFlapsIs(++flaps);
  EXPECT_EQ(log, (Log{"a maxFlaps", "b maxFlaps"}));
  for (auto const& [label, watcher] : watchers)
    EXPECT_FALSE(watcher->isRegisteredNotifiee());
}

TEST_F(NotifieeReentry, ObjectMayBeDroppedByAWatcherOfALaterKind) {
  watchers["x"] = watch(config, "x", log, kMaxFlaps);
  watchers["y"] = watch(config, "y", log, kMaxFlaps);
  watchers["z"] = watch(config, "z", log, kMaxFlaps | kInterval);
  when("x", [this] {
    watchers.clear();
    config = nullptr;
  });
  log.clear();
  config->maxFlapsIs(++flaps);
  EXPECT_EQ(log.back(), "x maxFlaps");
  EXPECT_EQ(log.size(), 5U);
}

TEST_F(NotifieeReentry, ObjectMayBeDroppedDuringANestedChange) {
  when("a", [this] {
    if (flaps < 102) config->maxFlapsIs(++flaps);
  });
  when("c", [this] {
    watchers.clear();
    config = nullptr;
  });
  log.clear();
  config->maxFlapsIs(++flaps);
  EXPECT_EQ(log, (Log{"a maxFlaps", "a maxFlaps", "b maxFlaps", "c maxFlaps"}));
}

TEST_F(NotifieeReentry, ObjectMayBeDroppedInTheChangeOfAMember) {
  when("b", [this] {
    watchers.clear();
    config = nullptr;
  });
  log.clear();
  config->defaultProfileListIs("strict", true);
  EXPECT_EQ(log, (Log{"a defaultProfileList!", "a defaultProfileList[strict]",
                      "b defaultProfileList!", "b defaultProfileList[strict]"}));
}

TEST_F(NotifieeReentry, ObjectMayBeDroppedInTheRemovalOfAMember) {
  config->defaultProfileListIs("strict", true);
  watchers["a"]->thenAtOnce = [this] {
    watchers.clear();
    config = nullptr;
  };
  log.clear();
  config->defaultProfileListDel("strict");
  EXPECT_EQ(log, (Log{"a defaultProfileList!"}));
}

TEST_F(NotifieeReentry, ImmediateHookMayTakeTheWatcherAway) {
  watchers["a"]->thenAtOnce = [this] { drop("a"); };
  watchers["b"]->thenAtOnce = [this] { watchers["b"]->isRegisteredNotifieeIs(false); };
  watchers["c"]->thenAtOnce = [this] {
    watchers["c"]->isRegisteredNotifieeIs(false);
    watchers["c"]->isRegisteredNotifieeIs(true);
  };
  log.clear();
  config->defaultProfileListIs("strict", true);
  EXPECT_EQ(log, (Log{"a defaultProfileList!", "b defaultProfileList!", "c defaultProfileList!",
                      "d defaultProfileList!", "d defaultProfileList[strict]"}));
}

// At random: each watcher that hears registers, deregisters, makes and destroys some others. Those
// who were there before the change, and stayed until it was told, have heard once; no other has.
TEST(NotifieeReentryRandom, WhoStaysIsToldOnceAndNobodyElseIsTold) {
  std::mt19937 random{69069};  // NOLINT: the same run every time
  auto const below = [&random](unsigned bound) { return static_cast<unsigned>(random() % bound); };
  Vek::AttributeMask const kinds[]{Vek::kAllAttributes, kMaxFlaps, kMaxFlaps | kInterval,
                                   kInterval};
  Ptr<Config> const config = make<Config>("linkFlap");
  Log unused;
  std::map<int, Ptr<ConfigWatcher>> watchers;
  std::set<int> owed;       // registered for `maxFlaps` since before the change
  std::map<int, int> told;  // and how often each was told
  int lastName = 0;

  std::function<void(int)> meanwhile;
  auto const add = [&] {
    int const name = ++lastName;
    auto watcher = watch(config, "", unused, kinds[below(4)]);
    watcher->then = [&meanwhile, name] { meanwhile(name); };
    watchers.emplace(name, std::move(watcher));
  };
  meanwhile = [&](int name) {
    ++told[name];
    EXPECT_TRUE(owed.count(name) != 0) << "watcher " << name << " came too late or had left";
    for (unsigned acts = below(4); acts > 0; --acts) {
      if (watchers.empty() || below(3) == 0) {
        add();
        continue;
      }
      auto const chosen =
          std::next(watchers.begin(), below(static_cast<unsigned>(watchers.size())));
      if (told.count(chosen->first) == 0) owed.erase(chosen->first);
      switch (below(3)) {
        case 0:
          watchers.erase(chosen);
          break;
        case 1:
          chosen->second->isRegisteredNotifieeIs(false);
          break;
        default:
          chosen->second->isRegisteredNotifieeIs(false);
          chosen->second->isRegisteredNotifieeIs(true);
      }
    }
  };

  for (unsigned change = 1; change <= 3000 && !testing::Test::HasFailure(); ++change) {
    SCOPED_TRACE("change " + std::to_string(change));
    while (watchers.size() < 12)
      add();
    while (watchers.size() > 40)
      watchers.erase(watchers.begin());
    owed.clear();
    told.clear();
    for (auto const& [name, watcher] : watchers)
      if (watcher->isRegisteredNotifiee() && (watcher->watching() & kMaxFlaps) != 0)
        owed.insert(name);
    config->maxFlapsIs(1000 + change);
    for (int const name : owed)
      EXPECT_EQ(told[name], 1) << "watcher " << name;
  }
}

}  // namespace
