// The command vek-ipmi: the command line in, one subcommand run, its status
// out.
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <syslog.h>

#include <vek-ipmi/CmpiStatus.h>

#include "tools/options.h"
#include "tools/simulate.h"

namespace Tool
{

namespace
{

// A closed standard descriptor would become the device's, and what is printed
// would go to the driver.
void fillStandardDescriptors()
{
    int fd = 0;
    while (fd >= 0 && fd <= 2)
        fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
}

// The library's debug lines are for --verbose, not for the system's log.
void setUpLog(const Options& options)
{
    openlog("vek-ipmi", LOG_PID | (options.verbose ? LOG_PERROR : 0), LOG_USER);
    setlogmask(LOG_UPTO(options.verbose ? LOG_DEBUG : LOG_ERR));
}

Status runGuarded(const Options& options, const Run& run, char** argv)
{
    try {
        if (options.simulate)
            simulate(options, argv);
        // A reader that goes away is a write error like any other. Not set
        // before, since a program that is started would inherit it.
        signal(SIGPIPE, SIG_IGN);
        setUpLog(options);
        return run(options);
    } catch (const Failure& failure) {
        complain(failure);
        return failure.status;
    } catch (const CmpiStatus& error) {
        complain({Status::failed, "the library refused", error.msg()});
    } catch (const std::exception& error) {
        complain({Status::failed, error.what(), ""});
    }
    return Status::failed;
}

Status runProgram(const Options& options, const Run& run, char** argv)
{
    bool failed = true;
    const Run noted = [&](const Options& given) {
        const Status status = run(given);
        failed = false;
        return status;
    };
    const Status status = runGuarded(options, noted, argv);
    return failed && options.monitoring ? monitoringUnknown : status;
}

} // namespace

} // namespace Tool

int main(int argc, char** argv)
{
    Tool::fillStandardDescriptors();
    Tool::Options options;
    Tool::Run run;
    Tool::Status status = Tool::Status::done;
    if (Tool::parse(argc, argv, options, run, status))
        status = Tool::runProgram(options, run, argv);
    return static_cast<int>(status);
}
