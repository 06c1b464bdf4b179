// vek-ipmi sel delete ID
#include <CLI/CLI.hpp>

#include <charconv>
#include <memory>

#include "tools/collect/health_source.h"
#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/commands/sel_change.h"
#include "tools/device.h"
#include "tools/print/completion_codes.h"
#include "tools/print/output.h"
#include "tools/print/sel.h"

namespace Tool
{

namespace
{

constexpr uint8_t tooLong = 0xCA, notPresent = 0xCB;

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
                refuse(commands::getSelEntry, answer.completion);
            }
        }
        return record;
    }

    void remove()
    {
        const Answer answer =
            device_.exchange(commands::deleteSelEntry,
                             {lowByte(reservation_), highByte(reservation_),
                              lowByte(id_), highByte(id_)});
        if (!answer.completion.ok())
            refuse(commands::deleteSelEntry, answer.completion);
    }

    // Begins anew with another reservation while the log changes.
    template <typename Steps>
    auto reserved(Steps steps)
    {
        return withReservation(device_, change_, [&](uint16_t reservation) {
            reservation_ = reservation;
            return steps();
        });
    }

private:
    Answer readPart(size_t at, size_t count)
    {
        return device_.exchange(commands::getSelEntry,
                                {lowByte(reservation_), highByte(reservation_),
                                 lowByte(id_), highByte(id_),
                                 static_cast<uint8_t>(at),
                                 static_cast<uint8_t>(count)});
    }

    static bool isTooLong(const Completion& completion)
    {
        return completion.answered && completion.code == tooLong;
    }

    [[noreturn]] void refuse(Command command,
                             const Completion& completion) const
    {
        checkAgain(command, completion);
        if (completion.answered && completion.code == notPresent)
            throw Failure{Status::usage,
                          "no " + change_.what + " in the event log", look};
        if (command.code == commands::deleteSelEntry.code)
            throw failureOf(change_, command, completion);
        const std::string unread = change_.what + " was not read";
        if (completion.ok())
            throw Failure{Status::failed, unread + ": the answer was cut",
                          "Try again."};
        throw failureOf(unread, command, completion);
    }

    static constexpr char look[] = "List them with: vek-ipmi sel";

    Device& device_;
    unsigned id_;
    SelChange change_{"record " + std::to_string(id_), "deleted", look};
    unsigned reservation_ = 0;
};

SelRecord inWords(const SelBytes& bytes)
{
    const Ipmi::sel_event_record record = recordOf(bytes);
    return collectSelRecord({&record, 0}, {});
}

// An id may name another record once the log was cleared: what is deleted is
// what the id named at first.
SelRecord deleteRecord(Device& device, uint16_t id)
{
    Deletion deletion{device, id};
    const SelBytes bytes = deletion.reserved([&] { return deletion.read(); });
    SelRecord record = inWords(bytes);
    if (record.id != id)
        throw Failure{Status::failed,
                      "the controller answered with record " +
                          std::to_string(record.id) + ", nothing was deleted",
                      "List them with: vek-ipmi sel"};
    deletion.reserved([&] {
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
