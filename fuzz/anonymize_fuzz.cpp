// Any bytes as those of a FRU device that is made anonymous: they stay as many,
// and nothing else is touched.
#include <cstdlib>

#include "fuzz/target.h"
#include "tools/collect/anonymize.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Tool::Capture capture;
    Tool::CapturedFru fru;
    fru.bytes.assign(data, data + size);
    // So that the sanitizer sees what is read behind the end.
    fru.bytes.shrink_to_fit();
    capture.controller.frus.push_back(fru);
    Tool::anonymize(capture);
    if (capture.controller.frus[0].bytes.size() != size)
        std::abort();
    return 0;
}
