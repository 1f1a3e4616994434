#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "runtime/vek/Reinstantiation.h"

#include "tests/introspection/support/Machines.h"

namespace {

using namespace IntrospectionTest;
using testing::ElementsAre;
using testing::IsEmpty;

class LinkFlapIntfSmView : public testing::Test, protected Machines {
 protected:
  /// The constructor arguments of the machine of the profile "fast", as it has them.
  List arguments() const {
    return {Vek::Value{profile().profileName()},      Vek::Value{profile().profileConfig()},
            Vek::Value{profile().config()},           Vek::Value{profile().ethPhyIntfConfig()},
            Vek::Value{profile().ethPhyIntfStatus()}, Vek::Value{profile().causeStatus()}};
  }
  List argumentsOf(char const* name) const {
    auto given = arguments();
    given[0] = text(name);
    given[1] = Vek::Value{Vek::Ptr<LinkFlap::ProfileConfig>{}};
    return given;
  }

  LinkFlap::LinkFlapIntfSm::GenericIf_ view{&intf(), false};
};

TEST_F(LinkFlapIntfSmView, ReadsEveryAttribute) {
  EXPECT_EQ(objectOf<Vek::ActivityConfig>(get(view, "vekFwkActivity")), nullptr);
  EXPECT_EQ(objectOf<Interface::EthPhyIntfStatus const>(get(view, "ethPhyIntfStatus")),
            sw.status(kEthernet1).get());
  EXPECT_EQ(objectOf<LinkFlap::Config const>(get(view, "config")), sw.config.get());
  EXPECT_EQ(objectOf<LinkFlap::IntfConfig const>(get(view, "intfConfig")),
            sw.config->intfConfig(kEthernet1).get());
  EXPECT_EQ(objectOf<Interface::EthPhyIntfConfig const>(get(view, "ethPhyIntfConfig")),
            sw.phyConfig(kEthernet1).get());
  EXPECT_EQ(objectOf<Errdisable::CauseStatus>(get(view, "causeStatus")), sw.causeStatus.get());
  EXPECT_EQ(get(view, "intfId"), Vek::Value{kEthernet1});
  EXPECT_EQ(get(view, "enable"), Vek::Value{true});
  EXPECT_EQ(get(view, "initialized"), Vek::Value{true});
  EXPECT_EQ(get(view, "fwkKey"), Vek::Value{kEthernet1});
  EXPECT_EQ(size(view, "linkFlapProfileSm"), 1U);
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapProfileSm>(get(view, "linkFlapProfileSm", text("fast"))),
            &profile());
  EXPECT_TRUE(get(view, "linkFlapProfileSm", text("slow")).empty());
}

TEST_F(LinkFlapIntfSmView, WritingTheSwitchStoresItAndSelectsNothing) {
  set(view, "enable", Vek::Value{false});
  EXPECT_FALSE(intf().enable());
  EXPECT_EQ(sw.profiles(kEthernet1), (std::vector<std::string>{"fast"}));
  EXPECT_THAT(sw.takeMessages(), IsEmpty());
  set(view, "enable", text("true"));
  EXPECT_TRUE(intf().enable());
}

// Pointing a reactor at another object brings the machine up to date with it.
TEST_F(LinkFlapIntfSmView, PointsTheInputsAtOtherObjectsWhichRunsTheirHandlers) {
  auto const config = Vek::make<LinkFlap::Config>();
  set(view, "config", Vek::Value{config});
  EXPECT_EQ(intf().config(), config);
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapIntfSm( Ethernet1 )::handleLinkFlapValues()"));

  auto const settings = Vek::make<LinkFlap::IntfConfig>();  // not enabled
  set(view, "intfConfig", Vek::Value{settings});
  EXPECT_EQ(intf().intfConfig(), settings);
  EXPECT_FALSE(intf().enable());
  EXPECT_THAT(sw.profiles(kEthernet1), IsEmpty());
  EXPECT_THAT(sw.takeMessages(),
              testing::Contains("LinkFlapIntfSm( Ethernet1 )::handleIntfConfigEnabled(Ethernet1)"));
}

TEST_F(LinkFlapIntfSmView, RemovesTheInputsAndReturnsWhatTheyWere) {
  auto const settings = intf().intfConfig();
  EXPECT_EQ(objectOf<LinkFlap::Config const>(del(view, "config")), sw.config.get());
  EXPECT_EQ(objectOf<LinkFlap::IntfConfig const>(del(view, "intfConfig")), settings.get());
  EXPECT_FALSE(intf().config());
  EXPECT_FALSE(intf().intfConfig());
  EXPECT_EQ(objectOf<LinkFlap::IntfConfig const>(del(view, "intfConfig")), nullptr);
  // An empty pointer, written, does the same; where there is no reactor, one is made.
  set(view, "config", Vek::Value{sw.config});
  EXPECT_EQ(intf().config(), sw.config);
  set(view, "config", text("null"));
  EXPECT_FALSE(intf().config());
  EXPECT_THAT(sw.takeMessages(), IsEmpty());
}

TEST_F(LinkFlapIntfSmView, CallsEveryHandlerWithItsArgument) {
  (void)call(view, "handleLinkFlapValues");
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapIntfSm( Ethernet1 )::handleLinkFlapValues()"));
  (void)call(view, "handleProfileList", {text("any [name]")});
  EXPECT_THAT(sw.takeMessages(),
              testing::Contains("LinkFlapIntfSm( Ethernet1 )::handleProfileList(any [name])"));
  sw.takeTraces();
  (void)call(view, "handleIntfConfigEnabled", {text("\"any [name]\"")});
  EXPECT_THAT(sw.takeMessages(),
              testing::Contains("LinkFlapIntfSm( Ethernet1 )::handleIntfConfigEnabled(any "
                                "[name])"));
  set(view, "initialized", Vek::Value{false});
  (void)call(view, "handleInitialized");
  EXPECT_TRUE(intf().initialized());
  EXPECT_THAT(sw.takeMessages(),
              testing::Contains("LinkFlapIntfSm( Ethernet1 )::handleInitialized()"));
}

TEST_F(LinkFlapIntfSmView, SwitchesByHandlerAndByOperation) {
  (void)call(view, "hasNotificationActiveIs", {Vek::Value{false}});
  EXPECT_FALSE(intf().hasNotificationActive());
  EXPECT_FALSE(profile().hasNotificationActive());
  view.hasNotificationActiveIs(true);
  EXPECT_TRUE(profile().hasNotificationActive());
  (void)call(view, "vekDoZombieReactors", {Vek::Value{true}});
  EXPECT_TRUE(intf().vekMarkedForDeletion());
  sw.config->maxFlapsIs(77);
  EXPECT_THAT(sw.takeMessages(), IsEmpty());
  view.vekDoZombieReactors(false);
  EXPECT_FALSE(intf().vekMarkedForDeletion());
  sw.config->maxFlapsIs(78);
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapIntfSm( Ethernet1 )::handleLinkFlapValues()"));

  LinkFlap::LinkFlapIntfSm::GenericIf_ readOnly{&intf(), true};
  EXPECT_EQ(thrownBy([&] { readOnly.hasNotificationActiveIs(false); }), kConst);
  EXPECT_EQ(thrownBy([&] { readOnly.vekDoZombieReactors(true); }), kConst);
}

TEST_F(LinkFlapIntfSmView, RefusesWhatItDoesNotTake) {
  EXPECT_EQ(thrownBy([&] { call(view, "handleProfileList"); }),
            "Vek::RangeException 1: argument profileName of handleProfileList is missing");
  EXPECT_EQ(thrownBy([&] { call(view, "handleLinkFlapValues", {text("a")}); }),
            "Vek::Exception 4: unknown argument a");
  EXPECT_EQ(thrownBy([&] { call(view, "handleProfileList", {Vek::Value{true}}); }),
            "Vek::TypeException 3: LinkFlapIntfSm");
  EXPECT_EQ(thrownBy([&] { set(view, "enable", Vek::Value{1.0}); }),
            "Vek::TypeException 3: LinkFlapIntfSm");
  EXPECT_EQ(thrownBy([&] { get(view, "linkFlapProfileSm", Vek::Value{kEthernet1}); }),
            "Vek::TypeException 3: LinkFlapIntfSm");
  EXPECT_EQ(thrownBy([&] { set(view, "enable", text("truely")); }),
            "Vek::RangeException 1: cannot convert \"truely\" to bool");
  EXPECT_EQ(thrownBy([&] { set(view, "enable", text("true!")); }),
            "Vek::RangeException 1: junk at column 5 deserializing true!");
}

TEST_F(LinkFlapIntfSmView, MakesAMemberAndReturnsItWhenItIsThere) {
  auto const given = argumentsOf("odd \"name\"");
  Vek::Value const made = instantiate(view, "linkFlapProfileSm", given);
  EXPECT_EQ(made.type()->name, "LinkFlap::LinkFlapProfileSm");
  LinkFlap::LinkFlapProfileSm* const machine = sw.profileSm(kEthernet1, "odd \"name\"");
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapProfileSm>(made), machine);
  EXPECT_TRUE(machine->hasNotificationActive());
  EXPECT_EQ(machine->intfSm(), &intf());
  EXPECT_EQ(instantiate(view, "linkFlapProfileSm", given), made);
  EXPECT_EQ(size(view, "linkFlapProfileSm"), 2U);
  EXPECT_EQ(
      objectOf<LinkFlap::LinkFlapProfileSm>(instantiate(view, "linkFlapProfileSm", arguments())),
      &profile());
}

TEST_F(LinkFlapIntfSmView, RefusesToMakeAMemberAgainFromOtherObjects) {
  char const* const names[]{
      "", "_profileConfig", "_config", "_ethPhyIntfConfig", "_ethPhyIntfStatus", "_causeStatus"};
  Vek::Value const others[]{{},
                            Vek::Value{Vek::Ptr<LinkFlap::ProfileConfig>{}},
                            Vek::Value{Vek::make<LinkFlap::Config>()},
                            Vek::Value{Vek::make<Interface::EthPhyIntfConfig>(kEthernet1)},
                            Vek::Value{Vek::make<Interface::EthPhyIntfStatus>(kEthernet1)},
                            Vek::Value{Vek::make<Errdisable::CauseStatus>()}};
  for (std::size_t i = 1; i < 6; ++i) {
    auto given = arguments();
    auto const held = std::get<Vek::Ptr<Vek::PtrInterface const>>(given[i].storage());
    auto const other = std::get<Vek::Ptr<Vek::PtrInterface const>>(others[i].storage());
    given[i] = others[i];
    EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapProfileSm", given); }),
              std::string{"Vek::NameInUseException 2: Reinstantiating the pointer interface where "
                          "constructor parameter attribute "} +
                  names[i] + " has a different value of " +
                  Vek::representation(other.get()).charPtr() + " than the current value of " +
                  Vek::representation(held.get()).charPtr() + " not allowed");
  }
  EXPECT_EQ(size(view, "linkFlapProfileSm"), 1U);
}

TEST_F(LinkFlapIntfSmView, RemovesAMember) {
  auto const held = Vek::Ptr<LinkFlap::LinkFlapProfileSm>{&profile()};
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapProfileSm>(del(view, "linkFlapProfileSm", text("fast"))),
            held.get());
  EXPECT_EQ(held->intfSm(), nullptr);
  EXPECT_EQ(size(view, "linkFlapProfileSm"), 0U);
  EXPECT_TRUE(del(view, "linkFlapProfileSm", text("fast")).empty());
}

TEST_F(LinkFlapIntfSmView, AMachineWithoutAStatusHasTheNullIdentifier) {
  auto const bare = LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(nullptr, sw.config, nullptr, nullptr,
                                                               sw.causeStatus);
  LinkFlap::LinkFlapIntfSm::GenericIf_ viewOfBare{bare, true};
  EXPECT_EQ(get(viewOfBare, "intfId"), Vek::Value{Tarn::IntfId{}});
  EXPECT_EQ(getText(viewOfBare, "fwkKey"), "\"\"");
  EXPECT_EQ(getText(viewOfBare, "ethPhyIntfStatus"), "null");
}

}  // namespace
