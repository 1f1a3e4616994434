#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "runtime/vek/HashMap.h"
#include "runtime/vek/PtrInterface.h"

namespace RuntimeTest {

/// A key whose hash the test chooses.
struct ChosenKey {
  std::uint32_t chosenHash{0};
  int number{0};

  std::uint32_t hash() const noexcept { return chosenHash; }
  friend bool operator==(ChosenKey const&, ChosenKey const&) = default;
  friend std::strong_ordering operator<=>(ChosenKey const&, ChosenKey const&) = default;
};

/// A member of a keyed collection; knows how many of its kind are alive.
class KeyedEntry : public Vek::PtrInterface, public Vek::HashLink {
 public:
  explicit KeyedEntry(ChosenKey key, int v = 0) : value{v}, key_{key} { ++alive; }

  ChosenKey const& fwkKey() const noexcept { return key_; }

  static inline int alive{0};
  int value;

 private:
  ~KeyedEntry() override { --alive; }
  ChosenKey key_;
};

using KeyedMap = Vek::HashMap<KeyedEntry, ChosenKey>;

/// Makes a member of that hash; `number` tells keys of one hash apart.
inline Vek::Ptr<KeyedEntry> add(KeyedMap& map, std::uint32_t hash, int number = 0, int value = 0) {
  auto entry = Vek::make<KeyedEntry>(ChosenKey{hash, number}, value);
  map.newMember(entry);
  return entry;
}

/// The 32 bits of `value` in reverse order, one at a time.
inline std::uint32_t reversed(std::uint32_t value) {
  std::uint32_t result = 0;
  for (int bit = 0; bit < 32; ++bit) {
    result = result * 2 + value % 2;
    value /= 2;
  }
  return result;
}

}  // namespace RuntimeTest
