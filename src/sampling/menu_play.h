// A seat that plays a blueprint in real hands, in which bets have any size.
#pragma once

#include "menu/tree_follower.h"
#include "sampling/menu_blueprint.h"
#include "sampling/seat_buckets.h"
#include "support/split_mix.h"

#include <cstdint>

namespace tamarin {

class MenuPlay {
public:
    // All must outlive the object. The buckets are those that the blueprint was made over.
    MenuPlay(const Game& game, const MenuBlueprint& blueprint, const SeatBuckets& buckets);

    // A new hand. The seed is that of its random numbers: the same hand and seed are played alike.
    void begin(uint64_t seed);
    // An action of another seat, legal in the state, in which it is not done yet.
    void see(const State& state, const Action& action);
    // A legal action for the seat to act, by its own cards and the board alone. Where the tree has
    // no answer (tree_follower.h) it is a call.
    Action act(const State& state);
    // An action of the own seat that was done before: the hand is where act() left it when it did
    // that, with the same seed and the same actions before. What act() would not have done now is
    // taken as an action of another seat.
    void repeat(const State& state, const Action& action);
    // Whether the hand has left the tree for good.
    bool lost() const { return follower_.lost(); }

private:
    uint16_t bucketOf(const State& state) const;
    size_t drawEdge(int32_t node, size_t bucket);

    const Game& game_;
    const MenuBlueprint& blueprint_;
    const SeatBuckets& buckets_;
    TreeFollower follower_;
    SplitMix random_{0};
};

} // namespace tamarin
