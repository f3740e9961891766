#include "driver/KuhnAgent.h"

#include "driver/strategy_files.h"
#include "strategy/soundness.h"
#include "support/rng.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <set>
#include <vector>

const char* const KuhnStrategyFiles[10] = {
    "strategies/kuhn.limit.3p/strategy0", "strategies/kuhn.limit.3p/strategy1",
    "strategies/kuhn.limit.3p/strategy2", "strategies/kuhn.limit.3p/strategy3",
    "strategies/kuhn.limit.3p/strategy4", "strategies/kuhn.limit.3p/strategy5",
    "strategies/kuhn.limit.3p/strategy6", "strategies/kuhn.limit.3p/strategy7",
    "strategies/kuhn.limit.3p/strategy8", "strategies/kuhn.limit.3p/strategy9",
};

namespace {

constexpr int numSeats = 3;

// The file may carry the right name and another game. The agent knows three seats with one card
// each and no board.
void requireKuhn(const Game& game, const char* gameFile) {
    if (game.numPlayers == numSeats && game.numRounds == 1 && game.numHoleCards == 1 &&
        game.numBoardCards[0] == 0 && game.numSuits * game.numRanks < MAX_SUITS * MAX_RANKS)
        return;
    std::fprintf(stderr,
                 "ERROR: %s is not Kuhn poker: three players, one round, one hole card, no board "
                 "and a short deck are expected\n",
                 gameFile);
    std::exit(1);
}

void printUtility(CFR& solver, int numPlayers) {
    std::vector<double> utility(static_cast<size_t>(numPlayers));
    solver.calcUtility(utility.data());
    std::cout << "Avg strategy utility = (";
    for (const double value : utility)
        std::cout << " " << value;
    std::cout << " )" << std::endl;
}

} // namespace

KuhnAgent::KuhnAgent(const char* gameFile, Training training, tamarin::SocketCalls& calls)
    : PokerAgent(gameFile, calls) {
    requireKuhn(*game, gameFile);
    if (!loadStrategies()) {
        trainStrategies(training);
        saveStrategies();
    }
}

KuhnAgent::~KuhnAgent() {
    for (const auto& [name, history] : histories)
        delete history;
    releaseSolvers();
}

// Several seats may share a solver; each is released once.
void KuhnAgent::releaseSolvers() {
    for (const CFR* distinct : std::set<CFR*>(solver, solver + numSeats))
        delete distinct;
    std::fill_n(solver, numSeats, nullptr);
}

bool KuhnAgent::loadStrategies() {
    for (int seat = 0; seat < numSeats; ++seat) {
        solver[seat] = new CFR(game);
        const auto fits = [this](CFR& loaded) {
            return tamarin::holdsSmallGame(loaded.nodes(), *game);
        };
        if (!tamarin::loadStrategy(*solver[seat], KuhnStrategyFiles[seat], fits))
            return false;
    }
    return true;
}

// Trains one solver and keeps, for every seat, the one that gave it the most so far. As there is
// only one, every seat ends with it.
void KuhnAgent::trainStrategies(Training training) {
    tamarin::makeDirectoryOf(KuhnStrategyFiles[0]);
    std::cout << "Training kuhn agent with " << training.attempts << " iterations" << std::endl;
    releaseSolvers();
    const auto players = static_cast<size_t>(game->numPlayers);
    std::vector<double> utility(players);
    std::vector<double> best(players, -100000.0);
    const bool logged = CFR::logProgress;
    CFR::logProgress = false;
    CFR* trained = new CFR(game);
    for (int i = 0; i < training.attempts; ++i) {
        std::cout << "Finding equilibrium " << i << "..." << std::endl;
        trained->train(training.iterations);
        trained->calcUtility(utility.data());
        for (size_t p = 0; p < players; ++p) {
            if (utility[p] > best[p]) {
                best[p] = utility[p];
                solver[p] = trained;
            }
        }
    }
    CFR::logProgress = logged;
    // A seat that nothing was better for: its utility was never a number, or there was no attempt.
    for (CFR*& seat : solver)
        if (seat == nullptr)
            seat = trained;
    if (!trained->isTreeReady())
        trained->buildTree();
}

void KuhnAgent::saveStrategies() {
    for (int seat = 0; seat < numSeats; ++seat) {
        if (!solver[seat]->save(KuhnStrategyFiles[seat]))
            std::cout << "Warning: the strategy was not saved to the disk!" << std::endl;
        std::cout << solver[0] << std::endl;
        printUtility(*solver[seat], game->numPlayers);
    }
}

void KuhnAgent::holeCards(unsigned char* /*cards*/, unsigned char /*player*/) {
    double best = -1000.0;
    for (int candidate = 0; candidate < numModes; ++candidate) {
        const double ev = getEv(candidate);
        if (ev > best) {
            best = ev;
            mode = candidate;
        }
    }
}

void KuhnAgent::getAction(Action& action) {
    const int strategySeat = mode == 1 ? pick_a_number(0, numSeats - 1) : state.viewingPlayer;
    if (mode == 2 || !playStrategy(strategySeat, action))
        playCardRule(action);
}

// Draws from the average strategy of the seat's solver; false when it does not come to an action,
// which is mostly because it does not hold the state. Whatever is thrown, the match goes on.
bool KuhnAgent::playStrategy(int strategySeat, Action& action) {
    try {
        const CFRNode* const node = solver[strategySeat]->findNode(&state.state);
        const int index = node->getRandomActionIndex();
        solver[state.viewingPlayer]->translate(index, &state.state, action);
        return true;
    } catch (...) {
        fallback.add();
        return false;
    }
}

void KuhnAgent::playCardRule(Action& action) {
    const uint8_t seat = state.viewingPlayer;
    const int rank = state.state.holeCards[seat][0] / MAX_SUITS;
    const int strength = rank >= 9 && rank <= 12 ? rank - 9 : rank;
    action.size = 0;
    if (strength >= 2) {
        action.type = actionRaise;
    } else {
        const bool nothingOwed = state.state.spent[seat] >= state.state.maxSpent;
        action.type = nothingOwed ? actionCall : actionFold;
    }
}

void KuhnAgent::actionEvent(unsigned char /*player*/, Action /*action*/) {}

void KuhnAgent::stageEvent(int /*round*/) {}

void KuhnAgent::showdownEvent(unsigned char /*player*/, unsigned char* /*cards*/) {}

void KuhnAgent::gameOverEvent(double value) {
    updateEv(mode, value);
}

void KuhnAgent::winEvent(unsigned char /*player*/, int /*amount*/) {}

double KuhnAgent::getEv(int ofMode) {
    double sum = 0.0;
    for (const double result : rings[ofMode].results)
        sum += result;
    return sum / 10;
}

void KuhnAgent::updateEv(int ofMode, double value) {
    assert(ofMode >= 0 && ofMode < numModes);
    Ring& ring = rings[ofMode];
    if (ring.position == 10)
        ring.position = 0;
    ring.results[ring.position++] = value;
}

std::string KuhnAgent::getHistory(const Game* ofGame, const State* ofState) {
    const int player = currentPlayer(ofGame, ofState);
    const int rank = ofState->holeCards[player][0] / MAX_SUITS;
    std::string history = std::to_string(player) + ":" + std::to_string(ofState->round) + ":" +
                          std::to_string(rank) + ":";
    for (int r = 0; r <= ofState->round; ++r) {
        for (int i = 0; i < ofState->numActions[r]; ++i) {
            char text[100];
            printAction(ofGame, &ofState->action[r][i], sizeof text, text);
            history += text;
        }
    }
    return history;
}
