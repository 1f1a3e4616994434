#include "tests/reliability/support/AllocationFaults.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constinit std::uint64_t asked = 0;
constinit std::uint64_t failAt = 0;  // 0: never
constinit bool failAllAfter = false;
constinit std::uint64_t failedInAll = 0;
constinit std::uint64_t failedNow = 0;
constinit std::int64_t live = 0;

/// Null when this allocation is to fail.
void* allocate(std::size_t size) noexcept {
  ++asked;
  if (failAt != 0 && (failAllAfter ? asked >= failAt : asked == failAt)) {
    ++failedInAll;
    ++failedNow;
    return nullptr;
  }
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) std::abort();  // the machine itself is out of memory: no result counts
  ++live;
  return memory;
}

void* allocateOrThrow(std::size_t size) {
  if (void* const memory = allocate(size)) return memory;
  throw std::bad_alloc{};
}

void release(void* memory) noexcept {
  if (memory == nullptr) return;
  --live;
  std::free(memory);
}

}  // namespace

namespace AllocationFaults {

void failFrom(std::uint64_t first, bool sticky) noexcept {
  asked = 0;
  failedNow = 0;
  failAt = first;
  failAllAfter = sticky;
}

std::uint64_t stop() noexcept {
  failAt = 0;
  return asked;
}

std::uint64_t failures() noexcept {
  return failedInAll;
}

std::uint64_t failuresOfThisPlan() noexcept {
  return failedNow;
}

std::int64_t liveBlocks() noexcept {
  return live;
}

}  // namespace AllocationFaults

void* operator new(std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new(std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
  return allocate(size);
}
void* operator new[](std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
  return allocate(size);
}
void operator delete(void* memory) noexcept {
  release(memory);
}
void operator delete[](void* memory) noexcept {
  release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}
void operator delete(void* memory, std::nothrow_t const& /*tag*/) noexcept {
  release(memory);
}
void operator delete[](void* memory, std::nothrow_t const& /*tag*/) noexcept {
  release(memory);
}
