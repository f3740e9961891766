#include "eval/equity.h"

#include <algorithm>
#include <cmath>

namespace tamarin {

Equity equityOf(const DealCounts& counts) {
    Equity equity;
    if (counts.deals == 0)
        return equity;
    const auto deals = static_cast<double>(counts.deals);
    uint64_t best = 0;
    for (size_t k = 0; k < counts.best.size(); ++k) {
        best += counts.best[k];
        equity.pot += static_cast<double>(counts.best[k]) / static_cast<double>(k + 1);
    }
    equity.win = static_cast<double>(counts.best[0]) / deals;
    equity.tie = static_cast<double>(best - counts.best[0]) / deals;
    equity.loss = static_cast<double>(counts.deals - best) / deals;
    equity.pot /= deals;
    return equity;
}

double standardErrorOfPot(const DealCounts& counts) {
    if (counts.deals < 2)
        return 0;
    const auto deals = static_cast<double>(counts.deals);
    double squares = 0;
    for (size_t k = 0; k < counts.best.size(); ++k) {
        const auto share = 1.0 / static_cast<double>(k + 1);
        squares += static_cast<double>(counts.best[k]) * share * share;
    }
    const double mean = equityOf(counts).pot;
    return std::sqrt(std::max(0.0, squares / deals - mean * mean) / (deals - 1));
}

} // namespace tamarin
