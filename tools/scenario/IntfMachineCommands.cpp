#include "tools/scenario/Commands.h"
#include "tools/scenario/StateObjects.h"

namespace Scenario {

namespace {

using IntfSm = LinkFlap::LinkFlapIntfSm;

void addFlagCommands(CommandTable& table) {
  table.addForIntfSm("intfsm.enable", "IF 0|1",
                     [](World&, IntfSm::Ptr const& sm, bool on) { sm->enableIs(on); });

  table.addForIntfSm("intfsm.initialized", "IF 0|1",
                     [](World&, IntfSm::Ptr const& sm, bool on) { sm->initializedIs(on); });
}

void addHandlerCommands(CommandTable& table) {
  // Unlike the others, this one is called without a machine too: so that ends by an assertion.
  table.add("intfsm.manage", "IF", [](World& world, Tarn::IntfId const& intf) {
    LinkFlap::manageProfileSm(world.intfSm(intf));
  });

  table.addForIntfSm("intfsm.handleInitialized", "IF",
                     [](World&, IntfSm::Ptr const& sm) { sm->handleInitialized(); });

  table.addForIntfSm("intfsm.handleLinkFlapValues", "IF",
                     [](World&, IntfSm::Ptr const& sm) { sm->handleLinkFlapValues(); });

  table.addForIntfSm(
      "intfsm.handleProfileList", "IF NAME",
      [](World&, IntfSm::Ptr const& sm, Vek::String const& name) { sm->handleProfileList(name); });

  table.addForIntfSm("intfsm.handleIntfConfigEnabled", "IF ARGIF",
                     [](World&, IntfSm::Ptr const& sm, Tarn::IntfId const& argument) {
                       sm->handleIntfConfigEnabled(argument);
                     });
}

void addInputCommands(CommandTable& table) {
  table.addForIntfSm("intfsm.configIs", "IF same|new MAXFLAPS INTERVAL",
                     [](World&, IntfSm::Ptr const& sm, Redirection<ConfigValues, false> const& to) {
                       if (to.target == Target::fresh) {
                         sm->configIs(configOf(to.values));
                       } else {
                         sm->configIs(sm->config());
                       }
                     });

  table.addForIntfSm("intfsm.intfConfigIs", "IF same|null|new 0|1 [NAME=0|1 ...]",
                     [](World&, IntfSm::Ptr const& sm, Redirection<IntfValues, true> const& to) {
                       switch (to.target) {
                         case Target::held:
                           return sm->intfConfigIs(sm->intfConfig());
                         case Target::none:
                           return sm->intfConfigIs(nullptr);
                         case Target::fresh:
                           return sm->intfConfigIs(intfConfigOf(sm->intfId(), to.values));
                       }
                     });
}

}  // namespace

void addIntfMachineCommands(CommandTable& table) {
  addFlagCommands(table);
  addHandlerCommands(table);
  addInputCommands(table);

  table.add("intfsm.nullstatus", "", [](World& world) {
    auto const sm =
        IntfSm::LinkFlapIntfSmIs(nullptr, world.config(), nullptr, nullptr, world.causeStatus());
    Tarn::IntfId const unnamed{""};
    world.out().line("V ", sm->intfId() == unnamed, ' ', sm->fwkKey() == unnamed);
  });
}

}  // namespace Scenario
