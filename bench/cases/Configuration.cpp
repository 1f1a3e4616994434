#include <string>

#include "bench/cases/Chassis.h"
#include "bench/harness/Order.h"
#include "bench/harness/Subject.h"

// Case 10: the configuration of one interface changes on a switch of many. Case 11: configuration
// that concerns all interfaces changes; counted for one interface.

namespace Bench {

namespace {

/// On how many interfaces, one after the other, the changes of case 10 are made.
constexpr std::size_t kChanged{64};

/// A running switch. Interfaces without settings of their own run on the built-in profile.
struct Running : Chassis {
  explicit Running(std::size_t interfaces) : Chassis{interfaces} {
    publishAll();
    install();
    auto const order = randomOrder(interfaces);
    changed.assign(order.begin(), order.begin() + kChanged);
  }

  void settingsIs(std::size_t index) {
    auto const settings = Vek::make<LinkFlap::IntfConfig>();
    settings->enabledIs(true);
    config->intfConfigIs(ids[index], settings);
    own.push_back(settings);
  }
  void allSettingsAre() {
    for (std::uint32_t const index : changed)
      settingsIs(index);
  }

  std::vector<std::uint32_t> changed;  ///< random interfaces
  std::vector<Vek::Ptr<LinkFlap::IntfConfig>> own;
};

template <typename Change>
std::unique_ptr<Subject> onChanged(std::size_t interfaces, Change change) {
  return subject(kChanged, std::make_unique<Running>(interfaces), [change](Running& running) {
    for (std::size_t i = 0; i < kChanged; ++i)
      change(running, running.changed[i]);
  });
}

/// The same on interfaces that have settings of their own; `change` gets the settings.
template <typename Change>
std::unique_ptr<Subject> onSettings(std::size_t interfaces, Change change) {
  auto running = std::make_unique<Running>(interfaces);
  running->allSettingsAre();
  return subject(kChanged, std::move(running), [change](Running& state) {
    for (auto const& settings : state.own)
      change(*settings);
  });
}

void addOfOne(Registry& registry, std::size_t interfaces) {
  std::string const size = std::to_string(interfaces);
  registry.add("10/port/" + size, [interfaces] {
    return onChanged(interfaces, [](Running& running, std::size_t index) {
      running.withdraw(index);
      running.publish(index);
    });
  });
  registry.add("10/settings/" + size, [interfaces] {
    return onChanged(interfaces, [](Running& running, std::size_t index) {
      running.own.clear();
      running.settingsIs(index);
      running.config->intfConfigDel(running.ids[index]);
    });
  });
  registry.add("10/switch/" + size, [interfaces] {
    return onSettings(interfaces, [](LinkFlap::IntfConfig& settings) {
      settings.enabledIs(false);
      settings.enabledIs(true);
    });
  });
  registry.add("10/profiles/" + size, [interfaces] {
    return onSettings(interfaces, [](LinkFlap::IntfConfig& settings) {
      settings.profileListIs("own", true);
      settings.profileListDel("own");
    });
  });
}

template <typename Change>
std::unique_ptr<Subject> onAll(std::size_t interfaces, Change change) {
  return subject(interfaces, std::make_unique<Running>(interfaces), change);
}

void addOfAll(Registry& registry, std::size_t interfaces) {
  std::string const size = std::to_string(interfaces);
  registry.add("11/global/" + size, [interfaces] {
    return onAll(interfaces, [](Running& running) {
      running.config->maxFlapsIs(running.config->maxFlaps() + 1);
    });
  });
  registry.add("11/default-profile/" + size, [interfaces] {
    return onAll(interfaces, [](Running& running) {
      running.config->defaultProfileListIs("common", true);
      running.config->defaultProfileListDel("common");
    });
  });
  registry.add("11/profile-values/" + size, [interfaces] {
    auto running = std::make_unique<Running>(interfaces);
    auto const profile = Vek::make<LinkFlap::ProfileConfig>(Vek::Name{"common"});
    running->config->profileConfigIs("common", profile);
    running->config->defaultProfileListIs("common", true);
    return subject(interfaces, std::move(running),
                   [profile](Running&) { profile->maxFlapsIs(profile->maxFlaps() + 1); });
  });
  registry.add("11/cause/" + size, [interfaces] {
    return onAll(interfaces, [](Running& running) {
      running.errdisableConfig->disabledIs(running.causeName, true);
      running.errdisableConfig->disabledIs(running.causeName, false);
    });
  });
}

}  // namespace

void addConfiguration(Registry& registry) {
  addOfOne(registry, 64);
  addOfOne(registry, 100000);
  addOfAll(registry, 1000);
  addOfAll(registry, 100000);
}

}  // namespace Bench
