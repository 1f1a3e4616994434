#pragma once

#include "runtime/vek/Trace.h"

#include "tools/scenario/Output.h"

namespace Scenario {

/// Prints the library's trace as `T` lines. While it lives it is the process's trace sink.
class TraceLines {
 public:
  explicit TraceLines(Output& out);
  ~TraceLines();
  TraceLines(TraceLines const&) = delete;
  TraceLines& operator=(TraceLines const&) = delete;

 private:
  void print(Vek::TraceRecord const& record);

  Output& out_;
  Vek::TraceSink previous_;
};

}  // namespace Scenario
