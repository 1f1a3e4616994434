#pragma once

#include <string>

#include "bench/harness/Subject.h"

namespace Bench {

/// Registers every subject with Google Benchmark. The counter `operation` is the time of one
/// operation, in seconds.
void registerTimes(Registry const& registry);

/// Runs one batch, warmed up by another, with callgrind looking, and has it dump its counts under
/// the subject's name; prints the name and the number of operations.
/// Throws `std::invalid_argument` when there is no such subject.
void count(Registry const& registry, std::string const& name);

}  // namespace Bench
