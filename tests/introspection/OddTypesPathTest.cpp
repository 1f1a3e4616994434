#include <cstddef>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "runtime/vek/AttributeIterator.h"

#include "tests/introspection/support/Machines.h"
#include "tests/introspection/support/Paths.h"

// Paths and views over types that offer less than those of the library do: attributes without the
// one operation or the other, and objects without a type record.

namespace {

using namespace IntrospectionTest;
using testing::StartsWith;
using Vek::Ptr;

/// An object whose record the test chooses.
class Node final : public Vek::PtrInterface {
 public:
  static constexpr std::string_view vekTypeName{"Test::Node"};

  explicit Node(Vek::VekType const* type) : type_{type} {}
  Vek::VekType const* fwkType() const override { return type_; }

  Ptr<Node> below;
  std::vector<Ptr<Node>> members;
  Node* owner{nullptr};

 private:
  ~Node() override = default;
  Vek::VekType const* type_;
};

Node const& node(Vek::PtrInterface const& object) {
  return static_cast<Node const&>(object);
}

/// Walks the members of a node under their numbers.
struct NodeWalk {
  Node const* object;
  std::size_t at{0};

  explicit operator bool() const { return at < object->members.size(); }
  Vek::Value key() const { return Vek::Value{static_cast<std::uint32_t>(at)}; }
  Vek::Value obj() const { return Vek::Value{object->members[at]}; }
  void inc() { ++at; }
  void del(Node& from) { from.members.erase(from.members.begin() + static_cast<long>(at)); }
};

class OddTypesPath : public testing::Test {
 protected:
  using Type = Ptr<Vek::VekType>;

  Type newType() { return Vek::make<Vek::VekType>("Test::Node", &Vek::ptrInterfaceType()); }
  Ptr<Node> newNode() { return Vek::make<Node>(type.get()); }

  void belowIsSingle() {
    Vek::VekAttr& attr = type->attrIs("below");
    attr.kind = Vek::AttrKind::single;
    attr.valueType = "Test::Node";
    attr.read = [](Vek::PtrInterface const& object) { return Vek::Value{node(object).below}; };
  }
  Vek::VekAttr& membersAttr() {
    Vek::VekAttr& attr = type->attrIs("members");
    attr.kind = Vek::AttrKind::collection;
    attr.valueType = "Test::Node";
    attr.keyType = &Vek::ValueTraits<std::uint32_t>::type;
    return attr;
  }
  void membersAreWalked() {
    membersAttr().iterate = [](Vek::PtrInterface const& object, Vek::Value const*) {
      return std::unique_ptr<Vek::AttributeIterator>{new Vek::AttributeWalk<Node, NodeWalk>{
          Ptr<Node const>{&node(object)}, NodeWalk{&node(object)}}};
    };
  }
  static std::string refusal(std::string const& path) {
    return thrownBy([&] { (void)Vek::pathTarget(path, true); });
  }

  Type type{newType()};
  Roots roots;
};

TEST_F(OddTypesPath, DigitsAndUnderscoresBelongToNamesAndBracesDoNot) {
  belowIsSingle();
  roots.add("root", newNode());
  EXPECT_EQ(refusal("root/below9"),
            "Vek::RangeException 1: no such attribute at column 6 of root/below9");
  EXPECT_EQ(refusal("root/below_"),
            "Vek::RangeException 1: no such attribute at column 6 of root/below_");
  EXPECT_EQ(refusal("root/below{"),
            "Vek::RangeException 1: nothing to step into at column 11 of root/below{");
}

TEST_F(OddTypesPath, AnObjectWithoutARecordHasNoAttributes) {
  auto const bare = Vek::make<Node>(nullptr);
  roots.add("bare", bare);
  EXPECT_EQ(refusal("bare/below"),
            "Vek::RangeException 1: no such attribute at column 6 of bare/below");
  EXPECT_EQ(Vek::objectPath(*bare), "bare");
  EXPECT_THAT(Vek::objectPath(*newNode()), StartsWith("0x")) << "sought below it as well";
  EXPECT_THAT(Vek::objectPath(*Vek::make<Node>(nullptr)), StartsWith("0x"));
}

TEST_F(OddTypesPath, AnObjectIsSoughtFourStepsDown) {
  belowIsSingle();
  auto const top = newNode();
  roots.add("top", top);
  std::string path{"top"};
  Node* at = top.get();
  for (int depth = 1; depth <= 5; ++depth) {
    at->below = newNode();
    at = at->below.get();
    path += "/below";
    if (depth <= 4) {
      EXPECT_EQ(Vek::objectPath(*at), path);
    }
    EXPECT_EQ(Vek::pathTarget(path, true).object.get(), at);
  }
  EXPECT_THAT(Vek::objectPath(*at), StartsWith("0x"));
}

TEST_F(OddTypesPath, AMemberThatCannotBeReadIsNamedAllTheSame) {
  Vek::VekAttr const& members = membersAttr();
  auto const top = newNode();
  roots.add("top", top);
  auto const target = Vek::pathTarget("top/members[3]", true);
  EXPECT_EQ(target.object, top);
  EXPECT_EQ(target.attr, &members);
  EXPECT_EQ(target.key, Vek::Value{3U});
}

TEST_F(OddTypesPath, AnAttributeWithMembersIsNoStepAsAWhole) {
  Vek::VekAttr& members = membersAttr();
  members.read = [](Vek::PtrInterface const& object) { return Vek::Value{node(object).below}; };
  auto const top = newNode();
  top->below = newNode();
  roots.add("top", top);
  EXPECT_EQ(Vek::pathTarget("top/members", true).attr, &members);
}

TEST_F(OddTypesPath, AMemberWithoutAKeyOfItsOwnIsFoundByWalking) {
  membersAreWalked();
  (void)type->attrIs("name");  // which cannot be read
  auto const top = newNode();
  top->members = {newNode(), newNode()};
  roots.add("top", top);
  EXPECT_EQ(Vek::objectPath(*top->members[0]), "top/members[0]");
  EXPECT_EQ(Vek::objectPath(*top->members[1]), "top/members[1]");
}

TEST_F(OddTypesPath, ACollectionThatCannotBeWalkedIsPassedOver) {
  (void)membersAttr();
  belowIsSingle();
  auto const top = newNode();
  top->below = newNode();
  roots.add("top", top);
  EXPECT_EQ(Vek::objectPath(*top->below), "top/below");
}

TEST_F(OddTypesPath, AnOwnerThatDoesNotLeadToTheObjectIsPassedOver) {
  belowIsSingle();
  Vek::VekAttr& owner = type->attrIs("owner");
  owner.kind = Vek::AttrKind::owner;
  owner.valueType = "Test::Node";
  owner.read = [](Vek::PtrInterface const& object) {
    return Vek::Value{Ptr<Node>{node(object).owner}};
  };
  auto const top = newNode();
  auto const other = newNode();
  top->below = newNode();
  top->below->owner = other.get();
  roots.add("top", top);
  EXPECT_EQ(Vek::objectPath(*top->below), "top/below");
  top->below->owner = nullptr;
  EXPECT_EQ(Vek::objectPath(*top->below), "top/below");
}

TEST_F(OddTypesPath, AViewRefusesWhatItsRecordLacks) {
  (void)membersAttr();
  auto const view = Vek::genericIfOf(newNode(), false);
  EXPECT_EQ(thrownBy([&] { get(*view, "members", Vek::Value{0U}); }),
            "Vek::Exception 6: operation 1 is not supported on a member of attribute members");
  EXPECT_THAT(thrownBy([&] { del(*view, "members", Vek::Value{0U}); }),
              StartsWith("Vek::Exception 6: operation "));
}

TEST_F(OddTypesPath, AnObjectWithoutReactorsIsMarkedAlone) {
  auto const object = newNode();
  auto const view = Vek::genericIfOf(object, false);
  view->vekDoZombieReactors(true);
  EXPECT_TRUE(object->vekMarkedForDeletion());
  view->vekDoZombieReactors(false);
  EXPECT_FALSE(object->vekMarkedForDeletion());
  EXPECT_EQ(thrownBy([&] { Vek::genericIfOf(object, true)->vekDoZombieReactors(true); }), kConst);
}

TEST(RemovedMachine, HasNoPathAnyMore) {
  Machines machines;
  Roots roots;
  roots.add(machines.sw);
  auto const profile = machines.intf().linkFlapProfileSmDel("fast");
  EXPECT_THAT(Vek::objectPath(*profile), StartsWith("0x"));
}

}  // namespace
