/// vek-ipmi-probe [--slow] [DEVICE]: walks the manners of the OpenIPMI driver,
/// a line each ("situation: result"), so that a simulated device can be
/// compared with the real one. A line that depends on the controller rather
/// than on the driver begins with "~"; nothing in the others varies from run
/// to run. --slow adds what takes seconds.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

const char* device = "/dev/ipmi0";

constexpr uint8_t netFnApp = 0x06, getDeviceId = 0x01, unknownCommand = 0xFE;

void line(const std::string& situation, const std::string& result)
{
    std::printf("%s: %s\n", situation.c_str(), result.c_str());
}

std::string errorName(int error)
{
    return error == 0 ? "ok" : strerrorname_np(error);
}

std::string hex(const void* data, size_t size)
{
    const auto* bytes = static_cast<const uint8_t*>(data);
    std::string text;
    char pair[8];
    for (size_t i = 0; i < size; ++i) {
        std::snprintf(pair, sizeof pair, i == 0 ? "%02x" : " %02x", bytes[i]);
        text += pair;
    }
    return text;
}

std::string number(long value)
{
    return std::to_string(value);
}

/// 0 or the errno of the call.
int control(int fd, unsigned long request, void* argument)
{
    return ioctl(fd, request, argument) < 0 ? errno : 0;
}

struct Address
{
    ipmi_addr bytes{};
    unsigned length = 0;
};

Address systemInterface(uint8_t lun = 0, short channel = IPMI_BMC_CHANNEL)
{
    ipmi_system_interface_addr si{};
    si.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    si.channel = channel;
    si.lun = lun;
    Address address;
    std::memcpy(&address.bytes, &si, sizeof si);
    address.length = sizeof si;
    return address;
}

Address ipmb(uint8_t slave, short channel = 0, int type = IPMI_IPMB_ADDR_TYPE)
{
    ipmi_ipmb_addr bus{};
    bus.addr_type = type;
    bus.channel = channel;
    bus.slave_addr = slave;
    Address address;
    std::memcpy(&address.bytes, &bus, sizeof bus);
    address.length = sizeof bus;
    return address;
}

Address withLength(Address address, unsigned length)
{
    address.length = length;
    return address;
}

Address ofType(int type)
{
    Address address = systemInterface();
    address.bytes.addr_type = type;
    return address;
}

struct Message
{
    Address to = systemInterface();
    uint8_t netFn = netFnApp;
    uint8_t command = getDeviceId;
    size_t size = 0; ///< Bytes of data, all 0.
    long id = 1;
};

ipmi_req request(Message& message, std::vector<uint8_t>& data)
{
    data.assign(message.size + 1, 0);
    ipmi_req req{};
    req.addr = reinterpret_cast<unsigned char*>(&message.to.bytes);
    req.addr_len = message.to.length;
    req.msgid = message.id;
    req.msg.netfn = message.netFn;
    req.msg.cmd = message.command;
    req.msg.data_len = static_cast<unsigned short>(message.size);
    req.msg.data = data.data();
    return req;
}

int send(int fd, Message message = {})
{
    std::vector<uint8_t> data;
    ipmi_req req = request(message, data);
    return control(fd, IPMICTL_SEND_COMMAND, &req);
}

int sendOnce(int fd, Message message)
{
    std::vector<uint8_t> data;
    // Without a time of its own a bridged request is repeated for seconds.
    ipmi_req_settime timed{request(message, data), 0, 100};
    return control(fd, IPMICTL_SEND_COMMAND_SETTIME, &timed);
}

int send(int fd, uint8_t command, long id = 1)
{
    Message message;
    message.command = command;
    message.id = id;
    return send(fd, message);
}

std::string pollState(int fd, int timeoutMs = 0)
{
    pollfd p{fd, POLLIN | POLLPRI | POLLOUT, 0};
    poll(&p, 1, timeoutMs);
    std::string text;
    const struct
    {
        short bit;
        const char* name;
    } bits[] = {{POLLIN, "in"},   {POLLPRI, "pri"}, {POLLOUT, "out"},
                {POLLERR, "err"}, {POLLHUP, "hup"}, {POLLNVAL, "nval"}};
    for (const auto& b : bits)
        if (p.revents & b.bit)
            text += std::string(text.empty() ? "" : " ") + b.name;
    return text.empty() ? "nothing" : text;
}

/// Waits for an answer, so that what follows does not depend on timing.
void await(int fd)
{
    pollfd p{fd, POLLIN, 0};
    poll(&p, 1, 10000);
}

struct Received
{
    ipmi_addr address{};
    std::vector<uint8_t> data = std::vector<uint8_t>(512, 0xEE);
    ipmi_recv head{};
    int error = 0;

    Received()
    {
        head.addr = reinterpret_cast<unsigned char*>(&address);
        head.addr_len = sizeof address;
        head.msg.data = data.data();
        head.msg.data_len = static_cast<unsigned short>(data.size());
    }
    int receive(int fd, unsigned long how = IPMICTL_RECEIVE_MSG)
    {
        return error = control(fd, how, &head);
    }
    /// Bytes that the driver wrote: an answer's fourth byte is never EEh.
    long written() const
    {
        return std::find(data.begin(), data.end(), 0xEE) - data.begin();
    }
    std::string code() const
    {
        return error ? errorName(error) : "code " + hex(data.data(), 1);
    }
    std::string whole() const
    {
        if (error)
            return errorName(error);
        char text[80];
        std::snprintf(text, sizeof text,
                      "type %d, id %ld, netfn %02x, cmd %02x, ", head.recv_type,
                      head.msgid, head.msg.netfn, head.msg.cmd);
        return text + code();
    }
};

Received take(int fd, unsigned long how = IPMICTL_RECEIVE_MSG)
{
    Received answer;
    answer.receive(fd, how);
    return answer;
}

Received awaitAndTake(int fd)
{
    await(fd);
    return take(fd);
}

void drain(int fd)
{
    while (take(fd).error == 0)
        ;
}

void probeExchange(int fd)
{
    line("receive, nothing waiting", take(fd).code());
    line("receive cut, nothing waiting",
         take(fd, IPMICTL_RECEIVE_MSG_TRUNC).code());
    line("poll, nothing waiting", pollState(fd));
    line("send", errorName(send(fd)));
    await(fd);
    line("poll, answer waiting", pollState(fd));
    const Received answer = take(fd);
    line("answer", answer.whole());
    line("answer, address", hex(&answer.address, answer.head.addr_len) +
                                ", length " + number(answer.head.addr_len));
    line("~answer, bytes", hex(answer.data.data(), answer.head.msg.data_len));
    line("poll, answer taken", pollState(fd));
    send(fd, unknownCommand);
    line("unknown command", awaitAndTake(fd).whole());
    // Some controllers never answer as much as this.
    line("send 270 bytes", errorName(sendOnce(fd, {systemInterface(), netFnApp,
                                                   unknownCommand, 270})));
    awaitAndTake(fd);
}

void probeMessageIds(int fd)
{
    const struct
    {
        const char* what;
        long id;
    } ids[] = {{"0", 0},
               {"-1", -1},
               {"largest long", LONG_MAX},
               {"smallest long", LONG_MIN}};
    for (const auto& row : ids) {
        send(fd, getDeviceId, row.id);
        const Received answer = awaitAndTake(fd);
        line(std::string("message id ") + row.what,
             answer.head.msgid == row.id ? "comes back" : answer.whole());
    }
    send(fd, getDeviceId, 7);
    send(fd, unknownCommand, 7);
    const std::string first = awaitAndTake(fd).whole();
    line("one id twice", first + "; " + awaitAndTake(fd).whole());
}

struct Buffer
{
    const char* what;
    unsigned addressSize;
    unsigned short dataSize;
    bool noAddress, noData;
};

/// One receive into a buffer that does not suit, and what is left after it.
void probeBuffer(int fd, unsigned long how, const Buffer& buffer)
{
    send(fd);
    await(fd);
    Received cut;
    cut.head.addr_len = buffer.addressSize;
    cut.head.msg.data_len = buffer.dataSize;
    if (buffer.noAddress)
        cut.head.addr = nullptr;
    if (buffer.noData)
        cut.head.msg.data = nullptr;
    cut.receive(fd, how);
    const std::string name =
        std::string(how == IPMICTL_RECEIVE_MSG ? "receive" : "receive cut") +
        " into " + buffer.what;
    line(name,
         errorName(cut.error) + ", length " + number(cut.head.msg.data_len) +
             ", written " + number(cut.written()) + ", type " +
             number(cut.head.recv_type) + ", id " + number(cut.head.msgid) +
             ", address length " + number(cut.head.addr_len));
    const std::string state = pollState(fd);
    line(name + ", then", state + "; " + take(fd).whole());
}

void probeBuffers(int fd)
{
    const Buffer buffers[] = {
        {"1 byte", sizeof(ipmi_addr), 1, false, false},
        {"4 bytes", sizeof(ipmi_addr), 4, false, false},
        {"0 bytes", sizeof(ipmi_addr), 0, false, false},
        {"a null buffer of 0 bytes", sizeof(ipmi_addr), 0, false, true},
        {"a null buffer", sizeof(ipmi_addr), 512, false, true},
        {"a null address", sizeof(ipmi_addr), 1, true, false},
        {"an address of 7 bytes", 7, 1, false, false},
        {"an address of 0 bytes", 0, 1, false, false},
        {"an address of 8 bytes", 8, 1, false, false},
    };
    for (unsigned long how : {IPMICTL_RECEIVE_MSG, IPMICTL_RECEIVE_MSG_TRUNC})
        for (const Buffer& buffer : buffers)
            probeBuffer(fd, how, buffer);
}

/// One request to the driver's door; "~" marks those whose answers are the
/// controller's own affair.
struct RequestCase
{
    const char* what;
    Address to;
    size_t size = 0;
    uint8_t command = getDeviceId;
    uint8_t netFn = netFnApp;
};

const std::vector<RequestCase>& requestCases()
{
    const Address bmc = systemInterface(), bus = ipmb(0x52);
    static const std::vector<RequestCase> cases = {
        {"271 bytes", bmc, 271, unknownCommand},
        {"272 bytes", bmc, 272},
        {"273 bytes", bmc, 273},
        {"300 bytes", bmc, 300},
        {"65535 bytes", bmc, 65535},
        {"network function 7", bmc, 0, getDeviceId, 0x07},
        {"network function 63", bmc, 0, getDeviceId, 0x3F},
        {"network function 70", bmc, 0, getDeviceId, 0x46},
        {"Get Message", bmc, 0, 0x33},
        {"Send Message", bmc, 0, 0x34},
        {"Read Event Message Buffer", bmc, 0, 0x35},
        {"lun 4", systemInterface(4)},
        {"system interface, channel 0", systemInterface(0, 0)},
        {"system interface, channel 14", systemInterface(0, 14)},
        {"system interface, channel 16", systemInterface(0, 16)},
        {"system interface, channel -1", systemInterface(0, -1)},
        {"address type 0", ofType(0)},
        {"address type 5", ofType(5)},
        {"address type -1", ofType(-1)},
        {"address of 0 bytes", withLength(bmc, 0)},
        {"address of 7 bytes", withLength(bmc, 7)},
        {"address of 12 bytes", withLength(bmc, 12)},
        {"address of 40 bytes", withLength(bmc, 40)},
        {"address of 41 bytes", withLength(bmc, 41)},
        {"ipmb, channel 15", ipmb(0x52, 15)},
        {"ipmb, channel 16", ipmb(0x52, 16)},
        {"ipmb, channel -1", ipmb(0x52, -1)},
        {"ipmb, address of 7 bytes", withLength(bus, 7)},
        {"ipmb, 300 bytes", bus, 300},
        {"ipmb direct", ipmb(0x52, 0, IPMI_IPMB_DIRECT_ADDR_TYPE)},
        {"lan, channel 15", ofType(IPMI_LAN_ADDR_TYPE)},
        {"~lun 1", systemInterface(1)},
        {"~lun 3, unknown command", systemInterface(3), 0, unknownCommand},
        {"~network function 3Eh", bmc, 0, getDeviceId, 0x3E},
        {"~ipmb, nobody at 52h", bus},
        {"~ipmb, the controller itself", ipmb(0x20)},
        {"~ipmb, channel 1", ipmb(0x52, 1)},
        {"~ipmb, channel 7", ipmb(0x52, 7)},
        {"~ipmb broadcast", ipmb(0x52, 0, IPMI_IPMB_BROADCAST_ADDR_TYPE)},
        {"~ipmb, a response", bus, 1, getDeviceId, netFnApp | 1},
    };
    return cases;
}

void probeRequests(int fd)
{
    for (const RequestCase& row : requestCases()) {
        const int error =
            sendOnce(fd, {row.to, row.netFn, row.command, row.size});
        std::string result = errorName(error);
        if (error == 0) {
            const Received answer = awaitAndTake(fd);
            result += "; " + answer.whole() + ", address " +
                      hex(&answer.address, answer.head.addr_len);
        }
        const bool own = row.what[0] == '~';
        line(std::string(own ? "~" : "") + "request: " + (row.what + own),
             result);
    }
}

void probePointers(int fd)
{
    Message message;
    std::vector<uint8_t> data;
    ipmi_req req = request(message, data);
    req.addr = nullptr;
    line("send, null address",
         errorName(control(fd, IPMICTL_SEND_COMMAND, &req)));
    message.command = unknownCommand;
    req = request(message, data);
    req.msg.data = nullptr;
    req.msg.data_len = 300;
    const int error = control(fd, IPMICTL_SEND_COMMAND, &req);
    line("send, 300 bytes of null data",
         errorName(error) +
             (error == 0 ? "; " + awaitAndTake(fd).whole() : ""));
    const struct
    {
        const char* what;
        unsigned long request;
    } nulls[] = {{"send", IPMICTL_SEND_COMMAND},
                 {"send with times", IPMICTL_SEND_COMMAND_SETTIME},
                 {"receive", IPMICTL_RECEIVE_MSG},
                 {"receive cut", IPMICTL_RECEIVE_MSG_TRUNC},
                 {"get address", IPMICTL_GET_MY_ADDRESS_CMD},
                 {"set timing", IPMICTL_SET_TIMING_PARMS_CMD},
                 {"set events", IPMICTL_SET_GETS_EVENTS_CMD},
                 {"register", IPMICTL_REGISTER_FOR_CMD}};
    for (const auto& row : nulls)
        line(std::string("null argument: ") + row.what,
             errorName(control(fd, row.request, nullptr)));
    int value = 0;
    line("unknown ioctl, number 99",
         errorName(control(fd, _IOR(IPMI_IOC_MAGIC, 99, int), &value)));
    line("unknown ioctl, a terminal's",
         errorName(control(fd, FIONREAD, &value)));
}

void probeHandles(int fd)
{
    const int other = open(device, O_RDWR | O_NONBLOCK);
    line("second handle", other < 0 ? errorName(errno) : "ok");
    send(fd, getDeviceId, 11);
    send(other, unknownCommand, 22);
    send(fd, unknownCommand, 12);
    for (int handle : {other, fd, fd})
        line(handle == fd ? "first handle's answer" : "second handle's answer",
             awaitAndTake(handle).whole());
    line("first handle, then", take(fd).code());
    line("second handle, then", take(other).code());
    send(other);
    await(other);
    line("answer not taken at close", errorName(close(other) ? errno : 0));
    line("closed handle", errorName(send(other)));
    const int again = open(device, O_RDONLY);
    line("opened again for reading",
         again < 0 ? errorName(errno) : take(again).code());
    line("send on it", errorName(send(again)));
    line("its answer", awaitAndTake(again).whole());
    close(again);
}

void probeManyRequests(int fd)
{
    int sent = 0, error = 0;
    // Not in order: a send may overtake those that wait in the driver.
    std::set<long> answered;
    while (sent < 200 && (error = send(fd, getDeviceId, sent)) == 0)
        ++sent;
    line("requests outstanding", number(sent) + ", then " + errorName(error));
    for (int i = 0; i < sent; ++i)
        answered.insert(awaitAndTake(fd).head.msgid);
    line("answered, each once", number(long(answered.size())));
    line("send after them", errorName(send(fd)));
    awaitAndTake(fd);
}

std::string legacyValue(int fd, unsigned long get)
{
    unsigned value = 0xEEEEEEEE;
    const int error = control(fd, get, &value);
    return error ? errorName(error) : number(value);
}

std::string channelValue(int fd, unsigned long get, unsigned short channel)
{
    ipmi_channel_lun_address_set set{channel, 0xEE};
    const int error = control(fd, get, &set);
    return error ? errorName(error) : number(set.value);
}

struct Setting
{
    const char* name;
    unsigned long get, set, getChannel, setChannel;
    unsigned standard;
    std::vector<unsigned> values;
};

void probeLegacySetting(int fd, int other, const Setting& s)
{
    const std::string name = s.name;
    line(name, legacyValue(fd, s.get));
    for (unsigned value : s.values) {
        const int error = control(fd, s.set, &value);
        line(name + " set to " + number(value),
             errorName(error) + "; " + legacyValue(fd, s.get) +
                 "; other handle " + legacyValue(other, s.get) +
                 "; channel 0 " + channelValue(fd, s.getChannel, 0) +
                 ", channel 1 " + channelValue(fd, s.getChannel, 1));
    }
    unsigned standard = s.standard;
    control(fd, s.set, &standard);
}

void probeChannelSetting(int fd, const Setting& s)
{
    for (unsigned short channel : {0, 7, 15, 16, 65535}) {
        ipmi_channel_lun_address_set set{channel, 3};
        const std::string before = channelValue(fd, s.getChannel, channel);
        const int error = control(fd, s.setChannel, &set);
        line(std::string(s.name) + " of channel " + number(channel),
             before + "; set to 3: " + errorName(error) + "; " +
                 channelValue(fd, s.getChannel, channel) + "; channel 0 " +
                 legacyValue(fd, s.get));
        set.value = static_cast<unsigned char>(s.standard);
        control(fd, s.setChannel, &set);
    }
}

void probeAddresses(int fd)
{
    const int other = open(device, O_RDWR);
    const Setting settings[] = {{"my address",
                                 IPMICTL_GET_MY_ADDRESS_CMD,
                                 IPMICTL_SET_MY_ADDRESS_CMD,
                                 IPMICTL_GET_MY_CHANNEL_ADDRESS_CMD,
                                 IPMICTL_SET_MY_CHANNEL_ADDRESS_CMD,
                                 0x20,
                                 {0x82, 0, 0x81, 0x182}},
                                {"my lun",
                                 IPMICTL_GET_MY_LUN_CMD,
                                 IPMICTL_SET_MY_LUN_CMD,
                                 IPMICTL_GET_MY_CHANNEL_LUN_CMD,
                                 IPMICTL_SET_MY_CHANNEL_LUN_CMD,
                                 2,
                                 {1, 0, 7}}};
    for (const Setting& setting : settings) {
        probeLegacySetting(fd, other, setting);
        probeChannelSetting(fd, setting);
    }
    unsigned address = 0x84;
    control(other, IPMICTL_SET_MY_ADDRESS_CMD, &address);
    close(other);
    line("my address, its setter closed",
         legacyValue(fd, IPMICTL_GET_MY_ADDRESS_CMD));
    address = 0x20;
    control(fd, IPMICTL_SET_MY_ADDRESS_CMD, &address);
}

std::string timing(int fd)
{
    ipmi_timing_parms t{99, 99};
    const int error = control(fd, IPMICTL_GET_TIMING_PARMS_CMD, &t);
    return error ? errorName(error)
                 : "retries " + number(t.retries) + ", time " +
                       number(t.retry_time_ms);
}

void probeTiming(int fd)
{
    const int other = open(device, O_RDWR);
    line("timing", timing(fd));
    const ipmi_timing_parms rows[] = {{3, 500}, {0, 0}, {-5, 1}, {-1, 0}};
    for (ipmi_timing_parms row : rows) {
        const int error = control(fd, IPMICTL_SET_TIMING_PARMS_CMD, &row);
        line("timing set to " + number(row.retries) + ", " +
                 number(row.retry_time_ms),
             errorName(error) + "; " + timing(fd) + "; other handle " +
                 timing(other));
    }
    close(other);
}

std::string maintenance(int fd)
{
    int mode = 99;
    const int error = control(fd, IPMICTL_GET_MAINTENANCE_MODE_CMD, &mode);
    return error ? errorName(error) : number(mode);
}

void probeModes(int fd)
{
    const int other = open(device, O_RDWR);
    line("maintenance mode", maintenance(fd));
    for (int mode : {2, 1, 3, -1, 0}) {
        int value = mode;
        const int error = control(fd, IPMICTL_SET_MAINTENANCE_MODE_CMD, &value);
        line("maintenance mode set to " + number(mode),
             errorName(error) + "; " + maintenance(fd) + "; other handle " +
                 maintenance(other));
    }
    for (int events : {1, 1, 2, -1, 0, 0})
        line("events set to " + number(events),
             errorName(control(fd, IPMICTL_SET_GETS_EVENTS_CMD, &events)));
    close(other);
}

void probeRegistrations(int fd)
{
    const int other = open(device, O_RDWR);
    ipmi_cmdspec one{netFnApp, 0x01}, two{netFnApp, 0x02};
    ipmi_cmdspec odd{0x07, 0x01};
    ipmi_cmdspec_chans ch1{netFnApp, 0x01, 1u << 3}, none{netFnApp, 0x09, 0};
    ipmi_cmdspec_chans ch34{netFnApp, 0x02, 3u << 3};
    const unsigned long add = IPMICTL_REGISTER_FOR_CMD,
                        remove = IPMICTL_UNREGISTER_FOR_CMD,
                        addChannels = IPMICTL_REGISTER_FOR_CMD_CHANS,
                        removeChannels = IPMICTL_UNREGISTER_FOR_CMD_CHANS;
    const struct
    {
        const char* what;
        int handle;
        unsigned long how;
        void* argument;
    } rows[] = {
        {"unregister, never registered", fd, remove, &one},
        {"register", fd, add, &one},
        {"register again", fd, add, &one},
        {"register on the other handle", other, add, &one},
        {"register another command there", other, add, &two},
        {"register a response", fd, add, &odd},
        {"register on channel 3", fd, addChannels, &ch1},
        {"unregister on channel 3", fd, removeChannels, &ch1},
        {"register on channel 3 again", other, addChannels, &ch1},
        {"unregister another's", fd, remove, &two},
        {"unregister part of another's", other, removeChannels, &ch34},
        {"register on no channel", fd, addChannels, &none},
        {"unregister on no channel", fd, removeChannels, &none},
        {"unregister", fd, remove, &one},
        {"unregister again", fd, remove, &one},
    };
    for (const auto& row : rows)
        line(std::string("commands: ") + row.what,
             errorName(control(row.handle, row.how, row.argument)));
    close(other);
    line("commands: register what a closed handle held",
         errorName(control(fd, add, &two)));
    control(fd, remove, &two);
    control(fd, remove, &odd);
}

/// A bridged request that nobody answers, with the driver's own times: five
/// tries, a second each.
void probeSlow(int fd)
{
    Message message;
    message.to = ipmb(0x52);
    send(fd, message);
    line("~ipmb, nobody at 52h, default times", awaitAndTake(fd).whole());
}

} // namespace

int main(int argc, char** argv)
{
    bool slow = false;
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--slow") == 0)
            slow = true;
        else
            device = argv[i];
    const int fd = open(device, O_RDWR);
    if (fd < 0) {
        std::fprintf(stderr, "%s: %s\n", device, std::strerror(errno));
        return 2;
    }
    for (auto probe :
         {probeExchange, probeMessageIds, probeBuffers, probeRequests,
          probePointers, probeHandles, probeManyRequests, probeAddresses,
          probeTiming, probeModes, probeRegistrations})
    {
        probe(fd);
        drain(fd);
    }
    if (slow)
        probeSlow(fd);
    close(fd);
    return 0;
}
