#include "runtime/tarn/IntfId.h"

#include <ostream>

namespace Tarn {

std::ostream& operator<<(std::ostream& out, IntfId const& id) {
  return out << id.name();
}

}  // namespace Tarn
