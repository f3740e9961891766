#include "driver/possible_state.h"

#include "game/showdown.h"

#include <algorithm>
#include <cstring>

namespace tamarin {

namespace {

// A seat's cards are read all or none.
bool knows(const State& hand, int seat) {
    return hand.holeCards[seat][0] != unknownCard;
}

bool holdsNoCardTwice(const Game& game, const State& hand) {
    CardSet seen = 0;
    const auto isNew = [&](uint8_t card) {
        const bool fresh = (seen & cardBit(card)) == 0;
        seen |= cardBit(card);
        return fresh;
    };
    for (int seat = 0; seat < game.numPlayers; ++seat)
        if (knows(hand, seat) &&
            !std::all_of(hand.holeCards[seat], hand.holeCards[seat] + game.numHoleCards, isNew))
            return false;
    return std::all_of(hand.boardCards, hand.boardCards + sumBoardCards(&game, hand.round), isNew);
}

// A showdown is the end of a hand that more than one seat has stayed in.
bool isShowdown(const Game& game, const State& hand) {
    return hand.finished && numFolded(&game, &hand) + 1 < game.numPlayers;
}

bool showsAllThatStayedIn(const Game& game, const State& hand) {
    for (int seat = 0; seat < game.numPlayers; ++seat)
        if (!hand.playerFolded[seat] && !knows(hand, seat))
            return false;
    return true;
}

} // namespace

MatchState unseenState() {
    MatchState seen{};
    std::memset(seen.state.holeCards, unknownCard, sizeof seen.state.holeCards);
    std::memset(seen.state.boardCards, unknownCard, sizeof seen.state.boardCards);
    return seen;
}

bool isPossible(const Game& game, const MatchState& seen) {
    const State& hand = seen.state;
    if (!holdsNoCardTwice(game, hand))
        return false;
    const bool acts = !hand.finished && currentPlayer(&game, &hand) == seen.viewingPlayer;
    const bool board = sumBoardCards(&game, hand.round) > 0;
    if ((acts || board) && !knows(hand, seen.viewingPlayer))
        return false;
    return hand.playerFolded[seen.viewingPlayer] || !isShowdown(game, hand) ||
           showsAllThatStayedIn(game, hand);
}

} // namespace tamarin
