// Finding the FRU device that a person means.
#include <CLI/CLI.hpp>

#include <functional>

#include "tools/commands/discovery.h"
#include "tools/commands/fru.h"
#include "tools/commands/number.h"
#include "tools/print/fru_words.h"
#include "tools/print/words.h"

namespace Tool
{

namespace
{

using Locators = std::vector<FruLocator>;

Locators select(const Locators& all,
                const std::function<bool(const FruLocator&)>& fits)
{
    Locators found;
    std::copy_if(all.begin(), all.end(), std::back_inserter(found), fits);
    return found;
}

/// "0@0x72", "0@0x72/6", "0@0x72/6.1"
struct Place
{
    uint8_t id = 0, address = 0, channel = 0, lun = 0;
    bool isExact = false; ///< Else on any channel and LUN.

    bool read(std::string text);
    bool fits(const FruLocator& locator) const
    {
        return locator.deviceId == id && locator.address == address &&
               (!isExact || (locator.channel == channel && locator.lun == lun));
    }
};

// Takes what is behind `mark` off `text`; whether it is a number, or missing.
bool takeLast(std::string& text, char mark, uint8_t& number, bool& isGiven)
{
    const size_t at = text.find(mark);
    isGiven = at != std::string::npos;
    if (!isGiven)
        return true;
    const bool isNumber = readByte(text.substr(at + 1), number);
    text.erase(at);
    return isNumber;
}

bool Place::read(std::string text)
{
    bool hasLun, hasAddress;
    return takeLast(text, '.', lun, hasLun) &&
           takeLast(text, '/', channel, isExact) && (isExact || !hasLun) &&
           takeLast(text, '@', address, hasAddress) && hasAddress &&
           readByte(text, id);
}

// A name in other letters is a guess, so it goes last.
Locators byName(const Locators& all, const std::string& what)
{
    Locators found = select(
        all, [&](const FruLocator& locator) { return locator.name == what; });
    if (found.empty())
        found = select(all, [&](const FruLocator& locator) {
            return !what.empty() && lowered(locator.name) == lowered(what);
        });
    return found;
}

// A number says it all, with or without a record.
Locators byNumber(const Locators& all, uint8_t id)
{
    const Locators found = select(all, [&](const FruLocator& locator) {
        return locator.isOwn() && locator.deviceId == id;
    });
    return {found.empty() ? fruLocatorOf(id) : found.front()};
}

// Two records of the very same device are one device.
Locators byPlace(const Locators& all, const Place& place)
{
    Locators found = select(
        all, [&](const FruLocator& locator) { return place.fits(locator); });
    if (place.isExact && found.size() > 1)
        found.resize(1);
    return found;
}

Locators candidates(const Locators& all, const std::string& what)
{
    uint8_t id = 0;
    if (readByte(what, id))
        return byNumber(all, id);
    Place place;
    return place.read(what) ? byPlace(all, place) : byName(all, what);
}

std::string listOf(const Locators& locators)
{
    std::string list;
    for (const FruLocator& locator : locators)
        list += (list.empty() ? "" : "\n  ") + fruNumber(locator) + "  " +
                (locator.name.empty() ? placeText(locator) : locator.name);
    return list;
}

FruLocator find(const Locators& all, const std::string& what, bool isWhole)
{
    Locators found = candidates(all, what);
    if (found.size() == 1)
        return found.front();
    const std::string quoted = "'" + what + "'";
    if (found.size() > 1)
        throw Failure{Status::usage,
                      quoted + " fits " + std::to_string(found.size()) +
                          " FRU devices; name one by its number:",
                      listOf(found)};
    if (!isWhole)
        throw Failure{Status::failed,
                      "no FRU device " + quoted +
                          " among the records that could be read",
                      "Try again, or name it by its number."};
    throw Failure{Status::usage,
                  "no FRU device " + quoted + "; there are:", listOf(all)};
}

constexpr char deviceHelp[] =
    "Its number (decimal or 0x..), for another controller's NUMBER@ADDRESS or "
    "NUMBER@ADDRESS/CHANNEL, or its name";
constexpr char noNamesHelp[] =
    "Do not read the records that tell its name and entity, which takes longer "
    "than the device; it is named by its number then";

constexpr char unnamed[] = "FRU devices of which only their records tell are "
                           "missing, and names.";

} // namespace

std::pair<CLI::Option*, CLI::Option*> addChoice(CLI::App& app,
                                                FruChoice& choice)
{
    const auto isEmpty = [](const std::string& text) {
        return std::string{text.empty() ? "must not be empty" : ""};
    };
    CLI::Option* device = app.add_option("DEVICE", choice.device, deviceHelp)
                              ->check(CLI::Validator{isEmpty, ""});
    return {device, app.add_flag("--no-names", choice.noNames, noNamesHelp)};
}

void checkChoice(const FruChoice& choice)
{
    uint8_t id = 0;
    if (choice.noNames && !readByte(choice.device, id))
        throw CLI::ValidationError(
            "--no-names", "goes with the number of a device, from 0 to 255");
}

std::vector<FruLocator> locate(Device& device, const FruChoice& choice,
                               std::vector<Failure>& gaps)
{
    // Records cost hundreds of exchanges, a device some ten; but who asks for
    // number 3 wants to see what that is.
    const bool isWhole =
        choice.noNames ||
        readForNames(device, unnamed, gaps, {record_types::fruLocator});
    Locators all = fruLocators();
    if (choice.device.empty())
        return all;
    try {
        return {find(all, choice.device, isWhole)};
    } catch (const Failure&) {
        complainOf(gaps);
        throw;
    }
}

} // namespace Tool
