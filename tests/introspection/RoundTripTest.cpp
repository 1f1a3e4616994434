#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "runtime/model/StateTypes.h"

#include "introspection/GenericIfs.h"

#include "tests/introspection/support/OddNames.h"
#include "tests/introspection/support/Operations.h"
#include "tests/introspection/support/Paths.h"
#include "tests/introspection/support/Tree.h"
#include "tests/statemachines/Watchers.h"
#include "tests/support/Switch.h"

namespace {

using namespace IntrospectionTest;

constexpr unsigned kInterfaces{1000};

/// Counts every notification of a state object of type `T`; `Count` overrides them.
template <typename T>
class Counter : public T::NotifieeConst {
 public:
  explicit Counter(unsigned* told) : told_{told} {}

 protected:
  ~Counter() override = default;
  void count() { ++*told_; }

 private:
  unsigned* told_;
};

struct ConfigCounter final : Counter<LinkFlap::Config> {
  using Counter::Counter;
  void onMaxFlaps() override { count(); }
  void onInterval() override { count(); }
  void onIntfConfig(Tarn::IntfId) override { count(); }
  void onProfileConfig(Vek::String) override { count(); }
  void onDefaultProfileList(Vek::String) override { count(); }
};
struct IntfConfigCounter final : Counter<LinkFlap::IntfConfig> {
  using Counter::Counter;
  void onEnabled() override { count(); }
  void onProfileList(Vek::String) override { count(); }
};
struct ProfileConfigCounter final : Counter<LinkFlap::ProfileConfig> {
  using Counter::Counter;
  void onMaxFlaps() override { count(); }
  void onInterval() override { count(); }
  void onViolations() override { count(); }
  void onTrackedIntervals() override { count(); }
};
struct ConfigDirCounter final : Counter<Interface::AllEthPhyIntfConfigDir> {
  using Counter::Counter;
  void onIntfConfig(Tarn::IntfId) override { count(); }
};
struct StatusDirCounter final : Counter<Interface::AllEthPhyIntfStatusDir> {
  using Counter::Counter;
  void onIntfStatus(Tarn::IntfId) override { count(); }
};
struct PhyConfigCounter final : Counter<Interface::EthPhyIntfConfig> {
  using Counter::Counter;
  void onPhyConfigState() override { count(); }
};
struct StatusCounter final : Counter<Interface::EthPhyIntfStatus> {
  using Counter::Counter;
  void onRawLinkStatus() override { count(); }
};
struct ErrdisableCounter final : Counter<Errdisable::Config> {
  using Counter::Counter;
  void onRecoveryInterval() override { count(); }
  void onDisabled(Vek::String) override { count(); }
  void onTimerRecoveryEnabled(Vek::String) override { count(); }
};
struct CauseCounter final : Counter<Errdisable::CauseStatus> {
  using Counter::Counter;
  void onIntfStatus(Tarn::IntfId) override { count(); }
};

/// A switch in the middle of its life: profiles and own settings, flaps counted, ports
/// err-disabled, names of every kind.
class LiveTree : public testing::Test {
 protected:
  LiveTree() {
    sw.profileIs("fast", {.maxFlaps = 2, .interval = 4, .violations = 3, .trackedIntervals = 5});
    sw.profileIs("my [old] \"profile\"", {.maxFlaps = 9, .interval = 2.5});
    sw.config->defaultProfileListIs("fast", true);
    sw.config->defaultProfileListIs("not configured", true);
    sw.config->defaultProfileListIs("false", false);
    sw.errdisableConfig->disabledIs("another cause", true);
    sw.errdisableConfig->timerRecoveryEnabledIs("link-flap", true);
    sw.start();
    auto const odd = oddNames();
    for (unsigned i = 0; i < kInterfaces; ++i) {
      Vek::String const name{i < odd.size() ? odd[i] : "Ethernet" + std::to_string(i)};
      Tarn::IntfId const id{name};
      ids.push_back(id);
      if (i % 3 == 1) sw.settingsIs(id, true, {{"fast", true}, {"my [old] \"profile\"", true}});
      if (i % 5 == 2) sw.settingsIs(id, i % 2 == 0);
      sw.addInterface(id);
      if (i % 7 == 3) sw.phyConfigStateIs(id, i % 3);
    }
    for (unsigned flap = 0; flap < 8; ++flap)
      for (unsigned i = 0; i < kInterfaces; ++i)
        if (i % 4 == 0 || flap < i % 4) sw.flap(ids[i], {flap * 0.75 + i / 1e4});
    roots.add(sw);
  }

  /// The beginnings of the trees that are dumped: nothing of the switch is in none of them.
  std::vector<std::pair<std::string, Vek::Ptr<Vek::PtrInterface const>>> trees() const {
    return {{"root", sw.root},
            {"activity", sw.activity},
            {"ethPhyIntfConfigDir", sw.configDir},
            {"ethPhyIntfStatusDir", sw.statusDir},
            {"errdisableConfig", sw.errdisableConfig},
            {"config", sw.config},
            {"causeStatus", sw.causeStatus}};
  }

  std::vector<std::string> dumpOfAll() const {
    std::vector<std::string> lines;
    for (auto const& [name, object] : trees())
      dump(name, object, lines);
    return lines;
  }

  template <typename Count>
  void watch(Vek::PtrInterface const& object) {
    auto const watcher = Vek::make<Count>(&told);
    watcher->notifierIs(Vek::Ptr<Vek::PtrInterface const>{&object});
    watcher->isRegisteredNotifieeIs(true);
    watchers.push_back(watcher);
  }
  void watchAll() {
    watch<ConfigCounter>(*sw.config);
    watch<ConfigDirCounter>(*sw.configDir);
    watch<StatusDirCounter>(*sw.statusDir);
    watch<ErrdisableCounter>(*sw.errdisableConfig);
    watch<CauseCounter>(*sw.causeStatus);
    for (auto const& member : sw.config->intfConfig())
      watch<IntfConfigCounter>(*member.value());
    for (auto const& member : sw.config->profileConfig())
      watch<ProfileConfigCounter>(*member.value());
    for (auto const& member : sw.configDir->intfConfig())
      watch<PhyConfigCounter>(*member.value());
    for (auto const& member : sw.statusDir->intfStatus())
      watch<StatusCounter>(*member.value());
    watchers.push_back(RootWatcher::on(sw.root, [this] { ++told; }));
  }

  /// Gets every value of every tree and, where it can be written, sets what `written` makes of it.
  /// Returns how many were read and how many written.
  template <typename Written>
  std::pair<unsigned, unsigned> writeBack(Written written) {
    unsigned reads = 0;
    unsigned writes = 0;
    for (auto const& [name, object] : trees()) {
      walkTree(name, object, [&](std::string const& /*path*/, Vek::GenericIf& view) {
        forEachValue(view,
                     [&](Vek::VekAttr const& attr, Vek::Value const& key, Vek::Value const& value) {
                       ++reads;
                       if (key.empty() ? attr.write == nullptr : attr.memberWrite == nullptr)
                         return;
                       Vek::Value result;
                       view.attributeOp({attr.id, OpCode::set, key}, {written(value)}, result);
                       ++writes;
                     });
      });
    }
    return {reads, writes};
  }

  void expectNothingWasTold() {
    EXPECT_EQ(told, 0U);
    EXPECT_TRUE(sw.takeMessages().empty());  // no handler ran
    EXPECT_TRUE(sw.takeWrites().empty());
  }

  Switch sw;
  std::vector<Tarn::IntfId> ids;
  Roots roots;
  unsigned told{0};
  std::vector<Vek::Ptr<Vek::PtrInterface>> watchers;
};

TEST_F(LiveTree, IsOneThatATestCanFailOn) {
  EXPECT_EQ(sw.machine().linkFlapIntfSm().members(), kInterfaces);
  EXPECT_GT(sw.causeStatus->intfStatus().size(), 10U);
  std::size_t withFlaps = 0;
  std::size_t machines = 0;
  for (auto const& intf : sw.machine().linkFlapIntfSm())
    for (auto const& profile : intf.linkFlapProfileSm()) {
      ++machines;
      if (profile.linkFlapTimeStamp().count() != 0) ++withFlaps;
    }
  EXPECT_GT(machines, kInterfaces);
  EXPECT_GT(withFlaps, 100U);
  // A dump shows a change of any value, and a watcher hears of it.
  watchAll();
  auto const before = dumpOfAll();
  EXPECT_EQ(dumpOfAll(), before);
  (void)sw.takeTraces();
  sw.status(ids[4])->rawLinkStatusIs(Interface::RawLinkStatus::down);
  EXPECT_NE(dumpOfAll(), before);
  EXPECT_EQ(told, 1U);
  EXPECT_FALSE(sw.takeMessages().empty());
}

TEST_F(LiveTree, SettingEveryValueToWhatItIsChangesNothing) {
  watchAll();
  (void)sw.takeTraces();
  (void)sw.takeWrites();
  auto const before = dumpOfAll();
  auto const [reads, writes] = writeBack([](Vek::Value const& value) { return value; });
  EXPECT_EQ(dumpOfAll(), before);
  expectNothingWasTold();
  EXPECT_EQ(reads, before.size());
  EXPECT_GT(writes, 10 * kInterfaces);
}

// A string is itself; every other value is given as the text that was read.
TEST_F(LiveTree, SettingEveryValueToItsTextChangesNothing) {
  watchAll();
  (void)sw.takeTraces();
  (void)sw.takeWrites();
  auto const before = dumpOfAll();
  auto const [reads, writes] = writeBack([](Vek::Value const& value) {
    bool const string = value.type() == &Vek::ValueTraits<Vek::String>::type;
    return string ? value : text(value.text());
  });
  EXPECT_EQ(dumpOfAll(), before);
  expectNothingWasTold();
  EXPECT_EQ(reads, before.size());
  EXPECT_GT(writes, 10 * kInterfaces);
}

// Making again what is there, from what it was made of, is no change either.
TEST_F(LiveTree, MakingEveryMachineAgainChangesNothing) {
  watchAll();
  (void)sw.takeTraces();
  (void)sw.takeWrites();
  auto before = dumpOfAll();
  unsigned made = 0;
  for (auto& intf : sw.machine().linkFlapIntfSm()) {
    LinkFlap::LinkFlapSm::GenericIf_ top{&sw.machine(), false};
    LinkFlap::LinkFlapIntfSm::GenericIf_ view{&intf, false};
    List arguments;
    for (auto const& parameter : top.type().attr("linkFlapIntfSm")->parameters)
      arguments.push_back(get(view, parameter.name));
    EXPECT_EQ(objectOf<LinkFlap::LinkFlapIntfSm>(instantiate(top, "linkFlapIntfSm", arguments)),
              &intf);
    for (auto& profile : intf.linkFlapProfileSm()) {
      LinkFlap::LinkFlapProfileSm::GenericIf_ below{&profile, false};
      List given;
      for (auto const& parameter : view.type().attr("linkFlapProfileSm")->parameters)
        given.push_back(get(below, parameter.name));
      EXPECT_EQ(
          objectOf<LinkFlap::LinkFlapProfileSm>(instantiate(view, "linkFlapProfileSm", given)),
          &profile);
      ++made;
    }
  }
  EXPECT_GT(made, kInterfaces);
  EXPECT_EQ(dumpOfAll(), before);
  expectNothingWasTold();

  LinkFlap::Root::GenericIf_ root{sw.root, false};
  LinkFlap::LinkFlapSm::GenericIf_ top{&sw.machine(), false};
  List arguments;
  for (auto const& parameter : root.type().attr("linkFlapSm")->parameters)
    arguments.push_back(get(top, parameter.name));
  EXPECT_EQ(objectOf<LinkFlap::LinkFlapSm>(instantiate(root, "linkFlapSm", arguments)),
            &sw.machine());
  expectNothingWasTold();
}

}  // namespace
