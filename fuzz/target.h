/// A fuzz target as libFuzzer calls it.
#ifndef VEK_FUZZ_TARGET_H
#define VEK_FUZZ_TARGET_H

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

#endif
