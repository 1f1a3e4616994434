#pragma once

#include <memory>

namespace Bench {

/// What a bare vector of watchers holds. Trap: the implementation is made in a shared library of its
/// own, since a compiler that sees all implementations calls none of them virtually.
class LinkWatcher {
 public:
  virtual ~LinkWatcher() = default;
  virtual void onLink() = 0;
};

/// One that counts what it is told.
std::unique_ptr<LinkWatcher> newCountingWatcher();

}  // namespace Bench
