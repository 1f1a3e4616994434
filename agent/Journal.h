#pragma once

#include <chrono>
#include <iosfwd>
#include <string>

namespace LinkFlapd {

/// Where the host says what happens: one line for each event, behind the local date and time.
/// Each line is flushed, so that a reader at the other end of a pipe sees it at once.
class Journal {
 public:
  using Time = std::chrono::system_clock::time_point;

  /// Ownership: `out` is the caller's and outlives the journal.
  explicit Journal(std::ostream& out) : out_{out} {}

  void line(std::string const& text);

  /// "2026-11-21 01:17:53.872", in the machine's time zone.
  static std::string stamp(Time time);

 private:
  std::ostream& out_;
};

}  // namespace LinkFlapd
