// How often each sequence of the betting is played, and how it ends.
#pragma once

#include "training/profile.h"

namespace tamarin {

struct SequenceReach {
    // [decision node][card field]: the probability that the sequence is played and that the player
    // to act there holds the card. Over all fields it is the sequence's reach.
    std::vector<std::vector<double>> node;
    // [3 * node + action]: the probability that the sequence is played and the action taken.
    std::vector<double> edge;
    // Of an edge that ends the hand: what each seat wins on average when it is played, in chips;
    // empty for other edges, and zeros for sequences never played.
    std::vector<std::vector<double>> paid;

    double ofNode(size_t n) const;
};

// When everybody plays the profile.
SequenceReach sequenceReaches(const SmallGame& game, const Profile& profile);

} // namespace tamarin
