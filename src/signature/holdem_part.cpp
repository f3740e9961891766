// Hold'em training over made-up buckets, for two and three, and sampled values.
#include "holdem/buckets.h"
#include "holdem/deals.h"
#include "holdem/values.h"
#include "signature/games.h"
#include "signature/nodes.h"
#include "signature/parts.h"
#include "support/rng.h"
#include "training/holdem_trainer.h"

#include <cassert>

namespace tamarin {

namespace {

using signature::addNodes;

// A bucket from the cards alone, another one for each number of players, round and seat.
class MadeUpBuckets : public HoldemBuckets {
public:
    uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const override {
        static constexpr int known[MAX_ROUNDS] = {2, 5, 6, 7};
        Fnv1a hash;
        hash.add(players * 100 + round * 10 + seat);
        for (int i = 0; i < known[round]; ++i)
            hash.add(cards[i]);
        return static_cast<uint8_t>((hash.value() >> 32U) % holdemBuckets);
    }
};

// The game with fewer raises: a tree of some hundred nodes in place of thousands or millions.
GamePtr gameOf(const char* definition, std::array<uint8_t, MAX_ROUNDS> raises) {
    GamePtr game = gameFromText(definition);
    std::copy(raises.begin(), raises.end(), game->maxRaises);
    return game;
}

// CFR::trainHoldem, twice, as a player that goes on with what it has.
void addPlayersOwn(Fnv1a& hash, Game& game, const HoldemBuckets& buckets, uint64_t deals) {
    CFR solver(&game);
    solver.setHoldemBuckets(&buckets);
    global_urng().seed(13);
    solver.trainHoldem(deals);
    solver.trainHoldem(deals / 2);
    addNodes(hash, solver);
    hash.add(static_cast<uint32_t>(global_urng()()));
}

void addValue(Fnv1a& hash, const Game& game, const SampledValue& value) {
    for (int p = 0; p < game.numPlayers; ++p) {
        hash.add(value.mean[p]);
        hash.add(value.error[p]);
    }
    hash.add(value.deals);
}

void addValues(Fnv1a& hash, const Game& game, const HoldemBuckets& buckets, HoldemTrainer& trainer,
               uint64_t deals) {
    ValueSampling sampling;
    sampling.deals = deals;
    sampling.responseDeals = deals;
    sampling.seed = 17;
    addValue(hash, game, sampleValues(game, buckets, trainer.sets(), sampling));
    for (int seat = 0; seat < game.numPlayers; ++seat) {
        const ResponseValue response =
            sampleResponse(game, buckets, trainer.sets(), seat, sampling);
        addValue(hash, game, response.value);
        hash.add(response.gain);
        hash.add(response.error);
    }
    const auto played = samplePlay(game, buckets, trainer.sets(), 10 * deals, sampling);
    assert(played);
    addValue(hash, game, *played);
}

void addGame(Fnv1a& hash, const GamePtr& game, uint64_t deals) {
    const MadeUpBuckets buckets;
    hash.add(fingerprintOf(*game, buckets));
    addPlayersOwn(hash, *game, buckets, deals);
    for (const Algorithm algorithm : {Algorithm::player, Algorithm::cfr, Algorithm::cfrPlus,
                                      Algorithm::linear, Algorithm::discounted}) {
        HoldemTrainerConfig config;
        config.algorithm = algorithm;
        config.seed = 19;
        config.block = 32; // some discounts on the way
        config.batch = 16;
        HoldemTrainer trainer(*game, buckets, config);
        trainer.run(deals);
        addNodes(hash, trainer.sets(), *game);
        hash.add(trainer.averageRegret());
        if (algorithm == Algorithm::discounted)
            addValues(hash, *game, buckets, trainer, deals);
    }
}

} // namespace

void addHoldem(Fnv1a& hash) {
    addGame(hash, gameOf(signature::limit2, {1, 1, 1, 1}), 160);
    addGame(hash, gameOf(signature::limit3, {1, 1, 0, 0}), 48);
    addGame(hash, gameFromText(signature::noLimit2), 160);
}

} // namespace tamarin
