// vek-ipmi fru [DEVICE]
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/fru.h"
#include "tools/print/completion_codes.h"
#include "tools/print/fru.h"
#include "tools/print/fru_words.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

// Alone it is the whole result: there is nothing to show beside it.
void requireAny(const FruChoice& choice, const std::vector<FruDevice>& devices)
{
    if (devices.size() != 1)
        return;
    const FruDevice& device = devices.front();
    const bool isNoDevice =
        device.isAbsent() && !device.locator.isRecord && !choice.device.empty();
    if (!device.locator.isLogical || device.completion.ok() ||
        (device.isAbsent() && !isNoDevice))
        return;
    Failure failure =
        failureOf(placeText(device.locator) +
                      (isNoDevice ? " is not there" : " was not read"),
                  commands::getFruInventoryAreaInfo, device.completion);
    if (isNoDevice)
        failure.next = "List those that are known with: vek-ipmi fru";
    throw failure;
}

Failure gapOf(const FruDevice& device)
{
    const std::string name = nameText(device.locator);
    if (!device.completion.ok())
        return failureOf(name + " was not read",
                         commands::getFruInventoryAreaInfo, device.completion);
    if (const auto failure = device.readFailure())
        return failureOf(name + " was not read to the end",
                         commands::readFruData, *failure);
    return {Status::failed,
            name + " may be misread: it is accessed by words, and this program "
                   "takes offsets for bytes",
            "What does not fit is said there."};
}

Status run(const FruChoice& choice, const Options& options)
{
    std::vector<Failure> gaps;
    std::vector<FruDevice> devices;
    {
        Device device;
        devices = collectFrus(device, locate(device, choice, gaps));
    }
    try {
        requireAny(choice, devices);
    } catch (const Failure&) {
        complainOf(gaps);
        throw;
    }
    if (options.json) {
        Json json = document("fru");
        json["devices"] = toJson(devices);
        put(toText(json));
    } else {
        put((choice.isShort ? toSummary(devices, Terminal::ofOutput())
                            : toTable(devices, Terminal::ofOutput())) +
            (choice.device.empty() ? "\n" + countText(devices) + "\n" : ""));
    }
    for (Failure& gap : gapsOf(devices))
        gaps.push_back(std::move(gap));
    return complainOf(gaps);
}

constexpr char notes[] =
    "Of each device all areas with all fields; what is wrong in one is said\n"
    "there. A device that is not present is no failure, except for a number "
    "that no\nrecord tells of.\n\n"
    "Examples:\n"
    "  vek-ipmi fru --short\n"
    "  vek-ipmi fru psu1\n"
    "  vek-ipmi fru 0 --no-names\n"
    "  vek-ipmi fru save 0 main-board.bin && vek-ipmi fru decode "
    "main-board.bin";

} // namespace

std::vector<Failure> gapsOf(const std::vector<FruDevice>& devices)
{
    std::vector<Failure> gaps;
    for (const FruDevice& device : devices)
        if (device.isFailed()) {
            gaps.push_back(gapOf(device));
            // The others were read: the result is a partial one.
            gaps.back().status = Status::failed;
        }
    return gaps;
}

void addFru(CLI::App& app, Run& runs)
{
    CLI::App* fru = app.add_subcommand(
        "fru", "What the platform's replaceable parts say about themselves");
    fru->require_subcommand(0, 1);
    const auto choice = std::make_shared<FruChoice>();
    const auto [device, noNames] = addChoice(*fru, *choice);
    const std::vector<CLI::Option*> own = {
        device, noNames,
        fru->add_flag("--short", choice->isShort, "A line for each device")};
    addNotes(*fru, notes);
    addFruSave(*fru, runs);
    addFruDecode(*fru, runs);
    fru->callback([fru, own, choice, &runs] {
        if (!fru->get_subcommands().empty()) {
            for (const CLI::Option* option : own)
                if (option->count() != 0)
                    throw CLI::ExtrasError({option->get_name()});
            return;
        }
        checkChoice(*choice);
        runs = [choice](const Options& options) {
            return run(*choice, options);
        };
    });
}

} // namespace Tool
