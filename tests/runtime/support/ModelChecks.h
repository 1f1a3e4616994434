#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/Attribute.h"
#include "runtime/vek/Ptr.h"

namespace RuntimeTest {

/// What the notifications of a state object said, in order: "NAME" for a scalar, "NAME!" for an
/// immediate hook, "NAME[KEY]" for a member, "NAME()" for the unkeyed form.
using Heard = std::vector<std::string>;

inline std::string member(char const* name, Vek::String const& key) {
  return std::string{name} + "[" + std::string{key.view()} + "]";
}
inline std::string member(char const* name, Tarn::IntfId const& id) {
  return member(name, id.name());
}

/// A watcher of class `W`, made from a log, that is registered with `object`.
template <typename W, typename T>
Vek::Ptr<W> listen(Vek::Ptr<T> const& object, Heard& heard) {
  auto watcher = Vek::make<W>(heard);
  watcher->notifierIs(object);
  watcher->isRegisteredNotifieeIs(true);
  return watcher;
}

/// The identifiers and names of a type's attributes, as its table has them.
template <typename T>
std::vector<std::pair<Vek::AttributeId, std::string>> attributesOf() {
  std::vector<std::pair<Vek::AttributeId, std::string>> attributes;
  std::apply(
      [&](auto const&... attribute) {
        (attributes.emplace_back(attribute.id, std::string{attribute.name}), ...);
      },
      T::vekAttributes);
  return attributes;
}

/// Expects the type to have these attributes, each under an identifier of its own that is at hand
/// for reports.
template <typename T>
void expectAttributes(T const& object, std::set<std::string> const& names) {
  std::set<std::string> found;
  std::set<Vek::AttributeId> ids;
  std::set<Vek::AttributeMask> bits;
  for (auto const& [id, name] : attributesOf<T>()) {
    EXPECT_NE(id, 0U);
    EXPECT_TRUE(found.insert(name).second) << name << " is there twice";
    EXPECT_TRUE(ids.insert(id).second) << "two attributes of identifier " << id;
    EXPECT_TRUE(bits.insert(Vek::attributeBit(id)).second) << "two attributes of one bit: " << id;
    EXPECT_EQ(object.attributeString(id), std::string_view{name});
  }
  EXPECT_EQ(found, names);
  EXPECT_TRUE(object.attributeString(0).empty());
  EXPECT_TRUE(object.attributeString(9999).empty());
}

/// What `act` does to the object's read and change counters.
struct Counted {
  std::uint32_t reads;
  std::uint32_t changes;
  friend bool operator==(Counted const&, Counted const&) = default;
};
template <typename T, typename Act>
Counted counted(T const& object, Act act) {
  Counted const before{object.reads(), object.changes()};
  act();
  return {object.reads() - before.reads, object.changes() - before.changes};
}

inline constexpr Counted kOneRead{1, 0};
inline constexpr Counted kOneChange{0, 1};
inline constexpr Counted kNothing{0, 0};

}  // namespace RuntimeTest
