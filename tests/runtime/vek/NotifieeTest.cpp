// Who is told of a change, in which order and at which cost. What watchers may do meanwhile is in
// NotifieeReentryTest.cpp, what becomes of their exceptions in NotifieeExceptionTest.cpp.

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <sys/mman.h>
#include <tuple>
#include <unistd.h>
#include <vector>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/model/LinkFlapProfileConfig.h"
#include "runtime/vek/Exception.h"
#include "runtime/vek/Notifiee.h"
#include "runtime/vek/State.h"

#include "tests/runtime/support/ConfigWatcher.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::ConfigWatcher;
using RuntimeTest::kDefaultProfileList;
using RuntimeTest::kInterval;
using RuntimeTest::kMaxFlaps;
using RuntimeTest::Log;
using RuntimeTest::watch;
using Vek::make;
using Vek::Ptr;

class Notifiee : public testing::Test {
 protected:
  Ptr<Config> const config = make<Config>("linkFlap");
  Log log;
};

TEST_F(Notifiee, HearsWhileItIsRegistered) {
  auto const watcher = make<ConfigWatcher>("a", log);
  watcher->notifierIs(config);
  config->maxFlapsIs(1);
  EXPECT_EQ(log, Log{}) << "it is attached, and not registered";
  EXPECT_FALSE(watcher->isRegisteredNotifiee());

  watcher->isRegisteredNotifieeIs(true);
  config->maxFlapsIs(2);
  EXPECT_EQ(log, (Log{"a maxFlaps"}));
  EXPECT_TRUE(watcher->isRegisteredNotifiee());

  watcher->isRegisteredNotifieeIs(false);
  config->maxFlapsIs(3);
  EXPECT_EQ(log, (Log{"a maxFlaps"}));
  EXPECT_FALSE(watcher->isRegisteredNotifiee());
  EXPECT_TRUE(watcher->notifier() == config) << "it stays attached";
}

TEST_F(Notifiee, HearsOnceHoweverOftenItIsRegistered) {
  auto const watcher = watch(config, "a", log);
  watcher->isRegisteredNotifieeIs(true);
  watcher->hasNotificationActiveIs(true);
  config->maxFlapsIs(1);
  EXPECT_EQ(log, (Log{"a maxFlaps"}));
  watcher->isRegisteredNotifieeIs(false);
  watcher->isRegisteredNotifieeIs(false);
  config->maxFlapsIs(2);
  EXPECT_EQ(log.size(), 1U);
}

TEST_F(Notifiee, DeliverySwitchRegistersAndDeregisters) {
  auto const watcher = make<ConfigWatcher>("a", log);
  watcher->notifierIs(config);
  watcher->hasNotificationActiveIs(true);
  EXPECT_TRUE(watcher->hasNotificationActive());
  EXPECT_TRUE(watcher->isRegisteredNotifiee());
  watcher->hasNotificationActiveIs(false);
  EXPECT_FALSE(watcher->hasNotificationActive());
  EXPECT_FALSE(watcher->isRegisteredNotifiee());
  config->maxFlapsIs(1);
  EXPECT_EQ(log, Log{});
}

TEST_F(Notifiee, WithoutANotifierIsNotRegistered) {
  auto const watcher = make<ConfigWatcher>("a", log);
  watcher->isRegisteredNotifieeIs(true);
  EXPECT_FALSE(watcher->isRegisteredNotifiee());
  watcher->hasNotificationActiveIs(true);
  EXPECT_FALSE(watcher->isRegisteredNotifiee());
}

TEST_F(Notifiee, AttachingTheObjectAlreadyHeldChangesNothing) {
  auto const watcher = watch(config, "a", log);
  watcher->notifierIs(config);
  EXPECT_TRUE(watcher->isRegisteredNotifiee());
}

TEST_F(Notifiee, AttachingAnotherObjectDeregistersFromTheFormer) {
  auto const watcher = watch(config, "a", log);
  auto const other = make<Config>("other");
  watcher->notifierIs(other);
  EXPECT_FALSE(watcher->isRegisteredNotifiee());
  EXPECT_FALSE(config->hasNotifiees());
  config->maxFlapsIs(1);
  other->maxFlapsIs(1);
  EXPECT_EQ(log, Log{});

  watcher->isRegisteredNotifieeIs(true);
  other->maxFlapsIs(2);
  EXPECT_EQ(log, (Log{"a maxFlaps"}));
}

TEST_F(Notifiee, AttachingNothingDetaches) {
  auto const watcher = watch(config, "a", log);
  watcher->notifierIs(nullptr);
  EXPECT_FALSE(watcher->notifier());
  EXPECT_FALSE(watcher->watched());
  EXPECT_FALSE(config->hasNotifiees());
  EXPECT_EQ(config->referenceCount(), 1U);
}

TEST_F(Notifiee, HoldsItsNotifierWhichDoesNotHoldIt) {
  auto watcher = watch(config, "a", log);
  EXPECT_EQ(config->referenceCount(), 2U);
  EXPECT_EQ(watcher->referenceCount(), 1U);
  EXPECT_TRUE(watcher->watched() == config);
  watcher = nullptr;
  EXPECT_EQ(config->referenceCount(), 1U);
}

TEST_F(Notifiee, DeregistersWhenItIsDestroyed) {
  auto watcher = watch(config, "a", log);
  EXPECT_TRUE(config->hasNotifiees());
  watcher = nullptr;
  EXPECT_FALSE(config->hasNotifiees());
  config->maxFlapsIs(1);
  EXPECT_EQ(log, Log{});
}

TEST_F(Notifiee, RefusesAnObjectOfAnotherType) {
  auto const watcher = watch(config, "a", log);
  auto const profile = make<LinkFlap::ProfileConfig>("strict");
  try {
    watcher->notifierIs(profile);
    ADD_FAILURE() << "a profile was taken for the configuration";
  } catch (Vek::TypeException const& exception) {
    EXPECT_STREQ(exception.what(), "LinkFlap::Config");
    EXPECT_TRUE(exception.ids().has(Vek::kTypeException));
  }
  EXPECT_TRUE(watcher->watched() == config) << "it stays where it was";
  EXPECT_TRUE(watcher->isRegisteredNotifiee());
}

TEST_F(Notifiee, ReportsUnderTheNameOfItsClass) {
  EXPECT_EQ(make<ConfigWatcher>("a", log)->name(), "RuntimeTest::ConfigWatcher");
}

TEST_F(Notifiee, IsToldInOrderOfRegistration) {
  auto const c = watch(config, "c", log);
  auto const a = watch(config, "a", log);
  auto const b = watch(config, "b", log);
  config->maxFlapsIs(1);
  EXPECT_EQ(log, (Log{"c maxFlaps", "a maxFlaps", "b maxFlaps"}));

  log.clear();
  c->isRegisteredNotifieeIs(false);
  c->isRegisteredNotifieeIs(true);
  config->maxFlapsIs(2);
  EXPECT_EQ(log, (Log{"a maxFlaps", "b maxFlaps", "c maxFlaps"}));
}

TEST_F(Notifiee, IsOfferedOnlyTheAttributesItWatches) {
  auto const onFlaps = watch(config, "flaps", log, kMaxFlaps);
  auto const onInterval = watch(config, "interval", log, kInterval);
  auto const onBoth = watch(config, "both", log, kMaxFlaps | kInterval);

  config->maxFlapsIs(1);
  EXPECT_EQ(log, (Log{"flaps maxFlaps", "both maxFlaps"}));
  log.clear();
  config->intervalIs(1);
  EXPECT_EQ(log, (Log{"interval interval", "both interval"}));
  log.clear();
  config->defaultProfileListIs("strict", true);
  EXPECT_EQ(log, Log{});
}

// As long as all watch the same, they stand in no group.
TEST_F(Notifiee, OfTheOnlyKindIsOfferedOnlyTheAttributesItWatches) {
  auto const a = watch(config, "a", log, kInterval | kDefaultProfileList);
  auto const b = watch(config, "b", log, kInterval | kDefaultProfileList);
  config->maxFlapsIs(1);
  config->newProfileConfig("strict");
  EXPECT_EQ(log, Log{});
  config->intervalIs(1);
  EXPECT_EQ(log, (Log{"a interval", "b interval"}));
}

TEST_F(Notifiee, HearsTheImmediateHookAndThenTheKey) {
  auto const watcher = watch(config, "a", log, kDefaultProfileList);
  config->defaultProfileListIs("strict", true);
  config->defaultProfileListDel("strict");
  EXPECT_EQ(log, (Log{"a defaultProfileList!", "a defaultProfileList[strict]",
                      "a defaultProfileList!", "a defaultProfileList[strict]"}));
}

TEST_F(Notifiee, SeesTheNewValueWhenItIsTold) {
  auto const watcher = watch(config, "a", log);
  unsigned seen = 0;
  watcher->then = [&] { seen = config->maxFlaps(); };
  config->maxFlapsIs(12);
  EXPECT_EQ(seen, 12U);
}

TEST_F(Notifiee, GroupsAreKnownToHaveWatchers) {
  EXPECT_FALSE(config->hasNotifiees());
  auto first = watch(config, "a", log, kMaxFlaps);
  auto second = watch(config, "b", log, kInterval);
  first = nullptr;
  EXPECT_TRUE(config->hasNotifiees());
  second = nullptr;
  EXPECT_FALSE(config->hasNotifiees());
}

TEST_F(Notifiee, EveryKindOfWatcherIsToldAlone) {
  std::vector<Ptr<ConfigWatcher>> watchers;
  for (unsigned mask = 1; mask <= 300; ++mask)
    watchers.push_back(
        watch(config, std::to_string(mask), log, static_cast<Vek::AttributeMask>(mask)));
  // The bit of maxFlaps is 4 (260 modulo 16), that of interval 5: 144 and 141 of 1 to 300 have it.
  config->maxFlapsIs(1);
  EXPECT_EQ(log.size(), 144U);
  log.clear();
  config->intervalIs(1);
  EXPECT_EQ(log.size(), 141U);
}

// A change of one attribute makes no call at all on the watchers of another: a thousand watchers
// that would log whatever they are called for stay silent.
TEST_F(Notifiee, ThousandWatchersOfOtherAttributesCostNoCall) {
  std::vector<Ptr<ConfigWatcher>> others;
  for (int i = 0; i < 1000; ++i)
    others.push_back(watch(config, "other", log, kInterval | kDefaultProfileList));
  auto const one = watch(config, "one", log, kMaxFlaps);
  config->maxFlapsIs(1);
  EXPECT_EQ(log, (Log{"one maxFlaps"}));
}

TEST_F(Notifiee, HandleZeroRefRunsTheWatchersHook) {
  class Hooked : public ConfigWatcher {
   public:
    using ConfigWatcher::ConfigWatcher;
    int hooks{0};
    void onZeroReferences() override { ++hooks; }
  };
  auto const watcher = make<Hooked>("a", log);
  watcher->handleZeroRef();
  EXPECT_EQ(watcher->hooks, 1);
}

/// A watcher that stands on a page of memory of its own.
class PagedWatcher : public ConfigWatcher {
 public:
  using ConfigWatcher::ConfigWatcher;

  static void* operator new(std::size_t /*size*/) {
    void* const page =
        mmap(nullptr, pageSize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) throw std::bad_alloc{};
    return page;
  }
  static void operator delete(void* page, std::size_t /*size*/) noexcept {
    munmap(page, pageSize());
  }
  /// Whether the watcher can be touched; if not, touching it ends the process. Static, for a
  /// sanitizer touches the object whose member function is called.
  static void touchableIs(Ptr<PagedWatcher> const& watcher, bool on) {
    mprotect(watcher.get(), pageSize(), on ? PROT_READ | PROT_WRITE : PROT_NONE);
  }

 private:
  static std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }
};

// Constant cost, shown by what is touched instead of by a clock: of a thousand watchers in a row
// all are locked away but the first, the last, and the neighbours of the one that goes and comes.
// Returns the number of watchers that then hear of a change.
std::size_t toldWhileMostWatchersAreLockedAway() {
  Log log;
  Ptr<Config> const config = make<Config>("linkFlap");
  std::vector<Ptr<PagedWatcher>> watchers;
  for (int i = 0; i < 1000; ++i) {
    watchers.push_back(make<PagedWatcher>("w", log));
    watchers.back()->notifierIs(config);
    watchers.back()->isRegisteredNotifieeIs(true);
  }
  for (std::size_t i = 0; i < watchers.size(); ++i)
    if (i != 0 && i != 999 && (i < 499 || i > 501)) PagedWatcher::touchableIs(watchers[i], false);

  watchers[500]->isRegisteredNotifieeIs(false);  // from between its neighbours
  watchers[500]->isRegisteredNotifieeIs(true);   // to behind the last
  watchers[500]->isRegisteredNotifieeIs(false);  // from the end
  watchers[500]->notifierIs(nullptr);

  for (auto const& watcher : watchers)
    PagedWatcher::touchableIs(watcher, true);
  config->maxFlapsIs(1);
  return log.size();
}

TEST(NotifieeDeathTest, RegisteringAndDeregisteringTouchesNeighboursOnly) {
  EXPECT_EXIT(std::_Exit(toldWhileMostWatchersAreLockedAway() == 999 ? 0 : 1),
              testing::ExitedWithCode(0), "");
}

TEST(NotifieeDeathTest, RegisteringAWatcherOfNothingEndsTheProcess) {
  Log log;
  Ptr<Config> const config = make<Config>("linkFlap");
  EXPECT_EXIT((void)watch(config, "a", log, 0), testing::KilledBySignal(SIGABRT),
              "^Vek: a watcher of nothing was registered\n$");
}

/// An object whose two attributes have the lowest and the highest bit.
class Outermost final : public Vek::State<Outermost> {
 public:
  class NotifieeConst : public Vek::NotifieeOf<Outermost> {
   public:
    virtual void onLowest() { ++lowest; }
    virtual void onHighest() { ++highest; }

    explicit NotifieeConst(Vek::AttributeMask watching) : NotifieeOf{watching} {}

    int lowest{0};
    int highest{0};
  };

 private:
  unsigned lowest_{0};
  unsigned highest_{0};
  using N = NotifieeConst;

 public:
  static constexpr Vek::Scalar lowestAttr{272, "lowest", &Outermost::lowest_, &N::onLowest};
  static constexpr Vek::Scalar highestAttr{287, "highest", &Outermost::highest_, &N::onHighest};
  static constexpr std::tuple vekAttributes{lowestAttr, highestAttr};

  void lowestIs(unsigned value) { set<lowestAttr>(value); }
  void highestIs(unsigned value) { set<highestAttr>(value); }
};

TEST(NotifieeBits, ReachFromTheFirstToTheLastInOneListAndInGroups) {
  auto const object = make<Outermost>();
  auto const watching = [&](Vek::AttributeMask mask) {
    auto watcher = make<Outermost::NotifieeConst>(mask);
    watcher->notifierIs(object);
    watcher->isRegisteredNotifieeIs(true);
    return watcher;
  };
  auto const lowest = watching(0x0001);
  object->highestIs(1);
  object->lowestIs(1);
  EXPECT_EQ(lowest->lowest, 1);
  auto const highest = watching(0x8000);
  object->lowestIs(2);
  object->highestIs(2);
  EXPECT_EQ(lowest->lowest, 2);
  EXPECT_EQ(lowest->highest, 0);
  EXPECT_EQ(highest->highest, 1);
  EXPECT_EQ(highest->lowest, 0);
}

}  // namespace
