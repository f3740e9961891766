// Any bytes as a dealer's line. The first byte picks the game, the rest is the text; what is read
// must print, read back equal, and be a hand that the rules can go on with.
#include "fuzz/games.h"
#include "fuzz/hand.h"

#include <array>
#include <cstring>
#include <string>

using namespace tamarin;

namespace {

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
