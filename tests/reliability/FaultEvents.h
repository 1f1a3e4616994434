#pragma once

#include <functional>
#include <optional>
#include <random>
#include <string>

#include "tests/reliability/FaultWorld.h"

/// One call of a host, as often as it is wanted.
struct FaultEvent {
  std::string name;
  /// The call. Nothing in it but the library needs memory.
  std::function<void(FaultWorld&)> act;
  /// What a host does when a callback of the call has failed: the handler that the call had set off
  /// is run again.
  std::function<void(FaultWorld&)> again{};
  /// A link comes up on this interface.
  std::optional<Tarn::IntfId> flapOf{};
  /// What it leaves does not stay in the scenario.
  bool probe{false};
};

/// The next event of a random scenario. It may prepare the world: time goes on, a link goes down.
FaultEvent nextEvent(FaultWorld& world, std::mt19937& random);
