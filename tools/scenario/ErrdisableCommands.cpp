#include "tools/scenario/Commands.h"

namespace Scenario {

void addErrdisableCommands(CommandTable& table) {
  table.add("disabled", "CAUSE 0|1", [](World& world, Vek::String const& cause, bool off) {
    auto const config = world.errdisableConfig();
    bool const* const present = config->disabled().find(cause);
    if (present == nullptr || *present != off) config->disabledIs(cause, off);
  });

  table.add("disabled.del", "CAUSE", [](World& world, Vek::String const& cause) {
    auto const config = world.errdisableConfig();
    if (config->disabled().has(cause)) config->disabledDel(cause);
  });

  // The record is written here as the library writes it: without a look at what it holds.

  table.add("cause.set", "IF T", [](World& world, Tarn::IntfId const& intf, double time) {
    world.causeStatus()->intfStatusIs(intf, time);
  });

  table.add("cause.del", "IF", [](World& world, Tarn::IntfId const& intf) {
    world.causeStatus()->intfStatusDel(intf);
  });
}

}  // namespace Scenario
