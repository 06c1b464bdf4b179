// vek-ipmi sel delete ID
#include <CLI/CLI.hpp>

#include <charconv>
#include <memory>

#include "tools/collect/health_source.h"
#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/device.h"
#include "tools/print/completion_codes.h"
#include "tools/print/output.h"
#include "tools/print/sel.h"

namespace Tool
{

namespace
{

constexpr uint8_t unsupported = 0xC1, reservationLost = 0xC5, tooLong = 0xCA,
                  notPresent = 0xCB;

uint8_t low(unsigned value)
{
    return static_cast<uint8_t>(value);
}

uint8_t high(unsigned value)
{
    return static_cast<uint8_t>(value >> 8);
}

// Thrown when the log changed under its reservation.
struct ReservationLost
{};

class Deletion
{
public:
    Deletion(Device& device, uint16_t id) : device_{device}, id_{id} {}

    SelBytes read()
    {
        SelBytes record{};
        size_t at = 0, chunk = record.size();
        while (at < record.size()) {
            chunk = std::min(chunk, record.size() - at);
            const Answer answer = readPart(at, chunk);
            constexpr size_t nextId = 2;
            if (answer.completion.ok() && answer.data.size() == nextId + chunk)
            {
                std::copy(answer.data.begin() + nextId, answer.data.end(),
                          record.begin() + static_cast<ptrdiff_t>(at));
                at += chunk;
            } else if (isTooLong(answer.completion) && chunk > 1) {
                chunk /= 2;
            } else {
                refuse("record " + std::to_string(id_) + " was not read",
                       commands::getSelEntry, answer.completion);
            }
        }
        return record;
    }

    // Of a controller without reservations it is 0 (IPMI v2.0, 31.4).
    void reserve()
    {
        const Answer answer = device_.exchange(commands::reserveSel, {});
        reservation_ = 0;
        if (answer.completion.answered && answer.completion.code == unsupported)
            return;
        if (!answer.completion.ok() || answer.data.size() < 2)
            refuse("the event log was not reserved", commands::reserveSel,
                   answer.completion);
        reservation_ = answer.data[0] | answer.data[1] * 0x100u;
    }

    void remove()
    {
        const Answer answer = device_.exchange(
            commands::deleteSelEntry,
            {low(reservation_), high(reservation_), low(id_), high(id_)});
        if (!answer.completion.ok())
            refuse("record " + std::to_string(id_) + " was not deleted",
                   commands::deleteSelEntry, answer.completion);
    }

private:
    Answer readPart(size_t at, size_t count)
    {
        return device_.exchange(commands::getSelEntry,
                                {low(reservation_), high(reservation_),
                                 low(id_), high(id_), static_cast<uint8_t>(at),
                                 static_cast<uint8_t>(count)});
    }

    static bool isTooLong(const Completion& completion)
    {
        return completion.answered && completion.code == tooLong;
    }

    [[noreturn]] void refuse(const std::string& what, Command command,
                             const Completion& completion) const
    {
        if (completion.answered && completion.code == reservationLost)
            throw ReservationLost{};
        if (completion.answered && completion.code == notPresent)
            throw Failure{Status::usage,
                          "no record " + std::to_string(id_) +
                              " in the event log",
                          "List them with: vek-ipmi sel"};
        if (completion.ok())
            throw Failure{Status::failed, what + ": the answer was cut",
                          "Try again."};
        throw failureOf(what, command, completion);
    }

    Device& device_;
    unsigned id_;
    unsigned reservation_ = 0;
};

SelRecord inWords(const SelBytes& bytes)
{
    const Ipmi::sel_event_record record = recordOf(bytes);
    return collectSelRecord({&record, 0}, {});
}

// Begins anew while other programs change the log or reserve it themselves.
template <typename Steps>
auto withReservation(Deletion& deletion, uint16_t id, Steps steps)
{
    constexpr int attempts = 5;
    for (int i = 0; i < attempts; ++i)
        try {
            deletion.reserve();
            return steps();
        } catch (const ReservationLost&) {
        }
    throw Failure{Status::refused,
                  "the event log changed each time before record " +
                      std::to_string(id) + " could be deleted (C5h)",
                  "Try again when no other program uses the log."};
}

// An id may name another record once the log was cleared: what is deleted is
// what the id named at first.
SelRecord deleteRecord(Device& device, uint16_t id)
{
    Deletion deletion{device, id};
    const SelBytes bytes =
        withReservation(deletion, id, [&] { return deletion.read(); });
    const SelRecord record = inWords(bytes);
    if (record.id != id)
        throw Failure{Status::failed,
                      "the controller answered with record " +
                          std::to_string(record.id) + ", nothing was deleted",
                      "List them with: vek-ipmi sel"};
    withReservation(deletion, id, [&] {
        if (deletion.read() != bytes)
            throw Failure{Status::failed,
                          "the record changed meanwhile, nothing was deleted",
                          "List them again with: vek-ipmi sel"};
        deletion.remove();
    });
    return record;
}

Status run(uint16_t id, bool utc, const Options& options)
{
    loadHealthTable();
    SelRecord record;
    {
        Device device;
        record = deleteRecord(device, id);
    }
    Json json = document("sel-delete");
    json["deleted"] = toJson(record);
    put(options.json ? toText(json)
                     : "deleted: " + toLine(record, utc, Terminal::ofOutput()));
    return Status::done;
}

// FFFFh stands for the last record, and 0 for the first: only of a controller
// that numbers from 0 is that a record's own, which is seen when it is read.
uint16_t toId(const std::string& text)
{
    const bool hexadecimal = text.compare(0, 2, "0x") == 0;
    const char* first = text.data() + (hexadecimal ? 2 : 0);
    const char* end = text.data() + text.size();
    uint16_t id = 0;
    const auto read = std::from_chars(first, end, id, hexadecimal ? 16 : 10);
    if (read.ec == std::errc{} && read.ptr == end && id != 0xFFFF)
        return id;
    throw CLI::ValidationError(
        "ID", "'" + text + "' is no number from 0 to 65534 (0xfffe)");
}

} // namespace

void addSelDelete(CLI::App& sel, Run& runs)
{
    struct Arguments
    {
        std::string id;
        bool utc = false;
    };
    CLI::App* app = sel.add_subcommand("delete", "Delete one record");
    const auto arguments = std::make_shared<Arguments>();
    app->add_option("ID", arguments->id, "As the list has it, or 0x..")
        ->required();
    app->add_flag("--utc", arguments->utc, utcHelp);
    app->callback([arguments, &runs] {
        runs = [id = toId(arguments->id),
                utc = arguments->utc](const Options& options) {
            return run(id, utc, options);
        };
    });
}

} // namespace Tool
