// A controller that answers anything, through a read of the whole log and
// polls behind it.
#include <cstring>
#include <set>
#include <vek-ipmi/IpmiCommandLine.h>

#include "fuzz/conversation.h"
#include "fuzz/target.h"
#include "ipmi/IpmiIfcSel.h"

using namespace Ipmi;

namespace
{

size_t handed = 0;

void installOnce()
{
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    installTimelessDevice();
    if (IpmiIfcOpenIpmiOpen(0) < 0)
        __builtin_trap();
    IpmiIfc::registerSelEventHandler(
        [](void*, IpmiSelData* record) {
            handed += record->isSelEventRecord();
        },
        nullptr);
}

void forget()
{
    IpmiNode& node = g_IpmiNode[0];
    VEK::MutexLock refreshing{node.selRefreshMutex};
    VEK::MutexLock lock{node.selMutex};
    *node.selRefresh = {};
    node.selInfo = {};
    node.selAllocInfo = {};
    node.selReservationId = 0;
    node.lastSelRecordId = 0;
    node.selRecords->clear();
}

// A log that says how many records it has may be tried as often.
Sim::Bytes withFewEntries(Sim::Bytes answer)
{
    if (answer.size() > 3) {
        answer[2] &= 0x1f;
        answer[3] = 0;
    }
    return answer;
}

void checkNoneIsHeldTwice()
{
    std::set<std::string> bytes;
    const auto records = IpmiIfc::getSelData();
    for (const auto& record : records)
        bytes.emplace(reinterpret_cast<const char*>(&record->record()),
                      sizeof record->record());
    if (bytes.size() != records.size())
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    constexpr int polls = 4;
    installOnce();
    Conversation conversation{data, size};
    Sim::Device::controller()->bmc().answerBy([&](const Sim::Request& request) {
        auto answer = conversation.answer(request);
        return request.command == 0x40 && answer
                   ? withFewEntries(std::move(*answer))
                   : answer;
    });
    for (int poll = 0; poll < polls; ++poll) {
        IpmiIfcSelGetInfo(0, nullptr);
        checkNoneIsHeldTwice();
    }
    IpmiIfc::clearSel();
    // Four attempts, each with a reservation, for each of 16 chunks; 31
    // entries, or as many as there are answers.
    if (conversation.exchanges() > (polls + 1) * (1000 + size * 130))
        __builtin_trap();
    forget();
    Seam::takeLog();
    return 0;
}
