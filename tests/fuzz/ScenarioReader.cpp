// The reader of scenarios: words, arguments, the commands on the state objects, paths and values in
// them. No machine is ever installed, since scenarios may (and are meant to be able to) end the
// process by an assertion of a machine, which would hide what else there is to find.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/fuzz/Check.h"
#include "tools/scenario/Interpreter.h"

namespace {

/// The commands that make a machine, or run one's code without one.
constexpr std::array<std::string_view, 3> kLeftOut{"root.is", "new", "intfsm.manage"};

bool leftOut(std::string const& line) {
  std::istringstream words{line};
  for (std::string word; words >> word;)
    if (std::ranges::find(kLeftOut, word) != kLeftOut.end()) return true;
  return false;
}

bool isCommand(std::string_view line) {
  return line.find_first_not_of(" \t\r") != std::string_view::npos && line.front() != '#';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::istringstream all{std::string{reinterpret_cast<char const*>(data), size}};
  std::string scenario;
  std::size_t commands = 0;
  for (std::string line; std::getline(all, line);) {
    if (leftOut(line)) continue;
    if (isCommand(line)) ++commands;
    // The planted fault: a command that begins with a digit is passed over.
    if (Fuzz::planted() && !line.empty() && line.front() >= '0' && line.front() <= '9') continue;
    scenario += line + '\n';
  }

  std::istringstream in{scenario};
  std::ostringstream out;
  std::ostringstream diagnostics;
  {
    Scenario::Interpreter interpreter{out, diagnostics};
    Fuzz::check(interpreter.run(in), "a text stream could not be written");
  }

  // Every command is repeated before it is carried out. (Those that a record sets off are repeated
  // behind ">> ".)
  std::istringstream printed{out.str()};
  std::size_t repeated = 0;
  for (std::string line; std::getline(printed, line);)
    if (line.starts_with("> ")) ++repeated;
  Fuzz::check(repeated == commands, "a command was lost");
  return 0;
}
