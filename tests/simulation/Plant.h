#pragma once

#include <array>
#include <string_view>

namespace Simulation {

/// Faults that can be planted in the model, to show that the comparison notices each.
enum class Plant {
  none,
  windowInclusive,
  atLeastLimit,
  fractionalInterval,
  trackedExclusive,
  recordAtFlapTime,
  falseMemberKept,
  emptyByValue,
  causeGovernsAll,
  enabledWhenNew,
  indexRestarts,
  ageingKeepsCounters,
  newestNotReplayed,
  ownHistoryOnly,
  blankInMessage,
  switchedOffKeepsRecord,
  clockFollowsBack,
  profileChangeKeepsFlaps,
  everyMachineReset,
  toldBackward,
  rootToldAgain,
};

struct PlantName {
  std::string_view name;
  Plant plant;
  std::string_view what;
};

// clang-format off
inline constexpr std::array kPlants{
    PlantName{"window-inclusive",           Plant::windowInclusive,         "a flap as old as the window ages out"},
    PlantName{"at-least-limit",             Plant::atLeastLimit,            "every flap beyond the limit is a violation"},
    PlantName{"fractional-interval",        Plant::fractionalInterval,      "an interval counts with its fraction"},
    PlantName{"tracked-exclusive",          Plant::trackedExclusive,        "the last tracked interval does not count"},
    PlantName{"record-at-flap-time",        Plant::recordAtFlapTime,        "the record takes the flap's time"},
    PlantName{"false-member-kept",          Plant::falseMemberKept,         "a list member with the value false keeps its machine"},
    PlantName{"empty-by-value",             Plant::emptyByValue,            "a list of false members counts as empty"},
    PlantName{"cause-governs-all",          Plant::causeGovernsAll,         "the cause switch drops interfaces with settings of their own"},
    PlantName{"enabled-when-new",           Plant::enabledWhenNew,          "admission enables new machines only"},
    PlantName{"index-restarts",             Plant::indexRestarts,           "an emptied queue starts at index 0"},
    PlantName{"ageing-keeps-counters",      Plant::ageingKeepsCounters,     "counters are not zeroed before the replay"},
    PlantName{"newest-not-replayed",        Plant::newestNotReplayed,       "the replay leaves the newest flap out"},
    PlantName{"own-history-only",           Plant::ownHistoryOnly,          "an err-disable clears one profile only"},
    PlantName{"blank-in-message",           Plant::blankInMessage,          "a blank before \"violations\""},
    PlantName{"switched-off-keeps-record",  Plant::switchedOffKeepsRecord,  "switching an interface off keeps its record"},
    PlantName{"clock-follows-back",         Plant::clockFollowsBack,        "the clock follows its source backward"},
    PlantName{"profile-change-keeps-flaps", Plant::profileChangeKeepsFlaps, "a changed profile keeps its history"},
    PlantName{"every-machine-reset",        Plant::everyMachineReset,       "global values reset every machine without a profile configuration"},
    PlantName{"told-backward",              Plant::toldBackward,            "the newest profile machine hears of a flap first"},
    PlantName{"root-told-again",            Plant::rootToldAgain,           "an unchanged installation is told to the Root's watchers"},
};
// clang-format on

}  // namespace Simulation
