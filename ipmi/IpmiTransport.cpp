#include "ipmi/IpmiTransport.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <linux/ipmi.h>
#include <new>
#include <poll.h>
#include <sys/ioctl.h>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiNode.h"

namespace Ipmi
{

namespace
{

static_assert(sizeof(ipmiifc_req) == sizeof(ipmi_req));
static_assert(offsetof(ipmiifc_req, msgid) == offsetof(ipmi_req, msgid));
static_assert(offsetof(ipmiifc_req, netfn) == offsetof(ipmi_req, msg.netfn));
static_assert(offsetof(ipmiifc_req, data_len) ==
              offsetof(ipmi_req, msg.data_len));
static_assert(offsetof(ipmiifc_req, data) == offsetof(ipmi_req, msg.data));

constexpr int answerTimeoutMs = 30000;
constexpr unsigned addressLength = 8;
constexpr int driversOwnAddress = 0x20;

// Where a command goes: the eight bytes that the driver is given.
union Target
{
    ipmi_system_interface_addr local;
    ipmi_ipmb_addr bridged;
    uint8_t bytes[addressLength];
};
static_assert(sizeof(Target) == addressLength);

// A node that left its own address to the driver is at 20h like any BMC:
// readings of the BMC's own sensors are not bridged to it,
// which controllers need not serve.
bool isLocal(const IpmiNode& node)
{
    const int own = node.myAddress ? int(node.myAddress) : driversOwnAddress;
    return node.targetAddress == 0 || node.targetAddress == own;
}

Target targetOf(const IpmiNode& node)
{
    Target target{};
    if (isLocal(node)) {
        target.local.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
        target.local.channel = IPMI_BMC_CHANNEL;
        target.local.lun = 0;
    } else {
        target.bridged.addr_type = IPMI_IPMB_ADDR_TYPE;
        target.bridged.channel = short(node.targetChannel & 0x0f);
        target.bridged.slave_addr = static_cast<uint8_t>(node.targetAddress);
        target.bridged.lun = node.targetLun;
    }
    return target;
}

// Replaces a handle that may be wedged. The new one keeps the driver's own
// timing, address and event setting.
void ReopenPort() VEK_REQUIRES(g_IpmiNode[0].ifcMutex)
{
    closeDevice();
    if (openLogged() < 0)
        syslog(LOG_INFO, "Node %d: Unable to open node %s", 0, strerror(errno));
}

bool send(const IpmiNode& node, ipmiifc_req& request)
{
    if (ioctl(node.devFd, IPMICTL_SEND_COMMAND, &request) >= 0)
        return true;
    const int reason = errno;
    syslog(LOG_ERR, "Node %d: ioctl IPMICTL_SEND_COMMAND(fd=%d), errno(%d):%s",
           0, int(node.devFd), reason, strerror(reason));
    return false;
}

enum class Wait
{
    failed,
    woken,
    answered
};

Wait awaitAnswer(const IpmiNode& node)
{
    pollfd fds[2] = {{node.devFd, POLLIN, 0},
                     {node.signalCmdPipeFds[FD_READ], POLLIN, 0}};
    const int ready = poll(fds, 2, answerTimeoutMs);
    if (ready == 0) {
        syslog(LOG_WARNING, "Node %d: poll(fd=%d) timeout with no reply.", 0,
               int(node.devFd));
        return Wait::failed;
    }
    if (ready < 0) {
        const int reason = errno;
        syslog(LOG_ERR, "Node %d: poll(fd=%d), errno=%d %s", 0, int(node.devFd),
               reason, strerror(reason));
        return Wait::failed;
    }
    return fds[0].revents == POLLIN ? Wait::answered : Wait::woken;
}

// No usable answer: a record that the caller gave says so.
ipmiifc_resp* unanswered(ipmiifc_resp* given)
{
    if (given)
        given->cc = noAnswer;
    return given;
}

uint8_t* copyOf(const uint8_t* bytes, size_t size)
{
    uint8_t* copy = size && bytes ? new (std::nothrow) uint8_t[size] : nullptr;
    if (copy)
        std::copy_n(bytes, size, copy);
    return copy;
}

void keepCopy(ipmiifc_resp& resp, const ipmiifc_req& sent)
{
    resp.request = sent;
    resp.request.addr = copyOf(sent.addr, sent.addr_len);
    resp.request.data = copyOf(sent.data, sent.data_len);
}

// Takes one message into resp. Returns its receive type, or -1.
int receive(const IpmiNode& node, ipmiifc_resp& resp)
{
    // Not a completion code that anybody takes for success, should the
    // message turn out to hold no byte at all.
    constexpr uint32_t pattern = 0xdeadbeef;
    memcpy(resp.data, &pattern, sizeof pattern);

    ipmi_addr address{};
    ipmi_recv message{};
    message.addr = reinterpret_cast<unsigned char*>(&address);
    message.addr_len = sizeof address;
    message.msg.data = resp.data;
    message.msg.data_len = ipmiifc_resp::capacity;
    if (ioctl(node.devFd, IPMICTL_RECEIVE_MSG_TRUNC, &message) < 0 &&
        errno != EMSGSIZE)
        return -1;

    const int length = std::min<int>(message.msg.data_len, resp.capacity);
    std::fill(resp.data + std::max(length, 1), resp.data + resp.capacity,
              uint8_t{0});
    resp.data_len = length;
    resp.cc = resp.data[0];
    return message.recv_type;
}

// A record that the caller gave stays the caller's on every path: a null
// answer must not mean that it is gone.
ipmiifc_resp* discard(ipmiifc_resp* resp, const ipmiifc_resp* given)
{
    if (resp == given)
        unanswered(resp);
    else
        IpmiIfcRespDel(&resp);
    return nullptr;
}

ipmiifc_resp* takeAnswer(const IpmiNode& node, const ipmiifc_req& sent,
                         int flags, ipmiifc_resp* given)
    VEK_REQUIRES(g_IpmiNode[0].ifcMutex)
{
    ipmiifc_resp* resp = given;
    if (given ? IpmiIfcRespReuse(given) : IpmiIfcRespNew(&resp)) {
        syslog(LOG_ERR, "Node %d: alloc failed - not enough memory.", 0);
        // Taken all the same: the next exchange would get it for its own.
        ipmiifc_resp dropped{};
        receive(node, dropped);
        return nullptr;
    }
    const int type = receive(node, *resp);
    if (type < 0) {
        const int reason = errno;
        const int fd = node.devFd;
        ReopenPort();
        if (reason != EAGAIN)
            syslog(LOG_ERR,
                   "Node %d: ioctl IPMICTL_RECEIVE_MSG_TRUNC(fd=%d), "
                   "errno(%d):%s",
                   0, fd, reason, strerror(reason));
        return discard(resp, given);
    }
    if (type == IPMI_ASYNC_EVENT_RECV_TYPE)
        return discard(resp, given);
    if (resp->cc == 0 && resp->data_len != 0) {
        resp->node = 0;
        if (flags & keepRequest)
            keepCopy(*resp, sent);
    }
    return resp;
}

} // namespace

int IpmiIfcRespNew(ipmiifc_resp** out)
{
    if (!out)
        return -1;
    *out = new (std::nothrow) ipmiifc_resp{};
    return *out ? 0 : -1;
}

int IpmiIfcRespReuse(ipmiifc_resp* resp)
{
    if (!resp)
        return -1;
    delete[] resp->request.addr;
    delete[] resp->request.data;
    resp->request.addr = nullptr;
    resp->request.data = nullptr;
    return 0;
}

int IpmiIfcRespDel(ipmiifc_resp** resp)
{
    if (!resp || IpmiIfcRespReuse(*resp) != 0)
        return -1;
    delete *resp;
    *resp = nullptr;
    return 0;
}

TargetUse::TargetUse(int address, uint8_t channel, uint8_t lun, Restore restore)
    : chosenTarget_{g_IpmiNode[0].targetMutex},
      restore_{restore},
      address_{g_IpmiNode[0].targetAddress},
      channel_{g_IpmiNode[0].targetChannel},
      lun_{g_IpmiNode[0].targetLun}
{
    g_IpmiNode[0].targetAddress = address;
    g_IpmiNode[0].targetChannel = channel;
    g_IpmiNode[0].targetLun = lun;
}

TargetUse::~TargetUse()
{
    g_IpmiNode[0].targetAddress = address_;
    if (restore_ == Restore::addressOnly)
        return;
    g_IpmiNode[0].targetChannel = channel_;
    g_IpmiNode[0].targetLun = lun_;
}

ipmiifc_resp* IpmiIfcSendWresponse(int, ipmiifc_req* req, int flags,
                                   ipmiifc_resp* resp)
{
    IpmiNode& node = g_IpmiNode[0];
    VEK::RecursiveLock chosenTarget{node.targetMutex};
    VEK::MutexLock exchange{g_IpmiNode[0].ifcMutex};
    if (node.devFd < 1 || node.shutdownFlag)
        return nullptr;

    Target target = targetOf(node);
    ipmiifc_req request = *req;
    request.addr = target.bytes;
    request.addr_len = addressLength;
    const Wait wait = send(node, request) ? awaitAnswer(node) : Wait::failed;
    if (wait == Wait::failed) {
        ReopenPort();
        return unanswered(resp);
    }
    if (node.shutdownFlag)
        return nullptr;
    if (wait == Wait::woken)
        return unanswered(resp);
    // The answer's message id is not compared: ifcMutex keeps one request
    // outstanding at a time.
    return takeAnswer(node, request, flags, resp);
}

void sleepOutOfStep()
{
    sleep(unsigned(time(nullptr) & 3));
}

int exchangeAgain(ipmiifc_req& request, Response& response)
{
    ipmiifc_resp* const resp =
        IpmiIfcSendWresponse(0, &request, 0, response.get());
    if (!resp) {
        response.reset();
        return -1;
    }
    if (resp != response.get())
        response.reset(resp);
    return resp->cc;
}

ipmiifc_resp* IpmiIfcSend(int, ipmiifc_req* req, int flags)
{
    VEK::RecursiveLock chosenTarget{g_IpmiNode[0].targetMutex};
    VEK::MutexLock transaction{g_IpmiNode[0].infoMutex};
    return IpmiIfcSendWresponse(0, req, flags, nullptr);
}

ipmiifc_resp* IpmiIfcSendCmd(int, uint8_t cmd, uint8_t netfn, long,
                             uint16_t data_len, uint8_t* data, int flags)
{
    ipmiifc_req request{};
    request.msgid = g_IpmiNode[0].msgSeq++;
    request.netfn = netfn;
    request.cmd = cmd;
    request.data_len = data_len;
    request.data = data;
    return IpmiIfcSend(0, &request, flags);
}

int IpmiIfc::sendCmd(int node, uint8_t cmd, uint8_t netfn, uint16_t data_len,
                     uint8_t* data, uint16_t* resp_len, uint8_t* resp_buf)
{
    constexpr int bufferTooSmall = 0x10;
    ipmiifc_resp* resp = IpmiIfcSendCmd(node, cmd, netfn, 0, data_len, data, 0);
    if (!resp)
        return noAnswer;
    int result = resp->cc;
    if (result == 0) {
        const int room = resp_len && resp_buf ? *resp_len : 0;
        const int copied = std::min(room, int(resp->data_len));
        std::copy_n(resp->data, copied, resp_buf);
        if (copied < resp->data_len)
            result = bufferTooSmall;
        else if (resp_len)
            *resp_len = static_cast<uint16_t>(copied);
    }
    IpmiIfcRespDel(&resp);
    return result;
}

int IpmiIfc::sendCmd(uint8_t cmd, uint8_t netfn, uint16_t data_len,
                     uint8_t* data, uint16_t* resp_len, uint8_t* resp_buf)
{
    return sendCmd(0, cmd, netfn, data_len, data, resp_len, resp_buf);
}

int IpmiIfcSendCmdTo(int node, const IpmiTarget& target, uint8_t cmd,
                     uint8_t netfn, uint16_t data_len, uint8_t* data,
                     uint16_t* resp_len, uint8_t* resp_buf)
{
    const TargetUse use{target.address, target.channel, target.lun};
    return IpmiIfc::sendCmd(node, cmd, netfn, data_len, data, resp_len,
                            resp_buf);
}

} // namespace Ipmi
