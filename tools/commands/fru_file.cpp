// vek-ipmi fru save DEVICE FILE, fru decode FILE
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "tools/collect/sel_file.h"
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

struct Arguments
{
    FruChoice choice;
    std::string file;
};

// @throws Failure when there is nothing to save.
void requireBytes(const FruImage& image, const FruLocator& locator)
{
    const std::string unsaved = nameText(locator) + " was not saved";
    if (image.byWords)
        throw Failure{Status::failed,
                      unsaved + ": it is accessed by words, not by bytes",
                      "Look at it with: vek-ipmi fru"};
    if (!image.bytes.empty())
        return;
    if (image.completion.ok())
        throw Failure{Status::failed,
                      unsaved + ": it says that it holds 0 bytes", ""};
    throw failureOf(unsaved, commands::readFruData, image.completion);
}

FruLocator locateOne(Device& device, const FruChoice& choice,
                     std::vector<Failure>& gaps)
{
    FruLocator locator = locate(device, choice, gaps).front();
    if (!locator.isLogical)
        throw Failure{Status::usage,
                      nameText(locator) +
                          " was not saved: no FRU command reaches it",
                      ""};
    return locator;
}

void putSaved(const std::string& path, const FruLocator& locator, size_t count,
              const Options& options)
{
    if (!options.json) {
        put(std::to_string(count) + " bytes of " + nameText(locator) + " in " +
            printable(path) + '\n');
        return;
    }
    Json json = document("fru-save");
    json["file"] = printable(path);
    json["bytes"] = count;
    json["deviceId"] = locator.deviceId;
    json["name"] = locator.name.empty() ? Json(nullptr) : Json(locator.name);
    put(toText(json));
}

Status save(const Arguments& arguments, const Options& options)
{
    std::vector<Failure> gaps;
    FruLocator locator;
    FruImage image;
    {
        Device device;
        locator = locateOne(device, arguments.choice, gaps);
        image = readFru(locator);
    }
    requireBytes(image, locator);
    const bool isWhole = image.completion.ok();
    const std::string path = pathFor(arguments.file, isWhole);
    writeFiles({{path, image.bytes}});
    if (isOrBecomesFile(arguments.file)) {
        if (isWhole)
            removeOld(pathFor(arguments.file, false));
        // What goes to standard output is the image alone.
        putSaved(path, locator, image.bytes.size(), options);
    }
    if (!isWhole) {
        gaps.push_back(failureOf(nameText(locator) + " was not read to the end",
                                 commands::readFruData, image.completion));
        gaps.back().status = Status::failed;
    }
    return complainOf(gaps);
}

bool isDecoded(const Ipmi::IpmiFruArea& area)
{
    return !area.fields.empty() || area.multi ||
           (area.kind == Ipmi::IpmiFruArea::INTERNAL && !area.bytes.empty());
}

// An image without any area says so, and that is all that it says.
Status complainOfNothing(const std::string& file,
                         const Ipmi::IpmiFruContents& contents)
{
    const auto& areas = contents.areas;
    if (areas.empty() || std::any_of(areas.begin(), areas.end(), isDecoded))
        return Status::done;
    return complainOf(
        {{Status::failed,
          "none of the areas in " + printable(file) + " could be decoded",
          "Save it again, if that device is still there."}});
}

Status decode(const std::string& file, const Options& options)
{
    const Bytes bytes = readFile(file);
    const Ipmi::IpmiFruContents contents =
        Ipmi::decodeFruImage(bytes.data(), static_cast<unsigned>(bytes.size()));
    if (contents.areas.empty() && !contents.problems.empty())
        throw Failure{Status::failed,
                      printable(file) +
                          " is no FRU image: " + contents.problems.front(),
                      "It should be what 'vek-ipmi fru save' or 'ipmitool fru "
                      "read' wrote."};
    if (!options.json) {
        put(toTable(file, contents, Terminal::ofOutput()));
        return complainOfNothing(file, contents);
    }
    Json json = document("fru-image");
    json["file"] = printable(file);
    json.update(toJson(contents));
    put(toText(json));
    return complainOfNothing(file, contents);
}

constexpr char saveNotes[] =
    "FILE holds the bytes of the device, as 'ipmitool fru read' writes them. "
    "What\nis there already is replaced when all is read and written. What "
    "could not be\nread to its end goes to FILE.partial, which a later whole "
    "one removes.";

constexpr char decodeNotes[] =
    "Nothing is sent to a controller. What is wrong in FILE is said there.";

} // namespace

void addFruSave(CLI::App& fru, Run& runs)
{
    CLI::App* save_ = fru.add_subcommand(
        "save", "Write the bytes of a device into a file, for 'fru decode'");
    const auto arguments = std::make_shared<Arguments>();
    addChoice(*save_, arguments->choice).first->required();
    save_->add_option("FILE", arguments->file, "Where to")->required();
    addNotes(*save_, saveNotes);
    save_->callback([arguments, &runs] {
        checkChoice(arguments->choice);
        runs = [arguments](const Options& options) {
            return save(*arguments, options);
        };
    });
}

void addFruDecode(CLI::App& fru, Run& runs)
{
    CLI::App* decode_ = fru.add_subcommand(
        "decode", "What the bytes of a device in a file mean");
    const auto file = std::make_shared<std::string>();
    decode_->add_option("FILE", *file, "A saved device")->required();
    addNotes(*decode_, decodeNotes);
    decode_->callback([file, &runs] {
        runs = [file](const Options& options) {
            return decode(*file, options);
        };
    });
}

} // namespace Tool
