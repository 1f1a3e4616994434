#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <system_error>
#include <vector>

#include "agent/LinkFeed.h"

#include "tests/agent/support/Kernel.h"

namespace {

using Events = std::vector<std::string>;

TEST(LinkFeed, WantsADumpAtTheStart) {
  Kernel kernel;
  EXPECT_TRUE(kernel.feed.dumpWanted());
  EXPECT_FALSE(kernel.feed.inSync());
  kernel.dumpBegins();
  EXPECT_FALSE(kernel.feed.dumpWanted());
  EXPECT_FALSE(kernel.feed.inSync());
  kernel.dumpSays({});
  kernel.dumpEnds();
  EXPECT_FALSE(kernel.feed.dumpWanted());
  EXPECT_TRUE(kernel.feed.inSync());
}

TEST(LinkFeed, ReadsSeveralMessagesFromOneRead) {
  Kernel kernel;
  kernel.dumpBegins();
  kernel.receive(
      Wire::joined({Wire::message({.count = 1}, kernel.reply(RTM_NEWLINK)),
                    Wire::message({.index = 4, .name = "et2"}, kernel.reply(RTM_NEWLINK)),
                    Wire::verdict(0, kernel.reply(NLMSG_DONE)), Wire::message({.count = 3})}));
  EXPECT_EQ(kernel.monitor.size(), 2U);
  EXPECT_EQ(kernel.recorder.flaps("et1"), 2U);
  EXPECT_TRUE(kernel.feed.inSync());
}

TEST(LinkFeed, AfterAnOverrunTheCountersOfADumpSettleTheDifference) {
  Kernel kernel;
  kernel.dumps({{.count = 10}, {.index = 4, .name = "et2", .count = 5}});
  kernel.feed.overrun();
  EXPECT_TRUE(kernel.feed.dumpWanted());
  kernel.dumps({{.count = 17}, {.index = 4, .name = "et2", .carrier = false, .count = 6}});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 7U);
  EXPECT_EQ(kernel.recorder.flaps("et2"), 1U);
  EXPECT_TRUE(kernel.feed.inSync());
}

TEST(LinkFeed, NoticesWhatVanishedAndAppearedDuringAnOverrun) {
  Kernel kernel;
  kernel.dumps({{.index = 3, .name = "et1"}, {.index = 4, .name = "et2"}});
  kernel.recorder.take();
  kernel.feed.overrun();
  kernel.dumps({{.index = 4, .name = "et2"}, {.index = 5, .name = "et3"}});
  EXPECT_EQ(kernel.recorder.take(),
            (Events{"+config et3", "+status et3", "-status et1", "-config et1"}));
}

TEST(LinkFeed, AfterAnOverrunOneAdministrativeUpIsTakenFromTheRise) {
  Kernel kernel;
  kernel.dumps({{.up = false, .carrier = false, .count = 10}});
  kernel.feed.overrun();
  kernel.dumps({{.up = true, .carrier = true, .count = 14}});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 3U);
}

// The message that told of the administrative up may have been lost.
TEST(LinkFeed, AfterAnOverrunAMessageNeedNotBeTheFirstSinceAnAdministrativeUp) {
  Kernel kernel;
  kernel.dumps({{.up = false, .carrier = false, .count = 10}});
  kernel.feed.overrun();
  kernel.says({.up = true, .carrier = true, .count = 14});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 3U);
  kernel.dumps({{.up = true, .carrier = true, .count = 14}});
  kernel.says({.up = false, .carrier = false, .count = 14});
  kernel.says({.up = true, .carrier = true, .count = 17});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 3U) << "nothing is missing any more";
}

TEST(LinkFeed, AfterAnOverrunAnUpWithCarrierKeptIsNoFlap) {
  Kernel kernel;
  kernel.dumps({{.up = false, .carrier = true, .count = 10}});
  kernel.feed.overrun();
  kernel.dumps({{.up = true, .carrier = true, .count = 10}});
  kernel.says({.count = 11});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 1U);
}

// Another interface, made with the same index and name while messages were lost.
TEST(LinkFeed, ACounterThatStepsBackInADumpIsANewBeginning) {
  Kernel kernel;
  kernel.dumps({{.count = 10}});
  kernel.feed.overrun();
  kernel.dumps({{.count = 2}});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 0U);
  kernel.says({.count = 3});
  EXPECT_EQ(kernel.recorder.flaps("et1"), 1U);
}

TEST(LinkFeed, RepeatsAnInterruptedDumpAndTrustsItInNoAbsence) {
  Kernel kernel;
  kernel.dumps({{.index = 3, .name = "et1"}, {.index = 4, .name = "et2"}});
  kernel.feed.overrun();
  kernel.dumpBegins();
  kernel.dumpSays({.index = 3, .name = "et1"}, NLM_F_DUMP_INTR);
  kernel.dumpEnds();
  EXPECT_EQ(kernel.monitor.size(), 2U);
  EXPECT_TRUE(kernel.feed.dumpWanted());
  kernel.dumps({{.index = 3, .name = "et1"}});
  EXPECT_EQ(kernel.monitor.size(), 1U);
  EXPECT_TRUE(kernel.feed.inSync());
}

TEST(LinkFeed, RepeatsADumpWhoseEndSaysThatItWasInterrupted) {
  Kernel kernel;
  kernel.dumpBegins();
  kernel.dumpEnds(0, NLM_F_DUMP_INTR);
  EXPECT_TRUE(kernel.feed.dumpWanted());
}

TEST(LinkFeed, RepeatsADumpDuringWhichMessagesWereLost) {
  Kernel kernel;
  kernel.dumps({{.index = 3, .name = "et1"}, {.index = 4, .name = "et2"}});
  kernel.dumpBegins();
  kernel.dumpSays({.index = 3, .name = "et1"});
  kernel.feed.overrun();
  EXPECT_FALSE(kernel.feed.dumpWanted()) << "the kernel runs one dump at a time";
  kernel.dumpEnds();
  EXPECT_TRUE(kernel.feed.dumpWanted());
  EXPECT_EQ(kernel.monitor.size(), 2U) << "its silence on et2 is not trusted";
}

TEST(LinkFeed, RepeatsADumpThatFoundNoRoom) {
  Kernel kernel;
  kernel.dumpBegins();
  kernel.dumpEnds(-ENOBUFS);
  EXPECT_TRUE(kernel.feed.dumpWanted());
  kernel.dumpBegins();
  kernel.receive(Wire::verdict(-EBUSY, kernel.reply(NLMSG_ERROR)));
  EXPECT_TRUE(kernel.feed.dumpWanted());
}

TEST(LinkFeed, GivesUpWhenTheKernelRefusesTheDump) {
  Kernel kernel;
  kernel.dumpBegins();
  EXPECT_THROW(kernel.receive(Wire::verdict(-EPERM, kernel.reply(NLMSG_ERROR))), std::system_error);
}

// An announcement can carry the number of somebody else's request.
TEST(LinkFeed, TellsAnnouncementsFromReplies) {
  Kernel kernel;
  kernel.dumps({{.index = 3, .name = "et1"}, {.index = 4, .name = "et2"}});
  kernel.dumpBegins();
  kernel.receive(Wire::verdict(0, {.type = NLMSG_DONE, .sequence = kernel.sequence, .portId = 99}));
  EXPECT_FALSE(kernel.feed.inSync());
  kernel.receive(Wire::message({.index = 3, .name = "et1", .count = 2},
                               {.sequence = kernel.sequence, .portId = 99}));
  EXPECT_EQ(kernel.recorder.flaps("et1"), 1U);
  kernel.dumpEnds();
  EXPECT_EQ(kernel.monitor.size(), 1U);
}

TEST(LinkFeed, TakesTheKernelsOverrunMessageForALoss) {
  Kernel kernel;
  kernel.dumps({});
  kernel.receive(Wire::verdict(0, {.type = NLMSG_OVERRUN}));
  EXPECT_TRUE(kernel.feed.dumpWanted());
}

TEST(LinkFeed, StopsAtAMessageThatIsLongerThanWhatWasRead) {
  Kernel kernel;
  Wire::Bytes bytes = Wire::message({.index = 3, .name = "et1"});
  Wire::Bytes second = Wire::message({.index = 4, .name = "et2"});
  second.resize(second.size() - 4);
  kernel.receive(Wire::joined({bytes, second}));
  EXPECT_EQ(kernel.monitor.size(), 1U);
}

}  // namespace
