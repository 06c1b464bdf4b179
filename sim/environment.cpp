#include "sim/environment.h"

#include <cstdlib>
#include <sstream>

namespace Sim
{

namespace
{

constexpr char profileName[] = "VEK_IPMI_SIM_PROFILE",
               faultsName[] = "VEK_IPMI_SIM_FAULTS", // one on a line
    latencyName[] = "VEK_IPMI_SIM_LATENCY",          // microseconds
    countName[] = "VEK_IPMI_SIM_COUNT",
               realUserIdName[] = "VEK_IPMI_SIM_REAL_UID";

void write(const char* name, const std::string& value)
{
    if (value.empty())
        unsetenv(name);
    else
        setenv(name, value.c_str(), 1);
}

std::string read(const char* name)
{
    const char* value = secure_getenv(name);
    return value ? value : "";
}

} // namespace

void writeEnvironment(const Environment& environment)
{
    const Setup& setup = environment.setup;
    std::string faults;
    for (const std::string& rule : setup.faults)
        faults += rule + '\n';
    write(profileName, setup.profile);
    write(faultsName, faults);
    write(latencyName, std::to_string(setup.latency.count()));
    write(countName, environment.countFile);
    write(realUserIdName, environment.realUserId ? "1" : "");
}

Environment readEnvironment()
{
    Environment environment;
    Setup& setup = environment.setup;
    const std::string profile = read(profileName);
    if (!profile.empty())
        setup.profile = profile;
    std::istringstream faults(read(faultsName));
    for (std::string rule; std::getline(faults, rule);)
        setup.faults.push_back(rule);
    setup.latency = std::chrono::microseconds(
        std::strtoll(read(latencyName).c_str(), nullptr, 10));
    environment.countFile = read(countName);
    environment.realUserId = !read(realUserIdName).empty();
    return environment;
}

} // namespace Sim
