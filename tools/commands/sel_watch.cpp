// vek-ipmi sel watch
#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <set>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/commands/watch.h"
#include "tools/print/completion_codes.h"
#include "tools/print/output.h"
#include "tools/print/sel.h"

namespace Tool
{

namespace
{

using Ipmi::IpmiIfc;

struct Arguments
{
    unsigned interval = 2;
    bool utc = false;
};

// What of the node's log was not there before. A poll that finds more only
// appends to what the node holds; after one that read all again, the bytes
// tell.
class Novelties
{
public:
    using Records = std::vector<std::shared_ptr<Ipmi::IpmiSelData>>;

    // Those of `now` that were in none before, in its order.
    Records of(Records now)
    {
        const size_t old = last_.size();
        const bool appended =
            old == 0 ? seen_.empty()
                     : now.size() >= old && now[old - 1] == last_[old - 1];
        Records fresh(now.begin() + (appended ? ptrdiff_t(old) : 0), now.end());
        if (!appended)
            removeSeen(fresh);
        for (const auto& record : fresh)
            seen_.insert(bytesOf(record->record()));
        last_ = std::move(now);
        return fresh;
    }

    // Nothing that was there is any more.
    bool isCleared(const Records& now) const
    {
        return !seen_.empty() &&
               std::none_of(now.begin(), now.end(), [&](const auto& record) {
                   return isSeen(*record);
               });
    }

    void forget()
    {
        seen_.clear();
        last_.clear();
    }

private:
    bool isSeen(const Ipmi::IpmiSelData& record) const
    {
        return seen_.count(bytesOf(record.record())) != 0;
    }
    void removeSeen(Records& records) const
    {
        records.erase(
            std::remove_if(records.begin(), records.end(),
                           [&](const auto& record) { return isSeen(*record); }),
            records.end());
    }

    Records last_;
    std::set<SelBytes> seen_;
};

uint32_t timeOf(const uint8_t (&bytes)[4])
{
    return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | uint32_t{bytes[3]} << 24;
}

uint32_t eraseTime()
{
    return timeOf(IpmiIfc::getRawSelHeader().eraseTime);
}

uint32_t additionTime()
{
    return timeOf(IpmiIfc::getRawSelHeader().additionTime);
}

bool areSameState(const Ipmi::ipmiifc_sel_info& a,
                  const Ipmi::ipmiifc_sel_info& b)
{
    return timeOf(a.additionTime) == timeOf(b.additionTime) &&
           timeOf(a.eraseTime) == timeOf(b.eraseTime);
}

void note(const std::string& text)
{
    std::cerr << "vek-ipmi: note: " << text << '\n';
}

std::string inRecords(size_t count)
{
    return std::to_string(count) + (count == 1 ? " record" : " records");
}

// Tells once that the log cannot be followed, and once that it can again.
class Health
{
public:
    // After a poll.
    void look(const SelState& now)
    {
        constexpr unsigned mostLooks = 2;
        failures_ = isFollowed(now) ? 0 : failures_ + 1;
        if (failures_ == mostLooks && !told_)
            tell("the event log cannot be read" + reason(now) +
                 "; new records follow when it can");
        else if (failures_ == 0 && told_)
            note("the event log can be read again");
        if (failures_ == 0)
            told_ = false;
    }

    void tell(const std::string& text)
    {
        note(text);
        told_ = true;
    }

private:
    // A record may come between the poll and the question: the node has what
    // the log has, or more than before.
    bool isFollowed(const SelState& now)
    {
        const Ipmi::ipmiifc_sel_info held = IpmiIfc::getRawSelHeader();
        const bool moves = !areSameState(held, held_);
        held_ = held;
        return now.isUsable() && nodeHoldsSel() &&
               (moves || areSameState(held, now.info));
    }

    static std::string reason(const SelState& now)
    {
        return now.completion.ok()
                   ? ""
                   : " (" + inWords(commands::getSelInfo, now.completion) + ")";
    }

    unsigned failures_ = 0;
    bool told_ = false;
    Ipmi::ipmiifc_sel_info held_{};
};

// Prints what is new, as soon as a handler hears of an event, and after each
// poll what handlers do not hear of.
class Follower
{
public:
    Follower(const Arguments& arguments, bool json)
        : arguments_{arguments}, json_{json}
    {}

    void show()
    {
        const SelState state = askForSel();
        const std::lock_guard lock{mutex_};
        if (failure_)
            std::rethrow_exception(failure_);
        if (begun_)
            printNew();
        else
            tryToBegin(state);
        if (begun_ || !state.isUsable())
            health_.look(state);
    }

private:
    // A record that can never be read must not hold it up for ever.
    void tryToBegin(const SelState& state)
    {
        constexpr unsigned mostReads = 2;
        requireSel(state);
        const bool isRead = IpmiIfc::getRawSelHeader().selVersion != 0;
        if (!isRead || !state.isUsable())
            return;
        whole_ = nodeHoldsSel();
        if (whole_ || ++reads_ == mostReads)
            begin();
    }

    // What is in the log already is not news.
    void begin()
    {
        const SelLog log = selSoFar();
        if (!whole_)
            health_.tell("only " + std::to_string(log.records.size()) + " of " +
                         inRecords(log.total) + " could be read");
        novelties_.of(log.records);
        eraseTime_ = eraseTime();
        additionTime_ = additionTime();
        begun_ = true;
        IpmiIfc::registerSelEventHandler(0, handle, this);
        note(inRecords(log.records.size()) +
             " in the event log; new ones follow until Ctrl-C");
    }

    // The polling thread's. It must not be left by an exception.
    static void handle(void* context, Ipmi::IpmiSelData* record)
    {
        auto* follower = static_cast<Follower*>(context);
        if (!record)
            return;
        const std::lock_guard lock{follower->mutex_};
        try {
            follower->printNew();
        } catch (...) {
            follower->failure_ = std::current_exception();
        }
    }

    void printNew()
    {
        const bool holds = nodeHoldsSel();
        // Whose records they are, the old log's or a new one's, only a read of
        // all of them tells.
        if (eraseTime() != eraseTime_ && !holds)
            return;
        const auto log = IpmiIfc::getSelData();
        noteClearing(log);
        auto fresh = novelties_.of(log);
        if (!whole_)
            removeOld(fresh);
        whole_ = whole_ || holds;
        if (fresh.empty())
            return;
        const KnownSensors sensors{sensorRecordsOfNode()};
        for (const auto& record : fresh)
            print(collectSelRecord(*record, sensors));
    }

    // Nor is news what the read at the beginning left out.
    void removeOld(Novelties::Records& records) const
    {
        constexpr uint32_t none = 0xFFFFFFFF;
        const auto isOld = [&](const auto& record) {
            const uint32_t time = record->messageTimeStamp();
            return time == none || time <= additionTime_;
        };
        records.erase(std::remove_if(records.begin(), records.end(), isOld),
                      records.end());
    }

    void noteClearing(const Novelties::Records& log)
    {
        const uint32_t erased = eraseTime();
        if (erased == eraseTime_ || !novelties_.isCleared(log))
            return;
        eraseTime_ = erased;
        whole_ = true; // Nothing of the old log is left.
        novelties_.forget();
        note("the event log was cleared");
    }

    void print(const SelRecord& record) const
    {
        Json json = document("sel-record");
        json.update(toJson(record));
        put(json_ ? json.dump() + '\n'
                  : toLine(record, arguments_.utc, Terminal::ofOutput()));
    }

    const Arguments& arguments_;
    const bool json_;
    std::mutex mutex_;
    std::exception_ptr failure_;
    unsigned reads_ = 0; ///< Reads of the log that were not whole.
    bool begun_ = false;
    bool whole_ = false; ///< The log was read whole, at last.
    Novelties novelties_;
    uint32_t eraseTime_ = 0, additionTime_ = 0;
    Health health_;
};

// Before the node starts, which takes long and says nothing about the log.
void checkSel()
{
    const Device device;
    const Patience patience;
    requireSel(askForSel());
}

Status run(const Arguments& arguments, const Options& options)
{
    constexpr unsigned pace = 2; // of the polls themselves
    Follower follower{arguments, options.json};
    return watch({IpmiIfc::POLL_NORMAL, IpmiIfc::POLL_NORMAL,
                  [&] { follower.show(); }, [] {}, arguments.interval - pace,
                  selProgressText, checkSel});
}

constexpr char notes[] =
    "One line a record, one object a line with --json. A controller whose log\n"
    "is cleared goes on with its new one.\n\n"
    "Examples:\n"
    "  vek-ipmi sel watch\n"
    "  vek-ipmi sel watch --json --interval 30";

} // namespace

void addSelWatch(CLI::App& sel, Run& runs)
{
    CLI::App* app =
        sel.add_subcommand("watch", "New records as they come, until Ctrl-C");
    const auto arguments = std::make_shared<Arguments>();
    app->add_option("--interval", arguments->interval,
                    "Seconds from one look to the next: 2 to 3600")
        ->check(CLI::Range(2, 3600))
        ->capture_default_str();
    app->add_flag("--utc", arguments->utc, utcHelp);
    addNotes(*app, notes);
    app->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(*arguments, options);
        };
    });
}

} // namespace Tool
