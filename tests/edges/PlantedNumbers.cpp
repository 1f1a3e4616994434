// usage: planted_numbers conversion|division|wrap|named
// The mistakes that the sanitizers are there to report, one at a time; and, last, a wrap that is
// named, which they let pass. Volatile, so that nothing is worked out before the program runs.

#include <cstdint>
#include <cstdio>
#include <limits>
#include <string_view>

#include "runtime/vek/Wrap.h"

int main(int count, char** words) {
  std::string_view const kind{count == 2 ? words[1] : ""};
  double volatile interval = std::numeric_limits<double>::quiet_NaN();
  double volatile nothing = 0;
  std::uint32_t volatile maxFlaps = 4294967295U;
  std::uint32_t result = 0;
  if (kind == "conversion")
    result = static_cast<std::uint32_t>(interval);
  else if (kind == "division")
    result = 7.0 / nothing > 1 ? 1 : 2;
  else if (kind == "wrap")
    result = maxFlaps + 1;
  else if (kind == "named")
    result = Vek::wrappingSum(maxFlaps, 1);
  else
    return 2;
  std::printf("%s: %u\n", words[1], result);
  return 0;
}
