#pragma once

#include <bitset>
#include <exception>
#include <string>
#include <string_view>
#include <typeinfo>

#include "runtime/vek/String.h"

#pragma GCC visibility push(default)

namespace Vek {

/// Small numbers that name the kinds of exceptions; 0 names none.
enum ExceptionId : unsigned {
  kNoException = 0,
  kRangeException = 1,
  kNameInUseException = 2,
  kTypeException = 3,
  kUnknownArgException = 4,
  kConstException = 5,
  kOpNotSupportedException = 6,
  kBadIndexAttrException = 7,
};

/// Base of the runtime's exceptions: the signal of a misuse that a caller can make.
class Exception : public std::exception {
 public:
  /// A set of exception ids.
  class IdBitArray {
   public:
    static constexpr unsigned kIds{64};

    /// Throws std::out_of_range for an id of `kIds` or above.
    IdBitArray& add(unsigned id) {
      ids_.set(id);
      return *this;
    }
    bool has(unsigned id) const noexcept { return id < kIds && ids_[id]; }
    bool empty() const noexcept { return ids_.none(); }

   private:
    std::bitset<kIds> ids_;
  };

  /// `ids` are the kinds that this exception belongs to; `retriable` tells whether the same call
  /// may succeed later without being changed.
  Exception(String message, IdBitArray ids, bool retriable = false) noexcept
      : message_{std::move(message)}, ids_{ids}, retriable_{retriable} {}

  char const* what() const noexcept override { return message_.charPtr(); }
  String const& message() const noexcept { return message_; }
  IdBitArray const& ids() const noexcept { return ids_; }
  bool retriable() const noexcept { return retriable_; }

 private:
  String message_;
  IdBitArray ids_;
  bool retriable_;
};

/// A value outside of what an operation can take, or a space that is used up.
class RangeException : public Exception {
 public:
  RangeException(String message, IdBitArray ids) noexcept : Exception{std::move(message), ids} {}
};

/// A child was requested under a name that is in use with other construction parameters.
class NameInUseException : public Exception {
 public:
  using Exception::Exception;
};

/// A value or an object of another type than the one required.
class TypeException : public Exception {
 public:
  using Exception::Exception;
};

[[noreturn]] void throwRangeException(char const* message);
[[noreturn]] void throwNameInUseException(String const& message);
[[noreturn]] void throwTypeException(char const* typeName);

/// Text that does not parse as a value: a RangeException that quotes the text and names the type.
[[noreturn]] void cannotConvert(char const* begin, char const* end, std::type_info const& type);

/// printf-style formatting of a message.
[[gnu::format(printf, 1, 2)]] String format(char const* pattern, ...);

/// Declares, for the scope it lives in, that an exception of the given id is expected to be thrown
/// and caught; a host's tools need not record it as a fault. `kNoException` declares that none is.
/// Thread: of the scope's own; scopes nest.
class Expect {
 public:
  explicit Expect(unsigned id) noexcept : id_{id}, outer_{innermost_} { innermost_ = this; }
  ~Expect() { innermost_ = outer_; }
  Expect(Expect const&) = delete;
  Expect& operator=(Expect const&) = delete;

  /// Whether the innermost scope of this thread expects one of `ids`.
  static bool expected(Exception::IdBitArray const& ids) noexcept;

 private:
  unsigned id_;
  Expect* outer_;
  static thread_local Expect* innermost_;
};

/// The class of an object or type as C++ source would name it.
std::string typeText(std::type_info const& type);

}  // namespace Vek

#pragma GCC visibility pop
