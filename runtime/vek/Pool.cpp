#include "runtime/vek/Pool.h"

#include <array>
#include <mutex>
#include <new>

#include "runtime/vek/PtrInterface.h"

namespace Vek {

#ifdef LINKFLAP_POOL

namespace {

struct Cell {
  Cell* next;
};

constexpr std::size_t kChunk{std::size_t{64} * 1024};

constinit std::array<Cell*, Pool::kLargest / Pool::kAlignment + 1> freeCells{};
constinit std::byte* arena{nullptr};
constinit std::byte* arenaEnd{nullptr};
constinit std::mutex mutex;

constexpr std::size_t sizeClass(std::size_t size) noexcept {
  // Nothing is smaller than a cell of a free list.
  return size == 0 ? 1 : (size + Pool::kAlignment - 1) / Pool::kAlignment;
}

[[gnu::cold, gnu::noinline]] void* carveFromNewChunk(std::size_t size) {
  // What is left of the last chunk is less than one object of this size: not worth keeping.
  auto* const chunk = static_cast<std::byte*>(::operator new(kChunk));
  arena = chunk + size;
  arenaEnd = chunk + kChunk;
  return chunk;
}

[[gnu::always_inline]] inline void* take(std::size_t index) {
  Cell*& first = freeCells[index];
  if (Cell* const cell = first) {
    first = cell->next;
    return cell;
  }
  std::size_t const size = index * Pool::kAlignment;
  if (static_cast<std::size_t>(arenaEnd - arena) < size) [[unlikely]]
    return carveFromNewChunk(size);
  void* const memory = arena;
  arena += size;
  return memory;
}

[[gnu::always_inline]] inline void give(void* memory, std::size_t index) noexcept {
  freeCells[index] = new (memory) Cell{freeCells[index]};
}

[[gnu::cold, gnu::noinline]] void* takeShared(std::size_t index) {
  std::lock_guard const lock{mutex};
  return take(index);
}

[[gnu::cold, gnu::noinline]] void giveShared(void* memory, std::size_t index) noexcept {
  std::lock_guard const lock{mutex};
  give(memory, index);
}

}  // namespace

bool Pool::pooled() noexcept {
  return true;
}

void* Pool::allocate(std::size_t size) {
  if (size > kLargest) [[unlikely]]
    return ::operator new(size);
  if (VFPtrInterface::enableThreadSafePointers) [[unlikely]]
    return takeShared(sizeClass(size));
  return take(sizeClass(size));
}

void Pool::release(void* memory, std::size_t size) noexcept {
  if (memory == nullptr) return;
  if (size > kLargest) [[unlikely]] {
    ::operator delete(memory);
  } else if (VFPtrInterface::enableThreadSafePointers) [[unlikely]] {
    giveShared(memory, sizeClass(size));
  } else {
    give(memory, sizeClass(size));
  }
}

#else

bool Pool::pooled() noexcept {
  return false;
}

void* Pool::allocate(std::size_t size) {
  return ::operator new(size);
}

void Pool::release(void* memory, std::size_t /*size*/) noexcept {
  ::operator delete(memory);
}

#endif

void* PtrInterface::operator new(std::size_t size) {
  return Pool::allocate(size);
}

void PtrInterface::operator delete(void* memory, std::size_t size) noexcept {
  Pool::release(memory, size);
}

}  // namespace Vek
