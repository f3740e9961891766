// What a strategy is worth.

#include "solver/card_rank_solving.h"
#include "solver/cfr.h"

#include <algorithm>

void CFR::calcUtil(State* state, double* util) {
    const int players = game->numPlayers;
    if (state->finished) {
        for (int p = 0; p < players; ++p)
            util[p] = valueOfState(game, state, static_cast<uint8_t>(p));
        return;
    }
    const CFRNode* const node = nodeOf(state);
    double avg[numAbstractedActions];
    node->getAverageStrategy(avg);
    std::fill_n(util, players, 0.0);
    for (int a = 0; a < numAbstractedActions; ++a) {
        if (!node->isActionValid(a))
            continue;
        Action action;
        getAbstractedAction(a, state, &action);
        State child = *state;
        doAction(game, &action, &child);
        double childUtil[MAX_PLAYERS];
        calcUtil(&child, childUtil);
        for (int q = 0; q < players; ++q)
            util[q] += childUtil[q] * avg[a];
    }
}

void CFR::calcUtility(double* result) {
    if (tamarin::CompiledGame* const known = compiledGame())
        if (const auto sets = tamarin::InformationSets::read(known->tree, *game, nodeMaps)) {
            tamarin::averageValues(*game, *known, *sets, result);
            return;
        }
    calcUtilityPlain(result);
}

void CFR::calcUtilityPlain(double* result) {
    const int players = game->numPlayers;
    std::fill_n(result, players, 0.0);
    const unsigned long long deals = forEachDeal([&](State& state) {
        double util[MAX_PLAYERS];
        calcUtil(&state, util);
        for (int p = 0; p < players; ++p)
            result[p] += util[p];
    });
    for (int p = 0; p < players; ++p)
        result[p] = result[p] / static_cast<double>(deals);
}
