#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "runtime/vek/Activity.h"
#include "runtime/vek/TypeDefinition.h"

#include "statemachines/LinkFlapSm.h"

#include "introspection/Types.h"

#include "tests/introspection/support/Records.h"

namespace {

using IntrospectionTest::lines;
using IntrospectionTest::operations;
using testing::ElementsAre;

struct Registered {
  std::string_view name;
  Vek::VekType const* (*record)();
  std::string_view base;
};

std::ostream& operator<<(std::ostream& out, Registered const& type) {
  return out << type.name;
}

class MachineType : public testing::TestWithParam<Registered> {};

INSTANTIATE_TEST_SUITE_P(
    All, MachineType,
    testing::Values(Registered{"LinkFlap::Root", LinkFlap::Root::_fwkType, "Vek::Entity"},
                    Registered{"LinkFlap::LinkFlapSm", LinkFlap::LinkFlapSm::_fwkType,
                               "Vek::PtrInterface"},
                    Registered{"LinkFlap::LinkFlapIntfSm", LinkFlap::LinkFlapIntfSm::_fwkType,
                               "Vek::PtrInterface"},
                    Registered{"LinkFlap::LinkFlapProfileSm", LinkFlap::LinkFlapProfileSm::_fwkType,
                               "Vek::PtrInterface"}),
    [](auto const& param) { return std::string{param.param.name.substr(10)}; });

TEST_P(MachineType, IsBoundToItsFullNameAndItsRecordIsAlwaysTheSame) {
  Vek::VekType const* const record = GetParam().record();
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode(GetParam().name), record);
  EXPECT_EQ(GetParam().record(), record);
  auto const before = lines(*record);
  LinkFlap::vekInitLinkFlapSm();  // does nothing: that was done when the library was loaded
  EXPECT_EQ(GetParam().record(), record);
  EXPECT_EQ(lines(*record), before);
  EXPECT_EQ(std::ranges::count(Vek::IntrospectionReactor::global().types(), record), 1);
}

TEST_P(MachineType, KnowsItsNamesAndItsBase) {
  Vek::VekType const& record = *GetParam().record();
  EXPECT_EQ(record.fullName(), GetParam().name);
  EXPECT_EQ(record.bareName(), GetParam().name.substr(10));
  ASSERT_NE(record.base(), nullptr);
  EXPECT_EQ(record.base()->fullName(), GetParam().base);
  EXPECT_TRUE(record.derivesFrom(record));
  EXPECT_TRUE(record.derivesFrom(*record.base()));
  EXPECT_TRUE(record.derivesFrom(Vek::ptrInterfaceType()));
  EXPECT_FALSE(record.base()->derivesFrom(record));
  EXPECT_TRUE(record.hasGenericIfSupport());
}

TEST_P(MachineType, FindsEveryAttributeByNameAndByIdentifier) {
  Vek::VekType const& record = *GetParam().record();
  std::set<Vek::AttributeId> ids;
  for (auto const& attr : record.attrs()) {
    EXPECT_EQ(record.attr(attr->name), attr.get()) << attr->name;
    EXPECT_EQ(record.attr(attr->id), attr.get()) << attr->name;
    EXPECT_TRUE(ids.insert(attr->id).second) << attr->name;
  }
  EXPECT_EQ(record.attr("referenceCount"), Vek::ptrInterfaceType().attr("referenceCount"));
  EXPECT_EQ(record.attr(4U), Vek::ptrInterfaceType().attr("referenceCount"));
  EXPECT_EQ(record.attr("noSuchAttribute"), nullptr);
  EXPECT_EQ(record.attr(9999U), nullptr);
}

// A machine's own attributes are no state that others watch.
TEST_P(MachineType, HasNoNotifyingAttributes) {
  if (GetParam().name == "LinkFlap::Root") return;  // its watchers hear of its machine
  for (auto const& attr : GetParam().record()->attrs())
    EXPECT_FALSE(attr->notifying) << attr->name;
}

TEST(Registry, AnObjectTellsTheRecordOfItsType) {
  auto const root = LinkFlap::rootFactory("root");
  Vek::PtrInterface const& object = *root;
  EXPECT_EQ(object.fwkType(), LinkFlap::Root::_fwkType());
}

TEST(Registry, AnUnknownNameHasNoRecord) {
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode("LinkFlap::Rooth"), nullptr);
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode("Root"), nullptr);
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode(""), nullptr);
}

TEST(BaseTypes, PtrInterface) {
  Vek::VekType const& type = Vek::ptrInterfaceType();
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode("Vek::PtrInterface"), &type);
  EXPECT_EQ(type.base(), nullptr);
  EXPECT_EQ(type.bareName(), "PtrInterface");
  EXPECT_THAT(lines(type),
              ElementsAre("hasNotificationActive 2 state bool", "vekMarkedForDeletion 3 state bool",
                          "referenceCount 4 state unsigned int"));
  EXPECT_THAT(operations(type), ElementsAre("hasNotificationActive get", "vekMarkedForDeletion get",
                                            "referenceCount get"));
}

TEST(BaseTypes, Entity) {
  Vek::VekType const& type = Vek::entityType();
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode("Vek::Entity"), &type);
  EXPECT_EQ(type.base(), &Vek::ptrInterfaceType());
  EXPECT_THAT(lines(type),
              ElementsAre("name 130 state Vek::Name", "fullName 131 state Vek::String",
                          "uriPath 132 state Vek::String", "changes 133 state unsigned int"));
  EXPECT_THAT(operations(type),
              ElementsAre("name get", "fullName get", "uriPath get", "changes get"));
}

TEST(BaseTypes, ActivityConfig) {
  auto const activity = Vek::make<Vek::ActivityConfig>();
  Vek::VekType const* const type = activity->fwkType();
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(Vek::IntrospectionReactor::global().typeNode("Vek::ActivityConfig"), type);
  EXPECT_EQ(type->base(), &Vek::entityType());
  EXPECT_THAT(lines(*type), ElementsAre("deferred 258 state bool"));
  EXPECT_THAT(operations(*type), ElementsAre("deferred get set"));
}

// The numbers of the Root's name: the constructor's parameter and the entity's name are one thing.
TEST(BaseTypes, TheRootsNameHasTheIdentifierOfTheEntitysName) {
  EXPECT_EQ(LinkFlap::Root::_fwkType()->attr("name")->id, Vek::entityType().attr("name")->id);
}

class VekType : public testing::Test {
 protected:
  Vek::IntrospectionReactor reactor;
  Vek::Ptr<Vek::VekType> type{Vek::make<Vek::VekType>("Test::Type", &Vek::ptrInterfaceType())};

  Vek::VekAttr& plain(std::string_view name, Vek::AttributeId id = 0) {
    return reactor.defNoninstantiatingAttr(*type, name, "bool", nullptr, Vek::AttrKind::state, true,
                                           id);
  }
  Vek::VekAttr& handler(std::string_view name, Vek::AttributeId id = 0) {
    return reactor.defInstantiatingAttr(*type, name, "void *", Vek::AttrKind::handler, id);
  }
};

TEST_F(VekType, AnIdentifierThatIsNotGivenIsTheNextInOrder) {
  plain("a", 130);
  plain("b");
  handler("c");
  plain("d", 140);
  plain("e");
  EXPECT_THAT(lines(*type),
              ElementsAre("a 130 state bool", "b 131 state bool", "c 132 handler void *",
                          "d 140 state bool", "e 141 state bool"));
}

TEST_F(VekType, AValueRegisteredAgainTakesTheOldPlace) {
  plain("a", 130);
  plain("b");
  plain("a");
  EXPECT_THAT(lines(*type), ElementsAre("a 130 state bool", "b 131 state bool"));
  EXPECT_TRUE(type->attr("a")->notifying);
}

TEST_F(VekType, AHandlerRegisteredAgainIsMadeAfresh) {
  handler("h", 130);
  reactor.handleAttr("on", Vek::ValueTraits<bool>::type);
  reactor.handleAttrContextExit();
  plain("a");
  handler("h");
  reactor.handleAttrContextExit();
  EXPECT_THAT(lines(*type), ElementsAre("a 131 state bool", "h 132 handler void *"));
}

TEST_F(VekType, AnAttributeCanBeTakenOut) {
  plain("a", 130);
  plain("b");
  type->attrDel("a");
  type->attrDel("noSuchAttribute");
  EXPECT_EQ(type->attr("a"), nullptr);
  EXPECT_THAT(lines(*type), ElementsAre("b 131 state bool"));
}

TEST_F(VekType, AnOwnAttributeHidesTheBases) {
  Vek::VekAttr const& own = plain("referenceCount", 130);
  EXPECT_EQ(type->attr("referenceCount"), &own);
  EXPECT_EQ(type->attr(4U), Vek::ptrInterfaceType().attr(4U));
}

TEST_F(VekType, IsBoundOnceHoweverOftenAsked) {
  reactor.typeNodeIs(*type, "Test::Type");
  reactor.typeNodeIs(*type, "Test::Type");
  EXPECT_THAT(reactor.types(), ElementsAre(type.get()));
  EXPECT_EQ(reactor.typeNode("Test::Type"), type.get());
}

using VekTypeDeathTest = VekType;

TEST_F(VekTypeDeathTest, MisuseOfTheRegistrationEndsTheProcess) {
  EXPECT_DEATH(reactor.handleAttr("on", Vek::ValueTraits<bool>::type),
               "Vek: a parameter was registered outside of an attribute");
  EXPECT_DEATH(reactor.handleScopeExit(), "Vek: a scope was left that was not entered");
  EXPECT_DEATH(reactor.typeNodeIs(*type, "Test::Other"),
               "Vek: a type was bound to a name that is not its own");
}

TEST(AttrKinds, EachHasItsOwnText) {
  using Vek::AttrKind;
  using Vek::kindText;
  EXPECT_EQ(kindText(AttrKind::activity), "activity");
  EXPECT_EQ(kindText(AttrKind::input), "input");
  EXPECT_EQ(kindText(AttrKind::state), "state");
  EXPECT_EQ(kindText(AttrKind::collection), "collection");
  EXPECT_EQ(kindText(AttrKind::queue), "queue");
  EXPECT_EQ(kindText(AttrKind::single), "single");
  EXPECT_EQ(kindText(AttrKind::handler), "handler");
  EXPECT_EQ(kindText(AttrKind::owner), "owner");
  EXPECT_EQ(kindText(AttrKind::key), "key");
  EXPECT_EQ(kindText(AttrKind{200}), "?");
}

TEST_F(VekType, OutsideOfAnyNamespaceHasOneName) {
  auto const global = Vek::make<Vek::VekType>("Global", nullptr);
  EXPECT_EQ(global->bareName(), "Global");
  EXPECT_EQ(type->bareName(), "Type");
}

TEST_F(VekType, AnAttributeThatIsReplacedTakesTheIdentifierItIsGiven) {
  (void)type->attrIs("replaced", 7);
  (void)type->attrIs("behind", 8);
  EXPECT_EQ(type->attrIs("replaced").id, 7U);
  EXPECT_EQ(type->attrIs("replaced", 9).id, 9U);
  EXPECT_EQ(type->attr(7U), nullptr);
  EXPECT_EQ(type->attrs().front()->name, "replaced") << "at its place";
}

struct Handled : Vek::PtrInterface {
  void handle(bool /*on*/) {}
};

TEST_F(VekTypeDeathTest, AHandlerIsRegisteredWithAsManyNamesAsItHasParameters) {
  auto const registered = [this](std::initializer_list<std::string_view> parameters) {
    Vek::TypeDefinition<Handled> definition{reactor, *type};
    (void)definition.handler<&Handled::handle>(1, "handle", parameters);
  };
  registered({"on"});
  EXPECT_EQ(type->attr("handle")->parameters.size(), 1U);
  char const* const said =
      "Vek: a function was registered with another number of parameters than it has";
  EXPECT_DEATH(registered({}), said);
  EXPECT_DEATH(registered({"on", "off"}), said);
}

}  // namespace
