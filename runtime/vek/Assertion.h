#pragma once

#pragma GCC visibility push(default)

namespace Vek {

/// Ends the process by SIGABRT after writing `message` and a line end to standard error.
[[noreturn, gnu::cold]] void fatal(char const* message) noexcept;

/// One fatal assertion, named by source, line and function signature instead of by where the
/// check happens to be typed. Always compiled in: a broken invariant ends the process.
///
///     Assert::handleProfileList(initialized());
struct Assertion {
  int line;
  char const* expression;
  char const* function;
  char const* source;

  void operator()(bool holds) const {
    if (!holds) [[unlikely]]
      fail();
  }

 private:
  /// Writes "SOURCE:LINE: FUNCTION: Assertion `EXPRESSION' failed." and aborts.
  [[noreturn, gnu::cold, gnu::noinline]] void fail() const noexcept;
};

}  // namespace Vek

#pragma GCC visibility pop
