// A strategy's probabilities in a round, as rows of the lanes in which its betting is walked.
#pragma once

#include "response/hand_strategy.h"
#include "response/lane_row.h"

#include <vector>

namespace tamarin {

template <class Weight>
class ShareRows {
public:
    using Row = LaneRow<Weight>;

    ShareRows(const RoundBetting& betting, const HandStrategy& strategy, int round)
        : nodes_(betting.nodes.size()) {
        size_t rows = 0;
        for (const RoundBetting::Node& node : betting.nodes) {
            starts_.push_back(rows);
            rows += strategy.numClasses(node.seat, round) * numAbstractedActions;
        }
        blockRows_ = rows;
        rows_.resize(rows * betting.blocks);
        for (size_t n = 0; n < nodes_; ++n)
            for (size_t lane = 0; lane < betting.lanes(); ++lane)
                if (betting.treeNode(n, lane) != RoundBetting::emptyLane)
                    fill(n, lane, betting, strategy,
                         strategy.numClasses(betting.nodes[n].seat, round));
    }

    // Rows of a node's actions, [class][action].
    const Row* of(size_t block, size_t node) const {
        return rows_.data() + block * blockRows_ + starts_[node];
    }

private:
    void fill(size_t node, size_t lane, const RoundBetting& betting, const HandStrategy& strategy,
              size_t classes) {
        Row* const rows = rows_.data() + lane / lanesInBlock * blockRows_ + starts_[node];
        for (size_t c = 0; c < classes; ++c) {
            const ActionShares shares = strategy.shares(betting.treeNode(node, lane), c);
            for (size_t a = 0; a < shares.size(); ++a)
                rows[c * shares.size() + a].lanes[lane % lanesInBlock] =
                    static_cast<Weight>(shares[a]);
        }
    }

    size_t nodes_;
    size_t blockRows_ = 0;
    std::vector<size_t> starts_; // [node]
    std::vector<Row> rows_;
};

} // namespace tamarin
