// The value estimate by equity: at every node a level and a slope, and the hand's margin over the
// opponent's, exactly.
//
//     value = level + slope * margin
//
// The margin is the share of boards on which the hand wins less that on which it loses, if nobody
// folds. It is a mean over boards, so its mean over the next cards is the margin before they come:
// what the luck of the cards is costs no look at the cards that did not come. Level and slope are
// those of a play that does at every node what the strategy does on the average of its classes: at
// a showdown the slope is the stake, at a fold the level is the fold's payoff, above them they are
// means.
#pragma once

#include "analysis/value_estimate.h"
#include "response/hand_strategy.h"
#include "showdown/board_margins.h"

namespace tamarin {

class EquityEstimate : public ValueEstimate {
public:
    // The margins must outlive the object; those before the board must be ready when rowOf is
    // asked.
    EquityEstimate(const CompiledTree& tree, const HandStrategy& strategy,
                   const BoardMargins& margins);

    std::vector<double> rowOf(const View& view) const override {
        return margins_.of(view.other, view.board);
    }
    double at(const View& view, const std::vector<double>& row, int32_t node,
              size_t holding) const override;
    double meanOfDeals(int seat) const override;

private:
    struct Line { // of seat 0; the other seat's are the negative level and the same slope
        double level = 0;
        double slope = 0;
    };
    const BoardMargins& margins_;
    std::vector<Line> lines_; // by node
};

} // namespace tamarin
