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

} // namespace Tool

#endif
