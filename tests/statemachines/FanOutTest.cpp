#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "statemachines/LinkFlapSm.h"

#include "tests/statemachines/Watchers.h"
#include "tests/support/Switch.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};
Tarn::IntfId const ethernet3{"Ethernet3"};
Tarn::IntfId const ethernet4{"Ethernet4"};

constexpr Switch::ProfileValues kProfile{.maxFlaps = 2, .interval = 10};

/// The interfaces for which profiles were selected since the last take.
std::vector<std::string> selectedFor(Switch& sw) {
  std::vector<std::string> names;
  for (TraceLine const& line : sw.takeTraces()) {
    std::string const before{"manageProfileSm(LinkFlapIntfSm( "};
    if (line.function != "manageProfileSm" || !line.message.starts_with(before)) continue;
    std::string const rest = line.message.substr(before.size());
    names.push_back(rest.substr(0, rest.find(' ')));
  }
  return names;
}

/// Ethernet1: no settings; Ethernet2: an empty list; Ethernet3: p1; Ethernet4: p1, but false.
class FanOut : public testing::Test {
 protected:
  FanOut() {
    for (Tarn::IntfId const& id : {ethernet1, ethernet2, ethernet3, ethernet4})
      sw_.addInterface(id);
    sw_.settingsIs(ethernet2, true);
    sw_.settingsIs(ethernet3, true, {{"p1", true}});
    sw_.settingsIs(ethernet4, true, {{"p1", false}});
    sw_.start();
    sw_.takeTraces();
  }

  Switch sw_;
};

TEST_F(FanOut, AProfileThatNobodyUsesReachesNoInterface) {
  sw_.profileIs("unused", kProfile);
  EXPECT_THAT(sw_.takeTraces(), ElementsAre(TraceLine{8, 343, "handleProfileConfig",
                                                      "LinkFlapSm::handleProfileConfig(unused)"}));
}

TEST_F(FanOut, AProfileReachesTheInterfacesThatListItWithTrue) {
  sw_.profileIs("p1", kProfile);
  EXPECT_THAT(selectedFor(sw_), ElementsAre("Ethernet3"));
}

// Deliberate: a list of false members is a list; its interface does not fall back to the defaults.
TEST_F(FanOut, ADefaultProfileReachesInterfacesWithoutSettingsAndWithAnEmptyList) {
  sw_.config->defaultProfileListIs("d1", true);
  sw_.takeTraces();
  sw_.profileIs("d1", kProfile);
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2"));
  sw_.profileIs("d1", kProfile);
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2"));
  sw_.config->profileConfigDel("d1");
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2"));
}

TEST_F(FanOut, AProfileThatIsDefaultAndListedReachesBothKinds) {
  sw_.config->defaultProfileListIs("p1", true);
  sw_.takeTraces();
  sw_.profileIs("p1", kProfile);
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2", "Ethernet3"));
}

TEST_F(FanOut, ADefaultMemberWithTheValueFalseIsNoDefault) {
  sw_.config->defaultProfileListIs("d1", false);
  sw_.takeTraces();
  sw_.profileIs("d1", kProfile);
  EXPECT_THAT(selectedFor(sw_), IsEmpty());
}

// Deliberate: whichever default changed, and to whatever value, all who follow the list are
// examined; handleProfileConfig asks for the value, this handler does not.
TEST_F(FanOut, AnyChangeOfTheDefaultListReachesAllWhoFollowIt) {
  sw_.config->defaultProfileListIs("d1", false);
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2"));
  sw_.config->defaultProfileListIs("d1", true);
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2"));
  sw_.config->defaultProfileListDel("d1");
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2"));
  sw_.machine().handleDefaultProfileList("unheard-of");
  EXPECT_THAT(selectedFor(sw_), UnorderedElementsAre("Ethernet1", "Ethernet2"));
}

TEST_F(FanOut, InterfacesWithoutStatusAreNeverVisited) {
  Tarn::IntfId const ethernet5{"Ethernet5"};
  sw_.addPhyConfig(ethernet5);
  sw_.settingsIs(ethernet5, true, {{"p1", true}});
  sw_.takeTraces();
  sw_.profileIs("p1", kProfile);
  EXPECT_THAT(selectedFor(sw_), ElementsAre("Ethernet3"));
}

TEST_F(FanOut, WalksInTheOrderOfTheStatusDirectory) {
  std::vector<std::string> expected;
  for (Tarn::IntfId const& id : sw_.walkOrder())
    if (id == ethernet1 || id == ethernet2) expected.emplace_back(id.name().charPtr());
  sw_.config->defaultProfileListIs("d1", true);
  EXPECT_EQ(selectedFor(sw_), expected);
}

// Whether the profile is a default one is read once, before the walk.
TEST(HandleProfileConfig, KeepsWhatItReadWhenTheDefaultListChangesUnderTheWalk) {
  Switch sw;
  sw.config->defaultProfileListIs("d1", true);
  for (Tarn::IntfId const& id : {ethernet1, ethernet2}) {
    sw.addInterface(id);
    sw.settingsIs(id, false);
  }
  sw.start();
  auto const first = sw.walkOrder()[0];
  sw.causeStatus->intfStatusIs(first, 1);
  sw.takeTraces();
  // Selecting for a disabled interface withdraws its record: there the list is emptied.
  auto const watcher = CauseWatcher::on(sw.causeStatus, [&](Tarn::IntfId const&) {
    sw.config->defaultProfileListDel("d1");
    sw.takeTraces();
  });
  sw.profileIs("d1", kProfile);
  EXPECT_THAT(selectedFor(sw), ElementsAre(sw.walkOrder()[1].name().charPtr()));
}

TEST(HandleDisabled, IgnoresOtherCauses) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.takeTraces();
  sw.errdisableConfig->disabledIs("other", true);
  EXPECT_THAT(sw.takeTraces(), ElementsAre(TraceLine{8, 444, "handleDisabled",
                                                     "LinkFlapSm::handleDisabled(other)"}));
  EXPECT_NE(sw.intfSm(ethernet1), nullptr);
}

TEST(HandleDisabled, ComparesTheCauseByItsText) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.errdisableConfig->disabledIs(Vek::String{std::string{"link"} + "-flap"}, true);
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
}

TEST(HandleDisabled, DropsInterfacesWithoutOwnSettingsAndWithdrawsTheirRecords) {
  Switch sw;
  for (Tarn::IntfId const& id : {ethernet1, ethernet2, ethernet3})
    sw.addInterface(id);
  sw.settingsIs(ethernet2, true);
  sw.start();
  sw.flap(ethernet2, {1});
  for (Tarn::IntfId const& id : {ethernet1, ethernet2, ethernet3})
    sw.causeStatus->intfStatusIs(id, 2);
  sw.takeWrites();

  sw.errdisableConfig->disabledIs("link-flap", true);

  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  EXPECT_EQ(sw.intfSm(ethernet3), nullptr);
  EXPECT_THAT(sw.takeWrites(), UnorderedElementsAre("Ethernet1 withdrawn", "Ethernet3 withdrawn"));
  EXPECT_EQ(sw.errdisabledAt(ethernet2), 2.0);
  EXPECT_THAT(times(*sw.profileSm(ethernet2, "default")), ElementsAre(1.0));
}

TEST(HandleDisabled, CallsHandleIntfForInterfacesWithoutOwnSettingsOnly) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.settingsIs(ethernet2, true);
  sw.start();
  sw.takeTraces();
  sw.errdisableConfig->disabledIs("link-flap", true);
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapSm::handleDisabled(link-flap)",
                          "LinkFlapSm::handleIntf(Ethernet1)", "deleteLinkFlapIntfSm(Ethernet1)"));
}

class SwitchingOnAgain : public testing::TestWithParam<bool> {};

// The handler does not read the value: admission does, so the same walk serves both directions.
TEST_P(SwitchingOnAgain, ReadmitsWithFreshMachines) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1});
  sw.errdisableConfig->disabledIs("link-flap", true);
  ASSERT_EQ(sw.intfSm(ethernet1), nullptr);
  if (GetParam())
    sw.errdisableConfig->disabledDel("link-flap");
  else
    sw.errdisableConfig->disabledIs("link-flap", false);
  EXPECT_THAT(sw.profiles(ethernet1), ElementsAre("default"));
  EXPECT_THAT(times(*sw.profileSm(ethernet1, "default")), IsEmpty());
  EXPECT_EQ(counters(*sw.profileSm(ethernet1, "default")), (Counters{0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(Each, SwitchingOnAgain, testing::Bool(),
                         [](testing::TestParamInfo<bool> const& instance) {
                           return std::string{instance.param ? "ByRemoval" : "ByFalse"};
                         });

// The first interface of the walk cannot be admitted; the walk stops there.
TEST(HandleDisabled, StopsAtTheInterfaceWhoseAdmissionThrows) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.start();
  auto const first = sw.walkOrder()[0];
  sw.addStatus(first);
  sw.takeFailures();
  sw.takeTraces();
  sw.errdisableConfig->disabledIs("link-flap", false);
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapSm::handleDisabled(link-flap)",
                          std::string{"LinkFlapSm::handleIntf("} + first.name().charPtr() + ")"));
  auto const failures = sw.takeFailures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].attribute, 261U);
  EXPECT_EQ(failures[0].watcher, "LinkFlap::LinkFlapSm::VekErrdisableConfig");
  EXPECT_THAT(failures[0].message, HasSubstr("_ethPhyIntfStatus"));
}

// Deliberate: the machine is handed on as found, so one that is missing ends the process.

constexpr char const* kNoMachine{
    "LinkFlapSm:210: void LinkFlap::manageProfileSm(LinkFlap::LinkFlapIntfSm::Ptr): "
    "Assertion `sm' failed.\n"};

TEST(FanOutDeathTest, AProfileChangeEndsTheProcessForASelectedInterfaceWithoutMachine) {
  Switch sw;
  sw.addStatus(ethernet1);
  sw.start();
  sw.profileIs("p1", kProfile);  // not selected: no harm
  sw.settingsIs(ethernet1, true, {{"p1", true}});
  EXPECT_EXIT(sw.profileIs("p1", kProfile), testing::KilledBySignal(SIGABRT),
              testing::Eq(kNoMachine));
}

TEST(FanOutDeathTest, ADefaultListChangeEndsTheProcessForAnInterfaceWithoutMachine) {
  Switch sw;
  sw.errdisableConfig->disabledIs("link-flap", true);
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_EXIT(sw.config->defaultProfileListIs("p1", true), testing::KilledBySignal(SIGABRT),
              testing::Eq(kNoMachine));
}

}  // namespace
