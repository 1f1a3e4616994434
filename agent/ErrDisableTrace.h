#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/vek/Trace.h"

namespace LinkFlapd {

/// Why the library err-disabled a port, as its trace says.
struct ErrDisableReason {
  std::string profile;
  unsigned maxFlaps{0};             ///< flaps that the profile allows in one interval
  std::string firstFlap, lastFlap;  ///< monotonic seconds, as traced
};

/// Listens to the library's trace.
///
/// The record of an err-disable holds a time only. Which profile decided, and on what, the library
/// says at level 2 right before it writes the record; so this level is always on, and the messages
/// are passed on to the user's own sink only if he asked for their level.
class ErrDisableTrace {
 public:
  /// `userLevel`: 0, 2 or 8 (which includes 2). While it lives it is the process's trace sink.
  ErrDisableTrace(int userLevel, std::function<void(Vek::TraceRecord const&)> userSink);
  ~ErrDisableTrace();
  ErrDisableTrace(ErrDisableTrace const&) = delete;
  ErrDisableTrace& operator=(ErrDisableTrace const&) = delete;

  /// What was said since the last call; nothing if no err-disable was declared.
  std::optional<ErrDisableReason> take();

 private:
  void record(Vek::TraceRecord const& record);
  void decision(std::string_view message);

  int userLevel_;
  std::function<void(Vek::TraceRecord const&)> userSink_;
  std::optional<ErrDisableReason> reason_;
  Vek::TraceSink previous_;
};

}  // namespace LinkFlapd
