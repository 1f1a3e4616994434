#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// What the model and the library let out while one event is handled, in the same words.
namespace Simulation {

constexpr int kMaxInterfaces{16};
constexpr int kProfiles{6};
constexpr int kCauses{3};

/// A change of an err-disable record.
struct Write {
  int record;  ///< which of the record objects
  int intf;
  bool present;  ///< written, or withdrawn
  double time;   ///< seconds; 0 for a withdrawal
};

/// A trace message. The address of a profile machine reads "@MACHINE/INTERFACE/PROFILE", that of one
/// which is not yet a member of its collection "@new".
struct TraceLine {
  int level;
  int line;
  std::string function;
  std::string message;

  friend bool operator==(TraceLine const&, TraceLine const&) = default;
};

/// An exception that left a callback.
struct Failure {
  std::string attribute;
  std::string message;

  friend bool operator==(Failure const&, Failure const&) = default;
};

struct Outcome {
  std::vector<Write> writes;
  std::vector<TraceLine> traces;
  std::vector<Failure> failures;
  std::string thrown;         ///< the exception that reached the caller of the event; empty without
  std::uint64_t hits{0};      ///< trace points passed, counted as the facility counts them
  std::uint32_t readings{0};  ///< of the clock's source
  std::uint32_t rootTold{0};  ///< how often the Root's watcher was told

  void clear() {
    writes.clear();
    traces.clear();
    failures.clear();
    thrown.clear();
    hits = 0;
    readings = 0;
    rootTold = 0;
  }
};

/// The names that numbers stand for. Interfaces and profiles are numbered in the order in which a
/// collection of the library walks them: that order is the runtime's, so the library is asked.
struct Names {
  std::vector<std::string> interfaces;
  std::vector<std::string> profiles;
  std::vector<std::string> causes;
  int defaultProfile{0};  ///< the number of the profile "default"
};

/// What the clock's source says during one event: `first`, then `second`, then steps from there.
struct ClockPlan {
  double first{0};
  double second{0};
  double step{0};

  double reading(std::uint32_t number) const {
    if (number == 0) return first;
    return second + step * static_cast<double>(number - 1);
  }
};

}  // namespace Simulation
