#include "driver/strategy_agent.h"

#include "eval/exact_equity.h"
#include "holdem/pot_odds.h"

#include <utility>

namespace tamarin {

StrategyAgent::StrategyAgent(const char* gameFile, std::unique_ptr<PlayedStrategy> strategy,
                             SocketCalls& calls)
    : PokerAgent(gameFile, calls), strategy_(std::move(strategy)) {}

void StrategyAgent::getAction(Action& action) {
    if (const auto drawn = strategy_->draw(state)) {
        action = *drawn;
        return;
    }
    fallback_.add();
    const int seat = state.viewingPlayer;
    const bool owes = priceOfCall(*game, state.state, seat) > 0;
    action = {playByPotOdds(*game, state.state, seat, owes ? equity() : 0.0), 0};
}

// The probability that the viewing seat's hand beats random hands of all players still in. There
// are no tables: it is counted, in a tenth of a second before the flop and in milliseconds after.
double StrategyAgent::equity() const {
    const State& hand = state.state;
    const std::span<const uint8_t> hole(hand.holeCards[state.viewingPlayer], game->numHoleCards);
    const std::span<const uint8_t> board(hand.boardCards,
                                         static_cast<size_t>(sumBoardCards(game, hand.round)));
    const int opponents = game->numPlayers - numFolded(game, &hand) - 1;
    return equityOf(exactEquity(hole, board, opponents)).win;
}

} // namespace tamarin
