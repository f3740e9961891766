#include "analysis/equity_estimate.h"

#include <algorithm>

namespace tamarin {

namespace {

ActionShares meanShares(const CompiledTree& tree, const HandStrategy& strategy, int32_t number) {
    const auto& node = tree.nodes()[static_cast<size_t>(number)];
    const size_t classes = strategy.numClasses(node.player, node.round);
    ActionShares mean{};
    for (size_t c = 0; c < classes; ++c) {
        const ActionShares shares = strategy.shares(number, c);
        for (size_t a = 0; a < mean.size(); ++a)
            mean[a] += shares[a] / static_cast<double>(classes);
    }
    return mean;
}

} // namespace

EquityEstimate::EquityEstimate(const CompiledTree& tree, const HandStrategy& strategy,
                               const BoardMargins& margins)
    : margins_(margins), lines_(tree.nodes().size()) {
    // Nodes lie depth-first: children come after their parents.
    for (size_t n = lines_.size(); n-- > 0;) {
        const ActionShares shares = meanShares(tree, strategy, static_cast<int32_t>(n));
        for (size_t a = 0; a < shares.size(); ++a) {
            const int32_t child = tree.nodes()[n].child[a];
            if (child == CompiledTree::noChild)
                continue;
            Line below;
            if (child >= 0) {
                below = lines_[static_cast<size_t>(child)];
            } else {
                const auto& end = tree.settlements()[static_cast<size_t>(~child)];
                const double stake = std::min(end.spent[0], end.spent[1]);
                if (end.folded[0] != 0 || end.folded[1] != 0)
                    below.level = end.folded[0] != 0 ? -stake : stake;
                else
                    below.slope = stake;
            }
            lines_[n].level += shares[a] * below.level;
            lines_[n].slope += shares[a] * below.slope;
        }
    }
}

double EquityEstimate::at(const View& view, const std::vector<double>& row, int32_t node,
                          size_t holding) const {
    const Line& line = lines_[static_cast<size_t>(node)];
    return (view.seat == 0 ? line.level : -line.level) + line.slope * row[holding];
}

// Two hands of a deal have opposite margins.
double EquityEstimate::meanOfDeals(int seat) const {
    return seat == 0 ? lines_[0].level : -lines_[0].level;
}

} // namespace tamarin
