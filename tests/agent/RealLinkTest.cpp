// The host on links of this machine's kernel. Each test has a network namespace of its own. Where
// the machine permits none, the program says so and ends with status 77.

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <iostream>
#include <nlohmann/json.hpp>
#include <regex.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/agent/support/Daemon.h"
#include "tests/agent/support/Deadline.h"
#include "tests/agent/support/PrivateNetwork.h"
#include "tests/agent/support/Tap.h"

namespace {

using namespace nlohmann::literals;

using namespace std::chrono_literals;
using PrivateNetwork::ip;
using PrivateNetwork::link;

/// A line of the library's trace for each flap that it counted (the interval is long enough that
/// no flap is looked at twice).
std::string const kCounted{"::evaluateErrDisable"};
std::vector<std::string> const kCountOnly{"--interval", "3600",    "--max-flaps",
                                          "4294967295", "--trace", "8"};

std::vector<std::string> command(std::vector<std::string> const& arguments) {
  std::vector<std::string> all{LINKFLAPD_PATH};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}

std::vector<std::string> operator+(std::vector<std::string> first,
                                   std::vector<std::string> const& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// Whether an extended regular expression matches the whole text.
bool matches(std::string const& text, std::string const& expression) {
  regex_t compiled;
  if (::regcomp(&compiled, ("^" + expression + "$").c_str(), REG_EXTENDED | REG_NOSUB) != 0)
    return false;
  bool const result = ::regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
  ::regfree(&compiled);
  return result;
}

class RealLink : public testing::Test {
 protected:
  void SetUp() override { PrivateNetwork::enter(); }

  /// `count` losses and returns of a port's carrier by its far end, evenly paced.
  static void flap(std::string const& farEnd, int count, std::chrono::milliseconds period) {
    auto next = std::chrono::steady_clock::now();
    for (int flap = 0; flap < count; ++flap) {
      ip("link set " + farEnd + " down");
      std::this_thread::sleep_until(next += period / 2);
      ip("link set " + farEnd + " up");
      std::this_thread::sleep_until(next += period / 2);
    }
  }

  /// The same, as fast as the kernel takes it.
  static void storm(std::string const& farEnd, int count) {
    std::ostringstream commands;
    for (int flap = 0; flap < count; ++flap)
      commands << "link set " << farEnd << " down\nlink set " << farEnd << " up\n";
    PrivateNetwork::ipBatch(commands.str());
  }

  /// Ends the host and expects that it counted that many flaps in its life, no fewer and no more.
  static void expectCounted(Daemon& daemon, std::size_t flaps) {
    EXPECT_TRUE(daemon.waitForLines(kCounted, flaps)) << daemon.output();
    daemon.signal(SIGTERM);
    EXPECT_EQ(daemon.wait(), 0);
    EXPECT_EQ(daemon.linesWith(kCounted), flaps) << daemon.output();
  }
};

/// The same with the buffer that the host asks for, and with the least that the kernel grants.
class RealLinkBuffer : public RealLink, public testing::WithParamInterface<char const*> {
 protected:
  static std::vector<std::string> arguments() {
    std::vector<std::string> arguments = kCountOnly;
    if (std::string{GetParam()} == "Minimum")
      arguments = arguments + std::vector<std::string>{"--receive-buffer", "1"};
    return arguments + std::vector<std::string>{"et1"};
  }
};

INSTANTIATE_TEST_SUITE_P(Buffer, RealLinkBuffer, testing::Values("Ample", "Minimum"),
                         [](auto const& parameter) { return std::string{parameter.param}; });

TEST_P(RealLinkBuffer, CountsTwentyFlapsAtTenPerSecondAsTheKernelDoes) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command(arguments())};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  auto const before = link("et1").carrierUpCount;
  flap("far1", 20, 100ms);
  auto const rise = link("et1").carrierUpCount - before;
  EXPECT_EQ(rise, 20U);
  expectCounted(daemon, rise);
}

TEST_P(RealLinkBuffer, CountsThreeFlapsASecondApartAsTheKernelDoes) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command(arguments())};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  auto const before = link("et1").carrierUpCount;
  flap("far1", 3, 1000ms);
  auto const rise = link("et1").carrierUpCount - before;
  EXPECT_EQ(rise, 3U);
  expectCounted(daemon, rise);
}

TEST_P(RealLinkBuffer, CountsAStormAsTheKernelDoes) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command(arguments())};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  auto const before = link("et1").carrierUpCount;
  storm("far1", 300);
  auto const rise = link("et1").carrierUpCount - before;
  EXPECT_EQ(rise, 300U);
  expectCounted(daemon, rise);
}

TEST_F(RealLink, CatchesUpAfterMessagesWereLost) {
  PrivateNetwork::wire("et1", "far1");
  PrivateNetwork::wire("et2", "far2");
  PrivateNetwork::wire("et3", "far3");
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"--receive-buffer", "1", "et*"})};
  ASSERT_NE(daemon.waitFor("ready: 3 ports watched"), "") << daemon.output();
  auto const before = link("et1").carrierUpCount;

  daemon.freeze();
  storm("far1", 50);
  ip("link del et2");
  ip("link set et3 name et4");
  PrivateNetwork::wire("et5", "far5");
  daemon.signal(SIGCONT);

  EXPECT_NE(daemon.waitFor("link messages were lost"), "") << daemon.output();
  EXPECT_TRUE(daemon.waitForLines("et5: watched", 1)) << daemon.output();
  EXPECT_TRUE(daemon.waitForLines("et4: watched", 1)) << daemon.output();
  EXPECT_TRUE(daemon.waitForLines("et2: no longer watched: the interface is gone", 1))
      << daemon.output();
  EXPECT_EQ(daemon.linesWith("et3: no longer watched: the interface is now called et4"), 1U);
  expectCounted(daemon, link("et1").carrierUpCount - before);
}

TEST_F(RealLink, CountsFlapsThatTheKernelMerges) {
  Tap tap{"et1"};
  if (!tap.made()) GTEST_SKIP() << "no tap interfaces here";
  ip("link set et1 up");
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  auto const before = link("et1").carrierUpCount;
  tap.flap(7);
  auto const rise = link("et1").carrierUpCount - before;
  EXPECT_EQ(rise, 7U);
  expectCounted(daemon, rise);
  EXPECT_LT(daemon.linesWith("et1: "), rise) << "nothing was merged\n" << daemon.output();
}

TEST_F(RealLink, CountsNoCarrierGainedWhileAdministrativelyDown) {
  Tap tap{"et1"};
  if (!tap.made()) GTEST_SKIP() << "no tap interfaces here";
  ip("link set et1 up");
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  ip("link set et1 down");
  tap.flap(5);
  ip("link set et1 up");
  EXPECT_NE(daemon.waitFor("et1: link up, first carrier"), "") << daemon.output();
  tap.flap(2);
  expectCounted(daemon, 2);
}

TEST_F(RealLink, CountsNoAdministrativeUp) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  // With carrier at once, and with carrier that comes later.
  PrivateNetwork::ipBatch(
      "link set et1 down\nlink set et1 up\n"
      "link set et1 down\nlink set far1 down\nlink set et1 up\nlink set far1 up\n"
      "link set far1 down\nlink set far1 up\n"
      "link set et1 down\nlink set et1 up\n"
      "link set far1 down\nlink set far1 up\n");
  EXPECT_TRUE(daemon.waitForLines("first carrier since it was set up", 3)) << daemon.output();
  expectCounted(daemon, 2);
}

TEST_F(RealLink, EnforcesAndLetsTheOperatorRecoverThePort) {
  PrivateNetwork::wire("et1", "far1");
  PrivateNetwork::wire("et2", "far2");
  Daemon daemon{command({"--enforce", "--max-flaps", "2", "--interval", "600", "et1", "et2"})};
  ASSERT_NE(daemon.waitFor("ready: 2 ports watched"), "") << daemon.output();
  storm("far2", 2);
  storm("far1", 3);
  std::string const line = daemon.waitFor("err-disabled");
  EXPECT_TRUE(matches(
      line,
      "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3} et1: err-disabled "
      "at monotonic [0-9]+[.][0-9]{6} s by profile default: 3 flaps in an interval of 600 s "
      "[(]2 allowed[)], flaps from [0-9.]+ to [0-9.]+; port shut"))
      << line;
  EXPECT_FALSE(link("et1").adminUp);
  EXPECT_NE(daemon.waitFor("et1: administratively down"), "") << daemon.output();
  EXPECT_TRUE(link("et2").adminUp);
  EXPECT_EQ(daemon.linesWith("et2: err-disabled"), 0U);

  ip("link set et1 up");
  EXPECT_NE(daemon.waitFor("et1: administratively up"), "") << daemon.output();
  EXPECT_NE(daemon.waitFor("et1: err-disable withdrawn"), "") << daemon.output();
  EXPECT_NE(daemon.waitFor("et1: link up, first carrier"), "") << daemon.output();
  storm("far1", 2);
  EXPECT_NE(daemon.waitFor("(carrier up count"), "") << daemon.output();
  EXPECT_TRUE(link("et1").adminUp) << daemon.output();
  storm("far1", 1);
  EXPECT_NE(daemon.waitFor("et1: err-disabled"), "") << daemon.output();
  EXPECT_FALSE(link("et1").adminUp);
  daemon.signal(SIGTERM);
  EXPECT_EQ(daemon.wait(), 0);
}

TEST_F(RealLink, LeavesAPortUpThatItOnlyMonitors) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command({"--max-flaps", "2", "--interval", "600", "et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  storm("far1", 3);
  std::string const line = daemon.waitFor("et1: err-disabled");
  EXPECT_TRUE(line.ends_with("; monitor only: port left up")) << line;
  EXPECT_TRUE(link("et1").adminUp);
  // A history that begins anew: three more flaps make the next record.
  storm("far1", 3);
  EXPECT_NE(daemon.waitFor("et1: err-disabled"), "") << daemon.output();
  daemon.signal(SIGTERM);
  EXPECT_EQ(daemon.wait(), 0);
}

TEST_F(RealLink, EndsOnSignalsAndLeavesPortsAsTheyAre) {
  for (int const signal : {SIGINT, SIGTERM}) {
    PrivateNetwork::wire("et1", "far1");
    PrivateNetwork::wire("et2", "far2");
    Daemon daemon{command({"--enforce", "--max-flaps", "0", "et*"})};
    ASSERT_NE(daemon.waitFor("ready: 2 ports watched"), "") << daemon.output();
    storm("far1", 1);
    ASSERT_NE(daemon.waitFor("port shut"), "") << daemon.output();
    daemon.signal(signal);
    EXPECT_EQ(daemon.wait(), 0);
    EXPECT_TRUE(
        daemon.lines().back().ends_with(std::string{signal == SIGINT ? "SIGINT" : "SIGTERM"} +
                                        ": ending; ports stay as they are; shut by linkflapd: et1"))
        << daemon.output();
    EXPECT_FALSE(link("et1").adminUp);
    EXPECT_TRUE(link("et2").adminUp);
    ip("link del et1");
    ip("link del et2");
  }
}

TEST_F(RealLink, WritesTheTreeOfAllObjectsOnSigusr1AndGoesOn) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  storm("far1", 2);
  ASSERT_TRUE(daemon.waitForLines(kCounted, 2)) << daemon.output();
  daemon.signal(SIGUSR1);
  EXPECT_EQ(daemon.waitFor("(Errdisable::CauseStatus)"), "causeStatus  (Errdisable::CauseStatus)");
  EXPECT_EQ(daemon.waitFor("rawLinkStatus"), "      rawLinkStatus: 1");
  EXPECT_EQ(daemon.waitFor("(LinkFlap::LinkFlapProfileSm)"),
            "          default  (LinkFlap::LinkFlapProfileSm)")
      << daemon.output();
  EXPECT_EQ(daemon.waitFor("intfSm: "),
            "            intfSm: linkflapd/linkFlapSm/linkFlapIntfSm[et1]");
  storm("far1", 1);
  EXPECT_TRUE(daemon.waitForLines(kCounted, 3)) << daemon.output();
  daemon.signal(SIGTERM);
  EXPECT_EQ(daemon.wait(), 0);
}

TEST_F(RealLink, WritesThatTreeAsJson) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command({"--dump-as", "json", "--interval", "600", "et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  storm("far1", 1);
  ASSERT_NE(daemon.waitFor("et1: 1 flap"), "") << daemon.output();
  daemon.signal(SIGUSR1);
  daemon.signal(SIGTERM);
  EXPECT_EQ(daemon.wait(), 0);
  std::string text;
  bool inside = false;
  for (std::string const& line : daemon.lines()) {
    inside = inside || line == "{";
    if (inside) text += line + "\n";
    if (line == "}") break;
  }
  auto const tree = nlohmann::json::parse(text, nullptr, false);
  ASSERT_FALSE(tree.is_discarded()) << daemon.output();
  auto const& machine =
      tree.at("/linkflapd/linkFlapSm/linkFlapIntfSm/et1/linkFlapProfileSm/default"_json_pointer);
  EXPECT_EQ(machine.at("type"), "LinkFlap::LinkFlapProfileSm");
  EXPECT_EQ(machine.at("path"),
            "linkflapd/linkFlapSm/linkFlapIntfSm[et1]/linkFlapProfileSm[default]");
  EXPECT_EQ(machine.at("curFlaps"), 1);
  EXPECT_EQ(machine.at("linkFlapTimeStamp").size(), 1U);
  EXPECT_EQ(machine.at("profileConfig"), nullptr);
  EXPECT_EQ(tree.at("/config/interval"_json_pointer), 600.0);
}

TEST_F(RealLink, SaysThatNoPortIsShutWhenNoneIs) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command({"--enforce", "--max-flaps", "0", "et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  storm("far1", 1);
  ASSERT_NE(daemon.waitFor("port shut"), "") << daemon.output();
  ip("link set et1 up");
  ASSERT_NE(daemon.waitFor("err-disable withdrawn"), "") << daemon.output();
  daemon.signal(SIGTERM);
  EXPECT_EQ(daemon.wait(), 0);
  EXPECT_TRUE(daemon.lines().back().ends_with("none is shut by linkflapd")) << daemon.output();
}

TEST_F(RealLink, FollowsInterfacesThatComeGoAndAreRenamed) {
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"et1", "up*"})};
  EXPECT_NE(daemon.waitFor("no Ethernet interface matches 'et1' yet"), "") << daemon.output();
  ASSERT_NE(daemon.waitFor("ready: 0 ports watched"), "") << daemon.output();
  PrivateNetwork::wire("et1", "far1");
  EXPECT_NE(daemon.waitFor("et1: watched: index"), "") << daemon.output();
  storm("far1", 1);
  EXPECT_TRUE(daemon.waitForLines(kCounted, 1)) << daemon.output();
  ip("link set et1 name uplink");
  EXPECT_NE(daemon.waitFor("uplink: watched"), "") << daemon.output();
  storm("far1", 1);
  EXPECT_TRUE(daemon.waitForLines(kCounted, 2)) << daemon.output();
  ip("link del uplink");
  EXPECT_NE(daemon.waitFor("uplink: no longer watched: the interface is gone"), "")
      << daemon.output();
  PrivateNetwork::wire("uplink", "far1");
  EXPECT_NE(daemon.waitFor("uplink: watched"), "") << daemon.output();
  storm("far1", 1);
  expectCounted(daemon, 3);
}

TEST_F(RealLink, KeepsAPortThatJoinsAndLeavesABridge) {
  PrivateNetwork::wire("et1", "far1");
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"et1"})};
  ASSERT_NE(daemon.waitFor("ready: 1 port watched"), "") << daemon.output();
  try {
    ip("link add name br0 type bridge 2>/dev/null");
  } catch (std::runtime_error const&) {
    GTEST_SKIP() << "no bridges here";
  }
  ip("link set et1 master br0");
  ip("link set et1 nomaster");
  storm("far1", 2);
  expectCounted(daemon, 2);
  EXPECT_EQ(daemon.linesWith("no longer watched"), 0U) << daemon.output();
}

TEST_F(RealLink, KeepsUpWithManyPortsThroughTheSmallestBuffer) {
  std::ostringstream wiring;
  std::ostringstream flaps;
  for (int port = 1; port <= 60; ++port) {
    wiring << "link add name et" << port << " type veth peer name far" << port << "\nlink set far"
           << port << " up\nlink set et" << port << " up\n";
    flaps << "link set far" << port << " down\nlink set far" << port << " up\n";
  }
  PrivateNetwork::ipBatch(wiring.str());
  ASSERT_TRUE(Deadline{}.reaches([] { return link("et60").carrier; }));
  Daemon daemon{command(kCountOnly + std::vector<std::string>{"--receive-buffer", "1", "et*"})};
  ASSERT_NE(daemon.waitFor("ready: 60 ports watched"), "") << daemon.output();
  for (int round = 0; round < 5; ++round)
    PrivateNetwork::ipBatch(flaps.str());
  expectCounted(daemon, 300);
}

TEST_F(RealLink, RefusesToEnforceWithoutThePowerToShutPorts) {
  // A chroot, for one, may make network namespaces but no user namespaces.
  if (Daemon{{"unshare", "--user", "true"}}.wait() != 0) GTEST_SKIP() << "no user namespaces here";
  Daemon daemon{std::vector<std::string>{"unshare", "--user"} + command({"--enforce", "et1"})};
  EXPECT_EQ(daemon.wait(), 1);
  EXPECT_NE(daemon.output().find("linkflapd: cannot shut ports (CAP_NET_ADMIN is needed): "
                                 "Operation not permitted"),
            std::string::npos)
      << daemon.output();
}

TEST_F(RealLink, NamesABadArgument) {
  Daemon daemon{command({"--max-flaps", "many"})};
  EXPECT_EQ(daemon.wait(), 2);
  EXPECT_EQ(daemon.lines().at(0),
            "linkflapd: --max-flaps: 'many' is not a whole number from 0 to 4294967295");
}

TEST_F(RealLink, SaysItsVersionAndItsUsage) {
  Daemon version{command({"--version"})};
  EXPECT_EQ(version.wait(), 0);
  EXPECT_EQ(version.output(), "linkflapd " LINKFLAPD_VERSION "\n");
  Daemon help{command({"--help"})};
  EXPECT_EQ(help.wait(), 0);
  EXPECT_EQ(help.lines().at(0), "usage: linkflapd [OPTION]... [INTERFACE]...");
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  if (auto const why = PrivateNetwork::permit()) {
    std::cout << "skipped, the real links were NOT tested: " << *why << std::endl;
    return 77;
  }
  return RUN_ALL_TESTS();
}
