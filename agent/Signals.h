#pragma once

#include <optional>
#include <string>

namespace LinkFlapd {

/// SIGINT, SIGTERM and SIGUSR1 as something to poll for: from its construction on, they do not
/// interrupt the process but make a descriptor readable. SIGPIPE is ignored, so that a reader of the output that
/// goes away does not take the guard of the ports with it.
/// Thread: make it before any other thread starts, since the signal mask is inherited.
class Signals {
 public:
  /// Throws `std::system_error`.
  Signals();
  ~Signals();
  Signals(Signals const&) = delete;
  Signals& operator=(Signals const&) = delete;

  int descriptor() const { return descriptor_; }
  /// The number of a signal that has arrived, if one has. Does not wait.
  std::optional<int> arrived() const;
  /// "SIGTERM" and the like.
  static std::string nameOf(int signal);

 private:
  int descriptor_;
};

}  // namespace LinkFlapd
