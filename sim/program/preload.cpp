#include "sim/program/preload.h"

#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <unistd.h>

#include "sim/program/failure.h"

namespace Sim
{

namespace
{

constexpr char name[] = "libvek-ipmi-sim.so";

/// The loader would say so, ignore the library and run the command on the
/// machine's own controller.
void requireLoads(const std::string& path)
{
    // The loader splits its list at these.
    if (path.find_first_of(" :") != std::string::npos)
        throw Failure{status::ownFailure,
                      path + ": a library with a space or a colon in its path "
                             "cannot be preloaded"};
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw Failure{status::ownFailure, dlerror()};
    if (!dlsym(library, "vek_ipmi_sim_serves"))
        throw Failure{status::ownFailure,
                      path + ": not the library of this program"};
}

void append(const char* variable, const std::string& before,
            const char* separator, const std::string& after)
{
    const bool both = !before.empty() && !after.empty();
    setenv(variable, (before + (both ? separator : "") + after).c_str(), 1);
}

std::string valueOf(const char* variable)
{
    const char* value = getenv(variable);
    return value ? value : "";
}

} // namespace

std::string findPreloadLibrary()
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder =
        fs::read_symlink("/proc/self/exe", error).parent_path();
    const fs::path places[] = {folder, folder / VEK_SIM_LIBRARY_FOLDER};
    std::string tried;
    for (const fs::path& place : places) {
        const fs::path path = (place / name).lexically_normal();
        if (fs::exists(path, error)) {
            requireLoads(path.string());
            return path.string();
        }
        tried += (tried.empty() ? "" : ", nor is ") + path.string();
    }
    throw Failure{status::ownFailure, "no " + tried};
}

void preload(const std::string& library)
{
    append("LD_PRELOAD", library, ":", valueOf("LD_PRELOAD"));
    // A command that is built with AddressSanitizer wants its runtime to be
    // the first library of all.
    append("ASAN_OPTIONS", valueOf("ASAN_OPTIONS"), ":",
           "verify_asan_link_order=0");
}

} // namespace Sim
