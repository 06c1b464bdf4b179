/// The subcommands. Each adds itself to the command line, and puts what it
/// does into `run` when it is the one that was asked for.
#ifndef VEK_TOOLS_COMMANDS_COMMANDS_H
#define VEK_TOOLS_COMMANDS_COMMANDS_H

#include "tools/options.h"

namespace CLI
{
class App;
}

namespace Tool
{

void addInfo(CLI::App& app, Run& run);
void addRaw(CLI::App& app, Run& run);
void addIdentify(CLI::App& app, Run& run);
void addOs(CLI::App& app, Run& run);
void addSensors(CLI::App& app, Run& run);
void addSensor(CLI::App& app, Run& run);
void addThreshold(CLI::App& app, Run& run);
void addHysteresis(CLI::App& app, Run& run);
void addEvents(CLI::App& app, Run& run);
void addSdr(CLI::App& app, Run& run);
void addSel(CLI::App& app, Run& run);
void addEntities(CLI::App& app, Run& run);
void addInventory(CLI::App& app, Run& run);
void addLan(CLI::App& app, Run& run);
void addFru(CLI::App& app, Run& run);
void addHealth(CLI::App& app, Run& run);
void addCapture(CLI::App& app, Run& run);

/// Puts a text below a subcommand's options, before what all of them share.
void addNotes(CLI::App& subcommand, const std::string& text);

} // namespace Tool

#endif
