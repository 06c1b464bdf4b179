// vek-ipmi entities
#include "tools/collect/entity.h"

#include <CLI/CLI.hpp>

#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/print/entity.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

Status run(bool noSensors, const Options& options)
{
    Repository repository;
    std::vector<Entity> entities;
    {
        Device device;
        repository = readRecordsOnly(device);
        entities = entitiesOf(collectRecords());
    }
    TreeStyle style = TreeStyle::ofOutput();
    style.sensors = !noSensors;
    put(options.json ? toText(toJson(entities, repository))
                     : toTree(entities, style));
    return complainOfMissing(repository);
}

} // namespace

void addEntities(CLI::App& app, Run& runs)
{
    CLI::App* entities = app.add_subcommand(
        "entities", "The parts of the machine: what contains what");
    const auto noSensors = std::make_shared<bool>();
    entities->add_flag("--no-sensors", *noSensors,
                       "An overview without the names of sensors (no effect on "
                       "--json)");
    addNotes(*entities, "Parts are those that sensors, locators and "
                        "associations among the sensor\ndata records name; no "
                        "sensor is asked.");
    entities->callback([noSensors, &runs] {
        runs = [noSensors = *noSensors](const Options& options) {
            return run(noSensors, options);
        };
    });
}

} // namespace Tool
