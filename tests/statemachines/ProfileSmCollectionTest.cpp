#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// The interface machine's collection of profile machines.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};

/// An interface with the machines of p1, p2 and p3, each with one flap at 1.
class ProfileSmCollection : public testing::Test {
 protected:
  ProfileSmCollection() {
    sw_.addInterface(ethernet1);
    sw_.settingsIs(ethernet1, true, {{"p1", true}, {"p2", true}, {"p3", true}});
    sw_.start();
    sw_.flap(ethernet1, {1});
    sw_.causeStatus->intfStatusIs(ethernet1, 5);
    sw_.takeTraces();
    sw_.takeWrites();
  }
  LinkFlap::LinkFlapIntfSm& sm() { return *sw_.intfSm(ethernet1); }

  Switch sw_;
};

TEST_F(ProfileSmCollection, YieldsTheMachineOfANameOrNothing) {
  EXPECT_EQ(sm().linkFlapProfileSm("p1")->profileName(), "p1");
  EXPECT_EQ(sm().linkFlapProfileSm("p1")->fwkKey(), "p1");
  EXPECT_FALSE(sm().linkFlapProfileSm("P1"));
  EXPECT_FALSE(sm().linkFlapProfileSm("default"));
}

TEST_F(ProfileSmCollection, DeletionByNameReturnsTheMachineAsItIs) {
  auto const removed = sm().linkFlapProfileSmDel("p1");
  ASSERT_TRUE(removed);
  EXPECT_EQ(removed->referenceCount(), 1U);
  EXPECT_THAT(sw_.profiles(ethernet1), ElementsAre("p2", "p3"));
  // No deactivation, no change of its counters.
  EXPECT_TRUE(removed->hasNotificationActive());
  EXPECT_EQ(counters(*removed), (Counters{1, 0, 0}));
  sw_.flap(ethernet1, {2});
  EXPECT_THAT(times(*removed), ElementsAre(1, 2));
  EXPECT_FALSE(sm().linkFlapProfileSmDel("p1"));
  EXPECT_THAT(sw_.takeWrites(), IsEmpty());
}

TEST_F(ProfileSmCollection, DeletionByIteratorReturnsTheMachineItStandsOn) {
  auto position = sm().linkFlapProfileSm().iterator();
  Vek::String const name = position->profileName();
  auto const removed = sm().linkFlapProfileSmDel(position);
  EXPECT_EQ(removed->profileName(), name);
  EXPECT_FALSE(sm().linkFlapProfileSm(name));
  int others = 0;
  for (++position; position; ++position)
    ++others;
  EXPECT_EQ(others, 2);
}

TEST_F(ProfileSmCollection, DeletionOfAllLeavesTheRecord) {
  sm().linkFlapProfileSmDelAll();
  EXPECT_THAT(sw_.profiles(ethernet1), IsEmpty());
  EXPECT_EQ(sw_.errdisabledAt(ethernet1), 5.0);
  EXPECT_THAT(sw_.takeWrites(), IsEmpty());
  EXPECT_THAT(sw_.takeTraces(), IsEmpty());
}

TEST_F(ProfileSmCollection, NewLinkFlapProfileSmInsertsUnderItsNameWithThisMachineAsOwner) {
  auto const made = sm().newLinkFlapProfileSm("p4", nullptr, sw_.config, sw_.phyConfig(ethernet1),
                                              sw_.status(ethernet1), sw_.causeStatus);
  EXPECT_EQ(sm().linkFlapProfileSm("p4"), made);
  EXPECT_EQ(made->intfSm(), &sm());
}

// Creation is unconditional: a machine of that name gives way.
TEST_F(ProfileSmCollection, NewLinkFlapProfileSmReplacesTheMachineOfThatName) {
  auto const former = sm().linkFlapProfileSm("p1");
  auto const made = sm().newLinkFlapProfileSm("p1", nullptr, sw_.config, sw_.phyConfig(ethernet1),
                                              sw_.status(ethernet1), sw_.causeStatus);
  EXPECT_EQ(sm().linkFlapProfileSm("p1"), made);
  EXPECT_NE(made, former);
  EXPECT_EQ(former->referenceCount(), 1U);
  EXPECT_EQ(former->intfSm(), nullptr);
  EXPECT_EQ(sm().linkFlapProfileSm().members(), 3U);
}

TEST_F(ProfileSmCollection, DeletionByIteratorOfAMachineThatHasGoneReturnsNothing) {
  auto position = sm().linkFlapProfileSm().iterator();
  Vek::String const name = position->profileName();
  (void)sm().linkFlapProfileSmDel(name);
  EXPECT_FALSE(sm().linkFlapProfileSmDel(position));
  EXPECT_EQ(sm().linkFlapProfileSm().members(), 2U);
}

}  // namespace
