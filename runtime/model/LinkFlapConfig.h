#pragma once

#include "runtime/model/LinkFlapIntfConfig.h"
#include "runtime/model/LinkFlapProfileConfig.h"
#include "runtime/tarn/IntfId.h"
#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace LinkFlap {

/// The link-flap configuration of the whole switch. Input, one instance; written by the command
/// interface, only read by the link-flap library.
class Config final : public Vek::State<Config> {
 public:
  static constexpr std::string_view vekTypeName{"LinkFlap::Config"};

  class NotifieeConst : public Vek::NotifieeOf<Config> {
   public:
    virtual void onMaxFlaps() {}
    virtual void onInterval() {}
    virtual void onIntfConfig(Tarn::IntfId) {}
    virtual void onIntfConfig() {}
    virtual void onIntfConfigvekImmediate() {}
    virtual void onProfileConfig(Vek::String) {}
    virtual void onProfileConfig() {}
    virtual void onProfileConfigvekImmediate() {}
    virtual void onDefaultProfileList(Vek::String) {}
    virtual void onDefaultProfileList() {}
    virtual void onDefaultProfileListvekImmediate() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  unsigned maxFlaps_{5};
  double interval_{10};
  Vek::Collection<Tarn::IntfId, Vek::Ptr<IntfConfig const>> intfConfig_;
  Vek::Collection<Vek::String, Vek::Ptr<ProfileConfig const>> profileConfig_;
  Vek::Collection<Vek::String, bool> defaultProfileList_;

  using N = NotifieeConst;

 public:
  // clang-format off
  static constexpr Vek::Scalar maxFlapsAttr          {260, "maxFlaps",           &Config::maxFlaps_,           &N::onMaxFlaps};
  static constexpr Vek::Scalar intervalAttr          {261, "interval",           &Config::interval_,           &N::onInterval};
  static constexpr Vek::Keyed  intfConfigAttr        {262, "intfConfig",         &Config::intfConfig_,         &N::onIntfConfig,         &N::onIntfConfig,         &N::onIntfConfigvekImmediate};
  static constexpr Vek::Keyed  profileConfigAttr     {263, "profileConfig",      &Config::profileConfig_,      &N::onProfileConfig,      &N::onProfileConfig,      &N::onProfileConfigvekImmediate};
  static constexpr Vek::Keyed  defaultProfileListAttr{264, "defaultProfileList", &Config::defaultProfileList_, &N::onDefaultProfileList, &N::onDefaultProfileList, &N::onDefaultProfileListvekImmediate};
  // clang-format on
  static constexpr std::tuple vekAttributes{maxFlapsAttr, intervalAttr, intfConfigAttr,
                                            profileConfigAttr, defaultProfileListAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  using State::State;

  /// Flaps allowed in one interval, for every profile machine that has no ProfileConfig.
  unsigned maxFlaps() const { return get<maxFlapsAttr>(); }
  void maxFlapsIs(unsigned flaps) { set<maxFlapsAttr>(flaps); }

  /// Length of that interval, seconds; truncated to whole seconds where it is used.
  double interval() const { return get<intervalAttr>(); }
  void intervalIs(double seconds) { set<intervalAttr>(seconds); }

  /// The interfaces' own settings; an interface that has none is monitored all the same.
  Vek::Collection<Tarn::IntfId, Vek::Ptr<IntfConfig const>> const& intfConfig() const {
    return members<intfConfigAttr>();
  }
  Vek::Ptr<IntfConfig const> intfConfig(Tarn::IntfId const& id) const {
    return member<intfConfigAttr>(id);
  }
  void intfConfigIs(Tarn::IntfId const& id, Vek::Ptr<IntfConfig const> config) {
    memberIs<intfConfigAttr>(id, std::move(config));
  }
  /// Makes a new object a member and returns it; its values can be set afterwards.
  Vek::Ptr<IntfConfig> newIntfConfig(Tarn::IntfId const& id) {
    auto config = Vek::make<IntfConfig>(Vek::Name{id.name()});
    intfConfigIs(id, config);
    return config;
  }
  void intfConfigDel(Tarn::IntfId const& id) { memberDel<intfConfigAttr>(id); }

  /// The named profiles.
  Vek::Collection<Vek::String, Vek::Ptr<ProfileConfig const>> const& profileConfig() const {
    return members<profileConfigAttr>();
  }
  Vek::Ptr<ProfileConfig const> profileConfig(Vek::String const& name) const {
    return member<profileConfigAttr>(name);
  }
  void profileConfigIs(Vek::String const& name, Vek::Ptr<ProfileConfig const> config) {
    memberIs<profileConfigAttr>(name, std::move(config));
  }
  /// Makes a new object a member and returns it; its values can be set afterwards.
  Vek::Ptr<ProfileConfig> newProfileConfig(Vek::String const& name) {
    auto config = Vek::make<ProfileConfig>(Vek::Name{name});
    profileConfigIs(name, config);
    return config;
  }
  void profileConfigDel(Vek::String const& name) { memberDel<profileConfigAttr>(name); }

  /// Profiles of interfaces that list none themselves; an absent name reads as false.
  Vek::Collection<Vek::String, bool> const& defaultProfileList() const {
    return members<defaultProfileListAttr>();
  }
  bool defaultProfileList(Vek::String const& name) const {
    return member<defaultProfileListAttr>(name);
  }
  void defaultProfileListIs(Vek::String const& name, bool on) {
    memberIs<defaultProfileListAttr>(name, on);
  }
  void defaultProfileListDel(Vek::String const& name) { memberDel<defaultProfileListAttr>(name); }
};

template <typename W>
consteval Vek::AttributeMask Config::NotifieeConst::overriddenBy() {
  return Vek::maskOf(maxFlapsAttr, !Vek::inheritsScalar<N>(&W::onMaxFlaps)) |
         Vek::maskOf(intervalAttr, !Vek::inheritsScalar<N>(&W::onInterval)) |
         Vek::maskOf(intfConfigAttr, !Vek::inheritsKeyed<N, Tarn::IntfId>(&W::onIntfConfig) ||
                                         !Vek::inheritsScalar<N>(&W::onIntfConfigvekImmediate)) |
         Vek::maskOf(profileConfigAttr,
                     !Vek::inheritsKeyed<N, Vek::String>(&W::onProfileConfig) ||
                         !Vek::inheritsScalar<N>(&W::onProfileConfigvekImmediate)) |
         Vek::maskOf(defaultProfileListAttr,
                     !Vek::inheritsKeyed<N, Vek::String>(&W::onDefaultProfileList) ||
                         !Vek::inheritsScalar<N>(&W::onDefaultProfileListvekImmediate));
}

}  // namespace LinkFlap

#pragma GCC visibility pop
