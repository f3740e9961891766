#include "blueprint/line_blocks.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <utility>

namespace tamarin {

namespace {

constexpr LaneIds noLanes = [] {
    LaneIds lanes{};
    lanes.fill(LineBlock::none);
    return lanes;
}();

// How a line goes on from a node, to the end of the game: lines with the same text are alike.
void describeLine(const CompiledTree& tree, int32_t number, std::string& text) {
    const auto& node = tree.nodes()[static_cast<size_t>(number)];
    text += static_cast<char>('A' + node.round);
    text += static_cast<char>('0' + node.player);
    for (const int32_t child : node.child) {
        if (child == CompiledTree::noChild) {
            text += '.';
        } else if (child >= 0) {
            describeLine(tree, child, text);
        } else {
            const auto& settlement = tree.settlements()[static_cast<size_t>(~child)];
            text += settlement.folded[0] != 0 ? 'f' : settlement.folded[1] != 0 ? 'g' : 's';
        }
    }
}

// The betting of one round from the nodes at which a block's lines enter it.
class LineBlockBuilder {
public:
    LineBlockBuilder(const CompiledTree& tree, LineBlock& block, const LaneIds& roots)
        : tree_(tree), block_(block) {
        block_.round = at(roots[0]).round;
        block_.lines =
            static_cast<size_t>(std::ranges::find(roots, LineBlock::none) - roots.begin());
        add(roots, LineBlock::none, {LineBlock::none, LineBlock::none});
    }

    // The nodes of the next round that each ending leads to, by ending; empty for the others.
    const std::vector<LaneIds>& below() const { return below_; }

private:
    const CompiledTree::Node& at(int32_t node) const {
        return tree_.nodes()[static_cast<size_t>(node)];
    }

    void add(const LaneIds& lanes, int32_t into, std::array<int32_t, 2> last) {
        const size_t number = block_.nodes.size();
        const auto& first = at(lanes[0]);
        LineBlock::Node node;
        node.seat = first.player;
        node.firstEdge = block_.edges.size();
        node.into = into;
        node.last = last;
        node.treeNodes = lanes;
        for (uint8_t a = 0; a < numAbstractedActions; ++a)
            if (first.child[a] != CompiledTree::noChild)
                block_.edges.push_back({a, number, LineBlock::none, LineBlock::none});
        node.edges = block_.edges.size() - node.firstEdge;
        block_.nodes.push_back(node);
        for (size_t edge = node.firstEdge; edge < node.firstEdge + node.edges; ++edge) {
            last[node.seat] = static_cast<int32_t>(edge);
            follow(lanes, edge, last);
        }
    }

    void follow(const LaneIds& lanes, size_t edge, const std::array<int32_t, 2>& last) {
        LaneIds children = noLanes;
        for (size_t lane = 0; lane < block_.lines; ++lane)
            children[lane] = at(lanes[lane]).child[block_.edges[edge].action];
        if (children[0] >= 0 && at(children[0]).round == block_.round) {
            block_.edges[edge].node = static_cast<int32_t>(block_.nodes.size());
            add(children, static_cast<int32_t>(edge), last);
            return;
        }
        block_.edges[edge].ending = static_cast<int32_t>(block_.endings.size());
        block_.endings.push_back(endingOf(children, edge, last));
        below_.push_back(children[0] >= 0 ? children : noLanes);
    }

    LineBlock::Ending endingOf(const LaneIds& children, size_t edge,
                               const std::array<int32_t, 2>& last) const {
        LineBlock::Ending ending;
        ending.edge = edge;
        ending.last = last;
        if (children[0] >= 0) {
            ending.kind = LineBlock::EndingKind::nextRound;
            return ending;
        }
        for (size_t lane = 0; lane < block_.lines; ++lane) {
            const auto& settlement = tree_.settlements()[static_cast<size_t>(~children[lane])];
            const bool folds = settlement.folded[0] != 0 || settlement.folded[1] != 0;
            ending.kind = folds ? LineBlock::EndingKind::fold : LineBlock::EndingKind::showdown;
            ending.folded = settlement.folded[1] != 0 ? 1 : 0;
            assert(folds || settlement.spent[0] == settlement.spent[1]);
            ending.stakes[lane] = settlement.spent[ending.folded];
        }
        return ending;
    }

    const CompiledTree& tree_;
    LineBlock& block_;
    std::vector<LaneIds> below_;
};

// A block that is still to be built.
struct PendingBlock {
    LineBlock head; // round and betting are not known yet
    LaneIds roots = noLanes;
    std::string line; // of gathered ones
};

// The lines that leave a block of one line, up to eight that are alike together.
std::vector<PendingBlock> gather(const CompiledTree& tree, const std::vector<LaneIds>& below) {
    std::vector<PendingBlock> groups;
    for (size_t e = 0; e < below.size(); ++e) {
        if (below[e][0] == LineBlock::none)
            continue;
        std::string line;
        describeLine(tree, below[e][0], line);
        auto group = std::ranges::find_if(groups, [&](const PendingBlock& open) {
            return open.line == line && open.head.origins.size() < lanesInBlock;
        });
        if (group == groups.end()) {
            groups.push_back({{}, noLanes, line});
            groups.back().head.gathered = true;
            group = groups.end() - 1;
        }
        group->roots[group->head.origins.size()] = below[e][0];
        group->head.origins.push_back(e);
    }
    return groups;
}

std::vector<PendingBlock> keepLanes(const std::vector<LaneIds>& below) {
    std::vector<PendingBlock> next;
    for (size_t e = 0; e < below.size(); ++e)
        if (below[e][0] != LineBlock::none) {
            next.push_back({{}, below[e], {}});
            next.back().head.origins = {e};
        }
    return next;
}

} // namespace

LineBlocks::LineBlocks(const CompiledTree& tree) : places_(tree.nodes().size()) {
    std::vector<PendingBlock> pending(1);
    pending[0].roots[0] = 0;
    // Breadth-first, so that the blocks of a round lie together.
    for (size_t b = 0; b < pending.size(); ++b) {
        blocks_.push_back(std::move(pending[b].head));
        const LineBlockBuilder builder(tree, blocks_[b], pending[b].roots);
        auto next =
            blocks_[b].lines == 1 ? gather(tree, builder.below()) : keepLanes(builder.below());
        for (PendingBlock& each : next) {
            each.head.above = static_cast<int32_t>(b);
            for (size_t lane = 0; lane < each.head.origins.size(); ++lane) {
                LineBlock::Ending& ending = blocks_[b].endings[each.head.origins[lane]];
                ending.below = static_cast<int32_t>(pending.size());
                ending.lane = lane;
            }
            pending.push_back(std::move(each));
        }
    }
    for (size_t b = 0; b < blocks_.size(); ++b) {
        const size_t round = blocks_[b].round;
        assert(round + 1 == roundStart_.size() || round == roundStart_.size());
        if (round == roundStart_.size())
            roundStart_.push_back(b);
        for (size_t n = 0; n < blocks_[b].nodes.size(); ++n)
            for (size_t lane = 0; lane < blocks_[b].lines; ++lane)
                places_[static_cast<size_t>(blocks_[b].nodes[n].treeNodes[lane])] = {
                    static_cast<uint32_t>(b), static_cast<uint32_t>(n),
                    static_cast<uint32_t>(lane)};
    }
    roundStart_.push_back(blocks_.size());
}

} // namespace tamarin
