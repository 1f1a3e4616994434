#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "statemachines/LinkFlapSm.h"

#include "tests/introspection/support/Records.h"

// The tables of the four machine types, typed a second time by hand.
//
// An identifier marked "next" is none that the registration passes: it is one more than that of the
// attribute before it, in the order of registration. (`vekFwkActivity`, the first of a machine's
// own, is 129, because what follows it starts at 130.)

namespace {

using IntrospectionTest::lines;
using IntrospectionTest::operations;
using testing::ElementsAre;

// clang-format off
TEST(MachineTypes, LinkFlapProfileSm) {
  EXPECT_THAT(lines(*LinkFlap::LinkFlapProfileSm::_fwkType()), ElementsAre(
      "vekFwkActivity 129 activity Vek::ActivityConfig",
      "profileName 130 input Vek::String",
      "profileConfig 131 input LinkFlap::ProfileConfig",
      "config 132 input LinkFlap::Config",
      "ethPhyIntfConfig 133 input Interface::EthPhyIntfConfig",
      "ethPhyIntfStatus 134 input Interface::EthPhyIntfStatus",
      "causeStatus 135 input Errdisable::CauseStatus",
      "intfId 136 state Tarn::IntfId",
      "curIntervals 137 state unsigned int",
      "curFlaps 138 state unsigned int",
      "curViolations 139 state unsigned int",
      "linkFlapTimeStamp 140 queue double by unsigned int",
      // next: 140 + 1; 142 is the queue's metadata (below), 143 to 145 name nothing
      "handleProfileValues 141 handler void * (profileName Vek::String, intfId Tarn::IntfId)",
      "handleLinkStatus 146 handler void *",
      "initialized 147 state bool",
      "handleInitialized 148 handler void *",
      "intfSm 149 owner LinkFlap::LinkFlapIntfSm",  // next: 148 + 1
      "fwkKey 150 key Vek::String",  // next
      "hasNotificationActiveIs 151 handler void * (hasNotificationActiveIs bool)",  // next
      "vekDoZombieReactors 152 handler void * (on bool)"));  // next
}

TEST(MachineTypes, LinkFlapIntfSm) {
  EXPECT_THAT(lines(*LinkFlap::LinkFlapIntfSm::_fwkType()), ElementsAre(
      "vekFwkActivity 129 activity Vek::ActivityConfig",
      "ethPhyIntfStatus 130 input Interface::EthPhyIntfStatus",
      "config 131 input LinkFlap::Config",
      "intfConfig 132 input LinkFlap::IntfConfig",
      "ethPhyIntfConfig 133 input Interface::EthPhyIntfConfig",
      "causeStatus 134 input Errdisable::CauseStatus",
      "intfId 135 state Tarn::IntfId",
      "enable 136 state bool",
      // next: 136 + 1, which also leads up to the 138 behind it
      "linkFlapProfileSm 137 collection LinkFlap::LinkFlapProfileSm by Vek::String "
          "(profileName Vek::String, profileConfig LinkFlap::ProfileConfig, "
          "config LinkFlap::Config, ethPhyIntfConfig Interface::EthPhyIntfConfig, "
          "ethPhyIntfStatus Interface::EthPhyIntfStatus, causeStatus Errdisable::CauseStatus)",
      "handleLinkFlapValues 138 handler void *",
      "handleProfileList 139 handler void * (profileName Vek::String)",  // next: 138 + 1
      "handleIntfConfigEnabled 140 handler void * (intfId Tarn::IntfId)",  // next
      "initialized 143 state bool",
      "handleInitialized 144 handler void *",
      "fwkKey 145 key Tarn::IntfId",  // next: 144 + 1
      "hasNotificationActiveIs 146 handler void * (hasNotificationActiveIs bool)",  // next
      "vekDoZombieReactors 147 handler void * (on bool)"));  // next
}

TEST(MachineTypes, LinkFlapSm) {
  EXPECT_THAT(lines(*LinkFlap::LinkFlapSm::_fwkType()), ElementsAre(
      "vekFwkActivity 129 activity Vek::ActivityConfig",
      "ethPhyIntfConfigDir 130 input Interface::AllEthPhyIntfConfigDir",
      "ethPhyIntfStatusDir 131 input Interface::AllEthPhyIntfStatusDir",
      "errdisableConfig 132 input Errdisable::Config",
      "config 133 input LinkFlap::Config",
      "causeStatus 134 input Errdisable::CauseStatus",
      "causeName 135 input Vek::String",
      "linkFlapIntfSm 136 collection LinkFlap::LinkFlapIntfSm by Tarn::IntfId "
          "(ethPhyIntfStatus Interface::EthPhyIntfStatus, config LinkFlap::Config, "
          "intfConfig LinkFlap::IntfConfig, ethPhyIntfConfig Interface::EthPhyIntfConfig, "
          "causeStatus Errdisable::CauseStatus)",
      "handleIntf 137 handler void * (intfId Tarn::IntfId)",  // next: 136 + 1
      "handleDisabled 138 handler void * (cause Vek::String)",  // next
      "handleProfileConfig 139 handler void * (profileName Vek::String)",  // next
      "handleDefaultProfileList 140 handler void * (profileName Vek::String)",  // next
      "initialized 147 state bool",
      "handleInitialized 148 handler void *",
      "hasNotificationActiveIs 149 handler void * (hasNotificationActiveIs bool)",  // next: 148 + 1
      "vekDoZombieReactors 150 handler void * (on bool)"));  // next
}

TEST(MachineTypes, Root) {
  EXPECT_THAT(lines(*LinkFlap::Root::_fwkType()), ElementsAre(
      "name 130 input Vek::Name",
      "linkFlapSm 258 single LinkFlap::LinkFlapSm "
          "(vekFwkActivity Vek::ActivityConfig, "
          "ethPhyIntfConfigDir Interface::AllEthPhyIntfConfigDir, "
          "ethPhyIntfStatusDir Interface::AllEthPhyIntfStatusDir, "
          "errdisableConfig Errdisable::Config, config LinkFlap::Config, "
          "causeStatus Errdisable::CauseStatus, causeName Vek::String)"));
}
// clang-format on

// What each attribute supports. An input can be written where the machine can be pointed at another
// object, and removed where it can do without one.

TEST(MachineTypes, OperationsOfLinkFlapProfileSm) {
  EXPECT_THAT(
      operations(*LinkFlap::LinkFlapProfileSm::_fwkType()),
      ElementsAre("vekFwkActivity get", "profileName get", "profileConfig get set del",
                  "config get", "ethPhyIntfConfig get", "ethPhyIntfStatus get set del",
                  "causeStatus get", "intfId get", "curIntervals get set", "curFlaps get set",
                  "curViolations get set", "linkFlapTimeStamp size get[] set[] del[] iterate",
                  "handleProfileValues call", "handleLinkStatus call", "initialized get set",
                  "handleInitialized call", "intfSm get", "fwkKey get",
                  "hasNotificationActiveIs call", "vekDoZombieReactors call"));
}

TEST(MachineTypes, OperationsOfLinkFlapIntfSm) {
  EXPECT_THAT(
      operations(*LinkFlap::LinkFlapIntfSm::_fwkType()),
      ElementsAre("vekFwkActivity get", "ethPhyIntfStatus get", "config get set del",
                  "intfConfig get set del", "ethPhyIntfConfig get", "causeStatus get", "intfId get",
                  "enable get set", "linkFlapProfileSm instantiate size get[] del[] iterate",
                  "handleLinkFlapValues call", "handleProfileList call",
                  "handleIntfConfigEnabled call", "initialized get set", "handleInitialized call",
                  "fwkKey get", "hasNotificationActiveIs call", "vekDoZombieReactors call"));
}

TEST(MachineTypes, OperationsOfLinkFlapSm) {
  EXPECT_THAT(
      operations(*LinkFlap::LinkFlapSm::_fwkType()),
      ElementsAre("vekFwkActivity get set", "ethPhyIntfConfigDir get set del",
                  "ethPhyIntfStatusDir get set del", "errdisableConfig get set del",
                  "config get set del", "causeStatus get", "causeName get",
                  "linkFlapIntfSm instantiate size get[] del[] iterate", "handleIntf call",
                  "handleDisabled call", "handleProfileConfig call",
                  "handleDefaultProfileList call", "initialized get set", "handleInitialized call",
                  "hasNotificationActiveIs call", "vekDoZombieReactors call"));
}

TEST(MachineTypes, OperationsOfRoot) {
  EXPECT_THAT(operations(*LinkFlap::Root::_fwkType()),
              ElementsAre("name get", "linkFlapSm get del instantiate"));
}

// The queue's index space belongs to the queue: it has a name and an identifier, but no place among
// the attributes.
TEST(MachineTypes, TheQueuesMetadataIsFoundByNameButNotListed) {
  Vek::VekType const& type = *LinkFlap::LinkFlapProfileSm::_fwkType();
  Vek::VekAttr const* const metadata = type.attr("linkFlapTimeStampMetadata");
  ASSERT_NE(metadata, nullptr);
  EXPECT_EQ(type.attr(metadata->id), metadata);
  EXPECT_EQ(IntrospectionTest::line(*metadata),
            "linkFlapTimeStampMetadata 142 state "
            "LinkFlap::LinkFlapProfileSm::LinkFlapTimeStampMetadata");
  EXPECT_EQ(operations(*metadata), "linkFlapTimeStampMetadata get set");
  for (auto const& attr : type.attrs())
    EXPECT_NE(attr.get(), metadata);
}

}  // namespace
