#include <gtest/gtest.h>

#include "runtime/vek/Attribute.h"

namespace {

struct Watcher {
  void onOne() {}
  void onTwo() {}
};

/// Two attributes whose identifiers and names a test chooses.
struct Type {
  int one{0};
  int two{0};
  int three() const { return 3; }
};

consteval bool distinctPair(Vek::AttributeId first, char const* firstName, Vek::AttributeId second,
                            char const* secondName) {
  return Vek::distinct(std::tuple{Vek::Scalar{first, firstName, &Type::one, &Watcher::onOne},
                                  Vek::Scalar{second, secondName, &Type::two, &Watcher::onTwo}});
}

TEST(AttributeBit, IsTheIdentifierModuloSixteen) {
  EXPECT_EQ(Vek::attributeBit(0), 0x0001U);
  EXPECT_EQ(Vek::attributeBit(15), 0x8000U);
  EXPECT_EQ(Vek::attributeBit(16), 0x0001U);
  EXPECT_EQ(Vek::attributeBit(386), 0x0004U);
  EXPECT_EQ(Vek::attributeBit(4294967295U), 0x8000U);
}

// The checks run when a table is compiled; these only make them run here.
TEST(Distinct, RefusesTablesWhoseAttributesCouldBeTakenForEachOther) {
  static_assert(distinctPair(258, "one", 259, "two"));
  static_assert(!distinctPair(258, "one", 258, "two"), "one identifier");
  static_assert(!distinctPair(258, "one", 259, "one"), "one name");
  static_assert(!distinctPair(258, "one", 274, "two"), "one bit");
  static_assert(!Vek::distinct(std::tuple{Vek::Scalar{258, "one", &Type::one, &Watcher::onOne},
                                          Vek::Derived{258, "three", &Type::three}}));
}

TEST(MaskOf, IsTheBitOfAWatchedAttribute) {
  static constexpr Vek::Scalar attribute{261, "one", &Type::one, &Watcher::onOne};
  static_assert(Vek::maskOf(attribute, true) == 0x0020);
  static_assert(Vek::maskOf(attribute, false) == 0);
}

}  // namespace
