#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

namespace Bench {

/// 0 to `size` - 1 in an order that is random, but the same in every run and for every side.
inline std::vector<std::uint32_t> randomOrder(std::size_t size) {
  std::vector<std::uint32_t> order(size);
  std::iota(order.begin(), order.end(), 0U);
  std::mt19937 generator{20};
  std::shuffle(order.begin(), order.end(), generator);
  return order;
}

}  // namespace Bench
