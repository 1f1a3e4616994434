#include <array>
#include <cstddef>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "statemachines/LinkFlapSm.h"

#include "tests/support/Switch.h"

// What goes when a machine goes, in which order, and what stays.

namespace {

/// The addresses that were freed lately, in order. Of fixed size: it is written while memory is
/// being freed.
std::array<void const*, 4096> freed;
std::size_t freedCount{0};
bool freedRecorded{false};

void release(void* memory) noexcept {
  if (freedRecorded && memory != nullptr && freedCount < freed.size()) freed[freedCount++] = memory;
  std::free(memory);
}

}  // namespace

// The process's, in place of the library's, so that the tests can see what is freed when.
void* operator new(std::size_t size) {
  if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc{};
}
void operator delete(void* memory) noexcept {
  release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Tarn::IntfId const ethernet1{"Ethernet1"};
Tarn::IntfId const ethernet2{"Ethernet2"};

/// Objects by name, and the order in which they were freed.
class Mortals {
 public:
  template <typename T>
  void add(char const* name, Vek::Ptr<T> const& object) {
    names_.emplace_back(object.get(), name);
  }

  /// The names of those that `act` frees, in order.
  template <typename Act>
  std::vector<std::string> freedBy(Act act) const {
    freedCount = 0;
    freedRecorded = true;
    act();
    freedRecorded = false;
    std::vector<std::string> order;
    for (std::size_t i = 0; i < freedCount; ++i)
      for (auto const& [address, name] : names_)
        if (freed[i] == address) order.push_back(name);
    return order;
  }

 private:
  std::vector<std::pair<void const*, std::string>> names_;
};

/// The pool keeps what is freed to itself; builds without it, among them the sanitizers', show the
/// order.
class TearDownOrder : public testing::Test {
 protected:
  void SetUp() override {
    if (Vek::Pool::pooled())
      GTEST_SKIP() << "what is freed is seen only in a build without the pool";
  }
};

TEST_F(TearDownOrder, OfAProfileMachineReleasesItsQueueThenItsObjectsInReverse) {
  auto profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"p1"});
  auto config = Vek::make<LinkFlap::Config>();
  auto phyConfig = Vek::make<Interface::EthPhyIntfConfig>(ethernet1);
  auto status = Vek::make<Interface::EthPhyIntfStatus>(ethernet1);
  auto causeStatus = Vek::make<Errdisable::CauseStatus>();
  auto sm = LinkFlap::LinkFlapProfileSm::LinkFlapProfileSmIs("p1", profile, config, phyConfig,
                                                             status, causeStatus, nullptr);
  Mortals mortals;
  mortals.add("flap", sm->newLinkFlapTimeStamp(0, 1));
  mortals.add("profileConfig", std::exchange(profile, nullptr));
  mortals.add("config", std::exchange(config, nullptr));
  mortals.add("ethPhyIntfConfig", std::exchange(phyConfig, nullptr));
  mortals.add("ethPhyIntfStatus", std::exchange(status, nullptr));
  mortals.add("causeStatus", std::exchange(causeStatus, nullptr));
  mortals.add("machine", sm);
  EXPECT_THAT(mortals.freedBy([&] { sm = nullptr; }),
              ElementsAre("flap", "causeStatus", "ethPhyIntfStatus", "ethPhyIntfConfig", "config",
                          "profileConfig", "machine"));
}

TEST_F(TearDownOrder,
       OfAnInterfaceMachineDeletesTheProfileMachinesThenReleasesItsObjectsInReverse) {
  auto status = Vek::make<Interface::EthPhyIntfStatus>(ethernet1);
  auto config = Vek::make<LinkFlap::Config>();
  auto intfConfig = Vek::make<LinkFlap::IntfConfig>();
  auto phyConfig = Vek::make<Interface::EthPhyIntfConfig>(ethernet1);
  auto causeStatus = Vek::make<Errdisable::CauseStatus>();
  intfConfig->enabledIs(true);
  intfConfig->profileListIs("p1", true);
  auto sm = LinkFlap::LinkFlapIntfSm::LinkFlapIntfSmIs(status, config, intfConfig, phyConfig,
                                                       causeStatus);
  Mortals mortals;
  mortals.add("profile machine", sm->linkFlapProfileSm("p1"));
  mortals.add("ethPhyIntfStatus", std::exchange(status, nullptr));
  mortals.add("config", std::exchange(config, nullptr));
  mortals.add("intfConfig", std::exchange(intfConfig, nullptr));
  mortals.add("ethPhyIntfConfig", std::exchange(phyConfig, nullptr));
  mortals.add("causeStatus", std::exchange(causeStatus, nullptr));
  mortals.add("machine", sm);
  EXPECT_THAT(mortals.freedBy([&] { sm = nullptr; }),
              ElementsAre("profile machine", "causeStatus", "ethPhyIntfConfig", "intfConfig",
                          "config", "ethPhyIntfStatus", "machine"));
}

TEST_F(TearDownOrder, OfTheTopLevelMachineDeletesTheInterfacesThenReleasesItsObjectsInReverse) {
  auto activity = Vek::make<Vek::ActivityConfig>();
  auto configDir = Vek::make<Interface::AllEthPhyIntfConfigDir>();
  auto statusDir = Vek::make<Interface::AllEthPhyIntfStatusDir>();
  auto errdisableConfig = Vek::make<Errdisable::Config>();
  auto config = Vek::make<LinkFlap::Config>();
  auto causeStatus = Vek::make<Errdisable::CauseStatus>();
  configDir->newIntfConfig(ethernet1);
  statusDir->newIntfStatus(ethernet1);
  auto sm = LinkFlap::LinkFlapSm::LinkFlapSmIs(activity, configDir, statusDir, errdisableConfig,
                                               config, causeStatus, "cause");
  Mortals mortals;
  mortals.add("interface machine", sm->linkFlapIntfSm(ethernet1));
  mortals.add("activity", std::exchange(activity, nullptr));
  mortals.add("configDir", std::exchange(configDir, nullptr));
  mortals.add("statusDir", std::exchange(statusDir, nullptr));
  mortals.add("errdisableConfig", std::exchange(errdisableConfig, nullptr));
  mortals.add("config", std::exchange(config, nullptr));
  mortals.add("causeStatus", std::exchange(causeStatus, nullptr));
  mortals.add("machine", sm);
  EXPECT_THAT(mortals.freedBy([&] { sm = nullptr; }),
              ElementsAre("interface machine", "causeStatus", "config", "errdisableConfig",
                          "statusDir", "configDir", "activity", "machine"));
}

TEST_F(TearDownOrder, OfARootReleasesTheMachine) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  Mortals mortals;
  mortals.add("machine", sw.root->linkFlapSm());
  mortals.add("interface machine", sw.machine().linkFlapIntfSm(ethernet1));
  mortals.add("root", sw.root);
  EXPECT_THAT(mortals.freedBy([&] { sw.root = nullptr; }),
              ElementsAre("interface machine", "machine", "root"));
}

// The old machine lives until the new one is complete.
TEST_F(TearDownOrder, OfAReplacedMachineComesAfterTheNewOneWasBuilt) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  Mortals mortals;
  mortals.add("old machine", sw.root->linkFlapSm());
  sw.takeTraces();
  sw.causeName = "another";
  std::size_t tracesAtTheEnd = 0;
  EXPECT_THAT(mortals.freedBy([&] {
    sw.start();
    tracesAtTheEnd = sw.takeTraces().size();
  }),
              ElementsAre("old machine"));
  // All of them from the new one's initial pass: tearing down traces nothing.
  EXPECT_EQ(tracesAtTheEnd, 5U);
}

TEST(TearDown, LeavesTheRecordsWhenTheRootGoes) {
  Switch sw{{.maxFlaps = 0, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1});
  ASSERT_EQ(sw.errdisabledAt(ethernet1), 1.0);
  sw.takeWrites();
  sw.root = nullptr;
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 1.0);
  EXPECT_THAT(sw.takeWrites(), IsEmpty());
}

TEST(TearDown, LeavesTheRecordsWhenTheMachineIsReplaced) {
  Switch sw{{.maxFlaps = 0, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  sw.flap(ethernet1, {1});
  sw.takeWrites();
  sw.causeName = "another";
  sw.start();
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 1.0);
  EXPECT_THAT(sw.takeWrites(), IsEmpty());
}

TEST(TearDown, LeavesNoWatcherBehind) {
  Switch sw;
  auto const profile = sw.profileIs("p1", {.maxFlaps = 9, .interval = 10});
  sw.addInterface(ethernet1);
  auto const settings = sw.settingsIs(ethernet1, true, {{"p1", true}});
  sw.start();
  EXPECT_TRUE(profile->hasNotifiees());
  EXPECT_TRUE(settings->hasNotifiees());
  EXPECT_TRUE(sw.status(ethernet1)->hasNotifiees());
  sw.root = nullptr;
  EXPECT_FALSE(profile->hasNotifiees());
  EXPECT_FALSE(settings->hasNotifiees());
  EXPECT_FALSE(sw.status(ethernet1)->hasNotifiees());
  EXPECT_FALSE(sw.config->hasNotifiees());
  EXPECT_FALSE(sw.configDir->hasNotifiees());
  EXPECT_FALSE(sw.statusDir->hasNotifiees());
  EXPECT_FALSE(sw.errdisableConfig->hasNotifiees());
}

TEST(TearDown, LeavesNoObjectBehind) {
  // Objects that lived before are not recorded and do not count.
  Vek::ptrifTrackOn_ = true;
  std::size_t const before = Vek::PtrTrack::live();
  {
    Switch sw{{.maxFlaps = 1, .interval = 10}};
    sw.profileIs("p1", {.maxFlaps = 9, .interval = 10});
    sw.addInterface(ethernet1);
    sw.addInterface(ethernet2);
    auto const settings = sw.settingsIs(ethernet1, true, {{"p1", true}, {"p2", false}});
    sw.start();
    EXPECT_GT(Vek::PtrTrack::live(), before);
    sw.flap(ethernet1, {1, 2, 3});
    sw.flap(ethernet2, {4, 5, 6});
    settings->enabledIs(false);
    sw.errdisableConfig->disabledIs("link-flap", true);
    sw.statusDir->intfStatusDel(ethernet1);
    sw.causeName = "another";
    sw.start();
  }
  EXPECT_EQ(Vek::PtrTrack::live(), before);
  Vek::ptrifTrackOn_ = false;
}

// Whoever holds a profile machine beyond its interface's finds it without an owner, still working.
TEST(TearDown, OfAnInterfaceLeavesAHeldProfileMachineWithoutOwner) {
  Switch sw{{.maxFlaps = 1, .interval = 10}};
  sw.addInterface(ethernet1);
  sw.start();
  auto const held = LinkFlap::LinkFlapProfileSm::Ptr{sw.profileSm(ethernet1, "default")};
  sw.flap(ethernet1, {1});
  sw.root = nullptr;
  EXPECT_EQ(held->intfSm(), nullptr);
  EXPECT_EQ(held->referenceCount(), 1U);
  sw.flap(ethernet1, {2});
  EXPECT_EQ(sw.errdisabledAt(ethernet1), 2.0);
  EXPECT_THAT(times(*held), IsEmpty());
}

TEST(TearDown, OfTheTopLevelMachineLeavesAHeldInterfaceMachineWhole) {
  Switch sw;
  sw.addInterface(ethernet1);
  sw.start();
  auto const held = LinkFlap::LinkFlapIntfSm::Ptr{sw.intfSm(ethernet1)};
  sw.root = nullptr;
  EXPECT_EQ(held->linkFlapProfileSm().members(), 1U);
  sw.flap(ethernet1, {1});
  EXPECT_THAT(times(*held->linkFlapProfileSm("default")), ElementsAre(1));
}

}  // namespace
