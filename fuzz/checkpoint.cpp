// Any bytes as a training checkpoint: once as they are, and once with the checksum made right, so
// that what stands behind it is tried too.
#include "training/checkpoint.h"

#include "fuzz/fuzz.h"
#include "fuzz/memory_file.h"

#include <cstring>
#include <string>

using namespace tamarin;

namespace {

const std::string config = "game.numPlayers=3\nalgorithm=cfr+\nsampledDeals=0\nseed=1\n";

uint64_t fnv1a(const std::string& bytes) {
    uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    return hash;
}

void readOne(const std::string& bytes) {
    const auto state = readCheckpoint(MemoryFile(bytes.data(), bytes.size()).name(), config);
    if (!state)
        expect(!state.error().empty(), "a refusal has its reason");
    else
        expect(state->sets.size() * sizeof(TrainerNumbers) < bytes.size(),
               "no information set comes from nowhere");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    readOne(bytes);
    const uint64_t checksum = fnv1a(bytes);
    bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
    readOne(bytes);
    return 0;
}
