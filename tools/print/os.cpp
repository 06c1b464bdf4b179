#include "tools/print/os.h"

#include "tools/print/completion_codes.h"
#include "tools/print/text.h"

namespace Tool
{

namespace
{

std::string inTable(const OsText& text)
{
    if (text.completion.ok())
        return printable(text.bytes);
    const std::string why =
        " (" + inWords(commands::getSystemInfo, text.completion) + ")";
    return (text.unsupported() ? "not supported by the controller"
                               : "not read") +
           why;
}

Json inJson(const OsText& text)
{
    Json json;
    json["text"] =
        text.completion.ok() ? Json(printable(text.bytes)) : Json(nullptr);
    json["supported"] = !text.unsupported();
    json["completion"] = toJson(commands::getSystemInfo, text.completion);
    return json;
}

} // namespace

void addRows(Table& table, const OsInfo& os)
{
    table.row("OS name", inTable(os.name));
    table.row("OS version", inTable(os.version));
}

Json toJson(const OsInfo& os)
{
    return {{"name", inJson(os.name)}, {"version", inJson(os.version)}};
}

} // namespace Tool
