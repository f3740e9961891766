#include "driver/LimitHoldemAgent.h"

#include "driver/strategy_files.h"
#include "driver/strategy_fit.h"
#include "support/step_progress.h"
#include "tables/table_builder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

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
    static constexpr uint8_t board[MAX_ROUNDS] = {0, 3, 1, 1};
    if ((game.numPlayers == 2 || game.numPlayers == 3) && game.numRounds == MAX_ROUNDS &&
        game.numHoleCards == 2 && game.numSuits == MAX_SUITS && game.numRanks == MAX_RANKS &&
        std::equal(board, board + MAX_ROUNDS, game.numBoardCards))
        return;
    std::fprintf(stderr,
                 "ERROR: %s is not hold'em: two or three players, a full deck, two hole cards and "
                 "a board of 0, 3, 1 and 1 cards are expected\n",
                 gameFile);
    std::exit(1);
}

const char* strategyFileOf(const Game& game) {
    const char* const* files =
        game.bettingRule == noLimitRule ? NoLimiHoldemStrategyFiles : HoldemStrategyFiles;
    return files[game.numPlayers];
}

// Whatever is missing is made exactly, in minutes; EquityTables by itself would sample it
// for most of a day. Without tables there is no play: a failure ends the process with status 1.
void makeMissingTables() {
    tamarin::StepProgress progress;
    tamarin::BuildOptions build;
    build.progress = [&](const std::string& step, uint64_t done, uint64_t total) {
        progress.at(step, done, total);
    };
    build.log = [&](const std::string& line) { progress.line(line); };
    if (const auto built = tamarin::buildTables(build); !built) {
        progress.line("ERROR: could not make the tables: " + built.error());
        std::exit(1);
    }
}

std::unique_ptr<EquityTables> loadTables() {
    makeMissingTables();
    auto tables = std::make_unique<EquityTables>();
    tables->load();
    tables->loadHoldemTables();
    return tables;
}

} // namespace

LimitHoldemAgent::LimitHoldemAgent(const char* gameFile, unsigned long long iterations,
                                   tamarin::SocketCalls& calls)
    : PokerAgent(gameFile, calls) {
    requireHoldem(*game, gameFile);
    const std::string file = strategyFileOf(*game);
    solver = std::make_unique<CFR>(game);
    if (tamarin::loadStrategy(
            *solver, file, [&](CFR& loaded) { return tamarin::holdsHoldemGame(loaded, *game); })) {
        tables = loadTables();
        solver->setEquityTables(tables.get());
        return;
    }
    solver = std::make_unique<CFR>(game); // a bad file may have left a part of itself
    std::cout << "Training hold'em agent with " << iterations
              << " iterations for each information set!" << std::endl;
    tamarin::makeDirectoryOf(file);
    tables = loadTables();
    std::cout << "Training hold'em agent with " << iterations << " iterations" << std::endl;
    CFR::logProgress = true;
    solver->setEquityTables(tables.get());
    solver->trainHoldem(iterations);
    (void)solver->save(file); // without a saved strategy the next start trains again
}

LimitHoldemAgent::~LimitHoldemAgent() = default;

// Stores the buckets of the viewing seat's hand for the current round where the solver's keys look
// for them: by the number of players still acting.
void LimitHoldemAgent::lookUpBuckets() {
    const State& hand = state.state;
    const int seat = state.viewingPlayer;
    const int round = hand.round;
    uint8_t cards[MAX_HOLE_CARDS + MAX_BOARD_CARDS];
    std::copy_n(hand.holeCards[seat], game->numHoleCards, cards);
    std::copy_n(hand.boardCards, sumBoardCards(game, round), cards + game->numHoleCards);
    // The two-player tables have two seats; the third takes the second's, as it did in training.
    const auto two =
        static_cast<uint8_t>(tables->holdemTableIndex(2, round, std::min(seat, 1), cards));
    solver->holdemBucket[round][1][seat] = two; // the others are all-in
    solver->holdemBucket[round][2][seat] = two;
    if (game->numPlayers == 3) {
        solver->holdemBucket[round][3][seat] =
            static_cast<uint8_t>(tables->holdemTableIndex(3, round, seat, cards));
    }
}

void LimitHoldemAgent::getAction(Action& action) {
    // Training clears both when it returns.
    solver->useCardAbstraction = true;
    solver->useHoldemTables = true;
    lookUpBuckets();
    if (!playStrategy(action))
        playPotOdds(action);
}

// Draws from the average strategy; false when the tree does not hold the state.
bool LimitHoldemAgent::playStrategy(Action& action) {
    CFRNode* node = nullptr;
    try {
        node = solver->findNode(&state.state);
    } catch (const std::out_of_range&) {
        fallback.add();
        return false;
    }
    solver->translate(node->getRandomActionIndex(), &state.state, action);
    return true;
}

// The probability that the viewing seat's hand beats random hands of all players still in.
double LimitHoldemAgent::equity() {
    const State& hand = state.state;
    const int seat = state.viewingPlayer;
    uint8_t cards[MAX_HOLE_CARDS + MAX_BOARD_CARDS];
    std::copy_n(hand.holeCards[seat], game->numHoleCards, cards);
    std::copy_n(hand.boardCards, sumBoardCards(game, hand.round), cards + game->numHoleCards);
    const int players = game->numPlayers - numFolded(game, &hand);
    const double* table = tables->getEquityTable(players, hand.round);
    return table[hand_index_last(tables->indexer(hand.round), cards)];
}

// Checks when nothing is owed; else calls when the hand is worth the price: equity * (pot + price)
// >= price. The equity tables count a tie as lost, which makes the rule a little tight.
void LimitHoldemAgent::playPotOdds(Action& action) {
    const State& hand = state.state;
    const int seat = state.viewingPlayer;
    action = {actionCall, 0};
    const int64_t owed = int64_t{std::min(hand.maxSpent, game->stack[seat])} - hand.spent[seat];
    if (owed <= 0)
        return;
    int64_t pot = 0;
    for (int p = 0; p < game->numPlayers; ++p)
        pot += hand.spent[p];
    const auto price = static_cast<double>(owed);
    if (equity() * (static_cast<double>(pot) + price) < price)
        action.type = actionFold;
}

void LimitHoldemAgent::holeCards(unsigned char* /*cards*/, unsigned char /*player*/) {}

void LimitHoldemAgent::actionEvent(unsigned char /*player*/, Action /*action*/) {}

void LimitHoldemAgent::stageEvent(int /*round*/) {}

void LimitHoldemAgent::showdownEvent(unsigned char /*player*/, unsigned char* /*cards*/) {}

void LimitHoldemAgent::gameOverEvent(double /*value*/) {}

void LimitHoldemAgent::winEvent(unsigned char /*player*/, int /*amount*/) {}
