#pragma once

#include <ostream>

namespace Scenario {

/// The result lines. Each is flushed before anything else happens, since a failed assertion ends the
/// process and what was printed before must have arrived.
class Output {
 public:
  explicit Output(std::ostream& stream) : stream_{stream} { formatNumbers(stream); }

  /// Makes a stream write doubles as printf's %.17g does, so that no two read alike.
  static void formatNumbers(std::ostream& stream) { stream.precision(17); }

  /// Writes the pieces as one line; flags as 0 or 1.
  template <typename... Pieces>
  void line(Pieces const&... pieces) {
    (stream_ << ... << pieces) << std::endl;
  }

  bool failed() const { return stream_.fail(); }

 private:
  std::ostream& stream_;
};

}  // namespace Scenario
