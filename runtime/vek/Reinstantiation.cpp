#include "runtime/vek/Reinstantiation.h"

#include <cinttypes>
#include <cstdint>

#include "runtime/vek/Exception.h"

namespace Vek {

String representation(void const* pointer) {
  return format("0x%" PRIxPTR, reinterpret_cast<std::uintptr_t>(pointer));
}

void throwReinstantiation(char const* parameter, void const* given, void const* current) {
  throwNameInUseException(
      String{"Reinstantiating the pointer interface where constructor parameter attribute "} +
      parameter + " has a different value of " + representation(given) +
      " than the current value of " + representation(current) + " not allowed");
}

void throwNullValidPtr() {
  throwRangeException("null ValidPtr");
}

}  // namespace Vek
