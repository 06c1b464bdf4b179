// Reading the bytes of a FRU device (IPMI v2.0, 34.2).
#include <algorithm>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiIfcFru.h"

namespace Ipmi
{

VEK::Relaxed<int> fru_max_req_size{largestFruRequest};

namespace
{

constexpr uint8_t storage = 0x0a;
constexpr uint8_t readFruData = 0x11;
constexpr int smallestRequest = 8;

enum Code : uint8_t
{
    nodeBusy = 0xc0,
    timeout = 0xc3,
    dataLengthInvalid = 0xc7,
    cannotReturnBytes = 0xca,
    invalidDataField = 0xcc
};

/// What a response is, completion code first.
constexpr size_t countAt = 1, dataAt = 2;

// An answer holds no more, whatever callers set.
int mostAtOnce()
{
    constexpr int mostInAnswer = ipmiifc_resp::capacity - int(dataAt);
    return std::clamp<int>(fru_max_req_size, 1, mostInAnswer);
}

class FruReader
{
public:
    FruReader(int node, uint8_t deviceId, bool byWords, int offset,
              unsigned wanted, unsigned& stored, uint8_t* buffer)
        : node_{node},
          deviceId_{deviceId},
          byWords_{byWords},
          offset_{offset},
          remaining_{wanted},
          stored_{stored},
          buffer_{buffer}
    {}

    int read();

private:
    /// More than 0 and below it are results of the whole read.
    static constexpr int goOn = 0;

    Response exchange(unsigned chunk);
    int take(const ipmiifc_resp& resp, unsigned chunk);
    int failed(int code);

    static constexpr int mostRetries = 4;
    static constexpr int mostEmpty = 8;

    int node_;
    uint8_t deviceId_;
    bool byWords_;
    int offset_;
    unsigned remaining_;
    unsigned& stored_;
    uint8_t* buffer_;
    // A device that never answered is not waited for.
    int retries_ = mostRetries;
    int empty_ = 0;
};

int FruReader::read()
{
    while (remaining_ > 0) {
        const unsigned chunk = std::min(remaining_, unsigned(mostAtOnce()));
        const Response resp = exchange(chunk);
        if (!resp) {
            syslog(LOG_INFO,
                   "Node %d: IpmiIfcReadFru: deviceID = 0x%x - failed to fetch "
                   "data",
                   node_, deviceId_);
            return -1;
        }
        const int result =
            resp->cc == 0 ? take(*resp, chunk) : failed(resp->cc);
        if (result != goOn)
            return result;
    }
    return 0;
}

// The offset is in bytes in both modes: controllers are known by it.
Response FruReader::exchange(unsigned chunk)
{
    uint8_t data[] = {deviceId_, uint8_t(offset_ & 0xff),
                      uint8_t(offset_ >> 8 & 0xff),
                      uint8_t(byWords_ ? (chunk + 1) / 2 : chunk)};
    ipmiifc_req request{};
    request.msgid = g_IpmiNode[0].msgSeq++;
    request.netfn = storage;
    request.cmd = readFruData;
    request.data_len = sizeof data;
    request.data = data;
    return sendToFru(request);
}

int FruReader::take(const ipmiifc_resp& resp, unsigned chunk)
{
    const RecordView answer = viewOf(resp);
    const unsigned count = answer.u8(countAt);
    if (count > chunk) {
        syslog(LOG_INFO,
               "IpmiIfcReadFru: Response payload larger than expected "
               "(corrupt?) datalen: 0x%x, data[1]: 0x%x > 0x%x",
               unsigned(resp.data_len), count, chunk);
        return -1;
    }
    // What it says and does not bring is asked for again.
    const RecordView bytes = answer.part(dataAt, count);
    bytes.copyTo(buffer_ + stored_, 0, bytes.size());
    offset_ += int(bytes.size());
    stored_ += unsigned(bytes.size());
    remaining_ -= unsigned(bytes.size());
    retries_ = 0;
    empty_ = bytes.size() ? 0 : empty_ + 1;
    if (empty_ < mostEmpty)
        return goOn;
    syslog(LOG_INFO,
           "Node %d: IpmiIfcReadFru: deviceID = 0x%x - no data in %d answers",
           node_, deviceId_, mostEmpty);
    return -1;
}

int FruReader::failed(int code)
{
    switch (code) {
    case cannotReturnBytes:
    case dataLengthInvalid:
    case invalidDataField:
        if (fru_max_req_size <= smallestRequest)
            break;
        fru_max_req_size = mostAtOnce() - 1;
        syslog(LOG_INFO,
               "IpmiIfcReadFru: Command failed with 0x%x, retrying with "
               "smaller buffer (0x%x)",
               unsigned(code), unsigned(int(fru_max_req_size)));
        return goOn;
    case nodeBusy:
    case timeout:
        if (retries_ >= mostRetries)
            break;
        ++retries_;
        syslog(LOG_INFO,
               "IpmiIfcReadFru: Timeout on 0x%x cc=0x%x after reading some "
               "data... retrying %d",
               deviceId_, unsigned(code), retries_);
        sleep(unsigned(retries_));
        return goOn;
    default:
        break;
    }
    syslog(LOG_INFO, "IpmiIfcReadFru: deviceID = 0x%x, bytes left to read = %d",
           deviceId_, int(remaining_));
    syslog(LOG_INFO, "IpmiIfcReadFru: Failed during send cc = 0x%x",
           unsigned(code));
    return code;
}

} // namespace

int IpmiIfcReadFru(int node, unsigned char deviceId,
                   unsigned char devAccessWord, int offset, unsigned* length,
                   unsigned char* buffer)
{
    if (buffer && *length == 0) {
        syslog(LOG_ERR,
               "Node %d: IpmiIfcReadFru invalid parameter,device_id=0x%x,"
               "devAccessWord=0x%x,offset=%d,length=%d",
               node, deviceId, devAccessWord, offset, 0);
        return -1;
    }
    if (!buffer) {
        syslog(LOG_ERR, "%s: unexpected null buffer", __func__);
        return -1;
    }
    const unsigned wanted = *length;
    *length = 0;
    return FruReader{node,    deviceId, devAccessWord != 0, offset, wanted,
                     *length, buffer}
        .read();
}

unsigned IpmiIfruInfoAreaLength(int node, unsigned char deviceId,
                                unsigned char devAccessWord, unsigned offset)
{
    constexpr unsigned unit = 8;
    uint8_t head[2];
    unsigned length = sizeof head;
    const int result = IpmiIfcReadFru(node, deviceId, devAccessWord,
                                      int(offset), &length, head);
    if (result == 0)
        return head[1] * unit;
    syslog(LOG_ERR,
           "IpmiIfruInfoAreaLength: Reading FRU for 0x%x at 0x%x FAILED "
           "cc=0x%x",
           deviceId, offset, unsigned(result));
    return 0;
}

bool IpmiIfcFruChecksum(const unsigned char* data, unsigned char* sum,
                        unsigned count)
{
    for (unsigned i = 0; i < count; ++i)
        *sum = uint8_t(*sum + data[i]);
    return *sum == 0;
}

} // namespace Ipmi
