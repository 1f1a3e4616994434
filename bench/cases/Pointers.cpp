#include <benchmark/benchmark.h>
#include <string>

#include "bench/cases/Boundary.h"
#include "bench/harness/Subject.h"

// Case 13: a counted pointer is copied and the copy dropped; with the process-wide switch of
// atomic counting off and on.

namespace Bench {

namespace {

constexpr std::size_t kCopies{10000};

template <typename Pointer>
std::unique_ptr<Subject> copies(Pointer pointer) {
  return subject(kCopies, std::make_unique<Pointer>(std::move(pointer)), [](Pointer& held) {
    for (std::size_t i = 0; i < kCopies; ++i) {
      Pointer copy{held};
      benchmark::DoNotOptimize(copy);
      benchmark::ClobberMemory();
    }
  });
}

template <typename Pointer>
std::unique_ptr<Subject> handedOver(Pointer pointer) {
  return subject(kCopies, std::make_unique<Pointer>(std::move(pointer)), [](Pointer& held) {
    for (std::size_t i = 0; i < kCopies; ++i)
      takeByValue(held);
  });
}

Vek::Ptr<OurObject> ours() {
  return Vek::make<OurObject>();
}
template <typename Object>
boost::intrusive_ptr<Object> theirs() {
  return new Object;
}

/// While it is prepared and run, references are counted atomically.
class Atomically final : public Subject {
 public:
  explicit Atomically(std::unique_ptr<Subject> inner) : inner_{std::move(inner)} {}
  void prepare() override { Vek::VFPtrInterface::enableThreadSafePointers = true; }
  void run() override {
    inner_->run();
    Vek::VFPtrInterface::enableThreadSafePointers = false;
  }
  std::size_t operations() const override { return inner_->operations(); }

 private:
  std::unique_ptr<Subject> inner_;
};

}  // namespace

void addPointers(Registry& registry) {
  registry.add("13/plain/ours", [] { return copies(ours()); });
  registry.add("13/plain/intrusive", [] { return copies(theirs<PlainObject>()); });
  registry.add("13/plain-boundary/ours", [] { return handedOver(ours()); });
  registry.add("13/plain-boundary/intrusive", [] { return handedOver(theirs<PlainObject>()); });
  registry.add("13/atomic/ours", [] { return std::make_unique<Atomically>(copies(ours())); });
  registry.add("13/atomic/intrusive", [] { return copies(theirs<AtomicObject>()); });
  registry.add("13/atomic-boundary/ours",
               [] { return std::make_unique<Atomically>(handedOver(ours())); });
  registry.add("13/atomic-boundary/intrusive", [] { return handedOver(theirs<AtomicObject>()); });
}

}  // namespace Bench
