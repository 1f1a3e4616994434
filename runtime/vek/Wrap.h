#pragma once

#include <cstdint>

#pragma GCC visibility push(default)

// Arithmetic modulo 2^32, for numbers that are meant to wrap: indexes of a queue, counters, hashes.
// Everywhere else a wrap is a fault, which the integer sanitizer reports; it does not see these.

namespace Vek {

constexpr std::uint32_t wrappingSum(std::uint32_t a, std::uint32_t b) noexcept {
  std::uint32_t result{0};
  (void)__builtin_add_overflow(a, b, &result);
  return result;
}

constexpr std::uint32_t wrappingDifference(std::uint32_t a, std::uint32_t b) noexcept {
  std::uint32_t result{0};
  (void)__builtin_sub_overflow(a, b, &result);
  return result;
}

constexpr std::uint32_t wrappingProduct(std::uint32_t a, std::uint32_t b) noexcept {
  std::uint32_t result{0};
  (void)__builtin_mul_overflow(a, b, &result);
  return result;
}

}  // namespace Vek

#pragma GCC visibility pop
