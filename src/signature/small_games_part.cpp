// Small games: the player's own training and every other algorithm, values, best responses.
#include "signature/games.h"
#include "signature/nodes.h"
#include "signature/parts.h"
#include "support/rng.h"
#include "training/best_response.h"
#include "training/sequence_reach.h"
#include "training/small_game_trainer.h"

#include <array>
#include <cassert>
#include <sstream>

namespace tamarin {

namespace {

using signature::addNodes;

constexpr unsigned long long playerIterations = 5'000;
constexpr uint64_t trainerIterations = 200;

// CFR::train as the agents start it, what it prints of its nodes, and the game's value.
void addPlayersOwn(Fnv1a& hash, Game& game) {
    CFR solver(&game);
    global_urng().seed(3);
    if (game.numRounds > 1)
        solver.buildTree(); // the player knows no card's chances here and eliminates nothing
    solver.train(playerIterations);
    addNodes(hash, solver);
    hash.add(static_cast<uint32_t>(global_urng()()));
    std::array<double, MAX_PLAYERS> value{};
    solver.calcUtility(value.data());
    for (const double chips : value)
        hash.add(chips);
    for (const auto& [key, node] : solver.nodeMap(0, 0))
        hash.add(node->getRandomActionIndex());
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << solver;
    hash.add(text.str());
}

void addProfile(Fnv1a& hash, const SmallGame& game, const Profile& profile) {
    for (const auto& shares : profile)
        for (const double share : shares)
            hash.add(share);
    const ProfileValue worth = evaluateProfile(game, profile, 0);
    for (const double chips : worth.value)
        hash.add(chips);
    for (const double chips : worth.best)
        hash.add(chips);
    hash.add(worth.nashConv());
    const SequenceReach reach = sequenceReaches(game, profile);
    for (const auto& ofFields : reach.node)
        for (const double share : ofFields)
            hash.add(share);
    for (const double share : reach.edge)
        hash.add(share);
    for (const auto& ofSeats : reach.paid)
        for (const double chips : ofSeats)
            hash.add(chips);
}

void addTrainer(Fnv1a& hash, const SmallGame& game, const TrainerConfig& config) {
    const auto trainer = makeTrainer(game, config);
    trainer->run(trainerIterations);
    const TrainerState state = trainer->state();
    hash.add(state.iteration);
    hash.add(state.random);
    for (const TrainerNumbers& numbers : state.sets)
        for (int a = 0; a < numAbstractedActions; ++a) {
            hash.add(numbers.regret[a]);
            hash.add(numbers.strategy[a]);
            hash.add(numbers.prediction[a]);
        }
    addProfile(hash, game, trainer->average());
}

} // namespace

void addSmallGames(Fnv1a& hash) {
    for (const char* definition : {signature::kuhn2, signature::kuhn3, signature::leduc}) {
        const GamePtr rules = gameFromText(definition);
        addPlayersOwn(hash, *rules);
        const auto game = SmallGame::make(*rules);
        assert(game);
        addProfile(hash, **game, uniformProfile(**game));
        for (const Algorithm algorithm :
             {Algorithm::player, Algorithm::cfr, Algorithm::cfrPlus, Algorithm::linear,
              Algorithm::discounted, Algorithm::predictive}) {
            TrainerConfig config;
            config.algorithm = algorithm;
            config.seed = 5;
            config.threads = 0;
            addTrainer(hash, **game, config);
            if (algorithm == Algorithm::player)
                continue; // always samples one deal
            config.sampledDeals = 3;
            addTrainer(hash, **game, config);
        }
    }
}

} // namespace tamarin
