// The betting of one round on one board, walked for all hands and eight lanes at once.
//
// One seat responds to the other's strategy. Down the tree go the opponent's reach probabilities,
// a row of lanes for each hand; up come the responder's counterfactual values: what each of its
// hands wins, summed over the opponent's hands, each weighed with its reach (Johanson, Waugh,
// Bowling and Zinkevich 2011). The best response takes the better action hand by hand. The value of
// the responder's own play by the strategy needs no such coming up: of every ending it is what the
// ending gives, times the probability of the responder's own actions on the way there.
//
// What a seat does, it does by classes of hands (hand_strategy.h), of which a board has fewer than
// hands. So a reach is never written down hand by hand: it is the reach at the round's beginning
// times a row of the class, its factor, and only those rows change from node to node.
//
// A hand meets the opponent's hands that share no card with it: the sum over all, less those with
// either card; the hand itself has both, was taken off twice, and comes back once.
//
// The memory that the rows take is what a walk waits for. So an action's rows are not kept: all
// that ends at a node is worked out in one pass over the hands and goes straight into the node's.
#pragma once

#include "response/board_hands.h"
#include "response/share_rows.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <limits>
#include <vector>

namespace tamarin {

// What the next round's walks are told, and what they have answered; by lane block below and then
// by holding.
template <class Weight>
struct RowsBelow {
    LaneRow<Weight>* reach = nullptr;
    const LaneRow<Weight>* best = nullptr;
    const LaneRow<Weight>* value = nullptr;
    size_t holdings = 0;
};

template <class Weight>
class RoundWalk {
public:
    using Row = LaneRow<Weight>;

    // hands: of the largest board.
    RoundWalk(const RoundBetting& betting, const ShareRows<Weight>& shares, int responder,
              size_t hands)
        : betting_(betting), shares_(shares), responder_(responder),
          frames_(depth(0) + 1), below_{}, bestBelow_(hands), valueBelow_(hands), before_(hands),
          reachThere_(hands) {
        for (Frame& frame : frames_)
            frame.best.resize(hands);
    }

    // Carries the opponent's reach to the endings that lead on. reach: by hand of the board.
    void down(const BoardHands& hands, size_t block, const Row* reach, RowsBelow<Weight> below) {
        descend(0, begin(hands, block, reach, below), 0);
    }

    // The values at the round's beginning, by hand of the board. below: of the endings that lead
    // on.
    void up(const BoardHands& hands, size_t block, const Row* reach, RowsBelow<Weight> below,
            Row* best, Row* value) {
        const Row* const ones = begin(hands, block, reach, below);
        std::fill_n(value, hands.size(), Row{});
        value_ = value;
        totalClasses();
        visit(0, {ones, ones}, 0, best);
    }

private:
    // The opponent's reach, of all hands and of those with each card of the deck.
    struct Totals {
        Row sum;
        std::array<Row, MAX_SUITS * MAX_RANKS> with;
    };
    // The probabilities of either seat's actions since the round's beginning, by class of the
    // board.
    struct Factors {
        const Row* reach; // the opponent's
        const Row* own;   // the responder's
    };
    struct Frame {
        std::array<std::vector<Row>, numAbstractedActions>
            behind;            // of who acts, behind each action
        std::vector<Row> best; // of what lies below one action
    };
    // A fold or a showdown, and how it is reached.
    struct End {
        Factors factors{};
        Row stake; // what the responder wins by it, if it wins
        Totals totals;
    };

    // The factors of the round's beginning: 1.
    const Row* begin(const BoardHands& hands, size_t block, const Row* reach,
                     RowsBelow<Weight> below) {
        hands_ = &hands;
        block_ = block;
        reach_ = reach;
        below_ = below;
        classes_ = hands.classes[opponent()].data();
        ownClasses_ = hands.classes[seat()].data();
        const size_t most = std::max(hands.present[0].size(), hands.present[1].size());
        for (Frame& frame : frames_)
            for (std::vector<Row>& rows : frame.behind)
                rows.resize(most);
        Row one;
        one.lanes += 1;
        ones_.assign(most, one);
        return ones_.data();
    }

    size_t seat() const { return static_cast<size_t>(responder_); }
    size_t opponent() const { return 1 - seat(); }

    size_t depth(size_t node) const {
        size_t deepest = 0;
        for (const int16_t child : betting_.nodes[node].child)
            if (child >= 0)
                deepest = std::max(deepest, 1 + depth(static_cast<size_t>(child)));
        return deepest;
    }

    const RoundBetting::Ending& endingAt(int16_t child) const {
        return betting_.endings[static_cast<size_t>(~child)];
    }
    bool isSettled(int16_t child) const {
        return endingAt(child).kind != RoundBetting::EndingKind::nextRound;
    }

    // Calls act(lane of a row here, first row of the block below, lane of a row there) for the
    // lanes that an ending leads on.
    template <class Act>
    void eachLaneBelow(const RoundBetting::Ending& ending, const Act& act) const {
        for (size_t lane = 0; lane < lanesInBlock; ++lane) {
            const int32_t below = betting_.laneBelow(ending.number, block_ * lanesInBlock + lane);
            if (below != RoundBetting::emptyLane)
                act(lane, static_cast<size_t>(below) / lanesInBlock * below_.holdings,
                    static_cast<size_t>(below) % lanesInBlock);
        }
    }

    // The factors behind one action of the seat that acts, from those at the node.
    const Row* act(size_t number, size_t action, const Row* factors, Frame& frame) const {
        const Row* const shares = shares_.of(block_, number);
        const auto& present = hands_->present[betting_.nodes[number].seat];
        std::vector<Row>& behind = frame.behind[action];
        for (size_t k = 0; k < present.size(); ++k)
            behind[k].lanes =
                factors[k].lanes * shares[present[k] * size_t{numAbstractedActions} + action].lanes;
        return behind.data();
    }
    Factors act(size_t number, size_t action, Factors factors, Frame& frame) const {
        if (betting_.nodes[number].seat == responder_)
            return {factors.reach, act(number, action, factors.own, frame)};
        return {act(number, action, factors.reach, frame), factors.own};
    }

    void descend(size_t number, const Row* factors, size_t depth) {
        const RoundBetting::Node& node = betting_.nodes[number];
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            const int16_t child = node.child[a];
            if (child == RoundBetting::noAction || (child < 0 && isSettled(child)))
                continue;
            const Row* const next =
                node.seat == responder_ ? factors : act(number, a, factors, frames_[depth]);
            if (child >= 0) {
                descend(static_cast<size_t>(child), next, depth + 1);
                continue;
            }
            eachLaneBelow(endingAt(child), [&](size_t lane, size_t start, size_t laneThere) {
                Row* const rows = below_.reach + start;
                for (size_t i = 0; i < hands_->size(); ++i)
                    rows[hands_->hands[i].number].lanes[laneThere] =
                        reach_[i].lanes[lane] * next[classes_[i]].lanes[lane];
            });
        }
    }

    // The responder takes the better action hand by hand; what the opponent's actions leave is
    // added up.
    void visit(size_t number, Factors factors, size_t depth, Row* best) {
        if (betting_.nodes[number].seat == responder_)
            visitAs<true>(number, factors, depth, best);
        else
            visitAs<false>(number, factors, depth, best);
    }

    template <bool Responds>
    static void join(Row& best, const Row& action) {
        if constexpr (Responds)
            best.takeGreater(action);
        else
            best.add(action);
    }

    template <bool Responds>
    void visitAs(size_t number, Factors factors, size_t depth, Row* best) {
        const RoundBetting::Node& node = betting_.nodes[number];
        Frame& frame = frames_[depth];
        const size_t size = hands_->size();
        bool begun = false;
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            const int16_t child = node.child[a];
            if (child < 0)
                continue;
            const Factors behind = act(number, a, factors, frame);
            visit(static_cast<size_t>(child), behind, depth + 1, begun ? frame.best.data() : best);
            if (begun)
                for (size_t i = 0; i < size; ++i)
                    join<Responds>(best[i], frame.best[i]);
            begun = true;
        }
        if (!begun) {
            Row nothing;
            if (Responds)
                nothing.lanes -= std::numeric_limits<Weight>::infinity();
            std::fill_n(best, size, nothing);
        }
        bool fold = false;
        bool showdown = false;
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            const int16_t child = node.child[a];
            if (child == RoundBetting::noAction || child >= 0)
                continue;
            const Factors behind = act(number, a, factors, frame);
            const RoundBetting::Ending& ending = endingAt(child);
            switch (ending.kind) {
            case RoundBetting::EndingKind::nextRound:
                leadOn<Responds>(ending, behind.own, best);
                break;
            case RoundBetting::EndingKind::fold:
                prepare(child, ending.folded == responder_ ? -1 : 1, behind, fold_);
                fold = true;
                break;
            case RoundBetting::EndingKind::showdown:
                prepare(child, 1, behind, showdown_);
                showdown = true;
                break;
            }
        }
        if (fold && showdown)
            settleShowdown<Responds, true>(best);
        else if (showdown)
            settleShowdown<Responds, false>(best);
        else if (fold)
            settleFold<Responds>(best);
    }

    // What the next round has answered.
    template <bool Responds>
    void leadOn(const RoundBetting::Ending& ending, const Row* own, Row* best) {
        const BoardHands::Hand* const hands = hands_->hands.data();
        const size_t size = hands_->size();
        size_t lanes = 0;
        eachLaneBelow(ending, [&](size_t, size_t, size_t) { ++lanes; });
        if (lanes < lanesInBlock) { // what is not reached wins nothing
            std::fill_n(bestBelow_.data(), size, Row{});
            std::fill_n(valueBelow_.data(), size, Row{});
        }
        eachLaneBelow(ending, [&](size_t lane, size_t start, size_t laneThere) {
            for (size_t i = 0; i < size; ++i) {
                const size_t at = start + hands[i].number;
                bestBelow_[i].lanes[lane] = below_.best[at].lanes[laneThere];
                valueBelow_[i].lanes[lane] = below_.value[at].lanes[laneThere];
            }
        });
        for (size_t i = 0; i < size; ++i) {
            join<Responds>(best[i], bestBelow_[i]);
            value_[i].lanes += own[ownClasses_[i]].lanes * valueBelow_[i].lanes;
        }
    }

    void prepare(int16_t child, int sign, Factors factors, End& end) const {
        end.factors = factors;
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            end.stake.lanes[lane] = static_cast<Weight>(
                sign * betting_.stake(static_cast<size_t>(~child), block_ * lanesInBlock + lane));
        total(factors.reach, end.totals);
    }

    // The opponent's reach behind some factors: of all hands, and of those with each card.
    void total(const Row* factors, Totals& totals) const {
        totals = {};
        if (ofClasses_.empty()) {
            for (size_t i = 0; i < hands_->size(); ++i)
                add(i, factors[classes_[i]], totals);
            return;
        }
        for (size_t k = 0; k < ofClasses_.size(); ++k) {
            totals.sum.lanes += factors[k].lanes * ofClasses_[k].sum.lanes;
            for (size_t card = 0; card < totals.with.size(); ++card)
                totals.with[card].lanes += factors[k].lanes * ofClasses_[k].with[card].lanes;
        }
    }

    void add(size_t i, const Row& factor, Totals& totals) const {
        const BoardHands::Hand hand = hands_->hands[i];
        const auto reach = reach_[i].lanes * factor.lanes;
        totals.sum.lanes += reach;
        totals.with[hand.low].lanes += reach;
        totals.with[hand.high].lanes += reach;
    }

    // Totals are linear in the factors. Of a few classes they are added up once, for all nodes.
    void totalClasses() {
        constexpr size_t few = 24;
        const size_t classes = hands_->present[opponent()].size();
        ofClasses_.assign(classes <= few ? classes : 0, {});
        if (ofClasses_.empty())
            return;
        for (size_t i = 0; i < hands_->size(); ++i)
            add(i, ones_[0], ofClasses_[classes_[i]]);
    }

    // What a hand wins by the fold, less what its own reach gives back.
    struct FoldRow {
        explicit FoldRow(const End& fold)
            : stake(fold.stake.lanes), sum(fold.totals.sum.lanes), with(fold.totals.with.data()) {}
        Row of(const BoardHands::Hand& hand, const Row& reach) const {
            return {stake * (sum - with[hand.low].lanes - with[hand.high].lanes + reach.lanes)};
        }
        const typename Row::Lanes stake;
        const typename Row::Lanes sum;
        const Row* const with;
    };

    template <bool Responds>
    void settleFold(Row* best) const {
        const BoardHands::Hand* const hands = hands_->hands.data();
        const Factors factors = fold_.factors;
        const FoldRow fold(fold_);
        for (size_t i = 0, size = hands_->size(); i < size; ++i) {
            const Row won = fold.of(hands[i], {reach_[i].lanes * factors.reach[classes_[i]].lanes});
            join<Responds>(best[i], won);
            value_[i].lanes += factors.own[ownClasses_[i]].lanes * won.lanes;
        }
    }

    // The showdown and, if there is one, the fold beside it. From the weakest hands up, group by
    // group of equals: what a hand beats less what beats it is (all below it) + (all below and
    // equal) - (all). The sums so far are kept doubled and less the total, so that the two
    // readings, before a group and after it, are added and halved. A hand itself was taken off
    // twice too often at the one reading, and too seldom at the other.
    template <bool Responds, bool Fold>
    void settleShowdown(Row* best) {
        auto sum = -showdown_.totals.sum.lanes;
        auto& with = with_;
        for (size_t card = 0; card < with.size(); ++card)
            with[card].lanes = -showdown_.totals.with[card].lanes;
        const auto half = showdown_.stake.lanes / 2;
        const FoldRow fold(fold_);
        const Factors factors = showdown_.factors;
        const Factors foldFactors = fold_.factors;
        const BoardHands::Hand* const hands = hands_->hands.data();
        const uint16_t* const groupEnd = hands_->groupEnd.data();
        const uint16_t* const classes = classes_;
        const uint16_t* const ownClasses = ownClasses_;
        const Row* const reachHere = reach_;
        Row* const before = before_.data();
        Row* const reachThere = reachThere_.data();
        Row* const value = value_;
        for (size_t from = 0, size = hands_->size(); from < size;) {
            const size_t to = groupEnd[from];
            for (size_t i = from; i < to; ++i)
                before[i - from].lanes = sum - with[hands[i].low].lanes - with[hands[i].high].lanes;
            for (size_t i = from; i < to; ++i) {
                const auto reach = reachHere[i].lanes * factors.reach[classes[i]].lanes;
                if constexpr (Fold && Responds)
                    reachThere[i - from].lanes =
                        reach; // the fold's, too: the opponent does not act
                const auto twice = reach + reach;
                sum += twice;
                with[hands[i].low].lanes += twice;
                with[hands[i].high].lanes += twice;
            }
            for (size_t i = from; i < to; ++i) {
                Row won;
                won.lanes = half * ((sum - with[hands[i].low].lanes - with[hands[i].high].lanes) +
                                    before[i - from].lanes);
                if constexpr (!Fold) {
                    join<Responds>(best[i], won);
                    value[i].lanes += factors.own[ownClasses[i]].lanes * won.lanes;
                } else if constexpr (Responds) {
                    const Row folded = fold.of(hands[i], reachThere[i - from]);
                    value[i].lanes += factors.own[ownClasses[i]].lanes * won.lanes +
                                      foldFactors.own[ownClasses[i]].lanes * folded.lanes;
                    won.takeGreater(folded);
                    join<Responds>(best[i], won);
                } else {
                    won.add(fold.of(hands[i],
                                    {reachHere[i].lanes * foldFactors.reach[classes[i]].lanes}));
                    join<Responds>(best[i], won);
                    value[i].lanes += factors.own[ownClasses[i]].lanes * won.lanes;
                }
            }
            from = to;
        }
    }

    const RoundBetting& betting_;
    const ShareRows<Weight>& shares_;
    int responder_;
    const BoardHands* hands_ = nullptr;
    size_t block_ = 0;
    const Row* reach_ = nullptr;           // by hand, at the round's beginning
    const uint16_t* classes_ = nullptr;    // of the opponent's hands
    const uint16_t* ownClasses_ = nullptr; // of the responder's
    Row* value_ = nullptr;                 // of the responder's own play, by hand
    std::vector<Row> ones_;
    std::vector<Totals> ofClasses_; // of the reach at the round's beginning; empty for many classes
    std::vector<Frame> frames_;
    End fold_; // of the node that is being worked out
    End showdown_;
    RowsBelow<Weight> below_;
    std::vector<Row> bestBelow_;
    std::vector<Row> valueBelow_;
    std::array<Row, MAX_SUITS * MAX_RANKS> with_;
    std::vector<Row> before_;
    std::vector<Row> reachThere_;
};

} // namespace tamarin
