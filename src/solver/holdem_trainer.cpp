#include "solver/holdem_trainer.h"

#include "solver/deck.h"
#include "support/rng.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstring>

namespace tamarin {

namespace {

// Deals of training, of valuing and of a response's training come from streams of their own.
enum class Stream : uint32_t { training, values, response };

void drawDeal(const Game& game, uint64_t seed, Stream stream, uint64_t t, State* state) {
    uint32_t key[] = {static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32U),
                      static_cast<uint32_t>(stream), static_cast<uint32_t>(t),
                      static_cast<uint32_t>(t >> 32U)};
    rng_state_t rng;
    init_by_array(&rng, key, static_cast<int>(std::size(key)));
    ::dealCards(&game, &rng, state);
}

HoldemRule ruleOf(Algorithm algorithm) {
    switch (algorithm) {
    case Algorithm::player:
        return HoldemRule::player;
    case Algorithm::cfrPlus:
        return HoldemRule::counterfactualPlus;
    default:
        return HoldemRule::counterfactual;
    }
}

double weightOf(Algorithm algorithm, uint64_t t) {
    return algorithm == Algorithm::linear || algorithm == Algorithm::cfrPlus
               ? static_cast<double>(t + 1)
               : 1.0;
}

// Means and standard errors of each seat's values, summed in the order of the deals.
class ValueSum {
public:
    void add(const double* util, int players) {
        ++deals_;
        for (int p = 0; p < players; ++p) {
            sum_[p] += util[p];
            squares_[p] += util[p] * util[p];
        }
    }
    SampledValue result(int players) const {
        SampledValue value;
        value.deals = deals_;
        const auto n = static_cast<double>(deals_);
        for (int p = 0; p < players; ++p) {
            value.mean[p] = sum_[p] / n;
            const double variance = std::max(0.0, squares_[p] / n - value.mean[p] * value.mean[p]);
            value.error[p] = std::sqrt(variance / n);
        }
        return value;
    }

private:
    double sum_[MAX_PLAYERS] = {};
    double squares_[MAX_PLAYERS] = {};
    uint64_t deals_ = 0;
};

} // namespace

HoldemTrainer::HoldemTrainer(const Game& game, const HoldemBuckets& buckets,
                             const HoldemTrainerConfig& config)
    : game_(game), buckets_(buckets), config_(config), sets_(game), walk_(game, sets_) {
    assert(config.algorithm != Algorithm::predictive && config.block > 0);
}

void HoldemTrainer::dealCards(uint64_t t, State* state) const {
    drawDeal(game_, config_.seed, Stream::training, t, state);
}

void HoldemTrainer::run(uint64_t deals) {
    State state{};
    DealBuckets buckets;
    double util[MAX_PLAYERS];
    for (uint64_t i = 0; i < deals; ++i) {
        dealCards(deals_, &state);
        fillDealBuckets(game_, state, buckets_, buckets);
        walk_.iterate(ruleOf(config_.algorithm), state, buckets,
                      weightOf(config_.algorithm, deals_), util);
        ++deals_;
        if (config_.algorithm == Algorithm::discounted && deals_ % config_.block == 0) {
            discount(deals_ / config_.block);
        }
    }
}

void HoldemTrainer::discount(uint64_t block) {
    const auto b = static_cast<double>(block);
    const double positive = std::pow(b, 1.5) / (std::pow(b, 1.5) + 1.0);
    const double average = b / (b + 1.0) * (b / (b + 1.0));
    SetNumbers* const numbers = sets_.numbers();
    const size_t count = sets_.numSets();
#pragma omp parallel for schedule(static) default(none) shared(numbers, count, positive, average)
    for (size_t i = 0; i < count; ++i) {
        for (int a = 0; a < numAbstractedActions; ++a) {
            numbers[i].regret[a] *= numbers[i].regret[a] > 0.0 ? positive : 0.5;
            numbers[i].strategy[a] *= average;
        }
    }
}

double HoldemTrainer::averageRegret() const {
    double sum = 0.0;
    for (size_t i = 0; i < sets_.numSets(); ++i) {
        for (const double regret : sets_.numbers()[i].regret) {
            sum += std::max(regret, 0.0);
        }
    }
    // Linear weights make a deal count as much as its number.
    const auto t = static_cast<double>(deals_);
    const double weight = config_.algorithm == Algorithm::linear ? t * (t + 1.0) / 2.0 : t;
    return weight == 0.0 ? 0.0 : sum / weight / static_cast<double>(sets_.numSets());
}

SampledValue sampleValues(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                          uint64_t deals, uint64_t seed) {
    HoldemWalk walk(game, sets);
    ValueSum sum;
    State state{};
    DealBuckets dealt;
    double util[MAX_PLAYERS];
    for (uint64_t t = 0; t < deals; ++t) {
        drawDeal(game, seed, Stream::values, t, &state);
        fillDealBuckets(game, state, buckets, dealt);
        walk.iterate(HoldemRule::average, state, dealt, 1.0, util);
        sum.add(util, game.numPlayers);
    }
    return sum.result(game.numPlayers);
}

SampledValue sampleResponse(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                            int seat, uint64_t trainingDeals, uint64_t deals, uint64_t seed) {
    HoldemSets responder(game);
    HoldemWalk walk(game, sets);
    State state{};
    DealBuckets dealt;
    double util[MAX_PLAYERS];
    for (uint64_t t = 0; t < trainingDeals; ++t) {
        drawDeal(game, seed, Stream::response, t, &state);
        fillDealBuckets(game, state, buckets, dealt);
        walk.respond(responder, seat, state, dealt, static_cast<double>(t + 1), util);
    }
    // The profile to value: the seat's numbers replaced by the response's.
    HoldemSets mixed(game);
    const CompiledTree& tree = sets.tree();
    for (uint32_t slot = 0; slot < tree.slots().size(); ++slot) {
        const HoldemSets& from = tree.slots()[slot].player == seat ? responder : sets;
        for (uint32_t bucket = 0; bucket < numHoldemBuckets; ++bucket) {
            const size_t start = sets.layout().bucketStart(slot, bucket);
            std::copy_n(from.numbers() + start, tree.slots()[slot].numNodes,
                        mixed.numbers() + start);
        }
    }
    return sampleValues(game, buckets, mixed, deals, seed);
}

} // namespace tamarin
