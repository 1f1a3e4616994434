#pragma once

#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>

#include "runtime/vek/HashMapGeneric.h"
#include "runtime/vek/Ptr.h"

#pragma GCC visibility push(default)

namespace Vek {

/// Size hint of the collections that hold one entry for each profile or interface.
inline constexpr unsigned kSizeHint{4};

/// Keyed collection of counted members, each of which carries its own chain link and knows its key.
///
/// `Entry` derives from `HashLink`, has `fwkKey()` and is counted (`addReference`,
/// `dropReference`). `Key` has `hash()`, `==` and `<`, and `reversedHash()` if it has that
/// at hand (the bits of the hash in reverse order). `Value` is what a look-up yields, made from
/// an `Entry*`.
///
/// Order of a walk: by bit-reversed hash, then by key; the same for the same keys, however the
/// collection came to hold them.
///
/// Ownership: the collection holds one reference on each member. A walk holds one on the member it
/// stands on, so that one stays valid, also after its removal, until the walk goes on.
template <typename Entry, typename Key, typename Value = Ptr<Entry>>
class HashMap {
 public:
  class Iterator;

  explicit HashMap(unsigned sizeHint = kSizeHint) noexcept : table_{sizeHint} {}
  ~HashMap() { clear(); }
  HashMap(HashMap const&) = delete;
  HashMap& operator=(HashMap const&) = delete;

  std::uint32_t members() const noexcept { return table_.members(); }

  /// The member of that key, or an empty value.
  Value operator[](Key const& key) const { return Value(find(key)); }

  /// The member of that key, or null; the collection's reference keeps it.
  Entry* find(Key const& key) const noexcept {
    std::uint32_t const order = orderOf(key);
    for (HashLink* link = table_.startAtHash(order); link != nullptr;
         link = HashMapGeneric::next(*link)) {
      if (link->order() < order) continue;
      if (link->order() > order) return nullptr;
      auto* const member = static_cast<Entry*>(link);
      if (member->fwkKey() == key) return member;
    }
    return nullptr;
  }

  /// Makes `member` a member under its own key. A member of that key is replaced and released.
  void newMember(Ptr<Entry> member) {
    Key const& key = member->fwkKey();
    std::uint32_t const order = orderOf(key);
    HashLink** const place = table_.placeOf(order, &key, keyTable());
    Ptr<Entry> replaced;
    if (holds(place, order, key)) [[unlikely]]
      replaced = removedAt(place);
    table_.newMemberAt(place, *member.release(), order, &key, keyTable());
  }

  /// The member of the key of `member`: the one that is here, or else `member`, which becomes one;
  /// the collection then takes a reference of its own.
  Entry& memberOrNew(Ptr<Entry> const& member) noexcept {
    Key const& key = member->fwkKey();
    std::uint32_t const order = orderOf(key);
    HashLink** const place = table_.placeOf(order, &key, keyTable());
    if (holds(place, order, key)) return static_cast<Entry&>(**place);
    table_.newMemberAt(place, *Ptr<Entry>{member}.release(), order, &key, keyTable());
    return *member;
  }

  /// Removes the member of that key and returns it; an empty pointer when there is none.
  Ptr<Entry> deleteMember(Key const& key) {
    std::uint32_t const order = orderOf(key);
    HashLink** const place = table_.placeOf(order, &key, keyTable());
    return holds(place, order, key) ? removedAt(place) : nullptr;
  }

  /// Removes the member that the walk stands on, if it still is one, and returns it. The walk
  /// stands on it until it is advanced.
  Ptr<Entry> deleteMember(Iterator& position) {
    Entry* const member = position.member_.get();
    if (member == nullptr || !table_.deleteMember(*member)) return nullptr;
    return Ptr<Entry>::adopt(member);
  }

  /// Removes every member; releases them after the collection is empty.
  void clear() {
    table_.emptyAllBuckets(
        [](HashLink& link) { (void)Ptr<Entry>::adopt(static_cast<Entry*>(&link)); });
  }

  /// A walk from the first member on. It goes on correctly whatever is inserted or removed
  /// meanwhile: a member that was there all along is visited once. The collection must outlive it.
  Iterator iterator() const { return Iterator{*this}; }
  /// A walk from the member of that key on; from the first beyond its place when it is absent.
  Iterator iterator(Key const& key) const {
    Entry* from = find(key);
    if (from == nullptr)
      from = static_cast<Entry*>(table_.findNextG(orderOf(key), &key, keyTable()));
    return Iterator{*this, from};
  }
  /// Calls `visit(member)` on each member, in the order of a walk. Holds nobody: `visit` neither
  /// changes the collection nor calls anyone who could.
  template <typename Visit>
  void forEach(Visit visit) const {
    for (std::size_t bucket = 0; HashLink* link = table_.advanceTo(bucket); ++bucket)
      for (; link != nullptr; link = HashMapGeneric::next(*link))
        visit(static_cast<Entry&>(*link));
  }
  Iterator begin() const { return iterator(); }
  std::default_sentinel_t end() const noexcept { return {}; }

 private:
  static constexpr HashKeyTable keyTable() noexcept {
    return {[](void const* key) { return static_cast<Key const*>(key)->hash(); },
            [](HashLink const& member, void const* key) {
              return static_cast<Entry const&>(member).fwkKey() == *static_cast<Key const*>(key);
            },
            [](HashLink const& member, void const* key) {
              return static_cast<Entry const&>(member).fwkKey() < *static_cast<Key const*>(key);
            }};
  }

  static std::uint32_t orderOf(Key const& key) noexcept {
    if constexpr (requires { key.reversedHash(); })
      return key.reversedHash();
    else
      return bitReverse(key.hash());
  }

  /// Whether the member of that key stands at `place`, which is where it must.
  static bool holds(HashLink* const* place, std::uint32_t order, Key const& key) noexcept {
    return *place != nullptr && (*place)->order() == order &&
           static_cast<Entry const&>(**place).fwkKey() == key;
  }
  Ptr<Entry> removedAt(HashLink** place) noexcept {
    return Ptr<Entry>::adopt(static_cast<Entry*>(&table_.deleteMemberAt(place)));
  }

  HashMapGeneric table_;
};

/// A walk over a keyed collection.
template <typename Entry, typename Key, typename Value>
class HashMap<Entry, Key, Value>::Iterator {
 public:
  explicit Iterator(HashMap const& map)
      : Iterator{map, static_cast<Entry*>(map.table_.findNextBucket(0))} {}

  explicit operator bool() const noexcept { return bool{member_}; }
  friend bool operator==(Iterator const& a, std::default_sentinel_t) noexcept { return !a.member_; }

  Entry& operator*() const noexcept { return *member_; }
  Entry* operator->() const noexcept { return member_.operator->(); }
  /// The member the walk stands on; empty at the end.
  Ptr<Entry> const& member() const noexcept { return member_; }

  /// Whether the member the walk stands on is still one.
  bool isMember() const { return member_ && map_->find(member_->fwkKey()) == member_.get(); }

  Iterator& operator++() {
    if (!member_) return *this;
    HashMapGeneric const& table = map_->table_;
    if (version_ == table.version()) [[likely]] {
      member_ = Ptr<Entry>{static_cast<Entry*>(table.following(*member_, bucket_))};
    } else {
      Key const key = member_->fwkKey();
      standOn(static_cast<Entry*>(table.findNextG(member_->order(), &key, keyTable())));
    }
    return *this;
  }

 private:
  friend class HashMap;
  Iterator(HashMap const& map, Entry* from) : map_{&map} { standOn(from); }

  void standOn(Entry* member) {
    // Order: the member comes last. To leave the former one may end it, which may change the table;
    // what is noted here is then seen to be of before.
    version_ = map_->table_.version();
    if (member != nullptr) bucket_ = map_->table_.bucketOf(*member);
    member_ = Ptr<Entry>{member};
  }

  HashMap const* map_;
  Ptr<Entry> member_;
  std::size_t bucket_{0};  // of the member, while the table's version is this:
  std::uint32_t version_{0};
};

}  // namespace Vek

#pragma GCC visibility pop
