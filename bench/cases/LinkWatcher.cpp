#include "bench/cases/LinkWatcher.h"

#include <cstddef>

namespace Bench {

namespace {

class CountingWatcher final : public LinkWatcher {
 public:
  void onLink() override { ++told_; }

 private:
  std::size_t told_{0};
};

}  // namespace

std::unique_ptr<LinkWatcher> newCountingWatcher() {
  return std::make_unique<CountingWatcher>();
}

}  // namespace Bench
