#include "holdem/exact_utilities.h"

#include <algorithm>
#include <cmath>

namespace tamarin {

namespace {

double rounded(double factor) {
    constexpr double unit = 1.0 / static_cast<double>(uint64_t{1} << 40U);
    return std::floor(factor / unit + 0.5) * unit;
}

} // namespace

ExactUtilities::ExactUtilities(const AuxiliaryGame& auxiliary, const uint8_t* clusters)
    : clusters_(clusters) {
    assert(auxiliary.numPlayers() == 2);
    const auto endings = AuxiliaryGame::Values(auxiliary).endings();
    for (size_t seat = 0; seat < parts_.size(); ++seat) {
        std::vector<std::array<double, AuxiliaryGame::numBuckets>> factors;
        for (const auto& ending : endings) {
            auto factor = ending.reach[1 - seat];
            std::transform(factor.begin(), factor.end(), factor.begin(), rounded);
            const auto known = std::find(factors.begin(), factors.end(), factor);
            const auto number = static_cast<size_t>(known - factors.begin());
            if (known == factors.end())
                factors.push_back(factor);
            parts_[seat].resize((factors.size() + lanes - 1) / lanes);
            Part& part = parts_[seat][number / lanes];
            const size_t lane = number % lanes;
            const auto [worse, tied, better] = ending.payoff[seat];
            for (size_t bucket = 0; bucket < AuxiliaryGame::numBuckets; ++bucket) {
                part.opponent[bucket].lane[lane] = factor[bucket];
                const double own = ending.reach[seat][bucket];
                Terms& terms = part.own[bucket];
                // Those beaten are counted among the others as well.
                terms.beaten.lane[lane] += own * (better - tied);
                terms.notBetter.lane[lane] += own * (tied - worse);
                terms.any.lane[lane] += own * worse;
            }
        }
    }
}

void ExactUtilities::ofBoard(const HoldingOrder& order, const uint32_t* indices, size_t seat,
                             double* utilities) const {
    const size_t holdings = order.size();
    std::fill_n(utilities, holdings, 0.0);
    std::array<Row, numHoldings(deckCards)> weights;
    for (const Part& part : parts_[seat]) {
        for (size_t h = 0; h < holdings; ++h)
            weights[h] = part.opponent[clusters_[indices[h]]];
        sweepShowdowns(order, weights.data(),
                       [&](size_t number, const Row& beaten, const Row& notBetter, const Row& any) {
                           // Deliberately the cluster of the index's low byte; see UtilityFiller.
                           const Terms& own =
                               part.own[clusters_[static_cast<uint8_t>(indices[number])]];
                           const auto parts = own.beaten.lane * beaten.lane +
                                              own.notBetter.lane * notBetter.lane +
                                              own.any.lane * any.lane;
                           double sum = 0;
                           for (size_t i = 0; i < lanes; ++i)
                               sum += parts[i];
                           utilities[number] += sum;
                       });
    }
    const auto opponents = static_cast<double>(numHoldings(order.cardsLeft() - 2));
    for (size_t h = 0; h < holdings; ++h)
        utilities[h] /= opponents;
}

} // namespace tamarin
