// What a showdown is worth: counts of outcomes and the shares that follow from them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tamarin {

inline constexpr int maxOpponents = 9;

// Outcomes of deals, counted exactly. Sums of counts over different sets of deals are counts again.
struct DealCounts {
    // best[k]: deals in which nobody beats the hand and k opponents tie with it.
    std::array<uint64_t, maxOpponents + 1> best{};
    uint64_t deals = 0;

    DealCounts& operator+=(const DealCounts& other) {
        for (size_t k = 0; k < best.size(); ++k)
            best[k] += other.best[k];
        deals += other.deals;
        return *this;
    }
    DealCounts& operator*=(uint64_t times) {
        for (uint64_t& count : best)
            count *= times;
        deals *= times;
        return *this;
    }
    friend bool operator==(const DealCounts&, const DealCounts&) = default;
};

// Shares of the deals, in [0, 1]; win + tie + loss = 1.
struct Equity {
    double win = 0;  // better than every opponent
    double tie = 0;  // shared with one or more
    double loss = 0; // beaten by someone
    double pot = 0;  // mean share of the pot: a deal shared with k opponents counts 1 / (k + 1)
};

// Zeros when there are no deals.
Equity equityOf(const DealCounts& counts);

// Standard deviation of one deal's share of the pot divided by the square root of the deals: the
// standard error of pot when the deals are a random sample.
double standardErrorOfPot(const DealCounts& counts);

} // namespace tamarin
