#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "runtime/vek/HashMap.h"
#include "runtime/vek/String.h"

#include "tests/runtime/support/KeyedEntry.h"

namespace {

using RuntimeTest::add;
using RuntimeTest::ChosenKey;
using RuntimeTest::KeyedEntry;
using RuntimeTest::KeyedMap;
using Vek::Ptr;

using Hashes = std::vector<std::uint32_t>;

class HashMap : public testing::Test {
 protected:
  ~HashMap() override {
    map.clear();
    EXPECT_EQ(KeyedEntry::alive, 0);
  }

  void fill(Hashes const& hashes) {
    for (std::uint32_t const hash : hashes)
      add(map, hash);
  }
  Hashes walked() const {
    Hashes hashes;
    for (KeyedEntry const& entry : map)
      hashes.push_back(entry.fwkKey().chosenHash);
    return hashes;
  }
  Hashes rest(KeyedMap::Iterator& walk) const {
    Hashes hashes;
    for (; walk; ++walk)
      hashes.push_back(walk->fwkKey().chosenHash);
    return hashes;
  }
  static ChosenKey key(std::uint32_t hash) { return {hash, 0}; }

  KeyedMap map{4};
};

TEST_F(HashMap, YieldsTheMemberOfAKeyOrNone) {
  auto const entry = add(map, 5);
  EXPECT_EQ(map.find(key(5)), entry.get());
  EXPECT_TRUE(map[key(5)] == entry);
  EXPECT_EQ(map.find(key(6)), nullptr);
  EXPECT_FALSE(map[key(6)]);
  EXPECT_EQ(map.members(), 1U);
}

TEST_F(HashMap, TellsKeysOfOneHashApart) {
  auto const one = add(map, 5, 1);
  auto const other = add(map, 5, 2);
  EXPECT_EQ(map.find({5, 1}), one.get());
  EXPECT_EQ(map.find({5, 2}), other.get());
  EXPECT_EQ(map.find({5, 0}), nullptr);
  EXPECT_EQ(map.find({5, 3}), nullptr);
  EXPECT_EQ(map.members(), 2U);
}

/// A key that counts how often it is compared.
struct CountingKey {
  std::uint32_t chosenHash{0};

  std::uint32_t hash() const noexcept { return chosenHash; }
  friend bool operator==(CountingKey const& a, CountingKey const& b) noexcept {
    ++compared;
    return a.chosenHash == b.chosenHash;
  }
  friend bool operator<(CountingKey const& a, CountingKey const& b) noexcept {
    return a.chosenHash < b.chosenHash;
  }

  static inline int compared{0};
};

class CountingEntry final : public Vek::PtrInterface, public Vek::HashLink {
 public:
  explicit CountingEntry(std::uint32_t hash) : key_{hash} {}
  CountingKey const& fwkKey() const noexcept { return key_; }

 private:
  ~CountingEntry() override = default;
  CountingKey key_;
};

// Keys may be long texts: in a chain of many hashes only those of the hash that is sought are
// compared.
TEST(HashMapLookUp, ComparesNoKeyOfAnotherHash) {
  Vek::HashMap<CountingEntry, CountingKey> map{4};
  for (std::uint32_t const hash : {0U, 1U, 2U, 3U})  // one chain: 0, 2, 1, 3
    map.newMember(Vek::make<CountingEntry>(hash));
  for (std::uint32_t const hash : {0U, 1U, 2U, 3U}) {
    CountingKey::compared = 0;
    EXPECT_NE(map.find(CountingKey{hash}), nullptr);
    EXPECT_EQ(CountingKey::compared, 1) << hash;
  }
  CountingKey::compared = 0;
  EXPECT_EQ(map.find(CountingKey{6}), nullptr);  // its place is between 2 and 1
  EXPECT_EQ(map.find(CountingKey{7}), nullptr);  // and behind 3
  EXPECT_EQ(CountingKey::compared, 0);
}

TEST_F(HashMap, HoldsOneReferenceOnEachMember) {
  auto const entry = add(map, 5);
  EXPECT_EQ(entry->referenceCount(), 2U);
  auto const removed = map.deleteMember(key(5));
  EXPECT_TRUE(removed == entry);
  EXPECT_EQ(entry->referenceCount(), 2U) << "the collection's reference passes to the caller";
}

TEST_F(HashMap, ReplacesAndReleasesTheMemberOfTheSameKey) {
  add(map, 5, 0, 1);
  add(map, 5, 0, 2);
  EXPECT_EQ(KeyedEntry::alive, 1);
  EXPECT_EQ(map.members(), 1U);
  EXPECT_EQ(map[key(5)]->value, 2);
}

TEST_F(HashMap, TakesAMemberThatItHasAlready) {
  auto const entry = add(map, 5);
  map.newMember(entry);
  EXPECT_EQ(map.members(), 1U);
  EXPECT_EQ(entry->referenceCount(), 2U);
}

TEST_F(HashMap, DeletingAnAbsentKeyChangesNothing) {
  add(map, 5);
  EXPECT_FALSE(map.deleteMember(key(6)));
  EXPECT_EQ(map.members(), 1U);
}

// Reversed, three bits: 1 -> 4, 2 -> 2, 3 -> 6, 4 -> 1, 5 -> 5, 6 -> 3, 7 -> 7.
TEST_F(HashMap, IsWalkedByBitReversedHash) {
  fill({7, 6, 5, 4, 3, 2, 1, 0});
  EXPECT_EQ(walked(), (Hashes{0, 4, 2, 6, 1, 5, 3, 7}));
}

TEST_F(HashMap, WalkedInTheSameOrderWhateverTheHistory) {
  Hashes hashes;
  for (std::uint32_t i = 0; i < 100; ++i)
    hashes.push_back(i * 2654435761U);
  Hashes expected = hashes;
  std::sort(expected.begin(), expected.end(), [](std::uint32_t a, std::uint32_t b) {
    return RuntimeTest::reversed(a) < RuntimeTest::reversed(b);
  });

  fill(hashes);
  EXPECT_EQ(walked(), expected);

  map.clear();
  std::reverse(hashes.begin(), hashes.end());
  for (std::uint32_t i = 0; i < 500; ++i)  // grown far beyond, and emptied again
    add(map, i, 1);
  fill(hashes);
  for (std::uint32_t i = 0; i < 500; ++i)
    map.deleteMember({i, 1});
  EXPECT_EQ(walked(), expected);
}

TEST_F(HashMap, ForEachVisitsAllInTheOrderOfAWalk) {
  for (std::uint32_t const count : {0U, 1U, 4U, 5U, 600U, 3000U}) {
    map.clear();
    for (std::uint32_t i = 0; i < count; ++i)
      add(map, i * 2654435761U);
    Hashes visited;
    map.forEach([&](KeyedEntry& entry) {
      EXPECT_EQ(entry.referenceCount(), 1U) << "it takes no reference";
      visited.push_back(entry.fwkKey().hash());
    });
    EXPECT_EQ(visited, walked()) << count;
    EXPECT_EQ(visited.size(), count);
  }
}

TEST_F(HashMap, OrderStaysWhileTheTableGrows) {
  Hashes expected;
  for (std::uint32_t i = 1; i <= 64; ++i) {
    std::uint32_t const hash = i * 2654435761U;
    add(map, hash);
    expected.push_back(hash);
    std::sort(expected.begin(), expected.end(), [](std::uint32_t a, std::uint32_t b) {
      return RuntimeTest::reversed(a) < RuntimeTest::reversed(b);
    });
    ASSERT_EQ(walked(), expected) << i << " members";
  }
}

TEST_F(HashMap, StringKeysAreOrderedByTheHashOfTheText) {
  class Named : public Vek::PtrInterface, public Vek::HashLink {
   public:
    explicit Named(Vek::String name) : name_{std::move(name)} {}
    Vek::String const& fwkKey() const { return name_; }

   private:
    Vek::String name_;
  };
  Vek::HashMap<Named, Vek::String> names{4};
  std::vector<std::pair<std::uint32_t, std::string>> expected;
  for (int i = 1; i <= 40; ++i) {
    std::string const name = "Ethernet" + std::to_string(i);
    names.newMember(Vek::make<Named>(Vek::String{name}));
    expected.emplace_back(RuntimeTest::reversed(Vek::textHash(name)), name);
  }
  std::sort(expected.begin(), expected.end());
  std::size_t i = 0;
  for (Named const& named : names)
    EXPECT_EQ(named.fwkKey(), std::string_view{expected.at(i++).second});
  EXPECT_EQ(i, 40U);
  EXPECT_EQ(names["Ethernet7"]->fwkKey(), "Ethernet7");
}

TEST_F(HashMap, WalkOfAnEmptyMapIsAtItsEnd) {
  KeyedMap::Iterator walk = map.iterator();
  EXPECT_FALSE(walk);
  EXPECT_FALSE(walk.member());
  ++walk;
  EXPECT_FALSE(walk);
  EXPECT_FALSE(map.deleteMember(walk));
}

TEST_F(HashMap, WalkMayBeginAtAKeyOrAtTheFirstOneBeyondItsPlace) {
  fill({0, 2, 6, 5});  // the order of all eight would be 0, 4, 2, 6, 1, 5, 3, 7
  auto const from = [this](ChosenKey const& first) {
    KeyedMap::Iterator walk = map.iterator(first);
    return rest(walk);
  };
  EXPECT_EQ(from(key(0)), (Hashes{0, 2, 6, 5}));
  EXPECT_EQ(from(key(6)), (Hashes{6, 5}));
  EXPECT_EQ(from(key(4)), (Hashes{2, 6, 5}));
  EXPECT_EQ(from(key(1)), (Hashes{5}));
  EXPECT_EQ(from(key(7)), Hashes{});
  EXPECT_EQ(from({6, 1}), (Hashes{5})) << "beyond the member of the same hash";
  EXPECT_EQ(from({6, -1}), (Hashes{6, 5}));
}

TEST_F(HashMap, WalkHoldsTheMemberItStandsOn) {
  add(map, 5, 0, 77);
  KeyedMap::Iterator walk = map.iterator();
  EXPECT_EQ(walk->referenceCount(), 2U);
  map.deleteMember(key(5));
  EXPECT_EQ(KeyedEntry::alive, 1);
  EXPECT_EQ(walk->value, 77);
  ++walk;
  EXPECT_FALSE(walk);
  EXPECT_EQ(KeyedEntry::alive, 0);
}

TEST_F(HashMap, WalkGoesOnWhenItsMemberIsRemoved) {
  fill({0, 4, 2, 6, 1});
  KeyedMap::Iterator walk = map.iterator();
  ++walk;
  ASSERT_EQ(walk->fwkKey().chosenHash, 4U);
  map.deleteMember(key(4));
  ++walk;
  EXPECT_EQ(rest(walk), (Hashes{2, 6, 1}));
}

TEST_F(HashMap, WalkGoesOnWhenItsMemberAndTheNextAreRemoved) {
  fill({0, 4, 2, 6, 1});
  KeyedMap::Iterator walk = map.iterator();
  map.deleteMember(key(4));
  map.deleteMember(key(0));
  map.deleteMember(key(2));
  ++walk;
  EXPECT_EQ(rest(walk), (Hashes{6, 1}));
}

TEST_F(HashMap, WalkDoesNotComeBackToAKeyThatIsReplacedUnderIt) {
  fill({0, 4, 2});
  KeyedMap::Iterator walk = map.iterator();
  ++walk;
  add(map, 4, 0, 1);
  ++walk;
  EXPECT_EQ(rest(walk), (Hashes{2}));
}

TEST_F(HashMap, WalkMeetsWhatIsInsertedBeyondItAndNotWhatIsInsertedBehindIt) {
  fill({4, 6});
  KeyedMap::Iterator walk = map.iterator();
  fill({0, 2});
  ++walk;
  EXPECT_EQ(rest(walk), (Hashes{2, 6}));
}

TEST_F(HashMap, WalkGoesOnAmongMembersOfOneHash) {
  for (int number : {1, 2, 3, 4})
    add(map, 5, number);
  KeyedMap::Iterator walk = map.iterator();
  ++walk;
  map.deleteMember({5, 2});
  map.deleteMember({5, 3});
  ++walk;
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->fwkKey().number, 4);
}

TEST_F(HashMap, WalkGoesOnWhileTheTableGrowsUnderIt) {
  fill({0, 4, 2, 6});
  KeyedMap::Iterator walk = map.iterator();
  ++walk;
  ASSERT_EQ(walk->fwkKey().chosenHash, 4U);
  for (std::uint32_t i = 0; i < 200; ++i)
    add(map, i * 8, 1);  // all before hash 4 in the order
  ++walk;
  Hashes seen;
  for (; walk; ++walk)
    if (walk->fwkKey().number == 0) seen.push_back(walk->fwkKey().chosenHash);
  EXPECT_EQ(seen, (Hashes{2, 6}));
}

TEST_F(HashMap, WalkEndsWhenTheMapIsClearedUnderIt) {
  fill({0, 4, 2});
  KeyedMap::Iterator walk = map.iterator();
  map.clear();
  EXPECT_EQ(walk->fwkKey().chosenHash, 0U);
  ++walk;
  EXPECT_FALSE(walk);
}

TEST_F(HashMap, RemovalThroughTheWalkStandsOnUntilItIsAdvanced) {
  fill({0, 4, 2, 6, 1, 5, 3, 7});
  Hashes removed;
  for (KeyedMap::Iterator walk = map.iterator(); walk; ++walk) {
    Ptr<KeyedEntry> const entry = map.deleteMember(walk);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry.get(), walk.member().get());
    removed.push_back(entry->fwkKey().chosenHash);
    EXPECT_FALSE(map.deleteMember(walk)) << "it has gone already";
  }
  EXPECT_EQ(removed, (Hashes{0, 4, 2, 6, 1, 5, 3, 7}));
  EXPECT_EQ(map.members(), 0U);
}

TEST_F(HashMap, RemovalThroughTheWalkLeavesAReplacementAlone) {
  fill({0});
  KeyedMap::Iterator walk = map.iterator();
  auto const replacement = add(map, 0, 0, 1);
  EXPECT_FALSE(map.deleteMember(walk)) << "the walk stands on the one that was replaced";
  EXPECT_TRUE(map[key(0)] == replacement);
}

TEST_F(HashMap, WalkKnowsWhetherItsMemberIsStillOne) {
  fill({0, 4});
  KeyedMap::Iterator walk = map.iterator();
  EXPECT_TRUE(walk.isMember());
  map.deleteMember(key(4));
  EXPECT_TRUE(walk.isMember());
  add(map, 0, 0, 1);
  EXPECT_FALSE(walk.isMember()) << "another stands under its key";
  map.deleteMember(key(0));
  EXPECT_FALSE(walk.isMember());
  ++walk;
  EXPECT_FALSE(walk.isMember());
}

// What a walk leaves behind may go with that step, and its end may change the collection.
TEST_F(HashMap, WalkMissesNobodyWhenTheEndOfTheMemberItLeavesRemovesTheNext) {
  class Takes : public Vek::PtrInterface, public Vek::HashLink {
   public:
    using Map = Vek::HashMap<Takes, ChosenKey>;
    Takes(ChosenKey key, Map& map, ChosenKey with) : key_{key}, map_{map}, with_{with} {}
    ChosenKey const& fwkKey() const { return key_; }

   private:
    ~Takes() override { (void)map_.deleteMember(with_); }
    ChosenKey key_;
    Map& map_;
    ChosenKey with_;
  };
  Takes::Map takes;
  for (std::uint32_t hash : {0U, 4U, 2U})
    takes.newMember(Vek::make<Takes>(key(hash), takes, key(hash == 0 ? 4 : 9)));
  Takes::Map::Iterator walk = takes.iterator();
  (void)takes.deleteMember(key(0));
  ++walk;  // the walk's was the last reference
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->fwkKey().chosenHash, 4U) << "held by the walk, though no member any more";
  ++walk;
  ASSERT_TRUE(walk);
  EXPECT_EQ(walk->fwkKey().chosenHash, 2U);
}

TEST_F(HashMap, ClearReleasesAfterTheMapIsEmpty) {
  class Looks : public Vek::PtrInterface, public Vek::HashLink {
   public:
    Looks(ChosenKey key, std::vector<std::uint32_t>& seen,
          Vek::HashMap<Looks, ChosenKey> const& map)
        : key_{key}, seen_{seen}, map_{map} {}
    ChosenKey const& fwkKey() const { return key_; }

   private:
    ~Looks() override { seen_.push_back(map_.members()); }
    ChosenKey key_;
    std::vector<std::uint32_t>& seen_;
    Vek::HashMap<Looks, ChosenKey> const& map_;
  };
  std::vector<std::uint32_t> seen;
  Vek::HashMap<Looks, ChosenKey> looked;
  for (std::uint32_t hash : {1U, 2U, 3U})
    looked.newMember(Vek::make<Looks>(key(hash), seen, looked));
  looked.clear();
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{0, 0, 0}));
}

TEST_F(HashMap, EndOfTheMapReleasesItsMembers) {
  {
    KeyedMap other;
    add(other, 1);
    add(other, 2);
    EXPECT_EQ(KeyedEntry::alive, 2);
  }
  EXPECT_EQ(KeyedEntry::alive, 0);
}

}  // namespace
