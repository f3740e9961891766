// A fuzz entry point: any bytes in, no crash, no hang. Promises beyond that are stated with
// expect().
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Called once for each input, by libFuzzer or by replay.cpp. Keeps nothing between calls.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace tamarin {

// Ends the process when a promise does not hold, so that both drivers keep the input.
inline void expect(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

} // namespace tamarin
