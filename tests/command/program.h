/// The program as a user runs it, case by case.
#ifndef VEK_TESTS_COMMAND_PROGRAM_H
#define VEK_TESTS_COMMAND_PROGRAM_H

#include <string>
#include <vector>

namespace Tool
{

struct Ended
{
    int status = -1;
    std::string out, err;
};

/// Runs a line of shell in which $tool and $sim are the programs.
Ended shell(const std::string& line);

struct Case
{
    const char* what;
    const char* line; ///< See shell().
    int status;
    const char* out; ///< All of it, or "@FILE" in tests/command/expected/.
    const char*
        err; ///< An extended regular expression found in it; "" means empty.
};

void check(const std::vector<Case>& cases);
/// Each in an empty folder of its own.
void checkInFolder(const std::vector<Case>& cases);

} // namespace Tool

#endif
