#include "bots/random_choice.h"

#include <algorithm>
#include <cmath>

namespace tamarin {

Action randomChoice(const Game* game, const State* state, rng_state_t* generator) {
    Action choices[3];
    uint32_t count = 0;
    choices[count++] = {actionCall, 0};
    Action fold{actionFold, 0};
    if (isValidAction(game, state, 0, &fold))
        choices[count++] = fold;
    int32_t least = 0;
    int32_t most = 0;
    if (raiseIsValid(game, state, &least, &most))
        choices[count++] = {actionRaise, least};

    Action action = choices[genrand_int32(generator) % count];
    if (action.type == actionRaise && game->bettingRule == noLimitRule) {
        const double share = genrand_int32(generator) / 4294967296.0;
        const double size = least * std::pow(static_cast<double>(most) / least, share);
        action.size = std::clamp(static_cast<int32_t>(std::lround(size)), least, most);
    }
    return action;
}

} // namespace tamarin
