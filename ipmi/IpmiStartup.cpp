#include "ipmi/IpmiStartup.h"

#include <algorithm>

#include "ipmi/IpmiIdentity.h"
#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiIfcSel.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t storage = 0x0a;

// The parameter itself (not its revision alone), its selector, set selector
// 0, block selector 0.
uint8_t os_req[4] = {0x00, osNameParameter, 0x00, 0x00};
uint8_t osver_req[4] = {0x00, osVersionParameter, 0x00, 0x00};

// Other threads may ask for a refresh of their own.
int refreshRecords(ipmiifc_resp* resp)
{
    VEK::MutexLock refresh{sdr_mutex};
    return IpmiIfcRhGetSdrInfo(resp);
}

} // namespace

// Get SEL Info stays in the list but disabled: the loop asks for it itself.
OneShotCommand one_shot_list_cmd[oneShotCount] = {
    {1, IpmiIfcRhGetDeviceId, app, 0x01, 0, nullptr, 0},
    {1, IpmiIfcRhGetOS_Name, app, 0x59, 4, os_req, 0},
    {1, IpmiIfcRhGetOS_Version, app, 0x59, 4, osver_req, 0},
    {1, IpmiIfcRhGetSelfTest, app, 0x04, 0, nullptr, 0},
    {1, refreshRecords, storage, 0x20, 0, nullptr, 0},
    {0, IpmiIfcRhSelInfoNoCount, storage, 0x40, 0, nullptr, 0},
    {1, IpmiIfcRhSelGetAllocInfo, storage, 0x41, 0, nullptr, 0},
};

namespace
{

// Completion code, or noAnswer.
int sendOneShot(const OneShotCommand& entry)
{
    ipmiifc_req request{};
    request.netfn = entry.netfn;
    request.cmd = entry.cmd;
    request.data_len = entry.data_len;
    request.data = entry.data;
    const Response resp{IpmiIfcSend(0, &request, entry.flags)};
    if (!resp)
        return noAnswer;
    entry.handler(resp.get());
    return resp->cc;
}

} // namespace

int IpmiIfcDataGet(unsigned count)
{
    std::for_each_n(one_shot_list_cmd, std::min(count, oneShotCount),
                    [](const OneShotCommand& entry) {
                        if (entry.enabled && entry.handler)
                            sendOneShot(entry);
                    });
    return 0;
}

int IpmiIfcReadDeviceId(int)
{
    return sendOneShot(one_shot_list_cmd[0]);
}

int IpmiIfcReadOS_Name(int)
{
    return sendOneShot(one_shot_list_cmd[1]);
}

int IpmiIfcReadOS_Version(int)
{
    return sendOneShot(one_shot_list_cmd[2]);
}

int IpmiIfcReadSelfTest(int)
{
    return sendOneShot(one_shot_list_cmd[3]);
}

} // namespace Ipmi
