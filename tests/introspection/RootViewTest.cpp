#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "runtime/vek/ObjectPath.h"

#include "tests/introspection/support/Machines.h"
#include "tests/statemachines/Watchers.h"

namespace {

using namespace IntrospectionTest;
using testing::StartsWith;

class RootView : public testing::Test {
 protected:
  /// The seven constructor arguments of the machine, as the switch has them.
  List arguments() const {
    return {Vek::Value{sw.activity},         Vek::Value{sw.configDir}, Vek::Value{sw.statusDir},
            Vek::Value{sw.errdisableConfig}, Vek::Value{sw.config},    Vek::Value{sw.causeStatus},
            Vek::Value{sw.causeName}};
  }

  Switch sw;
  LinkFlap::Root::GenericIf_ view{sw.root, false};
};

TEST_F(RootView, ReadsTheNamesAndTheMember) {
  EXPECT_EQ(get(view, "name"), Vek::Value{Vek::Name{"switch"}});
  EXPECT_EQ(getText(view, "fullName"), "switch");
  EXPECT_EQ(get(view, "uriPath"), Vek::Value{Vek::String{"/switch"}});
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(get(view, "linkFlapSm")), nullptr);
  EXPECT_EQ(getText(view, "linkFlapSm"), "null");
  sw.start();
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(get(view, "linkFlapSm")), &sw.machine());
  EXPECT_EQ(get(view, "changes"), Vek::Value{1U});
}

TEST_F(RootView, MakesTheMachine) {
  sw.addInterface(kEthernet1);
  auto const watched = RootWatcher::on(sw.root, [] {});
  Vek::Value const made = instantiate(view, "linkFlapSm", arguments());
  EXPECT_EQ(made.type()->name, "LinkFlap::LinkFlapSm");
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(made), &sw.machine());
  EXPECT_EQ(sw.machine().causeName(), "link-flap");
  EXPECT_EQ(sw.machine().vekFwkActivity(), sw.activity);
  EXPECT_EQ(sw.machine().ethPhyIntfConfigDir(), sw.configDir);
  EXPECT_EQ(sw.machine().ethPhyIntfStatusDir(), sw.statusDir);
  EXPECT_EQ(sw.machine().errdisableConfig(), sw.errdisableConfig);
  EXPECT_EQ(sw.machine().config(), sw.config);
  EXPECT_EQ(sw.machine().causeStatus(), sw.causeStatus);
  EXPECT_NE(sw.intfSm(kEthernet1), nullptr);
  EXPECT_TRUE(sw.machine().hasNotificationActive());
}

TEST_F(RootView, ReturnsTheMachineItHasForTheSameArgumentsAndTellsNobody) {
  sw.start();
  LinkFlap::LinkFlapSm* const held = &sw.machine();
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
  auto again = arguments();
  auto const activity = Vek::make<Vek::ActivityConfig>();
  again[0] = Vek::Value{activity};  // the activity alone is no reason for another machine
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(instantiate(view, "linkFlapSm", again)), held);
  EXPECT_EQ(held->vekFwkActivity(), activity);
  EXPECT_EQ(told, 0);
}

TEST_F(RootView, ReplacesTheMachineWhenAnArgumentDiffers) {
  for (std::size_t i = 1; i < 7; ++i) {
    (void)instantiate(view, "linkFlapSm", arguments());
    Vek::Value const held = get(view, "linkFlapSm");
    int told = 0;
    auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
    auto other = arguments();
    other[1] = i == 1 ? Vek::Value{Vek::make<Interface::AllEthPhyIntfConfigDir>()} : other[1];
    other[2] = i == 2 ? Vek::Value{Vek::make<Interface::AllEthPhyIntfStatusDir>()} : other[2];
    other[3] = i == 3 ? Vek::Value{Vek::make<Errdisable::Config>()} : other[3];
    other[4] = i == 4 ? Vek::Value{Vek::make<LinkFlap::Config>()} : other[4];
    other[5] = i == 5 ? Vek::Value{Vek::make<Errdisable::CauseStatus>()} : other[5];
    other[6] = i == 6 ? text("other") : other[6];
    Vek::Value const made = instantiate(view, "linkFlapSm", other);
    EXPECT_NE(objectOf<LinkFlap::LinkFlapSm>(made), objectOf<LinkFlap::LinkFlapSm>(held)) << i;
    EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(made), &sw.machine()) << i;
    EXPECT_EQ(told, 1) << i;
  }
}

TEST_F(RootView, TakesTheArgumentsAsTextToo) {
  auto& roots = Vek::PathRoots::global();
  roots.rootIs("activity", sw.activity);
  roots.rootIs("configDir", sw.configDir);
  roots.rootIs("statusDir", sw.statusDir);
  roots.rootIs("errdisableConfig", sw.errdisableConfig);
  roots.rootIs("config", sw.config);
  roots.rootIs("causeStatus", sw.causeStatus);
  List const asText{text("activity"),         text("configDir"), text("statusDir"),
                    text("errdisableConfig"), text("config"),    text("causeStatus"),
                    text("link-flap")};
  Vek::Value const made = instantiate(view, "linkFlapSm", asText);
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(made), &sw.machine());
  EXPECT_EQ(instantiate(view, "linkFlapSm", arguments()), made);

  auto wrong = asText;
  wrong[1] = text("nowhere");
  EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", wrong); }),
            "Vek::RangeException 1: cannot convert \"nowhere\" to "
            "Interface::AllEthPhyIntfConfigDir");
  wrong[1] = text("statusDir");  // an object, but of another type
  EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", wrong); }),
            "Vek::RangeException 1: cannot convert \"statusDir\" to "
            "Interface::AllEthPhyIntfConfigDir");
  wrong[1] = text("configDir, please");
  EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", wrong); }),
            "Vek::RangeException 1: junk at column 10 deserializing configDir, please");
  for (char const* const name :
       {"activity", "configDir", "statusDir", "errdisableConfig", "config", "causeStatus"})
    roots.rootDel(name);
}

TEST_F(RootView, RefusesAWrongNumberOfArguments) {
  auto few = arguments();
  few.pop_back();
  EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", few); }),
            "Vek::RangeException 1: argument causeName of linkFlapSm is missing");
  EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", {}); }),
            "Vek::RangeException 1: argument vekFwkActivity of linkFlapSm is missing");
  auto many = arguments();
  many.push_back(text("surplus"));
  EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", many); }),
            "Vek::Exception 4: unknown argument surplus");
  EXPECT_FALSE(sw.root->linkFlapSm());
}

TEST_F(RootView, RefusesAnArgumentOfAnotherType) {
  for (std::size_t i = 0; i < 7; ++i) {
    auto wrong = arguments();
    wrong[i] = Vek::Value{1.5};
    EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", wrong); }),
              "Vek::TypeException 3: Root");
    wrong[i] = Vek::Value{};
    EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", wrong); }),
              "Vek::TypeException 3: Root");
  }
  auto swapped = arguments();
  std::swap(swapped[1], swapped[2]);
  EXPECT_EQ(thrownBy([&] { instantiate(view, "linkFlapSm", swapped); }),
            "Vek::TypeException 3: Root");
  EXPECT_FALSE(sw.root->linkFlapSm());
}

// Two members of the directory that are one interface: the second asks for a machine that is there,
// with another configuration. What building throws reaches the tool, and the old machine stays.
TEST_F(RootView, PassesOnWhatBuildingThrows) {
  sw.start();
  Vek::Value const held = get(view, "linkFlapSm");
  auto const statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
  auto const status = Vek::make<Interface::EthPhyIntfStatus>(kEthernet1);
  for (char const* const name : {"Ethernet1", "Ethernet2"}) {
    sw.addPhyConfig(Tarn::IntfId{name});
    statusDir->intfStatusIs(Tarn::IntfId{name}, status);
  }
  auto other = arguments();
  other[2] = Vek::Value{statusDir};
  EXPECT_THAT(thrownBy([&] { instantiate(view, "linkFlapSm", other); }),
              StartsWith("Vek::NameInUseException 2: Reinstantiating the pointer interface where "
                         "constructor parameter attribute _ethPhyIntfConfig has a different value "
                         "of 0x"));
  EXPECT_EQ(get(view, "linkFlapSm"), held);
}

TEST_F(RootView, TakesTheMachineOut) {
  sw.start();
  auto const held = sw.root->linkFlapSm();
  int told = 0;
  auto const watcher = RootWatcher::on(sw.root, [&] { ++told; });
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(del(view, "linkFlapSm")), held.get());
  EXPECT_FALSE(sw.root->linkFlapSm());
  EXPECT_EQ(told, 1);
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(del(view, "linkFlapSm")), nullptr);
  EXPECT_EQ(told, 1);
}

TEST_F(RootView, AnOperationThatFailsLeavesTheResultAlone) {
  Vek::Value result{7U};
  EXPECT_EQ(thrownBy([&] {
              view.attributeOp({LinkFlap::Root::kLinkFlapSm, OpCode::instantiate, {}}, {}, result);
            }),
            "Vek::RangeException 1: argument vekFwkActivity of linkFlapSm is missing");
  EXPECT_EQ(result, Vek::Value{7U});
}

}  // namespace
