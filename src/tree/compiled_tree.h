// The betting tree of a game in flat arrays.
//
// Who may do what never depends on the cards, so one walk of the rules engine serves every deal.
// Decision nodes lie in depth-first order (a subtree is a run of the array); what is left of a
// finished hand is its settlement: what each seat put in and who folded. Few settlements are
// distinct, whatever the number of lines that lead to them.
//
// An information set is (decision node, bucket). Buckets may differ by round, by the number of
// players who can still act and by player; the nodes that share all three form a slot, and the
// numbers of a slot are laid out bucket by bucket, so that the walk for one deal, which sees one
// bucket of every slot, runs nearly sequentially through memory.
#pragma once

#include "game/game.h"
#include "tree/abstracted_actions.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tamarin {

class CompiledTree {
public:
    static constexpr int32_t noChild = INT32_MIN;
    static constexpr int32_t noEdge = -1;
    // Edges are numbered in 32 bits.
    static constexpr size_t mostNodes = static_cast<size_t>(INT32_MAX / numAbstractedActions);

    struct Node {
        // Below each action: a decision node (>= 0), ~settlement (< 0), or noChild where the rules
        // do not allow it.
        int32_t child[numAbstractedActions];
        // The edges (3 * node + action) that led here, and that this player took last; noEdge when
        // there is none. All that an update needs of the players' reaches hangs on these two.
        int32_t parentEdge;
        int32_t ownEdge;
        int32_t end;     // one past the subtree's last decision node
        uint32_t slot;   // index into slots
        uint32_t offset; // among the slot's nodes, in depth-first order
        uint8_t player;  // to act
        uint8_t round;
        uint8_t acting; // players who can act, this one included
    };

    struct Settlement {
        std::array<int32_t, MAX_PLAYERS> spent;
        std::array<uint8_t, MAX_PLAYERS> folded;
        bool operator==(const Settlement&) const = default;
    };

    struct Slot {
        uint8_t round;
        uint8_t acting;
        uint8_t player;
        uint32_t numNodes;
    };

    // Actions are offered as CFR::createAbstractedGameTree offers them: no fold when nothing is
    // owed, raises of size 0 only where the rules take them. Throws std::length_error beyond
    // maxNodes decision nodes.
    explicit CompiledTree(const Game& game, size_t maxNodes = mostNodes);

    const std::vector<Node>& nodes() const { return nodes_; }
    const std::vector<Settlement>& settlements() const { return settlements_; }
    const std::vector<Slot>& slots() const { return slots_; }

    // The actions on the way to a node, as keys carry them ("crr").
    std::string sequence(int32_t node) const;

private:
    std::vector<Node> nodes_;
    std::vector<Settlement> settlements_;
    std::vector<Slot> slots_;
};

// Where every information set's numbers lie.
class SetLayout {
public:
    // numBuckets: of each slot.
    SetLayout(const CompiledTree& tree, const std::vector<uint32_t>& numBuckets);

    size_t numSets() const { return numSets_; }
    uint32_t numBuckets(uint32_t slot) const { return numBuckets_[slot]; }
    // The first set of a slot's bucket; node n of that slot is at + n.offset.
    size_t bucketStart(uint32_t slot, uint64_t bucket) const {
        return start_[slot] + bucket * numNodes_[slot];
    }
    size_t index(const CompiledTree::Node& node, uint64_t bucket) const {
        return bucketStart(node.slot, bucket) + node.offset;
    }

private:
    std::vector<size_t> start_;
    std::vector<uint32_t> numNodes_;
    std::vector<uint32_t> numBuckets_;
    size_t numSets_ = 0;
};

} // namespace tamarin
