// Any bytes as a player's answer. The first byte picks the game, the first line is the state that
// was sent, the rest the answer. Whatever it is, the dealer has a legal action to go on with.
#include "dealer/reply.h"
#include "fuzz/games.h"
#include "fuzz/hand.h"

#include <string>

using namespace tamarin;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const Game& game = gameOf(data[0]);
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const size_t lineEnd = text.find('\n');
    if (lineEnd == std::string::npos)
        return 0;
    MatchState sent{};
    const std::string stateText = text.substr(0, lineEnd);
    const int length = readMatchState(stateText.c_str(), &game, &sent);
    if (length < 0 || sent.state.finished || numActingPlayers(&game, &sent.state) == 0 ||
        currentPlayer(&game, &sent.state) != sent.viewingPlayer)
        return 0;

    const std::string sentText = stateText.substr(0, static_cast<size_t>(length));
    const Verdict verdict = judgeReply(&game, &sent, sentText, text.substr(lineEnd + 1));
    Action action = verdict.action;
    expect(isValidAction(&game, &sent.state, 0, &action) != 0, "what will be played is legal");
    State next = sent.state;
    doAction(&game, &action, &next);

    // An answer that was read properly is read again from its own text.
    if (!verdict.fault) {
        char printed[32];
        expect(printAction(&game, &action, sizeof printed, printed) > 0, "the action prints");
        const Verdict again = judgeReply(&game, &sent, sentText, sentText + ":" + printed);
        expect(!again.fault && again.action.type == action.type && again.action.size == action.size,
               "an answer without fault reads back");
    }
    return 0;
}
