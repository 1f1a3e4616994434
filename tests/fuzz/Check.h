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

}  // namespace Fuzz
