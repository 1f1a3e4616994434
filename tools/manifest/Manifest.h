#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

// The type manifest of a library, read from its file: a loader learns which types a library
// provides without running any of its code.

namespace Manifest {

/// The section in which a library lists its types: NUL-terminated names, one after another.
inline constexpr char const* kSection{".vek.type"};

/// The file is not such a library, or it is damaged; the message says what is wrong with it.
class BadFile : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The type names that the bytes of an ELF file list, in their order. Takes files of both classes
/// and of either byte order, whatever the machine that reads them. Throws `BadFile`; never reads
/// beyond `file`, whatever is in it.
std::vector<std::string> readManifest(std::span<std::byte const> file);

}  // namespace Manifest
