#include "runtime/vek/Value.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "runtime/vek/Exception.h"
#include "runtime/vek/ObjectPath.h"

namespace Vek {

namespace {

bool wordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         (c != '\0' && std::strchr("_.-+:", c) != nullptr);
}

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

/// Whether the text from `begin` starts with `word` and no further letter follows.
bool takeWord(char const*& begin, char const* end, std::string_view word) {
  auto const length = static_cast<std::size_t>(end - begin);
  if (length < word.size() || std::memcmp(begin, word.data(), word.size()) != 0) return false;
  if (length > word.size() && wordCharacter(begin[word.size()])) return false;
  begin += word.size();
  return true;
}

}  // namespace

void Value::throwOtherType() const {
  throwTypeException(empty() ? "no value" : String{type_->name}.charPtr());
}

std::string quotedText(std::string_view text) {
  bool plain = !text.empty() && text != "null";  // which stands for no object
  for (char const c : text)
    plain = plain && wordCharacter(c);
  if (plain) return std::string{text};
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string quoted{"\""};
  for (char const c : text) {
    auto const byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (byte < 0x20 || byte == 0x7f) {
      quoted += "\\x";
      quoted += kDigits[byte >> 4U];
      quoted += kDigits[byte & 15U];
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

String textOfQuoted(char const*& begin, char const* end, std::type_info const& type) {
  char const* at = begin;
  std::string text;
  if (at == end || *at != '"') {
    while (at != end && wordCharacter(*at))
      text += *at++;
    if (text.empty()) cannotConvert(begin, end, type);
    begin = at;
    return String{text};
  }
  for (++at; at != end && *at != '"'; ++at) {
    if (*at != '\\') {
      text += *at;
      continue;
    }
    if (++at == end) cannotConvert(begin, end, type);
    if (*at == '"' || *at == '\\') {
      text += *at;
    } else if (*at == 'x' && end - at > 2 && digitOf(at[1]) >= 0 && digitOf(at[2]) >= 0) {
      text += static_cast<char>(digitOf(at[1]) * 16 + digitOf(at[2]));
      at += 2;
    } else {
      cannotConvert(begin, end, type);
    }
  }
  if (at == end) cannotConvert(begin, end, type);
  begin = at + 1;
  return String{text};
}

std::string objectText(PtrInterface const* object) {
  return object == nullptr ? "null" : objectPath(*object);
}

Ptr<PtrInterface const> objectOfText(char const*& begin, char const* end, std::string_view typeName,
                                     std::type_info const& type) {
  if (takeWord(begin, end, "null")) return nullptr;
  char const* at = begin;
  auto const object = objectOfPath(at, end);
  if (!object) cannotConvert(begin, end, type);
  VekType const* const record = object->fwkType();
  bool fits = false;
  for (VekType const* base = record; base != nullptr; base = base->base())
    fits = fits || base->fullName() == typeName;
  if (!fits) cannotConvert(begin, end, type);
  begin = at;
  return object;
}

namespace detail {

std::string boolText(ValueStorage const& value) {
  return std::get<bool>(value) ? "true" : "false";
}

std::string unsignedText(ValueStorage const& value) {
  return std::to_string(std::get<std::uint32_t>(value));
}

// The shortest text that reads back as the same number.
std::string doubleText(ValueStorage const& value) {
  double const number = std::get<double>(value);
  char text[64];
  auto const result = std::to_chars(text, text + sizeof text, number);
  return {text, result.ptr};
}

std::string stringText(ValueStorage const& value) {
  return quotedText(std::get<String>(value).view());
}

std::string ptrText(ValueStorage const& value) {
  return objectText(std::get<Ptr<PtrInterface const>>(value).get());
}

ValueStorage boolOfText(char const*& begin, char const* end) {
  if (takeWord(begin, end, "true") || takeWord(begin, end, "1")) return true;
  if (takeWord(begin, end, "false") || takeWord(begin, end, "0")) return false;
  cannotConvert(begin, end, typeid(bool));
}

ValueStorage unsignedOfText(char const*& begin, char const* end) {
  std::uint32_t value = 0;
  auto const result = std::from_chars(begin, end, value);
  if (result.ec != std::errc{}) cannotConvert(begin, end, typeid(std::uint32_t));
  begin = result.ptr;
  return value;
}

ValueStorage doubleOfText(char const*& begin, char const* end) {
  double value = 0;
  auto const result = std::from_chars(begin, end, value);
  if (result.ec != std::errc{}) cannotConvert(begin, end, typeid(double));
  begin = result.ptr;
  return value;
}

}  // namespace detail

}  // namespace Vek
