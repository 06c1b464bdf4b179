// A record of the event log through every operation and formatter.
#include <algorithm>
#include <cstring>
#include <vector>
#include <vek-ipmi/IpmiEvent.h>

#include "fuzz/target.h"
#include "tests/support/libc_seam.h"

using namespace Ipmi;

namespace
{

// A result that depends on all that was read, so that nothing is left out.
size_t sum;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Event_log entry{};
    memcpy(&entry.record, data, std::min(size, sizeof entry.record));
    const IpmiSelData record{&entry.record, 0};
    sum += record.recordId() + record.recordType() + record.isSelEventRecord() +
           record.getGeneratorId() + record.messageTimeStamp() +
           unsigned(record.eventType() + record.severity()) +
           unsigned(record.alertType()) + record.getSensorNumber();
    for (const std::string& text :
         {record.recordId(0), record.caption(), record.messageFormat(),
          record.recordDataString(), record.details(), GetMessage(&entry),
          DescFromEvent(entry.record.eventType, entry.record.sensorType,
                        entry.record.eventData1)})
        sum += text.size();
    for (const int room : {-1, 0, 1, 2, 15, 200}) {
        // Of exactly that size, for the address sanitizer.
        std::vector<char> buffer(size_t(std::max(room, 0)));
        build_sel_desc(&entry, buffer.data(), room);
        sum += buffer.empty() ? 0 : strlen(buffer.data());
    }
    Seam::takeLog();
    return 0;
}
