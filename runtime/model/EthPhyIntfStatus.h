#pragma once

#include <cstdint>

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace Interface {

/// The raw link status as the driver reports it. The platform's enumeration: the link-flap library
/// relies on the number 1 alone.
enum class RawLinkStatus : std::uint32_t {
  unknown = 0,
  up = 1,  ///< a change to this value is a flap: the link has come back
  down = 2,
};

/// The status of one physical Ethernet interface. Input; a member of
/// `AllEthPhyIntfStatusDir.intfStatus`; written by the interface's driver.
class EthPhyIntfStatus final : public Vek::State<EthPhyIntfStatus> {
 public:
  static constexpr std::string_view vekTypeName{"Interface::EthPhyIntfStatus"};

  class NotifieeConst : public Vek::NotifieeOf<EthPhyIntfStatus> {
   public:
    virtual void onRawLinkStatus() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  RawLinkStatus rawLinkStatus_{RawLinkStatus::unknown};

  using N = NotifieeConst;

 public:
  explicit EthPhyIntfStatus(Tarn::IntfId const& id) : State{Vek::Name{id.name()}} {}

  /// The interface's identifier, which is also the entity's name.
  Tarn::IntfId intfId() const {
    countRead();
    return Tarn::IntfId{ownName().string()};
  }

  // clang-format off
  static constexpr Vek::Derived intfIdAttr       {258, "intfId",        &EthPhyIntfStatus::intfId};
  static constexpr Vek::Scalar  rawLinkStatusAttr{259, "rawLinkStatus", &EthPhyIntfStatus::rawLinkStatus_, &N::onRawLinkStatus};
  // clang-format on
  static constexpr std::tuple vekAttributes{intfIdAttr, rawLinkStatusAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  RawLinkStatus rawLinkStatus() const { return get<rawLinkStatusAttr>(); }
  void rawLinkStatusIs(RawLinkStatus status) { set<rawLinkStatusAttr>(status); }
};

template <typename W>
consteval Vek::AttributeMask EthPhyIntfStatus::NotifieeConst::overriddenBy() {
  return Vek::maskOf(rawLinkStatusAttr, !Vek::inheritsScalar<N>(&W::onRawLinkStatus));
}

}  // namespace Interface

#pragma GCC visibility pop
