#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Simulation {

/// A generator of our own (xoshiro's shape, seeded by a counter mix), of integers alone: the same
/// numbers everywhere, whatever the standard library.
class Random {
 public:
  explicit Random(std::uint64_t seed) {
    for (auto& word : state_) {
      seed += 0x9E3779B97F4A7C15U;
      std::uint64_t mixed = (seed ^ (seed >> 30U)) * 0xBF58476D1CE4E5B9U;
      mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
      word = mixed ^ (mixed >> 31U);
    }
  }

  std::uint64_t next() {
    std::uint64_t const result = rotated(state_[0] + state_[3], 23) + state_[0];
    std::uint64_t const shifted = state_[1] << 17U;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= shifted;
    state_[3] = rotated(state_[3], 45);
    return result;
  }

  /// 0 to `bound` - 1.
  std::uint32_t below(std::uint32_t bound) {
    return static_cast<std::uint32_t>(((next() >> 32U) * bound) >> 32U);
  }
  int index(int bound) { return static_cast<int>(below(static_cast<std::uint32_t>(bound))); }
  /// True once in `n` times.
  bool oneIn(std::uint32_t n) { return below(n) == 0; }

  template <typename T, std::size_t N>
  T const& of(std::array<T, N> const& values) {
    return values[below(static_cast<std::uint32_t>(N))];
  }

 private:
  static std::uint64_t rotated(std::uint64_t word, unsigned by) {
    return (word << by) | (word >> (64U - by));
  }

  std::array<std::uint64_t, 4> state_{};
};

/// A 64-bit hash of all that is added, in order.
class Digest {
 public:
  void add(std::uint64_t value) {
    hash_ = (hash_ ^ value) * 0x9E3779B97F4A7C15U;
    hash_ ^= hash_ >> 29U;
  }
  std::uint64_t value() const { return hash_; }

 private:
  std::uint64_t hash_{0x2545F4914F6CDD1DU};
};

}  // namespace Simulation
