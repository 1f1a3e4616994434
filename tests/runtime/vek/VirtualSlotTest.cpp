// The slots of the virtual operations are part of the interface: tools that are built elsewhere
// call them by number. By the C++ ABI of this platform a pointer to a virtual member function
// holds the offset of its slot, which is how they are read here.

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/EthPhyIntfConfig.h"
#include "runtime/model/EthPhyIntfStatus.h"
#include "runtime/model/LinkFlapConfig.h"
#include "runtime/model/LinkFlapIntfConfig.h"
#include "runtime/model/LinkFlapProfileConfig.h"
#include "runtime/vek/Entity.h"
#include "runtime/vek/Reactor.h"

namespace {

using Slots = std::vector<std::ptrdiff_t>;

constexpr std::ptrdiff_t kNotVirtual{-1};

template <typename Member>
std::ptrdiff_t slotOf(Member member) {
  struct {
    std::ptrdiff_t function;
    std::ptrdiff_t adjustment;
  } bits;
  static_assert(sizeof bits == sizeof member);
  std::memcpy(&bits, &member, sizeof bits);
  constexpr auto kSize = static_cast<std::ptrdiff_t>(sizeof(void*));
#if defined(__arm__) || defined(__aarch64__)
  return bits.adjustment % 2 == 0 ? kNotVirtual : bits.function / kSize;
#else
  return bits.function % 2 == 0 ? kNotVirtual : (bits.function - 1) / kSize;
#endif
}

/// Picks the overload of a notification that takes a key.
template <typename Key, typename N>
auto keyed(void (N::*notification)(Key)) {
  return notification;
}
/// Picks the one that takes none.
template <typename N>
auto unkeyed(void (N::*notification)()) {
  return notification;
}

Slots consecutiveFrom(std::ptrdiff_t first, std::size_t count) {
  Slots slots;
  for (std::size_t i = 0; i < count; ++i)
    slots.push_back(first + static_cast<std::ptrdiff_t>(i));
  return slots;
}

// The two destructors, complete and deleting, take slots 5 and 6.
constexpr std::ptrdiff_t kFirstBehindTheDestructors{7};

TEST(VirtualSlots, OfPtrInterface) {
  using T = Vek::PtrInterface;
  EXPECT_EQ((Slots{slotOf(&T::hasNotificationActiveIs), slotOf(&T::vekAuditErrors),
                   slotOf(&T::auditErrors), slotOf(&T::zeroReferencesIs), slotOf(&T::fwkType)}),
            (Slots{0, 1, 2, 3, 4}));
  EXPECT_EQ(slotOf(&T::referenceCount), kNotVirtual);
}

TEST(VirtualSlots, OfPtrInterfaceStayInDerivedTypes) {
  using T = LinkFlap::Config;
  EXPECT_EQ(slotOf(&T::hasNotificationActiveIs), 0);
  EXPECT_EQ(slotOf(&T::fwkType), 4);
  using N = LinkFlap::Config::NotifieeConst;
  EXPECT_EQ(slotOf(&N::hasNotificationActiveIs), 0);
  EXPECT_EQ(slotOf(&N::zeroReferencesIs), 3);
}

TEST(VirtualSlots, FirstOperationOfADerivedTypeComesBehindTheTwoDestructors) {
  class Machine : public Vek::PtrInterface {
   public:
    virtual void vekDoZombieReactors(bool /*on*/) {}
  };
  EXPECT_EQ(slotOf(&Machine::vekDoZombieReactors), kFirstBehindTheDestructors);
}

TEST(VirtualSlots, OfEntity) {
  using T = Vek::Entity;
  EXPECT_EQ((Slots{slotOf(&T::name), slotOf(&T::parent), slotOf(&T::parentIs),
                   slotOf(&T::parentAttrId), slotOf(&T::parentAttrIdIs), slotOf(&T::fullName),
                   slotOf(&T::uriPath), slotOf(&T::attributeString)}),
            consecutiveFrom(kFirstBehindTheDestructors, 8));
}

TEST(VirtualSlots, OfNotifieeConst) {
  using T = Vek::PtrInterface::NotifieeConst;
  EXPECT_EQ((Slots{slotOf(&T::notifier), slotOf(&T::notifierIs), slotOf(&T::isRegisteredNotifiee),
                   slotOf(&T::isRegisteredNotifieeIs), slotOf(&T::name),
                   slotOf(&T::onZeroReferences), slotOf(&T::onNotificationException)}),
            consecutiveFrom(kFirstBehindTheDestructors, 7));
}

// The notifications follow the base's operations, in the order in which the type declares them.
constexpr std::ptrdiff_t kFirstNotification{14};

TEST(VirtualSlots, OfTheNotificationsOfTheLinkFlapTypes) {
  using C = LinkFlap::Config::NotifieeConst;
  EXPECT_EQ(
      (Slots{slotOf(&C::onMaxFlaps), slotOf(&C::onInterval),
             slotOf(keyed<Tarn::IntfId>(&C::onIntfConfig)), slotOf(unkeyed<C>(&C::onIntfConfig)),
             slotOf(&C::onIntfConfigvekImmediate), slotOf(keyed<Vek::String>(&C::onProfileConfig)),
             slotOf(unkeyed<C>(&C::onProfileConfig)), slotOf(&C::onProfileConfigvekImmediate),
             slotOf(keyed<Vek::String>(&C::onDefaultProfileList)),
             slotOf(unkeyed<C>(&C::onDefaultProfileList)),
             slotOf(&C::onDefaultProfileListvekImmediate)}),
      consecutiveFrom(kFirstNotification, 11));

  using I = LinkFlap::IntfConfig::NotifieeConst;
  EXPECT_EQ(
      (Slots{slotOf(keyed<Vek::String>(&I::onProfileList)), slotOf(unkeyed<I>(&I::onProfileList)),
             slotOf(&I::onProfileListvekImmediate), slotOf(&I::onEnabled)}),
      consecutiveFrom(kFirstNotification, 4));

  using P = LinkFlap::ProfileConfig::NotifieeConst;
  EXPECT_EQ((Slots{slotOf(&P::onMaxFlaps), slotOf(&P::onInterval), slotOf(&P::onViolations),
                   slotOf(&P::onTrackedIntervals)}),
            consecutiveFrom(kFirstNotification, 4));
}

TEST(VirtualSlots, OfTheNotificationsOfTheInterfaceTypes) {
  using C = Interface::AllEthPhyIntfConfigDir::NotifieeConst;
  EXPECT_EQ((Slots{slotOf(keyed<Tarn::IntfId>(&C::onIntfConfig)),
                   slotOf(unkeyed<C>(&C::onIntfConfig)), slotOf(&C::onIntfConfigvekImmediate)}),
            consecutiveFrom(kFirstNotification, 3));
  using S = Interface::AllEthPhyIntfStatusDir::NotifieeConst;
  EXPECT_EQ((Slots{slotOf(keyed<Tarn::IntfId>(&S::onIntfStatus)),
                   slotOf(unkeyed<S>(&S::onIntfStatus)), slotOf(&S::onIntfStatusvekImmediate)}),
            consecutiveFrom(kFirstNotification, 3));
  EXPECT_EQ(slotOf(&Interface::EthPhyIntfStatus::NotifieeConst::onRawLinkStatus),
            kFirstNotification);
  EXPECT_EQ(slotOf(&Interface::EthPhyIntfConfig::NotifieeConst::onPhyConfigState),
            kFirstNotification);
}

TEST(VirtualSlots, OfTheNotificationsOfTheErrdisableTypes) {
  using C = Errdisable::Config::NotifieeConst;
  EXPECT_EQ((Slots{slotOf(&C::onRecoveryInterval), slotOf(keyed<Vek::String>(&C::onDisabled)),
                   slotOf(unkeyed<C>(&C::onDisabled)), slotOf(&C::onDisabledvekImmediate),
                   slotOf(keyed<Vek::String>(&C::onTimerRecoveryEnabled)),
                   slotOf(unkeyed<C>(&C::onTimerRecoveryEnabled)),
                   slotOf(&C::onTimerRecoveryEnabledvekImmediate)}),
            consecutiveFrom(kFirstNotification, 7));
  using S = Errdisable::CauseStatus::NotifieeConst;
  EXPECT_EQ((Slots{slotOf(keyed<Tarn::IntfId>(&S::onIntfStatus)),
                   slotOf(unkeyed<S>(&S::onIntfStatus)), slotOf(&S::onIntfStatusvekImmediate)}),
            consecutiveFrom(kFirstNotification, 3));
}

class Machine {
 public:
  void handle() {}
};

/// As the machines' reactors are made.
class VekIntfConfig final : public Vek::Reactor<VekIntfConfig, Machine, LinkFlap::IntfConfig> {
 public:
  using Reactor::Reactor;
  void notifierIs(Vek::Ptr<Vek::PtrInterface const> const& object) override { rebind(object, {}); }
  void onProfileList(Vek::String /*name*/) override {}
  void onProfileListvekImmediate() override {}
  void onEnabled() override { react(&Machine::handle); }
};

TEST(VirtualSlots, OfAReactorEndWithTheZombieOperation) {
  EXPECT_EQ((Slots{slotOf(&VekIntfConfig::hasNotificationActiveIs),
                   slotOf(&VekIntfConfig::notifierIs), slotOf(&VekIntfConfig::onProfileList),
                   slotOf(&VekIntfConfig::onProfileListvekImmediate),
                   slotOf(&VekIntfConfig::onEnabled), slotOf(&VekIntfConfig::vekDoZombieReactors)}),
            (Slots{0, 8, 14, 16, 17, 18}));
}

}  // namespace
