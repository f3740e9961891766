#include "bots/fixed_choice.h"

namespace tamarin {

Action alwaysCall() {
    return {actionCall, 0};
}

Action alwaysRaise(const Game* game, const State* state) {
    int32_t least = 0;
    int32_t most = 0;
    if (raiseIsValid(game, state, &least, &most))
        return {actionRaise, least};
    return alwaysCall();
}

} // namespace tamarin
