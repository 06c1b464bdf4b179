#include "tests/command/program.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex>
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

void check(const Case& c)
{
    SCOPED_TRACE(std::string{c.what} + ": " + c.line);
    const Ended ended = shell(c.line);
    EXPECT_EQ(ended.status, c.status);
    EXPECT_EQ(ended.out, expected(c.out, ended.out));
    if (*c.err)
        EXPECT_TRUE(std::regex_search(ended.err, std::regex{c.err}))
            << ended.err;
    else
        EXPECT_EQ(ended.err, "");
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
    const int status = std::system(all.c_str());
    Ended ended{WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out),
                contents(err)};
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

} // namespace Tool
