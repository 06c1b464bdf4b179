#include "tests/command/program.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace Tool
{

namespace
{

std::string contents(const std::string& path)
{
    std::ifstream file{path, std::ios::binary};
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Made anew, to be looked at and committed, when VEK_UPDATE_EXPECTED is set.
std::string expected(const std::string& out, const std::string& actual)
{
    if (out[0] != '@')
        return out;
    const std::string path = EXPECTED_FOLDER "/" + out.substr(1);
    if (getenv("VEK_UPDATE_EXPECTED"))
        std::ofstream{path, std::ios::binary} << actual;
    return contents(path);
}

// False for a broken expression too.
bool finds(const char* expression, const std::string& text)
{
    regex_t compiled;
    if (regcomp(&compiled, expression, REG_EXTENDED | REG_NOSUB) != 0)
        return false;
    const bool found = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&compiled);
    return found;
}

void check(const Case& c)
{
    SCOPED_TRACE(std::string{c.what} + ": " + c.line);
    const Ended ended = shell(c.line);
    EXPECT_EQ(ended.status, c.status);
    EXPECT_EQ(ended.out, expected(c.out, ended.out));
    if (*c.err)
        EXPECT_TRUE(finds(c.err, ended.err)) << c.err << '\n' << ended.err;
    else
        EXPECT_EQ(ended.err, "");
}

int runShell(std::string line)
{
    char name[] = "sh", flag[] = "-c";
    char* arguments[] = {name, flag, line.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, "/bin/sh", nullptr, nullptr, arguments, environ) ||
        waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

} // namespace

Ended shell(const std::string& line)
{
    char folder[] = "/tmp/vek-ipmi-test-XXXXXX";
    if (!mkdtemp(folder))
        return {};
    const std::string out = std::string{folder} + "/out";
    const std::string err = std::string{folder} + "/err";
    const std::string all = "tool='" VEK_IPMI "' sim='" VEK_IPMI_SIM "'\n{ " +
                            line + "\n} </dev/null >" + out + " 2>" + err;
    const int status = runShell(all);
    Ended ended{status, contents(out), contents(err)};
    unlink(out.c_str());
    unlink(err.c_str());
    rmdir(folder);
    return ended;
}

void check(const std::vector<Case>& cases)
{
    for (const Case& c : cases)
        check(c);
}

void checkInFolder(const std::vector<Case>& cases)
{
    for (Case c : cases) {
        const std::string line = std::string{"d=$(mktemp -d); cd $d; ( "} +
                                 c.line + " ); s=$?; rm -r $d; exit $s";
        c.line = line.c_str();
        check({c});
    }
}

} // namespace Tool
