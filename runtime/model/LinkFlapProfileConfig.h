#pragma once

#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace LinkFlap {

/// One named detection profile. Input; a member of `Config.profileConfig`, under its own name.
class ProfileConfig final : public Vek::State<ProfileConfig> {
 public:
  static constexpr std::string_view vekTypeName{"LinkFlap::ProfileConfig"};

  class NotifieeConst : public Vek::NotifieeOf<ProfileConfig> {
   public:
    virtual void onMaxFlaps() {}
    virtual void onInterval() {}
    virtual void onViolations() {}
    virtual void onTrackedIntervals() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  unsigned maxFlaps_{0};
  double interval_{0};
  unsigned violations_{0};
  unsigned trackedIntervals_{0};

  using N = NotifieeConst;

 public:
  // clang-format off
  static constexpr Vek::Scalar maxFlapsAttr        {258, "maxFlaps",         &ProfileConfig::maxFlaps_,         &N::onMaxFlaps};
  static constexpr Vek::Scalar intervalAttr        {259, "interval",         &ProfileConfig::interval_,         &N::onInterval};
  static constexpr Vek::Scalar violationsAttr      {260, "violations",       &ProfileConfig::violations_,       &N::onViolations};
  static constexpr Vek::Scalar trackedIntervalsAttr{261, "trackedIntervals", &ProfileConfig::trackedIntervals_, &N::onTrackedIntervals};
  // clang-format on
  static constexpr std::tuple vekAttributes{maxFlapsAttr, intervalAttr, violationsAttr,
                                            trackedIntervalsAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  /// `name` is the profile's name. All values are 0 until set.
  using State::State;

  /// Flaps allowed in one interval; the next one is a violation.
  unsigned maxFlaps() const { return get<maxFlapsAttr>(); }
  void maxFlapsIs(unsigned flaps) { set<maxFlapsAttr>(flaps); }

  /// Length of one interval, seconds; truncated to whole seconds where it is used.
  double interval() const { return get<intervalAttr>(); }
  void intervalIs(double seconds) { set<intervalAttr>(seconds); }

  /// Violations that err-disable the interface.
  unsigned violations() const { return get<violationsAttr>(); }
  void violationsIs(unsigned count) { set<violationsAttr>(count); }

  /// Intervals over which violations are tracked.
  unsigned trackedIntervals() const { return get<trackedIntervalsAttr>(); }
  void trackedIntervalsIs(unsigned count) { set<trackedIntervalsAttr>(count); }
};

template <typename W>
consteval Vek::AttributeMask ProfileConfig::NotifieeConst::overriddenBy() {
  return Vek::maskOf(maxFlapsAttr, !Vek::inheritsScalar<N>(&W::onMaxFlaps)) |
         Vek::maskOf(intervalAttr, !Vek::inheritsScalar<N>(&W::onInterval)) |
         Vek::maskOf(violationsAttr, !Vek::inheritsScalar<N>(&W::onViolations)) |
         Vek::maskOf(trackedIntervalsAttr, !Vek::inheritsScalar<N>(&W::onTrackedIntervals));
}

}  // namespace LinkFlap

#pragma GCC visibility pop
