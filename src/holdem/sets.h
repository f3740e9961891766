// The information sets of a hold'em game, over ten buckets a round, in one flat array.
//
// Training works on the numbers by (slot, bucket, node); keys are text only at the edges: node
// maps, files, look-ups. Actions are indexed 0..2 as everywhere; which of them are valid is the
// tree's to say, so the NaN markers of invalid ones appear only in the nodes handed out. Memory
// that training has not touched is never resident.
#pragma once

#include "abstraction/quantise.h"
#include "strategy/node_store.h"
#include "tree/compiled_tree.h"
#include "tree/set_numbers.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace tamarin {

class HoldemSets : public NodeStore {
public:
    // Walks the betting tree; all sums are zero. The game must outlive the object.
    explicit HoldemSets(const Game& game);

    const CompiledTree& tree() const { return tree_; }
    const SetLayout& layout() const { return layout_; }
    size_t numSets() const { return layout_.numSets(); }
    int numRounds() const { return static_cast<int>(numRounds_); }
    // Numbers of the set at layout().index(node, bucket).
    SetNumbers* numbers() { return numbers_.get(); }
    const SetNumbers* numbers() const { return numbers_.get(); }

    size_t count(int m) const override;
    bool forEach(int m, const Visit& visit) const override;
    bool find(int m, const std::string& key, CFRNode& node) const override;

    // Takes the sums of map m's node under the key; false when the tree has no such set, or its
    // valid actions are others. A whole tree is set by numSets() successful calls of distinct keys.
    bool set(int m, const std::string& key, const CFRNode& node);

private:
    struct Place {
        int32_t node;
        uint32_t bucket;
    };
    bool locate(int m, const std::string& key, Place& place) const;
    CFRNode nodeAt(Place place) const;
    void orderNodes(int32_t node);
    size_t mapOf(const CompiledTree::Node& node) const {
        return size_t{node.round} + size_t{node.player} * numRounds_;
    }

    struct Free {
        void operator()(SetNumbers* numbers) const { std::free(numbers); }
    };

    size_t numRounds_;
    CompiledTree tree_;
    SetLayout layout_;
    std::unique_ptr<SetNumbers[], Free> numbers_;
    std::vector<std::vector<int32_t>> ordered_; // [map]: its decision nodes, by sequence text
};

} // namespace tamarin
