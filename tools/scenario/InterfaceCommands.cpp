#include "tools/scenario/Commands.h"
#include "tools/scenario/StateObjects.h"

namespace Scenario {

namespace {

void phyConfigIs(World& world, Tarn::IntfId const& intf, std::optional<std::uint32_t> state) {
  world.phyConfigDir()->intfConfigIs(intf, phyConfigOf(intf, state.value_or(0)));
}

void statusIs(World& world, Tarn::IntfId const& intf, std::optional<std::uint32_t> rawStatus) {
  world.statusDir()->intfStatusIs(intf, statusOf(intf, rawStatus.value_or(0)));
}

void addPhyConfigCommands(CommandTable& table) {
  table.add("phycfg.add", "IF [STATE]",
            [](World& world, Tarn::IntfId const& intf, std::optional<std::uint32_t> state) {
              phyConfigIs(world, intf, state);
            });

  table.add("phycfg.replace", "IF [STATE]",
            [](World& world, Tarn::IntfId const& intf, std::optional<std::uint32_t> state) {
              if (world.phyConfigDir()->intfConfig().has(intf)) phyConfigIs(world, intf, state);
            });

  table.add("phycfg.del", "IF", [](World& world, Tarn::IntfId const& intf) {
    auto const dir = world.phyConfigDir();
    if (dir->intfConfig().has(intf)) dir->intfConfigDel(intf);
  });

  table.add("phycfg.state", "IF N",
            [](World& world, Tarn::IntfId const& intf, std::uint32_t number) {
              auto const config = writable(world.phyConfigDir()->intfConfig(intf));
              auto const state = static_cast<Interface::PhyConfigState>(number);
              if (config && config->phyConfigState() != state) config->phyConfigStateIs(state);
            });
}

void addStatusCommands(CommandTable& table) {
  table.add("status.add", "IF [RAW]",
            [](World& world, Tarn::IntfId const& intf, std::optional<std::uint32_t> rawStatus) {
              statusIs(world, intf, rawStatus);
            });

  table.add("status.replace", "IF [RAW]",
            [](World& world, Tarn::IntfId const& intf, std::optional<std::uint32_t> rawStatus) {
              if (world.statusDir()->intfStatus().has(intf)) statusIs(world, intf, rawStatus);
            });

  table.add("status.del", "IF", [](World& world, Tarn::IntfId const& intf) {
    auto const dir = world.statusDir();
    if (dir->intfStatus().has(intf)) dir->intfStatusDel(intf);
  });

  table.add("link", "IF N", [](World& world, Tarn::IntfId const& intf, std::uint32_t number) {
    auto const status = writable(world.statusDir()->intfStatus(intf));
    auto const rawStatus = static_cast<Interface::RawLinkStatus>(number);
    if (status && status->rawLinkStatus() != rawStatus) status->rawLinkStatusIs(rawStatus);
  });
}

}  // namespace

void addInterfaceCommands(CommandTable& table) {
  addPhyConfigCommands(table);
  addStatusCommands(table);
}

}  // namespace Scenario
