// The betting of one round on one board, walked for all hands and eight lanes at once.
//
// One seat responds to the other's strategy. Down the tree go the opponent's reach probabilities,
// a row of lanes for each hand; up come the responder's counterfactual values: what each of its
// hands wins, summed over the opponent's hands, each weighed with its reach (Johanson, Waugh,
// Bowling and Zinkevich 2011). The best response takes the better action hand by hand; beside it
// goes the value of the responder's own play by the strategy.
//
// What the opponent does, it does by classes of hands (hand_strategy.h), of which a board has fewer
// than hands. So a reach is never written down hand by hand: it is the reach at the round's
// beginning times a row of the class, and only those rows change from node to node.
//
// A hand meets the opponent's hands that share no card with it: the sum over all, less those with
// either card; the hand itself has both, was taken off twice, and comes back once.
#pragma once

#include "response/board_hands.h"
#include "response/share_rows.h"

#include <algorithm>
#include <array>
#include <cassert>
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
        : betting_(betting), shares_(shares), responder_(responder), frames_(depth(0) + 1),
          before_(hands) {
        for (Frame& frame : frames_) {
            frame.best.resize(hands);
            frame.value.resize(hands);
        }
    }

    // Carries the opponent's reach to the endings that lead on. reach: by hand of the board.
    void down(const BoardHands& hands, size_t block, const Row* reach, RowsBelow<Weight> below) {
        descend(0, begin(hands, block, reach, below), 0);
    }

    // The values at the round's beginning, by hand of the board. below: of the endings that lead
    // on.
    void up(const BoardHands& hands, size_t block, const Row* reach, RowsBelow<Weight> below,
            Row* best, Row* value) {
        visit(0, begin(hands, block, reach, below), 0, best, value);
    }

private:
    // The opponent's reach, of all hands and of those with each card of the deck.
    struct Totals {
        Row sum;
        std::array<Row, MAX_SUITS * MAX_RANKS> with;
    };
    struct Frame {
        std::vector<Row> factors; // [class of the board]: of the opponent's hands, below this node
        std::vector<Row> own;     // [class of the board][action]: the responder's shares
        std::vector<Row> best;    // of what lies below one action
        std::vector<Row> value;
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
        for (Frame& frame : frames_) {
            frame.factors.resize(hands.present[opponent()].size());
            frame.own.resize(hands.present[seat()].size() * numAbstractedActions);
        }
        Row one;
        one.lanes += 1;
        ones_.assign(hands.present[opponent()].size(), one);
        totalClasses();
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

    // The factors behind one of the opponent's actions.
    const Row* act(size_t number, size_t action, const Row* factors, Frame& frame) const {
        const Row* const shares = shares_.of(block_, number);
        const std::vector<uint16_t>& present = hands_->present[opponent()];
        for (size_t k = 0; k < present.size(); ++k)
            frame.factors[k].lanes =
                factors[k].lanes * shares[present[k] * size_t{numAbstractedActions} + action].lanes;
        return frame.factors.data();
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

    void visit(size_t number, const Row* factors, size_t depth, Row* best, Row* value) {
        if (betting_.nodes[number].seat == responder_)
            respond(number, factors, depth, best, value);
        else
            face(number, factors, depth, best, value);
    }

    // The responder's node: the better action for each hand.
    void respond(size_t number, const Row* factors, size_t depth, Row* best, Row* value) {
        const RoundBetting::Node& node = betting_.nodes[number];
        Frame& frame = frames_[depth];
        const uint16_t* const classes = hands_->classes[seat()].data();
        const Row* const shares = shares_.of(block_, number);
        const std::vector<uint16_t>& present = hands_->present[seat()];
        for (size_t k = 0; k < present.size(); ++k)
            std::copy_n(shares + present[k] * size_t{numAbstractedActions}, numAbstractedActions,
                        frame.own.data() + k * numAbstractedActions);
        bool totalled = false;
        bool first = true;
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            const int16_t child = node.child[a];
            if (child == RoundBetting::noAction)
                continue;
            const Row* const own = frame.own.data() + a;
            const auto begin = [&](size_t i, const Row& actionBest, const Row& actionValue) {
                best[i].lanes = actionBest.lanes;
                value[i].lanes = own[classes[i] * numAbstractedActions].lanes * actionValue.lanes;
            };
            const auto take = [&](size_t i, const Row& actionBest, const Row& actionValue) {
                best[i].takeGreater(actionBest);
                value[i].lanes += own[classes[i] * numAbstractedActions].lanes * actionValue.lanes;
            };
            if (child < 0 && isSettled(child) && !totalled) {
                total(factors, frame.totals);
                totalled = true;
            }
            if (first)
                follow(child, factors, depth, begin);
            else
                follow(child, factors, depth, take);
            first = false;
        }
    }

    // The opponent's node: what each of its actions leaves, together.
    void face(size_t number, const Row* factors, size_t depth, Row* best, Row* value) {
        const RoundBetting::Node& node = betting_.nodes[number];
        Frame& frame = frames_[depth];
        bool first = true;
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            const int16_t child = node.child[a];
            if (child == RoundBetting::noAction)
                continue;
            const auto begin = [&](size_t i, const Row& actionBest, const Row& actionValue) {
                best[i].lanes = actionBest.lanes;
                value[i].lanes = actionValue.lanes;
            };
            const auto take = [&](size_t i, const Row& actionBest, const Row& actionValue) {
                best[i].lanes += actionBest.lanes;
                value[i].lanes += actionValue.lanes;
            };
            const Row* const next = act(number, a, factors, frame);
            if (child < 0 && isSettled(child))
                total(next, frame.totals);
            if (first)
                follow(child, next, depth, begin);
            else
                follow(child, next, depth, take);
            first = false;
        }
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

    // What the next round has answered, into the frame's rows.
    void collectBelow(const RoundBetting::Ending& ending, Frame& frame) const {
        eachLaneBelow(ending, [&](size_t lane, size_t start, size_t laneThere) {
            for (size_t i = 0; i < hands_->size(); ++i) {
                const size_t at = start + hands_->hands[i].number;
                frame.best[i].lanes[lane] = below_.best[at].lanes[laneThere];
                frame.value[i].lanes[lane] = below_.value[at].lanes[laneThere];
            }
        });
    }

    // take(i, best, value) for every hand, of what is below an action. Where the hand ends, the two
    // are the same; the frame then has the totals of the reach.
    template <class Take>
    void follow(int16_t child, const Row* factors, size_t depth, const Take& take) {
        Frame& frame = frames_[depth];
        const size_t size = hands_->size();
        if (child >= 0) {
            visit(static_cast<size_t>(child), factors, depth + 1, frame.best.data(),
                  frame.value.data());
            const Row* const best = frame.best.data();
            const Row* const value = frame.value.data();
            for (size_t i = 0; i < size; ++i)
                take(i, best[i], value[i]);
            return;
        }
        const RoundBetting::Ending& ending = endingAt(child);
        if (ending.kind == RoundBetting::EndingKind::nextRound) {
            collectBelow(ending, frame);
            for (size_t i = 0; i < size; ++i)
                take(i, frame.best[i], frame.value[i]);
            return;
        }
        const bool fold = ending.kind == RoundBetting::EndingKind::fold;
        const double sign = fold && ending.folded == responder_ ? -1 : 1;
        Row stake;
        for (size_t lane = 0; lane < lanesInBlock; ++lane)
            stake.lanes[lane] = static_cast<Weight>(
                sign * betting_.stake(static_cast<size_t>(~child), block_ * lanesInBlock + lane));
        if (fold)
            settleFold(stake, factors, frame.totals, take);
        else
            settleShowdown(stake, factors, frame.totals, take);
    }

    template <class Take>
    void settleFold(const Row& stake, const Row* factors, const Totals& totals,
                    const Take& take) const {
        const BoardHands::Hand* const hands = hands_->hands.data();
        const auto sum = totals.sum.lanes;
        const auto times = stake.lanes;
        for (size_t i = 0, size = hands_->size(); i < size; ++i) {
            Row row;
            row.lanes =
                times * (sum - totals.with[hands[i].low].lanes - totals.with[hands[i].high].lanes +
                         reach_[i].lanes * factors[classes_[i]].lanes);
            take(i, row, row);
        }
    }

    // From the weakest hands up, group by group of equals: what a hand beats less what beats it is
    // (all below it) + (all below and equal) - (all). The sums so far are kept doubled and less the
    // total, so that the two readings, before a group and after it, are added and halved. A hand
    // itself was taken off twice too often at the one reading, and too seldom at the other.
    template <class Take>
    void settleShowdown(const Row& stake, const Row* factors, const Totals& totals,
                        const Take& take) {
        auto sum = -totals.sum.lanes;
        auto& with = with_;
        for (size_t card = 0; card < with.size(); ++card)
            with[card].lanes = -totals.with[card].lanes;
        const auto half = stake.lanes / 2;
        const BoardHands::Hand* const hands = hands_->hands.data();
        Row* const before = before_.data();
        for (size_t from = 0, size = hands_->size(); from < size;) {
            const size_t to = hands_->groupEnd[from];
            for (size_t i = from; i < to; ++i)
                before[i - from].lanes = sum - with[hands[i].low].lanes - with[hands[i].high].lanes;
            for (size_t i = from; i < to; ++i) {
                const auto reach = reach_[i].lanes * factors[classes_[i]].lanes;
                const auto twice = reach + reach;
                sum += twice;
                with[hands[i].low].lanes += twice;
                with[hands[i].high].lanes += twice;
            }
            for (size_t i = from; i < to; ++i) {
                Row row;
                row.lanes = half * ((sum - with[hands[i].low].lanes - with[hands[i].high].lanes) +
                                    before[i - from].lanes);
                take(i, row, row);
            }
            from = to;
        }
    }

    const RoundBetting& betting_;
    const ShareRows<Weight>& shares_;
    int responder_;
    const BoardHands* hands_ = nullptr;
    size_t block_ = 0;
    const Row* reach_ = nullptr;        // by hand, at the round's beginning
    const uint16_t* classes_ = nullptr; // of the opponent's hands
    std::vector<Row> ones_;
    std::vector<Totals> ofClasses_; // of the reach at the round's beginning; empty for many classes
    RowsBelow<Weight> below_;
    std::vector<Frame> frames_;
    std::array<Row, MAX_SUITS * MAX_RANKS> with_;
    std::vector<Row> before_;
};

} // namespace tamarin
