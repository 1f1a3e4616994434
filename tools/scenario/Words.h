#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/String.h"

namespace Scenario {

/// A piece of the input and the place where it begins there, line and column counted from 1.
struct SourceText {
  std::string text;
  std::size_t line{1};
  std::size_t column{1};
};

/// The arguments of a command are not what it takes; the message says where and why.
class BadArguments : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The words of one command, taken one after the other. Words are separated by single blanks, so
/// two blanks in a row, or one at the end, make an empty word, which nothing accepts.
class Words {
 public:
  /// `source` must outlive this.
  explicit Words(SourceText const& source) : source_{source} {}

  bool atEnd() const { return next_ > source_.text.size(); }
  /// Takes the next word. `expected` says what is missing when there is none.
  std::string_view take(std::string_view expected);
  /// Takes everything that is left.
  SourceText takeRest(std::string_view expected);
  /// Throws `BadArguments` when words are left over.
  void end();
  /// Throws `BadArguments`: the word taken last is not what was expected.
  [[noreturn]] void refuse(std::string_view expected) const;

 private:
  [[noreturn]] void fail(std::size_t position, std::string_view expected,
                         std::string_view found) const;

  SourceText const& source_;
  std::size_t next_{0};     // where the next word begins
  std::size_t current_{0};  // where the one taken last begins
};

/// Whether `word` can name an interface, a profile, a cause or a watcher.
bool isName(std::string_view word);

/// How an argument of type `T` is read from the words of a command: `static T read(Words&)`.
template <typename T>
struct Argument;

/// A name, of anything but an interface.
template <>
struct Argument<Vek::String> {
  static Vek::String read(Words& words);
};

template <>
struct Argument<Tarn::IntfId> {
  static Tarn::IntfId read(Words& words);
};

/// A whole number, unsigned decimal.
template <>
struct Argument<std::uint32_t> {
  static std::uint32_t read(Words& words);
};

/// A time or a length of time in seconds, in any form that strtod reads.
template <>
struct Argument<double> {
  static double read(Words& words);
};

/// 0 or 1.
template <>
struct Argument<bool> {
  static bool read(Words& words);
};

/// The rest of the line, at least one character of it.
template <>
struct Argument<SourceText> {
  static SourceText read(Words& words);
};

/// The last argument, which may be missing.
template <typename T>
struct Argument<std::optional<T>> {
  static std::optional<T> read(Words& words) {
    return words.atEnd() ? std::nullopt : std::optional<T>{Argument<T>::read(words)};
  }
};

/// As many arguments as there are left.
template <typename T>
struct Argument<std::vector<T>> {
  static std::vector<T> read(Words& words) {
    std::vector<T> values;
    while (!words.atEnd())
      values.push_back(Argument<T>::read(words));
    return values;
  }
};

/// The words that stand for the enumerators of `Enum`, which are numbered from 0.
template <typename Enum>
inline constexpr std::array<std::string_view, 0> kWordsOf{};

/// The index of `word` among `choices`, or nothing.
std::optional<std::size_t> indexOf(std::string_view word, std::string_view const* choices,
                                   std::size_t count);
/// "one of a, b, c".
std::string oneOf(std::string_view const* choices, std::size_t count);

/// One word of a fixed set.
template <typename Enum>
requires std::is_enum_v<Enum>
struct Argument<Enum> {
  static Enum read(Words& words) {
    constexpr auto& choices = kWordsOf<Enum>;
    static_assert(!choices.empty());
    std::string const expected = oneOf(choices.data(), choices.size());
    auto const index = indexOf(words.take(expected), choices.data(), choices.size());
    if (!index) words.refuse(expected);
    return static_cast<Enum>(*index);
  }
};

}  // namespace Scenario
