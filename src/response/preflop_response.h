// The betting before the flop, on top of what the flops are worth.
#pragma once

#include "response/flop_response.h"

#include <vector>

namespace tamarin {

// Values by [line that reaches the flop][class of starting hands], averaged over flops: what
// FlopValues has of one flop.
using LineValues = std::vector<double>;

// Adds up the values of flops.
class FlopSums {
public:
    explicit FlopSums(const MeasuredGame& game) : game_(game) {}

    // times: flops that this one stands for.
    void add(const FlopValues& values, double times);
    double flops() const { return flops_; }

    // As if the flops added were all that the deck has.
    LineValues best(int seat) const { return mean(best_[static_cast<size_t>(seat)]); }
    LineValues value(int seat) const { return mean(value_[static_cast<size_t>(seat)]); }
    // As FlopValues has them; none where some flop has none.
    size_t laterRounds() const { return later_[0].size(); }
    LineValues later(int seat, size_t rounds) const {
        return mean(later_[static_cast<size_t>(seat)][rounds]);
    }

private:
    LineValues mean(const std::vector<double>& sums) const;

    const MeasuredGame game_;
    double flops_ = 0;
    std::array<std::vector<double>, 2> best_;
    std::array<std::vector<double>, 2> value_;
    std::array<std::vector<std::vector<double>>, 2> later_;
};

// One seat's play before the flop. Results are chips a hand, by class of starting hands.
class PreflopResponse {
public:
    PreflopResponse(const MeasuredGame& game, int seat);

    // The best play, knowing what the lines are worth.
    std::vector<double> best(const LineValues& lines) const { return chosenBy(lines, lines); }
    // The play that is best where the lines are worth what chooser says, with these values: what an
    // estimate from other flops would have chosen.
    std::vector<double> chosenBy(const LineValues& chooser, const LineValues& lines) const;
    // The strategy's own play.
    std::vector<double> own(const LineValues& lines) const;

    // Over all starting hands.
    double mean(const std::vector<double>& ofClass) const;

    // A node at which the seat acts for the first time: all before it is the opponent's doing.
    struct FirstDecision {
        int32_t node;
        std::vector<double> reached; // [class]: the probability that it comes to it
    };
    const std::vector<FirstDecision>& firstDecisions() const { return first_; }
    // What a hand does there that is played as chosenBy has it, and what it then wins in the deals
    // that come there.
    struct Taken {
        size_t action;
        double value;
    };
    Taken chosenAt(const FirstDecision& decision, size_t handClass, const LineValues& chooser,
                   const LineValues& lines) const;
    // What it wins there by the strategy's own play, and how often that takes an action.
    double ownAt(const FirstDecision& decision, size_t handClass, const LineValues& lines) const;
    double ownShare(const FirstDecision& decision, size_t handClass, size_t action) const;

private:
    struct Pair {
        double chooser;
        double value;
    };
    struct Lines {
        const LineValues* chooser;
        const LineValues* value;
        bool own; // the strategy's play in place of the better
    };
    void addFolds(int32_t node, const std::vector<double>& reach, bool first);
    // Hands of the opponent that a starting hand may meet.
    double othersOfHand() const;
    Pair at(int32_t node, size_t handClass, const Lines& lines) const;
    Pair below(int32_t node, size_t action, size_t handClass, const Lines& lines) const;
    std::vector<double> all(const Lines& lines) const;
    std::vector<double> meetings(const std::vector<double>& reach) const;

    const MeasuredGame game_;
    int seat_;
    std::vector<uint16_t> strategyClass_;        // [holding]: of the opponent's
    std::vector<uint16_t> ownClass_;             // [class of starting hands]: of the seat's
    std::vector<std::vector<double>> foldValue_; // [3 * node + action][class]; empty elsewhere
    std::vector<size_t> lineOf_;                 // [node]: of those where the flop begins
    std::vector<FirstDecision> first_;
};

} // namespace tamarin
