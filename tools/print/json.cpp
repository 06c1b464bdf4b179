#include "tools/print/json.h"

#include "tools/print/completion_codes.h"

namespace Tool
{

Json document(const std::string& name)
{
    Json json;
    json["schema"] = {{"name", "vek-ipmi/" + name}, {"version", 1}};
    return json;
}

Json toJson(Command command, const Completion& completion)
{
    Json json;
    json["code"] = completion.answered ? Json(completion.code) : Json(nullptr);
    json["words"] = completion.answered && !completion.isCut
                        ? codeInWords(command, completion.code)
                        : inWords(command, completion);
    return json;
}

std::string toText(const Json& json)
{
    return json.dump(2) + '\n';
}

} // namespace Tool
