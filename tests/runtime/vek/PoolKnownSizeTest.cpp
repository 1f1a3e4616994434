// The pool where the size is known when compiled: a piece is then taken and given back without a
// call. What is known depends on the optimiser, so this file is optimised in every build.

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>

#include "runtime/vek/Pool.h"

namespace {

using Vek::Pool;
using Vek::VFPtrInterface;

// A size that only these tests use.
constexpr std::size_t kSize{496};
constexpr std::size_t kTooLarge{Pool::kLargest + 8};

/// Counting is atomic while it lives.
class Shared {
 public:
  Shared() { VFPtrInterface::enableThreadSafePointers = true; }
  ~Shared() { VFPtrInterface::enableThreadSafePointers = false; }
  Shared(Shared const&) = delete;
  Shared& operator=(Shared const&) = delete;
};

void* take() {
  void* const memory = Pool::allocate(kSize);
  std::memset(memory, 0x5A, kSize);
  return memory;
}

TEST(PoolKnownSize, PiecesAreOnesOwn) {
  void* const one = take();
  void* const other = take();
  EXPECT_NE(one, other);
  std::memset(one, 1, kSize);
  for (std::size_t i = 0; i < kSize; ++i)
    ASSERT_EQ(static_cast<unsigned char*>(other)[i], 0x5A);
  Pool::release(one, kSize);
  Pool::release(other, kSize);
}

TEST(PoolKnownSize, FreedPieceServesTheSameSizeAgainLastFirst) {
  if (!Pool::pooled()) GTEST_SKIP() << "built without the pool";
  void* const one = take();
  void* const other = take();
  Pool::release(one, kSize);
  Pool::release(other, kSize);
  EXPECT_EQ(take(), other);
  EXPECT_EQ(take(), one);
  void* const fresh = take();
  EXPECT_NE(fresh, one);
  EXPECT_NE(fresh, other);
  for (void* const memory : {one, other, fresh})
    Pool::release(memory, kSize);
}

TEST(PoolKnownSize, NothingIsReleasedForANullPointer) {
  void* const one = take();
  Pool::release(one, kSize);
  Pool::release(nullptr, kSize);
  void* const again = take();
  if (Pool::pooled()) {
    EXPECT_EQ(again, one);
  }
  EXPECT_NE(again, nullptr);
  Pool::release(again, kSize);
}

TEST(PoolKnownSize, PiecesAreTheSameOnesWhileOtherThreadsMayTakeThem) {
  if (!Pool::pooled()) GTEST_SKIP() << "built without the pool";
  void* const one = take();
  void* const other = take();
  Pool::release(one, kSize);
  Shared const shared;
  EXPECT_EQ(take(), one) << "freed before";
  Pool::release(one, kSize);
  Pool::release(other, kSize);
  EXPECT_EQ(take(), other);
  EXPECT_EQ(take(), one);
  Pool::release(one, kSize);
  Pool::release(other, kSize);
}

TEST(PoolKnownSize, LargePieceGoesBackToWhereItCameFrom) {
  void* const large = Pool::allocate(kTooLarge);
  std::memset(large, 1, kTooLarge);
  Pool::release(large, kTooLarge);
  void* const small = take();
  void* const again = Pool::allocate(kTooLarge);
  EXPECT_NE(small, again);
  std::memset(again, 2, kTooLarge);
  EXPECT_EQ(*static_cast<unsigned char*>(small), 0x5A);
  Pool::release(again, kTooLarge);
  Pool::release(small, kSize);
}

}  // namespace
