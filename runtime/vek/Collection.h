#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "runtime/vek/HashMap.h"
#include "runtime/vek/Pool.h"

#pragma GCC visibility push(default)

namespace Vek {

/// One member of a keyed attribute: its key and its value.
template <typename Key, typename Value>
class CollectionMember final : public HashLink {
  static_assert(alignof(Key) <= Pool::kAlignment && alignof(Value) <= Pool::kAlignment);

 public:
  CollectionMember(Key const& key, Value value) : key_{key}, value_{std::move(value)} {}
  CollectionMember(CollectionMember const&) = delete;
  CollectionMember& operator=(CollectionMember const&) = delete;

  Key const& key() const noexcept { return key_; }
  Value const& value() const noexcept { return value_; }
  Key const& fwkKey() const noexcept { return key_; }

  // Counted for the sake of walks; never shared between threads, so never atomic.
  void addReference() const noexcept { ++references_; }
  void dropReference() const noexcept {
    if (--references_ == 0) delete this;
  }

  static void* operator new(std::size_t size) { return Pool::allocate(size); }
  static void operator delete(void* memory, std::size_t size) noexcept {
    Pool::release(memory, size);
  }

 private:
  template <typename Type>
  friend class State;
  template <typename K, typename V>
  friend class Collection;
  ~CollectionMember() = default;

  mutable std::uint32_t references_{1};
  Key key_;
  Value value_;
};

/// The members of a keyed attribute of a state object, from `Key` to `Value`.
///
/// It can be walked with a range-for; the walk goes on correctly when members come and go under it.
/// Writing goes through the state object, which tells its watchers.
template <typename Key, typename Value>
class Collection {
 public:
  using Member = CollectionMember<Key, Value>;
  using Members = HashMap<Member, Key>;
  using Iterator = typename Members::Iterator;

  std::uint32_t size() const noexcept { return members_.members(); }
  bool empty() const noexcept { return size() == 0; }
  bool has(Key const& key) const noexcept { return members_.find(key) != nullptr; }
  /// The value of that key, or null; valid until the collection changes.
  Value const* find(Key const& key) const noexcept {
    Member const* const member = members_.find(key);
    return member == nullptr ? nullptr : &member->value_;
  }

  Iterator begin() const { return members_.iterator(); }
  /// A walk from the member of that key on; from the first beyond its place when it is absent.
  Iterator from(Key const& key) const { return members_.iterator(key); }
  std::default_sentinel_t end() const noexcept { return {}; }

 private:
  template <typename Derived>
  friend class State;

  Members members_;
};

}  // namespace Vek

#pragma GCC visibility pop
