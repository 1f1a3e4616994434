#pragma once

#include <cstdint>
#include <memory>

namespace Bench {

/// Times, oldest first, in a ring that grows by doubling and keeps its memory.
class Ring {
 public:
  std::uint32_t size() const { return size_; }
  double operator[](std::uint32_t index) const { return times_[(head_ + index) & (capacity_ - 1)]; }
  double front() const { return times_[head_]; }

  void push(double time) {
    if (size_ == capacity_) grow();
    times_[(head_ + size_) & (capacity_ - 1)] = time;
    ++size_;
  }
  void pop() {
    head_ = (head_ + 1) & (capacity_ - 1);
    --size_;
  }
  void clear() { head_ = size_ = 0; }

 private:
  void grow() {
    std::uint32_t const capacity = capacity_ == 0 ? 4 : 2 * capacity_;
    auto times = std::make_unique<double[]>(capacity);
    for (std::uint32_t i = 0; i < size_; ++i)
      times[i] = (*this)[i];
    times_ = std::move(times);
    capacity_ = capacity;
    head_ = 0;
  }

  std::unique_ptr<double[]> times_;
  std::uint32_t capacity_{0};  ///< a power of two, or 0
  std::uint32_t head_{0};
  std::uint32_t size_{0};
};

}  // namespace Bench
