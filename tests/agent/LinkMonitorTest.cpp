#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "agent/LinkMonitor.h"

#include "tests/agent/support/HealthyPort.h"

namespace {

class LinkMonitorCounting : public HealthyPort {};

using Events = std::vector<std::string>;

Tarn::IntfId const et1{"et1"};

TEST(LinkMonitorStart, PublishesConfigurationBeforeStatusAndCountsNothingFromBefore) {
  Kernel kernel;
  kernel.dumps({{.count = 4000}});
  EXPECT_EQ(kernel.recorder.take(), (Events{"+config et1", "+status et1"}));
  auto const status = kernel.publisher.statusDir()->intfStatus(et1);
  auto const config = kernel.publisher.configDir()->intfConfig(et1);
  EXPECT_EQ(status->rawLinkStatus(), Interface::RawLinkStatus::up);
  EXPECT_EQ(status->intfId(), et1);
  EXPECT_EQ(config->phyConfigState(), Interface::PhyConfigState::configured);
}

TEST(LinkMonitorStart, TakesAPortThatIsAdministrativelyDownForOneInConfiguration) {
  Kernel kernel;
  kernel.dumps({{.up = false, .carrier = false, .count = 4}});
  EXPECT_EQ(kernel.publisher.configDir()->intfConfig(et1)->phyConfigState(),
            Interface::PhyConfigState::inProgress);
  EXPECT_EQ(kernel.publisher.statusDir()->intfStatus(et1)->rawLinkStatus(),
            Interface::RawLinkStatus::down);
}

// It may have lost carrier a second ago: its return counts.
TEST(LinkMonitorStart, CountsTheReturnOfAPortThatOnceHadCarrier) {
  Kernel kernel;
  kernel.dumps({{.carrier = false, .count = 4}});
  kernel.says({.carrier = true, .count = 5});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 1U);
}

TEST(LinkMonitorStart, DoesNotCountTheVeryFirstCarrierOfAPort) {
  Kernel kernel;
  kernel.dumps({{.carrier = false, .count = 0}});
  kernel.says({.carrier = true, .count = 1});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 0U);
  kernel.says({.carrier = false, .count = 1});
  kernel.says({.carrier = true, .count = 2});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 1U);
}

TEST(LinkMonitorStart, WatchesPhysicalPortsOnlyUnlessTold) {
  Kernel kernel;
  kernel.dumps({{.index = 1, .name = "et1"}, {.index = 2, .name = "v1", .kind = "veth"}});
  EXPECT_EQ(kernel.recorder.take(), (Events{"+config et1", "+status et1"}));
  Kernel told{{"v*"}};
  told.dumps({{.index = 1, .name = "et1"}, {.index = 2, .name = "v1", .kind = "veth"}});
  EXPECT_EQ(told.recorder.take(), (Events{"+config v1", "+status v1"}));
}

TEST_F(LinkMonitorCounting, PublishesALossAndAReturnAsOneFlap) {
  kernel.says({.carrier = false, .count = 10});
  EXPECT_EQ(kernel.recorder.take(), (Events{"et1 down"}));
  kernel.says({.carrier = true, .count = 11});
  EXPECT_EQ(kernel.recorder.take(), (Events{"et1 flap"}));
}

TEST_F(LinkMonitorCounting, PublishesAFlapThatNoMessageShowed) {
  kernel.says({.carrier = true, .count = 11});
  EXPECT_EQ(kernel.recorder.take(), (Events{"et1 down", "et1 flap"}));
}

TEST_F(LinkMonitorCounting, PublishesEveryFlapThatOneMessageMerged) {
  kernel.says({.carrier = true, .count = 13});
  EXPECT_EQ(kernel.recorder.take(),
            (Events{"et1 down", "et1 flap", "et1 down", "et1 flap", "et1 down", "et1 flap"}));
  EXPECT_TRUE(linkUp());
}

TEST_F(LinkMonitorCounting, EndsMergedFlapsInTheStateThatTheMessageTells) {
  kernel.says({.carrier = false, .count = 12});
  EXPECT_EQ(kernel.recorder.take(),
            (Events{"et1 down", "et1 flap", "et1 down", "et1 flap", "et1 down"}));
  kernel.says({.carrier = true, .count = 14});
  EXPECT_EQ(kernel.recorder.take(), (Events{"et1 flap", "et1 down", "et1 flap"}));
}

TEST_F(LinkMonitorCounting, PublishesNothingWhenNothingOfTheLinkChanged) {
  kernel.says({.carrier = true, .count = 10});
  EXPECT_EQ(kernel.recorder.take(), Events{});
}

// The kernel sets carrier before it counts it; a message can be made in between.
TEST_F(LinkMonitorCounting, CountsAReturnOnceWhenItsCountComesLate) {
  kernel.says({.carrier = false, .count = 10});
  kernel.says({.carrier = true, .count = 10});
  EXPECT_EQ(kernel.recorder.take(), (Events{"et1 down", "et1 up"}));
  EXPECT_FALSE(inProgress());
  kernel.says({.carrier = true, .count = 11});
  EXPECT_EQ(flaps(), 1U);
}

TEST_F(LinkMonitorCounting, FollowsTheCounterAcrossItsWrap) {
  Kernel old;
  old.dumps({{.count = 4294967294U}});
  old.says({.count = 4294967295U});
  EXPECT_EQ(old.recorder.flaps("et1"), 1U);
  old.says({.count = 2});
  EXPECT_EQ(old.recorder.flaps("et1"), 4U);
}

TEST_F(LinkMonitorCounting, LeavesOutAMessageWhoseCountStepsBack) {
  kernel.says({.carrier = false, .count = 9});
  EXPECT_EQ(kernel.recorder.take(), Events{});
  kernel.says({.carrier = true, .count = 11});
  EXPECT_EQ(flaps(), 1U);
}

TEST_F(LinkMonitorCounting, CountsWhatItSeesOnAKernelWithoutTheCounter) {
  Kernel old;
  old.dumps({{.count = {}}});
  old.says({.carrier = false, .count = {}});
  old.says({.carrier = true, .count = {}});
  old.says({.carrier = true, .count = {}});
  EXPECT_EQ(old.recorder.flaps("et1"), 1U);
  old.says({.up = false, .carrier = false, .count = {}});
  old.says({.up = true, .carrier = false, .count = {}});
  old.says({.up = true, .carrier = true, .count = {}});
  EXPECT_EQ(old.recorder.flaps("et1"), 1U);
}

TEST_F(LinkMonitorCounting, AnAdministrativeDownAndUpIsNoFlap) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  EXPECT_TRUE(inProgress());
  EXPECT_FALSE(linkUp());
  kernel.says({.up = true, .carrier = false, .count = 10});
  EXPECT_TRUE(inProgress());
  kernel.says({.up = true, .carrier = true, .count = 11});
  EXPECT_FALSE(inProgress());
  EXPECT_TRUE(linkUp());
  EXPECT_EQ(kernel.recorder.take(), (Events{"et1 down", "et1 up"}));
}

// A virtual link has carrier again by the time that its setting up is announced.
TEST_F(LinkMonitorCounting, AnAdministrativeUpThatBringsCarrierWithItIsNoFlap) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = true, .count = 11});
  EXPECT_FALSE(inProgress());
  EXPECT_EQ(flaps(), 0U);
  kernel.says({.carrier = true, .count = 12});
  EXPECT_EQ(flaps(), 1U);
}

// Some drivers keep carrier while the port is down: the counter does not move at all.
TEST_F(LinkMonitorCounting, AnAdministrativeUpWithCarrierKeptIsNoFlapAndEndsTheConfiguration) {
  kernel.says({.up = false, .carrier = true, .count = 10});
  EXPECT_TRUE(inProgress());
  EXPECT_FALSE(linkUp());
  kernel.says({.up = true, .carrier = true, .count = 10});
  EXPECT_FALSE(inProgress());
  EXPECT_TRUE(linkUp());
  EXPECT_EQ(flaps(), 0U);
  kernel.says({.carrier = true, .count = 11});
  EXPECT_EQ(flaps(), 1U);
}

// The kernel announces no carrier while the port is down, but counts it.
TEST_F(LinkMonitorCounting, CarrierGainedWhileAdministrativelyDownIsNoFlap) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.says({.up = false, .carrier = true, .count = 12});
  kernel.says({.up = true, .carrier = true, .count = 16});
  EXPECT_EQ(flaps(), 0U);
  EXPECT_FALSE(inProgress());
}

TEST_F(LinkMonitorCounting, OnlyTheFirstCarrierAfterAnAdministrativeUpIsNoFlap) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = true, .count = 13});
  EXPECT_EQ(flaps(), 2U);
}

TEST_F(LinkMonitorCounting, AFirstCarrierThatCameAndWentEndsTheConfiguration) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = false, .count = 11});
  EXPECT_FALSE(inProgress());
  EXPECT_EQ(kernel.recorder.take(), (Events{"et1 down", "et1 up", "et1 down"}));
  kernel.says({.up = true, .carrier = true, .count = 12});
  EXPECT_EQ(flaps(), 1U);
}

TEST_F(LinkMonitorCounting, FlapsMergedIntoAnAdministrativeDownAreCounted) {
  kernel.says({.up = false, .carrier = false, .count = 12});
  EXPECT_EQ(flaps(), 2U);
  EXPECT_TRUE(inProgress());
  EXPECT_FALSE(linkUp());
}

TEST_F(LinkMonitorCounting, AFirstCarrierMergedIntoAnAdministrativeDownIsNoFlap) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = false, .count = 10});
  kernel.says({.up = false, .carrier = false, .count = 12});
  EXPECT_EQ(flaps(), 1U);
  EXPECT_TRUE(inProgress());
}

}  // namespace
