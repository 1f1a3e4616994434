#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "runtime/vek/Entity.h"
#include "runtime/vek/Exception.h"
#include "runtime/vek/Reinstantiation.h"

namespace {

using Vek::Entity;
using Vek::make;
using Vek::Ptr;

void* at(std::uintptr_t address) {
  return reinterpret_cast<void*>(address);
}

/// The message of the exception of class `E` that `act` throws.
template <typename E, typename Act>
std::string messageOf(Act act) {
  try {
    act();
  } catch (E const& exception) {
    return exception.what();
  }
  return "nothing was thrown";
}

TEST(Representation, IsHexadecimalWithoutLeadingZeros) {
  EXPECT_EQ(Vek::representation(nullptr), "0x0");
  EXPECT_EQ(Vek::representation(at(0xABC0)), "0xabc0");
}

TEST(RequireSame, LetsTheSameObjectPass) {
  auto const object = make<Entity>("a");
  EXPECT_NO_THROW(Vek::requireSame("config", object, Ptr<Entity>{object.get()}));
  EXPECT_NO_THROW(Vek::requireSame("config", Ptr<Entity>{}, Ptr<Entity>{}));
}

TEST(RequireSame, RefusesAnotherObjectEvenAnEqualOne) {
  auto const given = make<Entity>("a");
  auto const current = make<Entity>("a");
  auto const refusal = [&](Ptr<Entity> const& one, Ptr<Entity> const& other) {
    return messageOf<Vek::NameInUseException>([&] { Vek::requireSame("config", one, other); });
  };
  std::string const a{Vek::representation(given.get()).view()};
  std::string const b{Vek::representation(current.get()).view()};
  EXPECT_EQ(
      refusal(given, current),
      "Reinstantiating the pointer interface where constructor parameter attribute config has "
      "a different value of " +
          a + " than the current value of " + b + " not allowed");
  EXPECT_EQ(
      refusal(nullptr, current),
      "Reinstantiating the pointer interface where constructor parameter attribute config has "
      "a different value of 0x0 than the current value of " +
          b + " not allowed");
  EXPECT_EQ(
      refusal(given, nullptr),
      "Reinstantiating the pointer interface where constructor parameter attribute config has "
      "a different value of " +
          a + " than the current value of 0x0 not allowed");
}

TEST(ValidPtr, LetsAnObjectPassAndRefusesNone) {
  auto const object = make<Entity>("a");
  EXPECT_EQ(&Vek::validPtr(object), &object);
  EXPECT_EQ(messageOf<Vek::RangeException>([] { Vek::validPtr(Ptr<Entity>{}); }), "null ValidPtr");
}

}  // namespace
