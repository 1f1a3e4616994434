#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>
#include <vector>

#include "statemachines/LinkFlapSm.h"

// Binary tools address virtual operations by their slot. The slot of one is read from a pointer to
// the member: the C++ ABI of our platforms stores its offset in the table of virtual functions.

namespace {

using LinkFlap::LinkFlapIntfSm;
using LinkFlap::LinkFlapProfileSm;
using LinkFlap::LinkFlapSm;
using LinkFlap::Root;

constexpr std::size_t kNotVirtual{static_cast<std::size_t>(-1)};

template <typename Class, typename Function>
std::size_t slot(Function Class::*function) {
  struct {
    std::ptrdiff_t pointer;
    std::ptrdiff_t adjustment;
  } parts{};
  static_assert(sizeof parts == sizeof function);
  std::memcpy(&parts, &function, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
  bool const isVirtual = (parts.adjustment & 1) != 0;
  auto const offset = static_cast<std::size_t>(parts.pointer);
#else
  bool const isVirtual = (parts.pointer & 1) != 0;
  auto const offset = static_cast<std::size_t>(parts.pointer - 1);
#endif
  return isVirtual ? offset / sizeof(void*) : kNotVirtual;
}

/// Whether `Class` itself declares the member, not a base of it.
template <typename Class, typename Of, typename Function>
constexpr bool declaredBy(Function Of::*) {
  return std::is_same_v<Class, Of>;
}

/// Slots in the order given, each behind the one before.
void expectInOrder(std::vector<std::size_t> const& slots) {
  for (std::size_t i = 0; i < slots.size(); ++i) {
    ASSERT_NE(slots[i], kNotVirtual) << i;
    if (i > 0) {
      EXPECT_LT(slots[i - 1], slots[i]) << i;
    }
  }
}

/// The first seven slots of every machine; the two destructors take 5 and 6.
template <typename Machine>
void expectMachineSlots() {
  EXPECT_EQ(slot(&Machine::hasNotificationActiveIs), 0U);
  EXPECT_EQ(slot(&Machine::vekAuditErrors), 1U);
  EXPECT_EQ(slot(&Machine::auditErrors), 2U);
  EXPECT_EQ(slot(&Machine::zeroReferencesIs), 3U);
  EXPECT_EQ(slot(&Machine::fwkType), 4U);
}

TEST(SlotOrder, OfTheTopLevelMachine) {
  expectMachineSlots<LinkFlapSm>();
  EXPECT_EQ(slot(&LinkFlapSm::vekFwkActivityIs), 7U);
  EXPECT_EQ(slot(&LinkFlapSm::vekDoZombieReactors), 8U);
}

TEST(SlotOrder, OfTheInterfaceMachine) {
  expectMachineSlots<LinkFlapIntfSm>();
  EXPECT_EQ(slot(&LinkFlapIntfSm::vekDoZombieReactors), 7U);
}

TEST(SlotOrder, OfTheProfileMachine) {
  expectMachineSlots<LinkFlapProfileSm>();
  EXPECT_EQ(slot(&LinkFlapProfileSm::vekDoZombieReactors), 7U);
}

// The entity's operations follow the destructors; of them only attributeString is the Root's own.
TEST(SlotOrder, OfTheRoot) {
  expectMachineSlots<Root>();
  EXPECT_EQ(slot(&Root::name), 7U);
  EXPECT_EQ(slot(&Root::parent), 8U);
  EXPECT_EQ(slot(&Root::parentIs), 9U);
  expectInOrder({slot(&Root::parentIs), slot(&Root::attributeString)});
}

TEST(SlotOrder, MachinesDeclareTheOperationsThatAreTheirOwn) {
  EXPECT_TRUE(declaredBy<LinkFlapSm>(&LinkFlapSm::hasNotificationActiveIs));
  EXPECT_FALSE(declaredBy<LinkFlapSm>(&LinkFlapSm::zeroReferencesIs));
  EXPECT_TRUE(declaredBy<LinkFlapIntfSm>(&LinkFlapIntfSm::hasNotificationActiveIs));
  EXPECT_FALSE(declaredBy<LinkFlapIntfSm>(&LinkFlapIntfSm::zeroReferencesIs));
  EXPECT_TRUE(declaredBy<LinkFlapProfileSm>(&LinkFlapProfileSm::hasNotificationActiveIs));
  EXPECT_FALSE(declaredBy<LinkFlapProfileSm>(&LinkFlapProfileSm::zeroReferencesIs));
  EXPECT_FALSE(declaredBy<Root>(&Root::hasNotificationActiveIs));
  EXPECT_FALSE(declaredBy<Root>(&Root::vekAuditErrors));
  EXPECT_FALSE(declaredBy<Root>(&Root::auditErrors));
  EXPECT_TRUE(declaredBy<Root>(&Root::zeroReferencesIs));
  EXPECT_TRUE(declaredBy<Root>(&Root::attributeString));
  EXPECT_FALSE(declaredBy<Root>(&Root::name));
}

// The destructors (slots 5 and 6) stand between hasNotificationActiveIs and notifierIs.
constexpr std::size_t kDestructor{5};

TEST(SlotOrder, OfTheInterfaceMachinesConfigReactor) {
  using Reactor = LinkFlapIntfSm::VekConfig;
  EXPECT_EQ(slot(&Reactor::fwkType), 4U);
  expectInOrder({slot(&Reactor::hasNotificationActiveIs), kDestructor, slot(&Reactor::notifierIs),
                 slot(&Reactor::onMaxFlaps), slot(&Reactor::onInterval),
                 slot(&Reactor::vekDoZombieReactors)});
  EXPECT_TRUE(declaredBy<Reactor>(&Reactor::notifierIs));
  EXPECT_TRUE(declaredBy<Reactor>(&Reactor::onMaxFlaps));
  EXPECT_TRUE(declaredBy<Reactor>(&Reactor::onInterval));
}

TEST(SlotOrder, OfTheInterfaceMachinesSettingsReactor) {
  using Reactor = LinkFlapIntfSm::VekIntfConfig;
  expectInOrder({slot(&Reactor::hasNotificationActiveIs), kDestructor, slot(&Reactor::notifierIs),
                 slot(static_cast<void (Reactor::*)(Vek::String)>(&Reactor::onProfileList)),
                 slot(&Reactor::onProfileListvekImmediate), slot(&Reactor::onEnabled),
                 slot(&Reactor::vekDoZombieReactors)});
  // The unkeyed form is not overridden, the immediate one is.
  EXPECT_TRUE(declaredBy<Reactor>(&Reactor::onProfileListvekImmediate));
  EXPECT_TRUE(declaredBy<Reactor>(&Reactor::onEnabled));
}

TEST(SlotOrder, OfTheProfileMachinesReactors) {
  using Values = LinkFlapProfileSm::VekProfileConfig;
  expectInOrder({slot(&Values::hasNotificationActiveIs), kDestructor, slot(&Values::notifierIs),
                 slot(&Values::onMaxFlaps), slot(&Values::onInterval), slot(&Values::onViolations),
                 slot(&Values::onTrackedIntervals), slot(&Values::vekDoZombieReactors)});
  using Status = LinkFlapProfileSm::VekEthPhyIntfStatus;
  expectInOrder({slot(&Status::hasNotificationActiveIs), kDestructor, slot(&Status::notifierIs),
                 slot(&Status::onRawLinkStatus), slot(&Status::vekDoZombieReactors)});
}

TEST(SlotOrder, OfTheTopLevelMachinesReactors) {
  using ConfigDir = LinkFlapSm::VekEthPhyIntfConfigDir;
  expectInOrder({slot(&ConfigDir::hasNotificationActiveIs), kDestructor,
                 slot(&ConfigDir::notifierIs), slot(&ConfigDir::onIntfConfig),
                 slot(&ConfigDir::vekDoZombieReactors)});
  using StatusDir = LinkFlapSm::VekEthPhyIntfStatusDir;
  expectInOrder({slot(&StatusDir::hasNotificationActiveIs), kDestructor,
                 slot(&StatusDir::notifierIs), slot(&StatusDir::onIntfStatus),
                 slot(&StatusDir::vekDoZombieReactors)});
  using Errdisable = LinkFlapSm::VekErrdisableConfig;
  expectInOrder({slot(&Errdisable::hasNotificationActiveIs), kDestructor,
                 slot(&Errdisable::notifierIs), slot(&Errdisable::onDisabled),
                 slot(&Errdisable::vekDoZombieReactors)});
  using Config = LinkFlapSm::VekConfig;
  expectInOrder({slot(&Config::hasNotificationActiveIs), kDestructor, slot(&Config::notifierIs),
                 slot(&Config::onIntfConfig), slot(&Config::onProfileConfig),
                 slot(&Config::onDefaultProfileList), slot(&Config::vekDoZombieReactors)});
}

}  // namespace
