// What training keeps of one information set.
#pragma once

#include "tree/abstracted_actions.h"

#include <cstdint>

namespace tamarin {

struct SetNumbers {
    double regret[numAbstractedActions];   // of the valid actions, in order
    double strategy[numAbstractedActions]; // likewise
};

// A set's valid actions.
struct SetActions {
    uint8_t count = 0;
    uint8_t action[numAbstractedActions] = {}; // ascending
};

} // namespace tamarin
