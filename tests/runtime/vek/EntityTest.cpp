#include <gtest/gtest.h>
#include <string_view>

#include "runtime/vek/Entity.h"
#include "runtime/vek/Ptr.h"

namespace {

using std::string_view_literals::operator""sv;
using Vek::Entity;
using Vek::make;

TEST(Entity, HasTheNameItIsMadeWithAndNoParent) {
  auto const entity = make<Entity>("linkFlap");
  EXPECT_EQ(entity->name(), "linkFlap");
  EXPECT_EQ(entity->parent(), nullptr);
  EXPECT_EQ(entity->parentAttrId(), 0U);
  EXPECT_EQ(make<Entity>()->name(), "");
}

TEST(Entity, StandsWhereItIsPut) {
  auto const parent = make<Entity>("parent");
  auto const child = make<Entity>("child");
  child->parentIs(parent.get());
  child->parentAttrIdIs(262);
  EXPECT_EQ(child->parent(), parent.get());
  EXPECT_EQ(child->parentAttrId(), 262U);
  EXPECT_EQ(parent->referenceCount(), 1U) << "a child does not hold its parent";

  child->parentIs(nullptr);
  EXPECT_EQ(child->parent(), nullptr);
}

TEST(Entity, FullNameLeadsFromTheTopDown) {
  auto const top = make<Entity>("sys");
  auto const middle = make<Entity>("linkFlap");
  auto const leaf = make<Entity>("config");
  EXPECT_EQ(leaf->fullName(), "config");
  leaf->parentIs(middle.get());
  middle->parentIs(top.get());
  EXPECT_EQ(leaf->fullName(), "sys::linkFlap::config");
  EXPECT_EQ(top->fullName(), "sys");
}

TEST(Entity, UriPathIsTheSameAsAPath) {
  auto const top = make<Entity>("sys");
  auto const leaf = make<Entity>("Ethernet1/1");
  EXPECT_EQ(top->uriPath(), "/sys");
  leaf->parentIs(top.get());
  EXPECT_EQ(leaf->uriPath(), "/sys/Ethernet1%2F1");
}

TEST(Entity, UriPathWritesBytesThatAPathCannotHoldInHexadecimal) {
  EXPECT_EQ(make<Entity>("aZ09-._~")->uriPath(), "/aZ09-._~");
  EXPECT_EQ(make<Entity>(Vek::String{"\xC3\xA9 %?#\0\xFF"sv})->uriPath(),
            "/%C3%A9%20%25%3F%23%00%FF");
  EXPECT_EQ(make<Entity>("@[`{/:")->uriPath(), "/%40%5B%60%7B%2F%3A");
  EXPECT_EQ(make<Entity>()->uriPath(), "/");
}

TEST(Entity, KnowsNoAttributeByItself) {
  EXPECT_EQ(make<Entity>("x")->attributeString(1), "");
  EXPECT_EQ(make<Entity>("x")->changes(), 0U);
}

TEST(Entity, NamesAreAskedFromTheObject) {
  class Renamed : public Entity {
   public:
    using Entity::Entity;
    Vek::Name name() const override { return "renamed"; }
  };
  auto const top = make<Renamed>("top");
  auto const leaf = make<Entity>("leaf");
  leaf->parentIs(top.get());
  EXPECT_EQ(leaf->fullName(), "renamed::leaf");
  EXPECT_EQ(leaf->uriPath(), "/renamed/leaf");
}

}  // namespace
