// Any bytes as a game definition. What is read must print and read back, and must be playable: one
// hand is dealt and played to its end with actions drawn from a generator seeded by the input.
#include "fuzz/hand.h"

#include <string>

using namespace tamarin;

namespace {

GamePtr readText(const char* text, size_t size) {
    FILE* file = fmemopen(const_cast<char*>(text), size, "r");
    if (file == nullptr) // an empty text
        return nullptr;
    GamePtr game(readGame(file));
    std::fclose(file);
    return game;
}

// The one definition that does not survive printing: more than four seats, all stacks unbounded.
bool losesItsStacks(const Game& game) {
    if (game.numPlayers <= 4)
        return false;
    for (int seat = 0; seat < game.numPlayers; ++seat)
        if (game.stack[seat] != unboundedStack)
            return false;
    return true;
}

void checkRanges(const Game& game) {
    expect(game.numPlayers >= 2 && game.numPlayers <= MAX_PLAYERS, "2 to 10 players");
    expect(game.numRounds >= 1 && game.numRounds <= MAX_ROUNDS, "1 to 4 rounds");
    int cards = game.numHoleCards * game.numPlayers;
    for (int round = 0; round < game.numRounds; ++round) {
        expect(game.firstPlayer[round] < game.numPlayers, "the first player has a seat");
        cards += game.numBoardCards[round];
    }
    expect(cards <= game.numSuits * game.numRanks, "the deck has cards enough");
    for (int seat = 0; seat < game.numPlayers; ++seat)
        expect(game.blind[seat] <= game.stack[seat], "a blind is within the stack");
}

std::string printed(const Game& game) {
    char* text = nullptr;
    size_t size = 0;
    FILE* file = open_memstream(&text, &size);
    printGame(file, &game);
    std::fclose(file);
    std::string result(text, size);
    std::free(text);
    return result;
}

void playOneHand(const Game& game, uint32_t seed) {
    rng_state_t rng;
    init_genrand(&rng, seed);
    State state{};
    initState(&game, seed, &state);
    dealCards(&game, &rng, &state);
    constexpr int mostActions = MAX_ROUNDS * MAX_NUM_ACTIONS;
    int actions = 0;
    while (!state.finished && numActingPlayers(&game, &state) > 0) {
        expect(++actions <= mostActions, "a hand ends");
        checkHand(game, state);
        Action action{static_cast<ActionType>(genrand_int32(&rng) % 3),
                      static_cast<int32_t>(genrand_int32(&rng) >> 1U)};
        if (action.type != actionRaise)
            action.size = 0;
        if (!isValidAction(&game, &state, 1, &action))
            action = {actionCall, 0};
        doAction(&game, &action, &state);
    }
    checkHand(game, state);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const GamePtr game = readText(reinterpret_cast<const char*>(data), size);
    if (!game)
        return 0;
    checkRanges(*game);

    const std::string text = printed(*game);
    const GamePtr again = readText(text.data(), text.size());
    if (!losesItsStacks(*game)) {
        expect(again != nullptr, "a printed definition reads back");
        expect(printed(*again) == text, "and prints as before");
    }

    uint32_t seed = 2166136261U; // FNV-1a over the input
    for (size_t i = 0; i < size; ++i)
        seed = (seed ^ data[i]) * 16777619U;
    playOneHand(*game, seed);
    return 0;
}
