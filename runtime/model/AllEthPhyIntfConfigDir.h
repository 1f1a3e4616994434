#pragma once

#include "runtime/model/EthPhyIntfConfig.h"
#include "runtime/tarn/IntfId.h"
#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace Interface {

/// Directory of the configuration of all physical Ethernet interfaces. Input, one instance. An
/// interface is monitored only while it has a member here.
class AllEthPhyIntfConfigDir final : public Vek::State<AllEthPhyIntfConfigDir> {
 public:
  static constexpr std::string_view vekTypeName{"Interface::AllEthPhyIntfConfigDir"};

  class NotifieeConst : public Vek::NotifieeOf<AllEthPhyIntfConfigDir> {
   public:
    virtual void onIntfConfig(Tarn::IntfId) {}
    virtual void onIntfConfig() {}
    virtual void onIntfConfigvekImmediate() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  Vek::Collection<Tarn::IntfId, Vek::Ptr<EthPhyIntfConfig const>> intfConfig_;

  using N = NotifieeConst;

 public:
  // clang-format off
  static constexpr Vek::Keyed intfConfigAttr{386, "intfConfig", &AllEthPhyIntfConfigDir::intfConfig_, &N::onIntfConfig, &N::onIntfConfig, &N::onIntfConfigvekImmediate};
  // clang-format on
  static constexpr std::tuple vekAttributes{intfConfigAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  using State::State;

  Vek::Collection<Tarn::IntfId, Vek::Ptr<EthPhyIntfConfig const>> const& intfConfig() const {
    return members<intfConfigAttr>();
  }
  Vek::Ptr<EthPhyIntfConfig const> intfConfig(Tarn::IntfId const& id) const {
    return member<intfConfigAttr>(id);
  }
  void intfConfigIs(Tarn::IntfId const& id, Vek::Ptr<EthPhyIntfConfig const> config) {
    memberIs<intfConfigAttr>(id, std::move(config));
  }
  /// Makes a new object a member and returns it.
  Vek::Ptr<EthPhyIntfConfig> newIntfConfig(Tarn::IntfId const& id) {
    auto config = Vek::make<EthPhyIntfConfig>(id);
    intfConfigIs(id, config);
    return config;
  }
  void intfConfigDel(Tarn::IntfId const& id) { memberDel<intfConfigAttr>(id); }
};

template <typename W>
consteval Vek::AttributeMask AllEthPhyIntfConfigDir::NotifieeConst::overriddenBy() {
  return Vek::maskOf(intfConfigAttr, !Vek::inheritsKeyed<N, Tarn::IntfId>(&W::onIntfConfig) ||
                                         !Vek::inheritsScalar<N>(&W::onIntfConfigvekImmediate));
}

}  // namespace Interface

#pragma GCC visibility pop
