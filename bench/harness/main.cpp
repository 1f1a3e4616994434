#include <benchmark/benchmark.h>
#include <cstdio>
#include <exception>
#include <string>

#include "bench/harness/Memory.h"
#include "bench/harness/Subject.h"
#include "bench/harness/Timing.h"

// One program for all that is measured; bench/run calls it.
//
//   linkflap_bench --list                               the subjects
//   linkflap_bench --count SUBJECT...                   one batch each, for callgrind
//   linkflap_bench --memory SIDE PROFILES INTERFACES    bytes for each interface
//   linkflap_bench [--benchmark_...]                    times, by Google Benchmark

namespace {

using namespace Bench;

Registry allSubjects() {
  Registry registry;
  addNotification(registry);
  addAttachment(registry);
  addFlaps(registry);
  addErrDisables(registry);
  addAgeing(registry);
  addAdmission(registry);
  addConfiguration(registry);
  addCollections(registry);
  addPointers(registry);
  addTracing(registry);
  addDeferral(registry);
  addProperties(registry);
  return registry;
}

int run(int argc, char** argv) {
  Registry const registry = allSubjects();
  std::string const mode = argc > 1 ? argv[1] : "";
  if (mode == "--list") {
    for (auto const& entry : registry.entries())
      std::puts(entry.name.c_str());
    return 0;
  }
  if (mode == "--count") {
    for (int i = 2; i < argc; ++i)
      count(registry, argv[i]);
    return 0;
  }
  if (mode == "--memory" && argc == 5) {
    Footprint const bytes = footprint(argv[2], std::stoul(argv[3]), std::stoul(argv[4]));
    std::printf("%.1f %.1f\n", bytes.allocated, bytes.resident);
    return 0;
  }
  registerTimes(registry);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (std::exception const& failure) {
    std::fprintf(stderr, "linkflap_bench: %s\n", failure.what());
    return 1;
  }
}
