// A thousand interfaces change in one turn.
//
//   reliability-bursts [PLANTED-FAULT]
//
// With immediate delivery every admissible interface has its machine afterwards, and no other. With
// deferred delivery the keys of an attribute that wait together are lost, and nothing else is: what
// stands where is computed key by key, and one further change for each interface repairs it.

#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/vek/Clock.h"

#include "statemachines/LinkFlapSm.h"

namespace {

constexpr unsigned kInterfaces{1000};

bool plantMissed = false;
bool plantForgotten = false;

[[noreturn]] void fail(std::string const& what) {
  std::printf("FAILED: %s\n", what.c_str());
  std::exit(1);
}

class Chassis {
 public:
  explicit Chassis(bool deferred) {
    for (unsigned i = 0; i < kInterfaces; ++i)
      ids.emplace_back(("Ethernet" + std::to_string(i)).c_str());
    activity->deferredIs(deferred);
    (void)root->linkFlapSmIs(activity, configDir, statusDir, errdisableConfig, config, causeStatus,
                             causeName);
  }

  void giveConfig(Tarn::IntfId const& id) { (void)configDir->newIntfConfig(id); }
  void giveStatus(Tarn::IntfId const& id) { (void)statusDir->newIntfStatus(id); }
  void giveSettings(Tarn::IntfId const& id) {
    auto const settings = Vek::make<LinkFlap::IntfConfig>(Vek::Name{id.name()});
    settings->enabledIs(true);
    config->intfConfigIs(id, settings);
  }

  LinkFlap::LinkFlapSm& machine() const { return *root->linkFlapSm(); }
  bool admissible(Tarn::IntfId const& id) const {
    return configDir->intfConfig(id) && statusDir->intfStatus(id) &&
           (config->intfConfig(id) || !errdisableConfig->disabled(causeName));
  }
  void deliver() const {
    auto const running = Vek::vekActivitySmFor(activity);
    while (running->pending())
      (void)running->deliver();
  }

  /// How many interfaces are admissible and have no machine of the present objects.
  unsigned missing() const {
    unsigned count = 0;
    for (Tarn::IntfId const& id : ids) {
      if (!admissible(id)) continue;
      auto const sm = machine().linkFlapIntfSm(id);
      if (!sm || sm->ethPhyIntfStatus() != statusDir->intfStatus(id) ||
          sm->ethPhyIntfConfig() != configDir->intfConfig(id) ||
          sm->intfConfig() != config->intfConfig(id) || sm->linkFlapProfileSm().members() != 1)
        ++count;
    }
    return count;
  }
  /// How many machines belong to interfaces that are not admissible.
  unsigned surplus() const {
    unsigned count = 0;
    for (auto const& sm : machine().linkFlapIntfSm())
      if (!admissible(sm.intfId())) ++count;
    return count;
  }
  std::set<Tarn::IntfId> monitored() const {
    std::set<Tarn::IntfId> all;
    for (auto const& sm : machine().linkFlapIntfSm())
      all.insert(sm.intfId());
    return all;
  }

  Vek::ManualClock clock{1};
  std::vector<Tarn::IntfId> ids;
  Vek::Ptr<Vek::ActivityConfig> activity{Vek::make<Vek::ActivityConfig>()};
  Vek::Ptr<Interface::AllEthPhyIntfConfigDir> configDir{
      Vek::make<Interface::AllEthPhyIntfConfigDir>()};
  Vek::Ptr<Interface::AllEthPhyIntfStatusDir> statusDir{
      Vek::make<Interface::AllEthPhyIntfStatusDir>()};
  Vek::Ptr<Errdisable::Config> errdisableConfig{Vek::make<Errdisable::Config>()};
  Vek::Ptr<LinkFlap::Config> config{Vek::make<LinkFlap::Config>()};
  Vek::Ptr<Errdisable::CauseStatus> causeStatus{Vek::make<Errdisable::CauseStatus>()};
  Vek::String const causeName{"link-flap"};
  LinkFlap::Root::Ptr root{LinkFlap::rootFactory("chassis")};
};

/// What happens to all interfaces in one turn.
struct Burst {
  char const* name;
  void (*change)(Chassis&);
};

template <typename Act>
void each(Chassis& chassis, Act act) {
  for (Tarn::IntfId const& id : chassis.ids)
    act(id);
}

// Each goes on from where the one before it ended.
Burst const kBursts[]{
    {"configurations appear", [](Chassis& c) { each(c, [&](auto& id) { c.giveConfig(id); }); }},
    {"statuses appear", [](Chassis& c) { each(c, [&](auto& id) { c.giveStatus(id); }); }},
    {"settings appear", [](Chassis& c) { each(c, [&](auto& id) { c.giveSettings(id); }); }},
    {"settings are replaced", [](Chassis& c) { each(c, [&](auto& id) { c.giveSettings(id); }); }},
    {"the cause is switched off",
     [](Chassis& c) { c.errdisableConfig->disabledIs(c.causeName, true); }},
    {"settings disappear",
     [](Chassis& c) { each(c, [&](auto& id) { c.config->intfConfigDel(id); }); }},
    {"the cause is switched on", [](Chassis& c) { c.errdisableConfig->disabledDel(c.causeName); }},
    {"every interface is taken out and put back",
     [](Chassis& c) {
       each(c, [&](auto& id) {
         c.statusDir->intfStatusDel(id);
         c.configDir->intfConfigDel(id);
       });
       each(c, [&](auto& id) {
         c.giveStatus(id);
         c.giveConfig(id);
       });
     }},
    {"a default list comes and goes",
     [](Chassis& c) {
       c.config->defaultProfileListIs("p", true);
       c.config->defaultProfileListDel("p");
     }},
    {"statuses disappear",
     [](Chassis& c) { each(c, [&](auto& id) { c.statusDir->intfStatusDel(id); }); }},
    {"statuses appear again", [](Chassis& c) { each(c, [&](auto& id) { c.giveStatus(id); }); }},
};

/// A watcher in whose callback a burst takes place: one turn within another.
class Turn final : public Errdisable::Config::NotifieeConst {
 public:
  explicit Turn(Chassis& chassis) : chassis_{chassis} {}
  void onRecoveryInterval() override { burst->change(chassis_); }

  Burst const* burst{nullptr};

 private:
  ~Turn() override = default;

  Chassis& chassis_;
};

unsigned immediate() {
  unsigned turns = 0;
  for (bool const within : {false, true}) {
    Chassis chassis{false};
    auto const turn = Vek::make<Turn>(chassis);
    turn->notifierIs(chassis.errdisableConfig);
    turn->isRegisteredNotifieeIs(true);
    for (Burst const& burst : kBursts) {
      turn->burst = &burst;
      if (within)
        chassis.errdisableConfig->recoveryIntervalIs(1000 + turns);
      else
        burst.change(chassis);
      if (plantMissed && turns == 2)
        (void)chassis.machine().linkFlapIntfSmDel(Tarn::IntfId{"Ethernet500"});
      ++turns;
      if (auto const count = chassis.missing(); count != 0)
        fail(std::to_string(count) +
             " admissible interfaces without a machine after: " + burst.name);
      if (auto const count = chassis.surplus(); count != 0)
        fail(std::to_string(count) + " machines too many after: " + burst.name);
    }
    // All links flap in one turn; the second flap within the interval err-disables.
    chassis.config->maxFlapsIs(1);
    for (auto const state : {Interface::RawLinkStatus::up, Interface::RawLinkStatus::down,
                             Interface::RawLinkStatus::up})
      each(chassis, [&](Tarn::IntfId const& id) {
        const_cast<Interface::EthPhyIntfStatus&>(*chassis.statusDir->intfStatus(id))
            .rawLinkStatusIs(state);
      });
    if (chassis.causeStatus->intfStatus().size() != kInterfaces)
      fail("not every interface was err-disabled");
    ++turns;
  }
  return turns;
}

/// The keys of one attribute that wait, as the documentation has it: one alone is delivered, several
/// are lost.
class Waiting {
 public:
  void add(Tarn::IntfId const& id) {
    if (count_ == 1 && id == last_) return;
    last_ = id;
    ++count_;
  }
  /// Hands the key to `deliver` if it is alone.
  template <typename Deliver>
  void deliver(Deliver deliver) {
    if (std::exchange(count_, 0U) == 1) deliver(last_);
  }

 private:
  unsigned count_{0};
  Tarn::IntfId last_;
};

struct Loss {
  unsigned turns{0};
  unsigned lost{0};
};

/// Turns of one to three random changes; what is monitored is held against the model after each.
Loss deferredInSmallTurns() {
  Chassis chassis{true};
  std::mt19937 random{1};
  Loss loss;
  // An interface comes back with its own objects: others would be refused while an old machine stands
  // that did not hear of its leaving.
  constexpr std::size_t kFew{40};
  std::vector<Vek::Ptr<Interface::EthPhyIntfConfig const>> phyConfig;
  std::vector<Vek::Ptr<Interface::EthPhyIntfStatus const>> status;
  for (std::size_t i = 0; i < kFew; ++i) {
    phyConfig.emplace_back(Vek::make<Interface::EthPhyIntfConfig>(chassis.ids[i]));
    status.emplace_back(Vek::make<Interface::EthPhyIntfStatus>(chassis.ids[i]));
  }
  std::set<Tarn::IntfId> expected;
  Waiting configs;
  Waiting statuses;
  Waiting settings;
  for (; loss.turns < 4000; ++loss.turns) {
    for (auto changes = 1 + random() % 3; changes > 0; --changes) {
      std::size_t const at = random() % kFew;
      Tarn::IntfId const& id = chassis.ids[at];
      switch (random() % 3) {
        case 0:
          configs.add(id);
          if (chassis.configDir->intfConfig(id))
            chassis.configDir->intfConfigDel(id);
          else
            chassis.configDir->intfConfigIs(id, phyConfig[at]);
          break;
        case 1:
          statuses.add(id);
          if (chassis.statusDir->intfStatus(id))
            chassis.statusDir->intfStatusDel(id);
          else
            chassis.statusDir->intfStatusIs(id, status[at]);
          break;
        default:
          settings.add(id);
          if (chassis.config->intfConfig(id))
            chassis.config->intfConfigDel(id);
          else
            chassis.giveSettings(id);
      }
    }
    if (plantForgotten && loss.turns >= 100)
      for (bool const on : {false, true})
        chassis.machine().hasNotificationActiveIs(on);
    chassis.deliver();
    auto const handle = [&](Tarn::IntfId const& id) {
      if (chassis.admissible(id))
        expected.insert(id);
      else
        expected.erase(id);
    };
    for (Waiting* const attribute : {&configs, &statuses, &settings})
      attribute->deliver(handle);
    if (chassis.monitored() != expected)
      fail("more was lost than the keys that waited together, in turn " +
           std::to_string(loss.turns));
    loss.lost += chassis.missing() + chassis.surplus() != 0 ? 1 : 0;
  }
  return loss;
}

void requireMonitored(Chassis const& chassis, std::size_t machines, char const* when) {
  if (chassis.monitored().size() != machines)
    fail(std::to_string(chassis.monitored().size()) + " machines instead of " +
         std::to_string(machines) + " " + when);
}

/// Bursts of a thousand; what is lost is lost in full, and one change each repairs it.
unsigned deferredInBursts() {
  Chassis chassis{true};
  each(chassis, [&](auto& id) { chassis.giveConfig(id); });
  each(chassis, [&](auto& id) { chassis.giveStatus(id); });
  requireMonitored(chassis, 0, "before delivery");
  chassis.deliver();
  requireMonitored(chassis, 0, "after a thousand keys have waited together");
  unsigned const lost = chassis.missing();
  // One further change for each, alone in its turn.
  each(chassis, [&](auto& id) {
    chassis.giveSettings(id);
    chassis.deliver();
  });
  if (chassis.missing() != 0 || chassis.surplus() != 0)
    fail("one further change for each interface has not repaired it");
  requireMonitored(chassis, kInterfaces, "after the repair");
  // The other way round: interfaces leave unheard, and their machines stay.
  each(chassis, [&](auto& id) { chassis.statusDir->intfStatusDel(id); });
  chassis.deliver();
  requireMonitored(chassis, kInterfaces, "after a thousand have left unheard");
  each(chassis, [&](auto& id) {
    chassis.configDir->intfConfigDel(id);
    chassis.deliver();
  });
  requireMonitored(chassis, 0, "after one further change for each");
  // Delivered after every change, nothing is lost at all.
  each(chassis, [&](auto& id) {
    chassis.giveConfig(id);
    chassis.deliver();
    chassis.giveStatus(id);
    chassis.deliver();
  });
  if (chassis.missing() != 0) fail("a change that waited alone was lost");
  return lost;
}

}  // namespace

int main(int argc, char** argv) {
  std::string_view const planted = argc > 1 ? argv[1] : "";
  plantMissed = planted == "missed";
  plantForgotten = planted == "forgotten";
  unsigned const turns = immediate();
  unsigned const lost = deferredInBursts();
  Loss const loss = deferredInSmallTurns();
  if (lost != kInterfaces || loss.lost == 0) fail("deferred delivery has lost nothing");
  std::printf(
      "deferred: %u of %u lost in one turn, all repaired by one change each; %u small turns "
      "as documented, key by key, %u of them with a loss outstanding\n",
      lost, kInterfaces, loss.turns, loss.lost);
  std::printf("immediate: %u turns of %u interfaces, 0 admissible interfaces without a machine\n",
              turns, kInterfaces);
  return 0;
}
