// Where the numbers of every information set lie that sampled training has: regrets and strategy
// sums of each (node, bucket, edge), whole numbers of 32 bits.
//
// They lie by round, seat, bucket, and then node by node in the tree's order: a walk of one deal
// sees one bucket of each round and seat, so all that it touches there is one stretch.
#pragma once

#include "abstraction/large_buffer.h"
#include "menu/menu_tree.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

class MenuSets {
public:
    // buckets: of each round. The tree must outlive the object. Throws std::bad_alloc.
    MenuSets(const MenuTree& tree, int seats, std::span<const uint32_t> buckets);

    const MenuTree& tree() const { return tree_; }
    int seats() const { return seats_; }
    std::span<const uint32_t> buckets() const { return buckets_; }
    // (Node, bucket) that there are, and numbers of each kind.
    uint64_t numSets() const;
    size_t numNumbers() const { return numNumbers_; }
    // Bytes of both kinds, before they are taken.
    static uint64_t memoryFor(const MenuTree& tree, std::span<const uint32_t> buckets);
    // Bytes of both kinds.
    uint64_t memory() const { return 2 * sizeof(int32_t) * uint64_t{regrets_.size()}; }

    // The first number of a round and seat with a bucket; a node's are at + Node::numbers.
    size_t bucketStart(size_t round, size_t seat, size_t bucket) const {
        return starts_[round][seat] + bucket * strides_[round][seat];
    }
    size_t placeOf(const MenuTree::Node& node, size_t bucket) const {
        return bucketStart(node.round, node.seat, bucket) + node.numbers;
    }

    // numNumbers() of them; of an odd number one more, which is 0, lies behind: files have whole
    // words.
    int32_t* regrets() { return regrets_.data(); }
    int32_t* sums() { return sums_.data(); }
    const int32_t* regrets() const { return regrets_.data(); }
    const int32_t* sums() const { return sums_.data(); }
    std::span<const int32_t> allRegrets() const { return {regrets_.data(), regrets_.size()}; }
    std::span<const int32_t> allSums() const { return {sums_.data(), sums_.size()}; }
    std::span<int32_t> allRegrets() { return {regrets_.data(), regrets_.size()}; }
    std::span<int32_t> allSums() { return {sums_.data(), sums_.size()}; }

    // The average strategy of a set with so many edges, at its first number: the shares of the
    // sums. Where nothing was gathered, as where opponents never went, the regrets say what to do;
    // uniform where they do not either. Ends at count entries.
    void average(size_t place, size_t count, double* shares) const;

private:
    const MenuTree& tree_;
    int seats_;
    std::vector<uint32_t> buckets_;
    std::array<std::array<size_t, MAX_PLAYERS>, MAX_ROUNDS> starts_{};
    std::array<std::array<size_t, MAX_PLAYERS>, MAX_ROUNDS> strides_{};
    size_t numNumbers_ = 0;
    LargeBuffer<int32_t> regrets_;
    LargeBuffer<int32_t> sums_;
};

} // namespace tamarin
