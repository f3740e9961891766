#include "solver/holdem_trainer.h"

#include "solver/deck.h"
#include "support/rng.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <omp.h>

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

// Deals first .. first + deals.size() - 1 of a stream.
void fillBatch(const Game& game, const HoldemBuckets& buckets, uint64_t seed, Stream stream,
               uint64_t first, int threads, std::span<BatchDeal> deals) {
    const int useful = deals.size() < 16 ? 1 : threads;
#pragma omp parallel for schedule(static) num_threads(useful) default(none)                        \
    shared(game, buckets, seed, stream, first, deals)
    for (size_t d = 0; d < deals.size(); ++d) {
        drawDeal(game, seed, stream, first + d, &deals[d].cards);
        fillDealBuckets(game, deals[d].cards, buckets, deals[d].buckets);
    }
}

int threadsOf(int threads) {
    return threads > 0 ? threads : omp_get_max_threads();
}

// A sum of values and of their squares, added in the order of the deals.
struct Sum {
    double sum = 0.0;
    double squares = 0.0;
    void add(double value) {
        sum += value;
        squares += value * value;
    }
    double mean(uint64_t n) const { return sum / static_cast<double>(n); }
    double error(uint64_t n) const {
        const double variance = squares / static_cast<double>(n) - mean(n) * mean(n);
        return std::sqrt(std::max(0.0, variance) / static_cast<double>(n));
    }
};

class ValueSum {
public:
    void add(const double* util, int players) {
        ++deals_;
        for (int p = 0; p < players; ++p) {
            sums_[p].add(util[p]);
        }
    }
    uint64_t deals() const { return deals_; }
    SampledValue result(int players) const {
        SampledValue value;
        value.deals = deals_;
        for (int p = 0; p < players && deals_ > 0; ++p) {
            value.mean[p] = sums_[p].mean(deals_);
            value.error[p] = sums_[p].error(deals_);
        }
        return value;
    }

private:
    Sum sums_[MAX_PLAYERS];
    uint64_t deals_ = 0;
};

// Batches for valuing and responding: large enough for the cache, whatever training takes.
constexpr uint64_t samplingBatch = 256;

// Walks the deals of a stream in batches; each is prepared, then given to walk, with its place.
template <class Walk>
void walkStream(const Game& game, const HoldemBuckets& buckets, Stream stream, uint64_t count,
                const ValueSampling& sampling, uint64_t doneBefore, const Walk& walk) {
    std::vector<BatchDeal> batch(samplingBatch);
    for (uint64_t t = 0; t < count; t += batch.size()) {
        batch.resize(std::min(samplingBatch, count - t));
        fillBatch(game, buckets, sampling.seed, stream, t, threadsOf(sampling.threads), batch);
        walk(std::span(batch), t);
        if (sampling.goOn && !sampling.goOn(doneBefore + t + batch.size())) {
            return;
        }
    }
}

} // namespace

HoldemTrainer::HoldemTrainer(const Game& game, const HoldemBuckets& buckets,
                             const HoldemTrainerConfig& config)
    : game_(game), buckets_(buckets), config_(config), sets_(game),
      walk_(game, sets_, config.threads), batch_(config.batch) {
    assert(config.algorithm != Algorithm::predictive && config.batch > 0 && config.block > 0);
    assert(config.algorithm != Algorithm::discounted || config.block % config.batch == 0);
}

void HoldemTrainer::dealCards(uint64_t t, State* state) const {
    drawDeal(game_, config_.seed, Stream::training, t, state);
}

void HoldemTrainer::run(uint64_t deals) {
    for (uint64_t i = 0; i < deals; i += config_.batch) {
        fillBatch(game_, buckets_, config_.seed, Stream::training, deals_,
                  threadsOf(config_.threads), batch_);
        for (size_t d = 0; d < batch_.size(); ++d) {
            batch_[d].weight = weightOf(config_.algorithm, deals_ + d);
        }
        walk_.iterate(ruleOf(config_.algorithm), batch_);
        deals_ += config_.batch;
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
    const int threads = threadsOf(config_.threads);
#pragma omp parallel for schedule(static) num_threads(threads) default(none)                       \
    shared(numbers, count, positive, average)
    for (size_t i = 0; i < count; ++i) {
        for (int a = 0; a < numAbstractedActions; ++a) {
            numbers[i].regret[a] *= numbers[i].regret[a] > 0.0 ? positive : 0.5;
            numbers[i].strategy[a] *= average;
        }
    }
}

double HoldemTrainer::averageRegret() const {
    // Summed in pieces of a fixed size, so that the sum does not depend on the threads.
    constexpr size_t piece = 1 << 14U;
    const size_t count = sets_.numSets();
    const SetNumbers* const numbers = sets_.numbers();
    std::vector<double> sums((count + piece - 1) / piece);
    const int threads = threadsOf(config_.threads);
#pragma omp parallel for schedule(static) num_threads(threads) default(none)                       \
    shared(sums, numbers, count)
    for (size_t s = 0; s < sums.size(); ++s) {
        double part = 0.0;
        for (size_t i = s * piece; i < std::min(count, (s + 1) * piece); ++i) {
            for (const double regret : numbers[i].regret) {
                part += std::max(regret, 0.0);
            }
        }
        sums[s] = part;
    }
    double sum = 0.0;
    for (const double part : sums) {
        sum += part;
    }
    // Linear weights make a deal count as much as its number.
    const auto t = static_cast<double>(deals_);
    const double weight = config_.algorithm == Algorithm::linear ? t * (t + 1.0) / 2.0 : t;
    return weight == 0.0 ? 0.0 : sum / weight / static_cast<double>(sets_.numSets());
}

SampledValue sampleValues(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                          const ValueSampling& sampling) {
    HoldemBatch walk(game, sets, sampling.threads);
    ValueSum sum;
    walkStream(game, buckets, Stream::values, sampling.deals, sampling, 0,
               [&](std::span<BatchDeal> batch, uint64_t) {
                   walk.iterate(HoldemRule::average, batch);
                   for (const BatchDeal& deal : batch) {
                       sum.add(deal.value, game.numPlayers);
                   }
               });
    return sum.result(game.numPlayers);
}

ResponseValue sampleResponse(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                             int seat, const ValueSampling& sampling) {
    HoldemSets responder(game);
    HoldemBatch walk(game, sets, sampling.threads);
    walkStream(game, buckets, Stream::response, sampling.responseDeals, sampling, 0,
               [&](std::span<BatchDeal> batch, uint64_t t) {
                   for (size_t d = 0; d < batch.size(); ++d) {
                       batch[d].weight = static_cast<double>(t + d + 1);
                   }
                   walk.respond(responder, seat, batch);
               });
    ValueSum sum;
    Sum gain;
    walkStream(game, buckets, Stream::values, sampling.deals, sampling, sampling.responseDeals,
               [&](std::span<BatchDeal> batch, uint64_t) {
                   walk.iterate(HoldemRule::average, batch);
                   std::vector<double> kept;
                   for (const BatchDeal& deal : batch) {
                       kept.push_back(deal.value[seat]);
                   }
                   walk.valueOfResponse(responder, seat, batch);
                   for (size_t d = 0; d < batch.size(); ++d) {
                       sum.add(batch[d].value, game.numPlayers);
                       gain.add(batch[d].value[seat] - kept[d]);
                   }
               });
    ResponseValue result;
    result.value = sum.result(game.numPlayers);
    if (sum.deals() > 0) {
        result.gain = gain.mean(sum.deals());
        result.error = gain.error(sum.deals());
    }
    return result;
}

} // namespace tamarin
