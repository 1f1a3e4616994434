#pragma once

#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "runtime/vek/Collection.h"
#include "runtime/vek/Notifiee.h"

#pragma GCC visibility push(default)

namespace Vek {

/// Describes one plain attribute of a state type: everything the runtime knows about it.
template <typename Owner, typename Value, typename Watcher>
struct Scalar {
  using ValueType = Value;
  using WatcherType = Watcher;
  AttributeId id;
  std::string_view name;
  Value Owner::*member;
  void (Watcher::*changed)();  ///< onX()
};

/// Describes an attribute that nobody can watch or set: it is computed, or fixed for the object's
/// life.
template <typename Owner, typename Value>
struct Derived {
  AttributeId id;
  std::string_view name;
  Value (Owner::*read)() const;
};

/// Describes one keyed attribute of a state type.
template <typename Owner, typename Key, typename Value, typename Watcher>
struct Keyed {
  using KeyType = Key;
  using ValueType = Value;
  using WatcherType = Watcher;
  AttributeId id;
  std::string_view name;
  Collection<Key, Value> Owner::*members;
  void (Watcher::*memberChanged)(Key);  ///< onX(key)
  void (Watcher::*severalChanged)();    ///< onX()
  void (Watcher::*immediate)();         ///< onXvekImmediate()
};

template <typename O, typename V, typename W>
Scalar(AttributeId, std::string_view, V O::*, void (W::*)()) -> Scalar<O, V, W>;

template <typename O, typename V>
Derived(AttributeId, std::string_view, V (O::*)() const) -> Derived<O, V>;

// Naming the parameter types picks the right one of the overloads of onX for each slot.
template <typename O, typename K, typename V, typename W>
Keyed(AttributeId, std::string_view, Collection<K, V> O::*, std::type_identity_t<void (W::*)(K)>,
      std::type_identity_t<void (W::*)()>, void (W::*)()) -> Keyed<O, K, V, W>;

/// The type of a described attribute.
template <auto const& attribute>
using AttributeType = std::remove_cvref_t<decltype(attribute)>;

/// The bit of `attribute` if it is watched, else no bit.
template <typename Attribute>
consteval AttributeMask maskOf(Attribute const& attribute, bool watched) {
  return watched ? attributeBit(attribute.id) : AttributeMask{0};
}

/// Whether no two attributes of a table share an identifier, a name or a bit (`attributeBit`).
template <typename... Attributes, std::size_t... I>
consteval bool distinct(std::tuple<Attributes...> const& table,
                        std::index_sequence<I...> /*attributes*/) {
  AttributeId const ids[]{std::get<I>(table).id...};
  std::string_view const names[]{std::get<I>(table).name...};
  for (std::size_t i = 0; i < sizeof...(I); ++i)
    for (std::size_t j = 0; j < i; ++j)
      if (attributeBit(ids[i]) == attributeBit(ids[j]) || names[i] == names[j]) return false;
  return true;
}
template <typename... Attributes>
consteval bool distinct(std::tuple<Attributes...> const& table) {
  return distinct(table, std::index_sequence_for<Attributes...>{});
}

}  // namespace Vek

#pragma GCC visibility pop
