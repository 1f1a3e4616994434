#include "runtime/vek/ListRaw.h"

namespace Vek {

constinit thread_local ListRawGeneric::Walk* ListRawGeneric::walks_{nullptr};

}  // namespace Vek
