#include "tree/compiled_tree.h"

#include <algorithm>
#include <cassert>
#include <stdexcept>
#include <unordered_map>

namespace tamarin {

namespace {

struct SettlementHash {
    size_t operator()(const CompiledTree::Settlement& settlement) const {
        uint64_t hash = 0xcbf29ce484222325U; // FNV-1a
        for (int p = 0; p < MAX_PLAYERS; ++p) {
            const auto seat = static_cast<size_t>(p);
            hash = (hash ^ static_cast<uint32_t>(settlement.spent[seat])) * 0x100000001b3U;
            hash = (hash ^ settlement.folded[seat]) * 0x100000001b3U;
        }
        return hash;
    }
};

class Builder {
public:
    Builder(const Game& game, std::vector<CompiledTree::Node>& nodes,
            std::vector<CompiledTree::Settlement>& settlements,
            std::vector<CompiledTree::Slot>& slots, size_t maxNodes)
        : game_(game), maxNodes_(maxNodes), nodes_(nodes), settlements_(settlements),
          slots_(slots) {
        ownEdge_.fill(CompiledTree::noEdge);
    }

    // Adds the state's subtree and returns what its parent's child entry holds.
    int32_t add(const State& state, int32_t parentEdge) {
        if (state.finished)
            return ~settle(state);
        const size_t index = nodes_.size();
        if (index >= maxNodes_)
            throw std::length_error("the betting tree has more than " + std::to_string(maxNodes_) +
                                    " decision nodes");
        const auto id = static_cast<int32_t>(index);
        CompiledTree::Node node{};
        node.player = currentPlayer(&game_, &state);
        node.round = state.round;
        node.acting = numActingPlayers(&game_, &state);
        node.slot = slotOf(node);
        node.offset = slots_[node.slot].numNodes++;
        node.parentEdge = parentEdge;
        node.ownEdge = ownEdge_[node.player];
        std::fill_n(node.child, numAbstractedActions, CompiledTree::noChild);
        nodes_.push_back(node);

        for (int a = 0; a < numAbstractedActions; ++a) {
            if (a == actionFold && state.spent[node.player] == state.maxSpent)
                continue;
            // The rules refuse this raise too, but warn of it; a tree meets thousands of them.
            if (a == actionRaise &&
                state.numActions[state.round] + game_.numPlayers > MAX_NUM_ACTIONS)
                continue;
            Action action{static_cast<ActionType>(a), 0};
            if (!isValidAction(&game_, &state, 0, &action))
                continue;
            State child = state;
            doAction(&game_, &action, &child);
            const int32_t edge = id * numAbstractedActions + a;
            ownEdge_[node.player] = edge;
            const int32_t below = add(child, edge);
            nodes_[index].child[a] = below;
        }
        ownEdge_[node.player] = node.ownEdge;
        nodes_[index].end = static_cast<int32_t>(nodes_.size());
        return id;
    }

private:
    int32_t settle(const State& state) {
        CompiledTree::Settlement settlement{};
        for (size_t p = 0; p < game_.numPlayers; ++p) {
            settlement.spent[p] = state.spent[p];
            settlement.folded[p] = state.playerFolded[p];
        }
        const auto [at, isNew] =
            rows_.try_emplace(settlement, static_cast<int32_t>(settlements_.size()));
        if (isNew)
            settlements_.push_back(settlement);
        return at->second;
    }

    uint32_t slotOf(const CompiledTree::Node& node) {
        for (size_t i = 0; i < slots_.size(); ++i)
            if (slots_[i].round == node.round && slots_[i].acting == node.acting &&
                slots_[i].player == node.player)
                return static_cast<uint32_t>(i);
        slots_.push_back({node.round, node.acting, node.player, 0});
        return static_cast<uint32_t>(slots_.size() - 1);
    }

    const Game& game_;
    size_t maxNodes_;
    std::vector<CompiledTree::Node>& nodes_;
    std::vector<CompiledTree::Settlement>& settlements_;
    std::vector<CompiledTree::Slot>& slots_;
    std::unordered_map<CompiledTree::Settlement, int32_t, SettlementHash> rows_;
    std::array<int32_t, MAX_PLAYERS> ownEdge_;
};

} // namespace

CompiledTree::CompiledTree(const Game& game, size_t maxNodes) {
    State state{};
    initState(&game, 0, &state);
    Builder(game, nodes_, settlements_, slots_, std::min(maxNodes, mostNodes)).add(state, noEdge);
}

std::string CompiledTree::sequence(int32_t node) const {
    std::string text;
    for (int32_t edge = nodes_[static_cast<size_t>(node)].parentEdge; edge != noEdge;
         edge = nodes_[static_cast<size_t>(edge / numAbstractedActions)].parentEdge)
        text += actionChars[edge % numAbstractedActions];
    std::reverse(text.begin(), text.end());
    return text;
}

SetLayout::SetLayout(const CompiledTree& tree, const std::vector<uint32_t>& numBuckets)
    : numBuckets_(numBuckets) {
    assert(numBuckets.size() == tree.slots().size());
    for (size_t i = 0; i < numBuckets.size(); ++i) {
        start_.push_back(numSets_);
        numNodes_.push_back(tree.slots()[i].numNodes);
        numSets_ += size_t{numBuckets[i]} * numNodes_.back();
    }
}

} // namespace tamarin
