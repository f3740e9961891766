// The betting of a game for two, cut into rounds whose beginnings lie side by side.
//
// In limit games a round's betting offers the same actions whatever came before; only the chips
// differ. So all the places of the tree at which a round begins are walked together, each in a lane
// of its own: the reaches of a hand are then rows of lanes, and a processor's vector instructions
// work on them as they lie. Of two-player limit hold'em 7 lanes reach the flop, 63 the turn and 567
// the river.
#pragma once

#include "game/game.h"
#include "response/hand_strategy.h"
#include "support/result.h"
#include "tree/compiled_tree.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

inline constexpr size_t lanesInBlock = 8;

struct RoundBetting {
    static constexpr int16_t noAction = INT16_MIN;
    static constexpr int32_t emptyLane = -1;

    struct Node {
        uint8_t seat; // to act
        // Below each action: a node (>= 0), ~ending (< 0), or noAction.
        std::array<int16_t, numAbstractedActions> child;
    };
    enum class EndingKind : uint8_t { fold, showdown, nextRound };
    struct Ending {
        EndingKind kind;
        uint8_t folded; // the seat, where one folds
        size_t number;  // of one that leads on: among those, in depth-first order
    };

    std::vector<Node> nodes; // depth-first, the root first
    std::vector<Ending> endings;
    size_t continuing = 0; // endings that lead to the next round
    size_t blocks = 0;     // of lanesInBlock lanes

    size_t lanes() const { return blocks * lanesInBlock; }
    // The node of the game's tree that a lane stands for, or emptyLane.
    int32_t treeNode(size_t node, size_t lane) const { return treeNodes[node * lanes() + lane]; }
    // Chips that change hands at an ending that is a fold or a showdown.
    int32_t stake(size_t ending, size_t lane) const { return stakes[ending * lanes() + lane]; }

    // The lane of the next round to which a lane leads by a continuing ending (by the ending's
    // number), or emptyLane.
    int32_t laneBelow(size_t continuingEnding, size_t lane) const {
        return lanesBelow[continuingEnding * lanes() + lane];
    }

    std::vector<int32_t> treeNodes;  // [node][lane]
    std::vector<int32_t> stakes;     // [ending][lane]; 0 in empty lanes and for the next round's
    std::vector<int32_t> lanesBelow; // [continuing ending][lane]
};

class BettingRounds {
public:
    // Refuses games whose cards come otherwise than hole cards first and then some of the board in
    // every round, and games in which what can be done depends on more than the round: no-limit,
    // stacks that can run out. The tree is the game's.
    static Result<BettingRounds> of(const Game& game, const CompiledTree& tree);

    // What is left of it where a seat plays a strategy: what the seat does with no hand is left
    // out, and all that would come after it. The entries stay; lanes of those that are not reached
    // are empty. Of a round that is never reached, one lane stays. The tree is the game's.
    BettingRounds reachedBy(const CompiledTree& tree, const HandStrategy& strategy, int seat) const;

    // Of the rounds after the first: round 1 and so on.
    const RoundBetting& round(int number) const { return rounds_[static_cast<size_t>(number) - 1]; }
    int last() const { return static_cast<int>(rounds_.size()); }
    // Of all rounds.
    size_t numBlocks() const;
    // The nodes at which round 1 begins, in the order of its lanes.
    const std::vector<int32_t>& entries() const { return entries_; }

private:
    template <class Taken>
    void build(const CompiledTree& tree, int lastRound, std::vector<int32_t> lanes,
               const Taken& taken);

    std::vector<int32_t> entries_;
    std::vector<RoundBetting> rounds_;
};

} // namespace tamarin
