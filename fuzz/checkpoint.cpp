// Any bytes as a training checkpoint: once as they are, and once with the checksums made right, so
// that what stands behind them is tried too.
#include "training/checkpoint.h"

#include "fuzz/fuzz.h"
#include "fuzz/memory_file.h"
#include "training/checkpoint_frame.h"

#include <cstring>
#include <string>

using namespace tamarin;

namespace {

const std::string config = "game.numPlayers = 3\nalgorithm = cfr+\nsampledDeals = 0\nseed = 1\n";

constexpr size_t headSize = 40;
constexpr size_t configLengthAt = 24;

// The checksum behind the configuration and the one at the end, where there is room for both.
void mendChecksums(std::string& bytes) {
    if (bytes.size() < headSize + 2 * sizeof(uint64_t))
        return;
    uint64_t configLength = 0;
    std::memcpy(&configLength, bytes.data() + configLengthAt, sizeof configLength);
    if (configLength > bytes.size() - headSize - 2 * sizeof(uint64_t))
        return;
    const auto all = std::as_bytes(std::span(bytes));
    const size_t behindConfig = headSize + configLength;
    const size_t last = bytes.size() - sizeof(uint64_t);
    WordChecksum checksum;
    checksum.add(all.first(headSize));
    checksum.add(all.subspan(headSize, configLength));
    uint64_t sum = checksum.value();
    std::memcpy(bytes.data() + behindConfig, &sum, sizeof sum);
    checksum.add(all.subspan(behindConfig, sizeof sum));
    checksum.add(all.subspan(behindConfig + sizeof sum, last - behindConfig - sizeof sum));
    sum = checksum.value();
    std::memcpy(bytes.data() + last, &sum, sizeof sum);
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
    mendChecksums(bytes);
    readOne(bytes);
    return 0;
}
