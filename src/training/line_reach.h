// How often each line of the betting is played, and how it ends.
#pragma once

#include "training/profile.h"

namespace tamarin {

struct LineReach {
    // [decision node][card field]: the probability that the line is played and that the player to
    // act there holds the card. Over all fields it is the line's reach.
    std::vector<std::vector<double>> node;
    // [3 * node + action]: the probability that the line is played and the action taken.
    std::vector<double> edge;
    // Of an edge that ends the hand: what each seat wins on average when it is played, in chips;
    // empty for other edges, and zeros for lines never played.
    std::vector<std::vector<double>> paid;

    double ofNode(size_t n) const;
};

// When everybody plays the profile.
LineReach lineReaches(const SmallGame& game, const Profile& profile);

} // namespace tamarin
