// The memory of small objects. Without the pool everything comes from the global allocator, and only
// what holds in both is tested.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "runtime/vek/Pool.h"
#include "runtime/vek/PtrInterface.h"

namespace {

using Vek::Pool;

/// Memory that is given back at the end.
class Piece {
 public:
  explicit Piece(std::size_t size) : size_{size}, memory_{Pool::allocate(size)} {}
  Piece(Piece&& other) noexcept
      : size_{other.size_}, memory_{std::exchange(other.memory_, nullptr)} {}
  Piece& operator=(Piece&& other) noexcept {
    std::swap(size_, other.size_);
    std::swap(memory_, other.memory_);
    return *this;
  }
  ~Piece() { Pool::release(memory_, size_); }

  std::size_t size() const { return size_; }
  std::byte* bytes() const { return static_cast<std::byte*>(memory_); }

 private:
  std::size_t size_;
  void* memory_;
};

TEST(Pool, MemoryIsAlignedAndOnesOwnWhateverTheSize) {
  std::vector<Piece> pieces;
  for (std::size_t size = 0; size <= Pool::kLargest + 2; ++size) {
    pieces.emplace_back(size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pieces.back().bytes()) % Pool::kAlignment, 0U);
    std::memset(pieces.back().bytes(), static_cast<int>(size % 251), size);
  }
  for (Piece const& piece : pieces)
    for (std::size_t i = 0; i < piece.size(); ++i)
      ASSERT_EQ(piece.bytes()[i], static_cast<std::byte>(piece.size() % 251));
}

TEST(Pool, NothingIsReleasedForANullPointer) {
  Pool::release(nullptr, 16);
  Pool::release(nullptr, Pool::kLargest + 1);
  Piece const one{16};
  Piece const other{16};
  EXPECT_NE(one.bytes(), nullptr);
  EXPECT_NE(one.bytes(), other.bytes());
}

TEST(Pool, FreedMemoryServesTheSameSizeAgainLastFirst) {
  if (!Pool::pooled()) GTEST_SKIP() << "built without the pool";
  void* const one = Pool::allocate(48);
  void* const other = Pool::allocate(48);
  Pool::release(one, 48);
  Pool::release(other, 48);
  void* const larger = Pool::allocate(56);
  EXPECT_NE(larger, one);
  EXPECT_NE(larger, other);
  EXPECT_EQ(Pool::allocate(41), other) << "41 to 48 bytes are one size";
  EXPECT_EQ(Pool::allocate(48), one);
  for (void* const memory : {one, other})
    Pool::release(memory, 48);
  Pool::release(larger, 56);
}

TEST(Pool, ObjectsMadeOneAfterAnotherLieSideBySide) {
  if (!Pool::pooled()) GTEST_SKIP() << "built without the pool";
  // A size that nobody else uses, so that none was freed.
  std::vector<Piece> pieces;
  std::size_t neighbours = 0;
  for (int i = 0; i < 1000; ++i) {
    pieces.emplace_back(504);
    if (i > 0 && pieces[pieces.size() - 2].bytes() + 504 == pieces.back().bytes()) ++neighbours;
  }
  EXPECT_GE(neighbours, 980U) << "but for the last of each chunk";
}

TEST(Pool, RandomUseNeverHandsOutWhatIsInUse) {
  std::mt19937 random{20240301};  // NOLINT: the same run every time
  std::vector<std::pair<Piece, std::byte>> used;
  for (int step = 0; step < 20000; ++step) {
    if (used.size() < 50 || random() % 2 == 0) {
      auto const mark = static_cast<std::byte>(random());
      used.emplace_back(Piece{random() % 600}, mark);
      std::memset(used.back().first.bytes(), static_cast<int>(mark), used.back().first.size());
    } else {
      std::swap(used[random() % used.size()], used.back());
      auto const& [piece, mark] = used.back();
      for (std::size_t i = 0; i < piece.size(); ++i)
        ASSERT_EQ(piece.bytes()[i], mark);
      used.pop_back();
    }
  }
}

TEST(Pool, ThreadsMayShareItWhilePointersAreThreadSafe) {
  Vek::VFPtrInterface::enableThreadSafePointers = true;
  std::atomic<int> damaged{0};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread)
    threads.emplace_back([&damaged, thread] {
      auto const mark = static_cast<std::byte>(thread + 1);
      for (int round = 0; round < 2000; ++round) {
        std::vector<Piece> pieces;
        for (std::size_t size : {24U, 32U, 48U}) {
          pieces.emplace_back(size);
          std::memset(pieces.back().bytes(), thread + 1, size);
        }
        for (Piece const& piece : pieces)
          for (std::size_t i = 0; i < piece.size(); ++i)
            if (piece.bytes()[i] != mark) ++damaged;
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  Vek::VFPtrInterface::enableThreadSafePointers = false;
  EXPECT_EQ(damaged, 0);
}

}  // namespace
