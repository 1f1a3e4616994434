#include "statemachines/SourcePoints.h"

#include "tools/scenario/Commands.h"

namespace Scenario {

namespace {

/// One level of the trace facility, or both when none is named, and what it is set to.
struct TraceSetting {
  std::optional<int> level;
  bool on{false};
};

constexpr int kDecisions{2};
constexpr int kDetail{8};

}  // namespace

template <>
struct Argument<TraceSetting> {
  static TraceSetting read(Words& words) {
    constexpr std::string_view kOnOff{"on or off"};
    constexpr std::string_view kFirst{"on, off, or one of the levels 8 and 2"};
    TraceSetting setting;
    std::string_view expected = kFirst;
    std::string_view word = words.take(expected);
    if (word == "8" || word == "2") {
      setting.level = word == "8" ? kDetail : kDecisions;
      expected = kOnOff;
      word = words.take(expected);
    }
    if (word != "on" && word != "off") words.refuse(expected);
    setting.on = word == "on";
    return setting;
  }
};

void addClockCommands(CommandTable& table) {
  table.add("clock", "T", [](World& world, double time) { world.clock().secondsIs(time); });

  table.add("clock.step", "D", [](World& world, double step) { world.clock().stepIs(step); });

  table.add("trace", "[8|2] on|off", [](World& /*world*/, TraceSetting const& setting) {
    for (int const level : {kDecisions, kDetail})
      if (setting.level.value_or(level) == level)
        LinkFlap::traceHandle().levelIs(level, setting.on);
  });
}

}  // namespace Scenario
