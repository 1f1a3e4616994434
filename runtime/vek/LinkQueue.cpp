#include "runtime/vek/LinkQueue.h"

#include "runtime/vek/Exception.h"

namespace Vek {

void throwLinkQueueFull() {
  throwRangeException("linkqueue index space full");
}

void throwLinkQueueIndexInUse() {
  throwNameInUseException("linkqueue index in use");
}

}  // namespace Vek
