#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <thread>
#include <vector>

#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"
#include "runtime/vek/String.h"

#include "tests/runtime/support/TimeQueue.h"

namespace {

using Vek::Ptr;

constexpr int kThreads{16};
// Enough for the threads to overlap also where there are few processors.
constexpr int kRounds{200000};

/// Sets the process-wide switch for as long as the test runs.
class ThreadSafePointers : public testing::Test {
 protected:
  ThreadSafePointers() { Vek::VFPtrInterface::enableThreadSafePointers = true; }
  ~ThreadSafePointers() override { Vek::VFPtrInterface::enableThreadSafePointers = false; }

  /// Runs `work(number of the thread)` on all threads, let loose together.
  template <typename Work>
  void onAllThreads(Work work) {
    std::latch start{kThreads};
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number)
      threads.emplace_back([&work, &start, number] {
        start.arrive_and_wait();
        work(number);
      });
    for (std::thread& thread : threads)
      thread.join();
  }
};

class Counted : public Vek::PtrInterface {
 public:
  static inline std::atomic<int> ends{0};

 private:
  ~Counted() override { ++ends; }
};

TEST_F(ThreadSafePointers, NoReferenceIsLostAmongSixteenThreads) {
  auto const object = Vek::make<Counted>();
  onAllThreads([&](int /*number*/) {
    for (int round = 0; round < kRounds; ++round) {
      Ptr<Counted> const one{object};
      Ptr<Counted const> const other{one};
    }
  });
  EXPECT_EQ(object->referenceCount(), 1U);
}

TEST_F(ThreadSafePointers, FlagsDoNotDisturbTheCountNorEachOther) {
  auto const object = Vek::make<Counted>();
  onAllThreads([&](int number) {
    for (int round = 0; round < kRounds; ++round) {
      if (number % 4 == 0) {
        object->hasNotificationActiveIs(round % 2 == 0);
      } else if (number % 4 == 1) {
        object->vekMarkedForDeletionIs(round % 2 == 1);
      } else if (round % 16 == 0) {
        // Many at once: a flag that is written back with an old count is then off by many.
        std::vector<Ptr<Counted>> const copies(32, object);
      }
    }
  });
  // Every thread leaves its flag as its last, odd round wants it.
  EXPECT_EQ(object->referenceCount(), 1U);
  EXPECT_FALSE(object->hasNotificationActive());
  EXPECT_TRUE(object->vekMarkedForDeletion());
}

TEST_F(ThreadSafePointers, TheLastReferenceDestroysOnceOnWhicheverThreadItGoes) {
  constexpr int kObjects{500};
  Counted::ends = 0;
  std::array<std::vector<Ptr<Counted>>, kThreads> held;
  for (int i = 0; i < kObjects; ++i) {
    auto const object = Vek::make<Counted>();
    for (auto& ofThread : held)
      ofThread.push_back(object);
  }
  ASSERT_EQ(Counted::ends, 0);
  onAllThreads([&](int number) {
    for (auto& pointer : held[static_cast<std::size_t>(number)])
      pointer = nullptr;
  });
  EXPECT_EQ(Counted::ends, kObjects);
}

TEST_F(ThreadSafePointers, StringsShareTheirTextAcrossThreads) {
  Vek::String const text{"Ethernet1/1"};
  Vek::String const empty;
  onAllThreads([&](int /*number*/) {
    for (int round = 0; round < kRounds; ++round) {
      Vek::String const copy{text};
      Vek::String none{empty};
      none = copy;
      ASSERT_TRUE(none.sharesText(text));
    }
  });
  // A lost or a surplus reference would free the text under the readers or leak it: what the
  // address sanitizer reports. Without one, the text has at least to be what it was.
  EXPECT_EQ(text, "Ethernet1/1");
  EXPECT_TRUE(Vek::String{}.sharesText(empty));
}

TEST_F(ThreadSafePointers, SwitchCanBeSetWhileObjectsAreAlive) {
  Vek::VFPtrInterface::enableThreadSafePointers = false;
  Counted::ends = 0;
  auto object = Vek::make<Counted>();
  auto copy = object;
  Vek::VFPtrInterface::enableThreadSafePointers = true;
  auto third = copy;
  EXPECT_EQ(object->referenceCount(), 3U);
  copy = nullptr;
  third = nullptr;
  object = nullptr;
  EXPECT_EQ(Counted::ends, 1);
}

TEST_F(ThreadSafePointers, AQueueReleasesWhatItGivesBack) {
  int const before = RuntimeTest::TimeEntry::alive;
  RuntimeTest::TimeQueue queue;
  queue.enq(1.5);
  queue.enq(2.5);
  EXPECT_EQ(queue.deq(), 1.5);
  EXPECT_EQ(RuntimeTest::TimeEntry::alive, before + 1);
  EXPECT_EQ(queue.deq(), 2.5);
  EXPECT_EQ(RuntimeTest::TimeEntry::alive, before);
}

}  // namespace
