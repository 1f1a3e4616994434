#pragma once

#include <cstddef>

#include "runtime/vek/PtrInterface.h"

namespace RuntimeTest {

/// Records living objects while it lives, and tells how many of those made meanwhile are alive.
class Tracking {
 public:
  Tracking() : before_{Vek::PtrTrack::live()} { Vek::ptrifTrackOn_ = true; }
  ~Tracking() { Vek::ptrifTrackOn_ = false; }
  Tracking(Tracking const&) = delete;
  Tracking& operator=(Tracking const&) = delete;

  std::size_t live() const { return Vek::PtrTrack::live() - before_; }

 private:
  std::size_t before_;
};

}  // namespace RuntimeTest
