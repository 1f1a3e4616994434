#pragma once

#include "runtime/model/EthPhyIntfStatus.h"
#include "runtime/tarn/IntfId.h"
#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace Interface {

/// Directory of the status of all physical Ethernet interfaces. Input, one instance. An
/// interface is monitored only while it has a member here.
class AllEthPhyIntfStatusDir final : public Vek::State<AllEthPhyIntfStatusDir> {
 public:
  static constexpr std::string_view vekTypeName{"Interface::AllEthPhyIntfStatusDir"};

  class NotifieeConst : public Vek::NotifieeOf<AllEthPhyIntfStatusDir> {
   public:
    virtual void onIntfStatus(Tarn::IntfId) {}
    virtual void onIntfStatus() {}
    virtual void onIntfStatusvekImmediate() {}

    /// The attributes whose notifications `W` overrides.
    template <typename W>
    static consteval Vek::AttributeMask overriddenBy();

   protected:
    using NotifieeOf::NotifieeOf;
  };

 private:
  Vek::Collection<Tarn::IntfId, Vek::Ptr<EthPhyIntfStatus const>> intfStatus_;

  using N = NotifieeConst;

 public:
  // clang-format off
  static constexpr Vek::Keyed intfStatusAttr{386, "intfStatus", &AllEthPhyIntfStatusDir::intfStatus_, &N::onIntfStatus, &N::onIntfStatus, &N::onIntfStatusvekImmediate};
  // clang-format on
  static constexpr std::tuple vekAttributes{intfStatusAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  using State::State;

  Vek::Collection<Tarn::IntfId, Vek::Ptr<EthPhyIntfStatus const>> const& intfStatus() const {
    return members<intfStatusAttr>();
  }
  Vek::Ptr<EthPhyIntfStatus const> intfStatus(Tarn::IntfId const& id) const {
    return member<intfStatusAttr>(id);
  }
  void intfStatusIs(Tarn::IntfId const& id, Vek::Ptr<EthPhyIntfStatus const> status) {
    memberIs<intfStatusAttr>(id, std::move(status));
  }
  /// Makes a new object a member and returns it.
  Vek::Ptr<EthPhyIntfStatus> newIntfStatus(Tarn::IntfId const& id) {
    auto status = Vek::make<EthPhyIntfStatus>(id);
    intfStatusIs(id, status);
    return status;
  }
  void intfStatusDel(Tarn::IntfId const& id) { memberDel<intfStatusAttr>(id); }
};

template <typename W>
consteval Vek::AttributeMask AllEthPhyIntfStatusDir::NotifieeConst::overriddenBy() {
  return Vek::maskOf(intfStatusAttr, !Vek::inheritsKeyed<N, Tarn::IntfId>(&W::onIntfStatus) ||
                                         !Vek::inheritsScalar<N>(&W::onIntfStatusvekImmediate));
}

}  // namespace Interface

#pragma GCC visibility pop
