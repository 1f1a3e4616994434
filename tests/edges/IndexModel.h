#pragma once

#include <cstdint>
#include <deque>
#include <optional>

/// The queue of flap times as a plain list with its two index numbers, counted in 64 bits and cut
/// to 32. It can be told to forget the wrap, to show that the comparison with it sees that.
class IndexModel {
 public:
  struct Entry {
    std::uint32_t index;
    double time;
  };

  IndexModel(std::uint32_t start, bool forgetsTheWrap)
      : head_{start}, next_{start}, forgets_{forgetsTheWrap} {}

  std::deque<Entry> const& entries() const noexcept { return entries_; }
  std::uint32_t headIndex() const noexcept { return head_; }
  std::uint32_t nextIndex() const noexcept { return next_; }
  std::uint32_t version() const noexcept { return version_; }
  void indexesAre(std::uint32_t head, std::uint32_t next) { head_ = head, next_ = next; }

  /// False when the index space is full.
  bool enq(double time) {
    std::uint32_t index = next_;
    if (!entries_.empty() && entries_.back().index >= index) index = after(entries_.back().index);
    next_ = index;
    if (!entries_.empty() && after(index) == head_) return false;
    if (entries_.empty()) head_ = index;
    entries_.push_back({index, time});
    next_ = after(index);
    ++version_;
    return true;
  }

  /// Removes the entry at that place, 0 being the head; absent: nothing.
  std::optional<double> del(std::size_t place) {
    if (place >= entries_.size()) return std::nullopt;
    double const time = entries_[place].time;
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(place));
    ++version_;
    if (place == 0) {
      if (!entries_.empty() && next_ <= entries_.back().index) next_ = after(entries_.back().index);
      head_ = entries_.empty() ? next_ : entries_.front().index;
    }
    return time;
  }

 private:
  std::uint32_t after(std::uint32_t index) const {
    std::uint64_t const next = std::uint64_t{index} + 1;
    return static_cast<std::uint32_t>(forgets_ && next > 0xFFFFFFFFU ? 0xFFFFFFFFU : next);
  }

  std::deque<Entry> entries_;
  std::uint32_t head_;
  std::uint32_t next_;
  std::uint32_t version_{0};
  bool forgets_;
};
