// Any bytes as the files of hold'em training: as a strategy, mapped and read whole, and as a
// checkpoint, once as it is and once behind the head of a good one, so that what stands behind the
// configuration is tried too. The game has one round and no raises: twenty information sets.
#include "fuzz/fuzz.h"
#include "fuzz/memory_file.h"
#include "game/definition.h"
#include "holdem/read_strategy.h"
#include "strategy/mapped_strategy.h"
#include "training/holdem_trainer.h"

#include <cmath>
#include <string>
#include <unistd.h>

using namespace tamarin;

namespace {

class OneBucket : public HoldemBuckets {
public:
    uint8_t bucket(int /*players*/, int /*round*/, int /*seat*/,
                   const uint8_t* /*cards*/) const override {
        return 3;
    }
};

Game smallHoldem() {
    Game game{};
    game.bettingRule = noLimitRule;
    game.numPlayers = 2;
    game.numRounds = 1;
    for (int seat = 0; seat < 2; ++seat) {
        game.stack[seat] = 100;
        game.blind[seat] = seat + 1;
    }
    game.numSuits = MAX_SUITS;
    game.numRanks = MAX_RANKS;
    game.numHoleCards = 2;
    return game;
}

struct Trained {
    Game game = smallHoldem();
    OneBucket buckets;
    HoldemTrainer trainer{game, buckets, {Algorithm::linear, 1, 1000, 1, 1}};
};

// Of a good checkpoint, everything before the numbers.
std::string startOfCheckpoint() {
    const Trained trained;
    const std::string path = "/dev/shm/tamarin_fuzz_holdem_" + std::to_string(getpid());
    expect(trained.trainer.writeCheckpoint(path).ok(), "a checkpoint is written");
    const auto bytes = readWholeFile(path);
    unlink(path.c_str());
    const size_t behind = trained.trainer.sets().numSets() * sizeof(SetNumbers) + sizeof(uint64_t);
    return bytes->substr(0, bytes->size() - behind);
}

void asStrategy(const MemoryFile& file, size_t size) {
    Trained fresh;
    const auto strategy = MappedStrategy::open(file.name(), 2);
    if (!strategy) {
        expect(!strategy.error().empty(), "a refusal has its reason");
    } else {
        size_t count = 0;
        for (int m = 0; m < 2; ++m)
            strategy->forEach(m, [&](const std::string& key, const CFRNode& node) {
                ++count;
                double average[numAbstractedActions];
                node.getAverageStrategy(average);
                CFRNode found;
                (void)strategy->find(m, key, found); // of keys out of order, perhaps another's
                return true;
            });
        expect(count * sizeof(StrategyRecord) <= size, "no node comes from nowhere");
    }
    if (readStrategyFile(file.name(), fresh.trainer.sets())) {
        expect(strategy.ok(), "what is read whole can be mapped");
        const auto& sets = fresh.trainer.sets();
        for (size_t i = 0; i < sets.numSets(); ++i)
            for (const double sum : sets.numbers()[i].strategy)
                expect(sum >= 0.0 && sum < HUGE_VAL, "sums that were accepted are sound");
    }
}

void asCheckpoint(const std::string& bytes) {
    Trained trained;
    const Status read =
        trained.trainer.readCheckpoint(MemoryFile(bytes.data(), bytes.size()).name());
    if (!read)
        expect(!read.error().empty() && trained.trainer.iteration() == 0,
               "a refusal has its reason and changes nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string start = startOfCheckpoint();
    asStrategy(MemoryFile(data, size), size);
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    asCheckpoint(bytes);
    asCheckpoint(start + bytes);
    return 0;
}
