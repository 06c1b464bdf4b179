#include "tools/print/raw.h"

namespace Tool
{

Json rawJson(Command command, const Bytes& request, const Answer& answer)
{
    Json json = document("raw");
    json["request"] = {
        {"netFn", command.netFn}, {"command", command.code}, {"data", request}};
    json["completion"] = toJson(command, answer.completion);
    json["data"] = answer.completion.ok() ? Json(answer.data) : Json(nullptr);
    json["possiblyCut"] = answer.possiblyCut;
    return json;
}

} // namespace Tool
