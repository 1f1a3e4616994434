// The manifest reader, on the bytes of files that are none.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "tests/fuzz/Check.h"
#include "tools/manifest/Manifest.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  // The planted fault: a file of more than its first header is taken for longer than it is.
  std::size_t const taken = Fuzz::planted() && size > 64 ? size + 64 : size;
  try {
    std::size_t total = 0;
    auto const names = Manifest::readManifest(std::as_bytes(std::span{data, taken}));
    Fuzz::check(!names.empty(), "a manifest of no names");
    for (std::string const& name : names) {
      Fuzz::check(!name.empty() && name.find('\0') == std::string::npos, "a name that is none");
      total += name.size() + 1;
    }
    Fuzz::check(total <= size, "more names than there are bytes");
  } catch (Manifest::BadFile const& error) {
    Fuzz::check(*error.what() != '\0', "a refusal without a word");
  }
  return 0;
}
