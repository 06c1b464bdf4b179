#include "tools/simulate.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace Tool
{

namespace
{

// Set for the second run, so that it never starts a third.
constexpr char mark[] = "VEK_IPMI_SIMULATED";

// Beside the program as installed, then where the build leaves it.
constexpr const char* places[] = {"", "../sim/"};

bool servesItself()
{
    using Serves = int (*)();
    void* symbol = dlsym(RTLD_DEFAULT, "vek_ipmi_sim_serves");
    return symbol && reinterpret_cast<Serves>(symbol)() == 1;
}

std::string ownPath()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0 || static_cast<size_t>(length) == sizeof path)
        throw Failure{Status::failed, "cannot tell where this program is",
                      "Mount /proc, or run it as vek-ipmi-sim -- vek-ipmi"};
    return std::string(path, static_cast<size_t>(length));
}

std::string simulatorBeside(const std::string& self)
{
    const std::string folder = self.substr(0, self.rfind('/') + 1);
    for (const char* place : places) {
        std::string path = folder + place + "vek-ipmi-sim";
        if (access(path.c_str(), X_OK) == 0)
            return path;
    }
    throw Failure{Status::failed, "no vek-ipmi-sim beside " + self,
                  "Install the simulated controller with the program."};
}

std::vector<std::string> commandLine(const std::string& profile,
                                     const std::string& self, char** argv)
{
    std::vector<std::string> line = {simulatorBeside(self)};
    if (!profile.empty())
        line.insert(line.end(), {"--profile", profile});
    line.insert(line.end(), {"--", self});
    char** end = argv + 1;
    while (*end)
        ++end;
    line.insert(line.end(), argv + 1, end);
    return line;
}

[[noreturn]] void runAgain(std::vector<std::string> line)
{
    std::vector<char*> pointers;
    pointers.reserve(line.size() + 1);
    for (std::string& argument : line)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    setenv(mark, "1", 1);
    execv(pointers[0], pointers.data());
    throw Failure{Status::failed,
                  "cannot run " + line[0] + ": " + strerror(errno), ""};
}

} // namespace

void simulate(const Options& options, char** argv)
{
    const bool second = getenv(mark) != nullptr;
    if (!second && !(servesItself() && options.profile.empty()))
        runAgain(commandLine(options.profile, ownPath(), argv));
    if (!servesItself())
        throw Failure{Status::failed,
                      "the simulated controller is not in place; nothing was "
                      "opened",
                      std::string{"Unset "} + mark +
                          ", and look for what removes LD_PRELOAD."};
}

} // namespace Tool
