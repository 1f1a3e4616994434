#include "tools/scenario/Commands.h"

namespace Scenario {

namespace {

enum class Throw { always };
enum class StateObject {
  activity,
  ethPhyIntfConfigDir,
  ethPhyIntfStatusDir,
  errdisableConfig,
  config,
  causeStatus
};

}  // namespace

template <>
inline constexpr std::array<std::string_view, 1> kWordsOf<Throw>{"throw"};

template <>
inline constexpr std::array<std::string_view, 6> kWordsOf<StateObject>{
    "activity", "ethPhyIntfConfigDir", "ethPhyIntfStatusDir", "errdisableConfig",
    "config",   "causeStatus"};

void addRootCommands(CommandTable& table) {
  table.add("watcher.add", "W [throw]",
            [](World& world, Vek::String const& name, std::optional<Throw> throws) {
              world.rootWatcherIs(name, throws.has_value());
            });

  table.add("watcher.del", "W",
            [](World& world, Vek::String const& name) { world.rootWatcherDel(name); });

  table.add("root.is", "CAUSE", [](World& world, Vek::String const& cause) {
    bool const isNew = world.install(cause);
    world.out().line(isNew ? "V new" : "V same");
  });

  table.add("root.del", "", [](World& world) {
    bool const removed = world.remove();
    world.out().line(removed ? "V some" : "V none");
  });

  table.add("swap",
            "activity|ethPhyIntfConfigDir|ethPhyIntfStatusDir|errdisableConfig|config|causeStatus",
            [](World& world, StateObject object) {
              switch (object) {
                case StateObject::activity:
                  return world.renewActivity();
                case StateObject::ethPhyIntfConfigDir:
                  return world.renewPhyConfigDir();
                case StateObject::ethPhyIntfStatusDir:
                  return world.renewStatusDir();
                case StateObject::errdisableConfig:
                  return world.renewErrdisableConfig();
                case StateObject::config:
                  return world.renewConfig();
                case StateObject::causeStatus:
                  return world.renewCauseStatus();
              }
            });
}

}  // namespace Scenario
