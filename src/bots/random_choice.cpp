#include "bots/random_choice.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace tamarin {

namespace {

// base to the power of share / 2^32, by square roots: pow rounds differently from one processor to
// the next, and the same seed is to give the same match everywhere.
double powerOf(double base, uint32_t share) {
    double power = 1.0;
    for (uint32_t bit = 1U << 31U; bit != 0; bit >>= 1U) {
        base = std::sqrt(base);
        if ((share & bit) != 0)
            power *= base;
    }
    return power;
}

} // namespace

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
        const double ratio = static_cast<double>(most) / least;
        const double size = least * powerOf(ratio, genrand_int32(generator));
        action.size = std::clamp(static_cast<int32_t>(std::lround(size)), least, most);
    }
    assert(isValidAction(game, state, 0, &action));
    return action;
}

} // namespace tamarin
