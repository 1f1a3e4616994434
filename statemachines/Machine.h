#pragma once

#include "runtime/vek/PtrInterface.h"

#pragma GCC visibility push(default)

namespace LinkFlap {

/// Base of the three state machines: whether the first pass has run. A base of its own, since its
/// member fills the gap behind the reference count; there are as many profile machines as
/// interfaces times profiles.
class Machine : public Vek::PtrInterface {
 public:
  bool initialized() const noexcept { return initialized_; }
  /// Only stores it.
  void initializedIs(bool on) noexcept { initialized_ = on; }

 protected:
  Machine() = default;
  ~Machine() override = default;

 private:
  bool initialized_{false};
};

}  // namespace LinkFlap

#pragma GCC visibility pop
