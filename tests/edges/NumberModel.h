#pragma once

#include <cstdint>
#include <optional>
#include <vector>

/// One profile machine's numbers, worked out with whole numbers of 128 bits and the bits of a
/// `double` instead of conversions and remainders, so that it shares no arithmetic with the library.
/// It can be told to make one of the mistakes that are near at hand, to show that the comparison
/// with it sees them.
class NumberModel {
 public:
  /// What the machine runs on.
  struct Limits {
    double interval;  ///< seconds, as configured
    std::uint32_t maxFlaps;
    std::uint32_t violations;
    std::uint32_t trackedIntervals;
  };
  struct State {
    std::vector<double> times;
    std::uint32_t flaps{0};
    std::uint32_t intervals{0};
    std::uint32_t violations{0};
    std::optional<double> errdisabledAt{};
  };
  enum class Mistake {
    none,
    intervalHeldAtGreatest,  ///< 2^32 s becomes 2^32 - 1 instead of 0
    intervalRounded,         ///< 2.9 s becomes 3
    windowOf64Bits,          ///< interval * trackedIntervals does not wrap
    limitOf64Bits,           ///< maxFlaps + 1 does not wrap
    atLeastTheLimit,         ///< every flap beyond the limit is a violation
    trackedBoundExcluded,    ///< interval `trackedIntervals` itself no longer counts
    windowEdgeTooOld,        ///< a flap exactly as old as the window is dropped
    clockNotHeld,            ///< time goes back when the clock does
  };
  static constexpr int kMistakes{9};

  NumberModel(Limits limits, State state, Mistake mistake);

  /// A flap while the clock shows that reading.
  void flap(double reading);
  State const& state() const noexcept { return state_; }

 private:
  double now(double reading);
  std::uint32_t intervalSeconds() const;
  bool evaluate(double flapTime, double firstFlapTime);

  Limits limits_;
  State state_;
  Mistake mistake_;
  std::optional<double> last_;
};
