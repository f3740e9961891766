#include "holdem/strategy_fit.h"

#include "holdem/sets.h"
#include "strategy/soundness.h"

#include <random>

namespace tamarin {

namespace {

bool holdsEverySet(const NodeStore& nodes, const Game& game) {
    HoldemSets sets(game);
    for (int m = 0; m < game.numPlayers * game.numRounds; ++m)
        if (nodes.count(m) != sets.count(m) ||
            !nodes.forEach(m, [&](const std::string& key, const CFRNode& node) {
                return sets.set(m, key, node);
            }))
            return false;
    return true;
}

// Whether the nodes hold every state that this many random hands come to, in random buckets.
bool holdsRandomHands(const NodeStore& nodes, const Game& game, int hands) {
    std::minstd_rand0 engine(1);
    std::uniform_int_distribution<uint32_t> anyBucket(0, holdemBuckets - 1);
    std::uniform_int_distribution<size_t> anyAction(0, numAbstractedActions - 1);
    for (int hand = 0; hand < hands; ++hand) {
        State state;
        initState(&game, 0, &state);
        std::string sequence;
        while (!state.finished) {
            LegalActions legal;
            for (size_t a = 0; a < legal.size(); ++a) {
                Action action{static_cast<ActionType>(a), 0};
                legal[a] = isValidAction(&game, &state, 0, &action) != 0;
            }
            const int player = currentPlayer(&game, &state);
            const std::string key = std::to_string(player) + ':' + std::to_string(state.round) +
                                    ':' + std::to_string(anyBucket(engine)) + ':' + sequence;
            CFRNode node;
            if (!nodes.find(state.round + player * game.numRounds, key, node) ||
                !faultOf(node, legal, ValidActions::allLegal).empty())
                return false;
            size_t taken = anyAction(engine);
            while (!legal[taken])
                taken = anyAction(engine);
            const Action action{static_cast<ActionType>(taken), 0};
            doAction(&game, &action, &state);
            sequence += actionChars[taken];
        }
    }
    return true;
}

} // namespace

bool holdsHoldemGame(const NodeStore& nodes, const Game& game) {
    constexpr int hands = 1000;
    return game.numPlayers == 2 ? holdsEverySet(nodes, game) : holdsRandomHands(nodes, game, hands);
}

} // namespace tamarin
