// Any bytes as a dealer's line. The first byte picks the game, the rest is the text; what is read
// must print, read back equal, and be a hand that the rules can go on with.
#include "fuzz/hand.h"

#include <array>
#include <cstring>
#include <string>

using namespace tamarin;

namespace {

// Chosen to differ: limit and no-limit, 2 to 10 seats, short decks, uneven stacks, 1 to 4 rounds,
// a game without blinds, one whose stacks run out in the blinds. No letter but the first of an
// input selects them, so inputs stay readable: '0' to '7'.
constexpr std::array<const char*, 8> definitions = {
    // three-player Kuhn
    "limit\nnumPlayers 3\nnumRounds 1\nblind 1 1 1\nraiseSize 1\nmaxRaises 1\nnumSuits 1\n"
    "numRanks 4\nnumHoleCards 1\nnumBoardCards 0\n",
    // hold'em, limit, two players
    "limit\nnumPlayers 2\nnumRounds 4\nblind 10 5\nraiseSize 10 10 20 20\nfirstPlayer 2 1 1 1\n"
    "maxRaises 3 4 4 4\nnumSuits 4\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 3 1 1\n",
    // hold'em, limit, three players
    "limit\nnumPlayers 3\nnumRounds 4\nblind 5 10 0\nraiseSize 10 10 20 20\nfirstPlayer 3 1 1 1\n"
    "maxRaises 3 4 4 4\nnumSuits 4\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 3 1 1\n",
    // hold'em, no-limit, two players
    "nolimit\nnumPlayers 2\nnumRounds 4\nstack 20000 20000\nblind 100 50\nfirstPlayer 2 1 1 1\n"
    "numSuits 4\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 3 1 1\n",
    // ten seats, uneven stacks, three hole cards
    "nolimit\nnumPlayers 10\nnumRounds 4\nstack 7 100 250 9 1000 33 500 500 80 2\n"
    "blind 0 1 2 0 0 0 0 0 0 0\nfirstPlayer 4 2 2 2\nnumSuits 4\nnumRanks 13\nnumHoleCards 3\n"
    "numBoardCards 0 3 1 1\n",
    // no blinds, unbounded stacks, two rounds, a short deck
    "nolimit\nnumPlayers 4\nnumRounds 2\nblind 0 0 0 0\nnumSuits 2\nnumRanks 5\nnumHoleCards 1\n"
    "numBoardCards 1 1\n",
    // limit with short stacks and no cap on raises
    "limit\nnumPlayers 3\nnumRounds 2\nstack 12 40 400\nblind 4 8 0\nraiseSize 8 16\n"
    "firstPlayer 3 1\nnumSuits 3\nnumRanks 13\nnumHoleCards 2\nnumBoardCards 0 7\n",
    // all but one seat all-in in the blinds
    "nolimit\nnumPlayers 3\nnumRounds 3\nstack 1 2 50\nblind 1 2 0\nnumSuits 4\nnumRanks 13\n"
    "numHoleCards 2\nnumBoardCards 3 1 1\n",
};

const Game& gameOf(uint8_t byte) {
    static const std::array<GamePtr, definitions.size()> games = [] {
        std::array<GamePtr, definitions.size()> read;
        for (size_t i = 0; i < definitions.size(); ++i) {
            FILE* file =
                fmemopen(const_cast<char*>(definitions[i]), std::strlen(definitions[i]), "r");
            read[i].reset(readGame(file));
            std::fclose(file);
            expect(read[i] != nullptr, "the games of this file are well formed");
        }
        return read;
    }();
    return *games[byte % definitions.size()]; // '0' is a multiple of eight
}

constexpr int textLength = 8192; // four rounds of 64 raises of ten digits fit

void checkMatchState(const Game& game, const char* text, size_t length) {
    // Cards that the text leaves unknown: once any card, so that the whole can be printed, once
    // a byte that is none.
    for (const int unknown : {0, 0xff}) {
        MatchState state;
        std::memset(&state, unknown, sizeof state);
        const int consumed = readMatchState(text, &game, &state);
        if (consumed < 0)
            return;
        expect(static_cast<size_t>(consumed) <= length, "no more is read than there is");
        expect(state.viewingPlayer < game.numPlayers, "the viewing seat exists");
        std::array<char, textLength> first{};
        std::array<char, textLength> second{};
        const int written = printMatchState(&game, &state, textLength, first.data());
        if (unknown != 0) {
            expect(written < textLength, "printing stays within its buffer");
            continue;
        }
        expect(written == static_cast<int>(std::strlen(first.data())), "what is read prints");
        checkHand(game, state.state);
        // Between the last seat's cards and the first round's board stands no separator, so where
        // that seat's cards are unknown the board is taken for them.
        if (game.numBoardCards[0] != 0)
            continue;
        MatchState again{};
        expect(readMatchState(first.data(), &game, &again) == written, "and reads back whole");
        expect(matchStatesEqual(&game, &state, &again) != 0, "to an equal state");
        expect(printMatchState(&game, &again, textLength, second.data()) == written &&
                   std::strcmp(first.data(), second.data()) == 0,
               "that prints the same");
        for (const int room : {0, 1, written / 2, written, written + 1})
            expect((printMatchState(&game, &state, room, second.data()) == written) ==
                       (room > written),
                   "a buffer is too small exactly when the text does not fit");
    }
}

void checkState(const Game& game, const char* text, size_t length) {
    State state{};
    const int consumed = readState(text, &game, &state);
    if (consumed < 0)
        return;
    expect(static_cast<size_t>(consumed) <= length, "no more is read than there is");
    std::array<char, textLength> print{};
    const int written = printState(&game, &state, textLength, print.data());
    State again{};
    expect(readState(print.data(), &game, &again) == written, "a printed state reads back whole");
    expect(statesEqual(&game, &state, &again) != 0, "to an equal state");
    checkHand(game, state);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const Game& game = gameOf(data[0]);
    // A buffer of exactly this size, so that reading past the terminator is seen.
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::unique_ptr<char[]> exact(new char[text.size() + 1]);
    std::memcpy(exact.get(), text.c_str(), text.size() + 1);
    const size_t length = std::strlen(exact.get());
    checkMatchState(game, exact.get(), length);
    checkState(game, exact.get(), length);
    return 0;
}
