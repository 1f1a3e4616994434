#include "runtime/vek/HashMapGeneric.h"

#include <bit>
#include <new>

namespace Vek {

HashMapGeneric::~HashMapGeneric() {
  if (bits_ != 0) delete[] many_;
}

HashLink* HashMapGeneric::findNextG(std::uint32_t order, void const* key,
                                    HashKeyTable const& table) const noexcept {
  for (HashLink* member = startAtHash(order); member != nullptr; member = member->next_) {
    if (member->order_ < order) continue;
    if (member->order_ > order) return member;
    if (!table.keyLessThan(*member, key) && !table.keyEquals(*member, key)) return member;
  }
  return findNextBucket(bucketOf(order) + 1);
}

bool HashMapGeneric::deleteMember(HashLink& member) noexcept {
  HashLink** place = slot(bucketOf(member.order_));
  while (*place != nullptr && *place != &member)
    place = &(*place)->next_;
  if (*place == nullptr) return false;
  deleteMemberAt(place);
  return true;
}

// Every chain is sorted, and a bucket splits into buckets whose numbers follow one another: so a
// chain is cut into pieces in one pass, and no key is looked at.
void HashMapGeneric::grow() noexcept {
  unsigned const bits = bits_ == 0 ? static_cast<unsigned>(std::bit_width(members_)) : bits_ + 1U;
  if (bits > kMaxBits) return;
  auto** const grown = new (std::nothrow) HashLink* [std::size_t{1} << bits] {};
  if (grown == nullptr) return;

  auto const newBucketOf = [bits](HashLink const& member) {
    return static_cast<std::size_t>((std::uint64_t{member.order_} << bits) >> 32U);
  };
  for (std::size_t old = 0, end = buckets(); old < end; ++old) {
    HashLink* member = bucket(old);
    if (old + kFetchAhead < end) __builtin_prefetch(bucket(old + kFetchAhead));
    while (member != nullptr) {
      std::size_t const index = newBucketOf(*member);
      grown[index] = member;
      while (member->next_ != nullptr && newBucketOf(*member->next_) == index)
        member = member->next_;
      HashLink* const rest = member->next_;
      member->next_ = nullptr;
      member = rest;
    }
  }
  if (bits_ != 0) delete[] many_;
  many_ = grown;
  bits_ = static_cast<std::uint8_t>(bits);
}

HashLink* HashMapGeneric::takeAll() noexcept {
  HashLink* all = nullptr;
  HashLink** end = &all;
  for (std::size_t index = 0; index < buckets(); ++index) {
    *end = bucket(index);
    while (*end != nullptr)
      end = &(*end)->next_;
  }
  if (bits_ != 0) delete[] many_;
  single_ = nullptr;
  bits_ = 0;
  members_ = 0;
  ++version_;
  return all;
}

}  // namespace Vek
