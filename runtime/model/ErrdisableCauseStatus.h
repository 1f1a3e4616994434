#pragma once

#include "runtime/tarn/IntfId.h"
#include "runtime/vek/State.h"

#pragma GCC visibility push(default)

namespace Errdisable {

/// The err-disable record of one cause. Output: the one object that the link-flap library writes.
class CauseStatus final : public Vek::State<CauseStatus> {
 public:
  static constexpr std::string_view vekTypeName{"Errdisable::CauseStatus"};

  class NotifieeConst : public Vek::NotifieeOf<CauseStatus> {
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
  Vek::Collection<Tarn::IntfId, double> intfStatus_;

  using N = NotifieeConst;

 public:
  // clang-format off
  static constexpr Vek::Keyed intfStatusAttr{258, "intfStatus", &CauseStatus::intfStatus_, &N::onIntfStatus, &N::onIntfStatus, &N::onIntfStatusvekImmediate};
  // clang-format on
  static constexpr std::tuple vekAttributes{intfStatusAttr};
  static_assert(Vek::distinct(vekAttributes));

  Vek::VekType const* fwkType() const override;

  using State::State;

  /// The interfaces that are err-disabled for this cause, each with the time of `Vek::now()` at
  /// which it was, in seconds.
  Vek::Collection<Tarn::IntfId, double> const& intfStatus() const {
    return members<intfStatusAttr>();
  }
  /// That time; 0 for an interface without a record, which `intfStatus().has(id)` tells apart.
  double intfStatus(Tarn::IntfId const& id) const { return member<intfStatusAttr>(id); }
  void intfStatusIs(Tarn::IntfId id, double const& time) { memberIs<intfStatusAttr>(id, time); }
  /// What writing a record for `id` needs memory for. Nobody can see it; dropped, it is void.
  using Room = Vek::Ptr<Vek::CollectionMember<Tarn::IntfId, double>>;
  static Room intfStatusRoom(Tarn::IntfId const& id) { return memberRoom<intfStatusAttr>(id); }
  /// As above, for the interface of `room`; throws nothing.
  void intfStatusRoomIs(Room room, double const& time) noexcept {
    memberIs<intfStatusAttr>(std::move(room), time);
  }
  void intfStatusDel(Tarn::IntfId id) { memberDel<intfStatusAttr>(id); }
};

template <typename W>
consteval Vek::AttributeMask CauseStatus::NotifieeConst::overriddenBy() {
  return Vek::maskOf(intfStatusAttr, !Vek::inheritsKeyed<N, Tarn::IntfId>(&W::onIntfStatus) ||
                                         !Vek::inheritsScalar<N>(&W::onIntfStatusvekImmediate));
}

}  // namespace Errdisable

#pragma GCC visibility pop
