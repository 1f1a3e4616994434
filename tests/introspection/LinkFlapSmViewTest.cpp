#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "runtime/vek/Reinstantiation.h"

#include "tests/introspection/support/Machines.h"

namespace {

using namespace IntrospectionTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class LinkFlapSmView : public testing::Test, protected Machines {
 protected:
  /// The constructor arguments of the machine of Ethernet1, as it has them.
  List arguments() const {
    return {Vek::Value{intf().ethPhyIntfStatus()}, Vek::Value{intf().config()},
            Vek::Value{intf().intfConfig()}, Vek::Value{intf().ethPhyIntfConfig()},
            Vek::Value{intf().causeStatus()}};
  }
  /// Those of an interface that is not in the directories.
  List argumentsOf(Tarn::IntfId const& id) const {
    return {Vek::Value{Vek::make<Interface::EthPhyIntfStatus>(id)}, Vek::Value{sw.config},
            Vek::Value{Vek::Ptr<LinkFlap::IntfConfig>{}},
            Vek::Value{Vek::make<Interface::EthPhyIntfConfig>(id)}, Vek::Value{sw.causeStatus}};
  }

  LinkFlap::LinkFlapSm::GenericIf_ view{&top(), false};
};

TEST_F(LinkFlapSmView, ReadsEveryAttribute) {
  EXPECT_EQ(objectOf<Vek::ActivityConfig>(get(view, "vekFwkActivity")), sw.activity.get());
  EXPECT_EQ(objectOf<Interface::AllEthPhyIntfConfigDir const>(get(view, "ethPhyIntfConfigDir")),
            sw.configDir.get());
  EXPECT_EQ(objectOf<Interface::AllEthPhyIntfStatusDir const>(get(view, "ethPhyIntfStatusDir")),
            sw.statusDir.get());
  EXPECT_EQ(objectOf<Errdisable::Config const>(get(view, "errdisableConfig")),
            sw.errdisableConfig.get());
  EXPECT_EQ(objectOf<LinkFlap::Config const>(get(view, "config")), sw.config.get());
  EXPECT_EQ(objectOf<Errdisable::CauseStatus>(get(view, "causeStatus")), sw.causeStatus.get());
  EXPECT_EQ(get(view, "causeName"), text("link-flap"));
  EXPECT_EQ(get(view, "initialized"), Vek::Value{true});
  EXPECT_EQ(size(view, "linkFlapIntfSm"), 1U);
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(get(view, "linkFlapIntfSm", Vek::Value{kEthernet1})),
            &intf());
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(get(view, "linkFlapIntfSm", text("Ethernet1"))),
            &intf());
}

TEST_F(LinkFlapSmView, AnAbsentMemberIsNoValueAtAll) {
  EXPECT_TRUE(get(view, "linkFlapIntfSm", text("Ethernet2")).empty());
  EXPECT_EQ(getText(view, "linkFlapIntfSm", text("Ethernet2")), "");
}

TEST_F(LinkFlapSmView, WritesAndClearsTheActivity) {
  auto const activity = Vek::make<Vek::ActivityConfig>();
  set(view, "vekFwkActivity", Vek::Value{activity});
  EXPECT_EQ(top().vekFwkActivity(), activity);
  set(view, "vekFwkActivity", text("null"));
  EXPECT_FALSE(top().vekFwkActivity());
}

TEST_F(LinkFlapSmView, PointsTheInputsAtOtherObjects) {
  auto const configDir = Vek::make<Interface::AllEthPhyIntfConfigDir>();
  auto const statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
  auto const errdisableConfig = Vek::make<Errdisable::Config>();
  auto const config = Vek::make<LinkFlap::Config>();
  set(view, "ethPhyIntfConfigDir", Vek::Value{configDir});
  set(view, "ethPhyIntfStatusDir", Vek::Value{statusDir});
  set(view, "errdisableConfig", Vek::Value{errdisableConfig});
  set(view, "config", Vek::Value{config});
  EXPECT_EQ(top().ethPhyIntfConfigDir(), configDir);
  EXPECT_EQ(top().ethPhyIntfStatusDir(), statusDir);
  EXPECT_EQ(top().errdisableConfig(), errdisableConfig);
  EXPECT_EQ(top().config(), config);
  EXPECT_THAT(sw.takeMessages(), IsEmpty());  // no handler runs

  // The machine does watch the new objects: an interface that comes is admitted.
  configDir->newIntfConfig(kEthernet1);
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapSm::handleIntf(Ethernet1)", "deleteLinkFlapIntfSm(Ethernet1)"));
}

TEST_F(LinkFlapSmView, RemovesTheInputsAndReturnsWhatTheyWere) {
  EXPECT_EQ(objectOf<Interface::AllEthPhyIntfConfigDir const>(del(view, "ethPhyIntfConfigDir")),
            sw.configDir.get());
  EXPECT_EQ(objectOf<Interface::AllEthPhyIntfStatusDir const>(del(view, "ethPhyIntfStatusDir")),
            sw.statusDir.get());
  EXPECT_EQ(objectOf<Errdisable::Config const>(del(view, "errdisableConfig")),
            sw.errdisableConfig.get());
  EXPECT_EQ(objectOf<LinkFlap::Config const>(del(view, "config")), sw.config.get());
  EXPECT_FALSE(top().ethPhyIntfConfigDir());
  EXPECT_FALSE(top().ethPhyIntfStatusDir());
  EXPECT_FALSE(top().errdisableConfig());
  EXPECT_FALSE(top().config());
  EXPECT_EQ(getText(view, "config"), "null");
  EXPECT_EQ(objectOf<LinkFlap::Config const>(del(view, "config")), nullptr);
}

TEST_F(LinkFlapSmView, CallsEveryHandlerWithItsArgument) {
  sw.addInterface(Tarn::IntfId{"Ethernet2"});
  (void)sw.takeTraces();
  (void)call(view, "handleIntf", {Vek::Value{Tarn::IntfId{"Ethernet9"}}});
  EXPECT_THAT(sw.takeMessages(),
              ElementsAre("LinkFlapSm::handleIntf(Ethernet9)", "deleteLinkFlapIntfSm(Ethernet9)"));
  (void)call(view, "handleIntf", {text("\"Ethernet 9/1\"")});
  EXPECT_THAT(sw.takeMessages(), ElementsAre("LinkFlapSm::handleIntf(Ethernet 9/1)",
                                             "deleteLinkFlapIntfSm(Ethernet 9/1)"));
  (void)call(view, "handleDisabled", {text("another cause")});
  EXPECT_THAT(sw.takeMessages(), ElementsAre("LinkFlapSm::handleDisabled(another cause)"));
  (void)call(view, "handleProfileConfig", {text("nobody's")});
  EXPECT_THAT(sw.takeMessages(), ElementsAre("LinkFlapSm::handleProfileConfig(nobody's)"));
  (void)call(view, "handleDefaultProfileList", {text("p")});
  EXPECT_THAT(sw.takeMessages(), testing::Contains("LinkFlapSm::handleDefaultProfileList(p)"));
  EXPECT_TRUE(call(view, "handleDisabled", {text("another cause")}).empty());
}

TEST_F(LinkFlapSmView, CallsTheHandlersThatSwitch) {
  (void)call(view, "hasNotificationActiveIs", {Vek::Value{false}});
  EXPECT_FALSE(top().hasNotificationActive());
  EXPECT_FALSE(intf().hasNotificationActive());
  (void)call(view, "hasNotificationActiveIs", {text("true")});
  EXPECT_TRUE(top().hasNotificationActive());
  (void)call(view, "vekDoZombieReactors", {text("1")});
  EXPECT_TRUE(top().vekMarkedForDeletion());
  sw.statusDir->intfStatusDel(kEthernet1);
  EXPECT_THAT(sw.takeMessages(), IsEmpty());
  (void)call(view, "vekDoZombieReactors", {text("0")});
  EXPECT_FALSE(top().vekMarkedForDeletion());
}

// The same switches, as operations of the view.
TEST_F(LinkFlapSmView, ForwardsTheSwitches) {
  view.hasNotificationActiveIs(false);
  EXPECT_FALSE(top().hasNotificationActive());
  view.hasNotificationActiveIs(true);
  view.vekDoZombieReactors(true);
  EXPECT_TRUE(top().vekMarkedForDeletion());
  view.vekDoZombieReactors(false);
  EXPECT_FALSE(top().vekMarkedForDeletion());

  LinkFlap::LinkFlapSm::GenericIf_ readOnly{&top(), true};
  EXPECT_EQ(thrownBy([&] { readOnly.hasNotificationActiveIs(false); }), kConst);
  EXPECT_EQ(thrownBy([&] { readOnly.vekDoZombieReactors(true); }), kConst);
  EXPECT_TRUE(top().hasNotificationActive());
  EXPECT_FALSE(top().vekMarkedForDeletion());
}

TEST_F(LinkFlapSmView, RunsTheInitialPassAgainWhenItsMarkIsTakenBack) {
  set(view, "initialized", Vek::Value{false});
  EXPECT_EQ(get(view, "initialized"), Vek::Value{false});
  (void)call(view, "handleInitialized");
  EXPECT_TRUE(top().initialized());
  auto const messages = sw.takeMessages();
  EXPECT_THAT(messages, testing::Contains("LinkFlapSm::handleInitialized()"));
  EXPECT_THAT(messages, testing::Contains("LinkFlapSm::handleIntf(Ethernet1)"));
}

TEST_F(LinkFlapSmView, RefusesArgumentsThatAHandlerDoesNotTake) {
  EXPECT_EQ(thrownBy([&] { call(view, "handleIntf"); }),
            "Vek::RangeException 1: argument intfId of handleIntf is missing");
  EXPECT_EQ(thrownBy([&] {
              call(view, "handleIntf", {text("a"), text("b c")});
            }),
            "Vek::Exception 4: unknown argument \"b c\"");
  EXPECT_EQ(thrownBy([&] { call(view, "handleInitialized", {Vek::Value{3U}}); }),
            "Vek::Exception 4: unknown argument 3");
  EXPECT_EQ(thrownBy([&] { call(view, "handleIntf", {Vek::Value{1U}}); }),
            "Vek::TypeException 3: LinkFlapSm");
  EXPECT_EQ(thrownBy([&] { call(view, "handleDisabled", {Vek::Value{kEthernet1}}); }),
            "Vek::TypeException 3: LinkFlapSm");
  EXPECT_EQ(thrownBy([&] { call(view, "handleIntf", {text("Ethernet1 ")}); }),
            "Vek::RangeException 1: junk at column 10 deserializing Ethernet1 ");
  EXPECT_EQ(thrownBy([&] { call(view, "vekDoZombieReactors", {text("maybe")}); }),
            "Vek::RangeException 1: cannot convert \"maybe\" to bool");
  EXPECT_THAT(sw.takeMessages(), IsEmpty());
}

TEST_F(LinkFlapSmView, RefusesValuesThatAnAttributeDoesNotTake) {
  EXPECT_EQ(thrownBy([&] { operate(view, OpCode::set, "initialized", {}, {}); }),
            "Vek::RangeException 1: a value is missing");
  EXPECT_EQ(thrownBy([&] {
              operate(view, OpCode::set, "initialized", {}, {Vek::Value{false}, Vek::Value{true}});
            }),
            "Vek::Exception 4: unknown argument true");
  EXPECT_EQ(thrownBy([&] { set(view, "initialized", Vek::Value{1U}); }),
            "Vek::TypeException 3: LinkFlapSm");
  EXPECT_EQ(thrownBy([&] { set(view, "config", Vek::Value{sw.errdisableConfig}); }),
            "Vek::TypeException 3: LinkFlapSm");
  EXPECT_EQ(thrownBy([&] { operate(view, OpCode::get, "initialized", {}, {Vek::Value{1U}}); }),
            "Vek::Exception 4: unknown argument 1");
  EXPECT_EQ(thrownBy([&] { operate(view, OpCode::del, "config", {}, {text("config")}); }),
            "Vek::Exception 4: unknown argument config");
  EXPECT_EQ(thrownBy([&] { operate(view, OpCode::size, "linkFlapIntfSm", {}, {text("x")}); }),
            "Vek::Exception 4: unknown argument x");
  EXPECT_TRUE(top().initialized());
  EXPECT_EQ(top().config(), sw.config);
}

TEST_F(LinkFlapSmView, RefusesAnIndexThatIsNoKey) {
  EXPECT_EQ(thrownBy([&] { get(view, "linkFlapIntfSm", Vek::Value{1U}); }),
            "Vek::TypeException 3: LinkFlapSm");
  EXPECT_EQ(thrownBy([&] { get(view, "linkFlapIntfSm", text("Ethernet1]")); }),
            "Vek::RangeException 1: junk at column 10 deserializing Ethernet1]");
  EXPECT_EQ(thrownBy([&] { del(view, "linkFlapIntfSm", text("")); }),
            "Vek::RangeException 1: cannot convert \"\" to Tarn::IntfId");
}

TEST_F(LinkFlapSmView, MakesAMemberAndReturnsItWhenItIsThere) {
  Tarn::IntfId const ethernet7{"Ethernet7"};
  auto const given = argumentsOf(ethernet7);
  Vek::Value const made = instantiate(view, "linkFlapIntfSm", given);
  EXPECT_EQ(made.type()->name, "LinkFlap::LinkFlapIntfSm");
  EXPECT_EQ(size(view, "linkFlapIntfSm"), 2U);
  LinkFlap::LinkFlapIntfSm* const machine = sw.intfSm(ethernet7);
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(made), machine);
  EXPECT_TRUE(machine->hasNotificationActive());
  EXPECT_EQ(instantiate(view, "linkFlapIntfSm", given), made);
  EXPECT_EQ(size(view, "linkFlapIntfSm"), 2U);
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(instantiate(view, "linkFlapIntfSm", arguments())),
            &intf());
}

// Each parameter in turn, with its own message; the pointers are of one run and not compared.
TEST_F(LinkFlapSmView, RefusesToMakeAMemberAgainFromOtherObjects) {
  char const* const names[]{"_ethPhyIntfStatus", "_config", "_intfConfig", "_ethPhyIntfConfig",
                            "_causeStatus"};
  Vek::Value const others[]{Vek::Value{Vek::make<Interface::EthPhyIntfStatus>(kEthernet1)},
                            Vek::Value{Vek::make<LinkFlap::Config>()},
                            Vek::Value{Vek::make<LinkFlap::IntfConfig>()},
                            Vek::Value{Vek::make<Interface::EthPhyIntfConfig>(kEthernet1)},
                            Vek::Value{Vek::make<Errdisable::CauseStatus>()}};
  for (std::size_t i = 0; i < 5; ++i) {
    auto given = arguments();
    auto const held = std::get<Vek::Ptr<Vek::PtrInterface const>>(given[i].storage());
    auto const other = std::get<Vek::Ptr<Vek::PtrInterface const>>(others[i].storage());
    given[i] = others[i];
    EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapIntfSm", given); }),
              std::string{"Vek::NameInUseException 2: Reinstantiating the pointer interface where "
                          "constructor parameter attribute "} +
                  names[i] + " has a different value of " +
                  Vek::representation(other.get()).charPtr() + " than the current value of " +
                  Vek::representation(held.get()).charPtr() + " not allowed");
  }
  EXPECT_EQ(size(view, "linkFlapIntfSm"), 1U);
}

TEST_F(LinkFlapSmView, RemovesAMember) {
  auto const held = Vek::Ptr<LinkFlap::LinkFlapIntfSm>{&intf()};
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(del(view, "linkFlapIntfSm", text("Ethernet1"))),
            held.get());
  EXPECT_EQ(size(view, "linkFlapIntfSm"), 0U);
  EXPECT_TRUE(del(view, "linkFlapIntfSm", text("Ethernet1")).empty());
  EXPECT_THAT(sw.takeWrites(), IsEmpty());  // the record is not the collection's business
}

TEST_F(LinkFlapSmView, AMachineLeftByItsRootStaysUsable) {
  (void)sw.root->linkFlapSmDel();
  EXPECT_EQ(get(view, "causeName"), text("link-flap"));
  EXPECT_EQ(size(view, "linkFlapIntfSm"), 1U);
}

class LinkFlapSmViewDeathTest : public LinkFlapSmView {};

// What a handler asserts, it asserts for tools too.
TEST_F(LinkFlapSmViewDeathTest, AHandlersAssertionHoldsForACallByName) {
  EXPECT_DEATH(call(view, "handleInitialized"),
               "LinkFlapSm:460: void LinkFlap::LinkFlapSm::handleInitialized\\(\\): Assertion "
               "`!initialized\\(\\)' failed.");
  set(view, "initialized", Vek::Value{false});
  EXPECT_DEATH(call(view, "handleIntf", {text("Ethernet1")}),
               "LinkFlapSm:402: void LinkFlap::LinkFlapSm::handleIntf\\(Tarn::IntfId\\): Assertion "
               "`initialized\\(\\)' failed.");
}

}  // namespace
