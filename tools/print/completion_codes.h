/// Completion codes in words.
#ifndef VEK_TOOLS_PRINT_COMPLETION_CODES_H
#define VEK_TOOLS_PRINT_COMPLETION_CODES_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/collect/completion.h"

namespace Tool
{

/// Generic codes: any command's (IPMI v2.0, table 5-2).
struct GenericCode
{
    uint8_t code;
    const char* words;
    const char* next; ///< What to do about it, or null.
};

/// Codes 80h to BEh mean something else for each command.
struct CommandCode
{
    Command command;
    uint8_t code;
    const char* words;
};

template <typename Row>
struct Rows
{
    const Row* first;
    size_t count;
    const Row* begin() const { return first; }
    const Row* end() const { return first + count; }
};

/// In numeric order.
Rows<GenericCode> genericCodes();
Rows<CommandCode> commandCodes();

/// "unrecognized or unsupported command"; words for every code.
std::string codeInWords(Command command, uint8_t code);

/// "C1h: unrecognized or unsupported command", or "no answer".
std::string inWords(Command command, const Completion& completion);

/// What to do next; may be empty.
std::string nextStep(const Completion& completion);

/// "WHAT: C1h: ...", with the exchange's own status and next step.
Failure failureOf(const std::string& what, Command command,
                  const Completion& completion);

} // namespace Tool

#endif
