#include "blueprint/blueprint_sets.h"

#include "tree/regret_matching.h"

#include <cassert>

namespace tamarin {

BlueprintSets::BlueprintSets(const CompiledTree& tree, std::span<const uint32_t> buckets)
    : tree_(tree), lines_(tree), buckets_(buckets.begin(), buckets.end()) {
    assert(buckets_.size() == static_cast<size_t>(lines_.rounds()));
    size_t rows = 0;
    for (const LineBlock& block : lines_.blocks()) {
        blockStart_.push_back(starts_.size());
        for (const LineBlock::Node& node : block.nodes) {
            starts_.push_back(rows);
            rows += buckets_[block.round] * node.edges;
        }
    }
    regrets_.resize(rows);
    sums_.resize(rows);
}

size_t BlueprintSets::numSets() const {
    size_t sets = 0;
    for (const auto& node : tree_.nodes())
        sets += buckets_[node.round];
    return sets;
}

float BlueprintSets::number(const std::vector<FloatRow>& rows, int32_t treeNode, size_t bucket,
                            size_t action) const {
    const LineBlocks::Place& place = lines_.placeOf(treeNode);
    const LineBlock& block = lines_.blocks()[place.block];
    const LineBlock::Node& node = block.nodes[place.node];
    assert(bucket < buckets_[block.round]);
    size_t allowed = 0;
    while (allowed < node.edges && block.edges[node.firstEdge + allowed].action != action)
        ++allowed;
    assert(allowed < node.edges);
    return rows[start(place.block, place.node) + bucket * node.edges + allowed].lanes[place.lane];
}

float BlueprintSets::regret(int32_t treeNode, size_t bucket, size_t action) const {
    return number(regrets_, treeNode, bucket, action);
}

float BlueprintSets::sum(int32_t treeNode, size_t bucket, size_t action) const {
    return number(sums_, treeNode, bucket, action);
}

ActionShares BlueprintSets::average(int32_t treeNode, size_t bucket) const {
    const auto& child = tree_.nodes()[static_cast<size_t>(treeNode)].child;
    ActionShares gathered{};
    ActionShares matched{};
    size_t count = 0;
    for (size_t a = 0; a < gathered.size(); ++a)
        if (child[a] != CompiledTree::noChild)
            gathered[count++] = static_cast<double>(sum(treeNode, bucket, a));
    matchRegrets(gathered.data(), count, matched.data());
    ActionShares shares{};
    count = 0;
    for (size_t a = 0; a < shares.size(); ++a)
        if (child[a] != CompiledTree::noChild)
            shares[a] = matched[count++];
    return shares;
}

} // namespace tamarin
