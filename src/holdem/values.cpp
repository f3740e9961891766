#include "holdem/values.h"

#include "holdem/deals.h"
#include "support/parallel_errors.h"
#include "support/split_mix.h"
#include "support/statistics.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace tamarin {

namespace {

// The mean's standard error.
double errorOf(const RunningMoments& moments) {
    return std::sqrt(moments.variance() /
                     static_cast<double>(std::max<uint64_t>(1, moments.count())));
}

class ValueSum {
public:
    void add(const double* seatValues, int players) {
        for (int p = 0; p < players; ++p)
            seats_[p].add(seatValues[p]);
    }
    SampledValue result(int players) const {
        SampledValue value;
        value.deals = seats_[0].count();
        for (int p = 0; p < players; ++p) {
            value.mean[p] = seats_[p].mean();
            value.error[p] = errorOf(seats_[p]);
        }
        return value;
    }

private:
    RunningMoments seats_[MAX_PLAYERS];
};

// Batches for valuing and responding: large enough for the cache, whatever training takes.
constexpr uint64_t samplingBatch = 256;

// Walks deals of a stream, from the first on, in batches; each is prepared, then given to walk,
// with the number of deals before it.
template <class Walk>
void walkStream(const Game& game, const HoldemBuckets& buckets, DealStream stream, uint64_t first,
                uint64_t count, const ValueSampling& sampling, uint64_t doneBefore,
                const Walk& walk) {
    std::vector<BatchDeal> batch(samplingBatch);
    for (uint64_t t = 0; t < count; t += batch.size()) {
        batch.resize(std::min(samplingBatch, count - t));
        fillBatch(game, buckets, sampling.seed, stream, first + t, threadsOf(sampling.threads),
                  batch);
        walk(std::span(batch), t);
        if (sampling.goOn && !sampling.goOn(doneBefore + t + batch.size()))
            return;
    }
}

// Plays one hand to its end; false, naming the key, where the strategy has no node or another
// game's.
bool playOut(const Game& game, const NodeStore& strategy, BatchDeal& deal, HandRandom random,
             std::string& missing) {
    State state;
    initState(&game, 0, &state);
    std::copy_n(&deal.cards.holeCards[0][0], sizeof state.holeCards, &state.holeCards[0][0]);
    std::copy_n(deal.cards.boardCards, sizeof state.boardCards, state.boardCards);
    std::string sequence;
    while (!state.finished) {
        const int p = currentPlayer(&game, &state);
        const int acting = numActingPlayers(&game, &state);
        const std::string key = std::to_string(p) + ":" + std::to_string(state.round) + ":" +
                                std::to_string(deal.buckets.of[state.round][acting][p]) + ":" +
                                sequence;
        CFRNode node;
        if (!strategy.find(state.round + p * game.numRounds, key, node)) {
            missing = key;
            return false;
        }
        double average[numAbstractedActions];
        node.getAverageStrategy(average);
        int chosen = actionCall;
        double below = random.next();
        for (int a = 0; a < numAbstractedActions; ++a) {
            if (!node.isActionValid(a))
                continue;
            chosen = a; // the last one where rounding leaves the shares below the draw
            below -= average[a];
            if (below < 0.0)
                break;
        }
        Action action{static_cast<ActionType>(chosen), 0};
        if (!isValidAction(&game, &state, 0, &action)) {
            missing = key;
            return false;
        }
        doAction(&game, &action, &state);
        sequence += actionChars[chosen];
    }
    for (int p = 0; p < game.numPlayers; ++p)
        deal.value[p] = valueOfState(&game, &state, static_cast<uint8_t>(p));
    return true;
}

} // namespace

SampledValue sampleValues(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                          const ValueSampling& sampling) {
    HoldemBatch walk(game, sets, sampling.threads);
    ValueSum sum;
    walkStream(game, buckets, DealStream::values, 0, sampling.deals, sampling, 0,
               [&](std::span<BatchDeal> batch, uint64_t) {
                   walk.iterate(HoldemRule::average, batch);
                   for (const BatchDeal& deal : batch)
                       sum.add(deal.value, game.numPlayers);
               });
    return sum.result(game.numPlayers);
}

ResponseValue sampleResponse(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                             int seat, const ValueSampling& sampling) {
    HoldemSets responder(game);
    HoldemBatch walk(game, sets, sampling.threads);
    // Each seat has deals of its own, so that the gains of two seats are independent and the
    // variance of their sum is the sum of variances.
    const auto turn = static_cast<uint64_t>(seat);
    walkStream(game, buckets, DealStream::response, turn * sampling.responseDeals,
               sampling.responseDeals, sampling, 0, [&](std::span<BatchDeal> batch, uint64_t t) {
                   for (size_t d = 0; d < batch.size(); ++d)
                       batch[d].weight = static_cast<double>(t + d + 1);
                   walk.respond(responder, seat, batch);
               });
    ValueSum sum;
    RunningMoments gain;
    walkStream(game, buckets, DealStream::values, turn * sampling.deals, sampling.deals, sampling,
               sampling.responseDeals, [&](std::span<BatchDeal> batch, uint64_t) {
                   walk.iterate(HoldemRule::average, batch);
                   std::vector<double> kept;
                   for (const BatchDeal& deal : batch)
                       kept.push_back(deal.value[seat]);
                   walk.valueOfResponse(responder, seat, batch);
                   for (size_t d = 0; d < batch.size(); ++d) {
                       sum.add(batch[d].value, game.numPlayers);
                       gain.add(batch[d].value[seat] - kept[d]);
                   }
               });
    ResponseValue result;
    result.value = sum.result(game.numPlayers);
    result.gain = gain.mean();
    result.error = errorOf(gain);
    return result;
}

Result<SampledValue> samplePlay(const Game& game, const HoldemBuckets& buckets,
                                const NodeStore& strategy, uint64_t hands,
                                const ValueSampling& sampling) {
    constexpr uint64_t block = 4096;
    const int threads = threadsOf(sampling.threads);
    ValueSum sum;
    std::vector<BatchDeal> deals;
    std::vector<std::string> missing;
    for (uint64_t first = 0; first < hands; first += deals.size()) {
        deals.resize(std::min(block, hands - first));
        missing.assign(deals.size(), "");
        fillBatch(game, buckets, sampling.seed, DealStream::values, first, threads, deals);
        ParallelErrors errors;
#pragma omp parallel for schedule(dynamic, 64) num_threads(threads) default(none)                  \
    shared(game, strategy, deals, missing, sampling, first, errors)
        for (size_t d = 0; d < deals.size(); ++d)
            errors.run([&] {
                playOut(game, strategy, deals[d], HandRandom(sampling.seed, first + d), missing[d]);
            });
        errors.rethrow();
        for (const std::string& key : missing)
            if (!key.empty())
                return Error{"no strategy of this game: see its node " + key};
        for (const BatchDeal& deal : deals)
            sum.add(deal.value, game.numPlayers);
        if (sampling.goOn && !sampling.goOn(first + deals.size()))
            break;
    }
    return sum.result(game.numPlayers);
}

} // namespace tamarin
