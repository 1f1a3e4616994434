#pragma once

#include <cstdint>

#pragma GCC visibility push(default)

namespace Vek {

/// The 32 bits of `value` in reverse order.
constexpr std::uint32_t bitReverse(std::uint32_t value) noexcept {
  value = ((value & 0x55555555U) << 1U) | ((value >> 1U) & 0x55555555U);
  value = ((value & 0x33333333U) << 2U) | ((value >> 2U) & 0x33333333U);
  value = ((value & 0x0F0F0F0FU) << 4U) | ((value >> 4U) & 0x0F0F0F0FU);
  return __builtin_bswap32(value);
}

}  // namespace Vek

#pragma GCC visibility pop
