// vek-ipmi sel watch
#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <set>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/commands/watch.h"
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
            now.size() >= old && (old == 0 || now[old - 1] == last_[old - 1]);
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

uint32_t eraseTime()
{
    const Ipmi::ipmiifc_sel_info info = IpmiIfc::getRawSelHeader();
    uint32_t time = 0;
    for (size_t i = 4; i-- > 0;)
        time = time << 8 | info.eraseTime[i];
    return time;
}

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
        const std::lock_guard lock{mutex_};
        if (failure_)
            std::rethrow_exception(failure_);
        if (begun_)
            printNew();
        else
            begin();
    }

private:
    // What is in the log already is not news; nor is what a read that was not
    // whole left out.
    void begin()
    {
        if (!nodeHoldsSel())
            return;
        const auto log = IpmiIfc::getSelData();
        novelties_.of(log);
        eraseTime_ = eraseTime();
        begun_ = true;
        IpmiIfc::registerSelEventHandler(0, handle, this);
        std::cerr << "vek-ipmi: note: " << log.size()
                  << (log.size() == 1 ? " record" : " records")
                  << " in the event log; new ones follow until Ctrl-C\n";
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
        const auto log = IpmiIfc::getSelData();
        noteClearing(log);
        const auto fresh = novelties_.of(log);
        if (fresh.empty())
            return;
        const KnownSensors sensors{sensorRecordsOfNode()};
        for (const auto& record : fresh)
            print(collectSelRecord(*record, sensors));
    }

    void noteClearing(const Novelties::Records& log)
    {
        const uint32_t erased = eraseTime();
        if (erased == eraseTime_ || !novelties_.isCleared(log))
            return;
        eraseTime_ = erased;
        novelties_.forget();
        std::cerr << "vek-ipmi: note: the event log was cleared\n";
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
    bool begun_ = false;
    Novelties novelties_;
    uint32_t eraseTime_ = 0;
};

Status run(const Arguments& arguments, const Options& options)
{
    constexpr unsigned pace = 2; // of the polls themselves
    Follower follower{arguments, options.json};
    return watch({IpmiIfc::POLL_NORMAL, IpmiIfc::POLL_NORMAL,
                  [&] { follower.show(); }, [] {}, arguments.interval - pace});
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
