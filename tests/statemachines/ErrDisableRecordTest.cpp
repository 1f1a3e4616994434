#include <cstddef>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "statemachines/LinkFlapSm.h"
#include "statemachines/SourcePoints.h"

#include "tests/statemachines/Watchers.h"
#include "tests/support/Switch.h"

// What an err-disable leaves behind: the log of flap times, the cleared histories, the record.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

/// The traces of level 2 alone.
std::vector<TraceLine> log(Switch& sw) {
  std::vector<TraceLine> lines;
  for (TraceLine& line : sw.takeTraces())
    if (line.level == 2) lines.push_back(std::move(line));
  return lines;
}

/// Err-disables on the last of `count` flaps at 1, 2, 3 ... of profile p1; its log.
std::vector<TraceLine> logOf(unsigned count) {
  Switch sw;
  sw.profileIs("p1", {.maxFlaps = count - 1, .interval = 100});
  sw.config->defaultProfileListIs("p1", true);
  sw.addInterface(ethernet1);
  sw.start();
  for (unsigned i = 1; i <= count; ++i)
    sw.flap(ethernet1, {static_cast<double>(i)});
  return log(sw);
}

TraceLine const kTitle{2, 21, "logTimeStamps",
                       "Flaps occurred as per p1 in the following time frame : "};

TEST(LogTimeStamps, OfFourFlapsPrintsAllOfThem) {
  EXPECT_THAT(
      logOf(4),
      ElementsAre(TraceLine{2, 50, "declareErrDisable",
                            "Interface exceeded 1violations, each with at least 3 flaps; "
                            "errdisabling it"},
                  kTitle, TraceLine{2, 28, "logTimeStamps", "1"},
                  TraceLine{2, 28, "logTimeStamps", "2"}, TraceLine{2, 28, "logTimeStamps", "3"},
                  TraceLine{2, 28, "logTimeStamps", "4"}));
}

TEST(LogTimeStamps, OfFiveFlapsPrintsTheNewestAtItsOwnLine) {
  EXPECT_THAT(
      logOf(5),
      ElementsAre(TraceLine{2, 50, "declareErrDisable",
                            "Interface exceeded 1violations, each with at least 4 flaps; "
                            "errdisabling it"},
                  kTitle, TraceLine{2, 28, "logTimeStamps", "1"},
                  TraceLine{2, 28, "logTimeStamps", "2"}, TraceLine{2, 28, "logTimeStamps", "3"},
                  TraceLine{2, 28, "logTimeStamps", "4"}, TraceLine{2, 33, "logTimeStamps", "5"}));
}

TEST(LogTimeStamps, OfSixFlapsLeavesOneOut) {
  auto const lines = logOf(6);
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_THAT(
      (std::vector<TraceLine>{lines.begin() + 1, lines.end()}),
      ElementsAre(kTitle, TraceLine{2, 28, "logTimeStamps", "1"},
                  TraceLine{2, 28, "logTimeStamps", "2"}, TraceLine{2, 28, "logTimeStamps", "3"},
                  TraceLine{2, 28, "logTimeStamps", "4"}, TraceLine{2, 32, "logTimeStamps", "..."},
                  TraceLine{2, 33, "logTimeStamps", "6"}));
}

TEST(LogTimeStamps, OfManyFlapsPrintsTheFourOldestAndTheNewest) {
  auto const lines = logOf(20);
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(lines[2].message, "1");
  EXPECT_EQ(lines[5].message, "4");
  EXPECT_EQ(lines[6].message, "...");
  EXPECT_EQ(lines[7].message, "20");
}

TEST(LogTimeStamps, OfOneFlapPrintsIt) {
  EXPECT_THAT(logOf(1),
              ElementsAre(TraceLine{2, 50, "declareErrDisable",
                                    "Interface exceeded 1violations, each with at least 0 flaps; "
                                    "errdisabling it"},
                          kTitle, TraceLine{2, 28, "logTimeStamps", "1"}));
}

TEST(LogTimeStamps, OfAnEmptyQueueIsLeftOut) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_TRUE(LinkFlap::evaluateErrDisable(sw.profileSm(ethernet1, "default"), 5, 0, 0, 10, 1, 1));
  EXPECT_THAT(log(sw), ElementsAre(TraceLine{2, 50, "declareErrDisable",
                                             "Interface exceeded 1violations, each with at least "
                                             "0 flaps; errdisabling it"}));
}

TEST(LogTimeStamps, PrintsTimesWithTwelveSignificantDigits) {
  Switch sw{{.maxFlaps = 3, .interval = 1e9}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {0.1, 1234567.875, 123456789.0625, 123456789.123456789});
  auto const lines = log(sw);
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines[2].message, "0.1");
  EXPECT_EQ(lines[3].message, "1234567.875");
  EXPECT_EQ(lines[4].message, "123456789.062");
  EXPECT_EQ(lines[5].message, "123456789.123");
}

TEST(LogTimeStamps, PrintsGreatTimesInTheDefaultFloatingFormat) {
  Switch sw{{.maxFlaps = 0, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {2e15});
  EXPECT_EQ(log(sw)[2].message, "2e+15");
}

// The count of violations and the limit that was exceeded, not the number of flaps.
TEST(DeclareErrDisable, PrintsViolationsAndTheAllowedFlaps) {
  Switch sw;
  sw.profileIs("p1", {.maxFlaps = 1, .interval = 10, .violations = 3, .trackedIntervals = 9});
  sw.config->defaultProfileListIs("p1", true);
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {0, 1, 10, 11, 20, 21});
  EXPECT_EQ(log(sw)[0].message,
            "Interface exceeded 3violations, each with at least 1 flaps; errdisabling it");
}

TEST(ErrDisable, ClearsEveryProfileOfTheInterfaceAndNoOther) {
  Switch sw;
  sw.profileIs("strict", {.maxFlaps = 2, .interval = 100});
  sw.profileIs("lax", {.maxFlaps = 50, .interval = 100});
  for (char const* const name : {"strict", "lax", "unconfigured"})
    sw.config->defaultProfileListIs(name, true);
  sw.config->maxFlapsIs(50);
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.start();
  sw.flap(ethernet2, {0, 1});
  sw.flap(ethernet1, {1, 2});
  for (char const* const name : {"lax", "unconfigured"})
    sw.profileSm(ethernet1, name)->curViolationsIs(1);
  ASSERT_EQ(times(*sw.profileSm(ethernet1, "lax")).size(), 2U);
  // Called for one machine alone, so that none is told of the flap after the histories are clear.
  EXPECT_TRUE(LinkFlap::evaluateErrDisable(sw.profileSm(ethernet1, "strict"), 3, 1, 2, 100, 1, 1));
  for (char const* const name : {"strict", "lax", "unconfigured"}) {
    EXPECT_THAT(times(*sw.profileSm(ethernet1, name)), IsEmpty()) << name;
    EXPECT_EQ(counters(*sw.profileSm(ethernet1, name)), (Counters{0, 0, 0})) << name;
    EXPECT_THAT(times(*sw.profileSm(ethernet2, name)), ElementsAre(0, 1)) << name;
  }
  EXPECT_EQ(sw.errdisabledAt(ethernet2), std::nullopt);
}

// Profiles that are told after the one that err-disables count the flap from nothing.
TEST(ErrDisable, LeavesTheFlapToProfilesThatAreToldLater) {
  Switch sw{{.maxFlaps = 50, .interval = 100}};
  sw.profileIs("p1", {.maxFlaps = 1, .interval = 100});
  sw.profileIs("p2", {.maxFlaps = 1, .interval = 100});
  sw.config->defaultProfileListIs("p1", true);
  sw.config->defaultProfileListIs("p2", true);
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1, 2});
  EXPECT_THAT(sw.takeWrites(), ElementsAre("Ethernet1 2"));
  auto const first = times(*sw.profileSm(ethernet1, "p1"));
  auto const second = times(*sw.profileSm(ethernet1, "p2"));
  EXPECT_EQ(first.size() + second.size(), 1U);
}

TEST(ErrDisable, ClearsTheHistoriesBeforeItWritesTheRecord) {
  Switch sw{{.maxFlaps = 1, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  std::vector<std::string> seen;
  auto const watcher = CauseWatcher::on(sw.causeStatus, [&](Tarn::IntfId const& id) {
    auto const& sm = *sw.profileSm(id, "default");
    seen.push_back(times(sm).empty() && counters(sm) == Counters{0, 0, 0} ? "cleared" : "not yet");
  });
  sw.flap(ethernet1, {1, 2});
  EXPECT_THAT(seen, ElementsAre("cleared"));
}

// Why the order matters: whoever hears of the record may flap this very link.
TEST(ErrDisable, AFlapFromInsideTheWriteIsCountedFromNothing) {
  Switch sw{{.maxFlaps = 1, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  auto const watcher =
      CauseWatcher::on(sw.causeStatus, [&](Tarn::IntfId const& id) { sw.flap(id, {2.5}); });
  sw.flap(ethernet1, {1, 2});
  EXPECT_THAT(sw.takeWrites(), ElementsAre("Ethernet1 2"));
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), ElementsAre(2.5));
  EXPECT_EQ(counters(*sw.profileSm(ethernet1, "default")), (Counters{1, 0, 0}));
}

TEST(ErrDisable, LogsBeforeItWritesTheRecord) {
  Switch sw{{.maxFlaps = 1, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  std::size_t logged = 0;
  auto const watcher = CauseWatcher::on(
      sw.causeStatus, [&](Tarn::IntfId const&) { logged = sw.traced("logTimeStamps"); });
  sw.flap(ethernet1, {1, 2});
  EXPECT_EQ(logged, 3U);
}

TEST(ErrDisable, IsRepeatedWithALaterTimeWhenTheInterfaceFlapsOn) {
  Switch sw{{.maxFlaps = 1, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1, 2, 3, 4});
  EXPECT_THAT(sw.takeWrites(), ElementsAre("Ethernet1 2", "Ethernet1 4"));
}

TEST(ErrDisable, WithOnlyLevelTwoEnabledStillLogs) {
  Switch sw{{.maxFlaps = 1, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.takeTraces();
  LinkFlap::traceHandle().levelIs(8, false);
  sw.flap(ethernet1, {1, 2});
  EXPECT_EQ(sw.takeTraces().size(), 4U);
}

// Taken out of its interface's machine but still held, a machine speaks for itself alone.
TEST(ErrDisable, OfAMachineWithoutOwnerClearsItselfAndWritesTheRecord) {
  Switch sw{{.maxFlaps = 1, .interval = 10}};
  sw.addInterface(ethernet1);
  auto const sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs(
      "p1", nullptr, sw.config, sw.phyConfig(ethernet1), sw.status(ethernet1), sw.causeStatus,
      nullptr);
  sw.flap(ethernet1, {1, 2});
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 2.0);
  EXPECT_THAT(times(*sm), IsEmpty());
  EXPECT_EQ(counters(*sm), (Counters{0, 0, 0}));
}

// The counter of passed trace points is the same however many of them are listened to: it counts 2
// for each while a level is enabled, 1 while none is.
TEST(ErrDisable, PassesAsManyTracePointsWhenNobodyListens) {
  for (unsigned limit = 0; limit < 8; ++limit) {
    auto const hits = [limit](bool listening) {
      Switch sw{{.maxFlaps = limit, .interval = 100}};
      sw.addInterface(ethernet1);
      sw.start();
      for (unsigned flap = 0; flap < limit; ++flap)
        sw.flap(ethernet1, {1.0 + flap});
      for (int level = 0; !listening && level < 10; ++level)
        LinkFlap::traceHandle().levelIs(level, false);
      auto const before = LinkFlap::traceHandle().hits();
      sw.flap(ethernet1, {50});
      EXPECT_EQ(sw.errdisabledAt(ethernet1), 50.0);
      return LinkFlap::traceHandle().hits() - before;
    };
    EXPECT_EQ(hits(true), 2 * hits(false)) << limit + 1 << " flap times";
  }
}

}  // namespace
