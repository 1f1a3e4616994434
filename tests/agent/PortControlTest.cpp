// The host without its socket, on the real state machines: what it says and does about err-disabled
// ports.

#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapSm.h"

#include "agent/ErrDisableTrace.h"
#include "agent/Journal.h"
#include "agent/PortControl.h"
#include "agent/PortSwitch.h"

#include "tests/agent/support/Kernel.h"

namespace {

using Lines = std::vector<std::string>;

Tarn::IntfId const et1{"et1"};
Tarn::IntfId const et2{"et2"};

class FakeSwitch final : public LinkFlapd::PortSwitch {
 public:
  void shut(int index) override {
    if (error != 0) throw std::system_error(error, std::generic_category());
    shutIndexes.push_back(index);
  }

  int error{0};
  std::vector<int> shutIndexes;
};

/// A host of two healthy ports, et1 (index 3) and et2 (index 4), that allows two flaps in 10 s.
class Host {
 public:
  explicit Host(bool enforce = true, int traceLevel = 0, std::vector<std::string> patterns = {})
      : kernel{std::move(patterns)},
        trace{traceLevel,
              [this](Vek::TraceRecord const& record) { traced.push_back(record.level); }},
        journal{out},
        control{causeStatus,
                config,
                {kernel.monitor, trace, journal, enforce ? &portSwitch : nullptr}} {
    config->maxFlapsIs(2);
    config->intervalIs(10.9);
    kernel.monitor.listenerAdd(control);
    root->linkFlapSmIs(Vek::make<Vek::ActivityConfig>(), kernel.publisher.configDir(),
                       kernel.publisher.statusDir(), Vek::make<Errdisable::Config>(), config,
                       causeStatus, "link-flap");
    kernel.dumps(
        {{.index = 3, .name = "et1", .count = 10}, {.index = 4, .name = "et2", .count = 1}});
    lines();
  }
  ~Host() { root->linkFlapSmDel(); }

  /// et1 returns to up that many times, told by one message.
  void flaps(std::uint32_t number) { kernel.says({.count = count += number}); }
  bool errdisabled(Tarn::IntfId const& id) const { return causeStatus->intfStatus().has(id); }

  /// What was said since the last call, without the date and time.
  Lines lines() {
    std::istringstream in{out.str()};
    out.str({});
    Lines result;
    for (std::string line; std::getline(in, line);)
      result.push_back(line.substr(std::string{"2026-11-21 01:17:53.872 "}.size()));
    return result;
  }

  Vek::ManualClock clock{100};
  Kernel kernel;
  std::uint32_t count{10};
  Vek::Ptr<LinkFlap::Config> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus{Vek::make<Errdisable::CauseStatus>()};
  std::vector<int> traced;
  LinkFlapd::ErrDisableTrace trace;
  std::ostringstream out;
  LinkFlapd::Journal journal;
  FakeSwitch portSwitch;
  LinkFlapd::PortControl control;
  Vek::Ptr<LinkFlap::Root> root{LinkFlap::rootFactory(Vek::Name{"host"})};
};

TEST(PortControl, SaysWhyAndShutsThePort) {
  Host host;
  host.flaps(1);
  host.clock.secondsIs(101.5);
  host.flaps(1);
  EXPECT_EQ(host.lines(), Lines{});
  host.clock.secondsIs(104.25);
  host.flaps(1);
  EXPECT_EQ(host.lines(),
            (Lines{"et1: err-disabled at monotonic 104.250000 s by profile default: 3 flaps in an "
                   "interval of 10 s (2 allowed), flaps from 100 to 104.25; port shut"}));
  EXPECT_EQ(host.portSwitch.shutIndexes, (std::vector<int>{3}));
  EXPECT_EQ(host.control.shutPorts(), (Lines{"et1"}));
  EXPECT_TRUE(host.errdisabled(et1));
  EXPECT_FALSE(host.errdisabled(et2));
}

TEST(PortControl, LeavesThePortUpWhenItOnlyMonitors) {
  Host host{false};
  host.flaps(3);
  Lines const lines = host.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].ends_with("; monitor only: port left up")) << lines[0];
  EXPECT_EQ(host.control.shutPorts(), Lines{});
}

TEST(PortControl, SaysWhyAPortCouldNotBeShut) {
  Host host;
  host.portSwitch.error = EPERM;
  host.flaps(3);
  Lines const lines = host.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].ends_with("; shutting failed: Operation not permitted")) << lines[0];
  EXPECT_EQ(host.control.shutPorts(), Lines{});
}

// The kernel had counted six flaps before the port was shut for the first three.
TEST(PortControl, SaysThatAPortIsShutAlready) {
  Host host;
  host.flaps(6);
  Lines const lines = host.lines();
  ASSERT_EQ(lines.size(), 1U) << "both records hold the same time, which is no change";
  host.clock.stepIs(0.001);
  host.flaps(6);
  Lines const later = host.lines();
  ASSERT_EQ(later.size(), 2U);
  EXPECT_TRUE(later[0].ends_with("; port already shut")) << later[0];
  EXPECT_EQ(host.portSwitch.shutIndexes, (std::vector<int>{3}));
}

// The operator set the port down; the same message tells of the flaps before.
TEST(PortControl, LeavesAPortAloneThatIsAdministrativelyDown) {
  Host host;
  host.kernel.says({.up = false, .carrier = false, .count = host.count += 3});
  Lines const lines = host.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].ends_with("; port already administratively down")) << lines[0];
  EXPECT_EQ(host.control.shutPorts(), Lines{});
  host.kernel.says({.up = true, .carrier = false, .count = host.count});
  EXPECT_FALSE(host.errdisabled(et1));
}

TEST(PortControl, NamesTheProfileThatDecided) {
  Host host;
  auto const strict = host.config->newProfileConfig("strict");
  strict->maxFlapsIs(6);
  strict->intervalIs(30);
  strict->violationsIs(1);
  strict->trackedIntervalsIs(1);
  host.config->defaultProfileListIs("strict", true);
  for (int flap = 0; flap < 7; ++flap) {
    host.clock.secondsIs(100 + flap);
    host.flaps(1);
  }
  EXPECT_EQ(host.lines(),
            (Lines{"et1: err-disabled at monotonic 106.000000 s by profile strict: 7 flaps in an "
                   "interval of 30 s (6 allowed), flaps from 100 to 106; port shut"}));
}

TEST(PortControl, WithdrawsTheRecordOfAPortThatIsSetUpAgain) {
  Host host;
  host.flaps(3);
  host.lines();
  host.kernel.says({.up = false, .carrier = false, .count = host.count});
  EXPECT_TRUE(host.errdisabled(et1));
  EXPECT_EQ(host.control.shutPorts(), (Lines{"et1"}));

  host.kernel.says({.up = true, .carrier = false, .count = host.count});
  EXPECT_FALSE(host.errdisabled(et1));
  EXPECT_EQ(host.control.shutPorts(), Lines{});
  EXPECT_EQ(host.lines(), (Lines{"et1: err-disable withdrawn: the port was set up again"}));

  // The first carrier is no flap; the history begins anew.
  host.flaps(3);
  EXPECT_FALSE(host.errdisabled(et1));
  host.flaps(1);
  EXPECT_TRUE(host.errdisabled(et1));
}

TEST(PortControl, WithdrawsTheRecordOfAMonitoredPortToo) {
  Host host{false};
  host.flaps(3);
  host.lines();
  host.kernel.says({.up = false, .carrier = false, .count = host.count});
  host.kernel.says({.up = true, .carrier = true, .count = ++host.count});
  EXPECT_FALSE(host.errdisabled(et1));
  EXPECT_EQ(host.lines(), (Lines{"et1: err-disable withdrawn: the port was set up again"}));
}

TEST(PortControl, SaysNothingWhenAnOrdinaryPortIsSetUp) {
  Host host;
  host.kernel.says({.up = false, .carrier = false, .count = host.count});
  host.kernel.says({.up = true, .carrier = true, .count = ++host.count});
  EXPECT_EQ(host.lines(), Lines{});
}

// Messages that were on their way when the port was shut show it up. They are not the operator's
// setting it up again, and what they count is counted.
TEST(PortControl, TakesNoOlderMessageForARecovery) {
  Host host;
  host.flaps(3);
  host.flaps(1);
  EXPECT_TRUE(host.errdisabled(et1));
  EXPECT_EQ(host.control.shutPorts(), (Lines{"et1"}));
  EXPECT_EQ(host.kernel.recorder.flaps("et1"), 4U);
}

TEST(PortControl, NoticesARecoveryThatAnOverrunHid) {
  Host host;
  host.flaps(3);
  host.lines();
  host.kernel.feed.overrun();
  host.kernel.dumps({{.index = 3, .name = "et1", .count = ++host.count},
                     {.index = 4, .name = "et2", .count = 1}});
  EXPECT_FALSE(host.errdisabled(et1));
  EXPECT_EQ(host.kernel.recorder.flaps("et1"), 3U);
  EXPECT_EQ(host.lines(), (Lines{"et1: err-disable withdrawn: the port was set up again"}));
}

TEST(PortControl, ForgetsAPortThatIsGone) {
  Host host;
  host.flaps(3);
  host.kernel.removes({});
  EXPECT_FALSE(host.errdisabled(et1));
  EXPECT_EQ(host.control.shutPorts(), Lines{});
}

TEST(PortControl, KnowsAPortThatItShutUnderANewName) {
  Host host;
  host.flaps(3);
  host.kernel.says({.up = false, .carrier = false, .count = host.count});
  host.kernel.says({.name = "uplink", .up = false, .carrier = false, .count = host.count});
  EXPECT_FALSE(host.errdisabled(et1)) << "the record goes with the name";
  EXPECT_EQ(host.control.shutPorts(), (Lines{"uplink"}));
  host.kernel.says({.name = "uplink", .up = true, .carrier = false, .count = host.count});
  EXPECT_EQ(host.control.shutPorts(), Lines{});
}

TEST(PortControl, KeepsInMindAPortThatItShutAndThatIsWatchedNoLonger) {
  Host host{true, 0, {"et*"}};
  host.flaps(3);
  host.kernel.says({.up = false, .carrier = false, .count = host.count});
  host.kernel.says({.name = "spare", .up = false, .carrier = false, .count = host.count});
  EXPECT_EQ(host.kernel.monitor.size(), 1U);
  EXPECT_EQ(host.control.shutPorts(), (Lines{"spare"}));
}

TEST(ErrDisableTrace, PassesOnWhatTheUserAskedForOnly) {
  Host quiet{true, 0};
  quiet.flaps(3);
  EXPECT_EQ(quiet.traced, std::vector<int>{});
}

TEST(ErrDisableTrace, PassesOnTheDecisionsAtLevelTwo) {
  Host host{true, 2};
  host.flaps(2);
  EXPECT_EQ(host.traced, std::vector<int>{});
  host.flaps(1);
  EXPECT_EQ(host.traced, (std::vector<int>{2, 2, 2, 2, 2}));  // the decision, its log, three times
}

TEST(ErrDisableTrace, PassesOnEverythingAtLevelEight) {
  Host host{true, 8};
  host.flaps(3);
  EXPECT_EQ(std::count(host.traced.begin(), host.traced.end(), 2), 5);
  EXPECT_GT(std::count(host.traced.begin(), host.traced.end(), 8), 5);
}

TEST(Journal, StampsWithDateTimeAndMilliseconds) {
  std::ostringstream out;
  LinkFlapd::Journal journal{out};
  journal.line("text");
  std::string const line = out.str();
  ASSERT_EQ(line.size(), std::string{"2026-11-21 01:17:53.872 text\n"}.size());
  EXPECT_EQ(line.substr(line.size() - 6), " text\n");
  using std::chrono::milliseconds;
  LinkFlapd::Journal::Time const epoch{};
  EXPECT_EQ(LinkFlapd::Journal::stamp(epoch + milliseconds{7}).substr(17), "00.007");
  EXPECT_EQ(LinkFlapd::Journal::stamp(epoch + milliseconds{59999}).substr(17), "59.999");
}

}  // namespace
