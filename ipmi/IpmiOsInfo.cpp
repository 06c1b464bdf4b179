// The host operating system's name and version in the controller's system
// information parameters (IPMI v2.0, 22.14a and 22.14b).
#include <algorithm>
#include <exception>
#include <string>
#include <syslog.h>

#include "ipmi/IpmiIdentity.h"
#include "ipmi/IpmiLoop.h"
#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiStartup.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t setSystemInfo = 0x58;
constexpr uint8_t getSystemInfo = 0x59;
constexpr uint8_t parameterNotSupported = 0x80;
constexpr size_t firstBlockText = 14;
constexpr size_t blockText = 16;

// Leaf lock of the two texts: the getters never wait for an exchange.
VEK::Mutex osTextMutex;
std::string os_name VEK_GUARDED_BY(osTextMutex);
std::string os_version VEK_GUARDED_BY(osTextMutex);

struct OsText
{
    const char* function;
    const char* name; ///< In log lines.
    const char* plural;
    uint8_t parameter;
};

constexpr OsText nameText = {"IpmiIfcRhGetOS_Name", "os_name", "Names",
                             osNameParameter};
constexpr OsText versionText = {"IpmiIfcRhGetOS_Version", "os_version",
                                "Versions", osVersionParameter};

// Appends what a block brings of the text. False unless that is all that the
// block, or the rest of the text, has room for: what follows a gap would stand
// in the wrong place.
bool appendBlock(const ipmiifc_resp& resp, size_t header, size_t room,
                 size_t length, std::string& text)
{
    const size_t due = std::min(room, length - text.size());
    const std::string_view brought = viewOf(resp).text(header, due);
    text += brought;
    return brought.size() == due;
}

void logEnd(const OsText& what, int block, int code, int length)
{
    syslog(LOG_WARNING,
           "%s: retrieve %s failed at block %d, cc=0x%x, length %d",
           what.function, what.name, block, unsigned(code), length);
}

// Reads one block behind the first. False, with a log line, for a block that
// is of no use; a controller that repeats another block is one such.
bool readFurtherBlock(const OsText& what, uint8_t selector, size_t length,
                      std::string& text)
{
    constexpr size_t header = 3; // code, revision, set selector
    uint8_t request[4] = {0x00, what.parameter, selector, 0x00};
    const Response resp{
        IpmiIfcSendCmd(0, getSystemInfo, app, 0, sizeof request, request, 0)};
    const int code = resp ? resp->cc : noAnswer;
    const bool good = code == 0 && viewOf(*resp).u8(2) == selector &&
                      appendBlock(*resp, header, blockText, length, text);
    if (!good)
        logEnd(what, selector, code, resp ? int(resp->data_len) : 0);
    return good;
}

bool firstBlockIsGood(const OsText& what, const ipmiifc_resp& resp)
{
    constexpr int leastLength = 5;
    if (resp.cc == parameterNotSupported) {
        syslog(LOG_WARNING, "%s: BMC does not support OS %s retrieval",
               what.function, what.plural);
        return false;
    }
    if (resp.cc != 0) {
        syslog(LOG_ERR, "%s: retrieve %s failed cc=0x%x", what.function,
               what.name, resp.cc);
        return false;
    }
    if (resp.data_len < leastLength) {
        syslog(LOG_ERR, "%s: retrieve %s failed short buffer read (%d)",
               what.function, what.name, int(resp.data_len));
        return false;
    }
    return true;
}

// The whole text whose first block is given. A block that fails ends it and
// keeps what was read.
std::string readText(const OsText& what, const ipmiifc_resp& first)
{
    constexpr size_t header = 5; // ... set selector, encoding, length
    const size_t length = viewOf(first).u8(4);
    std::string text;
    if (!appendBlock(first, header, firstBlockText, length, text)) {
        logEnd(what, 0, first.cc, first.data_len);
        return text;
    }
    for (uint8_t selector = 1; text.size() < length; ++selector)
        if (!readFurtherBlock(what, selector, length, text))
            break;
    return text;
}

// One request of 18 bytes. All of them are sent, so that a short last block
// carries the tail of the one before: kept, it has always been so on the wire.
struct SetRequest
{
    static constexpr size_t size = 18;
    uint8_t bytes[size] = {};
};

int sendBlock(SetRequest& request, const char* value, uint8_t parameter,
              uint8_t& ccOut)
{
    IpmiNode& node = g_IpmiNode[0];
    // The message id advances by two a block: once here, once in the send.
    const Response resp{IpmiIfcSendCmd(0, setSystemInfo, app, node.msgSeq++,
                                       request.size, request.bytes, 0)};
    if (!resp) {
        syslog(LOG_DEBUG, "%s: No response to prop=%d, val='%s'",
               "set_bmc_prop", parameter, value);
        return 0;
    }
    if (resp->cc == 0)
        return 1;
    syslog(LOG_DEBUG, "%s: set bmc prop=%d/%s failed cc=0x%x", "set_bmc_prop",
           parameter, value, resp->cc);
    ccOut = resp->cc;
    return 0;
}

int writeOsInfo(const std::string& name, const std::string& version)
{
    DeviceUse device;
    std::string wholeName = name;
    int result = 1;
    if (!version.empty()) {
        uint8_t code = 0;
        result = set_bmc_prop(version.c_str(), version.size(),
                              osVersionParameter, code);
        if (!result && code == parameterNotSupported && !name.empty())
            wholeName = name + " " + version;
    }
    if (!wholeName.empty()) {
        uint8_t code = 0;
        result = set_bmc_prop(wholeName.c_str(), wholeName.size(),
                              osNameParameter, code);
    }
    return result;
}

// Runs work; what it throws is logged under the caller's name and answered
// with `failed`.
template <typename Work>
int guarded(const char* function, int failed, Work work)
{
    constexpr char format[] =
        "%s: unexpected exception retrieving bmc config state %s";
    try {
        return work();
    } catch (const CmpiStatus& e) {
        syslog(LOG_ERR, format, function, e.msg());
    } catch (const std::exception& e) {
        syslog(LOG_ERR, format, function, e.what());
    }
    return failed;
}

} // namespace

int set_bmc_prop(const char* value, size_t length, uint8_t parameter,
                 uint8_t& ccOut)
{
    SetRequest request;
    request.bytes[0] = parameter;
    int result = 1;
    uint8_t selector = 0;
    for (size_t sent = 0; sent < length; ++selector) {
        uint8_t* text = request.bytes + 2;
        size_t room = blockText;
        request.bytes[1] = selector;
        if (sent == 0) {
            *text++ = 0; // ASCII and Latin-1
            *text++ = static_cast<uint8_t>(length);
            room = firstBlockText;
        }
        const size_t count = std::min(room, length - sent);
        std::copy_n(value + sent, count, text);
        sent += count;
        if (!sendBlock(request, value, parameter, ccOut))
            result = 0;
    }
    return result;
}

int IpmiIfcRhGetOS_Name(ipmiifc_resp* resp)
{
    if (!firstBlockIsGood(nameText, *resp))
        return -1;
    std::string text = readText(nameText, *resp);
    VEK::MutexLock lock{osTextMutex};
    os_name.swap(text);
    return 0;
}

int IpmiIfcRhGetOS_Version(ipmiifc_resp* resp)
{
    if (!firstBlockIsGood(versionText, *resp))
        return -1;
    std::string text = readText(versionText, *resp);
    VEK::MutexLock lock{osTextMutex};
    os_version.swap(text);
    return 0;
}

std::string IpmiIfc::GetBmcReportedOSName()
{
    VEK::MutexLock lock{osTextMutex};
    return os_name;
}

std::string IpmiIfc::GetBmcReportedOSVersion()
{
    VEK::MutexLock lock{osTextMutex};
    return os_version;
}

int IpmiIfc::SetOSInfo(const std::string& name, const std::string& version)
{
    // The misspelt verb is searched for in logs.
    syslog(LOG_INFO, "%s: seting bmc osname='%s', version='%s'", __func__,
           name.c_str(), version.c_str());
    return guarded(__func__, 0, [&] { return writeOsInfo(name, version); });
}

void IpmiIfc::GetBMCNetworking()
{
    guarded(__func__, 0, [] {
        DeviceUse device;
        if (loopAreas.lan)
            loopAreas.lan(0);
        return IpmiIfcDataGet(oneShotIdentityCount);
    });
}

} // namespace Ipmi
