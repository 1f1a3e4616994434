#pragma once

#include <cstddef>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "runtime/vek/Attribute.h"
#include "runtime/vek/State.h"

/// All values of one state object, to be compared and to be put back. It works from the descriptors
/// of the type, so no attribute can be forgotten.
template <typename T>
class SavedState {
 public:
  explicit SavedState(Vek::Ptr<T const> const& object)
      : object_{const_cast<T*>(object.get())}, values_{valuesOf(*object)} {}

  Vek::Ptr<T> const& object() const { return object_; }

  /// Writes the values back through the setters.
  void load() const { loadEach(std::make_index_sequence<kAttributes>{}); }

  friend bool operator==(SavedState const&, SavedState const&) = default;

 private:
  static constexpr std::size_t kAttributes{std::tuple_size_v<decltype(T::vekAttributes)>};

  template <typename O, typename V, typename W>
  static V saved(T const& object, Vek::Scalar<O, V, W> const& attribute) {
    return object.get(attribute);
  }
  template <typename O, typename V>
  static std::monostate saved(T const& /*object*/, Vek::Derived<O, V> const& /*attribute*/) {
    return {};
  }
  template <typename O, typename K, typename V, typename W>
  static std::vector<std::pair<K, V>> saved(T const& object,
                                            Vek::Keyed<O, K, V, W> const& attribute) {
    std::vector<std::pair<K, V>> members;
    for (auto const& member : object.members(attribute))
      members.emplace_back(member.key(), member.value());
    return members;
  }

  template <typename O, typename V, typename W>
  void loadOne(Vek::Scalar<O, V, W> const& attribute, V const& value) const {
    object_->set(attribute, value);
  }
  template <typename O, typename V>
  void loadOne(Vek::Derived<O, V> const& /*attribute*/, std::monostate /*value*/) const {}
  template <typename O, typename K, typename V, typename W>
  void loadOne(Vek::Keyed<O, K, V, W> const& attribute,
               std::vector<std::pair<K, V>> const& members) const {
    std::vector<K> absent;
    for (auto const& member : object_->members(attribute)) {
      bool wanted = false;
      for (auto const& [key, value] : members)
        wanted = wanted || key == member.key();
      if (!wanted) absent.push_back(member.key());
    }
    for (K const& key : absent)
      object_->memberDel(attribute, key);
    for (auto const& [key, value] : members)
      object_->memberIs(attribute, key, value);
  }
  template <std::size_t... I>
  void loadEach(std::index_sequence<I...> /*attributes*/) const {
    (loadOne(std::get<I>(T::vekAttributes), std::get<I>(values_)), ...);
  }

  static auto valuesOf(T const& object) {
    return std::apply(
        [&](auto const&... attribute) { return std::tuple{saved(object, attribute)...}; },
        T::vekAttributes);
  }

  Vek::Ptr<T> object_;
  decltype(valuesOf(std::declval<T const&>())) values_;
};
