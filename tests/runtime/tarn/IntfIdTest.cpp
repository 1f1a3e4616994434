#include <gtest/gtest.h>
#include <sstream>
#include <unordered_set>

#include "runtime/tarn/IntfId.h"

namespace {

using Tarn::IntfId;

TEST(IntfId, IsMadeFromAName) {
  IntfId const id{"Ethernet1"};
  EXPECT_EQ(id.name(), "Ethernet1");
  EXPECT_FALSE(id.isNull());
  EXPECT_EQ(IntfId{Vek::String{"Ethernet1"}}, id);
}

TEST(IntfId, EmptyNameGivesTheNullIdentifier) {
  for (IntfId const& id :
       {IntfId{}, IntfId{""}, IntfId{Vek::String{}}, IntfId{static_cast<char const*>(nullptr)}}) {
    EXPECT_TRUE(id.isNull());
    EXPECT_EQ(id, IntfId{});
    EXPECT_EQ(id.name(), "");
  }
}

TEST(IntfId, HandleInitializedMakesItTheIdentifierOfThatName) {
  IntfId id{"Ethernet1"};
  id.handleInitialized("Ethernet2");
  EXPECT_EQ(id, IntfId{"Ethernet2"});
  id.handleInitialized("");
  EXPECT_TRUE(id.isNull());
}

TEST(IntfId, CopiesShareTheText) {
  IntfId const id{"Ethernet1"};
  IntfId const copy{id};
  EXPECT_TRUE(copy.name().sharesText(id.name()));
}

TEST(IntfId, IsOrderedByTheBytesOfTheName) {
  EXPECT_LT(IntfId{"Ethernet10"}, IntfId{"Ethernet2"});
  EXPECT_LT(IntfId{}, IntfId{"Ethernet1"});
  EXPECT_NE(IntfId{"Ethernet1"}, IntfId{"ethernet1"});
}

TEST(IntfId, HashIsThatOfTheName) {
  EXPECT_EQ(IntfId{"foobar"}.hash(), 0xBF9CF968U);
  EXPECT_EQ(IntfId{"foobar"}.reversedHash(), 0x169F39FDU);
  std::unordered_set<IntfId> const set{IntfId{"a"}, IntfId{"b"}, IntfId{"a"}};
  EXPECT_EQ(set.size(), 2U);
}

TEST(IntfId, IsPrintedAsItsName) {
  std::ostringstream out;
  out << '[' << IntfId{"Ethernet1"} << IntfId{} << ']';
  EXPECT_EQ(out.str(), "[Ethernet1]");
}

}  // namespace
