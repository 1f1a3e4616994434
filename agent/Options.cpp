#include "agent/Options.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <linux/if.h>
#include <string_view>
#include <utility>

namespace LinkFlapd {

namespace {

constexpr unsigned kMaxReceiveBuffer{1U << 30};

/// The whole of `text` as a number, or nothing.
template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

unsigned wholeNumber(std::string_view option, std::string_view text, unsigned least,
                     unsigned most) {
  auto const number = numberIn<unsigned>(text);
  if (!number || *number < least || *number > most)
    throw UsageError(std::string{option} + ": '" + std::string{text} +
                     "' is not a whole number from " + std::to_string(least) + " to " +
                     std::to_string(most));
  return *number;
}

double seconds(std::string_view option, std::string_view text) {
  constexpr unsigned kMost{std::numeric_limits<unsigned>::max()};
  auto const number = numberIn<double>(text);
  if (!number || !std::isfinite(*number) || *number < 1 || *number > kMost)
    throw UsageError(std::string{option} + ": '" + std::string{text} +
                     "' is not a number of seconds from 1 to " + std::to_string(kMost));
  return *number;
}

int traceLevel(std::string_view option, std::string_view text) {
  if (text == "2") return 2;
  if (text == "8") return 8;
  throw UsageError(std::string{option} + ": '" + std::string{text} +
                   "' is not a trace level; the levels are 2 (decisions) and 8 (everything)");
}

Options::DumpFormat dumpFormat(std::string_view option, std::string_view text) {
  if (text == "text") return Options::DumpFormat::text;
  if (text == "json") return Options::DumpFormat::json;
  throw UsageError(std::string{option} + ": '" + std::string{text} + "' is not text or json");
}

std::string pattern(std::string_view text) {
  if (text.empty()) throw UsageError("'' is not an interface name or pattern");
  bool const isName = text.find_first_of("*?[\\") == std::string_view::npos;
  if (isName && text.size() >= IFNAMSIZ)
    throw UsageError("'" + std::string{text} + "' is not an interface name: it has more than " +
                     std::to_string(IFNAMSIZ - 1) + " characters");
  return std::string{text};
}

/// Walks the arguments once; an option's value is behind a '=' or is the next argument.
class Reader {
 public:
  explicit Reader(std::span<char const* const> arguments) : arguments_{arguments} {}

  Options read() {
    while (next_ < arguments_.size()) {
      std::string_view const argument{arguments_[next_++]};
      if (optionsEnded_ || argument.size() < 2 || argument.front() != '-')
        options_.patterns.push_back(pattern(argument));
      else if (argument == "--")
        optionsEnded_ = true;
      else
        option(argument);
    }
    return std::move(options_);
  }

 private:
  void option(std::string_view argument) {
    auto const equals = argument.find('=');
    std::string_view const name = argument.substr(0, equals);
    if (equals != std::string_view::npos) attached_ = argument.substr(equals + 1);
    if (name == "--max-flaps")
      options_.maxFlaps = wholeNumber(name, value(name), 0, std::numeric_limits<unsigned>::max());
    else if (name == "--interval")
      options_.interval = seconds(name, value(name));
    else if (name == "--trace")
      options_.traceLevel = traceLevel(name, value(name));
    else if (name == "--dump-as")
      options_.dumpFormat = dumpFormat(name, value(name));
    else if (name == "--receive-buffer")
      options_.receiveBuffer =
          static_cast<int>(wholeNumber(name, value(name), 1, kMaxReceiveBuffer));
    else if (name == "--monitor-only")
      mode(name, false);
    else if (name == "--enforce")
      mode(name, true);
    else if (name == "--help")
      options_.action = Options::Action::help;
    else if (name == "--version")
      options_.action = Options::Action::version;
    else
      throw UsageError("unknown option '" + std::string{name} + "'");
    if (attached_) throw UsageError(std::string{name} + " takes no value");
  }

  std::string_view value(std::string_view name) {
    if (attached_) return *std::exchange(attached_, std::nullopt);
    if (next_ == arguments_.size()) throw UsageError(std::string{name} + ": its value is missing");
    return arguments_[next_++];
  }

  void mode(std::string_view name, bool enforce) {
    if (mode_ && *mode_ != enforce)
      throw UsageError(std::string{name} + ": --monitor-only and --enforce exclude each other");
    mode_ = enforce;
    options_.enforce = enforce;
  }

  std::span<char const* const> arguments_;
  std::size_t next_{0};
  bool optionsEnded_{false};
  std::optional<std::string_view> attached_;  ///< the value behind '=', until it is taken
  std::optional<bool> mode_;
  Options options_;
};

}  // namespace

Options parseOptions(std::span<char const* const> arguments) {
  return Reader{arguments}.read();
}

std::string usageText() {
  return R"(usage: linkflapd [OPTION]... [INTERFACE]...

Watches the links of Ethernet interfaces and err-disables a port that flaps too often.
An INTERFACE is a name or a glob ('et*', quoted); without one, every physical Ethernet
interface is watched.

  --max-flaps N           flaps allowed in one interval; the next one err-disables (default 5)
  --interval SECONDS      length of the interval, in whole seconds (default 10)
  --monitor-only          report an err-disabled port, leave it up (default)
  --enforce               shut an err-disabled port; needs CAP_NET_ADMIN
  --trace LEVEL           library trace on standard error: 2 (decisions) or 8 (everything)
  --dump-as text|json     form of the tree of all objects that SIGUSR1 has written (default text)
  --receive-buffer BYTES  size of the netlink receive buffer
  --help, --version       say so and end

SIGUSR1 writes the tree of all objects to standard output. SIGINT and SIGTERM end it; ports stay
as they are.
)";
}

}  // namespace LinkFlapd
