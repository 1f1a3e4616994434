#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "agent/LinkMonitor.h"

#include "tests/agent/support/HealthyPort.h"

namespace {

class LinkMonitorPorts : public HealthyPort {};

using Events = std::vector<std::string>;
using LinkFlapd::Port;
using LinkFlapd::PortChange;

Tarn::IntfId const et1{"et1"};

TEST_F(LinkMonitorPorts, RemovesAPortInTheOppositeOrder) {
  kernel.removes({});
  EXPECT_EQ(kernel.recorder.take(), (Events{"-status et1", "-config et1"}));
  EXPECT_EQ(kernel.monitor.port(et1), nullptr);
  kernel.removes({});
  EXPECT_EQ(kernel.recorder.take(), Events{});
}

TEST_F(LinkMonitorPorts, KeepsAPortThatLeavesABridge) {
  kernel.receive(Wire::message({.count = 12}, {.type = RTM_DELLINK, .family = AF_BRIDGE}));
  kernel.receive(Wire::message({.count = 12}, {.type = RTM_NEWLINK, .family = AF_BRIDGE}));
  EXPECT_EQ(kernel.recorder.take(), Events{});
  EXPECT_NE(kernel.monitor.port(et1), nullptr);
}

TEST_F(LinkMonitorPorts, CountsTheFlapsBeforeARenamingForTheOldName) {
  kernel.says({.name = "uplink", .count = 12});
  EXPECT_EQ(kernel.recorder.take(),
            (Events{"et1 down", "et1 flap", "et1 down", "et1 flap", "-status et1", "-config et1",
                    "+config uplink", "+status uplink"}));
  kernel.says({.name = "uplink", .count = 13});
  EXPECT_EQ(kernel.recorder.take(), (Events{"uplink down", "uplink flap"}));
}

TEST_F(LinkMonitorPorts, CarriesAConfigurationInProgressAcrossARenaming) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = false, .count = 10});
  kernel.says({.name = "uplink", .up = true, .carrier = false, .count = 10});
  kernel.says({.name = "uplink", .up = true, .carrier = true, .count = 11});
  EXPECT_EQ(kernel.recorder.flaps("uplink"), 0U);
}

TEST_F(LinkMonitorPorts, FollowsARenamingIntoAndOutOfThePatterns) {
  Kernel told{{"et*"}};
  told.dumps({{.name = "eth0", .count = 3}, {.index = 4, .name = "port4"}});
  told.says({.name = "lan0", .count = 4});
  told.says({.index = 4, .name = "et4"});
  EXPECT_EQ(told.recorder.take(),
            (Events{"+config eth0", "+status eth0", "eth0 down", "eth0 flap", "-status eth0",
                    "-config eth0", "+config et4", "+status et4"}));
}

TEST_F(LinkMonitorPorts, TakesARecreatedInterfaceForANewOne) {
  kernel.removes({});
  kernel.says({.index = 8, .up = false, .carrier = false, .count = 0});
  EXPECT_EQ(kernel.recorder.take(),
            (Events{"-status et1", "-config et1", "+config et1", "+status et1"}));
  EXPECT_EQ(kernel.monitor.port(et1)->link.index, 8);
  EXPECT_TRUE(inProgress());
}

TEST_F(LinkMonitorPorts, TakesARecreatedInterfaceForANewOneWhenItsEndWasMissed) {
  kernel.says({.index = 8, .count = 90});
  EXPECT_EQ(kernel.recorder.take(),
            (Events{"-status et1", "-config et1", "+config et1", "+status et1"}));
  EXPECT_EQ(flaps(), 0U);
  EXPECT_EQ(kernel.monitor.port(3), nullptr);
}

TEST_F(LinkMonitorPorts, FollowsTwoPortsThatSwapNames) {
  kernel.says({.index = 4, .name = "et2", .count = 20});
  kernel.recorder.take();
  kernel.says({.index = 3, .name = "tmp", .count = 10});
  kernel.says({.index = 4, .name = "et1", .count = 20});
  kernel.says({.index = 3, .name = "et2", .count = 10});
  EXPECT_EQ(kernel.monitor.port(et1)->link.index, 4);
  EXPECT_EQ(kernel.monitor.port(Tarn::IntfId{"et2"})->link.index, 3);
  kernel.says({.index = 4, .name = "et1", .count = 21});
  EXPECT_EQ(flaps(), 1U);
  EXPECT_EQ(kernel.recorder.flaps("et2"), 0U);
}

TEST_F(LinkMonitorPorts, FollowsTwoPortsWhoseSwapOfNamesWasMissed) {
  kernel.says({.index = 4, .name = "et2", .count = 20});
  kernel.feed.overrun();
  kernel.dumps(
      {{.index = 3, .name = "et2", .count = 10}, {.index = 4, .name = "et1", .count = 20}});
  EXPECT_EQ(kernel.monitor.port(et1)->link.index, 4);
  EXPECT_EQ(kernel.monitor.port(Tarn::IntfId{"et2"})->link.index, 3);
  for (std::string const& event : kernel.recorder.take())
    EXPECT_EQ(event.find("WITHOUT"), std::string::npos) << event;
}

/// Writes down what listeners hear.
class Ear final : public LinkFlapd::LinkMonitor::Listener {
 public:
  void portAdded(Port const& port) override { heard.push_back("added " + port.link.name); }
  void portRemoved(Port const& port, std::string const& renamedTo) override {
    heard.push_back("removed " + port.link.name + (renamedTo.empty() ? "" : " now " + renamedTo));
  }
  void portAdminUp(Port const& port) override { heard.push_back("admin up " + port.link.name); }
  void portChanged(Port const& port, PortChange const& change) override {
    if (change.firstCarrier) heard.push_back("first carrier " + port.link.name);
    if (change.flaps > 0) heard.push_back(std::to_string(change.flaps) + " " + port.link.name);
    if (change.wentDown) heard.push_back("down " + port.link.name);
    if (change.adminDown) heard.push_back("admin down " + port.link.name);
  }

  Events heard;
};

TEST_F(LinkMonitorPorts, TellsListenersWhatHappened) {
  Ear ear;
  kernel.monitor.listenerAdd(ear);
  kernel.says({.carrier = false, .count = 10});
  kernel.says({.carrier = true, .count = 12});
  kernel.says({.up = false, .carrier = false, .count = 12});
  kernel.says({.up = true, .carrier = false, .count = 12});
  kernel.says({.up = true, .carrier = true, .count = 13});
  kernel.says({.name = "uplink", .count = 13});
  kernel.removes({.name = "uplink"});
  EXPECT_EQ(ear.heard, (Events{"down et1", "2 et1", "down et1", "admin down et1", "admin up et1",
                               "first carrier et1", "removed et1 now uplink", "added uplink",
                               "removed uplink"}));
}

// What is lost with an overrun: our own shut, and the operator's setting up again.
TEST_F(LinkMonitorPorts, KnowsThatAPortItShutAndFindsUpWasSetUpAgain) {
  Ear ear;
  kernel.monitor.listenerAdd(ear);
  kernel.monitor.portShut(3);
  kernel.feed.overrun();
  kernel.dumps({{.up = true, .carrier = true, .count = 12}});
  EXPECT_EQ(ear.heard, (Events{"admin up et1", "first carrier et1", "1 et1"}));
  EXPECT_EQ(flaps(), 1U);
  kernel.feed.overrun();
  kernel.dumps({{.up = true, .carrier = true, .count = 13}});
  EXPECT_EQ(ear.heard.size(), 4U) << "it is known once and for all";
  EXPECT_EQ(flaps(), 2U);
}

TEST_F(LinkMonitorPorts, ForgetsAShutOnceItIsConfirmed) {
  kernel.monitor.portShut(3);
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.says({.up = true, .carrier = true, .count = 11});
  Ear ear;
  kernel.monitor.listenerAdd(ear);
  kernel.feed.overrun();
  kernel.dumps({{.up = true, .carrier = true, .count = 12}});
  EXPECT_EQ(ear.heard, (Events{"1 et1"}));
}

TEST_F(LinkMonitorPorts, WaitsForNoConfirmationWhenThePortIsDownAlready) {
  kernel.says({.up = false, .carrier = false, .count = 10});
  kernel.monitor.portShut(3);
  kernel.says({.up = true, .carrier = true, .count = 11});
  Ear ear;
  kernel.monitor.listenerAdd(ear);
  kernel.feed.overrun();
  kernel.dumps({{.up = true, .carrier = true, .count = 12}});
  EXPECT_EQ(ear.heard, (Events{"1 et1"}));
}

// A message that was made before the shut shows the port up; so may the rest of a running dump.
TEST_F(LinkMonitorPorts, TakesNoOlderMessageForASettingUpAgain) {
  Ear ear;
  kernel.monitor.listenerAdd(ear);
  kernel.dumpBegins();
  kernel.monitor.portShut(3);
  kernel.says({.up = true, .carrier = true, .count = 11});
  kernel.dumpSays({.up = true, .carrier = true, .count = 12});
  kernel.dumpEnds();
  EXPECT_EQ(ear.heard, (Events{"1 et1", "1 et1"}));
  kernel.says({.up = false, .carrier = false, .count = 12});
  kernel.says({.up = true, .carrier = true, .count = 13});
  EXPECT_EQ(flaps(), 2U);
}

}  // namespace
