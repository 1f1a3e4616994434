#pragma once

#include <chrono>
#include <thread>

/// An end to waiting. It is generous: a test that passes never waits for it.
class Deadline {
 public:
  explicit Deadline(std::chrono::milliseconds limit = std::chrono::seconds{20})
      : end_{std::chrono::steady_clock::now() + limit} {}

  bool passed() const { return std::chrono::steady_clock::now() >= end_; }

  /// Asks again and again until the condition holds (true) or the deadline has passed (false).
  template <typename Condition>
  bool reaches(Condition condition) const {
    while (!condition()) {
      if (passed()) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds{5});
    }
    return true;
  }

 private:
  std::chrono::steady_clock::time_point end_;
};
