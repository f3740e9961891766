#include "driver/LimitHoldemAgent.h"

#include "driver/strategy_files.h"
#include "holdem/buckets.h"
#include "holdem/pot_odds.h"
#include "holdem/strategy_fit.h"
#include "support/step_progress.h"
#include "table_builder/table_builder.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <utility>

const char* const HoldemStrategyFiles[4] = {
    "n/a",
    "n/a",
    "strategies/holdem.limit.2p/strategy",
    "strategies/holdem.limit.3p/strategy",
};
const char* const NoLimiHoldemStrategyFiles[4] = {
    "n/a",
    "n/a",
    "strategies/holdem.nolimit.2p/strategy",
    "strategies/holdem.nolimit.3p/strategy",
};

namespace {

// The file may carry the right name and another game.
void requireHoldem(const Game& game, const char* gameFile) {
    if (tamarin::isHoldem(game))
        return;
    std::fprintf(stderr,
                 "ERROR: %s is not hold'em: two or three players, a full deck, two hole cards and "
                 "a board of 0, 3, 1 and 1 cards are expected\n",
                 gameFile);
    std::exit(1);
}

// What play of the game reads and is missing is made exactly, in minutes; EquityTables by itself
// would sample it for most of a day. Without tables there is no play: a failure ends the process
// with status 1. Before training the buckets are looked through, too, and damaged ones made anew;
// that reads whole files, and play does without.
void makeMissingTables(const Game& game, bool training) {
    tamarin::BuildOptions build;
    build.forPlayers = game.numPlayers;
    if (training)
        build.lookInto = {tamarin::TableGroup::holdem};
    const auto built = [&] {
        tamarin::StepProgress progress(false, stdout);
        build.progress = [&](const std::string& step, uint64_t done, uint64_t total) {
            progress.at(step, done, total);
        };
        build.log = [&](const std::string& line) { progress.line(line); };
        return tamarin::buildTables(build);
    }();
    if (!built) {
        std::fprintf(stderr, "ERROR: could not make the tables: %s\n", built.error().c_str());
        std::exit(1);
    }
}

std::unique_ptr<tamarin::TableHands> loadTables(const Game& game, bool training) {
    makeMissingTables(game, training);
    auto tables = std::make_unique<EquityTables>();
    tables->loadForPlay(game.numPlayers);
    return std::make_unique<tamarin::TableHands>(std::move(tables));
}

} // namespace

const char* tamarin::holdemStrategyFile(const Game& game) {
    assert(game.numPlayers == 2 || game.numPlayers == 3);
    const char* const* files =
        game.bettingRule == noLimitRule ? NoLimiHoldemStrategyFiles : HoldemStrategyFiles;
    return files[game.numPlayers];
}

LimitHoldemAgent::LimitHoldemAgent(const char* gameFile, unsigned long long iterations,
                                   tamarin::SocketCalls& calls)
    : PokerAgent(gameFile, calls) {
    requireHoldem(*game, gameFile);
    const std::string file = tamarin::holdemStrategyFile(*game);
    solver = std::make_unique<CFR>(game);
    const bool loaded = tamarin::loadStrategy(
        *solver, file, [&](CFR& read) { return tamarin::holdsHoldemGame(read.nodes(), *game); });
    if (!loaded) {
        solver = std::make_unique<CFR>(game); // a bad file may have left a part of itself
        std::cout << "Training hold'em agent with " << iterations
                  << " iterations for each information set!" << std::endl;
        tamarin::makeDirectoryOf(file);
    }
    auto tableHands = loadTables(*game, !loaded);
    solver->setEquityTables(&tableHands->tables());
    hands = std::move(tableHands);
    if (loaded)
        return;
    std::cout << "Training hold'em agent with " << iterations << " iterations" << std::endl;
    CFR::logProgress = true;
    solver->trainHoldem(iterations);
    (void)solver->save(file); // without a saved strategy the next start trains again
}

LimitHoldemAgent::LimitHoldemAgent(const char* gameFile, std::unique_ptr<CFR> readySolver,
                                   std::unique_ptr<tamarin::HoldemHands> readyHands,
                                   tamarin::SocketCalls& calls)
    : PokerAgent(gameFile, calls), hands(std::move(readyHands)), solver(std::move(readySolver)) {
    requireHoldem(*game, gameFile);
}

LimitHoldemAgent::~LimitHoldemAgent() = default;

// The viewing seat's hand as the tables take it: its hole cards, then the board so far.
void LimitHoldemAgent::gatherCards(uint8_t* cards) const {
    const State& hand = state.state;
    std::copy_n(hand.holeCards[state.viewingPlayer], game->numHoleCards, cards);
    std::copy_n(hand.boardCards, sumBoardCards(game, hand.round), cards + game->numHoleCards);
}

// Stores the buckets of the viewing seat's hand for the current round where the solver's keys look
// for them: by the number of players still acting.
void LimitHoldemAgent::lookUpBuckets() {
    const int seat = state.viewingPlayer;
    const int round = state.state.round;
    uint8_t cards[MAX_HOLE_CARDS + MAX_BOARD_CARDS];
    gatherCards(cards);
    assert(seat < game->numPlayers && game->numPlayers <= 3); // the solver's places for buckets
    // The two-player tables have two seats; the third takes the second's, as it did in training.
    const uint8_t two = hands->bucket(2, round, std::min(seat, 1), cards);
    solver->holdemBucket[round][1][seat] = two; // the others are all-in
    solver->holdemBucket[round][2][seat] = two;
    if (game->numPlayers == 3)
        solver->holdemBucket[round][3][seat] = hands->bucket(3, round, seat, cards);
}

void LimitHoldemAgent::getAction(Action& action) {
    // Training clears both when it returns.
    solver->useCardAbstraction = true;
    solver->useHoldemTables = true;
    lookUpBuckets();
    if (!playStrategy(action))
        playPotOdds(action);
}

// Draws from the average strategy; false when it does not come to an action, which is mostly
// because the tree does not hold the state. Whatever is thrown, character strings included, the
// match goes on.
bool LimitHoldemAgent::playStrategy(Action& action) {
    try {
        const CFRNode* const node = solver->findNode(&state.state);
        solver->translate(node->getRandomActionIndex(), &state.state, action);
        return true;
    } catch (...) {
        fallback.add();
        return false;
    }
}

// The probability that the viewing seat's hand beats random hands of all players still in.
double LimitHoldemAgent::equity() const {
    uint8_t cards[MAX_HOLE_CARDS + MAX_BOARD_CARDS];
    gatherCards(cards);
    const State& hand = state.state;
    return hands->equity(game->numPlayers - numFolded(game, &hand), hand.round, cards);
}

void LimitHoldemAgent::playPotOdds(Action& action) {
    const State& hand = state.state;
    const int seat = state.viewingPlayer;
    const bool owes = tamarin::priceOfCall(*game, hand, seat) > 0;
    action = {tamarin::playByPotOdds(*game, hand, seat, owes ? equity() : 0.0), 0};
}

void LimitHoldemAgent::holeCards(unsigned char* /*cards*/, unsigned char /*player*/) {}

void LimitHoldemAgent::actionEvent(unsigned char /*player*/, Action /*action*/) {}

void LimitHoldemAgent::stageEvent(int /*round*/) {}

void LimitHoldemAgent::showdownEvent(unsigned char /*player*/, unsigned char* /*cards*/) {}

void LimitHoldemAgent::gameOverEvent(double /*value*/) {}

void LimitHoldemAgent::winEvent(unsigned char /*player*/, int /*amount*/) {}
