#include "tools/scenario/Words.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace Scenario {

namespace {

constexpr std::string_view kName{"a name of A-Z a-z 0-9 _ . -"};
constexpr std::string_view kIntfName{"an interface name of A-Z a-z 0-9 _ . -"};
constexpr std::string_view kNumber{"a whole number from 0 to 4294967295"};
constexpr std::string_view kSeconds{"a decimal number of seconds"};
constexpr std::string_view kFlag{"0 or 1"};
constexpr std::string_view kCommand{"a command"};

bool isNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.' || c == '-';
}

std::string_view takeName(Words& words, std::string_view expected) {
  auto const word = words.take(expected);
  if (!isName(word)) words.refuse(expected);
  return word;
}

/// The word as a message can show it: on one line, without control characters.
std::string quoted(std::string_view word) {
  if (word.empty()) return "an empty word (words are separated by single blanks)";
  constexpr std::string_view kHexDigits{"0123456789abcdef"};
  std::string text{"'"};
  for (char const c : word) {
    auto const byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      text += c;
    } else {
      text += "\\x";
      text += kHexDigits[byte >> 4U];
      text += kHexDigits[byte & 0xfU];
    }
  }
  return text + "'";
}

}  // namespace

std::string_view Words::take(std::string_view expected) {
  std::string_view const text{source_.text};
  if (atEnd()) fail(text.size(), expected, "the end of the line");
  current_ = next_;
  auto const end = std::min(text.find(' ', current_), text.size());
  next_ = end + 1;
  return text.substr(current_, end - current_);
}

SourceText Words::takeRest(std::string_view expected) {
  if (next_ >= source_.text.size()) fail(source_.text.size(), expected, "the end of the line");
  SourceText rest{source_.text.substr(next_), source_.line, source_.column + next_};
  next_ = source_.text.size() + 1;
  return rest;
}

void Words::end() {
  if (atEnd()) return;
  auto const word = take({});
  fail(current_, "the end of the line", quoted(word));
}

void Words::refuse(std::string_view expected) const {
  std::string_view const text{source_.text};
  fail(current_, expected, quoted(text.substr(current_, next_ - 1 - current_)));
}

void Words::fail(std::size_t position, std::string_view expected, std::string_view found) const {
  throw BadArguments{"line " + std::to_string(source_.line) + ", column " +
                     std::to_string(source_.column + position) + ": expected " +
                     std::string{expected} + ", found " + std::string{found}};
}

bool isName(std::string_view word) {
  return !word.empty() && std::all_of(word.begin(), word.end(), isNameCharacter);
}

Vek::String Argument<Vek::String>::read(Words& words) {
  return Vek::String{takeName(words, kName)};
}

Tarn::IntfId Argument<Tarn::IntfId>::read(Words& words) {
  return Tarn::IntfId{Vek::String{takeName(words, kIntfName)}};
}

std::uint32_t Argument<std::uint32_t>::read(Words& words) {
  auto const word = words.take(kNumber);
  std::uint32_t number{0};
  auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc{} || end != word.data() + word.size()) words.refuse(kNumber);
  return number;
}

double Argument<double>::read(Words& words) {
  std::string const word{words.take(kSeconds)};
  // strtod itself would skip white space in front.
  if (word.empty() || std::string_view{"\t\n\v\f\r"}.find(word.front()) != std::string_view::npos)
    words.refuse(kSeconds);
  char* end = nullptr;
  double const seconds = std::strtod(word.c_str(), &end);
  if (end != word.c_str() + word.size()) words.refuse(kSeconds);
  return seconds;
}

bool Argument<bool>::read(Words& words) {
  auto const word = words.take(kFlag);
  if (word != "0" && word != "1") words.refuse(kFlag);
  return word == "1";
}

SourceText Argument<SourceText>::read(Words& words) {
  return words.takeRest(kCommand);
}

std::optional<std::size_t> indexOf(std::string_view word, std::string_view const* choices,
                                   std::size_t count) {
  auto const* const found = std::find(choices, choices + count, word);
  if (found == choices + count) return std::nullopt;
  return static_cast<std::size_t>(found - choices);
}

std::string oneOf(std::string_view const* choices, std::size_t count) {
  std::string text{count == 1 ? "the word " : "one of "};
  for (std::size_t i = 0; i < count; ++i)
    text.append(i == 0 ? "" : ", ").append(choices[i]);
  return text;
}

}  // namespace Scenario
