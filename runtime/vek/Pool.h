#pragma once

#include <cstddef>

#pragma GCC visibility push(default)

namespace Vek {

/// The memory of the runtime's small objects: a free list for each size over a bump arena.
///
/// Objects made one after another lie side by side, without a header of their own, so what belongs
/// to one interface is found together. Memory that was freed serves objects of the same size again
/// and is not given back to the system. Sizes above `kLargest` come from the global allocator.
///
/// Built with LINKFLAP_POOL off, everything comes from the global allocator, and memory checkers
/// see each object. Builds with sanitizers have it off.
///
/// Thread: the activity's; while `VFPtrInterface::enableThreadSafePointers` is set, any.
class Pool {
 public:
  static constexpr std::size_t kLargest{512};
  /// What `allocate` returns is aligned to this.
  static constexpr std::size_t kAlignment{8};

  /// Whether the runtime was built with the pool.
  static bool pooled() noexcept;
  /// Throws `std::bad_alloc`, and nothing has changed then.
  static void* allocate(std::size_t size);
  /// `size` as it was asked for.
  static void release(void* memory, std::size_t size) noexcept;
};

}  // namespace Vek

#pragma GCC visibility pop
