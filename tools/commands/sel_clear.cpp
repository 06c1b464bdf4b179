// vek-ipmi sel clear
#include <CLI/CLI.hpp>

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>
#include <unistd.h>

#include "tools/collect/sel_info.h"
#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/commands/sel_change.h"
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

const SelChange clearing{"the event log", "cleared",
                         "Look with: vek-ipmi sel info"};

// Clear SEL's actions, and how far the erasure is (IPMI v2.0, 31.9).
constexpr uint8_t getStatus = 0x00, initiate = 0xAA;
constexpr uint8_t inProgress = 0, completed = 1;

Answer askToClear(Device& device, uint16_t reservation, uint8_t action)
{
    return device.exchange(
        commands::clearSel,
        {lowByte(reservation), highByte(reservation), 'C', 'L', 'R', action});
}

uint8_t progressOf(const Answer& answer)
{
    return answer.data.empty() ? inProgress : answer.data[0] & 0x0F;
}

struct Erasure
{
    uint16_t reservation = 0;
    uint8_t progress = inProgress;
};

Erasure startErasure(Device& device)
{
    return withReservation(device, clearing, [&](uint16_t reservation) {
        const Answer answer = askToClear(device, reservation, initiate);
        checkAgain(commands::clearSel, answer.completion);
        if (!answer.completion.ok())
            throw failureOf(clearing, commands::clearSel, answer.completion);
        return Erasure{reservation, progressOf(answer)};
    });
}

// Of a controller that does not tell, the log's state says more.
void awaitEnd(Device& device, Erasure& erasure)
{
    using namespace std::chrono_literals;
    constexpr auto most = 60s;
    constexpr auto pause = 500ms;
    const Patience patience{[] {
        return "erasing the event log ...";
    }};
    const auto end = std::chrono::steady_clock::now() + most;
    while (erasure.progress == inProgress &&
           std::chrono::steady_clock::now() < end) {
        const Answer answer =
            askToClear(device, erasure.reservation, getStatus);
        if (!answer.completion.ok())
            return;
        erasure.progress = progressOf(answer);
        if (erasure.progress == inProgress)
            std::this_thread::sleep_for(pause);
    }
}

void clear(Device& device)
{
    Erasure erasure = startErasure(device);
    awaitEnd(device, erasure);
    if (erasure.progress != inProgress && erasure.progress != completed)
        throw Failure{Status::failed,
                      "the controller failed to erase the event log (status " +
                          std::to_string(erasure.progress) + ")",
                      clearing.look};
}

// That the log was cleared is true without it.
std::optional<unsigned> entriesAfter(Device& device)
{
    try {
        return entriesOf(readSelState(device));
    } catch (const Failure& failure) {
        complain({Status::done,
                  "cleared, but the event log's state could not be read: " +
                      failure.what,
                  clearing.look});
        return std::nullopt;
    }
}

// Some controllers begin the new log with a record that tells of it.
std::string afterwards(unsigned before, std::optional<unsigned> after)
{
    if (!after || *after == 0)
        return "";
    return *after < before ? "; " + plural(*after) + " new in it"
                           : "; the controller still reports " +
                                 plural(*after) + ", it may be erasing";
}

std::string inWords(unsigned before, std::optional<unsigned> after)
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
        return Status::usage;
    }
    if (before != 0)
        clear(device);
    const std::optional<unsigned> after =
        before == 0 ? before : entriesAfter(device);
    Json json = document("sel-clear");
    json["before"] = before;
    json["after"] = after ? Json(*after) : Json(nullptr);
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
