#include "driver/strategy_fit.h"

#include "abstraction/quantise.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <stdexcept>

namespace tamarin {

namespace {

// Whether a node may stand where the rules have this one: sound numbers, and no action besides
// theirs. Training may have taken some away.
bool isOne(const CFRNode& held, const CFRNode& rules) {
    for (int a = 0; a < numAbstractedActions; ++a)
        if (held.isActionValid(a) && !rules.isActionValid(a))
            return false;
    return held.hasSoundSums() && held.getNumValidActions() > 0;
}

} // namespace

bool holdsSmallGame(const CFR& solver, Game& game) {
    CFR whole(&game);
    whole.buildTree();
    for (int m = 0; m < whole.numMaps(); ++m) {
        const bool all = whole.nodes().forEach(m, [&](const std::string& key, const CFRNode& node) {
            CFRNode held;
            return solver.nodes().find(m, key, held) && isOne(held, node);
        });
        if (!all || solver.nodes().count(m) != whole.nodes().count(m))
            return false;
    }
    return true;
}

namespace {

// Counts the betting sequences that the solver's actions lead to, as its tree does.
size_t countDecisions(CFR& solver, const Game& game, const State& state) {
    if (state.finished)
        return 0;
    size_t count = 1;
    for (int a = 0; a < numAbstractedActions; ++a) {
        State next = state;
        Action action;
        solver.getAbstractedAction(a, &next, &action);
        if (isValidAction(&game, &next, 0, &action)) {
            doAction(&game, &action, &next);
            count += countDecisions(solver, game, next);
        }
    }
    return count;
}

bool allowsWhatTheRulesDo(CFR& solver, const Game& game, const State& state, const CFRNode& node) {
    for (int a = 0; a < numAbstractedActions; ++a) {
        State at = state;
        Action action;
        solver.getAbstractedAction(a, &at, &action);
        if (node.isActionValid(a) != (isValidAction(&game, &at, 0, &action) != 0))
            return false;
    }
    return node.hasSoundSums();
}

// Whether the solver knows every state that this many random hands come to, in random buckets.
bool knowsRandomHands(CFR& solver, const Game& game, int hands) {
    std::minstd_rand0 engine(1);
    std::uniform_int_distribution<int> anyBucket(0, holdemBuckets - 1);
    std::uniform_int_distribution<int> anyAction(0, numAbstractedActions - 1);
    solver.useCardAbstraction = true;
    solver.useHoldemTables = true;
    for (int hand = 0; hand < hands; ++hand) {
        State state;
        initState(&game, 0, &state);
        while (!state.finished) {
            for (auto& byActing : solver.holdemBucket[state.round]) {
                std::fill(std::begin(byActing), std::end(byActing),
                          static_cast<uint64_t>(anyBucket(engine)));
            }
            try {
                if (!allowsWhatTheRulesDo(solver, game, state, *solver.findNode(&state)))
                    return false;
            } catch (const std::out_of_range&) {
                return false;
            }
            Action action;
            do {
                solver.getAbstractedAction(anyAction(engine), &state, &action);
            } while (!isValidAction(&game, &state, 0, &action));
            doAction(&game, &action, &state);
        }
    }
    return true;
}

} // namespace

// Three players' ten million sequences are not counted at every start; random hands come upon what
// is missing soon enough.
bool holdsHoldemGame(CFR& solver, const Game& game) {
    constexpr int hands = 1000;
    if (game.numPlayers == 2) {
        State root;
        initState(&game, 0, &root);
        if (solver.numInformationSets() != holdemBuckets * countDecisions(solver, game, root))
            return false;
        for (int m = 0; m < solver.numMaps(); ++m)
            if (!solver.nodes().forEach(
                    m, [](const std::string&, const CFRNode& node) { return node.hasSoundSums(); }))
                return false;
    }
    return knowsRandomHands(solver, game, hands);
}

} // namespace tamarin
