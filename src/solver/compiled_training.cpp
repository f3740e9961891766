#include "solver/compiled_training.h"

#include "support/fast_draws.h"
#include "tree/deck.h"
#include "tree/regret_matching.h"

#include <algorithm>
#include <cassert>
#include <numeric>

namespace tamarin {

namespace {

class LibraryDraws {
public:
    explicit LibraryDraws(uint32_t range) : last_(static_cast<int>(range) - 1) {}
    uint32_t next() { return static_cast<uint32_t>(pick_a_number(0, last_)); }
    void store() const {}

private:
    int last_;
};

// The strategy of one set, its sums, and the actor's reach below each action. count is the set's
// number of valid actions.
template <size_t count>
inline void choose(const Step& step) {
    SetNumbers& numbers = *step.numbers;
    double* const strategy = step.reachBelow + numAbstractedActions;
    matchRegrets(numbers.regret, count, strategy);
    for (size_t i = 0; i < count; ++i) {
        const double below = strategy[i] * *step.ownReach;
        numbers.strategy[i] += below;
        step.reachBelow[i] = below;
    }
}

// The node's values from its children's, and the regrets. The sum starts from 0 as the plain form's
// does, or the sign of a zero could differ.
template <size_t count, size_t stride>
inline void addUp(const Step& step) {
    double value[stride] = {};
    for (size_t i = 0; i < count; ++i) {
        const double strategy = step.reachBelow[numAbstractedActions + i];
        for (size_t q = 0; q < stride; ++q)
            value[q] += strategy * step.childValue[i][q];
    }
    for (size_t q = 0; q < stride; ++q)
        step.value[q] = value[q];
    const double own = value[step.player];
    const double reach = *step.parentReach;
    for (size_t i = 0; i < count; ++i)
        step.numbers->regret[i] += reach * (step.childValue[i][step.player] - own);
}

template <size_t stride>
inline void walk(std::span<const Step> program) {
    for (const Step& step : program)
        if (step.count == 2)
            choose<2>(step);
        else if (step.count == 1)
            choose<1>(step);
        else if (step.count == 3)
            choose<3>(step);
    for (size_t i = program.size(); i-- > 0;) {
        const Step& step = program[i];
        if (step.count == 2)
            addUp<2, stride>(step);
        else if (step.count == 1)
            addUp<1, stride>(step);
        else if (step.count == 3)
            addUp<3, stride>(step);
        else
            addUp<0, stride>(step);
    }
}

template <size_t stride, class Draws>
void iterate(unsigned long long iterations, size_t numCards, std::vector<uint32_t>& deck,
             DealPrograms& programs, double* utilSum) {
    Draws draws(static_cast<uint32_t>(deck.size()));
    double sum[stride];
    std::copy_n(utilSum, stride, sum);
    for (unsigned long long it = 0; it < iterations; ++it) {
        for (size_t i = 0; i < numCards; ++i)
            std::swap(deck[i], deck[draws.next()]);
        const std::span<const Step> program = programs.program(deck.data());
        walk<stride>(program);
        for (size_t q = 0; q < stride; ++q)
            sum[q] += programs.rootValue()[q];
    }
    std::copy_n(sum, stride, utilSum);
    draws.store();
}

template <size_t stride>
void iterate(unsigned long long iterations, size_t numCards, std::vector<uint32_t>& deck,
             DealPrograms& programs, double* utilSum) {
    if (FastDraws::matchesLibrary(static_cast<uint32_t>(deck.size())))
        iterate<stride, FastDraws>(iterations, numCards, deck, programs, utilSum);
    else
        iterate<stride, LibraryDraws>(iterations, numCards, deck, programs, utilSum);
}

} // namespace

CompiledTraining::CompiledTraining(const Game& game, const CompiledTree& tree, Payoffs& payoffs,
                                   InformationSets& sets)
    : numPlayers_(game.numPlayers), numCards_(static_cast<size_t>(cardsNeeded(game))),
      deck_(solverDeck(game).size()), programs_(game, tree, payoffs, sets) {
    std::iota(deck_.begin(), deck_.end(), 0U);
}

void CompiledTraining::run(unsigned long long iterations, double* utilSum) {
    double padded[12] = {}; // MAX_PLAYERS rounded up to the widest stride
    assert(numPlayers_ <= std::size(padded));
    std::copy_n(utilSum, numPlayers_, padded);
    if (numPlayers_ <= 2)
        iterate<2>(iterations, numCards_, deck_, programs_, padded);
    else if (numPlayers_ <= 4)
        iterate<4>(iterations, numCards_, deck_, programs_, padded);
    else if (numPlayers_ <= 8)
        iterate<8>(iterations, numCards_, deck_, programs_, padded);
    else
        iterate<12>(iterations, numCards_, deck_, programs_, padded);
    std::copy_n(padded, numPlayers_, utilSum);
}

} // namespace tamarin
