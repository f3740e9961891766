// Any bytes as a line of a match log; the first byte picks the game. A line that is accepted prints
// and reads back.
#include "dealer/hand_log.h"
#include "fuzz/games.h"

#include <string>

using namespace tamarin;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const Game& game = gameOf(data[0]);
    const std::string line(reinterpret_cast<const char*>(data + 1), size - 1);
    const auto hand = parseHand(&game, line);
    if (!hand)
        return 0;
    expect(hand->chips.size() == game.numPlayers && hand->names.size() == game.numPlayers,
           "every seat has chips and a name");
    const std::string printed = formatHand(&game, *hand);
    const auto again = parseHand(&game, printed);
    expect(again.ok(), "a printed line reads back");
    expect(formatHand(&game, *again) == printed, "and prints as before");
    return 0;
}
