#include "bench/cases/Boundary.h"

#include <benchmark/benchmark.h>

namespace Bench {

void takeByValue(Vek::Ptr<OurObject> object) {
  benchmark::DoNotOptimize(object);
}
void takeByValue(boost::intrusive_ptr<PlainObject> object) {
  benchmark::DoNotOptimize(object);
}
void takeByValue(boost::intrusive_ptr<AtomicObject> object) {
  benchmark::DoNotOptimize(object);
}

}  // namespace Bench
