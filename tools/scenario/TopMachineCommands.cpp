#include "tools/scenario/Commands.h"
#include "tools/scenario/StateObjects.h"

namespace Scenario {

namespace {

using Top = LinkFlap::LinkFlapSm;

void addFlagCommands(CommandTable& table) {
  table.addForTopSm("active", "0|1",
                    [](World&, Top& top, bool on) { top.hasNotificationActiveIs(on); });

  table.addForTopSm("zombie", "0|1",
                    [](World&, Top& top, bool on) { top.vekDoZombieReactors(on); });

  table.addForTopSm("top.initialized", "0|1",
                    [](World&, Top& top, bool on) { top.initializedIs(on); });
}

void addHandlerCommands(CommandTable& table) {
  table.addForTopSm("call.handleIntf", "IF",
                    [](World&, Top& top, Tarn::IntfId const& intf) { top.handleIntf(intf); });

  table.addForTopSm(
      "call.handleProfileConfig", "NAME",
      [](World&, Top& top, Vek::String const& name) { top.handleProfileConfig(name); });

  table.addForTopSm(
      "call.handleDefaultProfileList", "NAME",
      [](World&, Top& top, Vek::String const& name) { top.handleDefaultProfileList(name); });

  table.addForTopSm("call.handleDisabled", "CAUSE",
                    [](World&, Top& top, Vek::String const& cause) { top.handleDisabled(cause); });

  table.addForTopSm("call.handleInitialized", "",
                    [](World&, Top& top) { top.handleInitialized(); });
}

void addDeletionCommands(CommandTable& table) {
  table.addForTopSm("intfsm.del", "IF", [](World& world, Top& top, Tarn::IntfId const& intf) {
    bool const removed{top.linkFlapIntfSmDel(intf)};
    world.out().line(removed ? "V some" : "V none");
  });

  table.addForTopSm("intfsm.delall", "", [](World&, Top& top) { top.linkFlapIntfSmDelAll(); });

  table.addForTopSm("intfsm.delete", "IF", [](World&, Top& top, Tarn::IntfId const& intf) {
    LinkFlap::deleteLinkFlapIntfSm(&top, intf);
  });
}

}  // namespace

void addTopMachineCommands(CommandTable& table) {
  addFlagCommands(table);
  addHandlerCommands(table);
  addDeletionCommands(table);
}

}  // namespace Scenario
