#include "bench/harness/Timing.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <limits>
#include <map>
#include <stdexcept>
#include <valgrind/callgrind.h>

namespace Bench {

namespace {

using Clock = std::chrono::steady_clock;

/// A batch is counted after so many others, when histories have been filled and emptied once, as
/// they have in most of the batches that are timed.
constexpr unsigned kWarmingUp{12};
/// Larger batches after one, and those of more operations than this after none, since that would
/// take minutes and change little.
constexpr std::size_t kWarmedUpOften{10000};
constexpr std::size_t kWarmedUp{200000};

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// What measuring nothing takes.
double overhead() {
  static double const least = [] {
    double seconds = std::numeric_limits<double>::max();
    for (int i = 0; i < 1000; ++i)
      seconds = std::min(seconds, secondsSince(Clock::now()));
    return seconds;
  }();
  return least;
}

/// Made once in a process: Google Benchmark begins anew for every repetition.
Subject& made(Registry::Entry const& entry) {
  static std::map<std::string, std::unique_ptr<Subject>> subjects;
  auto& held = subjects[entry.name];
  if (!held) {
    held = entry.make();
    held->prepare();
    held->run();
  }
  return *held;
}

void time(benchmark::State& state, Registry::Entry const& entry) {
  Subject& subject = made(entry);
  double total = 0;
  double operations = 0;
  for (auto _ : state) {
    subject.prepare();
    auto const start = Clock::now();
    subject.run();
    double const seconds = std::max(secondsSince(start) - overhead(), 1e-12);
    state.SetIterationTime(seconds);
    total += seconds;
    operations += static_cast<double>(subject.operations());
  }
  state.counters["operation"] = total / operations;
}

}  // namespace

void registerTimes(Registry const& registry) {
  for (auto const& entry : registry.entries())
    benchmark::RegisterBenchmark(entry.name.c_str(), [entry](benchmark::State& state) {
      time(state, entry);
    })->UseManualTime();
}

void count(Registry const& registry, std::string const& name) {
  auto const& entries = registry.entries();
  auto const entry = std::find_if(entries.begin(), entries.end(),
                                  [&](auto const& candidate) { return candidate.name == name; });
  if (entry == entries.end()) throw std::invalid_argument{"no such subject: " + name};
  auto const subject = entry->make();
  std::size_t const operations = subject->operations();
  unsigned const before = operations <= kWarmedUpOften ? kWarmingUp
                          : operations <= kWarmedUp    ? 1
                                                       : 0;
  for (unsigned i = 0; i < before; ++i) {
    subject->prepare();
    subject->run();
  }
  subject->prepare();
  CALLGRIND_START_INSTRUMENTATION;
  subject->run();
  CALLGRIND_STOP_INSTRUMENTATION;
  CALLGRIND_DUMP_STATS_AT(name.c_str());
  std::printf("%s %zu\n", name.c_str(), subject->operations());
}

}  // namespace Bench
