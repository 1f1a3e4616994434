#pragma once

#include <string_view>

#include "runtime/vek/GenericIf.h"
#include "runtime/vek/Value.h"

#pragma GCC visibility push(default)

namespace Vek {

/// Reads a `T` from the front of [begin, end) and moves `begin` behind it. Throws
/// `Vek::RangeException` (`cannotConvert`) when there is none.
template <typename T>
T sequenceToValue(char const*& begin, char const* end) {
  return ValueTraits<T>::load(ValueTraits<T>::type.fromText(begin, end));
}

/// The same for references to objects, which are paths.
template <typename T>
Ptr<T> sequenceToValueOfPtr(char const*& begin, char const* end) {
  return sequenceToValue<Ptr<T>>(begin, end);
}

/// The whole of `text` as a `T`. Throws as `valueOfText` does.
template <typename T>
T strepToValue(std::string_view text) {
  return valueOfText(text, ValueTraits<T>::type).template as<T>();
}

}  // namespace Vek

#pragma GCC visibility pop
