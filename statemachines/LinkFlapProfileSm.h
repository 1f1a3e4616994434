#pragma once

#include <cstdint>

#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/EthPhyIntfConfig.h"
#include "runtime/model/EthPhyIntfStatus.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/model/LinkFlapProfileConfig.h"
#include "runtime/vek/HashMap.h"
#include "runtime/vek/Input.h"
#include "runtime/vek/LinkQueue.h"
#include "runtime/vek/Reactor.h"

#include "statemachines/Machine.h"

#pragma GCC visibility push(default)

namespace LinkFlap {

class LinkFlapIntfSm;
struct Counters;
struct ProfileValues;

/// Applies one link-flap profile to one interface: records the times of its flaps, counts flaps per
/// interval and violations across intervals, and err-disables the interface.
///
/// Where its code stands: LinkFlapProfileSm.cpp (life cycle, reactors, profile values),
/// FlapTimeStamps.cpp (the queue of flap times), LinkStatus.cpp (`handleLinkStatus`),
/// ErrDisable.cpp (`evaluateErrDisable`).
///
/// Ownership: belongs to the `linkFlapProfileSm` collection of its interface's machine; owns its
/// queue of flap times; holds the state objects it reads by counted references.
class LinkFlapProfileSm final : public Machine, public Vek::HashLink {
 public:
  using Ptr = Vek::Ptr<LinkFlapProfileSm>;
  class _Type;
  class GenericIf_;
  class VekProfileConfig;
  class VekEthPhyIntfStatus;
  class VekLinkFlapTimeStamp;
  using LinkFlapTimeStampMetadata = Vek::LinkQueueMetadata;
  using LinkFlapTimeStampQueue = Vek::LinkQueue<VekLinkFlapTimeStamp, std::uint32_t, double>;

  /// `profileConfig` may be empty: the machine then runs on the values of `config`, with one
  /// violation over one tracked interval. `intfSm` is the owner, not counted.
  LinkFlapProfileSm(Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
                    Vek::Ptr<Config const> const& config,
                    Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
                    Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
                    Vek::Ptr<Errdisable::CauseStatus> const& causeStatus, LinkFlapIntfSm* intfSm);

  /// Makes a machine and switches its notifications on.
  static Ptr LinkFlapProfileSmIs(
      Vek::String profileName, Vek::Ptr<ProfileConfig const> const& profileConfig,
      Vek::Ptr<Config const> const& config,
      Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig,
      Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus,
      Vek::Ptr<Errdisable::CauseStatus> const& causeStatus, LinkFlapIntfSm* intfSm);

  static constexpr std::string_view vekTypeName{"LinkFlap::LinkFlapProfileSm"};
  /// The type's record; always the same.
  static Vek::VekType const* _fwkType();
  Vek::VekType const* fwkType() const override;

  void hasNotificationActiveIs(bool on) override;
  virtual void vekDoZombieReactors(bool on);

  Vek::String const& profileName() const noexcept { return profileName_; }
  Vek::String const& fwkKey() const noexcept { return profileName_; }
  /// The identifier of the interface status; the null identifier without one.
  Tarn::IntfId intfId() const;
  /// Always empty: the machine runs on the activity of the machines above it.
  Vek::Ptr<Vek::ActivityConfig> vekFwkActivity() const { return nullptr; }
  /// The owner; null once this machine was taken out of the owner's collection.
  LinkFlapIntfSm* intfSm() const noexcept { return intfSm_; }
  void intfSmIs(LinkFlapIntfSm* owner) noexcept { intfSm_ = owner; }

  Vek::Ptr<ProfileConfig const> profileConfig() const;
  Vek::Ptr<Config const> const& config() const noexcept { return config_; }
  Vek::Ptr<Interface::EthPhyIntfConfig const> const& ethPhyIntfConfig() const noexcept {
    return ethPhyIntfConfig_;
  }
  Vek::Ptr<Interface::EthPhyIntfStatus const> ethPhyIntfStatus() const;
  Vek::Ptr<Errdisable::CauseStatus> const& causeStatus() const noexcept { return causeStatus_; }

  // The watched references. Pointing one at another object runs the reactor's handlers; a reactor
  // that is only now made runs none; an empty object drops the reactor.
  void profileConfigIs(Vek::Ptr<ProfileConfig const> const& profileConfig);
  Vek::Ptr<ProfileConfig const> profileConfigDel();
  Vek::Ptr<VekProfileConfig> newProfileConfig(Vek::Ptr<ProfileConfig const> const& profileConfig);
  void ethPhyIntfStatusIs(Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus);
  Vek::Ptr<Interface::EthPhyIntfStatus const> ethPhyIntfStatusDel();
  Vek::Ptr<VekEthPhyIntfStatus> newEthPhyIntfStatus(
      Vek::Ptr<Interface::EthPhyIntfStatus const> const& ethPhyIntfStatus);

  /// Index of the interval being counted.
  std::uint32_t curIntervals() const noexcept { return curIntervals_; }
  void curIntervalsIs(std::uint32_t index) noexcept { curIntervals_ = index; }
  /// Flaps counted in that interval.
  std::uint32_t curFlaps() const noexcept { return curFlaps_; }
  void curFlapsIs(std::uint32_t flaps) noexcept { curFlaps_ = flaps; }
  /// Violations counted.
  std::uint32_t curViolations() const noexcept { return curViolations_; }
  void curViolationsIs(std::uint32_t violations) noexcept { curViolations_ = violations; }

  // The times of the flaps still tracked, oldest first, in seconds of `Vek::now()`; each entry is
  // addressed by an index that the queue assigns in increasing order and never starts anew.

  /// Appends a time. Throws `Vek::RangeException` ("linkqueue index space full").
  void linkFlapTimeStampEnq(double const& time);
  /// Removes the oldest time and returns it; 0.0 when there is none.
  double linkFlapTimeStampDeq();
  /// The time of that index; 0.0 when there is none.
  double linkFlapTimeStamp(std::uint32_t index) const;
  /// Overwrites the time of that index, or makes an entry of that index, which throws
  /// `Vek::RangeException` when the index space is full.
  void linkFlapTimeStampIs(std::uint32_t index, double const& time);
  /// Makes an entry of that index, at its place in the order. Throws that too, and
  /// `Vek::NameInUseException` when the index is in use.
  Vek::Ptr<VekLinkFlapTimeStamp> newLinkFlapTimeStamp(std::uint32_t index, double const& time);
  /// Removes the entry of that index and returns its time; 0.0 when there is none.
  double linkFlapTimeStampDel(std::uint32_t index);
  /// Removes the entry that the walk stands on; the walk then stands on the one that followed.
  void linkFlapTimeStampDel(LinkFlapTimeStampQueue::Iterator& position);
  void linkFlapTimeStampDelAll();
  LinkFlapTimeStampQueue const& linkFlapTimeStamp() const noexcept { return linkFlapTimeStamp_; }
  LinkFlapTimeStampMetadata const& linkFlapTimeStampMetadata() const noexcept {
    return linkFlapTimeStamp_.metadata();
  }
  void linkFlapTimeStampMetadataIs(LinkFlapTimeStampMetadata const& metadata);

  /// Runs once, at the end of construction.
  void handleInitialized();
  /// A value of the profile has changed: its counting starts anew from an empty history. The
  /// interface's err-disable record is not touched. The arguments serve the trace.
  void handleProfileValues(Vek::String profileName, Tarn::IntfId intfId);
  /// The raw link status has changed: if that is a flap, records and evaluates it. What it throws
  /// (the queue is full, or there is no memory) leaves the machine as it was.
  void handleLinkStatus();

  void vek_handleProfileConfig_maxFlaps();
  void vek_handleProfileConfig_interval();
  void vek_handleProfileConfig_violations();
  void vek_handleProfileConfig_trackedIntervals();

  /// Forgets all flaps and sets the three counters to 0.
  void clearHistory();

 private:
  ~LinkFlapProfileSm() override;

  template <typename Visit>
  void forEachReactor(Visit visit);
  void restartCounting();
  void linkFlapTimeStampTakeBack() noexcept;
  ProfileValues profileValues() const;
  // Of its own: most changes end before it, and need not save what it needs. Its frame holds no
  // array, so no guard.
  [[gnu::noinline]] __attribute__((no_stack_protector)) void handleFlap();
  void errDisable(Counters const& before, std::uint32_t maxFlaps,
                  Errdisable::CauseStatus::Room&& room);
  void countAndAge(double now, double firstFlapTime, double trackingWindow,
                   ProfileValues const& values);
  bool replay(ProfileValues const& values, Counters& before);

  std::uint32_t curIntervals_{0};  // first: it fills the gap behind the collection's link
  Vek::String profileName_;
  Vek::Input<VekProfileConfig> profileConfig_;
  Vek::Ptr<Config const> config_;
  Vek::Ptr<Interface::EthPhyIntfConfig const> ethPhyIntfConfig_;
  Vek::Input<VekEthPhyIntfStatus> ethPhyIntfStatus_;
  Vek::Ptr<Errdisable::CauseStatus> causeStatus_;
  LinkFlapIntfSm* intfSm_;
  std::uint32_t curFlaps_{0};
  std::uint32_t curViolations_{0};
  LinkFlapTimeStampQueue linkFlapTimeStamp_;
};

/// The time of one flap.
class LinkFlapProfileSm::VekLinkFlapTimeStamp final : public Vek::LinkQueueEntry<double> {
 public:
  /// Flaps come and go by the thousand: an entry is used again, by whichever machine's next flap.
  static constexpr bool kRecycled{true};

  VekLinkFlapTimeStamp(std::uint32_t index, double time) : LinkQueueEntry{index, time} {}
  /// Seconds of `Vek::now()`.
  double time() const noexcept { return value(); }

 private:
  friend LinkFlapTimeStampQueue;
  ~VekLinkFlapTimeStamp() override = default;
};

/// Watches the profile's values: any change restarts the counting.
class LinkFlapProfileSm::VekProfileConfig final
    : public Vek::Reactor<VekProfileConfig, LinkFlapProfileSm, ProfileConfig> {
 public:
  using Reactor::Reactor;
  void linkFlapProfileSmIs(LinkFlapProfileSm* sm) { ownerIs(sm); }

  void onMaxFlaps() override { react(&LinkFlapProfileSm::vek_handleProfileConfig_maxFlaps); }
  void onInterval() override { react(&LinkFlapProfileSm::vek_handleProfileConfig_interval); }
  void onViolations() override { react(&LinkFlapProfileSm::vek_handleProfileConfig_violations); }
  void onTrackedIntervals() override {
    react(&LinkFlapProfileSm::vek_handleProfileConfig_trackedIntervals);
  }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override {
    rebind(object, {&LinkFlapProfileSm::vek_handleProfileConfig_maxFlaps,
                    &LinkFlapProfileSm::vek_handleProfileConfig_interval,
                    &LinkFlapProfileSm::vek_handleProfileConfig_violations,
                    &LinkFlapProfileSm::vek_handleProfileConfig_trackedIntervals});
  }

 private:
  ~VekProfileConfig() override = default;
};

/// Watches the interface's raw link status: each change may be a flap.
class LinkFlapProfileSm::VekEthPhyIntfStatus final
    : public Vek::Reactor<VekEthPhyIntfStatus, LinkFlapProfileSm, Interface::EthPhyIntfStatus> {
 public:
  using Reactor::Reactor;
  void linkFlapProfileSmIs(LinkFlapProfileSm* sm) { ownerIs(sm); }

  void onRawLinkStatus() override { react(&LinkFlapProfileSm::handleLinkStatus); }
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override {
    rebind(object, {&LinkFlapProfileSm::handleLinkStatus});
  }

 private:
  ~VekEthPhyIntfStatus() override = default;
};

/// Counts one recorded flap of one interface against one profile; err-disables the interface when
/// the profile's limits are exceeded, which clears the history of every profile of the interface.
///
/// `flapTime`: the flap to count; `firstFlapTime`: the oldest flap still tracked, from which
/// intervals are measured; both in seconds of `Vek::now()`. `maxFlaps`: flaps allowed in one
/// interval. `interval`: length of an interval, whole seconds. `violations` err-disable, as long as
/// they lie in intervals 0 to `trackedIntervals`, inclusive.
///
/// Returns true exactly when this call has err-disabled the interface. Throws nothing but
/// `std::bad_alloc`, when there is no memory for the record: then the flap was not counted.
bool evaluateErrDisable(Vek::Ptr<LinkFlapProfileSm> profileSm, double flapTime,
                        double firstFlapTime, std::uint32_t maxFlaps, double interval,
                        std::uint32_t violations, std::uint32_t trackedIntervals);

}  // namespace LinkFlap

#pragma GCC visibility pop
