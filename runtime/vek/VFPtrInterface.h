#pragma once

#pragma GCC visibility push(default)

namespace Vek {

/// Holds the process-wide switch of reference counting.
class VFPtrInterface {
 public:
  /// While true, every change of a reference count is an atomic read-modify-write; while false, a
  /// plain one. A host sets it before its second thread shares objects and leaves it set.
  ///
  /// Trap: the switch itself is a plain variable, read at every change of a count. Starting a thread
  /// orders the setting before all that the thread does; setting it while other threads count is a
  /// data race.
  static bool enableThreadSafePointers;
};

}  // namespace Vek

#pragma GCC visibility pop
