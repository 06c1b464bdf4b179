#include "sim/program/import.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "sim/program/failure.h"
#include "sim/program/report.h"

namespace Sim
{
namespace
{

[[noreturn]] void fail(const std::string& path, const std::string& reason)
{
    throw Failure{status::ownFailure, path + ": " + reason};
}

void writeFile(const std::string& path, const std::string& text)
{
    std::unique_ptr<FILE, int (*)(FILE*)> file{std::fopen(path.c_str(), "wbe"),
                                               std::fclose};
    if (!file ||
        std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() ||
        std::fclose(file.release()) != 0)
        fail(path, std::strerror(errno));
}

} // namespace

void importFile(Import import, const std::string& dump,
                const std::string& output)
{
    const auto bytes = readFile(dump);
    if (!bytes)
        fail(dump, std::strerror(errno));
    Mistakes mistakes;
    const auto profile = import(Bytes{bytes->begin(), bytes->end()}, mistakes);
    if (!profile)
        fail(dump, describe(mistakes));
    const std::string text = writeProfile(*profile);
    if (!output.empty())
        writeFile(output, text);
    else if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        fail("standard output", std::strerror(errno));
}

} // namespace Sim
