#include <cstddef>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// The top-level machine on an activity that defers: one waiting key of an attribute is delivered,
// several become the unkeyed notification, which the machine leaves empty on purpose.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

class DeferringSwitch : public Switch {
 public:
  DeferringSwitch() { activity->deferredIs(true); }

  std::size_t deliver() { return Vek::vekActivitySmFor(activity)->deliver(); }
};

/// One watched attribute of the top-level machine.
struct Attribute {
  char const* name;
  char const* handler;
  std::function<void(Switch&, char const* key)> change;
};

void PrintTo(Attribute const& attribute, std::ostream* out) {
  *out << attribute.name;
}

class DeferredAttribute : public testing::TestWithParam<Attribute> {};

TEST_P(DeferredAttribute, OneChangeWaitsForTheActivityAndIsDeliveredOnce) {
  DeferringSwitch sw;
  sw.start();
  sw.takeTraces();
  GetParam().change(sw, "a");
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  EXPECT_TRUE(Vek::vekActivitySmFor(sw.activity)->pending());
  EXPECT_EQ(sw.deliver(), 1U);
  EXPECT_THAT(sw.takeMessages()[0], "LinkFlapSm::" + std::string{GetParam().handler} + "(a)");
  EXPECT_EQ(sw.deliver(), 0U);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST_P(DeferredAttribute, TwoKeysThatWaitTogetherAreLost) {
  DeferringSwitch sw;
  sw.start();
  sw.takeTraces();
  GetParam().change(sw, "a");
  GetParam().change(sw, "b");
  EXPECT_EQ(sw.deliver(), 1U);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  // The next change stands alone again.
  GetParam().change(sw, "c");
  sw.deliver();
  EXPECT_THAT(sw.takeMessages()[0], "LinkFlapSm::" + std::string{GetParam().handler} + "(c)");
}

INSTANTIATE_TEST_SUITE_P(
    Each, DeferredAttribute,
    testing::Values(
        Attribute{"ConfigDirectory", "handleIntf",
                  [](Switch& sw, char const* key) { sw.addPhyConfig(Tarn::IntfId{key}); }},
        Attribute{"StatusDirectory", "handleIntf",
                  [](Switch& sw, char const* key) { sw.addStatus(Tarn::IntfId{key}); }},
        Attribute{"InterfaceSettings", "handleIntf",
                  [](Switch& sw, char const* key) { sw.settingsIs(Tarn::IntfId{key}, true); }},
        Attribute{
            "ProfileConfig", "handleProfileConfig",
            [](Switch& sw, char const* key) { sw.profileIs(key, {.maxFlaps = 1, .interval = 1}); }},
        Attribute{"DefaultProfileList", "handleDefaultProfileList",
                  [](Switch& sw, char const* key) { sw.config->defaultProfileListIs(key, true); }},
        Attribute{"DisabledCauses", "handleDisabled",
                  [](Switch& sw, char const* key) { sw.errdisableConfig->disabledIs(key, true); }}),
    [](testing::TestParamInfo<Attribute> const& instance) {
      return std::string{instance.param.name};
    });

TEST(DeferredDelivery, RunsTheInitialPassAtOnceAllTheSame) {
  DeferringSwitch sw;
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
}

// Both members of a new interface wait in different reactors, so neither displaces the other.
TEST(DeferredDelivery, KeepsAttributesOfDifferentObjectsApart) {
  DeferringSwitch sw;
  sw.start();
  sw.addInterface(ethernet1);
  EXPECT_EQ(sw.deliver(), 2U);
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
}

TEST(DeferredDelivery, KeepsAttributesOfOneObjectApart) {
  DeferringSwitch sw;
  sw.start();
  sw.takeTraces();
  sw.settingsIs(ethernet1, true);
  sw.profileIs("p1", {.maxFlaps = 1, .interval = 1});
  sw.config->defaultProfileListIs("p1", true);
  EXPECT_EQ(sw.deliver(), 3U);
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
  EXPECT_EQ(sw.traced("handleProfileConfig"), 1U);
  EXPECT_EQ(sw.traced("handleDefaultProfileList"), 1U);
}

TEST(DeferredDelivery, LeavesInterfacesUnadmittedWhoseKeysWereLost) {
  DeferringSwitch sw;
  sw.addPhyConfig(ethernet1);
  sw.addPhyConfig(ethernet2);
  sw.start();
  sw.addStatus(ethernet1);
  sw.addStatus(ethernet2);
  sw.deliver();
  EXPECT_EQ(sw.machine().linkFlapIntfSm().members(), 0U);
}

// The handler reads the state as it is when it runs, not as it was when the change was told.
TEST(DeferredDelivery, ActsOnTheStateAtDelivery) {
  DeferringSwitch sw;
  sw.addPhyConfig(ethernet1);
  sw.start();
  sw.takeTraces();
  sw.addStatus(ethernet1);
  sw.statusDir->intfStatusDel(ethernet1);
  sw.deliver();
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
}

TEST(DeferredDelivery, DoesNothingForAMachineThatHasGone) {
  DeferringSwitch sw;
  sw.start();
  sw.addInterface(ethernet1);
  (void)sw.root->linkFlapSmDel();
  sw.takeTraces();
  EXPECT_EQ(sw.deliver(), 0U);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(DeferredDelivery, DoesNothingForReactorsMarkedForDeletion) {
  DeferringSwitch sw;
  sw.start();
  sw.addInterface(ethernet1);
  sw.machine().vekDoZombieReactors(true);
  sw.takeTraces();
  sw.deliver();
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
}

TEST(DeferredDelivery, ReportsWhatAHandlerThrows) {
  DeferringSwitch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.addStatus(ethernet1);  // another object: the machine's was built from the former one
  sw.deliver();
  auto const failures = sw.takeFailures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].attribute, 386U);
  EXPECT_THAT(failures[0].watcher, HasSubstr("VekEthPhyIntfStatusDir"));
  EXPECT_THAT(failures[0].message, HasSubstr("_ethPhyIntfStatus"));
}

TEST(DeferredDelivery, OfAReplacedActivityIsStillMadeByTheFormerOne) {
  DeferringSwitch sw;
  sw.start();
  auto const former = sw.activity;
  sw.addPhyConfig(ethernet1);
  sw.activity = Vek::make<Vek::ActivityConfig>();
  sw.start();
  sw.takeTraces();
  EXPECT_EQ(sw.deliver(), 0U);
  EXPECT_THAT(sw.takeTraces(), IsEmpty());
  Vek::vekActivitySmFor(former)->deliver();
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
}

TEST(DeferredDelivery, OfOneKeyChangedTwiceIsOne) {
  DeferringSwitch sw;
  sw.start();
  sw.takeTraces();
  sw.addPhyConfig(ethernet1);
  sw.configDir->intfConfigDel(ethernet1);
  EXPECT_EQ(sw.deliver(), 1U);
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
}

TEST(DeferredDelivery, EndsWithAnActivityThatDoesNotDefer) {
  DeferringSwitch sw;
  sw.start();
  sw.addPhyConfig(ethernet1);
  sw.activity = Vek::make<Vek::ActivityConfig>();
  sw.start();
  sw.takeTraces();
  sw.addPhyConfig(ethernet2);
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
  sw.configDir->intfConfigDel(ethernet2);
  EXPECT_EQ(sw.traced("handleIntf"), 2U);
}

TEST(DeferredDelivery, OfAKeyThatWaitsDoesNotHoldBackItsNextChangeOnAnImmediateActivity) {
  DeferringSwitch sw;
  sw.start();
  sw.addPhyConfig(ethernet1);
  sw.activity = Vek::make<Vek::ActivityConfig>();
  sw.start();
  sw.takeTraces();
  sw.configDir->intfConfigDel(ethernet1);
  EXPECT_EQ(sw.traced("handleIntf"), 1U);
}

TEST(DeferredDelivery, OfAKeyThatWaitsIsNotLostToAnotherKeyOnAnImmediateActivity) {
  DeferringSwitch sw;
  sw.start();
  sw.addPhyConfig(ethernet1);
  auto const former = sw.activity;
  sw.activity = Vek::make<Vek::ActivityConfig>();
  sw.start();
  sw.addPhyConfig(ethernet2);
  sw.takeTraces();
  Vek::vekActivitySmFor(former)->deliver();
  EXPECT_EQ(sw.takeMessages()[0], "LinkFlapSm::handleIntf(Ethernet1)");
}

}  // namespace
