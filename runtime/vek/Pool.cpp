#include "runtime/vek/Pool.h"

#include <mutex>

namespace Vek {

constinit std::array<Pool::Cell*, Pool::kLargest / Pool::kAlignment + 1> Pool::free_{};

#ifdef LINKFLAP_POOL

bool const Pool::pooled_{true};

namespace {

constexpr std::size_t kChunk{std::size_t{64} * 1024};

constinit std::byte* arena{nullptr};
constinit std::byte* arenaEnd{nullptr};
constinit std::mutex mutex;

[[gnu::cold, gnu::noinline]] void* carveFromNewChunk(std::size_t size) {
  // What is left of the last chunk is less than one object of this size: not worth keeping.
  auto* const chunk = static_cast<std::byte*>(::operator new(kChunk));
  arena = chunk + size;
  arenaEnd = chunk + kChunk;
  return chunk;
}

// `first`: of the free list of pieces of this size.

template <typename Cell>
[[gnu::always_inline]] inline void* take(Cell*& first, std::size_t size) {
  if (Cell* const cell = first) {
    first = cell->next;
    return cell;
  }
  if (static_cast<std::size_t>(arenaEnd - arena) < size) [[unlikely]]
    return carveFromNewChunk(size);
  void* const memory = arena;
  arena += size;
  return memory;
}

template <typename Cell>
[[gnu::cold, gnu::noinline]] void* takeShared(Cell*& first, std::size_t size) {
  std::lock_guard const lock{mutex};
  return take(first, size);
}

template <typename Cell>
[[gnu::cold, gnu::noinline]] void giveShared(void* memory, Cell*& first) noexcept {
  std::lock_guard const lock{mutex};
  first = new (memory) Cell{first};
}

}  // namespace

void* Pool::allocateAny(std::size_t size) {
  if (size > kLargest) [[unlikely]]
    return ::operator new(size);
  std::size_t const index = sizeClass(size);
  if (VFPtrInterface::enableThreadSafePointers) [[unlikely]]
    return takeShared(free_[index], index * kAlignment);
  return take(free_[index], index * kAlignment);
}

void Pool::releaseAny(void* memory, std::size_t size) noexcept {
  if (memory == nullptr) return;
  if (size > kLargest) [[unlikely]] {
    ::operator delete(memory);
  } else if (Cell*& first = free_[sizeClass(size)]; VFPtrInterface::enableThreadSafePointers)
      [[unlikely]] {
    giveShared(memory, first);
  } else {
    first = new (memory) Cell{first};
  }
}

#else

bool const Pool::pooled_{false};

void* Pool::allocateAny(std::size_t size) {
  return ::operator new(size);
}

void Pool::releaseAny(void* memory, std::size_t /*size*/) noexcept {
  ::operator delete(memory);
}

#endif

}  // namespace Vek
