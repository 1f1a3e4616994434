#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>

#include "runtime/vek/String.h"

#pragma GCC visibility push(default)

namespace Tarn {

/// Identifier of an interface, made from its name; the empty name gives the null identifier.
/// A value: copies share the name's text.
class IntfId {
 public:
  IntfId() = default;
  explicit IntfId(char const* name) : name_{name} {}
  explicit IntfId(Vek::String const& name) noexcept : name_{name} {}
  explicit IntfId(Vek::String&& name) noexcept : name_{std::move(name)} {}

  /// Makes this the identifier of that name.
  void handleInitialized(Vek::String name) noexcept { name_ = std::move(name); }

  Vek::String const& name() const noexcept { return name_; }
  bool isNull() const noexcept { return name_.empty(); }
  // The name's, for keyed collections.
  std::uint32_t hash() const noexcept { return name_.hash(); }
  std::uint32_t reversedHash() const noexcept { return name_.reversedHash(); }

  friend bool operator==(IntfId const& a, IntfId const& b) noexcept { return a.name_ == b.name_; }
  /// By the bytes of the name.
  friend std::strong_ordering operator<=>(IntfId const& a, IntfId const& b) noexcept {
    return a.name_ <=> b.name_;
  }

 private:
  Vek::String name_;
};

/// Writes the name; nothing for the null identifier.
std::ostream& operator<<(std::ostream& out, IntfId const& id);

}  // namespace Tarn

template <>
struct std::hash<Tarn::IntfId> {
  std::size_t operator()(Tarn::IntfId const& id) const noexcept { return id.reversedHash(); }
};

#pragma GCC visibility pop
