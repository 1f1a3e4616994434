// usage: threaded_counts on|off COPIES
//
// Sixteen threads share objects, strings and identifiers, and make COPIES references to them in all.
// Built with the thread sanitizer. With the reference-count switch on there is nothing for it to
// report; with the switch off there is, which shows that it looks. The counts are wrong then: spare
// references see to it that none falls to 0, so that the report is all that happens.

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <string_view>
#include <thread>
#include <vector>

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/Ptr.h"
#include "runtime/vek/PtrInterface.h"

namespace {

constexpr int kThreads{16};
constexpr int kEach{8};  // references made in one round: four of objects, four of texts

class Shared final : public Vek::PtrInterface {
 public:
  static inline std::atomic<unsigned> ends{0};

 private:
  ~Shared() override { ends.fetch_add(1, std::memory_order_relaxed); }
};

struct World {
  Vek::Ptr<Shared> object{Vek::make<Shared>()};
  Vek::String text{"Ethernet1/1"};
  Tarn::IntfId id{"Ethernet2/1"};
};

/// One thread's work. `own` is its reference to an object that all threads let go of at some time.
void work(World const& world, long rounds, int number, Vek::Ptr<Shared> own) {
  for (long round = 0; round < rounds; ++round) {
    {
      Vek::Ptr<Shared> const one{world.object};
      Vek::Ptr<Shared const> const two{one};
      Vek::Ptr<Shared> three{world.object};
      three = one;
      Vek::String const text{world.text};
      Vek::String const again{text};
      Tarn::IntfId const id{world.id};
      Tarn::IntfId const none;
      if (id == none || two->referenceCount() == 0) std::abort();
    }
    // The flags stand in the same word; some write them while the others read and count.
    if (number == 0) world.object->hasNotificationActiveIs(round % 2 == 0);
    if (number == 1) world.object->vekMarkedForDeletionIs(round % 2 == 0);
    if (number == 2) (void)world.object->hasNotificationActive();
    if (number == 3) (void)world.object->vekMarkedForDeletion();
    if (round == rounds / 2) own = nullptr;  // the last to come here destroys the object
  }
}

/// More references to everything than the threads can lose.
struct Spare {
  Spare(World const& world, Vek::Ptr<Shared> const& common, std::size_t count)
      : objects(count, world.object),
        commons(count, common),
        texts(count, world.text),
        ids(count, world.id),
        nones(count) {}

  std::vector<Vek::Ptr<Shared>> objects;
  std::vector<Vek::Ptr<Shared>> commons;
  std::vector<Vek::String> texts;
  std::vector<Tarn::IntfId> ids;
  std::vector<Tarn::IntfId> nones;
};

}  // namespace

int main(int count, char** words) {
  if (count != 3) return 2;
  bool const on = std::string_view{words[1]} == "on";
  Vek::VFPtrInterface::enableThreadSafePointers = on;
  long const copies = std::atol(words[2]);
  long const rounds = copies / (kThreads * kEach) + 1;

  World world;
  auto common = Vek::make<Shared>();
  Spare const spare{world, common, on ? 0 : static_cast<std::size_t>(copies) * 2};
  std::latch start{kThreads};
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number)
    threads.emplace_back([&world, &start, rounds, number, own = common]() mutable {
      start.arrive_and_wait();
      work(world, rounds, number, std::move(own));
    });
  common = nullptr;
  for (std::thread& thread : threads)
    thread.join();
  if (!on) std::_Exit(0);  // unreported: the counts are not worth a look

  bool const right = world.object->referenceCount() == 1 && Shared::ends == 1;
  std::printf("%d threads, %ld copies, switch %s: counts %s\n", kThreads, rounds * kThreads * kEach,
              words[1], right ? "right" : "WRONG");
  return right ? 0 : 1;
}
