// A FRU device's bytes: as a whole image, as each kind of area through every
// getter, and as a chain of multi-records through every key and as the command
// shows it.
#include <vek-ipmi/IpmiFruImage.h>
#include <vek-ipmi/IpmiIfc.h>

#include "fuzz/target.h"
#include "tests/support/libc_seam.h"
#include "tools/collect/fru_record.h"

using namespace Ipmi;

namespace
{

// A result that depends on all that was read, so that nothing is left out.
size_t sum;

template <typename Area>
void readPart(const uint8_t* data, size_t size)
{
    const auto area = std::make_shared<Area>(unsigned(size), data);
    const IpmiIfc::Part part = IpmiIfc::getFruPart(area);
    for (const std::string& text :
         {part.kind, part.name, part.partNumber, part.version,
          part.manufacturer, part.serialNumber, part.assetTag, part.date})
        sum += text.size();
    for (unsigned at = 0; at <= size; ++at)
        sum += area->getFruAreaString(at).size();
}

void readChain(const IpmiFruMulti& chain)
{
    for (int type = 0; type < 8; ++type)
        for (int key = -1; key <= FRU_KEY_COUNT; ++key)
            sum += chain.getValue(uint8_t(type), FruKey(key)).size();
    sum += chain.isMultiRecordTypePresent(0xc0);
}

void readRecords(const IpmiFruArea& area)
{
    for (const Tool::FruRecord& record : Tool::fruRecordsOf(area))
        for (const Tool::FruValue& value : record.values)
            sum += value.words.size() + record.isAllInWords();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    readPart<IpmiFruChassis>(data, size);
    readPart<IpmiFruBoard>(data, size);
    readPart<IpmiFruProduct>(data, size);
    readChain(IpmiFruMulti{unsigned(size), data});
    IpmiFruArea chain{};
    chain.multi = std::make_shared<IpmiFruMulti>(unsigned(size), data);
    readRecords(chain);
    for (const IpmiFruArea& area : decodeFruImage(data, unsigned(size)).areas) {
        for (const IpmiFruField& field : area.fields)
            sum += field.name.size() + field.value.size();
        if (area.multi)
            readChain(*area.multi);
        readRecords(area);
    }
    Seam::takeLog();
    return 0;
}
