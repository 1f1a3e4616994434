#pragma once

#include <optional>
#include <string>

namespace LinkFlapd {

/// SIGINT and SIGTERM as something to poll for: from its construction on, they do not interrupt the
/// process but make a descriptor readable. SIGPIPE is ignored, so that a reader of the output that
/// goes away does not take the guard of the ports with it.
/// Thread: make it before any other thread starts, since the signal mask is inherited.
class SignalEnd {
 public:
  /// Throws `std::system_error`.
  SignalEnd();
  ~SignalEnd();
  SignalEnd(SignalEnd const&) = delete;
  SignalEnd& operator=(SignalEnd const&) = delete;

  int descriptor() const { return descriptor_; }
  /// The name of a signal that has arrived ("SIGTERM"), if one has. Does not wait.
  std::optional<std::string> arrived() const;

 private:
  int descriptor_;
};

}  // namespace LinkFlapd
