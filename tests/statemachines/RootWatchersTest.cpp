#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/vek/Exception.h"

#include "statemachines/LinkFlapSm.h"

#include "tests/statemachines/Watchers.h"
#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Keeps what the runtime does by default when a callback throws.
class PlainWatcher final : public LinkFlap::Root::NotifieeConst {
 public:
  void onLinkFlapSm() override { Vek::throwRangeException("no room"); }
};

TEST(RootWatchers, OneThatThrowsHearsOfItUnderTheMemberAndTheOthersAreStillTold) {
  Switch sw;
  int told = 0;
  auto const before = RootWatcher::on(sw.root, [&] { ++told; });
  auto const thrower = RootWatcher::on(sw.root, [] { throw std::runtime_error{"no"}; });
  auto const after = RootWatcher::on(sw.root, [&] { ++told; });

  EXPECT_NO_THROW(sw.start());
  EXPECT_EQ(told, 2);
  EXPECT_THAT(thrower->exceptions, ElementsAre(258U));
  EXPECT_THAT(before->exceptions, IsEmpty());
  EXPECT_THAT(after->exceptions, IsEmpty());

  EXPECT_NO_THROW((void)sw.root->linkFlapSmDel());
  EXPECT_EQ(told, 4);
  EXPECT_THAT(thrower->exceptions, ElementsAre(258U, 258U));
}

TEST(RootWatchers, OneThatThrowsAnythingAtAllIsContained) {
  Switch sw;
  auto const thrower = RootWatcher::on(sw.root, [] { throw 7; });
  EXPECT_NO_THROW(sw.start());
  EXPECT_THAT(thrower->exceptions, ElementsAre(258U));
}

TEST(RootWatchers, WithoutAnOverrideAFailureIsReportedWithAttributeAndClass) {
  Switch sw;
  auto const watcher = Vek::make<PlainWatcher>();
  watcher->notifierIs(sw.root);
  watcher->isRegisteredNotifieeIs(true);
  sw.start();
  auto const failures = sw.takeFailures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].attribute, 258U);
  EXPECT_EQ(failures[0].attributeName, "linkFlapSm");
  EXPECT_THAT(failures[0].watcher, HasSubstr("PlainWatcher"));
  EXPECT_EQ(failures[0].message, "no room");
  watcher->isRegisteredNotifieeIs(false);
}

// The guard declares that no exception is expected, whatever the caller of linkFlapSmIs expects.
TEST(RootWatchers, AreCalledUnderAGuardThatExpectsNoException) {
  Switch sw;
  Vek::Exception::IdBitArray range;
  range.add(Vek::kRangeException);
  bool expectedInside = true;
  auto const watcher =
      RootWatcher::on(sw.root, [&] { expectedInside = Vek::Expect::expected(range); });
  Vek::Expect const outer{Vek::kRangeException};
  sw.start();
  EXPECT_FALSE(expectedInside);
  EXPECT_TRUE(Vek::Expect::expected(range));
}

// So the report of a failure inside is not held back by what the caller expects either.
TEST(RootWatchers, FailuresAreReportedAlsoWhenTheCallerExpectsSuchAnException) {
  Switch sw;
  auto const watcher = Vek::make<PlainWatcher>();
  watcher->notifierIs(sw.root);
  watcher->isRegisteredNotifieeIs(true);
  Vek::Expect const outer{Vek::kRangeException};
  sw.start();
  EXPECT_EQ(sw.takeFailures().size(), 1U);
  watcher->isRegisteredNotifieeIs(false);
}

TEST(RootWatchers, OneRegisteredDuringTheCallIsToldOnlyOfTheNext) {
  Switch sw;
  int late = 0;
  Vek::Ptr<RootWatcher> latecomer;
  auto const first = RootWatcher::on(sw.root, [&] {
    if (!latecomer) latecomer = RootWatcher::on(sw.root, [&] { ++late; });
  });
  sw.start();
  EXPECT_EQ(late, 0);
  (void)sw.root->linkFlapSmDel();
  EXPECT_EQ(late, 1);
}

TEST(RootWatchers, OneThatLeavesBeforeItsTurnIsNotToldAndNoOtherIsSkipped) {
  Switch sw;
  int second = 0;
  int third = 0;
  Vek::Ptr<RootWatcher> leaving;
  auto const first = RootWatcher::on(sw.root, [&] { leaving->isRegisteredNotifieeIs(false); });
  leaving = RootWatcher::on(sw.root, [&] { ++second; });
  auto const last = RootWatcher::on(sw.root, [&] { ++third; });
  sw.start();
  EXPECT_EQ(second, 0);
  EXPECT_EQ(third, 1);
}

TEST(RootWatchers, OneThatOnlyTheWalkStillHoldsIsReleasedBeforeTheNextIsTold) {
  Switch sw;
  std::vector<std::string> log;
  Vek::Ptr<RootWatcher> first = RootWatcher::on(sw.root, [&] {
    first = nullptr;
    log.emplace_back("first told");
  });
  first->destroyed = [&] { log.emplace_back("first gone"); };
  auto const second = RootWatcher::on(sw.root, [&] { log.emplace_back("second told"); });
  sw.start();
  EXPECT_THAT(log, ElementsAre("first told", "first gone", "second told"));
}

TEST(RootWatchers, OneThatDropsItselfAndThrowsIsStillTheOneThatHearsOfIt) {
  Switch sw;
  bool heard = false;
  Vek::Ptr<RootWatcher> watcher = RootWatcher::on(sw.root, [&] {
    RootWatcher* const self = watcher.get();
    self->destroyed = [&heard, self] { heard = self->exceptions == std::vector{258U}; };
    watcher = nullptr;
    throw std::runtime_error{"no"};
  });
  sw.start();
  EXPECT_TRUE(heard);
}

TEST(RootWatchers, CanBeAttachedToARootOnly) {
  Switch sw;
  auto const watcher = Vek::make<RootWatcher>();
  EXPECT_THROW(watcher->notifierIs(sw.config), Vek::TypeException);
  EXPECT_FALSE(watcher->notifier());
  watcher->notifierIs(sw.root);
  EXPECT_EQ(watcher->notifier(), sw.root);
  EXPECT_EQ(watcher->name(), Vek::Name{"switch"});
  watcher->notifierIs(nullptr);
  EXPECT_FALSE(watcher->notifier());
}

TEST(RootWatchers, DoNotKeepTheRootAlive) {
  Switch sw;
  auto const watcher = RootWatcher::on(sw.root, [] {});
  EXPECT_EQ(sw.root->referenceCount(), 1U);
}

TEST(RootWatchers, HearNoMoreOnceDetached) {
  Switch sw;
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
  watcher->notifierIs(nullptr);
  sw.start();
  EXPECT_EQ(told, 0);
}

/// A watcher that may modify the Root.
class Owner final : public LinkFlap::Root::Notifiee {
 public:
  void onLinkFlapSm() override {
    if (watched()->linkFlapSm()) (void)watched()->linkFlapSmDel();
  }
};

TEST(RootWatchers, OfTheModifyingKindReachTheRootItself) {
  Switch sw;
  auto const owner = Vek::make<Owner>();
  owner->notifierIs(sw.root);
  owner->isRegisteredNotifieeIs(true);
  sw.start();
  EXPECT_FALSE(sw.root->linkFlapSm());
  owner->isRegisteredNotifieeIs(false);
}

TEST(RootZeroReferences, TellsEachWatcherAndContainsOneThatThrows) {
  Switch sw;
  int told = 0;
  auto const before = RootWatcher::on(sw.root, {});
  auto const thrower = RootWatcher::on(sw.root, {});
  auto const after = RootWatcher::on(sw.root, {});
  before->zeroReferences = [&] { ++told; };
  thrower->zeroReferences = [] { throw std::runtime_error{"no"}; };
  after->zeroReferences = [&] { ++told; };

  // The argument does not matter.
  EXPECT_NO_THROW(sw.root->zeroReferencesIs(false));
  EXPECT_EQ(told, 2);
  EXPECT_THAT(thrower->exceptions, ElementsAre(5U));
  EXPECT_NO_THROW(sw.root->zeroReferencesIs(true));
  EXPECT_EQ(told, 4);
  EXPECT_THAT(thrower->exceptions, ElementsAre(5U, 5U));
}

TEST(RootZeroReferences, DoesNothingWithoutWatchers) {
  Switch sw;
  sw.start();
  EXPECT_NO_THROW(sw.root->zeroReferencesIs(true));
  EXPECT_TRUE(sw.root->linkFlapSm());
  EXPECT_EQ(sw.root->changes(), 1U);
}

TEST(RootDestruction, TellsZeroReferencesThenTheLossOfTheMachineThenNothing) {
  Switch sw;
  std::vector<std::string> log;
  sw.start();
  auto const watcher = RootWatcher::on(sw.root, {});
  watcher->zeroReferences = [&] { log.emplace_back("zero references"); };
  watcher->told = [&] {
    auto const root = Vek::staticPtrCast<LinkFlap::Root const>(watcher->notifier());
    log.emplace_back(root->linkFlapSm() ? "set" : "cleared");
  };
  sw.root = nullptr;
  EXPECT_THAT(log, ElementsAre("zero references", "cleared"));
  EXPECT_FALSE(watcher->isRegisteredNotifiee());
  EXPECT_FALSE(watcher->notifier());
  EXPECT_FALSE(sw.config->hasNotifiees());
}

TEST(RootDestruction, WithoutAMachineTellsOfZeroReferencesAlone) {
  std::vector<std::string> log;
  auto root = LinkFlap::rootFactory("flaps");
  auto const watcher = RootWatcher::on(root, [&] { log.emplace_back("told"); });
  watcher->zeroReferences = [&] { log.emplace_back("zero references"); };
  root = nullptr;
  EXPECT_THAT(log, ElementsAre("zero references"));
}

TEST(RootDestruction, IsPutOffByAWatcherThatTakesTheRootBack) {
  Switch sw;
  sw.start();
  LinkFlap::Root::Ptr kept;
  auto const rescuer = RootWatcher::on(sw.root, {});
  LinkFlap::Root* const raw = sw.root.get();
  rescuer->zeroReferences = [&, raw] { kept = LinkFlap::Root::Ptr{raw}; };
  sw.root = nullptr;
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->referenceCount(), 1U);
  EXPECT_TRUE(kept->linkFlapSm());
  rescuer->zeroReferences = nullptr;
}

TEST(RootWatchers, StayRegisteredWhenTheyAreAttachedToTheRootTheyWatch) {
  Switch sw;
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
  watcher->notifierIs(sw.root);
  EXPECT_TRUE(watcher->isRegisteredNotifiee());
  sw.start();
  EXPECT_EQ(told, 1);
}

TEST(RootWatchers, AreNotRegisteredWithoutARootAndHaveTheNameOfTheirClass) {
  auto const watcher = Vek::make<RootWatcher>();
  watcher->isRegisteredNotifieeIs(true);
  EXPECT_FALSE(watcher->isRegisteredNotifiee());
  EXPECT_EQ(watcher->name().string(), "RootWatcher");
  auto const root = LinkFlap::rootFactory("its root");
  watcher->notifierIs(root);
  EXPECT_EQ(watcher->name().string(), "its root");
}

/// Overrides nothing.
class DeafWatcher final : public LinkFlap::Root::NotifieeConst {};

TEST(RootWatchers, NeedNotOverrideAnything) {
  Switch sw;
  auto const deaf = Vek::make<DeafWatcher>();
  deaf->notifierIs(sw.root);
  deaf->isRegisteredNotifieeIs(true);
  int told = 0;
  int zero = 0;
  auto const next = RootWatcher::on(sw.root, [&] { ++told; });
  next->zeroReferences = [&] { ++zero; };
  sw.start();
  EXPECT_EQ(told, 1);
  sw.root = nullptr;
  EXPECT_EQ(told, 2);
  EXPECT_EQ(zero, 1);
  EXPECT_THAT(sw.takeFailures(), IsEmpty());
}

}  // namespace
