#include "runtime/vek/Assertion.h"

#include <cstdio>
#include <cstdlib>

#include "runtime/vek/Ptr.h"

namespace Vek {

void fatal(char const* message) noexcept {
  std::fprintf(stderr, "%s\n", message);
  std::fflush(stderr);
  std::abort();
}

void Assertion::fail() const noexcept {
  std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", source, line, function, expression);
  std::fflush(stderr);
  std::abort();
}

void emptyPtrDereferenced() {
  fatal("Vek: an empty Ptr was dereferenced where an object is required");
}

}  // namespace Vek
