#include "tools/print/info.h"

#include "tools/print/completion_codes.h"
#include "tools/print/os.h"
#include "tools/print/self_test.h"
#include "tools/print/table.h"
#include "tools/print/text.h"

namespace Tool
{

namespace
{

// IPMI v2.0, table 20-2, Additional Device Support.
constexpr BitName additionalSupport[] = {
    {0, "sensor device"},
    {1, "SDR repository device"},
    {2, "SEL device"},
    {3, "FRU inventory device"},
    {4, "IPMB event receiver"},
    {5, "IPMB event generator"},
    {6, "bridge"},
    {7, "chassis device"},
};

// The Get Device ID answer field by field (IPMI v2.0, table 20-2).
struct Identity
{
    uint8_t id, revision;
    bool providesSdrs, available;
    std::string firmware, ipmi;
    unsigned product;
    std::vector<std::string> support;
    Bytes auxiliary;
};

// Seven bits of major revision and two BCD digits of minor revision, as the
// standard has it and other tools print it.
std::string firmwareVersion(uint8_t major, uint8_t minor)
{
    return std::to_string(major & 0x7F) + "." + hexByte(minor);
}

std::string ipmiVersion(uint8_t bcd)
{
    return std::to_string(bcd & 0x0F) + "." + std::to_string(bcd >> 4);
}

Identity identityOf(const std::array<uint8_t, 16>& bytes)
{
    Identity identity;
    identity.id = bytes[1];
    identity.revision = bytes[2] & 0x0F;
    identity.providesSdrs = bytes[2] & 0x80;
    identity.available = !(bytes[3] & 0x80);
    identity.firmware = firmwareVersion(bytes[3], bytes[4]);
    identity.ipmi = ipmiVersion(bytes[5]);
    identity.support = namesOfBits(additionalSupport, bytes[6]);
    identity.product = bytes[10] | bytes[11] << 8;
    identity.auxiliary.assign(bytes.begin() + 12, bytes.end());
    return identity;
}

std::string decimalAndHex(unsigned value, int digits)
{
    return std::to_string(value) + " (" + hexNumber(value, digits) + ")";
}

std::string auxiliaryText(const Bytes& bytes)
{
    std::string text;
    for (const uint8_t byte : bytes)
        text += (text.empty() ? "" : " ") + hexNumber(byte);
    return text;
}

std::vector<std::string> selfTestLines(const SelfTest& test)
{
    if (!test.completion.ok())
        return {"not read (" +
                inWords(commands::getSelfTestResults, test.completion) + ")"};
    std::vector<std::string> lines = {hexNumber(test.result) + ": " +
                                      selfTestInWords(test.result)};
    for (std::string& finding : selfTestFindings(test.result, test.detail))
        lines.push_back(std::move(finding));
    return lines;
}

Json selfTestJson(const SelfTest& test)
{
    Json json;
    if (test.completion.ok()) {
        json["result"] = test.result;
        json["detail"] = test.detail;
        json["words"] = selfTestInWords(test.result);
        json["findings"] = selfTestFindings(test.result, test.detail);
    } else {
        json["result"] = nullptr;
    }
    json["completion"] = toJson(commands::getSelfTestResults, test.completion);
    return json;
}

Json deviceJson(const Identity& identity)
{
    return {{"id", identity.id},
            {"revision", identity.revision},
            {"providesSdrs", identity.providesSdrs},
            {"available", identity.available},
            {"additionalSupport", identity.support}};
}

} // namespace

std::string toTable(const Info& info)
{
    const Identity identity = identityOf(info.deviceId);
    const uint32_t number = manufacturerNumber(info);
    const bool named = !info.manufacturer.empty();
    Table table;
    table.row("Device ID", decimalAndHex(identity.id, 2));
    table.row("Device revision", std::to_string(identity.revision));
    table.row("Device SDRs", identity.providesSdrs ? "provided" : "none");
    table.row("Device available",
              identity.available ? "yes" : "no (updating or initializing)");
    table.row("Firmware version", identity.firmware);
    table.row("Auxiliary firmware", auxiliaryText(identity.auxiliary));
    table.row("IPMI version", identity.ipmi);
    table.row("Manufacturer ID", decimalAndHex(number, 6));
    table.row("Manufacturer", named ? info.manufacturer : "Unknown");
    table.row("Product ID", decimalAndHex(identity.product, 4));
    table.row("Additional support", identity.support);
    table.row("Self-test", selfTestLines(info.selfTest));
    addRows(table, info.os);
    return table.text();
}

Json toJson(const Info& info)
{
    const Identity identity = identityOf(info.deviceId);
    const bool named = !info.manufacturer.empty();
    Json json = document("info");
    json["device"] = deviceJson(identity);
    json["firmware"] = {{"version", identity.firmware},
                        {"auxiliary", identity.auxiliary}};
    json["ipmiVersion"] = identity.ipmi;
    json["manufacturer"] = {
        {"id", manufacturerNumber(info)},
        {"name", named ? Json(info.manufacturer) : Json(nullptr)}};
    json["product"] = {{"id", identity.product}};
    json["selfTest"] = selfTestJson(info.selfTest);
    json["os"] = toJson(info.os);
    json["getDeviceId"] = info.deviceId;
    return json;
}

} // namespace Tool
