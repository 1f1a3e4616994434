#pragma once

#include <array>
#include <functional>
#include <utility>

#include "runtime/model/AllEthPhyIntfConfigDir.h"
#include "runtime/model/AllEthPhyIntfStatusDir.h"
#include "runtime/model/ErrdisableCauseStatus.h"
#include "runtime/model/ErrdisableConfig.h"
#include "runtime/model/LinkFlapConfig.h"

#include "statemachines/Root.h"

/// What a listener does with all it hears: one function for the notification, one for the immediate
/// hook that comes before it where the attribute has keys.
struct Ears {
  std::function<void()> heard;
  std::function<void()> immediate;

  /// How often it was told of one of these attributes.
  unsigned told(Vek::AttributeMask attributes) const {
    unsigned sum = 0;
    for (unsigned bit = 0; bit < counts_.size(); ++bit)
      if ((attributes >> bit & 1U) != 0) sum += counts_[bit];
    return sum;
  }

 protected:
  ~Ears() = default;

  void hear(Vek::AttributeId id) {
    ++counts_[id % counts_.size()];
    // Copied: what is heard may replace what is done.
    if (auto const act = heard) act();
  }
  void hearImmediate() const {
    if (auto const act = immediate) act();
  }

 private:
  std::array<unsigned, 16> counts_{};
};

/// A watcher of a whole object: every notification of its type goes to its ears. `watching` says
/// which attributes it is offered, and so which other watchers it stands in line with.
template <typename Watched>
class ListenerOf;

template <>
class ListenerOf<LinkFlap::Config> final : public LinkFlap::Config::NotifieeConst, public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onMaxFlaps() override { hear(LinkFlap::Config::maxFlapsAttr.id); }
  void onInterval() override { hear(LinkFlap::Config::intervalAttr.id); }
  void onIntfConfig(Tarn::IntfId /*id*/) override { hear(LinkFlap::Config::intfConfigAttr.id); }
  void onIntfConfigvekImmediate() override { hearImmediate(); }
  void onProfileConfig(Vek::String /*name*/) override {
    hear(LinkFlap::Config::profileConfigAttr.id);
  }
  void onProfileConfigvekImmediate() override { hearImmediate(); }
  void onDefaultProfileList(Vek::String /*name*/) override {
    hear(LinkFlap::Config::defaultProfileListAttr.id);
  }
  void onDefaultProfileListvekImmediate() override { hearImmediate(); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<LinkFlap::IntfConfig> final : public LinkFlap::IntfConfig::NotifieeConst,
                                               public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onEnabled() override { hear(LinkFlap::IntfConfig::enabledAttr.id); }
  void onProfileList(Vek::String /*name*/) override {
    hear(LinkFlap::IntfConfig::profileListAttr.id);
  }
  void onProfileListvekImmediate() override { hearImmediate(); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<LinkFlap::ProfileConfig> final : public LinkFlap::ProfileConfig::NotifieeConst,
                                                  public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onMaxFlaps() override { hear(LinkFlap::ProfileConfig::maxFlapsAttr.id); }
  void onInterval() override { hear(LinkFlap::ProfileConfig::intervalAttr.id); }
  void onViolations() override { hear(LinkFlap::ProfileConfig::violationsAttr.id); }
  void onTrackedIntervals() override { hear(LinkFlap::ProfileConfig::trackedIntervalsAttr.id); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<Interface::AllEthPhyIntfConfigDir> final
    : public Interface::AllEthPhyIntfConfigDir::NotifieeConst,
      public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onIntfConfig(Tarn::IntfId /*id*/) override {
    hear(Interface::AllEthPhyIntfConfigDir::intfConfigAttr.id);
  }
  void onIntfConfigvekImmediate() override { hearImmediate(); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<Interface::AllEthPhyIntfStatusDir> final
    : public Interface::AllEthPhyIntfStatusDir::NotifieeConst,
      public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onIntfStatus(Tarn::IntfId /*id*/) override {
    hear(Interface::AllEthPhyIntfStatusDir::intfStatusAttr.id);
  }
  void onIntfStatusvekImmediate() override { hearImmediate(); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<Interface::EthPhyIntfConfig> final
    : public Interface::EthPhyIntfConfig::NotifieeConst,
      public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onPhyConfigState() override { hear(Interface::EthPhyIntfConfig::phyConfigStateAttr.id); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<Interface::EthPhyIntfStatus> final
    : public Interface::EthPhyIntfStatus::NotifieeConst,
      public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onRawLinkStatus() override { hear(Interface::EthPhyIntfStatus::rawLinkStatusAttr.id); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<Errdisable::Config> final : public Errdisable::Config::NotifieeConst, public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onRecoveryInterval() override { hear(Errdisable::Config::recoveryIntervalAttr.id); }
  void onDisabled(Vek::String /*cause*/) override { hear(Errdisable::Config::disabledAttr.id); }
  void onDisabledvekImmediate() override { hearImmediate(); }
  void onTimerRecoveryEnabled(Vek::String /*cause*/) override {
    hear(Errdisable::Config::timerRecoveryEnabledAttr.id);
  }
  void onTimerRecoveryEnabledvekImmediate() override { hearImmediate(); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<Errdisable::CauseStatus> final : public Errdisable::CauseStatus::NotifieeConst,
                                                  public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask watching) : NotifieeConst{watching} {}
  void onIntfStatus(Tarn::IntfId /*id*/) override {
    hear(Errdisable::CauseStatus::intfStatusAttr.id);
  }
  void onIntfStatusvekImmediate() override { hearImmediate(); }

 private:
  ~ListenerOf() override = default;
};

template <>
class ListenerOf<LinkFlap::Root> final : public LinkFlap::Root::NotifieeConst, public Ears {
 public:
  explicit ListenerOf(Vek::AttributeMask /*watching*/) {}
  void onLinkFlapSm() override { hear(LinkFlap::Root::kLinkFlapSm); }
  void onZeroReferences() override { hearImmediate(); }

 private:
  ~ListenerOf() override = default;
};
