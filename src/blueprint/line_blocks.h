// The betting of a game for two, cut into blocks of eight lines that are walked side by side.
//
// Where the next round begins, many lines of betting go on in the same way: only the chips in the
// pot differ. Up to eight of them are a block, each in a lane of its own, so that a processor's
// vector instructions work on all of them at once (lane_row.h). Of a block with one line, the lines
// that leave it are gathered into blocks by how they go on; of a block with several, each ending
// leads to a block with the same lanes. In two-player limit hold'em one block is before the flop,
// one with seven lanes on it, 9 on the turn and 81 on the river. A tree in which no two lines are
// alike has blocks of one line: it fits, and wastes seven lanes.
//
// The information sets of two blocks have nothing in common, so different threads may walk them.
#pragma once

#include "response/lane_row.h"
#include "tree/compiled_tree.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

using LaneIds = std::array<int32_t, lanesInBlock>;

struct LineBlock {
    static constexpr int32_t none = -1;

    // Edges and nodes are numbered depth-first, so that a node comes before what is below it.
    struct Node {
        uint8_t seat = 0;
        size_t firstEdge = 0;
        size_t edges = 0; // in the order of the actions
        int32_t into = none;
        std::array<int32_t, 2> last{none, none}; // the edge that each seat took last in the block
        LaneIds treeNodes{};                     // none in an empty lane
    };
    struct Edge {
        uint8_t action = 0;
        size_t from = 0;       // node
        int32_t node = none;   // to which it leads,
        int32_t ending = none; // or with which the block ends
    };
    enum class EndingKind : uint8_t { fold, showdown, nextRound };
    struct Ending {
        EndingKind kind = EndingKind::fold;
        uint8_t folded = 0; // the seat, where one folds
        size_t edge = 0;
        std::array<int32_t, 2> last{none, none};    // as a node's
        std::array<int32_t, lanesInBlock> stakes{}; // chips that change hands; 0 in an empty lane
        int32_t below = none;                       // the block that follows
        size_t lane = 0; // there, of what was lane 0; where lines are gathered
    };

    uint8_t round = 0;
    size_t lines = 0;            // lanes that are not empty, the first ones
    int32_t above = none;        // the block
    bool gathered = false;       // each lane comes from lane 0 of another ending
    std::vector<size_t> origins; // endings above: one, or if gathered one a lane
    std::vector<Node> nodes;
    std::vector<Edge> edges;
    std::vector<Ending> endings;
};

class LineBlocks {
public:
    // Of a game for two whose showdowns are between seats that have paid the same.
    explicit LineBlocks(const CompiledTree& tree);

    // Those of one round together, in the order of the rounds.
    const std::vector<LineBlock>& blocks() const { return blocks_; }
    int rounds() const { return static_cast<int>(roundStart_.size()) - 1; }
    size_t roundStart(int round) const { return roundStart_[static_cast<size_t>(round)]; }
    size_t roundEnd(int round) const { return roundStart_[static_cast<size_t>(round) + 1]; }

    struct Place {
        uint32_t block;
        uint32_t node;
        uint32_t lane;
    };
    // Where a node of the tree lies.
    const Place& placeOf(int32_t treeNode) const { return places_[static_cast<size_t>(treeNode)]; }

private:
    std::vector<LineBlock> blocks_;
    std::vector<size_t> roundStart_;
    std::vector<Place> places_;
};

} // namespace tamarin
