/// The driver's device and one exchange with the controller behind it.
#ifndef VEK_IPMI_PRIVATE_IPMITRANSPORT_H
#define VEK_IPMI_PRIVATE_IPMITRANSPORT_H

#include <cstdint>
#include <memory>

#include <vek-ipmi/IpmiCommandLine.h>

#include "ipmi/IpmiNode.h"
#include "ipmi/RecordView.h"

namespace Ipmi
{

/// A request, laid out as the driver's struct ipmi_req so that it can be
/// handed through. The transport makes the address itself.
struct ipmiifc_req
{
    uint8_t* addr;
    uint32_t addr_len;
    long msgid;
    uint8_t netfn;
    uint8_t cmd;
    uint16_t data_len;
    uint8_t* data;
};

/// A response, on the heap; whoever receives one frees it with
/// IpmiIfcRespDel.
struct ipmiifc_resp
{
    static constexpr int capacity = 32;

    int32_t data_len;       ///< Bytes in data, completion code included.
    uint8_t data[capacity]; ///< Completion code first; longer answers are
                            ///< cut, bytes that did not come are 0.
    int32_t node;
    ipmiifc_req request; ///< Filled when keepRequest was asked for; owns
                         ///< its two arrays.
    uint8_t cc;          ///< data[0], or 0xFF without a usable answer.
};

/// A view of the bytes that came.
inline RecordView viewOf(const ipmiifc_resp& resp)
{
    return {resp.data, static_cast<size_t>(resp.data_len)};
}

/// Flag of a send: the response carries a copy of the request.
constexpr int keepRequest = 1;

/// Completion code of functions that got no answer.
constexpr uint8_t noAnswer = 0xFF;

/// Opens the device; a failure is logged and errno set. Returns the
/// descriptor or -1.
int openLogged() VEK_REQUIRES(g_IpmiNode[0].ifcMutex);
void closeDevice() VEK_REQUIRES(g_IpmiNode[0].ifcMutex);

/// A closed device is opened without a log line. Returns whether it is open.
bool openDeviceQuietly();

/// Opens the device for a scope, unless it is open already. The last of
/// several users closes it.
class DeviceUse
{
public:
    DeviceUse();
    ~DeviceUse();
    DeviceUse(const DeviceUse&) = delete;
    DeviceUse& operator=(const DeviceUse&) = delete;
};

void IpmiIfcSetTimingParms(int node);
int IpmiIfcOpenIpmiEventEnable(int node, int* flag);
int IpmiIfcOpenIpmiAddressSet(int node);

/// Makes the wake-up pipe of a node; errno tells why it failed.
bool makeWakeUpPipe();
void closeWakeUpPipe();

int IpmiIfcRespNew(ipmiifc_resp** out);
int IpmiIfcRespReuse(ipmiifc_resp* resp);
int IpmiIfcRespDel(ipmiifc_resp** resp);

/// Owns a response for a scope.
struct ResponseDeleter
{
    void operator()(ipmiifc_resp* resp) const { IpmiIfcRespDel(&resp); }
};
using Response = std::unique_ptr<ipmiifc_resp, ResponseDeleter>;

/// Sends to another controller for a scope, which is to hold one exchange: all
/// other threads' exchanges wait. The target is the transport's, which is
/// record 0's whatever node a sensor belongs to.
class TargetUse
{
public:
    enum class Restore
    {
        all,
        addressOnly ///< Channel and LUN mean nothing beside address 0.
    };
    TargetUse(int address, uint8_t channel, uint8_t lun,
              Restore restore = Restore::all);
    ~TargetUse();
    TargetUse(const TargetUse&) = delete;
    TargetUse& operator=(const TargetUse&) = delete;

private:
    VEK::RecursiveLock chosenTarget_;
    Restore restore_;
    int address_;
    uint8_t channel_;
    uint8_t lun_;
};

/// One exchange. `resp` may be null or a record to use again. Returns null or
/// a record: `resp`, or a new one if none was given.
ipmiifc_resp* IpmiIfcSendWresponse(int node, ipmiifc_req* req, int flags,
                                   ipmiifc_resp* resp);

/// One exchange with a response that is used again for the next. Returns the
/// completion code; -1, with the response gone, without an answer.
int exchangeAgain(ipmiifc_req& request, Response& response);

/// Waits 0 to 3 s, by the time of day, so that two programs that cancel each
/// other's reservations fall out of step.
void sleepOutOfStep();

/// One exchange under the information mutex; null without an answer.
ipmiifc_resp* IpmiIfcSend(int node, ipmiifc_req* req, int flags);

/// Mind the order: command before network function. `seq` is ignored.
ipmiifc_resp* IpmiIfcSendCmd(int node, uint8_t cmd, uint8_t netfn, long seq,
                             uint16_t data_len, uint8_t* data, int flags);

} // namespace Ipmi

#endif
