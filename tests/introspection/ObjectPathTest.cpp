#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "runtime/vek/TextConversion.h"

#include "tests/introspection/support/Machines.h"
#include "tests/introspection/support/OddNames.h"
#include "tests/introspection/support/Paths.h"

namespace {

using namespace IntrospectionTest;
using testing::StartsWith;

class ObjectPath : public testing::Test, protected Machines {
 protected:
  ObjectPath() { roots.add(sw); }

  /// What is wrong with a path.
  static std::string refusal(std::string const& path) {
    return thrownBy([&] { (void)Vek::pathTarget(path, true); });
  }
  static Vek::PtrInterface const* named(std::string const& path) {
    auto const target = Vek::pathTarget(path, true);
    return target.attr == nullptr ? target.object.get() : nullptr;
  }
  void expectThereAndBack(Vek::PtrInterface const& object, std::string const& path) {
    EXPECT_EQ(Vek::objectPath(object), path);
    EXPECT_EQ(named(path), &object) << path;
    char const* at = path.data();
    EXPECT_EQ(Vek::objectOfPath(at, path.data() + path.size()).get(), &object) << path;
    EXPECT_EQ(at, path.data() + path.size()) << path;
  }

  Roots roots;
};

TEST_F(ObjectPath, NamesTheMachinesFromTheRootDown) {
  expectThereAndBack(*sw.root, "root");
  expectThereAndBack(top(), "root/linkFlapSm");
  expectThereAndBack(intf(), "root/linkFlapSm/linkFlapIntfSm[Ethernet1]");
  expectThereAndBack(profile(),
                     "root/linkFlapSm/linkFlapIntfSm[Ethernet1]/linkFlapProfileSm[fast]");
}

TEST_F(ObjectPath, NamesTheStateObjectsFromTheirOwnRoots) {
  expectThereAndBack(*sw.config, "config");
  expectThereAndBack(*sw.activity, "activity");
  expectThereAndBack(*sw.config->profileConfig("fast"), "config/profileConfig[fast]");
  expectThereAndBack(*sw.config->intfConfig(kEthernet1), "config/intfConfig[Ethernet1]");
  expectThereAndBack(*sw.status(kEthernet1), "ethPhyIntfStatusDir/intfStatus[Ethernet1]");
  expectThereAndBack(*sw.phyConfig(kEthernet1), "ethPhyIntfConfigDir/intfConfig[Ethernet1]");
}

// A member that stands under another key than its own name is found all the same.
TEST_F(ObjectPath, NamesAMemberUnderAnotherKey) {
  auto const config = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"its name"});
  sw.config->profileConfigIs("its key", config);
  expectThereAndBack(*config, "config/profileConfig[\"its key\"]");
}

TEST_F(ObjectPath, IsTheTextOfAReference) {
  EXPECT_EQ(Vek::Value{Vek::Ptr<LinkFlap::LinkFlapSm>{&top()}}.text(), "root/linkFlapSm");
  LinkFlap::LinkFlapProfileSm::GenericIf_ view{&profile(), true};
  EXPECT_EQ(getText(view, "intfSm"), "root/linkFlapSm/linkFlapIntfSm[Ethernet1]");
  EXPECT_EQ(getText(view, "profileConfig"), "config/profileConfig[fast]");
  EXPECT_EQ(getText(view, "vekFwkActivity"), "null");
}

TEST_F(ObjectPath, AnObjectThatNoRootLeadsToHasAnAddressForText) {
  auto const loose = Vek::make<LinkFlap::Config>();
  EXPECT_THAT(Vek::objectPath(*loose), StartsWith("0x"));
  Vek::Ptr<LinkFlap::LinkFlapIntfSm> const held{&intf()};
  Vek::Ptr<LinkFlap::LinkFlapProfileSm> const heldBelow{&profile()};
  (void)top().linkFlapIntfSmDel(kEthernet1);
  EXPECT_THAT(Vek::objectPath(*held), StartsWith("0x"));
  EXPECT_THAT(Vek::objectPath(*heldBelow), StartsWith("0x"));
  // An address is no path: it reads back as nothing.
  EXPECT_EQ(thrownBy([&] { (void)Vek::strepToValue<Vek::Ptr<LinkFlap::Config>>("0x5500"); }),
            "Vek::RangeException 1: cannot convert \"0x5500\" to LinkFlap::Config");
}

TEST_F(ObjectPath, ReadsBackForEveryNameOfAnInterfaceAndOfAProfile) {
  for (std::string const& odd : oddNames()) {
    Tarn::IntfId const id{Vek::String{odd}};
    Vek::String const name{odd};
    sw.addInterface(id);
    auto const settings = Vek::make<LinkFlap::IntfConfig>(Vek::Name{name});
    settings->enabledIs(true);
    settings->profileListIs(name, true);
    sw.config->profileConfigIs(name, Vek::make<LinkFlap::ProfileConfig>(Vek::Name{name}));
    sw.config->intfConfigIs(id, settings);
    auto const machine = top().linkFlapIntfSm(id);
    ASSERT_TRUE(machine) << odd;
    auto const below = machine->linkFlapProfileSm(name);
    ASSERT_TRUE(below) << odd;

    std::string const key = '[' + Vek::quotedText(odd) + ']';
    expectThereAndBack(*machine, "root/linkFlapSm/linkFlapIntfSm" + key);
    expectThereAndBack(*below, "root/linkFlapSm/linkFlapIntfSm" + key + "/linkFlapProfileSm" + key);
    expectThereAndBack(*settings, "config/intfConfig" + key);
    expectThereAndBack(*sw.config->profileConfig(name), "config/profileConfig" + key);
    expectThereAndBack(*sw.status(id), "ethPhyIntfStatusDir/intfStatus" + key);
    EXPECT_EQ(Vek::strepToValue<Vek::Ptr<LinkFlap::LinkFlapProfileSm>>(Vek::objectPath(*below)),
              below);
  }
}

TEST_F(ObjectPath, BeginsWithAnyName) {
  for (std::string const& odd : oddNames()) {
    if (odd == "null" || odd.starts_with("0x")) continue;  // those are taken
    auto const object = Vek::make<LinkFlap::Config>();
    Roots own;
    own.add(odd, object);
    expectThereAndBack(*object, Vek::quotedText(odd));
  }
}

TEST_F(ObjectPath, TheQuotedFormOfAPlainNameIsTheSame) {
  EXPECT_EQ(named("\"root\"/linkFlapSm/linkFlapIntfSm[\"Ethernet1\"]"), &intf());
  EXPECT_EQ(named("root/linkFlapSm/linkFlapIntfSm[\"\\x45thernet1\"]"), &intf());
}

TEST_F(ObjectPath, StepsThroughReferencesTooNotOnlyDown) {
  EXPECT_EQ(named("root/linkFlapSm/config"), sw.config.get());
  EXPECT_EQ(named("root/linkFlapSm/config/profileConfig[fast]"),
            sw.config->profileConfig("fast").get());
  EXPECT_EQ(named("root/linkFlapSm/linkFlapIntfSm[Ethernet1]/linkFlapProfileSm[fast]/intfSm/"
                  "linkFlapProfileSm[fast]/intfSm"),
            &intf());
}

TEST_F(ObjectPath, MayNameAnAttributeOrAMember) {
  auto target = Vek::pathTarget("config/maxFlaps", true);
  EXPECT_EQ(target.object, sw.config);
  ASSERT_NE(target.attr, nullptr);
  EXPECT_EQ(target.attr->name, "maxFlaps");
  EXPECT_TRUE(target.key.empty());

  target = Vek::pathTarget("root/linkFlapSm/linkFlapIntfSm", true);
  EXPECT_EQ(target.object.get(), &top());
  ASSERT_NE(target.attr, nullptr);
  EXPECT_EQ(target.attr->name, "linkFlapIntfSm");

  target = Vek::pathTarget("config/defaultProfileList[\"a b\"]", true);
  EXPECT_EQ(target.object, sw.config);
  EXPECT_EQ(target.attr->name, "defaultProfileList");
  EXPECT_EQ(target.key, text("a b"));

  // A member that is not there.
  target = Vek::pathTarget("root/linkFlapSm/linkFlapIntfSm[Ethernet2]", true);
  EXPECT_EQ(target.object.get(), &top());
  EXPECT_EQ(target.attr->name, "linkFlapIntfSm");
  EXPECT_EQ(target.key, Vek::Value{Tarn::IntfId{"Ethernet2"}});
}

TEST_F(ObjectPath, CanStopBeforeTheObjectThatTheLastStepNames) {
  auto target = Vek::pathTarget("root/linkFlapSm", false);
  EXPECT_EQ(target.object, sw.root);
  ASSERT_NE(target.attr, nullptr);
  EXPECT_EQ(target.attr->name, "linkFlapSm");

  target = Vek::pathTarget("root/linkFlapSm/linkFlapIntfSm[Ethernet1]", false);
  EXPECT_EQ(target.object.get(), &top());
  EXPECT_EQ(target.attr->name, "linkFlapIntfSm");
  EXPECT_EQ(target.key, Vek::Value{kEthernet1});

  target = Vek::pathTarget("root", false);
  EXPECT_EQ(target.object, sw.root);
  EXPECT_EQ(target.attr, nullptr);
}

// Each names the column, counted from 1, and repeats the path.
TEST_F(ObjectPath, SaysWhatIsWrongAndWhere) {
  auto const wrong = [](std::string const& what, std::string const& path) {
    return "Vek::RangeException 1: " + what + " of " + path;
  };
  auto const expect = [&](std::string const& path, std::string const& what) {
    EXPECT_EQ(refusal(path), wrong(what, path));
  };
  expect("", "no path at column 1");
  expect("/root", "no name at column 1");
  expect("\"root", "no name at column 1");
  expect("rooth/x", "no such object at column 1");
  expect("null", "no such object at column 1");
  expect("root ", "\"/\" expected at column 5");
  expect("root.linkFlapSm", "no such object at column 1");
  expect("root[x]", "\"/\" expected at column 5");
  expect("root/", "no such attribute at column 6");
  expect("root//linkFlapSm", "no such attribute at column 6");
  expect("root/linkFlapsm", "no such attribute at column 6");
  expect("root/linkFlapSm/", "no such attribute at column 17");
  expect("root/linkFlapSm?", "\"/\" expected at column 16");
  expect("root/linkFlapSm[x]", "an attribute without members at column 16");
  expect("root/linkFlapSm/linkFlapIntfSm[]", "no key at column 32");
  expect("root/linkFlapSm/linkFlapIntfSm[", "no key at column 32");
  expect("root/linkFlapSm/linkFlapIntfSm[ Ethernet1]", "no key at column 32");
  expect("root/linkFlapSm/linkFlapIntfSm[Ethernet1", "\"]\" expected at column 41");
  expect("root/linkFlapSm/linkFlapIntfSm[Ethernet1/1]", "\"]\" expected at column 41");
  expect("root/linkFlapSm/linkFlapIntfSm[\"Ethernet1]", "no key at column 32");
  expect("root/linkFlapSm/linkFlapIntfSm[Ethernet1]x", "\"/\" expected at column 42");
  expect("config/maxFlaps/x", "nothing to step into at column 16");
  expect("config/profileConfig/fast", "nothing to step into at column 21");
  expect("config/profileConfig[none]/maxFlaps", "nothing to step into at column 27");
  expect("config/profileConfig[fast]/maxFlops", "no such attribute at column 28");
  (void)sw.root->linkFlapSmDel();
  expect("root/linkFlapSm/config", "nothing to step into at column 16");
}

TEST_F(ObjectPath, AKeyIsReadAsTheAttributesKey) {
  auto const target = Vek::pathTarget(
      "root/linkFlapSm/linkFlapIntfSm[Ethernet1]/linkFlapProfileSm[fast]/linkFlapTimeStamp[7]",
      true);
  EXPECT_EQ(target.key, Vek::Value{7U});
  EXPECT_EQ(refusal("root/linkFlapSm/linkFlapIntfSm[Ethernet1]/linkFlapProfileSm[fast]/"
                    "linkFlapTimeStamp[x]"),
            "Vek::RangeException 1: no key at column 85 of "
            "root/linkFlapSm/linkFlapIntfSm[Ethernet1]/linkFlapProfileSm[fast]/"
            "linkFlapTimeStamp[x]");
}

// As a value: the longest path that is one; what follows is junk, at its column.
TEST_F(ObjectPath, OfATextEndsWhereNoObjectFollows) {
  using Top = Vek::Ptr<LinkFlap::LinkFlapSm>;
  auto const refused = [](std::string const& text) {
    return thrownBy([&] { (void)Vek::strepToValue<Top>(text); });
  };
  EXPECT_EQ(Vek::strepToValue<Top>("root/linkFlapSm").get(), &top());
  EXPECT_EQ(refused("root/linkFlapSm,"),
            "Vek::RangeException 1: junk at column 16 deserializing root/linkFlapSm,");
  EXPECT_EQ(refused("root/linkFlapSm/"),
            "Vek::RangeException 1: junk at column 16 deserializing root/linkFlapSm/");
  EXPECT_EQ(refused("root/linkFlapSm/initialized"),
            "Vek::RangeException 1: junk at column 16 deserializing root/linkFlapSm/initialized");
  EXPECT_EQ(refused("root/linkFlapSm/linkFlapIntfSm[Ethernet2]"),
            "Vek::RangeException 1: junk at column 16 deserializing "
            "root/linkFlapSm/linkFlapIntfSm[Ethernet2]");
}

TEST_F(ObjectPath, OfATextMustBeOfTheDeclaredType) {
  using Top = Vek::Ptr<LinkFlap::LinkFlapSm>;
  for (char const* const text : {"", "nowhere", "root", "config", "root/linkFlapSm/config", "/"})
    EXPECT_EQ(thrownBy([&] { (void)Vek::strepToValue<Top>(text); }),
              std::string{"Vek::RangeException 1: cannot convert \""} + text +
                  "\" to LinkFlap::LinkFlapSm");
}

TEST_F(ObjectPath, NullIsTheReferenceToNothing) {
  using Top = Vek::Ptr<LinkFlap::LinkFlapSm>;
  EXPECT_EQ(Vek::strepToValue<Top>("null"), nullptr);
  EXPECT_EQ(thrownBy([] { (void)Vek::strepToValue<Top>("nullx"); }),
            "Vek::RangeException 1: cannot convert \"nullx\" to LinkFlap::LinkFlapSm");
  EXPECT_EQ(thrownBy([] { (void)Vek::strepToValue<Top>("null "); }),
            "Vek::RangeException 1: junk at column 5 deserializing null ");
}

// The four machine types, from a text to an object to a view.
TEST_F(ObjectPath, MakesAViewFromText) {
  std::string const path{"root/linkFlapSm/linkFlapIntfSm[Ethernet1]/linkFlapProfileSm[fast], then"};
  char const* at = path.data();
  char const* const end = at + path.size();
  auto const machine = Vek::sequenceToValueOfPtr<LinkFlap::LinkFlapProfileSm>(at, end);
  EXPECT_EQ(machine.get(), &profile());
  EXPECT_EQ(std::string(at, end), ", then");
  LinkFlap::LinkFlapProfileSm::GenericIf_ const profileView{machine, false};
  EXPECT_EQ(profileView.attributeId("curFlaps"), 138U);

  using Vek::Ptr;
  using Vek::strepToValue;
  EXPECT_EQ(strepToValue<Ptr<LinkFlap::Root>>("root"), sw.root);
  EXPECT_EQ(strepToValue<Ptr<LinkFlap::LinkFlapSm const>>("root/linkFlapSm").get(), &top());
  EXPECT_EQ(strepToValue<Ptr<LinkFlap::LinkFlapIntfSm>>("root/linkFlapSm/linkFlapIntfSm[Ethernet1]")
                .get(),
            &intf());
  auto const any = Vek::genericIfOf(Vek::pathTarget("config", true).object, false);
  EXPECT_EQ(getText(*any, "maxFlaps"), "5");
}

TEST_F(ObjectPath, RootsHoldTheirObjectsUntilTheyAreTakenOut) {
  auto& all = Vek::PathRoots::global();
  auto const object = Vek::make<LinkFlap::Config>();
  all.rootIs("held", object);
  EXPECT_EQ(object->referenceCount(), 2U);
  EXPECT_EQ(all.root("held"), object);
  all.rootIs("held", sw.config);  // another takes its place
  EXPECT_EQ(object->referenceCount(), 1U);
  all.rootIs("held", nullptr);
  EXPECT_EQ(all.root("held"), nullptr);
  all.rootDel("held");
  EXPECT_EQ(all.root("held"), nullptr);
}

}  // namespace
