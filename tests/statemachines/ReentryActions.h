#pragma once

#include <vector>

#include "tests/statemachines/ReentryWorld.h"

/// What the watcher does, given the interface that the notification is about.
struct ReentryAction {
  char const* name;
  ReentryWorld::Act act;
  /// It makes the top-level machine select profiles for every interface that it finds.
  bool selects{false};
  /// It leaves an interface that has a status without a machine.
  bool removes{false};
  /// It goes behind the inputs' back; a handleIntf for each interface makes up for it.
  bool repair{false};
  /// It installs for other objects. An installation under way comes to its end later and wins, so
  /// it is repeated.
  bool reinstall{false};
};

/// All of them.
std::vector<ReentryAction> const& reentryActions();

/// Makes up for what an action has done behind the inputs' back, or what an installation that was
/// under way has done since.
void repairAfter(ReentryAction const& action, ReentryWorld& world);
