#include <benchmark/benchmark.h>
#include <cstdint>
#include <spdlog/spdlog.h>

#include "statemachines/SourcePoints.h"

#include "bench/harness/Subject.h"

// Case 14: a statement that would log, but is switched off.

namespace Bench {

namespace {

constexpr std::size_t kStatements{10000};

struct Nothing {};

/// The least that can be switched and counts how often it was passed.
struct Flag {
  bool on{false};
  std::uint64_t passed{0};
  std::uint64_t logged{0};
};

template <typename Statement>
std::unique_ptr<Subject> statements(Statement statement) {
  return subject(kStatements, std::make_unique<Nothing>(), [statement](Nothing&) {
    for (std::size_t i = 0; i < kStatements; ++i) {
      statement(i);
      benchmark::ClobberMemory();
    }
  });
}

}  // namespace

void addTracing(Registry& registry) {
  registry.add("14/disabled/ours", [] {
    return statements([](std::size_t i) {
      LinkFlap::Trace::evaluateErrDisableLimit("curFlaps: ", i, " macFlapsConfig: ", i);
    });
  });
  registry.add("14/disabled/flag", [] {
    return subject(kStatements, std::make_unique<Flag>(), [](Flag& flag) {
      benchmark::DoNotOptimize(&flag);
      for (std::size_t i = 0; i < kStatements; ++i) {
        ++flag.passed;
        if (flag.on) [[unlikely]]
          ++flag.logged;
        benchmark::ClobberMemory();
      }
    });
  });
  registry.add("14/disabled/spdlog", [] {
    return statements(
        [](std::size_t i) { spdlog::debug("curFlaps: {} macFlapsConfig: {}", i, i); });
  });
  registry.add("14/disabled/spdlog-logger", [] {
    return statements([logger = spdlog::default_logger()](std::size_t i) {
      logger->debug("curFlaps: {} macFlapsConfig: {}", i, i);
    });
  });
}

}  // namespace Bench
