#include "tools/scenario/Interpreter.h"

#include <algorithm>
#include <string>

#include "runtime/vek/Exception.h"

#include "tools/scenario/Commands.h"

namespace Scenario {

namespace {

char const* kindOf(Vek::Exception const& exception) {
  if (dynamic_cast<Vek::NameInUseException const*>(&exception) != nullptr)
    return "NameInUseException";
  if (dynamic_cast<Vek::RangeException const*>(&exception) != nullptr) return "RangeException";
  return "Exception";
}

/// `text` with each pointer in it replaced by "*", since addresses differ from run to run.
std::string withoutPointers(std::string_view text) {
  constexpr std::string_view kHex{"0x"};
  constexpr std::string_view kDigits{"0123456789abcdef"};
  std::string result;
  while (!text.empty()) {
    auto const digits = text.starts_with(kHex)
                            ? std::min(text.find_first_not_of(kDigits, kHex.size()), text.size())
                            : 0;
    if (digits > kHex.size()) {
      result += '*';
      text.remove_prefix(digits);
    } else {
      result += text.front();
      text.remove_prefix(1);
    }
  }
  return result;
}

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

}  // namespace

Interpreter::Interpreter(std::ostream& out, std::ostream& diagnostics)
    : out_{out}, diagnostics_{diagnostics}, traceLines_{out_}, world_{out_} {
  addClockCommands(table_);
  addConfigCommands(table_);
  addInterfaceCommands(table_);
  addErrdisableCommands(table_);
  addRootCommands(table_);
  addDumpCommand(table_);
  addTopMachineCommands(table_);
  addIntfMachineCommands(table_);
  addProfileMachineCommands(table_);
  addQueueCommands(table_);
  addReinstantiationCommands(table_);
  addTreeCommands(table_);
  // The one command that needs the interpreter.
  table_.add("onerr", "COMMAND", [this](World& world, SourceText const& command) {
    world.onErrdisableIs([this, command] { execute(">> ", command); });
  });
}

bool Interpreter::run(std::istream& in) {
  SourceText command;
  for (command.line = 1; std::getline(in, command.text); ++command.line)
    if (!isBlank(command.text) && command.text.front() != '#') execute("> ", command);
  return !out_.failed();
}

void Interpreter::execute(std::string_view prompt, SourceText const& command) {
  out_.line(prompt, command.text);
  constexpr std::string_view kCommand{"a command"};
  Words words{command};
  std::string const name{words.take(kCommand)};
  auto const* const known = table_.find(name);
  try {
    if (known == nullptr) words.refuse(kCommand);
    known->run(world_, words);
  } catch (BadArguments const& error) {
    diagnostics_ << "scenario: " << error.what();
    if (known != nullptr)
      diagnostics_ << "; usage: " << name << (known->usage.empty() ? "" : " ") << known->usage;
    diagnostics_ << std::endl;
    out_.line("U");
  } catch (Vek::Exception const& exception) {
    out_.line("E ", kindOf(exception), ' ', withoutPointers(exception.message().view()));
  }
}

}  // namespace Scenario
