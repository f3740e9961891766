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
        parts_[seat].resize((endings.size() + lanes - 1) / lanes);
        for (size_t e = 0; e < endings.size(); ++e) {
            Part& part = parts_[seat][e / lanes];
            const size_t lane = e % lanes;
            const auto [worse, tied, better] = endings[e].payoff[seat];
            for (size_t bucket = 0; bucket < AuxiliaryGame::numBuckets; ++bucket) {
                part.opponent[bucket].lane[lane] = rounded(endings[e].reach[1 - seat][bucket]);
                const double own = endings[e].reach[seat][bucket];
                Terms& terms = part.own[bucket];
                // Those beaten are counted among the others as well.
                terms.beaten.lane[lane] = own * (better - tied);
                terms.notBetter.lane[lane] = own * (tied - worse);
                terms.any.lane[lane] = own * worse;
            }
        }
    }
}

void ExactUtilities::ofBoard(const uint16_t* values, const uint32_t* indices, size_t cardsLeft,
                             size_t seat, double* utilities) const {
    const HoldingOrder order(values, cardsLeft);
    const size_t holdings = order.size();
    std::array<uint8_t, numHoldings(deckCards)> cluster;
    for (size_t h = 0; h < holdings; ++h)
        cluster[h] = clusters_[indices[h]];
    std::fill_n(utilities, holdings, 0.0);
    std::array<Row, numHoldings(deckCards)> weights;
    for (const Part& part : parts_[seat]) {
        for (size_t h = 0; h < holdings; ++h)
            weights[h] = part.opponent[cluster[h]];
        sweepShowdowns(order, weights.data(),
                       [&](size_t number, const Row& beaten, const Row& notBetter, const Row& any) {
                           // Deliberately the cluster of the index's low byte; see UtilityFiller.
                           const Terms& own =
                               part.own[clusters_[static_cast<uint8_t>(indices[number])]];
                           double sum = 0;
                           for (size_t i = 0; i < lanes; ++i)
                               sum += own.beaten.lane[i] * beaten.lane[i] +
                                      own.notBetter.lane[i] * notBetter.lane[i] +
                                      own.any.lane[i] * any.lane[i];
                           utilities[number] += sum;
                       });
    }
    const auto opponents = static_cast<double>(numHoldings(cardsLeft - 2));
    for (size_t h = 0; h < holdings; ++h)
        utilities[h] /= opponents;
}

} // namespace tamarin
