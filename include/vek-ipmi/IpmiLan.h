/// The controller's LAN interface (IPMI v2.0, 23).
#ifndef VEK_IPMI_IPMILAN_H
#define VEK_IPMI_IPMILAN_H

#include <cstdint>
#include <string>
#include <vector>

#include <vek-ipmi/VekMutex.h>

namespace Ipmi
{

/// What a node last read of it; the node owns it. Getters may be called from
/// any thread and wait for a refresh that is under way, of up to a dozen
/// exchanges. A text stays as it was while its own request fails; empty before
/// the first success.
class IpmiLan
{
public:
    IpmiLan() = default;
    IpmiLan(const IpmiLan&) = delete;
    IpmiLan& operator=(const IpmiLan&) = delete;

    /// Whether the last request for the IP address succeeded.
    bool isEnabled() const;
    /// "00:11:22:aa:bb:cc"
    std::string getMACAddress() const;
    /// "192.0.2.1", as the next two.
    std::string getIPv4Address() const;
    std::string getIPv4Netmask() const;
    std::string getIPv4DefaultGateway() const;
    /// Grows by an entry with each refresh that found the first static address
    /// with a 0 in byte 20 of the answer, its prefix length: eight bytes from
    /// the answer's set selector on, "00:80:20:01:0d:b8:00:00". Callers rely on
    /// all of it.
    std::vector<std::string> getIPv6Addresses() const;
    /// 0 before the first refresh.
    unsigned getChannelNumber() const;

    // These send.

    /// Looks for the LAN channel among 1 to 7; 1 when there is none.
    void initChannelNumber(int node);
    /// Reads everything, the channel only the first time. 0; -1 when netmask
    /// or gateway could not be read, and then nothing behind it is.
    int IpmiIfcLanInstantiate(int node);
    /// Reads the IPv6 address alone.
    void load_v6_addresses(int node);

private:
    friend struct IpmiNode;

    void findChannel() VEK_REQUIRES(mutex_);
    int refresh() VEK_REQUIRES(mutex_);
    void readIPv6() VEK_REQUIRES(mutex_);
    /// Frees the texts, unless a thread is at them.
    void release();

    mutable VEK::Mutex mutex_;
    std::string macAddress_ VEK_GUARDED_BY(mutex_);
    std::string ipv4Address_ VEK_GUARDED_BY(mutex_);
    std::string ipv4Netmask_ VEK_GUARDED_BY(mutex_);
    std::string ipv4Gateway_ VEK_GUARDED_BY(mutex_);
    std::vector<std::string> ipv6Addresses_ VEK_GUARDED_BY(mutex_);
    bool enabled_ VEK_GUARDED_BY(mutex_) = false;
    uint32_t channel_ VEK_GUARDED_BY(mutex_) = 0;
};

} // namespace Ipmi

#endif
