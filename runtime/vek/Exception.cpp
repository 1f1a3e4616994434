#include "runtime/vek/Exception.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <vector>

namespace Vek {

namespace {

Exception::IdBitArray ids(ExceptionId id) {
  Exception::IdBitArray set;
  set.add(id);
  return set;
}

}  // namespace

void throwRangeException(char const* message) {
  throw RangeException{message, ids(kRangeException)};
}

void throwNameInUseException(String const& message) {
  throw NameInUseException{message, ids(kNameInUseException)};
}

void throwTypeException(char const* typeName) {
  throw TypeException{typeName, ids(kTypeException)};
}

void cannotConvert(char const* begin, char const* end, std::type_info const& type) {
  std::string const text{begin, end};
  throw RangeException{String{"cannot convert \"" + text + "\" to " + typeText(type)},
                       ids(kRangeException)};
}

String format(char const* pattern, ...) {
  std::va_list arguments;
  va_start(arguments, pattern);
  std::va_list again;
  va_copy(again, arguments);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it was started above
  int const length = std::vsnprintf(nullptr, 0, pattern, arguments);
  va_end(arguments);
  std::vector<char> text(length < 0 ? 1 : static_cast<std::size_t>(length) + 1);
  if (length >= 0) std::vsnprintf(text.data(), text.size(), pattern, again);
  va_end(again);
  return String{std::string_view{text.data(), text.size() - 1}};
}

thread_local Expect* Expect::innermost_ = nullptr;

bool Expect::expected(Exception::IdBitArray const& ids) noexcept {
  return innermost_ != nullptr && innermost_->id_ != kNoException && ids.has(innermost_->id_);
}

std::string typeText(std::type_info const& type) {
  std::unique_ptr<char, void (*)(void*)> const name{
      abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr), std::free};
  return name ? name.get() : type.name();
}

}  // namespace Vek
