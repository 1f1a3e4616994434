#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace LinkFlapd {

/// A command line that cannot be obeyed; the message names the argument at fault.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Options {
  enum class Action { run, help, version };
  enum class DumpFormat { text, json };

  Action action{Action::run};
  unsigned maxFlaps{5};                     ///< flaps allowed in one interval
  double interval{10};                      ///< seconds
  bool enforce{false};                      ///< whether err-disabled ports are shut
  int traceLevel{0};                        ///< 0 (none), 2, or 8 (which includes 2)
  std::optional<int> receiveBuffer;         ///< bytes asked for the netlink socket
  DumpFormat dumpFormat{DumpFormat::text};  ///< of what SIGUSR1 has written
  std::vector<std::string> patterns;  ///< names and globs; none: every physical Ethernet interface
};

/// Reads the arguments behind the program's name. Throws `UsageError`.
Options parseOptions(std::span<char const* const> arguments);

/// The text of --help.
std::string usageText();

}  // namespace LinkFlapd
