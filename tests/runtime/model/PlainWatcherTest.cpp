// A watcher overrides what it wants to hear and nothing else: the rest is told to it to no effect,
// and the watchers behind it hear the same as ever.

#include <gtest/gtest.h>
#include <string>
#include <utility>
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
#include "runtime/vek/Activity.h"
#include "runtime/vek/Reactor.h"

#include "tests/runtime/support/FailureLog.h"

namespace {

using Vek::make;
using Vek::Ptr;

using Heard = std::vector<std::string>;

/// Overrides nothing.
template <typename Watched>
class Plain final : public Watched::NotifieeConst {
  ~Plain() override = default;
};

/// A watched object of one type, with a plain watcher that was registered before the listening one.
template <typename Watched, typename Listener>
struct Watching {
  explicit Watching(Ptr<Watched> watched = make<Watched>()) : object{std::move(watched)} {
    for (Ptr<typename Watched::NotifieeConst> const& watcher :
         {Ptr<typename Watched::NotifieeConst>{plain},
          Ptr<typename Watched::NotifieeConst>{listener}}) {
      watcher->notifierIs(object);
      watcher->isRegisteredNotifieeIs(true);
    }
  }
  /// What the listening watcher heard; nothing may have been reported.
  Heard heard() const {
    EXPECT_EQ(failures.lines(), Heard{});
    EXPECT_TRUE(plain->isRegisteredNotifiee());
    return listener->heard;
  }

  RuntimeTest::FailureLog failures;
  Ptr<Watched> object;
  Ptr<Plain<Watched>> plain = make<Plain<Watched>>();
  Ptr<Listener> listener = make<Listener>();
};

struct ConfigListener final : LinkFlap::Config::NotifieeConst {
  void onMaxFlaps() override { heard.emplace_back("maxFlaps"); }
  void onInterval() override { heard.emplace_back("interval"); }
  void onDefaultProfileList(Vek::String name) override { heard.emplace_back(name.view()); }
  Heard heard;
};

TEST(PlainWatcher, OfAConfigLetsTheNextHear) {
  Watching<LinkFlap::Config, ConfigListener> watching;
  watching.object->maxFlapsIs(7);
  watching.object->intervalIs(3.5);
  watching.object->defaultProfileListIs("strict", true);
  EXPECT_EQ(watching.heard(), (Heard{"maxFlaps", "interval", "strict"}));
}

struct IntfConfigListener final : LinkFlap::IntfConfig::NotifieeConst {
  void onEnabled() override { heard.emplace_back("enabled"); }
  void onProfileList(Vek::String name) override { heard.emplace_back(name.view()); }
  Heard heard;
};

TEST(PlainWatcher, OfAnIntfConfigLetsTheNextHear) {
  Watching<LinkFlap::IntfConfig, IntfConfigListener> watching;
  watching.object->enabledIs(!watching.object->enabled());
  watching.object->profileListIs("strict", true);
  EXPECT_EQ(watching.heard(), (Heard{"enabled", "strict"}));
}

struct ProfileConfigListener final : LinkFlap::ProfileConfig::NotifieeConst {
  void onMaxFlaps() override { heard.emplace_back("maxFlaps"); }
  void onInterval() override { heard.emplace_back("interval"); }
  void onViolations() override { heard.emplace_back("violations"); }
  void onTrackedIntervals() override { heard.emplace_back("trackedIntervals"); }
  Heard heard;
};

TEST(PlainWatcher, OfAProfileConfigLetsTheNextHear) {
  Watching<LinkFlap::ProfileConfig, ProfileConfigListener> watching;
  watching.object->maxFlapsIs(70);
  watching.object->intervalIs(3.5);
  watching.object->violationsIs(71);
  watching.object->trackedIntervalsIs(72);
  EXPECT_EQ(watching.heard(), (Heard{"maxFlaps", "interval", "violations", "trackedIntervals"}));
}

struct ErrdisableConfigListener final : Errdisable::Config::NotifieeConst {
  void onRecoveryInterval() override { heard.emplace_back("recoveryInterval"); }
  void onDisabled(Vek::String cause) override { heard.push_back("disabled " + text(cause)); }
  void onTimerRecoveryEnabled(Vek::String cause) override {
    heard.push_back("timerRecoveryEnabled " + text(cause));
  }
  static std::string text(Vek::String const& cause) { return std::string{cause.view()}; }
  Heard heard;
};

TEST(PlainWatcher, OfAnErrdisableConfigLetsTheNextHear) {
  Watching<Errdisable::Config, ErrdisableConfigListener> watching;
  watching.object->recoveryIntervalIs(17);
  watching.object->disabledIs("link-flap", true);
  watching.object->timerRecoveryEnabledIs("link-flap", true);
  EXPECT_EQ(watching.heard(),
            (Heard{"recoveryInterval", "disabled link-flap", "timerRecoveryEnabled link-flap"}));
}

struct CauseStatusListener final : Errdisable::CauseStatus::NotifieeConst {
  void onIntfStatus(Tarn::IntfId id) override { heard.emplace_back(id.name().view()); }
  Heard heard;
};

TEST(PlainWatcher, OfACauseStatusLetsTheNextHear) {
  Watching<Errdisable::CauseStatus, CauseStatusListener> watching;
  watching.object->intfStatusIs(Tarn::IntfId{"Ethernet1"}, 1.5);
  EXPECT_EQ(watching.heard(), (Heard{"Ethernet1"}));
}

struct ConfigDirListener final : Interface::AllEthPhyIntfConfigDir::NotifieeConst {
  void onIntfConfig(Tarn::IntfId id) override { heard.emplace_back(id.name().view()); }
  Heard heard;
};

TEST(PlainWatcher, OfAConfigDirectoryLetsTheNextHear) {
  Watching<Interface::AllEthPhyIntfConfigDir, ConfigDirListener> watching;
  watching.object->newIntfConfig(Tarn::IntfId{"Ethernet1"});
  EXPECT_EQ(watching.heard(), (Heard{"Ethernet1"}));
}

struct StatusDirListener final : Interface::AllEthPhyIntfStatusDir::NotifieeConst {
  void onIntfStatus(Tarn::IntfId id) override { heard.emplace_back(id.name().view()); }
  Heard heard;
};

TEST(PlainWatcher, OfAStatusDirectoryLetsTheNextHear) {
  Watching<Interface::AllEthPhyIntfStatusDir, StatusDirListener> watching;
  watching.object->newIntfStatus(Tarn::IntfId{"Ethernet1"});
  EXPECT_EQ(watching.heard(), (Heard{"Ethernet1"}));
}

struct PhyConfigListener final : Interface::EthPhyIntfConfig::NotifieeConst {
  void onPhyConfigState() override { heard.emplace_back("phyConfigState"); }
  Heard heard;
};

TEST(PlainWatcher, OfAnInterfaceConfigLetsTheNextHear) {
  Watching<Interface::EthPhyIntfConfig, PhyConfigListener> watching{
      make<Interface::EthPhyIntfConfig>(Tarn::IntfId{"Ethernet1"})};
  watching.object->phyConfigStateIs(Interface::PhyConfigState{2});
  EXPECT_EQ(watching.heard(), (Heard{"phyConfigState"}));
}

struct StatusListener final : Interface::EthPhyIntfStatus::NotifieeConst {
  void onRawLinkStatus() override { heard.emplace_back("rawLinkStatus"); }
  Heard heard;
};

TEST(PlainWatcher, OfAnInterfaceStatusLetsTheNextHear) {
  Watching<Interface::EthPhyIntfStatus, StatusListener> watching{
      make<Interface::EthPhyIntfStatus>(Tarn::IntfId{"Ethernet1"})};
  watching.object->rawLinkStatusIs(Interface::RawLinkStatus::up);
  EXPECT_EQ(watching.heard(), (Heard{"rawLinkStatus"}));
}

// Several members that wait for an activity become one notification without a key. A reactor that
// does not override it loses them; the next change it hears again.

struct Owner : Vek::PtrInterface {
  void handleIntf(Tarn::IntfId id) { heard.emplace_back(id.name().view()); }
  void handleCause(Vek::String cause) { heard.emplace_back(cause.view()); }
  Heard heard;
};

class CauseReactor final
    : public Vek::ActivityReactor<CauseReactor, Owner, Errdisable::CauseStatus> {
 public:
  using ActivityReactor::ActivityReactor;
  void onIntfStatus(Tarn::IntfId id) override {
    react(Errdisable::CauseStatus::intfStatusAttr, id, &Owner::handleIntf);
  }
};

TEST(PlainReactor, OfACauseStatusLosesSeveralAndHearsTheNext) {
  auto const activity = make<Vek::ActivityConfig>();
  activity->deferredIs(true);
  auto const status = make<Errdisable::CauseStatus>();
  auto const owner = make<Owner>();
  auto const reactor = make<CauseReactor>(activity, status, owner.get());
  status->intfStatusIs(Tarn::IntfId{"Ethernet1"}, 1);
  status->intfStatusIs(Tarn::IntfId{"Ethernet2"}, 1);
  EXPECT_EQ(Vek::vekActivitySmFor(activity)->deliver(), 1U);
  EXPECT_EQ(owner->heard, Heard{});
  status->intfStatusIs(Tarn::IntfId{"Ethernet3"}, 1);
  EXPECT_EQ(Vek::vekActivitySmFor(activity)->deliver(), 1U);
  EXPECT_EQ(owner->heard, (Heard{"Ethernet3"}));
}

class RecoveryReactor final
    : public Vek::ActivityReactor<RecoveryReactor, Owner, Errdisable::Config> {
 public:
  using ActivityReactor::ActivityReactor;
  void onTimerRecoveryEnabled(Vek::String cause) override {
    react(Errdisable::Config::timerRecoveryEnabledAttr, cause, &Owner::handleCause);
  }
};

TEST(PlainReactor, OfAnErrdisableConfigLosesSeveralAndHearsTheNext) {
  auto const activity = make<Vek::ActivityConfig>();
  activity->deferredIs(true);
  auto const config = make<Errdisable::Config>();
  auto const owner = make<Owner>();
  auto const reactor = make<RecoveryReactor>(activity, config, owner.get());
  config->timerRecoveryEnabledIs("one", true);
  config->timerRecoveryEnabledIs("two", true);
  EXPECT_EQ(Vek::vekActivitySmFor(activity)->deliver(), 1U);
  EXPECT_EQ(owner->heard, Heard{});
  config->timerRecoveryEnabledIs("three", true);
  EXPECT_EQ(Vek::vekActivitySmFor(activity)->deliver(), 1U);
  EXPECT_EQ(owner->heard, (Heard{"three"}));
}

}  // namespace
