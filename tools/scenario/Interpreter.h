#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <string_view>

#include "tools/scenario/CommandTable.h"
#include "tools/scenario/Output.h"
#include "tools/scenario/TraceLines.h"
#include "tools/scenario/Words.h"
#include "tools/scenario/World.h"

namespace Scenario {

/// Carries out a scenario, line by line.
class Interpreter {
 public:
  /// `out` receives the result lines, `diagnostics` what is wrong with the scenario itself.
  Interpreter(std::ostream& out, std::ostream& diagnostics);

  /// Reads commands until the end of `in`. Returns false when the output could not be written.
  bool run(std::istream& in);

 private:
  void execute(std::string_view prompt, SourceText const& command);

  Output out_;
  std::ostream& diagnostics_;
  TraceLines traceLines_;
  World world_;
  CommandTable table_;
};

}  // namespace Scenario
