// The FRU devices of a node: one pass over all of them, and what callers get.
#include "ipmi/IpmiIfcFru.h"

#include <syslog.h>

#include "ipmi/IpmiFruImage.h"
#include "ipmi/IpmiIfcSdr.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t storage = 0x0a;
constexpr uint8_t getInventoryAreaInfo = 0x10;

/// Of a FRU device locator record (IPMI v2.0, 43.8), from its header on.
namespace locatorAt
{
enum : size_t
{
    accessAddress = 5,
    fruDevice = 6,
    accessLun = 7, ///< Bit 7: logical; LUN in bits 4..3.
    channel = 8,   ///< In bits 7..4.
    deviceType = 10,
    deviceModifier = 11,
    entity = 12,
    entityInstance = 13
};
} // namespace locatorAt

bool isLogical(RecordView locator)
{
    return locator.u8(locatorAt::accessLun) & 0x80;
}

uint8_t lunOf(RecordView locator)
{
    return locator.u8(locatorAt::accessLun) >> 3 & 3;
}

uint8_t channelOf(RecordView locator)
{
    return locator.u8(locatorAt::channel) >> 4;
}

bool isDimm(RecordView locator)
{
    // From EEPROMs to devices behind a controller.
    constexpr uint8_t firstType = 0x08, lastType = 0x10, dimm = 0x01;
    const uint8_t type = locator.u8(locatorAt::deviceType);
    return type >= firstType && type <= lastType &&
           locator.u8(locatorAt::deviceModifier) == dimm;
}

// The common header's offsets, in the order of its bytes.
struct CommonHeader
{
    uint8_t bytes[8];

    uint8_t version() const { return bytes[0]; }
    uint8_t chassis() const { return bytes[2]; }
    uint8_t board() const { return bytes[3]; }
    uint8_t product() const { return bytes[4]; }
    uint8_t multi() const { return bytes[5]; }
};

// 0, a completion code, or -1. An unknown version is a header without areas.
int readHeader(IpmiNode& node, CommonHeader& header) VEK_REQUIRES(node.fruMutex)
{
    constexpr int timeout = 0xc3;
    constexpr uint8_t knownVersion = 1;
    const FruDeviceHeader device = node.fruDeviceHeader;
    unsigned length = sizeof header.bytes;
    const int result =
        IpmiIfcReadFru(numberOf(node), device.deviceId, device.accessType & 1,
                       0, &length, header.bytes);
    if (result != 0) {
        if (result != timeout)
            syslog(LOG_ERR,
                   "IpmiIfcRhFruInv: Reading FRU header for 0x%x FAILED "
                   "cc=0x%x",
                   device.deviceId, unsigned(result));
        header = {};
        return result;
    }
    if (header.version() != knownVersion) {
        syslog(LOG_WARNING,
               "IpmiIfcRhFruInv: Unknown FRU header version 0x%02x",
               header.version());
        header = {};
    }
    return 0;
}

std::shared_ptr<IpmiFruBoard> readBoard(IpmiNode& node,
                                        const CommonHeader& header)
    VEK_REQUIRES(node.fruMutex)
{
    const uint8_t device = node.fruDeviceHeader.deviceId;
    std::shared_ptr<IpmiFruBoard> board =
        IpmiIfcFruBoard(header.board(), node, device);
    if (header.multi() == 0)
        return board;
    std::shared_ptr<IpmiFruMulti> multi =
        IpmiIfcFruMulti(header.multi(), node, device);
    if (board && multi)
        board->setMultiRecord(std::move(multi));
    return board;
}

// One area a device: callers rely on the choice.
std::shared_ptr<IpmiFruOptional> readChosenArea(IpmiNode& node,
                                                const CommonHeader& header)
    VEK_REQUIRES(node.fruMutex)
{
    const uint8_t device = node.fruDeviceHeader.deviceId;
    if (header.chassis())
        return IpmiIfcFruChassis(header.chassis(), node, device);
    if (header.board())
        return readBoard(node, header);
    if (header.multi())
        return IpmiIfcFruMulti(header.multi(), node, device);
    if (header.product())
        return IpmiIfcFruProduct(header.product(), node, device);
    return nullptr;
}

// Takes the answer to Get FRU Inventory Area Info; below 0 for a failure.
int IpmiIfcRhFruInv(IpmiNode& node, const ipmiifc_resp& resp,
                    IpmiFru::Areas& areas) VEK_REQUIRES(node.fruMutex)
{
    const RecordView answer = viewOf(resp);
    FruDeviceHeader& device = node.fruDeviceHeader;
    device.completionCode = answer.u8(0);
    answer.copyTo(device.areaSize, 1, sizeof device.areaSize);
    device.accessType = answer.u8(3);
    if (!resp.request.data) {
        syslog(LOG_ERR, "%s: unexpected, data bffer null", __func__);
        return -1;
    }
    device.deviceId = resp.request.data[0];
    CommonHeader header{};
    const int result = readHeader(node, header);
    const auto area = readChosenArea(node, header);
    const IpmiIfc::Part part = IpmiIfc::getFruPart(area);
    if (area && !part.name.empty() && !part.partNumber.empty())
        areas.push_back(area);
    return result;
}

// Held during a pass, of whichever node: all of them share the transport.
VEK::Mutex passMutex;

/// Whom the pass is at. Address 0: whom the node's commands go to.
struct
{
    VEK::Relaxed<int> address{0};
    VEK::Relaxed<uint8_t> lun{0};
    VEK::Relaxed<uint8_t> channel{0};
} passTarget;

/// A pass over the devices. Sends each exchange to whom the last locator with
/// an access address named: later ones without one go there, too.
class Pass
{
public:
    explicit Pass(IpmiNode& node) : node_{node} {}
    ~Pass() { passTarget.address = 0; }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    void take(const ipmiifc_sdr_list& entry);
    std::vector<std::shared_ptr<IpmiFru>> end();

private:
    void readLogical(const ipmiifc_sdr_list& entry);

    IpmiNode& node_;
    std::vector<std::shared_ptr<IpmiFru>> frus_;
    bool hasDeviceZero_ = false;
};

void Pass::take(const ipmiifc_sdr_list& entry)
{
    const RecordView locator = viewOf(entry);
    if (!isLogical(locator)) {
        syslog(LOG_DEBUG,
               "IpmiIfcFruInstantiateAll: Unhandled physical FRU %02x %02x "
               "%02x %02x",
               locator.u8(locatorAt::fruDevice),
               locator.u8(locatorAt::accessAddress), lunOf(locator),
               channelOf(locator));
        return;
    }
    if (locator.size() > IpmiSdrRecord::capacity) {
        syslog(LOG_WARNING,
               "IpmiIfcFruInstantiateAll: FRU locator record 0x%x is too long "
               "(%d)",
               entry.recordId, int(locator.size()));
        return;
    }
    readLogical(entry);
}

void Pass::readLogical(const ipmiifc_sdr_list& entry)
{
    const RecordView locator = viewOf(entry);
    const uint8_t device = locator.u8(locatorAt::fruDevice);
    if (const uint8_t address = locator.u8(locatorAt::accessAddress)) {
        passTarget.lun = lunOf(locator);
        passTarget.channel = channelOf(locator);
        passTarget.address = address;
    }
    IpmiFru::Areas areas;
    if (isDimm(locator)) {
        syslog(LOG_DEBUG,
               "IpmiIfcFruInstantiateAll: DIMM Memory ID 0x%02x, type(0x%02x), "
               "modifier(0x%02x)",
               device, locator.u8(locatorAt::deviceType),
               locator.u8(locatorAt::deviceModifier));
    } else {
        areas = IpmiIfcFruGetInv(numberOf(node_), device);
        hasDeviceZero_ |= device == 0;
    }
    const IpmiSdrRecord record{uint32_t(locator.size()), entry.bytes.get()};
    frus_.push_back(
        std::make_shared<IpmiFru>(record, std::move(areas), numberOf(node_)));
}

std::vector<std::shared_ptr<IpmiFru>> Pass::end()
{
    if (!hasDeviceZero_)
        frus_.push_back(std::make_shared<IpmiFru>(
            IpmiSdrRecord{}, IpmiIfcFruGetInv(numberOf(node_), 0),
            numberOf(node_)));
    return std::move(frus_);
}

} // namespace

Response sendToFru(ipmiifc_req& request, int flags)
{
    if (passTarget.address == 0)
        return Response{IpmiIfcSend(0, &request, flags)};
    // For this exchange alone: others' commands go where they always do.
    const TargetUse use{passTarget.address, passTarget.channel, passTarget.lun};
    return Response{IpmiIfcSend(0, &request, flags)};
}

namespace
{

Response askForInfo(uint8_t deviceId)
{
    uint8_t data[] = {deviceId};
    ipmiifc_req request{};
    request.msgid = g_IpmiNode[0].msgSeq++;
    request.netfn = storage;
    request.cmd = getInventoryAreaInfo;
    request.data_len = sizeof data;
    request.data = data;
    return sendToFru(request, keepRequest);
}

} // namespace

IpmiFru::Areas IpmiIfcFruGetInv(int number, unsigned char fruDeviceId)
{
    constexpr size_t reserved = 20;
    IpmiFru::Areas areas;
    areas.reserve(reserved);
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return areas;
    {
        VEK::MutexLock lock{node->fruMutex};
        node->fruDeviceHeader = {};
    }
    const Response resp = askForInfo(fruDeviceId);
    if (!resp)
        return areas;
    if (resp->cc != 0) {
        syslog(LOG_ERR, "IpmiIfcFruGetInv: Failed during send cc = 0x%x",
               resp->cc);
        return areas;
    }
    VEK::MutexLock lock{node->fruMutex};
    if (IpmiIfcRhFruInv(*node, *resp, areas) < 0)
        syslog(LOG_DEBUG, "IpmiIfcFruGetInv: Failed to call IpmiIfcRhFruInv()");
    return areas;
}

int IpmiIfcFruInstantiateAll(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::MutexLock oneAtATime{passMutex};
    VEK::ReadLock records{node.sdrLock};
    fru_max_req_size = largestFruRequest;
    Pass pass{node};
    for (const ipmiifc_sdr_list* entry = node.sdrLists[SDR_FRU_LOCATOR]; entry;
         entry = entry->next)
        pass.take(*entry);
    auto frus = pass.end();
    VEK::MutexLock lock{node.fruMutex};
    node.frus->swap(frus);
    return 0;
}

std::vector<std::shared_ptr<IpmiFru>> IpmiIfc::getFrus(int number)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return {};
    VEK::MutexLock lock{node->fruMutex};
    return *node->frus;
}

std::vector<std::shared_ptr<IpmiFru>> IpmiIfc::getFrus()
{
    return getFrus(0);
}

FruDeviceHeader IpmiIfc::getFruDeviceHeader(int number)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return {};
    VEK::MutexLock lock{node->fruMutex};
    return node->fruDeviceHeader;
}

FruDeviceHeader IpmiIfc::getFruDeviceHeader()
{
    return getFruDeviceHeader(0);
}

namespace
{

/// A device on which no pass is, whatever the node knows of it: the limit that
/// passes find stays as it is.
class DeviceSource : public FruSource
{
public:
    DeviceSource(int node, const IpmiFru* fru)
        : node_{node},
          deviceId_{fru ? fru->getOwnerId() : uint8_t{0}},
          limit_{fru_max_req_size}
    {
        if (!fru || fru->getSlaveAddress() == 0)
            return;
        passTarget.lun = fru->getLun();
        passTarget.channel = fru->getChannel();
        passTarget.address = fru->getSlaveAddress();
    }
    ~DeviceSource() override
    {
        passTarget.address = 0;
        fru_max_req_size = limit_;
    }

    /// The completion code, or -1.
    int open()
    {
        const Response resp = askForInfo(deviceId_);
        if (!resp || resp->cc != 0)
            return resp ? resp->cc : -1;
        size_ = viewOf(*resp).u16(1);
        byWords_ = viewOf(*resp).u8(3) & 1;
        return 0;
    }
    unsigned size() const override { return size_; }
    bool byWords() const { return byWords_; }
    int read(unsigned offset, unsigned& count, uint8_t* out) override
    {
        return IpmiIfcReadFru(node_, deviceId_, byWords_ ? 1 : 0, int(offset),
                              &count, out);
    }

private:
    int node_;
    uint8_t deviceId_;
    int limit_;
    unsigned size_ = 0;
    bool byWords_ = false;
};

} // namespace

IpmiFruContents IpmiIfc::getFruAreas(int node,
                                     const std::shared_ptr<IpmiFru>& fru)
{
    IpmiFruContents contents;
    VEK::MutexLock oneAtATime{passMutex};
    DeviceSource device{node, fru.get()};
    contents.result = device.open();
    if (contents.result != 0)
        return contents;
    contents.size = device.size();
    contents.byWords = device.byWords();
    decodeFru(device, contents);
    return contents;
}

IpmiFruContents IpmiIfc::getFruAreas(const std::shared_ptr<IpmiFru>& fru)
{
    return getFruAreas(0, fru);
}

int IpmiIfc::readFruImage(const std::shared_ptr<IpmiFru>& fru,
                          std::vector<unsigned char>& bytes)
{
    return readFruImage(0, fru, bytes);
}

int IpmiIfc::readFruImage(int node, const std::shared_ptr<IpmiFru>& fru,
                          std::vector<unsigned char>& bytes)
{
    VEK::MutexLock oneAtATime{passMutex};
    DeviceSource device{node, fru.get()};
    bytes.clear();
    if (const int failure = device.open())
        return failure;
    if (device.byWords())
        return FRU_BY_WORDS;
    bytes.resize(device.size());
    unsigned count = device.size();
    const int result = count ? device.read(0, count, bytes.data()) : 0;
    bytes.resize(count);
    return result;
}

IpmiIfc::Part IpmiIfc::getFruPart(const std::shared_ptr<IpmiFruOptional>& area)
{
    const IpmiFruOptional* const any = area.get();
    if (const auto* product = dynamic_cast<const IpmiFruProduct*>(any))
        return {"Product",
                product->getName(),
                product->getPartNumber(),
                product->getVersion(),
                product->getManufacturer(),
                product->getSerialNumber(),
                product->getAssetTag(),
                ""};
    if (const auto* chassis = dynamic_cast<const IpmiFruChassis*>(any))
        return {"Chassis",
                chassis->getType(),
                chassis->getPartNumber(),
                "",
                chassis->getManufacturer(),
                chassis->getSerialNumber(),
                "",
                ""};
    if (const auto* board = dynamic_cast<const IpmiFruBoard*>(any))
        return {"Board", board->getName(),           board->getPartNumber(),
                "",      board->getManufacturer(),   board->getSerialNumber(),
                "",      board->getMfgDateTime8601()};
    const char* const kind =
        dynamic_cast<const IpmiFruMulti*>(any) ? "Multi" : "";
    return {kind, "n/a", "n/a", "", "n/a", "", "", ""};
}

unsigned char IpmiFru::byteAt(unsigned at) const
{
    return RecordView{locator_.bytes(), locator_.length()}.u8(at);
}

unsigned char IpmiFru::getOwnerId() const
{
    return byteAt(locatorAt::fruDevice);
}

unsigned char IpmiFru::getChannel() const
{
    return byteAt(locatorAt::channel) >> 4;
}

unsigned char IpmiFru::getLun() const
{
    return byteAt(locatorAt::accessLun) >> 3 & 3;
}

unsigned char IpmiFru::getSlaveAddress() const
{
    return byteAt(locatorAt::accessAddress);
}

bool IpmiFru::isLogical() const
{
    return byteAt(locatorAt::accessLun) & 0x80;
}

IpmiEntity IpmiFru::getEntity() const
{
    return {byteAt(locatorAt::entity), byteAt(locatorAt::entityInstance), 0,
            node_};
}

} // namespace Ipmi
