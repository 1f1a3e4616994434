#pragma once

#include "tools/scenario/CommandTable.h"

namespace Scenario {

// The commands by subject, each defined in the file of its name.

// On the state objects and the Root only, as the agents of a switch use them.
void addClockCommands(CommandTable& table);
void addConfigCommands(CommandTable& table);
void addInterfaceCommands(CommandTable& table);
void addErrdisableCommands(CommandTable& table);
void addRootCommands(CommandTable& table);
void addDumpCommand(CommandTable& table);

// On the machines themselves.
void addTopMachineCommands(CommandTable& table);
void addIntfMachineCommands(CommandTable& table);
void addProfileMachineCommands(CommandTable& table);
void addQueueCommands(CommandTable& table);
void addReinstantiationCommands(CommandTable& table);

// On anything that has a path, through the generic interface alone.
void addTreeCommands(CommandTable& table);

}  // namespace Scenario
