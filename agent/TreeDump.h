#pragma once

#include <iosfwd>

#include "agent/Options.h"

namespace LinkFlapd {

/// Writes the whole tree of objects, from every object in `Vek::PathRoots` down: each with its path,
/// its type and the values of its attributes; machines and members of collections where they stand,
/// everything else that refers to an object as that one's path. It goes by the generic interface, so
/// it knows no type of what it writes.
void dumpTree(std::ostream& out, Options::DumpFormat format);

}  // namespace LinkFlapd
