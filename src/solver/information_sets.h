// The numbers of all information sets in one flat array, and their way from and to the node maps.
//
// Text keys stay at the edges: training copies the maps' nodes here, works on the array, and copies
// the sums back. A set keeps the numbers of its valid actions together and first, in action order,
// because elimination leaves many sets with one or two.
#pragma once

#include "strategy/node_maps.h"
#include "tree/card_rank_keys.h"
#include "tree/compiled_tree.h"
#include "tree/set_numbers.h"

#include <optional>
#include <vector>

namespace tamarin {

class InformationSets {
public:
    // Takes the numbers of a card-rank tree (bucket = card field) out of the node maps. Nothing
    // when the maps do not fit the tree: a set is missing, a valid action is none of the rules', or
    // a number is not finite. The plain form must then do the work, and fail where it fails.
    static std::optional<InformationSets> read(const CompiledTree& tree, const Game& game,
                                               const NodeMap* nodeMaps);

    const SetLayout& layout() const { return layout_; }
    std::vector<SetNumbers>& numbers() { return numbers_; }
    const SetActions& actions(size_t set) const { return actions_[set]; }
    const CFRNode& node(size_t set) const { return *nodes_[set]; }

    // Copies the sums back into the nodes they came from. Invalid actions are left alone.
    void write() const;

private:
    InformationSets(const CompiledTree& tree, const Game& game);

    SetLayout layout_;
    std::vector<SetNumbers> numbers_;
    std::vector<SetActions> actions_;
    std::vector<CFRNode*> nodes_;
};

} // namespace tamarin
