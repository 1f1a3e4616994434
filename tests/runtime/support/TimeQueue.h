#pragma once

#include <cstdint>
#include <vector>

#include "runtime/vek/LinkQueue.h"

namespace RuntimeTest {

/// An entry of a queue of times; counts how many of its kind are alive.
class TimeEntry final : public Vek::LinkQueueEntry<double> {
 public:
  TimeEntry(std::uint32_t index, double time) : LinkQueueEntry{index, time} { ++alive; }

  static inline int alive{0};

 private:
  template <typename E, typename I, typename V>
  friend class Vek::LinkQueue;
  ~TimeEntry() override { --alive; }
};

using TimeQueue = Vek::LinkQueue<TimeEntry, std::uint32_t, double>;

using Indexes = std::vector<std::uint32_t>;
using Times = std::vector<double>;

/// The indexes that a walk over the queue visits.
inline Indexes indexesOf(TimeQueue const& queue) {
  Indexes indexes;
  for (TimeQueue::Iterator walk = queue.iterator(); walk; ++walk)
    indexes.push_back(walk->vek_index());
  return indexes;
}

inline Times timesOf(TimeQueue const& queue) {
  Times times;
  for (TimeQueue::Iterator walk = queue.iterator(); walk; ++walk)
    times.push_back(walk->value());
  return times;
}

/// Whether `act` throws an exception of class `E` with that message.
template <typename E, typename Act>
bool refuses(char const* message, Act act) {
  try {
    act();
  } catch (E const& exception) {
    return exception.message() == message;
  }
  return false;
}

}  // namespace RuntimeTest
