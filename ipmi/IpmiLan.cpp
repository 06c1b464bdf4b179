#include <vek-ipmi/IpmiLan.h>

#include <cstdio>
#include <syslog.h>

#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t app = 0x06;
constexpr uint8_t transport = 0x0c;
constexpr uint8_t getChannelInfo = 0x42;
constexpr uint8_t getLanParameters = 0x02;

/// Where a parameter's data begin: behind completion code and revision.
constexpr size_t dataAt = 2;

// IPMI v2.0, table 23-4.
enum Parameter : uint8_t
{
    ipAddress = 3,
    macAddress = 5,
    subnetMask = 6,
    defaultGateway = 12,
    ipv6StaticAddresses = 56
};

Response ask(uint8_t channel, Parameter parameter)
{
    uint8_t data[] = {channel, parameter, 0, 0};
    return Response{IpmiIfcSendCmd(0, getLanParameters, transport, 0,
                                   sizeof data, data, 0)};
}

// Null unless there is a good answer; says why not.
Response askOrLog(unsigned channel, Parameter parameter, const char* what,
                  const char* function)
{
    Response resp = ask(uint8_t(channel), parameter);
    if (!resp) {
        syslog(LOG_DEBUG, "%s: Get %s - NULL response", function, what);
        return nullptr;
    }
    if (resp->cc == 0)
        return resp;
    syslog(LOG_ERR, "%s: Get %s failed: cc=0x%x", function, what, resp->cc);
    return nullptr;
}

std::string dotted(const ipmiifc_resp& resp)
{
    const RecordView answer = viewOf(resp);
    std::string text;
    for (size_t i = 0; i < 4; ++i)
        text += (i ? "." : "") + std::to_string(answer.u8(dataAt + i));
    return text;
}

std::string colons(const ipmiifc_resp& resp, size_t count)
{
    const RecordView answer = viewOf(resp);
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        char byte[4];
        snprintf(byte, sizeof byte, "%02x", answer.u8(dataAt + i));
        text += (i ? ":" : "") + std::string{byte};
    }
    return text;
}

bool isLan(uint8_t medium)
{
    constexpr uint8_t lan8023 = 4, otherLan = 6;
    return medium == lan8023 || medium == otherLan;
}

// Most controllers have no IPv6, and are asked in every pass. It goes up by 2,
// so that the line below is never logged: no log is to change by an update.
VEK::Relaxed<unsigned> ipv6Failures{0};

bool isTimeToLog()
{
    constexpr unsigned every = 1000, step = 2;
    const unsigned failures = ipv6Failures;
    ipv6Failures = failures + step;
    return (failures + 1) % every == 0;
}

} // namespace

bool IpmiLan::isEnabled() const
{
    VEK::MutexLock lock{mutex_};
    return enabled_;
}

std::string IpmiLan::getMACAddress() const
{
    VEK::MutexLock lock{mutex_};
    return macAddress_;
}

std::string IpmiLan::getIPv4Address() const
{
    VEK::MutexLock lock{mutex_};
    return ipv4Address_;
}

std::string IpmiLan::getIPv4Netmask() const
{
    VEK::MutexLock lock{mutex_};
    return ipv4Netmask_;
}

std::string IpmiLan::getIPv4DefaultGateway() const
{
    VEK::MutexLock lock{mutex_};
    return ipv4Gateway_;
}

std::vector<std::string> IpmiLan::getIPv6Addresses() const
{
    VEK::MutexLock lock{mutex_};
    return ipv6Addresses_;
}

unsigned IpmiLan::getChannelNumber() const
{
    VEK::MutexLock lock{mutex_};
    return channel_;
}

void IpmiLan::initChannelNumber(int)
{
    VEK::MutexLock lock{mutex_};
    findChannel();
}

int IpmiLan::IpmiIfcLanInstantiate(int)
{
    VEK::MutexLock lock{mutex_};
    return refresh();
}

void IpmiLan::load_v6_addresses(int)
{
    VEK::MutexLock lock{mutex_};
    readIPv6();
}

void IpmiLan::findChannel()
{
    constexpr char function[] = "initChannelNumber";
    constexpr uint8_t first = 1, last = 7;
    constexpr size_t mediumAt = 2;
    channel_ = 0;
    for (uint8_t channel = first; channel <= last && channel_ == 0; ++channel) {
        const Response resp{IpmiIfcSendCmd(0, getChannelInfo, app, 0,
                                           sizeof channel, &channel, 0)};
        if (!resp) {
            syslog(LOG_DEBUG, "%s: Get Channel %d Info - NULL response",
                   function, channel);
            continue;
        }
        if (resp->cc != 0) {
            syslog(LOG_ERR, "%s: Get Channel %d Info failed: cc=0x%x", function,
                   channel, resp->cc);
            continue;
        }
        const uint8_t medium = viewOf(*resp).u8(mediumAt) & 0x7f;
        syslog(LOG_DEBUG, "%s: BMC Channel %d, Medium: %d", function, channel,
               medium);
        if (isLan(medium))
            channel_ = channel;
    }
    if (channel_ == 0)
        channel_ = first;
}

int IpmiLan::refresh()
{
    constexpr char function[] = "IpmiIfcLanInstantiate";
    constexpr size_t macSize = 6;
    if (channel_ == 0)
        findChannel();
    const Response ip = askOrLog(channel_, ipAddress, "IP addr", function);
    enabled_ = ip != nullptr;
    if (ip) {
        ipv4Address_ = dotted(*ip);
        syslog(LOG_DEBUG, "%s: BMC IP Address %s", function,
               ipv4Address_.c_str());
    }
    if (const Response mac =
            askOrLog(channel_, macAddress, "MAC address", function))
    {
        macAddress_ = colons(*mac, macSize);
        syslog(LOG_DEBUG, "%s: BMC MAC address %s", function,
               macAddress_.c_str());
    }
    const Response mask = askOrLog(channel_, subnetMask, "netmask", function);
    if (!mask)
        return -1;
    ipv4Netmask_ = dotted(*mask);
    syslog(LOG_DEBUG, "%s: BMC Netmask %s", function, ipv4Netmask_.c_str());
    const Response gateway =
        askOrLog(channel_, defaultGateway, "default gateway", function);
    if (!gateway)
        return -1;
    ipv4Gateway_ = dotted(*gateway);
    readIPv6();
    return 0;
}

// Channel 0 is not the one that was found: callers rely on what it answers.
void IpmiLan::readIPv6()
{
    constexpr char function[] = "load_v6_addresses";
    constexpr uint8_t noChannel = 0;
    constexpr size_t stateAt = 20, textSize = 8;
    const Response resp = ask(noChannel, ipv6StaticAddresses);
    if (!resp) {
        syslog(LOG_DEBUG, "%s: Get V6 Manual address - NULL response",
               function);
        return;
    }
    if (resp->cc != 0) {
        if (isTimeToLog())
            syslog(LOG_ERR, "%s: Get V6 Manual address failed: cc=0x%x",
                   function, resp->cc);
        return;
    }
    if (const auto state = int8_t(viewOf(*resp).u8(stateAt)))
        syslog(LOG_WARNING, "%s: Ignore BMC V6 IP addr, not active, state=%d",
               function, state);
    else
        ipv6Addresses_.push_back(colons(*resp, textSize));
    syslog(LOG_DEBUG, "%s: loaded %zu ipv6 addresses", function,
           ipv6Addresses_.size());
}

void IpmiLan::release()
{
    if (!mutex_.tryLock())
        return;
    for (std::string* text :
         {&macAddress_, &ipv4Address_, &ipv4Netmask_, &ipv4Gateway_})
        std::string{}.swap(*text);
    std::vector<std::string>{}.swap(ipv6Addresses_);
    mutex_.unlock();
}

IpmiLan* IpmiIfc::getLan(int number)
{
    IpmiNode* const node = nodeRecord(number);
    return &*(node ? *node : g_IpmiNode[0]).lan;
}

IpmiLan* IpmiIfc::getLan()
{
    return getLan(0);
}

} // namespace Ipmi
