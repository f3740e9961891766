// Where the numbers of every information set of a blueprint lie: regrets and strategy sums of each
// (decision node, bucket, action), as 32-bit floats.
//
// The numbers of eight nodes that are walked side by side (line_blocks.h) lie side by side, too:
// node-major, then bucket, then action, then lane. So a walk of one node of a block touches one
// stretch, bucket by bucket, and a row of it is one vector. Empty lanes take room (an eighth, in
// two-player limit hold'em) and hold 0.
#pragma once

#include "blueprint/line_blocks.h"
#include "response/hand_strategy.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

using FloatRow = LaneRow<float>;

class BlueprintSets {
public:
    // buckets: of each round. Both must outlive the object. Throws std::bad_alloc.
    BlueprintSets(const CompiledTree& tree, std::span<const uint32_t> buckets);
    BlueprintSets(const BlueprintSets&) = delete;
    BlueprintSets& operator=(const BlueprintSets&) = delete;

    const CompiledTree& tree() const { return tree_; }
    const LineBlocks& lines() const { return lines_; }
    size_t numBuckets(int round) const { return buckets_[static_cast<size_t>(round)]; }
    // (Node, bucket) that there are.
    size_t numSets() const;
    // Bytes of both arrays.
    uint64_t memory() const { return 2 * sizeof(FloatRow) * regrets_.size(); }

    // Of a node of a block: rows [bucket][action that the rules allow].
    FloatRow* regrets(size_t block, size_t node) { return regrets_.data() + start(block, node); }
    FloatRow* sums(size_t block, size_t node) { return sums_.data() + start(block, node); }

    // Of a node of the tree; action: fold 0, call 1, raise 2, allowed there.
    float regret(int32_t treeNode, size_t bucket, size_t action) const;
    float sum(int32_t treeNode, size_t bucket, size_t action) const;
    // The average strategy; uniform where nothing was gathered.
    ActionShares average(int32_t treeNode, size_t bucket) const;

    // All of them, for files.
    std::span<FloatRow> allRegrets() { return regrets_; }
    std::span<FloatRow> allSums() { return sums_; }
    std::span<const FloatRow> allRegrets() const { return regrets_; }
    std::span<const FloatRow> allSums() const { return sums_; }

private:
    size_t start(size_t block, size_t node) const { return starts_[blockStart_[block] + node]; }
    float number(const std::vector<FloatRow>& rows, int32_t treeNode, size_t bucket,
                 size_t action) const;

    const CompiledTree& tree_;
    LineBlocks lines_;
    std::vector<uint32_t> buckets_;
    std::vector<size_t> blockStart_; // of a block's nodes in starts_
    std::vector<size_t> starts_;
    std::vector<FloatRow> regrets_;
    std::vector<FloatRow> sums_;
};

} // namespace tamarin
