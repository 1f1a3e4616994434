#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "introspection/GenericIfs.h"

#include "tests/introspection/support/Operations.h"
#include "tests/support/Switch.h"

namespace {

using namespace IntrospectionTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A tool's view of a Root that writes down what it is told, then does what the test says.
class ToldView final : public LinkFlap::Root::GenericIf_ {
 public:
  using GenericIf_::GenericIf_;

  void onLinkFlapSm() override {
    told.emplace_back("linkFlapSm");
    if (then) then();
  }
  void onZeroReferences() override {
    told.emplace_back("zeroReferences");
    if (then) then();
  }
  void onNotificationException(Vek::AttributeId id) override {
    told.push_back("exception " + std::to_string(id));
    if (onException) onException();
  }

  std::vector<std::string> told;
  std::function<void()> then;
  std::function<void()> onException;
};

class RootAdapter : public testing::Test {
 protected:
  using Root = LinkFlap::Root;
  using Adapter = Root::GenericIf_::GenericIf_Adapter_;

  Switch sw;
  // Of another Root: a view holds its object, and the Root that is watched must be free to go.
  ToldView view{LinkFlap::rootFactory("another"), false};
  Vek::Ptr<Adapter> adapter{Root::GenericIf_::GenericIf_Adapter_Is(sw.root, &view)};
};

TEST_F(RootAdapter, IsAWatcherOfTheRoot) {
  EXPECT_EQ(adapter->notifier().get(), sw.root.get());
  EXPECT_TRUE(adapter->isRegisteredNotifiee());
  EXPECT_TRUE(adapter->hasNotificationActive());
  EXPECT_EQ(adapter->name(), sw.root->name());
  EXPECT_EQ(adapter->referenceCount(), 1U);
}

TEST_F(RootAdapter, TellsTheViewWhenTheMachineIsSetAndWhenItIsCleared) {
  sw.start();
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm"));
  sw.start();  // the same machine
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm"));
  sw.causeName = "another";
  sw.start();
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm", "linkFlapSm"));
  (void)sw.root->linkFlapSmDel();
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm", "linkFlapSm", "linkFlapSm"));
}

TEST_F(RootAdapter, TellsAlsoOfWhatIsDoneByName) {
  LinkFlap::Root::GenericIf_ tool{sw.root, false};
  sw.start();
  view.told.clear();
  (void)del(tool, "linkFlapSm");
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm"));
}

TEST_F(RootAdapter, OfAReadOnlyViewTellsAsWell) {
  ToldView readOnly{sw.root, true};
  auto const another = Root::GenericIf_::GenericIf_Adapter_Is(sw.root, &readOnly);
  sw.start();
  EXPECT_THAT(readOnly.told, ElementsAre("linkFlapSm"));
}

TEST_F(RootAdapter, TheViewFindsTheMachineWhenItIsTold) {
  ToldView tool{sw.root, true};
  auto const another = Root::GenericIf_::GenericIf_Adapter_Is(sw.root, &tool);
  std::vector<Vek::Value> seen;
  tool.then = [&] { seen.push_back(get(tool, "linkFlapSm")); };
  sw.start();
  Vek::Value const held{sw.root->linkFlapSm()};
  (void)sw.root->linkFlapSmDel();
  EXPECT_THAT(seen, ElementsAre(held, Vek::Value{Vek::Ptr<LinkFlap::LinkFlapSm>{}}));
}

TEST_F(RootAdapter, SwitchedOffTellsNothingUntilItIsSwitchedOn) {
  adapter->hasNotificationActiveIs(false);
  EXPECT_FALSE(adapter->isRegisteredNotifiee());
  sw.start();
  EXPECT_THAT(view.told, IsEmpty());
  adapter->hasNotificationActiveIs(true);
  (void)sw.root->linkFlapSmDel();
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm"));
}

TEST_F(RootAdapter, AZombieTellsNothing) {
  adapter->vekDoZombieReactors(true);
  EXPECT_TRUE(adapter->vekMarkedForDeletion());
  EXPECT_FALSE(adapter->isRegisteredNotifiee());
  sw.start();
  EXPECT_THAT(view.told, IsEmpty());
  adapter->vekDoZombieReactors(true);  // no change
  EXPECT_TRUE(adapter->vekMarkedForDeletion());

  adapter->vekDoZombieReactors(false);
  EXPECT_FALSE(adapter->vekMarkedForDeletion());
  EXPECT_TRUE(adapter->isRegisteredNotifiee());
  (void)sw.root->linkFlapSmDel();
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm"));
}

// Even when a notification reaches it all the same.
TEST_F(RootAdapter, AZombieThatIsCalledTellsNothing) {
  adapter->vekDoZombieReactors(true);
  adapter->onLinkFlapSm();
  adapter->onZeroReferences();
  try {
    throw std::runtime_error{"late"};
  } catch (std::runtime_error const&) {
    adapter->onNotificationException(258);
  }
  EXPECT_THAT(view.told, IsEmpty());
  EXPECT_EQ(sw.takeFailures().size(), 1U);  // but what was thrown is reported
}

// Turning it back is no way to make it watch what it does not watch.
TEST_F(RootAdapter, AZombieOfNoRootCanBeTurnedBack) {
  adapter->notifierIs(nullptr);
  adapter->vekDoZombieReactors(true);
  adapter->vekDoZombieReactors(false);
  EXPECT_FALSE(adapter->vekMarkedForDeletion());
  EXPECT_FALSE(adapter->isRegisteredNotifiee());
}

TEST_F(RootAdapter, TellsThatTheRootGoesAndThenThatItsMachineDoes) {
  sw.start();
  view.told.clear();
  sw.root = nullptr;
  EXPECT_THAT(view.told, ElementsAre("zeroReferences", "linkFlapSm"));
  EXPECT_FALSE(adapter->notifier());
  EXPECT_FALSE(adapter->isRegisteredNotifiee());
}

TEST_F(RootAdapter, DoesNotKeepTheRootAlive) {
  EXPECT_EQ(sw.root->referenceCount(), 1U);
}

TEST_F(RootAdapter, ThatIsDroppedIsNoLongerToldAndLeavesNothingBehind) {
  adapter = nullptr;
  sw.start();
  EXPECT_THAT(view.told, IsEmpty());
}

TEST_F(RootAdapter, MayBeDroppedByTheViewItTells) {
  view.then = [this] { adapter = nullptr; };
  sw.start();
  (void)sw.root->linkFlapSmDel();
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm"));
}

// The number of the attribute, 258, or 5 for the loss of the last reference.
TEST_F(RootAdapter, AViewThatThrowsHearsOfItAndTheFailureIsReported) {
  view.then = [] { Vek::throwRangeException("no room"); };
  EXPECT_NO_THROW(sw.start());
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm", "exception 258"));
  auto failures = sw.takeFailures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].attribute, 258U);
  EXPECT_EQ(failures[0].attributeName, "linkFlapSm");
  EXPECT_THAT(failures[0].watcher, HasSubstr("GenericIf_Adapter_"));
  EXPECT_EQ(failures[0].message, "no room");

  (void)sw.root->linkFlapSmDel();
  view.told.clear();
  (void)sw.takeFailures();
  sw.root = nullptr;
  EXPECT_THAT(view.told, ElementsAre("zeroReferences", "exception 5"));
  failures = sw.takeFailures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].attribute, 5U);
}

TEST_F(RootAdapter, AViewThatThrowsDoesNotKeepOthersFromHearing) {
  ToldView second{LinkFlap::rootFactory("another"), false};
  auto const another = Root::GenericIf_::GenericIf_Adapter_Is(sw.root, &second);
  view.then = [] { throw 7; };
  sw.start();
  EXPECT_THAT(second.told, ElementsAre("linkFlapSm"));
  EXPECT_EQ(sw.takeFailures().size(), 1U);
}

TEST_F(RootAdapter, AViewThatThrowsAgainIsContained) {
  view.then = [] { Vek::throwRangeException("no room"); };
  view.onException = [] { Vek::throwRangeException("still no room"); };
  EXPECT_NO_THROW(sw.start());
  auto const failures = sw.takeFailures();
  ASSERT_EQ(failures.size(), 2U);
  EXPECT_EQ(failures[0].message, "no room");
  EXPECT_EQ(failures[1].message, "still no room");
  EXPECT_EQ(failures[1].attributeName, "in onNotificationException");
}

TEST_F(RootAdapter, CanBePointedAtAnotherRoot) {
  auto const other = LinkFlap::rootFactory("other");
  adapter->notifierIs(other);
  adapter->isRegisteredNotifieeIs(true);
  sw.start();
  EXPECT_THAT(view.told, IsEmpty());
  LinkFlap::Root::GenericIf_ tool{other, false};
  (void)other->linkFlapSmIs(sw.activity, sw.configDir, sw.statusDir, sw.errdisableConfig, sw.config,
                            sw.causeStatus, "link-flap");
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm"));
}

TEST_F(RootAdapter, RefusesToWatchWhatIsNoRoot) {
  EXPECT_EQ(thrownBy([&] { adapter->notifierIs(sw.config); }),
            "Vek::TypeException 3: LinkFlap::Root");
}

// A view that does not override the callbacks is told to no effect.
TEST_F(RootAdapter, APlainViewMayBeTold) {
  LinkFlap::Root::GenericIf_ plain{LinkFlap::rootFactory("another"), true};
  auto const another = Root::GenericIf_::GenericIf_Adapter_Is(sw.root, &plain);
  sw.start();
  sw.root = nullptr;
  EXPECT_THAT(view.told, ElementsAre("linkFlapSm", "zeroReferences", "linkFlapSm"));
}

TEST_F(RootAdapter, APlainViewMayBeToldThatANotificationThrew) {
  LinkFlap::Root::GenericIf_ plain{LinkFlap::rootFactory("another"), true};
  auto const another = Root::GenericIf_::GenericIf_Adapter_Is(sw.root, &plain);
  try {
    throw std::runtime_error{"broken"};
  } catch (...) {
    another->handleNotificationException(258);
  }
  auto const failures = sw.takeFailures();
  ASSERT_EQ(failures.size(), 1U) << "reported, as it is for a view that is interested";
  EXPECT_EQ(failures[0].message, "broken");
  EXPECT_TRUE(another->isRegisteredNotifiee());
}

}  // namespace
