#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

/// While it lives, what the program's own code prints on the standard error stream is looked at:
/// lines that begin with one of the texts below are counted and swallowed, all others pass.
/// A sanitizer's report does not come through the stream and is not touched.
class StandardError {
 public:
  StandardError();
  ~StandardError();
  StandardError(StandardError const&) = delete;
  StandardError& operator=(StandardError const&) = delete;

  /// A callback failed, and there was no memory to report it in full.
  static constexpr std::string_view kShortReport{"Vek: exception in a callback for attribute"};
  /// A trace message found no memory.
  static constexpr std::string_view kLostTrace{"Vek: a trace message was lost"};

  std::uint64_t shortReports() const noexcept { return shortReports_; }
  std::uint64_t lostTraces() const noexcept { return lostTraces_; }

 private:
  static ssize_t write(void* self, char const* text, std::size_t size);
  void lineEnds() noexcept;

  std::FILE* before_;
  std::FILE* stream_;
  char line_[512]{};
  std::size_t length_{0};
  std::uint64_t shortReports_{0};
  std::uint64_t lostTraces_{0};
};
