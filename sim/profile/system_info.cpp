#include "sim/model/system_info.h"

#include <algorithm>

#include "sim/profile/describe.h"

namespace Sim
{
namespace
{

// IPMI v2.0, table 22-16c.
constexpr struct
{
    const char* key;
    uint8_t parameter;
} texts[] = {
    {"firmwareVersion", 1}, {"systemName", 2}, {"primaryOsName", 3},
    {"osName", 4},          {"osVersion", 5},  {"bmcUrl", 6},
    {"hostUrl", 7},
};

constexpr Word readOnlyWords[] = {
    {"firmwareVersion", 1 << 1}, {"systemName", 1 << 2},
    {"primaryOsName", 1 << 3},   {"osName", 1 << 4},
    {"osVersion", 1 << 5},       {"bmcUrl", 1 << 6},
    {"hostUrl", 1 << 7},
};

void describeBlocks(Fields& io, SystemInfo& info)
{
    constexpr uint8_t most = 17;
    uint8_t blocks = info.blocks;
    io.number("blocks", blocks, Fields::Base::Decimal, most);
    if (blocks == 0)
        io.refuse("blocks", "a text needs a block at least");
    else
        info.blocks = blocks;
}

void describeText(Fields& io, SystemInfo& info, const char* key,
                  uint8_t parameter)
{
    const size_t most = std::min<size_t>(255, SystemInfo::offset(info.blocks));
    std::optional<std::string> text;
    const auto held = info.texts.find(parameter);
    if (held != info.texts.end())
        text = toString(held->second);
    io.text(key, text, [most](const std::string& value) {
        return value.size() <= most
                   ? std::string{}
                   : std::to_string(value.size()) + " bytes, " +
                         std::to_string(most) + " fit";
    });
    if (text)
        info.texts[parameter] = makeText(*text);
}

} // namespace

void describe(Fields& io, SystemInfo& info)
{
    describeBlocks(io, info);
    for (const auto& row : texts)
        describeText(io, info, row.key, row.parameter);
    io.bits("readOnly", info.readOnly, readOnlyWords);
}

} // namespace Sim
