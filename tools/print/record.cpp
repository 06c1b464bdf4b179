#include "tools/print/record.h"

#include "tools/print/columns.h"

namespace Tool
{

namespace
{

std::string versionText(uint8_t version)
{
    return std::to_string(version & 0x0F) + "." + std::to_string(version >> 4);
}

// The type byte is what lists go by; names of the rest are for people.
std::vector<Cell> cellsOf(const Record& record)
{
    return {{hexNumber(record.id, 4)},
            {versionText(record.version)},
            {hexNumber(record.type) + " " + record.typeName},
            {std::to_string(record.bytes.size())},
            {record.name}};
}

} // namespace

std::string toTable(const std::vector<Record>& records, bool raw,
                    const Terminal& terminal)
{
    Columns table{{{"Record"},
                   {"Version"},
                   {"Type", false, 16},
                   {"Bytes", true},
                   {"Name", false, 8}}};
    for (const Record& record : records)
        table.row(cellsOf(record));
    std::string text = table.text(terminal);
    if (!raw)
        return text;
    std::string mixed;
    size_t at = text.find('\n') + 1;
    mixed = text.substr(0, at);
    for (const Record& record : records) {
        const size_t end = text.find('\n', at) + 1;
        mixed += text.substr(at, end - at) + indented(hexDump(record.bytes));
        at = end;
    }
    return mixed;
}

Json toJson(const Record& record)
{
    Json json;
    json["recordId"] = record.id;
    json["version"] = versionText(record.version);
    json["type"] = {{"code", record.type}, {"name", record.typeName}};
    json["length"] = record.bytes.size();
    json["name"] = record.name.empty() ? Json(nullptr) : Json(record.name);
    return json;
}

Json toJson(const Repository& repository)
{
    return {{"records", repository.total},
            {"found", repository.headers},
            {"unreadable", repository.failed}};
}

Json toJson(const std::vector<Record>& records, const Repository& repository,
            bool raw)
{
    Json json = document("sdr");
    json["repository"] = toJson(repository);
    json["records"] = Json::array();
    for (const Record& record : records) {
        Json row = toJson(record);
        if (raw)
            row["bytes"] = record.bytes;
        json["records"].push_back(row);
    }
    return json;
}

} // namespace Tool
