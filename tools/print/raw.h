/// The answer to a raw request.
#ifndef VEK_TOOLS_PRINT_RAW_H
#define VEK_TOOLS_PRINT_RAW_H

#include "tools/device.h"
#include "tools/print/json.h"

namespace Tool
{

/// {"request": {...}, "completion": {...}, "data": [...], "possiblyCut"}; data
/// is null without a good answer.
Json rawJson(Command command, const Bytes& request, const Answer& answer);

} // namespace Tool

#endif
