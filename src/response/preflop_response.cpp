#include "response/preflop_response.h"

#include "support/choose.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

double ways(size_t n, size_t k) {
    return static_cast<double>(choose(n, k));
}

void addTo(std::vector<double>& sums, const std::vector<double>& values, double times) {
    sums.resize(values.size());
    for (size_t i = 0; i < values.size(); ++i)
        sums[i] += times * values[i];
}

} // namespace

void FlopSums::add(const FlopValues& values, double times) {
    for (size_t seat = 0; seat < 2; ++seat) {
        addTo(best_[seat], values.best[seat], times);
        addTo(value_[seat], values.value[seat], times);
        if (flops_ == 0)
            later_[seat].resize(values.later[seat].size());
        if (values.later[seat].size() < later_[seat].size())
            later_[seat].clear();
        for (size_t rounds = 0; rounds < later_[seat].size(); ++rounds)
            addTo(later_[seat][rounds], values.later[seat][rounds], times);
    }
    flops_ += times;
}

// Two hands leave so many flops of all that the deck has; on the others they win nothing.
LineValues FlopSums::mean(const std::vector<double>& sums) const {
    const size_t cards = game_.deck.cards().size();
    const size_t flop = game_.game.numBoardCards[1];
    LineValues values = sums;
    for (double& value : values)
        value *= ways(cards, flop) / ways(cards - 4, flop) / flops_;
    return values;
}

PreflopResponse::PreflopResponse(const MeasuredGame& game, int seat)
    : game_(game), seat_(seat), ownClass_(game.deck.numHandClasses()),
      foldValue_(game.tree.nodes().size() * numAbstractedActions),
      lineOf_(game.tree.nodes().size()) {
    const size_t holdings = game.deck.holdings().size();
    for (size_t h = 0; h < holdings; ++h) {
        const auto cards = game.deck.cardsOf(h);
        strategyClass_.push_back(game.strategy.classOf(1 - seat, 0, cards));
        ownClass_[game.deck.handClassOf(h)] = game.strategy.classOf(seat, 0, cards);
    }
    for (size_t line = 0; line < game.rounds.entries().size(); ++line)
        lineOf_[static_cast<size_t>(game.rounds.entries()[line])] = line;
    addFolds(0, std::vector<double>(holdings, 1.0), true);
}

// Of each class of starting hands, what it meets of the opponent's: the sum over the holdings that
// share no card with it, each with its reach.
std::vector<double> PreflopResponse::meetings(const std::vector<double>& reach) const {
    const auto& holdings = game_.deck.holdings();
    double sum = 0;
    std::vector<double> with(game_.deck.cards().size());
    for (size_t h = 0; h < holdings.size(); ++h) {
        sum += reach[h];
        with[holdings[h].low] += reach[h];
        with[holdings[h].high] += reach[h];
    }
    std::vector<double> met(game_.deck.numHandClasses());
    for (size_t h = 0; h < holdings.size(); ++h)
        met[game_.deck.handClassOf(h)] +=
            sum - with[holdings[h].low] - with[holdings[h].high] + reach[h];
    for (size_t c = 0; c < met.size(); ++c)
        met[c] /= game_.deck.handClassSize(c);
    return met;
}

// Goes down the tree with the opponent's reach, and notes what each fold is worth and where the
// seat first acts; first: whether it has not acted yet.
void PreflopResponse::addFolds(int32_t number, const std::vector<double>& reach, bool first) {
    const auto& node = game_.tree.nodes()[static_cast<size_t>(number)];
    if (node.round > 0)
        return;
    if (first && node.player == seat_) {
        first_.push_back({number, meetings(reach)});
        for (double& reached : first_.back().reached)
            reached /= othersOfHand();
        first = false;
    }
    for (size_t a = 0; a < numAbstractedActions; ++a) {
        const int32_t child = node.child[a];
        if (child == CompiledTree::noChild)
            continue;
        std::vector<double> next = reach;
        if (node.player != seat_)
            for (size_t h = 0; h < next.size(); ++h)
                next[h] *= game_.strategy.shares(number, strategyClass_[h])[a];
        if (child >= 0) {
            addFolds(child, next, first);
            continue;
        }
        const auto& settlement = game_.tree.settlements()[static_cast<size_t>(~child)];
        const size_t loser = settlement.folded[0] != 0 ? 0 : 1;
        assert(settlement.folded[loser] != 0); // nobody is all-in before the flop
        const double won = loser == static_cast<size_t>(seat_) ? -settlement.spent[loser]
                                                               : settlement.spent[loser];
        std::vector<double> values = meetings(next);
        for (double& value : values)
            value *= won;
        foldValue_[static_cast<size_t>(number) * numAbstractedActions + a] = std::move(values);
    }
}

PreflopResponse::Pair PreflopResponse::below(int32_t node, size_t action, size_t handClass,
                                             const Lines& lines) const {
    const int32_t child = game_.tree.nodes()[static_cast<size_t>(node)].child[action];
    if (child >= 0)
        return at(child, handClass, lines);
    const double won =
        foldValue_[static_cast<size_t>(node) * numAbstractedActions + action][handClass];
    return {won, won};
}

PreflopResponse::Pair PreflopResponse::at(int32_t number, size_t handClass,
                                          const Lines& lines) const {
    const auto& node = game_.tree.nodes()[static_cast<size_t>(number)];
    if (node.round > 0) {
        const size_t place = lineOf_[static_cast<size_t>(number)] * ownClass_.size() + handClass;
        return {(*lines.chooser)[place], (*lines.value)[place]};
    }
    const bool chooses = node.player == seat_ && !lines.own;
    const ActionShares shares = node.player == seat_
                                    ? game_.strategy.shares(number, ownClass_[handClass])
                                    : ActionShares{1, 1, 1}; // the values have the reach
    Pair result{0, 0};
    bool first = true;
    for (size_t a = 0; a < numAbstractedActions; ++a) {
        if (node.child[a] == CompiledTree::noChild)
            continue;
        const Pair pair = below(number, a, handClass, lines);
        if (!chooses) {
            result.chooser += shares[a] * pair.chooser;
            result.value += shares[a] * pair.value;
        } else if (first || pair.chooser > result.chooser) {
            result = pair;
        }
        first = false;
    }
    return result;
}

std::vector<double> PreflopResponse::all(const Lines& lines) const {
    std::vector<double> values(ownClass_.size());
    for (size_t c = 0; c < values.size(); ++c)
        values[c] = at(0, c, lines).value / othersOfHand();
    return values;
}

double PreflopResponse::othersOfHand() const {
    return ways(game_.deck.cards().size() - 2, 2);
}

PreflopResponse::Taken PreflopResponse::chosenAt(const FirstDecision& decision, size_t handClass,
                                                 const LineValues& chooser,
                                                 const LineValues& lines) const {
    const auto& node = game_.tree.nodes()[static_cast<size_t>(decision.node)];
    Taken taken{numAbstractedActions, 0};
    double highest = 0;
    for (size_t a = 0; a < numAbstractedActions; ++a) {
        if (node.child[a] == CompiledTree::noChild)
            continue;
        const Pair pair = below(decision.node, a, handClass, {&chooser, &lines, false});
        if (taken.action == numAbstractedActions || pair.chooser > highest) {
            taken = {a, pair.value / othersOfHand()};
            highest = pair.chooser;
        }
    }
    return taken;
}

double PreflopResponse::ownAt(const FirstDecision& decision, size_t handClass,
                              const LineValues& lines) const {
    return at(decision.node, handClass, {&lines, &lines, true}).value / othersOfHand();
}

double PreflopResponse::ownShare(const FirstDecision& decision, size_t handClass,
                                 size_t action) const {
    return game_.strategy.shares(decision.node, ownClass_[handClass])[action];
}

std::vector<double> PreflopResponse::chosenBy(const LineValues& chooser,
                                              const LineValues& lines) const {
    return all({&chooser, &lines, false});
}

std::vector<double> PreflopResponse::own(const LineValues& lines) const {
    return all({&lines, &lines, true});
}

double PreflopResponse::mean(const std::vector<double>& ofClass) const {
    double sum = 0;
    for (size_t c = 0; c < ofClass.size(); ++c)
        sum += game_.deck.handClassSize(c) * ofClass[c];
    return sum / static_cast<double>(game_.deck.holdings().size());
}

} // namespace tamarin
