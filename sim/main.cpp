/// vek-ipmi-sim: a simulated management controller for other programs.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "sim/counters.h"
#include "sim/environment.h"
#include "sim/link/serve.h"
#include "sim/profile/profile.h"
#include "sim/program/child.h"
#include "sim/program/failure.h"
#include "sim/program/import.h"
#include "sim/program/options.h"
#include "sim/program/preload.h"
#include "sim/program/reach.h"
#include "sim/program/report.h"

namespace
{

using Sim::Failure;
using Sim::Options;

std::unique_ptr<Sim::Controller> requireController(const Options& options)
{
    Sim::Mistakes mistakes;
    auto controller = Sim::makeController(options.setup, mistakes);
    if (!controller)
        throw Failure{Sim::status::ownFailure, describe(mistakes)};
    return controller;
}

void print(const Sim::Counts& counts)
{
    std::fputs(Sim::describe(counts).c_str(), stderr);
}

int check(const Options& options)
{
    Sim::Mistakes mistakes;
    if (const auto text = Sim::findProfile(options.check, mistakes)) {
        mistakes = Sim::checkProfile(*text);
        for (Sim::Mistake& mistake : mistakes)
            mistake.place = options.check + ":" + mistake.place;
    }
    if (mistakes.empty())
        return 0;
    std::puts(Sim::describe(mistakes).c_str());
    return Sim::status::ownFailure;
}

int serve(const Options& options)
{
    const auto controller = requireController(options);
    const int status = Sim::serve(options.serve, *controller);
    if (options.count)
        print(controller->counts());
    return status;
}

/// For a command with a working directory of its own.
std::string absoluteProfile(const std::string& profile)
{
    for (const std::string& name : Sim::builtinProfileNames())
        if (profile == name)
            return name;
    return std::filesystem::absolute(profile).string();
}

/// Everything that can be wrong is found before the command starts.
int run(const Options& options)
{
    requireController(options);
    const std::string file = Sim::findCommandFile(options.command[0]);
    Sim::requireReachable(file);
    const std::string library = Sim::findPreloadLibrary();
    Sim::SharedCounters counters;
    Sim::Environment environment{options.setup, "", options.realUserId};
    environment.setup.profile = absoluteProfile(options.setup.profile);
    if (options.count) {
        if (!counters.create())
            throw Failure{Sim::status::ownFailure,
                          std::string("no memory to count in: ") +
                              std::strerror(errno)};
        environment.countFile = counters.path();
    }
    Sim::writeEnvironment(environment);
    Sim::preload(library);
    const int status = Sim::runChild(file, options.command);
    if (options.count)
        print(counters.read());
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        Options options;
        if (!Sim::readOptions(argc, argv, options))
            return 0;
        if (!options.check.empty())
            return check(options);
        if (!options.dump.empty()) {
            Sim::importFile(options.import, options.dump, options.output);
            return 0;
        }
        return options.serve.empty() ? run(options) : serve(options);
    } catch (const Failure& failure) {
        std::istringstream lines(failure.text);
        for (std::string line; std::getline(lines, line);)
            std::fprintf(stderr, "vek-ipmi-sim: %s\n", line.c_str());
        return failure.status;
    }
}
