#pragma once

#include "runtime/vek/Ptr.h"
#include "runtime/vek/String.h"

#pragma GCC visibility push(default)

namespace Vek {

/// The textual form of a pointer: "0x" and hexadecimal digits; "0x0" for the null pointer.
String representation(void const* pointer);

/// Throws `Vek::NameInUseException`: a child exists under other construction parameters.
[[noreturn]] void throwReinstantiation(char const* parameter, void const* given,
                                       void const* current);

/// Refuses to hand out an existing child under another value of one constructor parameter, compared
/// by identity. A refusal is a logic error of the caller: whoever may change a parameter deletes the
/// child first.
template <typename T>
void requireSame(char const* parameter, Ptr<T> const& given, Ptr<T> const& current) {
  if (given != current) throwReinstantiation(parameter, given.get(), current.get());
}

[[noreturn]] void throwNullValidPtr();

/// A pointer that is known to hold an object. Throws `Vek::RangeException` ("null ValidPtr") when it
/// does not.
template <typename T>
Ptr<T> const& validPtr(Ptr<T> const& pointer) {
  if (!pointer) throwNullValidPtr();
  return pointer;
}

}  // namespace Vek

#pragma GCC visibility pop
