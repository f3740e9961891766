#include "response/flop_sample.h"

#include "support/split_mix.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numeric>
#include <set>
#include <tuple>

namespace tamarin {

namespace {

// By which like flops lie together: how many suits, how many ranks, and the ranks from above.
auto kindOf(const PublicBoard& flop) {
    std::set<int> suits;
    std::set<int> ranks;
    for (const uint8_t card : flop.cards) {
        suits.insert(card % MAX_SUITS);
        ranks.insert(card / MAX_SUITS);
    }
    std::vector<int> falling(ranks.rbegin(), ranks.rend());
    return std::tuple(suits.size(), ranks.size(), falling, flop.cards);
}

} // namespace

std::vector<size_t> FlopSample::distinct() const {
    std::set<size_t> places;
    for (const auto& pair : pairs)
        places.insert(pair.begin(), pair.end());
    return {places.begin(), places.end()};
}

// How far pairs lie apart says how much the draw matters. Layers are drawn from independently of
// each other, so the variances of their means add up.
Interval intervalOf(const std::vector<std::array<double, 2>>& pairs) {
    double sum = 0;
    double squares = 0;
    for (const auto& [one, other] : pairs) {
        sum += (one + other) / 2;
        squares += (one - other) * (one - other) / 4;
    }
    const auto layers = static_cast<double>(pairs.size());
    return {sum / layers, studentQuantile975(pairs.size()) * std::sqrt(squares) / layers};
}

FlopSample drawFlops(const std::vector<PublicBoard>& flops, size_t count, uint64_t seed) {
    assert(count >= 2 && count % 2 == 0);
    std::vector<size_t> order(flops.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::ranges::sort(order, {}, [&](size_t place) { return kindOf(flops[place]); });
    // The weight up to and with each flop of the order.
    std::vector<double> upTo;
    double sum = 0;
    for (const size_t place : order)
        upTo.push_back(sum += flops[place].weight);

    FlopSample sample;
    SplitMix random(mixBits(seed + splitMixStep));
    const auto layers = static_cast<double>(count / 2);
    for (size_t layer = 0; layer < count / 2; ++layer) {
        std::array<size_t, 2> pair{};
        for (size_t& place : pair) {
            const double at = (static_cast<double>(layer) + unitInterval(random())) / layers * sum;
            const auto found = std::ranges::upper_bound(upTo, at);
            place = order[std::min(static_cast<size_t>(found - upTo.begin()), order.size() - 1)];
        }
        sample.pairs.push_back(pair);
    }
    return sample;
}

Result<size_t> findFlop(const PublicDeck& deck, const std::vector<PublicBoard>& flops,
                        const std::vector<uint8_t>& cards) {
    std::vector<uint8_t> least;
    for (const SuitRenaming& suits : deck.empty().symmetry) {
        std::vector<uint8_t> image;
        for (const uint8_t card : cards)
            image.push_back(renamed(card, suits));
        std::ranges::sort(image);
        if (least.empty() || image < least)
            least = image;
    }
    for (size_t place = 0; place < flops.size(); ++place)
        if (flops[place].cards == least)
            return place;
    return Error{"not a flop of this game"};
}

} // namespace tamarin
