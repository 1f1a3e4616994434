#pragma once

#include <cstdint>

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace Interface {

/// Where the configuring of an interface's physical layer stands. The platform's enumeration: the
/// link-flap library relies on the number 2 alone.
enum class PhyConfigState : std::uint32_t {
  configured = 0,
  pending = 1,
  inProgress = 2,  ///< link changes are the configuration's doing and are not counted
};

/// The configuration of one physical Ethernet interface. Input; a member of
/// `AllEthPhyIntfConfigDir.intfConfig`.
class EthPhyIntfConfig final : public Vek::State<EthPhyIntfConfig> {
 public:
  static constexpr std::string_view vekTypeName{"Interface::EthPhyIntfConfig"};

  class NotifieeConst : public Vek::NotifieeOf<EthPhyIntfConfig> {
   public:
    virtual void onPhyConfigState() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  PhyConfigState phyConfigState_{PhyConfigState::configured};

  using N = NotifieeConst;

 public:
  explicit EthPhyIntfConfig(Tarn::IntfId const& id) : State{Vek::Name{id.name()}} {}

  /// The interface's identifier, which is also the entity's name.
  Tarn::IntfId intfId() const {
    countRead();
    return Tarn::IntfId{name().string()};
  }

  // clang-format off
  static constexpr Vek::Derived intfIdAttr        {258, "intfId",         &EthPhyIntfConfig::intfId};
  static constexpr Vek::Scalar  phyConfigStateAttr{259, "phyConfigState", &EthPhyIntfConfig::phyConfigState_, &N::onPhyConfigState};
  // clang-format on
  static constexpr std::tuple vekAttributes{intfIdAttr, phyConfigStateAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  PhyConfigState phyConfigState() const { return get<phyConfigStateAttr>(); }
  void phyConfigStateIs(PhyConfigState state) { set<phyConfigStateAttr>(state); }
};

template <typename W>
consteval Vek::AttributeMask EthPhyIntfConfig::NotifieeConst::overriddenBy() {
  return Vek::maskOf(phyConfigStateAttr, !Vek::inheritsScalar<N>(&W::onPhyConfigState));
}

}  // namespace Interface

#pragma GCC visibility pop
