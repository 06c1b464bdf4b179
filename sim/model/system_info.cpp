#include "sim/model/system_info.h"

#include <algorithm>

#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

constexpr uint8_t notSupported = 0x80;
constexpr uint8_t alreadyInProgress = 0x81;
constexpr uint8_t readOnly = 0x82;

constexpr uint8_t parameterRevision = 0x11;
constexpr uint8_t setInProgress = 0;
constexpr size_t blockSize = 16;

/// Block 0 begins with the encoding and the length.
constexpr size_t headerOf(size_t block)
{
    return block == 0 ? 2 : 0;
}

Bytes readBlock(const SystemInfo::Text& text, uint8_t block)
{
    Bytes answer{cc::ok, parameterRevision, block};
    if (block == 0)
        append(answer, {text.encoding, text.length});
    const size_t first = SystemInfo::offset(block);
    for (size_t at = first; at < SystemInfo::offset(block + size_t{1}); ++at)
        answer.push_back(at < text.characters.size() ? text.characters[at] : 0);
    return answer;
}

Bytes getSystemInfo(Bmc& bmc, const Bytes& data)
{
    const SystemInfo& info = *bmc.state().systemInfo;
    const bool revisionOnly = data[0] & 0x80;
    const uint8_t parameter = data[1], block = data[2], blockSelector = data[3];
    const auto text = info.texts.find(parameter);
    if (parameter != setInProgress && text == info.texts.end())
        return {notSupported};
    if (revisionOnly)
        return {cc::ok, parameterRevision};
    if (blockSelector != 0)
        return {cc::invalidDataField};
    if (parameter == setInProgress)
        return block ? Bytes{cc::parameterOutOfRange}
                     : Bytes{cc::ok, parameterRevision, info.setInProgress};
    if (block >= info.blocks)
        return {cc::parameterOutOfRange};
    return readBlock(text->second, block);
}

Bytes setProgress(SystemInfo& info, const Bytes& data)
{
    constexpr uint8_t complete = 0, inProgress = 1;
    if (data.size() != 2)
        return {cc::dataLengthInvalid};
    // Without rollback there is nothing to commit (2).
    if (data[1] > inProgress)
        return {cc::invalidDataField};
    if (data[1] == inProgress && info.setInProgress != complete)
        return {alreadyInProgress};
    info.setInProgress = data[1];
    return {cc::ok};
}

void writeBlock(SystemInfo::Text& text, uint8_t block, const Bytes& data)
{
    constexpr size_t selectors = 2;
    if (block == 0) {
        text.encoding = data[2] & 0x0F;
        text.length = data[3];
    }
    const size_t first = SystemInfo::offset(block);
    const size_t end = SystemInfo::offset(block + size_t{1});
    if (text.characters.size() < end)
        text.characters.resize(end);
    std::copy(data.begin() + selectors + headerOf(block), data.end(),
              text.characters.begin() + std::ptrdiff_t(first));
}

Bytes setSystemInfo(Bmc& bmc, const Bytes& data)
{
    SystemInfo& info = *bmc.state().systemInfo;
    const uint8_t parameter = data[0];
    if (parameter == setInProgress)
        return setProgress(info, data);
    const auto text = info.texts.find(parameter);
    if (text == info.texts.end())
        return {notSupported};
    if (parameter < 8 && info.readOnly >> parameter & 1)
        return {readOnly};
    if (data.size() != 2 + blockSize)
        return {cc::dataLengthInvalid};
    if (data[1] >= info.blocks)
        return {cc::parameterOutOfRange};
    writeBlock(text->second, data[1], data);
    return {cc::ok};
}

constexpr Command commands[] = {
    {0x06, 0x58, "set-system-info", 1, 2 + blockSize, setSystemInfo},
    {0x06, 0x59, "get-system-info", 4, 4, getSystemInfo},
};

} // namespace

SystemInfo::Text makeText(const std::string& utf8)
{
    SystemInfo::Text text;
    text.encoding = std::any_of(utf8.begin(), utf8.end(),
                                [](char c) { return uint8_t(c) > 0x7F; });
    text.length = uint8_t(utf8.size());
    text.characters.assign(utf8.begin(), utf8.end());
    return text;
}

std::string toString(const SystemInfo::Text& text)
{
    const size_t held = std::min<size_t>(text.length, text.characters.size());
    return {text.characters.begin(),
            text.characters.begin() + std::ptrdiff_t(held)};
}

const Family systemInfoFamily{commands, [](const Bmc& bmc) {
                                  return bmc.state().systemInfo.has_value();
                              }};

} // namespace Sim
