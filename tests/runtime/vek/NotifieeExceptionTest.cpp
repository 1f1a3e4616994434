// An exception that leaves a notification: the others hear all the same, whoever made the change
// does not see it, and it is reported with the attribute and the watcher's class.

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "runtime/model/LinkFlapConfig.h"
#include "runtime/vek/Exception.h"
#include "runtime/vek/Notifiee.h"

#include "tests/runtime/support/ConfigWatcher.h"
#include "tests/runtime/support/FailureLog.h"

namespace {

using LinkFlap::Config;
using RuntimeTest::ConfigWatcher;
using RuntimeTest::FailureLog;
using RuntimeTest::kMaxFlaps;
using RuntimeTest::Log;
using RuntimeTest::watch;
using Vek::make;
using Vek::Ptr;

[[noreturn]] void fail() {
  throw std::runtime_error{"no"};
}

class NotifieeException : public testing::Test {
 protected:
  Ptr<Config> config = make<Config>("linkFlap");
  Log log;
  FailureLog failures;
  Ptr<ConfigWatcher> a = watch(config, "a", log);
  Ptr<ConfigWatcher> b = watch(config, "b", log);
  Ptr<ConfigWatcher> c = watch(config, "c", log);
  Ptr<ConfigWatcher> ofAnotherKind = watch(config, "d", log, kMaxFlaps);

  Log const allFour{"a maxFlaps", "b maxFlaps", "c maxFlaps", "d maxFlaps"};
};

TEST_F(NotifieeException, StopsNoOtherWatcherAndIsReported) {
  b->then = fail;
  EXPECT_NO_THROW(config->maxFlapsIs(1));
  EXPECT_EQ(log, allFour);
  EXPECT_EQ(failures.lines(), (Log{"maxFlaps (260) of RuntimeTest::ConfigWatcher: no"}));
  EXPECT_EQ(config->maxFlaps(), 1U) << "the change stands";

  config->maxFlapsIs(2);
  EXPECT_EQ(log.size(), 8U) << "the watcher is told again next time";
}

TEST_F(NotifieeException, OfEveryWatcherIsReportedForItself) {
  for (auto const& watcher : {a, b, c, ofAnotherKind})
    watcher->then = fail;
  config->maxFlapsIs(1);
  EXPECT_EQ(log, allFour);
  EXPECT_EQ(failures.lines().size(), 4U);
}

TEST_F(NotifieeException, NeedNotBeAStandardOne) {
  b->then = [] { throw 7; };
  config->maxFlapsIs(1);
  EXPECT_EQ(log, allFour);
  EXPECT_EQ(failures.lines(),
            (Log{"maxFlaps (260) of RuntimeTest::ConfigWatcher: not a std::exception"}));
}

TEST_F(NotifieeException, OfAKeyedNotificationNamesItsAttribute) {
  b->then = fail;
  config->defaultProfileListIs("strict", true);
  config->profileConfigIs("strict", nullptr);
  EXPECT_EQ(failures.lines(), (Log{"defaultProfileList (264) of RuntimeTest::ConfigWatcher: no",
                                   "profileConfig (263) of RuntimeTest::ConfigWatcher: no"}));
}

TEST_F(NotifieeException, OfAnImmediateHookIsReportedAndTheOthersHear) {
  b->thenAtOnce = fail;
  config->defaultProfileListIs("strict", true);
  EXPECT_EQ(failures.lines(), (Log{"defaultProfileList (264) of RuntimeTest::ConfigWatcher: no"}));
  EXPECT_EQ(log.back(), "c defaultProfileList[strict]");
}

TEST_F(NotifieeException, OfAWatcherThatHasDestroyedItself) {
  b->then = [this] {
    b = nullptr;
    fail();
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(log, allFour);
  EXPECT_EQ(failures.lines(), (Log{"maxFlaps (260) of RuntimeTest::ConfigWatcher: no"}));
}

TEST_F(NotifieeException, OfAWatcherThatHasMovedToAnotherObject) {
  auto const other = make<Config>("other");
  b->then = [&] {
    b->notifierIs(other);
    fail();
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(log, allFour);
  EXPECT_EQ(failures.lines(), (Log{"maxFlaps (260) of RuntimeTest::ConfigWatcher: no"}));
}

// The object is gone by then; who reads the report still has to be told which attribute it was.
TEST_F(NotifieeException, OfAWatcherThatHasDroppedTheObject) {
  b->then = [this] {
    a = b = c = ofAnotherKind = nullptr;
    config = nullptr;
    fail();
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(log, (Log{"a maxFlaps", "b maxFlaps"}));
  EXPECT_EQ(failures.lines(), (Log{"maxFlaps (260) of RuntimeTest::ConfigWatcher: no"}));
}

TEST_F(NotifieeException, OfAWatcherThatOutlivesTheObject) {
  b->then = [this] {
    for (auto const& watcher : {a, b, c, ofAnotherKind})
      watcher->notifierIs(nullptr);
    config = nullptr;
    fail();
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(log, (Log{"a maxFlaps", "b maxFlaps"}));
  EXPECT_EQ(failures.lines(), (Log{"maxFlaps (260) of RuntimeTest::ConfigWatcher: no"}));
}

TEST_F(NotifieeException, InANestedChangeIsReportedThere) {
  a->then = [this] {
    if (config->maxFlaps() == 1) config->maxFlapsIs(2);
  };
  c->then = [this] {
    if (config->interval() != 7) {
      config->intervalIs(7);
      fail();
    }
  };
  b->then = [this] {
    if (config->interval() == 7) fail();
  };
  config->maxFlapsIs(1);
  // Inside of a's: b, c, and inside of c's the interval: b throws there; c throws; then b again.
  EXPECT_EQ(failures.lines(), (Log{"interval (261) of RuntimeTest::ConfigWatcher: no",
                                   "maxFlaps (260) of RuntimeTest::ConfigWatcher: no",
                                   "maxFlaps (260) of RuntimeTest::ConfigWatcher: no"}));
}

TEST_F(NotifieeException, ThatIsExpectedIsNotReported) {
  b->then = [] { Vek::throwRangeException("expected"); };
  {
    Vek::Expect const scope{Vek::kRangeException};
    config->maxFlapsIs(1);
  }
  EXPECT_EQ(log, allFour);
  EXPECT_TRUE(failures.lines().empty());
  config->maxFlapsIs(2);
  EXPECT_EQ(failures.lines(), (Log{"maxFlaps (260) of RuntimeTest::ConfigWatcher: expected"}));
}

/// A watcher that is asked what to do about its own exceptions.
class Handling : public ConfigWatcher {
 public:
  using ConfigWatcher::ConfigWatcher;
  std::function<void(Vek::AttributeId)> handle;
  void onNotificationException(Vek::AttributeId id) override {
    auto const run = handle;
    run(id);
  }
};

class NotifieeExceptionHandling : public NotifieeException {
 protected:
  NotifieeExceptionHandling() {
    watcher->notifierIs(config);
    watcher->isRegisteredNotifieeIs(true);
    watcher->then = fail;
  }
  Ptr<Handling> watcher = make<Handling>("h", log);
};

TEST_F(NotifieeExceptionHandling, IsTheWatchersFirst) {
  std::string message;
  watcher->handle = [&](Vek::AttributeId id) {
    EXPECT_EQ(id, 260U);
    try {
      throw;
    } catch (std::exception const& exception) {
      message = exception.what();
    }
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(message, "no");
  EXPECT_TRUE(failures.lines().empty());
}

TEST_F(NotifieeExceptionHandling, MayThrowItself) {
  watcher->handle = [](Vek::AttributeId) { throw std::runtime_error{"worse"}; };
  auto const last = watch(config, "last", log);
  EXPECT_NO_THROW(config->maxFlapsIs(1));
  EXPECT_EQ(log.size(), 6U);
  EXPECT_EQ(failures.lines(),
            (Log{"in onNotificationException (260) of (anonymous namespace)::Handling: worse"}));
}

TEST_F(NotifieeExceptionHandling, MayDestroyTheWatcher) {
  watcher->handle = [this](Vek::AttributeId) { watcher = nullptr; };
  auto const last = watch(config, "last", log);
  config->maxFlapsIs(1);
  EXPECT_EQ(log.size(), 6U);
  EXPECT_FALSE(watcher);
}

TEST_F(NotifieeExceptionHandling, MayDestroyTheWatcherAndThrow) {
  watcher->handle = [this](Vek::AttributeId) {
    watcher = nullptr;
    throw std::runtime_error{"worse"};
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(failures.lines(),
            (Log{"in onNotificationException (260) of (anonymous namespace)::Handling: worse"}));
}

TEST_F(NotifieeExceptionHandling, MayDropTheObject) {
  watcher->handle = [this](Vek::AttributeId) {
    a = b = c = ofAnotherKind = nullptr;
    watcher = nullptr;
    config = nullptr;
  };
  config->maxFlapsIs(1);
  EXPECT_EQ(log.size(), 4U) << "the watcher of another kind would have come after it";
}

class WithoutOverrides final : public LinkFlap::Config::NotifieeConst {
  ~WithoutOverrides() override = default;
};

TEST(NotifieeWithoutANotifier, ReportsWithoutTheNameOfAnAttribute) {
  RuntimeTest::FailureLog failures;
  auto const watcher = Vek::make<WithoutOverrides>();
  try {
    throw std::runtime_error{"broken"};
  } catch (...) {
    watcher->handleNotificationException(260);
  }
  ASSERT_EQ(failures.lines().size(), 1U);
  EXPECT_EQ(failures.lines()[0].substr(0, 9), " (260) of");
  EXPECT_EQ(failures.lines()[0].substr(failures.lines()[0].size() - 8), ": broken");
}

}  // namespace
