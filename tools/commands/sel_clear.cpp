// vek-ipmi sel clear
#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <unistd.h>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/collect/sel_info.h"
#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/print/json.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

std::string plural(unsigned count)
{
    return std::to_string(count) + (count == 1 ? " record" : " records");
}

// Whether a person says so.
bool agrees(unsigned entries)
{
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO))
        throw Failure{Status::usage,
                      "the event log was not cleared: there is "
                      "nobody to ask",
                      "Without a terminal use --yes."};
    std::cerr << "Clear all " << plural(entries) << " of the event log? [y/N] "
              << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

// Results of IpmiIfc::clearSel.
struct Refusal
{
    int result;
    Failure failure;
};

void clear(Device& device)
{
    const Refusal refusals[] = {
        {2,
         {Status::refused, "the controller was busy, or failed to erase",
          "Wait a minute, look with 'vek-ipmi sel info', and try again."}},
        {4,
         {Status::failed, "no answer to Clear SEL",
          "Look with 'vek-ipmi sel info' whether it was cleared."}},
        {5,
         {Status::refused, "the controller refused to clear the event log",
          "--verbose shows the code it gave."}},
    };
    int result = 0;
    const auto clear = [&] {
        result = Ipmi::IpmiIfc::clearSel(0);
        return 0;
    };
    device.ask(clear, [] { return std::string{"clearing the event log ..."}; });
    for (const Refusal& refusal : refusals)
        if (refusal.result == result)
            throw refusal.failure;
}

// Some controllers erase for seconds after they have answered, and some begin
// the new log with a record that tells of it.
std::string afterwards(unsigned before, unsigned after)
{
    if (after == 0)
        return "";
    return after < before ? "; " + plural(after) + " new in it"
                          : "; the controller still reports " + plural(after) +
                                ", it may be erasing";
}

std::string inWords(unsigned before, unsigned after)
{
    return before == 0
               ? "the event log was empty already\n"
               : plural(before) + " cleared" + afterwards(before, after) + '\n';
}

Status run(bool yes, const Options& options)
{
    Device device;
    const unsigned before = entriesOf(readSelState(device));
    if (before != 0 && !yes && !agrees(before)) {
        std::cerr << "vek-ipmi: the event log was not cleared\n";
        return Status::done;
    }
    if (before != 0)
        clear(device);
    const unsigned after = before == 0 ? 0 : entriesOf(readSelState(device));
    Json json = document("sel-clear");
    json["before"] = before;
    json["after"] = after;
    put(options.json ? toText(json) : inWords(before, after));
    return Status::done;
}

} // namespace

void addSelClear(CLI::App& sel, Run& runs)
{
    CLI::App* clear = sel.add_subcommand("clear", "Delete all records");
    const auto yes = std::make_shared<bool>();
    clear->add_flag("--yes,-y", *yes, "Do not ask");
    addNotes(*clear, "Save them before with: vek-ipmi sel save FILE");
    clear->callback([yes, &runs] {
        runs = [yes = *yes](const Options& options) {
            return run(yes, options);
        };
    });
}

} // namespace Tool
