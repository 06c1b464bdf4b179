#include "tools/print/completion_codes.h"

#include <iterator>

#include "tools/print/text.h"

namespace Tool
{

namespace
{

constexpr char retry[] = "Try again in a moment.";
constexpr char notHere[] = "This controller lacks the command; update its "
                           "firmware, or do without.";
constexpr char updating[] = "Wait until the update has ended.";
constexpr char starting[] = "The controller is starting; try again in a "
                            "minute.";
constexpr char request[] = "Check the request's bytes against the command's "
                           "table in the IPMI standard.";
constexpr char barred[] = "The controller's own settings forbid it; see its "
                          "firmware firewall or the vendor's manual.";

constexpr GenericCode generic[] = {
    {0x00, "command completed normally", nullptr},
    {0xC0, "node busy", retry},
    {0xC1, "unrecognized or unsupported command", notHere},
    {0xC2, "command invalid for the given LUN", nullptr},
    {0xC3, "timeout while processing the command, no answer available",
     "Try again; if it stays silent, reset the controller."},
    {0xC4, "out of space", nullptr},
    {0xC5, "reservation canceled or invalid reservation ID", retry},
    {0xC6, "request data truncated", request},
    {0xC7, "request data length invalid", request},
    {0xC8, "request data field length limit exceeded", request},
    {0xC9, "parameter out of range", request},
    {0xCA, "cannot return the number of requested data bytes", request},
    {0xCB, "requested sensor, data or record not present", nullptr},
    {0xCC, "invalid data field in request", request},
    {0xCD, "command illegal for the specified sensor or record type", nullptr},
    {0xCE, "command response could not be provided", nullptr},
    {0xCF, "cannot execute a duplicated request", nullptr},
    {0xD0, "no response: SDR repository in update mode", updating},
    {0xD1, "no response: device in firmware update mode", updating},
    {0xD2, "no response: controller initialization in progress", starting},
    {0xD3, "destination unavailable", nullptr},
    {0xD4, "insufficient privilege level or other security restriction",
     barred},
    {0xD5, "command or parameter not supported in the present state", nullptr},
    {0xD6, "command or sub-function disabled or unavailable", barred},
    {0xFF, "unspecified error", retry},
};

constexpr char noParameter[] = "parameter not supported";
constexpr char setInProgress[] =
    "attempt to set 'set in progress' when not in 'set complete' state";
constexpr char readOnly[] = "attempt to write a read-only parameter";
constexpr char writeOnly[] = "attempt to read a write-only parameter";
constexpr char eraseInProgress[] = "cannot execute: SEL erase in progress";
constexpr char recordType[] = "operation not supported for this record type";
constexpr char recordLength[] =
    "record rejected: length in its header and bytes written differ";
constexpr char queueEmpty[] = "no data available (queue or buffer empty)";
constexpr char lostArbitration[] = "lost arbitration";
constexpr char busError[] = "bus error";
constexpr char writeNak[] = "NAK on write";
constexpr char sessionless[] =
    "not supported on the selected channel (it has no sessions)";
constexpr char fruBusy[] = "FRU device busy";
constexpr char payloadDisabled[] = "payload type is disabled";
constexpr char enableUnsupported[] =
    "attempt to enable an unsupported or unconfigurable function";

// By network function, command and code; each row's words are from the
// completion code field of the command's table in IPMI v2.0.
constexpr CommandCode specific[] = {
    // Chassis, 28.12 and 28.13: boot options
    {{0x00, 0x08}, 0x80, noParameter},
    {{0x00, 0x08}, 0x81, setInProgress},
    {{0x00, 0x08}, 0x82, readOnly},
    {{0x00, 0x09}, 0x80, noParameter},

    // Sensor and event, 30: event filters and alerts
    {{0x04, 0x12}, 0x80, noParameter},
    {{0x04, 0x12}, 0x81, setInProgress},
    {{0x04, 0x12}, 0x82, readOnly},
    {{0x04, 0x12}, 0x83, writeOnly},
    {{0x04, 0x13}, 0x80, noParameter},
    {{0x04, 0x14}, 0x81, eraseInProgress},
    {{0x04, 0x15}, 0x81, eraseInProgress},
    {{0x04, 0x16}, 0x81, "alert rejected: another alert in progress"},
    {{0x04, 0x16}, 0x82, "alert rejected: messaging session active"},
    {{0x04, 0x16}, 0x83, "platform event parameters not supported"},
    // 35: sensors
    {{0x04, 0x21}, 0x80, "record changed"},
    {{0x04, 0x30}, 0x80, "attempt to change a reading or bits not settable"},
    {{0x04, 0x30}, 0x81, "setting event data bytes is not supported"},

    // Application, 27: watchdog
    {{0x06, 0x22}, 0x80, "attempt to start an uninitialized watchdog"},
    // 22: messages, sessions, channels, system information, users
    {{0x06, 0x33}, 0x80, queueEmpty},
    {{0x06, 0x34}, 0x80, "invalid session handle"},
    {{0x06, 0x34}, 0x81, lostArbitration},
    {{0x06, 0x34}, 0x82, busError},
    {{0x06, 0x34}, 0x83, writeNak},
    {{0x06, 0x35}, 0x80, queueEmpty},
    {{0x06, 0x39}, 0x81, "invalid user name"},
    {{0x06, 0x39}, 0x82, "null user name not enabled"},
    {{0x06, 0x3A}, 0x81, "no session slot available"},
    {{0x06, 0x3A}, 0x82, "no session slot available for the user"},
    {{0x06, 0x3A}, 0x83, "no session slot for the user's privilege level"},
    {{0x06, 0x3A}, 0x84, "session sequence number out of range"},
    {{0x06, 0x3A}, 0x85, "invalid session ID in request"},
    {{0x06, 0x3A}, 0x86, "requested privilege level exceeds a limit"},
    {{0x06, 0x3B}, 0x80, "requested level not available for this user"},
    {{0x06, 0x3B}, 0x81, "requested level exceeds a privilege limit"},
    {{0x06, 0x3B}, 0x82, "cannot disable user level authentication"},
    {{0x06, 0x3C}, 0x87, "invalid session ID in request"},
    {{0x06, 0x3C}, 0x88, "invalid session handle in request"},
    {{0x06, 0x40}, 0x82, sessionless},
    {{0x06, 0x40}, 0x83, "access mode not supported"},
    {{0x06, 0x41}, 0x82, sessionless},
    {{0x06, 0x47}, 0x80, "password test failed: data do not match"},
    {{0x06, 0x47}, 0x81, "password test failed: wrong password size"},
    // 24: payloads
    {{0x06, 0x48}, 0x80, "payload already active on another session"},
    {{0x06, 0x48}, 0x81, payloadDisabled},
    {{0x06, 0x48}, 0x82, "payload activation limit reached"},
    {{0x06, 0x48}, 0x83, "cannot activate the payload with encryption"},
    {{0x06, 0x48}, 0x84, "cannot activate the payload without encryption"},
    {{0x06, 0x49}, 0x80, "payload already deactivated"},
    {{0x06, 0x49}, 0x81, payloadDisabled},
    {{0x06, 0x52}, 0x81, lostArbitration},
    {{0x06, 0x52}, 0x82, busError},
    {{0x06, 0x52}, 0x83, writeNak},
    {{0x06, 0x52}, 0x84, "truncated read"},
    {{0x06, 0x55}, 0x80, "operation not supported for the payload type"},
    {{0x06, 0x55}, 0x81, "operation not allowed under the configuration"},
    {{0x06, 0x55}, 0x82, "encryption not available for the session"},
    {{0x06, 0x55}, 0x83, "payload instance not active"},
    {{0x06, 0x56}, 0x80, "cannot set or confirm: key is locked"},
    {{0x06, 0x56}, 0x81, "insufficient key bytes"},
    {{0x06, 0x56}, 0x82, "too many key bytes"},
    {{0x06, 0x56}, 0x83, "key does not meet the criteria for its type"},
    {{0x06, 0x56}, 0x84, "key KR is not used"},
    {{0x06, 0x58}, 0x80, noParameter},
    {{0x06, 0x58}, 0x81, setInProgress},
    {{0x06, 0x58}, 0x82, readOnly},
    {{0x06, 0x59}, 0x80, noParameter},
    // 21: firmware firewall
    {{0x06, 0x60}, 0x80, enableUnsupported},
    {{0x06, 0x62}, 0x80, enableUnsupported},

    // Storage, 34: FRU
    {{0x0A, 0x11}, 0x81, fruBusy},
    {{0x0A, 0x12}, 0x80, "write-protected offset"},
    {{0x0A, 0x12}, 0x81, fruBusy},
    // 33: SDR repository
    {{0x0A, 0x25}, 0x80, recordLength},
    // 31: SEL
    {{0x0A, 0x40}, 0x81, eraseInProgress},
    {{0x0A, 0x42}, 0x81, eraseInProgress},
    {{0x0A, 0x43}, 0x81, eraseInProgress},
    {{0x0A, 0x44}, 0x80, recordType},
    {{0x0A, 0x44}, 0x81, eraseInProgress},
    {{0x0A, 0x45}, 0x80, recordLength},
    {{0x0A, 0x45}, 0x81, eraseInProgress},
    {{0x0A, 0x46}, 0x80, recordType},
    {{0x0A, 0x46}, 0x81, eraseInProgress},

    // Transport, 23: LAN; 25: serial; 26: serial over LAN
    {{0x0C, 0x01}, 0x80, noParameter},
    {{0x0C, 0x01}, 0x81, setInProgress},
    {{0x0C, 0x01}, 0x82, readOnly},
    {{0x0C, 0x01}, 0x83, writeOnly},
    {{0x0C, 0x02}, 0x80, noParameter},
    {{0x0C, 0x10}, 0x80, noParameter},
    {{0x0C, 0x10}, 0x81, setInProgress},
    {{0x0C, 0x10}, 0x82, readOnly},
    {{0x0C, 0x10}, 0x83, writeOnly},
    {{0x0C, 0x11}, 0x80, noParameter},
    {{0x0C, 0x19}, 0x81, "callback rejected: alert in progress"},
    {{0x0C, 0x19}, 0x82, "callback rejected: messaging active"},
    {{0x0C, 0x21}, 0x80, noParameter},
    {{0x0C, 0x21}, 0x81, setInProgress},
    {{0x0C, 0x21}, 0x82, readOnly},
    {{0x0C, 0x21}, 0x83, writeOnly},
    {{0x0C, 0x22}, 0x80, noParameter},
};

const GenericCode* findGeneric(uint8_t code)
{
    for (const GenericCode& row : generic)
        if (row.code == code)
            return &row;
    return nullptr;
}

// Ranges of table 5-2 that no row names.
const char* rangeInWords(uint8_t code)
{
    if (code >= 0x01 && code <= 0x7E)
        return "device-specific (OEM) code";
    if (code >= 0x80 && code <= 0xBE)
        return "command-specific code";
    return "reserved code";
}

} // namespace

Rows<GenericCode> genericCodes()
{
    return {generic, std::size(generic)};
}

Rows<CommandCode> commandCodes()
{
    return {specific, std::size(specific)};
}

std::string codeInWords(Command command, uint8_t code)
{
    for (const CommandCode& row : specific)
        if (row.command.netFn == command.netFn &&
            row.command.code == command.code && row.code == code)
            return row.words;
    const GenericCode* row = findGeneric(code);
    return row ? row->words : rangeInWords(code);
}

std::string inWords(Command command, const Completion& completion)
{
    if (!completion.answered)
        return "no answer";
    if (completion.isCut)
        return "the answer was cut";
    return hexNumber(completion.code) + ": " +
           codeInWords(command, completion.code);
}

std::string nextStep(const Completion& completion)
{
    if (!completion.answered)
        return "Try again; --verbose and the kernel's log (dmesg) say what "
               "the driver met.";
    if (completion.isCut)
        return "Try again; --verbose shows the answer.";
    const GenericCode* row = findGeneric(completion.code);
    return row && row->next ? row->next : "";
}

Failure failureOf(const std::string& what, Command command,
                  const Completion& completion)
{
    return {completion.status(), what + ": " + inWords(command, completion),
            nextStep(completion)};
}

} // namespace Tool
