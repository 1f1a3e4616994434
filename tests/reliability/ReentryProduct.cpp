// Every notification of every object, crossed with everything a watcher may do from inside it.
//
//   reliability-reentry [PLANTED-FAULT]
//
// The meddler stands before the library's own reactor or behind it, in line with it or apart from it,
// and acts in the notification or in the immediate hook before it. Two more watchers, the first and
// the last of all, count: whoever stays is told of each change once. In the end the machines are
// what the inputs demand. Run it under the address sanitizer.

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "statemachines/LinkFlapSm.h"

#include "tests/reliability/Notifications.h"
#include "tests/statemachines/ReentryActions.h"

namespace {

/// What is being tried, for whoever reads of a process that ended.
std::string current;

void tellWhere(int /*signal*/) {
  std::fprintf(stderr, "while trying: %s\n", current.c_str());
}

bool plantUntold = false;
bool plantLostMachine = false;
bool plantUseAfterFree = false;
unsigned long combinations = 0;
unsigned long endsProcess = 0;

/// One run: the world, and the three listeners.
struct Stage {
  ReentryWorld world;
  Notification const* notification{nullptr};
  Subject subject;
  Vek::AttributeMask watching{0};
  Vek::AttributeMask firstWatching{0};
  Listener witness;  ///< hears of every attribute, and nobody touches it
  Listener first;
  Listener meddler;
  Listener last;
  std::vector<Listener> latecomers;
  bool firstLeft{false};
  bool lastLeft{false};
  unsigned lastMisses{0};  ///< changes that it need not hear of, since it came back too late
  unsigned failures{0};    ///< exceptions that the act lets out
};

/// What the meddler does to the watchers of the very object, itself included.
struct ListenerAction {
  char const* name;
  void (*act)(Stage&);
  /// It makes the library select profiles for every interface that it finds.
  bool selects{false};
};

void off(Listener const& listener) {
  if (listener.watcher) listener.watcher->isRegisteredNotifieeIs(false);
}

void on(Listener const& listener) {
  if (listener.watcher) listener.watcher->isRegisteredNotifieeIs(true);
}

ListenerAction const kListenerActions[]{
    {"DeregistersItself", [](Stage& s) { off(s.meddler); }},
    {"DeregistersItselfAndComesBack",
     [](Stage& s) {
       off(s.meddler);
       on(s.meddler);
     }},
    {"DropsItself",
     [](Stage& s) {
       Ears const* const ears = s.meddler.ears;
       s.meddler = {};
       if (plantUseAfterFree) std::printf("told %u times\n", ears->told(Vek::kAllAttributes));
     }},
    {"LetsGoOfTheObject", [](Stage& s) { s.meddler.watcher->notifierIs(nullptr); }},
    {"DeregistersTheLast",
     [](Stage& s) {
       off(s.last);
       s.lastLeft = true;
     }},
    {"DropsTheLast",
     [](Stage& s) {
       s.last = {};
       s.lastLeft = true;
     }},
    {"DropsTheFirst",
     [](Stage& s) {
       s.first = {};
       s.firstLeft = true;
     }},
    {"DropsAll",
     [](Stage& s) {
       s.first = {};
       s.meddler = {};
       s.last = {};
       s.firstLeft = s.lastLeft = true;
     }},
    {"SendsTheLastToTheEnd",
     [](Stage& s) {
       off(s.last);
       on(s.last);
       s.lastMisses = 1;
     }},
    {"BringsOthers",
     [](Stage& s) {
       for (Vek::AttributeMask const watching : {s.watching, Vek::kAllAttributes})
         s.latecomers.push_back(s.subject.listen(watching));
     }},
    {"BringsOthersAndLeaves",
     [](Stage& s) {
       s.latecomers.push_back(s.subject.listen(s.watching));
       s.meddler = {};
     }},
    {"ChangesItAgain", [](Stage& s) { s.notification->raiseAgain(s.world); }},
    {"ThrowsAnException",
     [](Stage& s) {
       s.failures = 1;
       throw std::runtime_error{"meddler"};
     }},
    {"ThrowsForWantOfMemory",
     [](Stage& s) {
       s.failures = 1;
       throw std::bad_alloc{};
     }},
    {"ThrowsSomethingElse",
     [](Stage& s) {
       s.failures = 1;
       throw 7;
     }},
    {"LeavesAndThrows",
     [](Stage& s) {
       s.failures = 1;
       s.meddler = {};
       throw std::runtime_error{"meddler"};
     }},
    {"ChangesEveryAttribute",
     [](Stage& s) {
       Switch& sw = s.world.sw;
       Tarn::IntfId const& id = s.notification->id;
       sw.config->maxFlapsIs(6);
       sw.config->intervalIs(6);
       sw.config->defaultProfileListIs("p6", true);
       sw.config->defaultProfileListDel("p6");
       sw.profileIs("p6", {.maxFlaps = 6, .interval = 6});
       sw.settingsIs(id, true, {{"p6", true}});
       s.world.settingsOf(id)->enabledIs(false);
       s.world.settingsOf(id)->profileListIs("p1", true);
       s.world.p1->maxFlapsIs(6);
       s.world.p1->intervalIs(6);
       s.world.p1->violationsIs(6);
       s.world.p1->trackedIntervalsIs(6);
       sw.phyConfig(id)->phyConfigStateIs(Interface::PhyConfigState::inProgress);
       sw.status(id)->rawLinkStatusIs(Interface::RawLinkStatus::unknown);
       sw.errdisableConfig->recoveryIntervalIs(6);
       sw.errdisableConfig->timerRecoveryEnabledIs("y", true);
       sw.errdisableConfig->disabledIs("other", true);
       sw.causeStatus->intfStatusIs(Tarn::IntfId{"Ethernet8"}, 6);
       sw.causeStatus->intfStatusDel(Tarn::IntfId{"Ethernet8"});
     },
     true},
};

/// Where the meddler stands and when it acts.
struct Position {
  char const* name;
  bool behindLibrary;
  bool inLine;
  bool immediate;
};

std::vector<Position> positions(Notification const& notification) {
  std::vector<Position> all;
  for (bool const immediate : {false, true}) {
    if (immediate && !notification.keyed) continue;
    for (bool const inLine : {true, false}) {
      if (inLine && notification.library == 0) continue;
      all.push_back({"before the library", false, inLine, immediate});
      if (!notification.installs) all.push_back({"behind the library", true, inLine, immediate});
    }
  }
  return all;
}

/// An interface has a status but no machine: a selection of profiles for it ends the process.
bool gap(ReentryWorld const& world) {
  if (!world.sw.root || !world.sw.root->linkFlapSm()) return false;
  for (auto const& member : world.sw.statusDir->intfStatus())
    if (world.sw.intfSm(member.key()) == nullptr) return true;
  return false;
}

/// The library's reactors were registered anew before their turn came, and so did not hear of the
/// change: a handleIntf for each interface makes up for it.
void makeUpForMissed(ReentryAction const& action, ReentryWorld& world) {
  std::string_view const name{action.name};
  if (name != "SwitchesNotificationOffAndOn" && name != "MakesZombiesAndBack") return;
  if (!world.sw.root || !world.sw.root->linkFlapSm()) return;
  for (Tarn::IntfId const& id : {world.ethernet1, world.ethernet2, world.ethernet3})
    world.sw.machine().handleIntf(id);
}

class Play {
 public:
  Play(Notification const& notification, Position const& position)
      : notification_{notification}, position_{position} {
    stage_.notification = &notification;
  }

  /// Sets the stage, has the meddler `act` once, and looks at what has become of everybody.
  template <typename Act, typename Repair>
  void run(Act act, Repair repair) {
    ReentryWorld& world = stage_.world;
    notification_.prepare(world);
    stage_.subject = notification_.subject(world);
    stage_.watching = position_.inLine ? notification_.library : Vek::kAllAttributes;
    // Watchers of the same attributes stand together, where the first of them came. One that is to
    // stand apart and behind the library must find nobody of its kind there before.
    if (position_.behindLibrary && notification_.library != 0)
      stage_.firstWatching = notification_.library;
    else
      stage_.firstWatching = stage_.watching;
    stage_.first = stage_.subject.listen(stage_.firstWatching);
    if (!position_.behindLibrary) stage_.meddler = stage_.subject.listen(stage_.watching);
    if (!notification_.installs) world.sw.start();
    if (position_.behindLibrary) stage_.meddler = stage_.subject.listen(stage_.watching);
    stage_.last = stage_.subject.listen(stage_.watching);
    stage_.witness = stage_.subject.listen(Vek::kAllAttributes);
    notification_.ready(world);

    Told const before = told();
    bool acted = false;
    auto const once = [&] {
      if (!std::exchange(acted, true)) act(stage_);
    };
    (position_.immediate ? stage_.meddler.ears->immediate : stage_.meddler.ears->heard) = once;
    EXPECT_NO_THROW(notification_.raise(world));
    EXPECT_TRUE(acted);
    repair(world);
    expectTold(before);
    EXPECT_EQ(world.sw.takeFailures().size(), stage_.failures);
    stage_.first = stage_.meddler = stage_.last = stage_.witness = {};
    stage_.latecomers.clear();
    if (plantLostMachine && world.sw.intfSm(world.ethernet3) != nullptr)
      (void)world.sw.machine().linkFlapIntfSmDel(world.ethernet3);
    world.expectEachChangeToldOnce();
    world.expectSettled();
  }

 private:
  struct Told {
    std::uint32_t changes;
    unsigned witness;
    unsigned witnessForFirst;
    unsigned witnessForLast;
    unsigned first;
    unsigned last;
  };

  Told told() const {
    auto const by = [](Listener const& listener, Vek::AttributeMask attributes) {
      return listener.watcher ? listener.ears->told(attributes) : 0;
    };
    return {stage_.subject.object ? stage_.subject.object->changes() : 0,
            by(stage_.witness, Vek::kAllAttributes),
            by(stage_.witness, stage_.firstWatching),
            by(stage_.witness, stage_.watching),
            by(stage_.first, stage_.firstWatching),
            by(stage_.last, stage_.watching)};
  }

  void expectTold(Told const& before) const {
    Told const now = told();
    // A Root counts installations as changes, told or not.
    if (stage_.subject.object) {
      EXPECT_EQ(now.witness - before.witness, now.changes - before.changes);
    }
    unsigned const changes = now.witnessForLast - before.witnessForLast;
    EXPECT_GE(changes, 1U);
    if (!stage_.firstLeft) {
      EXPECT_EQ(now.first - before.first, now.witnessForFirst - before.witnessForFirst);
    }
    if (!stage_.lastLeft) {
      EXPECT_EQ(now.last - before.last + stage_.lastMisses + (plantUntold ? 1 : 0), changes);
    }
  }

  Notification const& notification_;
  Position const& position_;
  Stage stage_;
};

std::string where(Notification const& notification, Position const& position, char const* action) {
  return std::string{notification.name} + ", " + position.name +
         (position.inLine ? ", in line" : ", apart") +
         (position.immediate ? ", in the immediate hook: " : ": ") + action;
}

/// Plays one combination, unless it ends the process by design.
template <typename Act, typename Repair>
void tryOut(Notification const& notification, Position const& position, char const* action,
            bool selects, bool removes, Act act, Repair repair) {
  current = where(notification, position, action);
  SCOPED_TRACE(current);
  // A selection that meets an interface with a status and without a machine ends the process. That
  // is meant so, and tested where the selections are.
  if (notification.fanOut && !position.behindLibrary && removes) {
    ++endsProcess;
    return;
  }
  bool ends = false;
  if ((plantUntold || plantLostMachine) && testing::Test::HasFailure()) return;  // it is found
  Play{notification, position}.run(
      [&](Stage& s) {
        ends = selects && gap(s.world);
        if (!ends) act(s);
      },
      repair);
  ++(ends ? endsProcess : combinations);
}

/// How many attributes have a notification in the table.
std::size_t attributes() {
  std::set<std::string_view> names;
  for (Notification const& notification : allNotifications()) {
    std::string_view const name{notification.name};
    names.insert(name.substr(0, name.find(' ')));
  }
  return names.size();
}

TEST(ReentryProduct, WhateverAWatcherDoesTheOthersAreToldOnceAndTheMachinesAreWhatIsDemanded) {
  std::size_t const actions = std::size(kListenerActions) + reentryActions().size();
  std::size_t places = 0;
  for (Notification const& notification : allNotifications()) {
    for (Position const& position : positions(notification)) {
      ++places;
      for (ListenerAction const& action : kListenerActions)
        tryOut(notification, position, action.name, action.selects, false, action.act,
               [](ReentryWorld&) {});
      for (ReentryAction const& action : reentryActions())
        tryOut(
            notification, position, action.name, action.selects, action.removes,
            [&](Stage& s) { action.act(s.world, Tarn::IntfId{notification.id}); },
            [&](ReentryWorld& world) {
              repairAfter(action, world);
              if (!position.behindLibrary) makeUpForMissed(action, world);
            });
    }
  }
  EXPECT_EQ(attributes(), watchedAttributes());
  EXPECT_EQ(combinations + endsProcess, places * actions);
  EXPECT_GE(combinations, 9000U);
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  std::signal(SIGABRT, tellWhere);
  std::string_view const planted = argc > 1 ? argv[1] : "";
  plantUntold = planted == "untold";
  plantUseAfterFree = planted == "use-after-free";
  plantLostMachine = planted == "lost-machine";
  int const result = RUN_ALL_TESTS();
  std::printf(
      "%s%zu changes of %zu attributes: %lu combinations, %lu more left out because they "
      "end the process by design%s\n",
      result == 0 ? "" : "FAILED: ", allNotifications().size(), attributes(), combinations,
      endsProcess, result == 0 ? "; 0 reports, everybody told once" : "");
  return result;
}
