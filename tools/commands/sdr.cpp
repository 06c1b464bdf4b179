// vek-ipmi sdr
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/print/output.h"
#include "tools/print/record.h"

namespace Tool
{

namespace
{

Status run(bool raw, const Options& options)
{
    Repository repository;
    std::vector<Record> records;
    {
        Device device;
        repository = readRecordsOnly(device);
        records = collectRecords();
    }
    put(options.json ? toText(toJson(records, repository, raw))
                     : toTable(records, raw, Terminal::ofOutput()));
    return complainOfMissing(repository);
}

constexpr char notes[] =
    "Records stand by type. A record that several sensors share appears once\n"
    "for each of them.";

} // namespace

void addSdr(CLI::App& app, Run& runs)
{
    CLI::App* sdr =
        app.add_subcommand("sdr", "The records of the sensor data repository");
    const auto raw = std::make_shared<bool>();
    sdr->add_flag("--raw", *raw, "With the bytes of each");
    addNotes(*sdr, notes);
    sdr->callback([raw, &runs] {
        runs = [raw](const Options& options) {
            return run(*raw, options);
        };
    });
}

} // namespace Tool
