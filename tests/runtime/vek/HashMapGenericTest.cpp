#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <gtest/gtest.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "runtime/vek/HashMapGeneric.h"

namespace {

bool refuseMemory = false;

std::size_t pageSize() {
  return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// While it is on, what a table asks for and is as large as one page stands on a page of its own
/// between two that cannot be read. A test that needs it has one such table.
bool fencePages = false;
void* fencedPage = nullptr;

void* newFencedPage() {
  void* const pages = mmap(nullptr, 3 * pageSize(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) return nullptr;
  fencedPage = static_cast<std::byte*>(pages) + pageSize();
  mprotect(fencedPage, pageSize(), PROT_READ | PROT_WRITE);
  return fencedPage;
}

void release(void* memory) noexcept {
  if (memory != nullptr && memory == fencedPage) {
    munmap(static_cast<std::byte*>(memory) - pageSize(), 3 * pageSize());
    fencedPage = nullptr;
  } else {
    ::operator delete(memory);
  }
}

}  // namespace

// What a table asks for when it grows, and gives back. The sanitizers know the two that these lead
// to.
void* operator new[](std::size_t size) {
  return ::operator new(size);
}
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept {
  if (refuseMemory) return nullptr;
  if (fencePages && size == pageSize()) return newFencedPage();
  try {
    return ::operator new(size);
  } catch (...) {
    return nullptr;
  }
}
void operator delete[](void* memory) noexcept {
  release(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}

namespace {

using Vek::HashKeyTable;
using Vek::HashLink;
using Vek::HashMapGeneric;

struct Member : HashLink {
  explicit Member(std::uint32_t h, int k = 0) : hash{h}, key{k} {}
  std::uint32_t hash;
  int key;
};

Member const& keyOf(void const* key) {
  return *static_cast<Member const*>(key);
}

// A member serves as its own key: the hash that it says, then its number.
constexpr HashKeyTable kTable{[](void const* key) { return keyOf(key).hash; },
                              [](HashLink const& link, void const* key) {
                                return static_cast<Member const&>(link).key == keyOf(key).key;
                              },
                              [](HashLink const& link, void const* key) {
                                return static_cast<Member const&>(link).key < keyOf(key).key;
                              }};

void insert(HashMapGeneric& map, Member& member) {
  map.newMemberG(member, &member, kTable);
}

HashLink* nextAfter(HashMapGeneric const& map, Member const& member) {
  return map.findNextG(Vek::bitReverse(member.hash), &member, kTable);
}

std::vector<HashLink const*> walked(HashMapGeneric const& map) {
  std::vector<HashLink const*> members;
  std::size_t bucket = 0;
  for (HashLink* link = map.advanceTo(bucket); link != nullptr;
       link = map.following(*link, bucket)) {
    EXPECT_EQ(bucket, map.bucketOf(*link));
    members.push_back(link);
  }
  return members;
}

/// The number of buckets after each of `count` insertions into a table of that size hint.
std::vector<std::size_t> bucketsWhileGrowing(unsigned sizeHint, std::uint32_t count) {
  std::deque<Member> members;
  HashMapGeneric map{sizeHint};
  std::vector<std::size_t> buckets;
  for (std::uint32_t i = 0; i < count; ++i) {
    insert(map, members.emplace_back(i * 2654435761U));
    buckets.push_back(map.buckets());
  }
  return buckets;
}

TEST(BitReverse, TurnsTheBitsAround) {
  EXPECT_EQ(Vek::bitReverse(0), 0U);
  EXPECT_EQ(Vek::bitReverse(1), 0x80000000U);
  EXPECT_EQ(Vek::bitReverse(2), 0x40000000U);
  EXPECT_EQ(Vek::bitReverse(0x0000FFFF), 0xFFFF0000U);
  EXPECT_EQ(Vek::bitReverse(0x12345678), 0x1E6A2C48U);
  EXPECT_EQ(Vek::bitReverse(0x1E6A2C48), 0x12345678U);
  EXPECT_EQ(Vek::bitReverse(0xFFFFFFFF), 0xFFFFFFFFU);
}

TEST(HashMapGeneric, EmptyTableHasOneEmptyBucket) {
  HashMapGeneric const map{4};
  EXPECT_EQ(map.members(), 0U);
  EXPECT_EQ(map.buckets(), 1U);
  EXPECT_EQ(map.bucketBits(), 0U);
  EXPECT_EQ(map.findNextBucket(0), nullptr);
  EXPECT_EQ(map.findNextBucket(1), nullptr);
  EXPECT_EQ(map.startAtHash(0xFFFFFFFF), nullptr);
}

TEST(HashMapGeneric, ChainsAsManyMembersAsTheHintAndThenDoublesWithTheirNumber) {
  EXPECT_EQ(bucketsWhileGrowing(4, 18), (std::vector<std::size_t>{1, 1, 1, 1, 8, 8, 8, 8, 16, 16,
                                                                  16, 16, 16, 16, 16, 16, 32, 32}));
  EXPECT_EQ(bucketsWhileGrowing(1, 6), (std::vector<std::size_t>{1, 2, 4, 4, 8, 8}));
}

TEST(HashMapGeneric, HintIsBounded) {
  auto const buckets = bucketsWhileGrowing(1000000, 66);
  EXPECT_EQ(buckets[63], 1U);
  EXPECT_EQ(buckets[64], 128U);
}

/// Whether a table of size hint 0 takes three members, shows them and lets them go.
bool worksWithAHintOfZero() {
  Member a{1}, b{2}, c{3};
  HashMapGeneric map{0};
  for (Member* member : {&a, &b, &c})
    insert(map, *member);
  return map.members() == 3 && walked(map).size() == 3 && map.deleteMember(a) &&
         map.deleteMember(b) && map.deleteMember(c);
}

// In a process of its own: a table that takes its array for a chain follows wild pointers.
TEST(HashMapGenericDeathTest, TakesAHintOfZero) {
  EXPECT_EXIT(std::_Exit(worksWithAHintOfZero() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(HashMapGeneric, BucketIsTakenFromTheTopBitsOfTheReversedHash) {
  // The low three bits of these hashes, turned around, are buckets 0, 4, 6, 3 and 7 of 8.
  Member zero{0xF0}, four{0xF1}, six{0xF3}, three{0xF6}, seven{0xFF};
  HashMapGeneric map{4};
  for (Member* member : {&seven, &three, &zero, &six, &four})
    insert(map, *member);
  ASSERT_EQ(map.buckets(), 8U);
  ASSERT_EQ(map.bucketBits(), 3U);

  EXPECT_EQ(map.findNextBucket(0), &zero);
  for (std::size_t const bucket : {1U, 2U, 3U})
    EXPECT_EQ(map.findNextBucket(bucket), &three);
  EXPECT_EQ(map.findNextBucket(4), &four);
  for (std::size_t const bucket : {5U, 6U})
    EXPECT_EQ(map.findNextBucket(bucket), &six);
  EXPECT_EQ(map.findNextBucket(7), &seven);
  EXPECT_EQ(map.findNextBucket(8), nullptr);

  EXPECT_EQ(map.startAtHash(0x00000000), &zero);
  EXPECT_EQ(map.startAtHash(0x20000000), nullptr);
  EXPECT_EQ(map.startAtHash(0x7FFFFFFF), &three);
  EXPECT_EQ(map.startAtHash(0x80000000), &four);
  EXPECT_EQ(map.startAtHash(0xFFFFFFFF), &seven);
}

TEST(HashMapGeneric, OneBucketHoldsEverything) {
  Member low{0}, high{0xFFFFFFFF};
  HashMapGeneric map{4};
  insert(map, high);
  insert(map, low);
  EXPECT_EQ(map.startAtHash(0), &low);
  EXPECT_EQ(map.startAtHash(0xFFFFFFFF), &low);
  EXPECT_EQ(HashMapGeneric::next(low), &high);
  EXPECT_EQ(HashMapGeneric::next(high), nullptr);
}

TEST(HashMapGeneric, MembersOfOneHashAreChainedByKey) {
  Member b{7, 2}, a{7, 1}, c{7, 3};
  HashMapGeneric map{4};
  for (Member* member : {&b, &c, &a})
    insert(map, *member);
  EXPECT_EQ(walked(map), (std::vector<HashLink const*>{&a, &b, &c}));
  EXPECT_EQ(a.order(), 0xE0000000U);
}

TEST(HashMapGeneric, NextOfAKeyIsFoundWhetherOrNotTheKeyIsPresent) {
  Member a{7, 1}, b{7, 2}, c{7, 4}, other{1};  // reversed: 0xE..., and 0x8... for `other`
  HashMapGeneric map{4};
  for (Member* member : {&a, &b, &c, &other})
    insert(map, *member);
  EXPECT_EQ(nextAfter(map, other), &a);
  EXPECT_EQ(nextAfter(map, a), &b);
  EXPECT_EQ(nextAfter(map, b), &c);
  EXPECT_EQ(nextAfter(map, c), nullptr);
  EXPECT_EQ(nextAfter(map, Member{7, 0}), &a);
  EXPECT_EQ(nextAfter(map, Member{7, 3}), &c);
  EXPECT_EQ(nextAfter(map, Member{7, 5}), nullptr);
  EXPECT_EQ(nextAfter(map, Member{0, 9}), &other);
  EXPECT_EQ(nextAfter(map, Member{3, 9}), &a);
  EXPECT_EQ(nextAfter(map, Member{0xFFFFFFFF, 0}), nullptr);
}

TEST(HashMapGeneric, VersionChangesWheneverAMemberComesOrGoes) {
  Member a{1}, b{2};
  HashMapGeneric map{4};
  std::vector<std::uint32_t> versions{map.version()};
  insert(map, a);
  versions.push_back(map.version());
  insert(map, b);
  versions.push_back(map.version());
  ASSERT_TRUE(map.deleteMember(a));
  versions.push_back(map.version());
  EXPECT_FALSE(map.deleteMember(a)) << "it has gone already";
  EXPECT_EQ(map.version(), versions.back());
  map.emptyAllBuckets([](HashLink&) {});
  versions.push_back(map.version());
  for (std::size_t i = 1; i < versions.size(); ++i)
    EXPECT_NE(versions[i], versions[i - 1]) << "change " << i;
  EXPECT_EQ(map.members(), 0U);
}

TEST(HashMapGeneric, EmptyAllBucketsReleasesInOrderAfterTheTableIsEmpty) {
  std::deque<Member> members;
  HashMapGeneric map{4};
  for (std::uint32_t hash = 0; hash < 20; ++hash)
    insert(map, members.emplace_back(hash));
  auto const order = walked(map);
  ASSERT_EQ(order.size(), 20U);

  std::vector<HashLink const*> released;
  map.emptyAllBuckets([&](HashLink& link) {
    EXPECT_EQ(map.members(), 0U);
    EXPECT_EQ(map.findNextBucket(0), nullptr);
    EXPECT_EQ(HashMapGeneric::next(link), nullptr);
    released.push_back(&link);
  });
  EXPECT_EQ(released, order);
  EXPECT_EQ(map.buckets(), 1U);

  insert(map, members.front());
  EXPECT_EQ(map.members(), 1U) << "it can be filled again";
}

TEST(HashMapGeneric, GrowthThatFindsNoMemoryIsPutOff) {
  std::deque<Member> members;
  HashMapGeneric map{4};
  refuseMemory = true;
  for (std::uint32_t hash = 0; hash < 12; ++hash)
    insert(map, members.emplace_back(hash));
  refuseMemory = false;
  EXPECT_EQ(map.buckets(), 1U);
  EXPECT_EQ(map.members(), 12U);
  auto const order = walked(map);
  EXPECT_EQ(order.size(), 12U);

  insert(map, members.emplace_back(0xFFFFFFFF));  // comes last
  EXPECT_EQ(map.buckets(), 16U) << "it grows to fit with the next member that finds memory";
  auto grown = walked(map);
  ASSERT_EQ(grown.size(), 13U);
  EXPECT_EQ(grown.back(), &members.back());
  grown.pop_back();
  EXPECT_EQ(grown, order);
}

TEST(HashMapGeneric, RemovedMemberLeadsNowhere) {
  std::deque<Member> members;
  HashMapGeneric map{4};
  for (std::uint32_t hash = 0; hash < 3; ++hash)
    insert(map, members.emplace_back(hash));
  // In the one chain they stand by bit-reversed hash: 0, 2, 1.
  EXPECT_EQ(HashMapGeneric::next(members[2]), &members[1]);
  EXPECT_TRUE(map.deleteMember(members[2]));
  EXPECT_EQ(HashMapGeneric::next(members[2]), nullptr);
  EXPECT_EQ(HashMapGeneric::next(members[0]), &members[1]);
}

// A walk asks for members before it comes to them, and so does growth. Neither looks beyond the table.
TEST(HashMapGeneric, WalksAndGrowthReadTheTableAlone) {
  std::size_t const buckets = pageSize() / sizeof(void*);
  std::deque<Member> members;
  HashMapGeneric map{4};
  fencePages = true;
  for (std::uint32_t i = 0; i < buckets; ++i)
    insert(map, members.emplace_back(Vek::bitReverse(i * 2654435761U)));
  fencePages = false;
  ASSERT_EQ(map.buckets(), buckets);
  ASSERT_NE(fencedPage, nullptr);
  EXPECT_EQ(walked(map).size(), buckets);
  insert(map, members.emplace_back(7));
  EXPECT_EQ(map.buckets(), 2 * buckets);
  EXPECT_EQ(fencedPage, nullptr) << "given back";
  EXPECT_EQ(walked(map).size(), buckets + 1);
}

}  // namespace
