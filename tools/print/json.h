/// The shape that all JSON documents of the program share.
#ifndef VEK_TOOLS_PRINT_JSON_H
#define VEK_TOOLS_PRINT_JSON_H

#include <nlohmann/json.hpp>

#include <string>

#include "tools/collect/completion.h"

namespace Tool
{

using Json = nlohmann::ordered_json;

/// {"schema": {"name": "vek-ipmi/...", "version": 1}}: a reader checks both;
/// the version rises when a member changes or goes, not when one comes.
Json document(const std::string& name);

/// {"code": 193, "words": "..."}; code is null without an answer.
Json toJson(Command command, const Completion& completion);

/// Ends with a newline.
std::string toText(const Json& json);

} // namespace Tool

#endif
