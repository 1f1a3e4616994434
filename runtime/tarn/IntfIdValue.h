#pragma once

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/Value.h"

#pragma GCC visibility push(default)

namespace Tarn {
inline Vek::String const& nameOf(IntfId const& id) {
  return id.name();
}
}  // namespace Tarn

/// Interface identifiers, to tools, are their names.
template <>
struct Vek::ValueTraits<Tarn::IntfId> : Vek::TextValueTraits<Tarn::IntfId, Tarn::nameOf> {
  static constexpr ValueType type{"Tarn::IntfId", &typeid(Tarn::IntfId), false, detail::stringText,
                                  detail::stringOfText<Tarn::IntfId>};
};

#pragma GCC visibility pop
