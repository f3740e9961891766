// Any bytes as a strategy file. What loads must save to a file that loads to the same bytes, and
// every node must be fit to play from. The first byte picks one of two games, of three and of four
// sections. A file that passes the strict check must load.
#include "fuzz/fuzz.h"
#include "fuzz/memory_file.h"
#include "solver/cfr.h"
#include "strategy/soundness.h"
#include "training/small_game.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>

using namespace tamarin;

namespace {

// A solver deliberately leaves its nodes behind; here they must go, or memory would run out.
class Solver : public CFR {
public:
    explicit Solver(Game* definition) : CFR(definition) {}
    ~Solver() override {
        for (int map = 0; map < game->numPlayers * game->numRounds; ++map)
            for (const auto& [key, node] : nodeMaps[map])
                delete node;
    }
};

Game gameOf(bool two) {
    Game game{};
    game.numPlayers = two ? 2 : 3;
    game.numRounds = two ? 2 : 1;
    for (int seat = 0; seat < game.numPlayers; ++seat) {
        game.stack[seat] = unboundedStack;
        game.blind[seat] = 1;
    }
    for (int round = 0; round < game.numRounds; ++round) {
        game.raiseSize[round] = 1;
        game.maxRaises[round] = 1;
    }
    game.numSuits = 1;
    game.numRanks = 4;
    game.numHoleCards = 1;
    return game;
}

// Saving goes through a temporary file and a flush, so it is kept off the disk.
std::string saved(CFR& solver) {
    const std::string path = "/dev/shm/tamarin_fuzz_strategy_" + std::to_string(getpid());
    if (!solver.save(path))
        return "";
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    unlink(path.c_str());
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    Game game = gameOf((data[0] & 1U) != 0);
    Solver solver(&game);
    const MemoryFile file(data + 1, size - 1);
    static const std::unique_ptr<SmallGame> kuhn = std::move(*SmallGame::make(gameOf(false)));
    const bool whole =
        game.numPlayers == 3 && checkStrategyFile(kuhn->game(), kuhn->tree(), file.name()).ok();
    if (!solver.load(file.name())) {
        expect(!whole, "a file that is whole and right loads");
        expect(!solver.isTreeReady(), "a file that did not load leaves a solver that is not ready");
        return 0;
    }

    expect(solver.isTreeReady(), "a loaded solver is ready");
    expect(solver.numInformationSets() * 108 < size, "no node comes from nowhere");
    for (int player = 0; player < game.numPlayers; ++player) {
        for (int round = 0; round < game.numRounds; ++round) {
            for (const auto& [key, node] : solver.nodeMap(player, round)) {
                expect(key.size() < 60, "a key leaves room for its end");
                const int action = node->getRandomActionIndex();
                expect(action >= 0 && action < numAbstractedActions, "an action is drawn");
            }
        }
    }
    std::ostringstream dump;
    dump << solver;

    const std::string bytes = saved(solver);
    expect(!bytes.empty() && bytes.size() < size, "it saves, in no more bytes");
    Solver again(&game);
    expect(again.load(MemoryFile(bytes.data(), bytes.size()).name()), "the saved file loads");
    expect(saved(again) == bytes, "and saves the same bytes");
    return 0;
}
