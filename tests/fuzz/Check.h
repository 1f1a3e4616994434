#pragma once

#include <cstdio>
#include <cstdlib>

namespace Fuzz {

/// What must hold of every input. The fuzzer keeps the input for which it does not.
inline void check(bool holds, char const* what) {
  if (holds) return;
  std::fprintf(stderr, "finding: %s\n", what);
  std::abort();
}

/// Whether this run has a fault planted in it, which one of the checks must then find: a target
/// misreads one thing that no seed contains. `run-fuzzers.sh --planted` asks for it.
inline bool planted() {
  static bool const asked = std::getenv("LINKFLAP_FUZZ_PLANTED") != nullptr;
  return asked;
}

}  // namespace Fuzz
