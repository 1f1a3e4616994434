#pragma once

#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace LinkFlap {

/// The link-flap configuration of one interface. Input; a member of `Config.intfConfig`.
class IntfConfig final : public Vek::State<IntfConfig> {
 public:
  static constexpr std::string_view vekTypeName{"LinkFlap::IntfConfig"};

  class NotifieeConst : public Vek::NotifieeOf<IntfConfig> {
   public:
    virtual void onProfileList(Vek::String) {}
    virtual void onProfileList() {}
    virtual void onProfileListvekImmediate() {}
    virtual void onEnabled() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  bool enabled_{false};
  Vek::Collection<Vek::String, bool> profileList_;

  using N = NotifieeConst;

 public:
  // clang-format off
  static constexpr Vek::Scalar enabledAttr    {258, "enabled",     &IntfConfig::enabled_,     &N::onEnabled};
  static constexpr Vek::Keyed  profileListAttr{259, "profileList", &IntfConfig::profileList_, &N::onProfileList, &N::onProfileList, &N::onProfileListvekImmediate};
  // clang-format on
  static constexpr std::tuple vekAttributes{enabledAttr, profileListAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  using State::State;

  /// Whether the interface is monitored; false until set.
  bool enabled() const { return get<enabledAttr>(); }
  void enabledIs(bool on) { set<enabledAttr>(on); }

  /// The profiles selected for this interface. That a name is a member selects it; its value false
  /// keeps its machine from being kept.
  Vek::Collection<Vek::String, bool> const& profileList() const {
    return members<profileListAttr>();
  }
  bool profileList(Vek::String const& name) const { return member<profileListAttr>(name); }
  void profileListIs(Vek::String const& name, bool on) { memberIs<profileListAttr>(name, on); }
  void profileListDel(Vek::String const& name) { memberDel<profileListAttr>(name); }
};

template <typename W>
consteval Vek::AttributeMask IntfConfig::NotifieeConst::overriddenBy() {
  return Vek::maskOf(enabledAttr, !Vek::inheritsScalar<N>(&W::onEnabled)) |
         Vek::maskOf(profileListAttr, !Vek::inheritsKeyed<N, Vek::String>(&W::onProfileList) ||
                                          !Vek::inheritsScalar<N>(&W::onProfileListvekImmediate));
}

}  // namespace LinkFlap

#pragma GCC visibility pop
