#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// The top-level machine's collection of interface machines, and deleteLinkFlapIntfSm.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};
Tarn::IntfId const ethernet3{"Ethernet3"};

TEST(DeleteLinkFlapIntfSm, OfAnUnknownInterfaceTracesAndDoesNothingElse) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet2, 1);
  sw.takeTraces();
  LinkFlap::deleteLinkFlapIntfSm(&sw.machine(), ethernet2);
  EXPECT_THAT(sw.takeTraces(), ElementsAre(TraceLine{8, 387, "deleteLinkFlapIntfSm",
                                                     "deleteLinkFlapIntfSm(Ethernet2)"}));
  EXPECT_EQ(sw.errdisabledAt(ethernet2), 1.0);
  EXPECT_NE(sw.intfSm(ethernet1), nullptr);
}

TEST(DeleteLinkFlapIntfSm, DeletesTheProfileMachinesAndTheMachineButLeavesTheRecord) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  auto const child = LinkFlap::LinkFlapIntfSm::Ptr{sw.intfSm(ethernet1)};
  LinkFlap::deleteLinkFlapIntfSm(&sw.machine(), ethernet1);
  EXPECT_EQ(sw.intfSm(ethernet1), nullptr);
  EXPECT_EQ(child->linkFlapProfileSm().members(), 0U);
  EXPECT_EQ(child->referenceCount(), 1U);
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 1.0);
}

TEST(LinkFlapIntfSmCollection, YieldsTheMachineOfAKeyOrNothing) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  EXPECT_EQ(sw.machine().linkFlapIntfSm(ethernet1)->intfId(), ethernet1);
  EXPECT_FALSE(sw.machine().linkFlapIntfSm(ethernet2));
}

TEST(LinkFlapIntfSmCollection, DeletionByKeyReturnsTheMachineAsItIs) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1});
  sw.causeStatus->intfStatusIs(ethernet1, 5);
  auto const child = sw.machine().linkFlapIntfSmDel(ethernet1);
  ASSERT_TRUE(child);
  EXPECT_EQ(child->referenceCount(), 1U);
  EXPECT_TRUE(child->hasNotificationActive());
  EXPECT_THAT(times(*child->linkFlapProfileSm("default")), ElementsAre(1.0));
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 5.0);
  EXPECT_FALSE(sw.machine().linkFlapIntfSm(ethernet1));
  EXPECT_FALSE(sw.machine().linkFlapIntfSmDel(ethernet1));
}

TEST(LinkFlapIntfSmCollection, DeletionByIteratorRemovesTheOneItStandsOn) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.addInterface(ethernet3);
  sw.start();
  auto position = sw.machine().linkFlapIntfSm().iterator();
  ++position;
  auto const id = position->intfId();
  auto const removed = sw.machine().linkFlapIntfSmDel(position);
  EXPECT_EQ(removed->intfId(), id);
  EXPECT_FALSE(sw.machine().linkFlapIntfSm(id));
  EXPECT_EQ(sw.machine().linkFlapIntfSm().members(), 2U);
  ++position;
  ASSERT_TRUE(position);
  EXPECT_EQ(sw.machine().linkFlapIntfSm(position->intfId()), position.member());
}

// It only empties the collection: whoever holds a machine keeps it whole, the records stay.
TEST(LinkFlapIntfSmCollection, DeletionOfAllTouchesNeitherProfileMachinesNorRecords) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.addInterface(ethernet2);
  sw.start();
  sw.causeStatus->intfStatusIs(ethernet1, 1);
  sw.takeWrites();
  auto const child = LinkFlap::LinkFlapIntfSm::Ptr{sw.intfSm(ethernet1)};
  sw.machine().linkFlapIntfSmDelAll();
  EXPECT_EQ(sw.machine().linkFlapIntfSm().members(), 0U);
  EXPECT_EQ(child->linkFlapProfileSm().members(), 1U);
  EXPECT_THAT(sw.takeWrites(), IsEmpty());
}

TEST(LinkFlapIntfSmCollection, NewLinkFlapIntfSmInsertsUnderTheStatusIdentifier) {
  Switch sw;
  sw.start();
  auto const status = Vek::make<Interface::EthPhyIntfStatus>(ethernet3);
  auto const phyConfig = Vek::make<Interface::EthPhyIntfConfig>(ethernet3);
  auto const child =
      sw.machine().newLinkFlapIntfSm(status, sw.config, nullptr, phyConfig, sw.causeStatus);
  EXPECT_EQ(sw.machine().linkFlapIntfSm(ethernet3), child);
  EXPECT_TRUE(child->hasNotificationActive());
  EXPECT_EQ(child->linkFlapProfileSm().members(), 0U);
}

TEST(LinkFlapIntfSmCollection, AMachineWithoutStatusIsKeptUnderTheNullIdentifier) {
  Switch sw;
  sw.start();
  auto const child =
      sw.machine().linkFlapIntfSmIs(nullptr, sw.config, nullptr, nullptr, sw.causeStatus);
  EXPECT_EQ(sw.machine().linkFlapIntfSm(Tarn::IntfId{""}), child);
}

TEST(LinkFlapIntfSm, PrintsWithItsInterface) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  std::ostringstream out;
  out << sw.intfSm(ethernet1);
  EXPECT_EQ(out.str(), "LinkFlapIntfSm( Ethernet1 )");
}

TEST(LinkFlapIntfSm, PrintsWithAnEmptyIdentifierWithoutStatus) {
  Switch sw;
  auto const sm = LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(nullptr, sw.config, nullptr, nullptr,
                                                             sw.causeStatus);
  std::ostringstream out;
  out << sm.get();
  EXPECT_EQ(out.str(), "LinkFlapIntfSm(  )");
}

}  // namespace
