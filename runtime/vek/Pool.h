#pragma once

#include <array>
#include <cstddef>
#include <new>

#include "runtime/vek/VFPtrInterface.h"

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
  static bool pooled() noexcept { return pooled_; }
  /// Whether memory is pooled, and no other thread takes any.
  static bool plain() noexcept { return pooled_ && !VFPtrInterface::enableThreadSafePointers; }

  // Where the size is known when compiled, a piece that was freed before is taken, or one given
  // back, without a call; without the pool nothing is ever found there.

  /// Throws `std::bad_alloc`, and nothing has changed then.
  [[gnu::always_inline]] static void* allocate(std::size_t size) {
    if (__builtin_constant_p(size) != 0 && size <= kLargest &&
        !VFPtrInterface::enableThreadSafePointers) [[likely]] {
      Cell*& first = free_[sizeClass(size)];
      if (Cell* const cell = first) [[likely]] {
        first = cell->next;
        __builtin_prefetch(first);  // those freed last may stand anywhere in memory
        return cell;
      }
    }
    return allocateAny(size);
  }

  /// `size` as it was asked for.
  [[gnu::always_inline]] static void release(void* memory, std::size_t size) noexcept {
    if (__builtin_constant_p(size) != 0 && size <= kLargest && memory != nullptr && plain())
        [[likely]] {
      Cell*& first = free_[sizeClass(size)];
      first = new (memory) Cell{first};
    } else {
      releaseAny(memory, size);
    }
  }

 private:
  struct Cell {
    Cell* next;
  };

  static constexpr std::size_t sizeClass(std::size_t size) noexcept {
    // Nothing is smaller than a cell of a free list.
    return size == 0 ? 1 : (size + kAlignment - 1) / kAlignment;
  }
  static void* allocateAny(std::size_t size);
  static void releaseAny(void* memory, std::size_t size) noexcept;

  static bool const pooled_;
  static std::array<Cell*, kLargest / kAlignment + 1> free_;
};

}  // namespace Vek

#pragma GCC visibility pop
