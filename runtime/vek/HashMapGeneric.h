#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "runtime/vek/BitReverse.h"

#pragma GCC visibility push(default)

namespace Vek {

/// What a member of a keyed collection carries for the table it stands in.
class HashLink {
 public:
  /// The bit-reversed hash of the member's key while it is a member, and after it was removed.
  std::uint32_t order() const noexcept { return order_; }

 protected:
  HashLink() = default;
  ~HashLink() = default;

 private:
  friend class HashMapGeneric;
  HashLink* next_{nullptr};
  std::uint32_t order_{0};
};

/// What the untyped table must know of the keys of its members.
struct HashKeyTable {
  std::uint32_t (*hash)(void const* key);
  bool (*keyEquals)(HashLink const& member, void const* key);
  bool (*keyLessThan)(HashLink const& member, void const* key);
};

/// The untyped table of keyed collections: chains of members that live elsewhere.
///
/// The bucket of a key is the top bits of its bit-reversed hash (a table of 2^n buckets uses the
/// top n), and a chain is sorted by that number, then by key. So the members have one order that
/// does not depend on the number of buckets, and a walk that remembers the last member it saw can
/// go on after any insertion, removal or growth without skipping or repeating one.
///
/// Up to as many members as the size hint stand in one chain inside the object, without memory of
/// their own. Growth that finds no memory is put off: the chains stay longer.
///
/// Ownership: none; `HashMap` holds the references.
class HashMapGeneric {
 public:
  explicit HashMapGeneric(unsigned sizeHint) noexcept
      : hint_{static_cast<std::uint8_t>(std::clamp(sizeHint, 1U, kMaxHint))} {}
  HashMapGeneric(HashMapGeneric const&) = delete;
  HashMapGeneric& operator=(HashMapGeneric const&) = delete;
  ~HashMapGeneric();

  std::uint32_t members() const noexcept { return members_; }
  /// Changes whenever a member comes or goes.
  std::uint32_t version() const noexcept { return version_; }
  unsigned bucketBits() const noexcept { return bits_; }
  std::size_t buckets() const noexcept { return std::size_t{1} << bits_; }

  /// First member of the chain in which a key of this bit-reversed hash stands, or null.
  HashLink* startAtHash(std::uint32_t order) const noexcept { return bucket(bucketOf(order)); }
  static HashLink* next(HashLink const& member) noexcept { return member.next_; }

  /// First member of the first bucket from `bucket` on that has one, or null.
  HashLink* findNextBucket(std::size_t bucket) const noexcept { return advanceTo(bucket); }
  /// The same; `bucket` becomes the one it stands in.
  HashLink* advanceTo(std::size_t& bucket) const noexcept {
    std::size_t const end = buckets();
    HashLink* const* const heads = bits_ == 0 ? &single_ : many_;
    if (bits_ < kSpreadBits) {
      for (; bucket < end; ++bucket)
        if (HashLink* const first = heads[bucket]) return first;
      return nullptr;
    }
    for (; bucket < end; ++bucket) {
      // A walk goes on to those that come soon; so many stand anywhere in memory.
      __builtin_prefetch(heads[(bucket + kFetchAhead) & (end - 1)]);
      if (HashLink* const first = heads[bucket]) return first;
    }
    return nullptr;
  }
  /// The member that follows `member`, which stands in `bucket`, or null. `bucket` becomes that of the
  /// one returned.
  HashLink* following(HashLink const& member, std::size_t& bucket) const noexcept {
    return member.next_ != nullptr ? member.next_ : advanceTo(++bucket);
  }
  /// Where a member stands until one comes or goes.
  std::size_t bucketOf(HashLink const& member) const noexcept { return bucketOf(member.order_); }
  /// First member beyond the place of `key`, whether or not `key` itself is present; or null.
  HashLink* findNextG(std::uint32_t order, void const* key,
                      HashKeyTable const& table) const noexcept;

  // Inline: where the table of the keys is known, nothing is called through it.

  /// Where the chain holds the member of `key`, or is to hold it. Valid until the table changes.
  HashLink** placeOf(std::uint32_t order, void const* key, HashKeyTable const& table) noexcept {
    HashLink** place = slot(bucketOf(order));
    while (*place != nullptr && ((*place)->order_ < order ||
                                 ((*place)->order_ == order && !table.keyEquals(**place, key) &&
                                  table.keyLessThan(**place, key))))
      place = &(*place)->next_;
    return place;
  }
  /// Links `member` in under `key`, which must be absent; `place` as `placeOf` found it.
  void newMemberAt(HashLink** place, HashLink& member, std::uint32_t order, void const* key,
                   HashKeyTable const& table) noexcept {
    member.order_ = order;
    if (members_ >= (bits_ == 0 ? hint_ : buckets())) [[unlikely]] {
      grow();
      place = placeOf(order, key, table);
    }
    member.next_ = *place;
    *place = &member;
    ++members_;
    ++version_;
  }
  /// Unlinks the member that stands at `place` and returns it.
  HashLink& deleteMemberAt(HashLink** place) noexcept {
    HashLink& member = **place;
    *place = member.next_;
    member.next_ = nullptr;
    --members_;
    ++version_;
    return member;
  }

  /// Links `member` in under `key`, which must be absent.
  void newMemberG(HashLink& member, void const* key, HashKeyTable const& table) noexcept {
    std::uint32_t const order = bitReverse(table.hash(key));
    newMemberAt(placeOf(order, key, table), member, order, key, table);
  }
  /// Unlinks `member`; false when it is not a member.
  bool deleteMember(HashLink& member) noexcept;
  /// Unlinks every member and frees the table's memory; calls `release` on each, in order, after
  /// the table is empty.
  template <typename Release>
  void emptyAllBuckets(Release release) {
    HashLink* chain = takeAll();
    while (chain != nullptr) {
      HashLink* const member = chain;
      chain = member->next_;
      member->next_ = nullptr;
      release(*member);
    }
  }

 private:
  static constexpr unsigned kMaxHint{64};
  static constexpr unsigned kMaxBits{30};
  // From so many bits (512 buckets) on, a walk asks for members so many buckets before it comes to
  // them.
  static constexpr unsigned kSpreadBits{9};
  static constexpr std::size_t kFetchAhead{16};

  std::size_t bucketOf(std::uint32_t order) const noexcept {
    return static_cast<std::size_t>((std::uint64_t{order} << bits_) >> 32U);
  }
  HashLink* bucket(std::size_t index) const noexcept { return bits_ == 0 ? single_ : many_[index]; }
  HashLink** slot(std::size_t index) noexcept { return bits_ == 0 ? &single_ : &many_[index]; }
  void grow() noexcept;
  HashLink* takeAll() noexcept;

  union {
    HashLink* single_{nullptr};
    HashLink** many_;
  };
  std::uint32_t members_{0};
  std::uint32_t version_{0};
  std::uint8_t bits_{0};
  std::uint8_t hint_;
};

}  // namespace Vek

#pragma GCC visibility pop
