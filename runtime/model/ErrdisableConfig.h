#pragma once

#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace Errdisable {

/// The err-disable configuration of the switch. Input, one instance.
class Config final : public Vek::State<Config> {
 public:
  static constexpr std::string_view vekTypeName{"Errdisable::Config"};

  class NotifieeConst : public Vek::NotifieeOf<Config> {
   public:
    virtual void onRecoveryInterval() {}
    virtual void onDisabled(Vek::String) {}
    virtual void onDisabled() {}
    virtual void onDisabledvekImmediate() {}
    virtual void onTimerRecoveryEnabled(Vek::String) {}
    virtual void onTimerRecoveryEnabled() {}
    virtual void onTimerRecoveryEnabledvekImmediate() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  double recoveryInterval_{300};
  Vek::Collection<Vek::String, bool> disabled_;
  Vek::Collection<Vek::String, bool> timerRecoveryEnabled_;

  using N = NotifieeConst;

 public:
  // clang-format off
  static constexpr Vek::Scalar recoveryIntervalAttr    {260, "recoveryInterval",     &Config::recoveryInterval_,     &N::onRecoveryInterval};
  static constexpr Vek::Keyed  disabledAttr            {261, "disabled",             &Config::disabled_,             &N::onDisabled,             &N::onDisabled,             &N::onDisabledvekImmediate};
  static constexpr Vek::Keyed  timerRecoveryEnabledAttr{262, "timerRecoveryEnabled", &Config::timerRecoveryEnabled_, &N::onTimerRecoveryEnabled, &N::onTimerRecoveryEnabled, &N::onTimerRecoveryEnabledvekImmediate};
  // clang-format on
  static constexpr std::tuple vekAttributes{recoveryIntervalAttr, disabledAttr,
                                            timerRecoveryEnabledAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  using State::State;

  /// The causes that are switched off, by name; an absent cause reads as false.
  Vek::Collection<Vek::String, bool> const& disabled() const { return members<disabledAttr>(); }
  bool disabled(Vek::String const& cause) const { return member<disabledAttr>(cause); }
  void disabledIs(Vek::String const& cause, bool off) { memberIs<disabledAttr>(cause, off); }
  void disabledDel(Vek::String const& cause) { memberDel<disabledAttr>(cause); }

  /// The causes whose interfaces recover by themselves. Not read by the link-flap library.
  Vek::Collection<Vek::String, bool> const& timerRecoveryEnabled() const {
    return members<timerRecoveryEnabledAttr>();
  }
  bool timerRecoveryEnabled(Vek::String const& cause) const {
    return member<timerRecoveryEnabledAttr>(cause);
  }
  void timerRecoveryEnabledIs(Vek::String const& cause, bool on) {
    memberIs<timerRecoveryEnabledAttr>(cause, on);
  }
  void timerRecoveryEnabledDel(Vek::String const& cause) {
    memberDel<timerRecoveryEnabledAttr>(cause);
  }

  /// After how many seconds they do. Not read by the link-flap library.
  double recoveryInterval() const { return get<recoveryIntervalAttr>(); }
  void recoveryIntervalIs(double seconds) { set<recoveryIntervalAttr>(seconds); }
};

template <typename W>
consteval Vek::AttributeMask Config::NotifieeConst::overriddenBy() {
  return Vek::maskOf(recoveryIntervalAttr, !Vek::inheritsScalar<N>(&W::onRecoveryInterval)) |
         Vek::maskOf(disabledAttr, !Vek::inheritsKeyed<N, Vek::String>(&W::onDisabled) ||
                                       !Vek::inheritsScalar<N>(&W::onDisabledvekImmediate)) |
         Vek::maskOf(timerRecoveryEnabledAttr,
                     !Vek::inheritsKeyed<N, Vek::String>(&W::onTimerRecoveryEnabled) ||
                         !Vek::inheritsScalar<N>(&W::onTimerRecoveryEnabledvekImmediate));
}

}  // namespace Errdisable

#pragma GCC visibility pop
