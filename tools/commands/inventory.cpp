// vek-ipmi inventory
#include "tools/collect/inventory.h"

#include <CLI/CLI.hpp>

#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/commands/fru.h"
#include "tools/commands/missing.h"
#include "tools/print/inventory.h"
#include "tools/print/lan.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

void note(Inventory& inventory, const char* part, std::vector<Failure> failures)
{
    for (Failure& failure : failures)
        inventory.gaps.push_back({part, std::move(failure)});
}

// A part that fails does not take the others along.
void readInfo(Device& device, Inventory& inventory)
{
    try {
        inventory.info = collectInfo(device);
        note(inventory, "info", gapsOf(*inventory.info));
    } catch (const Failure& failure) {
        note(inventory, "info", {{Status::failed, failure.what, failure.next}});
    }
}

void readRecords(Device& device, Inventory& inventory)
{
    std::vector<Failure> gaps;
    readForNames(device,
                 "Entities, and FRU devices other than 0, may be "
                 "missing.",
                 gaps);
    note(inventory, "entities", std::move(gaps));
    inventory.repository = repositorySoFar();
    inventory.entities = entitiesOf(collectRecords());
}

void readFrus(Device& device, Inventory& inventory)
{
    inventory.frus = collectFrus(device, fruLocators());
    const std::vector<FruDevice> frus = inventory.knownFrus();
    if (frus.empty())
        note(inventory, "fru",
             {{Status::done, "the controller has no FRU device", ""}});
    note(inventory, "fru", gapsOf(frus));
}

void readLan(Device& device, Inventory& inventory)
{
    inventory.lan = collectLan(device);
    if (inventory.lan.interfaces.empty() && inventory.lan.gaps().empty())
        note(inventory, "lan",
             {{Status::done, whyNoLan(inventory.lan).what, ""}});
    note(inventory, "lan", failuresOf(inventory.lan));
}

Inventory readInventory()
{
    Device device;
    Inventory inventory;
    readInfo(device, inventory);
    readRecords(device, inventory);
    readFrus(device, inventory);
    readLan(device, inventory);
    return inventory;
}

Status run(const Options& options)
{
    const Inventory inventory = readInventory();
    if (!inventory.isEmpty())
        put(options.json ? toText(toJson(inventory))
                         : toPage(inventory, TreeStyle::ofOutput()));
    std::vector<Failure> failures;
    for (const InventoryGap& gap : inventory.gaps)
        failures.push_back(gap.failure);
    return complainOf(failures);
}

} // namespace

void addInventory(CLI::App& app, Run& runs)
{
    CLI::App* inventory = app.add_subcommand(
        "inventory",
        "Controller, FRU devices, entities and LAN on one page, for support");
    addNotes(*inventory,
             "All of it with: info, fru, entities, lan; --json has it too.\n"
             "What a controller does not have is no failure.");
    inventory->callback([&runs] { runs = run; });
}

} // namespace Tool
