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
      : object_{const_cast<T*>(object.get())}, values_{valuesOf(*object, kAll)} {}

  /// Writes the values back through the setters.
  void load() const { loadEach(kAll); }

  friend bool operator==(SavedState const&, SavedState const&) = default;

 private:
  template <std::size_t I>
  static constexpr auto descriptor = std::get<I>(T::vekAttributes);
  static constexpr std::make_index_sequence<std::tuple_size_v<decltype(T::vekAttributes)>> kAll{};

  template <std::size_t I, typename O, typename V, typename W>
  static V saved(T const& object, Vek::Scalar<O, V, W> const& /*attribute*/) {
    return object.template get<descriptor<I>>();
  }
  template <std::size_t I, typename O, typename V>
  static std::monostate saved(T const& /*object*/, Vek::Derived<O, V> const& /*attribute*/) {
    return {};
  }
  template <std::size_t I, typename O, typename K, typename V, typename W>
  static std::vector<std::pair<K, V>> saved(T const& object,
                                            Vek::Keyed<O, K, V, W> const& /*attribute*/) {
    std::vector<std::pair<K, V>> members;
    for (auto const& member : object.template members<descriptor<I>>())
      members.emplace_back(member.key(), member.value());
    return members;
  }
  template <std::size_t... I>
  static auto valuesOf(T const& object, std::index_sequence<I...> /*attributes*/) {
    return std::tuple{saved<I>(object, descriptor<I>)...};
  }

  template <std::size_t I, typename O, typename V, typename W>
  void loadOne(Vek::Scalar<O, V, W> const& /*attribute*/) const {
    object_->template set<descriptor<I>>(std::get<I>(values_));
  }
  template <std::size_t I, typename O, typename V>
  void loadOne(Vek::Derived<O, V> const& /*attribute*/) const {}
  template <std::size_t I, typename O, typename K, typename V, typename W>
  void loadOne(Vek::Keyed<O, K, V, W> const& /*attribute*/) const {
    auto const& members = std::get<I>(values_);
    std::vector<K> absent;
    for (auto const& member : object_->template members<descriptor<I>>()) {
      bool wanted = false;
      for (auto const& [key, value] : members)
        wanted = wanted || key == member.key();
      if (!wanted) absent.push_back(member.key());
    }
    for (K const& key : absent)
      object_->template memberDel<descriptor<I>>(key);
    for (auto const& [key, value] : members)
      object_->template memberIs<descriptor<I>>(key, value);
  }
  template <std::size_t... I>
  void loadEach(std::index_sequence<I...> /*attributes*/) const {
    (loadOne<I>(descriptor<I>), ...);
  }

  Vek::Ptr<T> object_;
  decltype(valuesOf(std::declval<T const&>(), kAll)) values_;
};
