// Hands drawn from the deck at random, for fits that need not see every hand.
#pragma once

#include "abstraction/work.h"
#include "clustering/equity_histograms.h"
#include "clustering/river_strength.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tamarin {

// count different cards, each deal as likely as any other; the same for the same seed and number.
void drawCards(uint64_t seed, uint64_t number, int count, uint8_t* cards);

// The rows of so many turn and river hands. Nothing when the work was stopped.
std::optional<std::vector<HistogramRow>>
sampleTurn(const EquityHistograms& histograms, uint64_t count, uint64_t seed, const Work& work);
std::optional<std::vector<StrengthRow>> sampleRiver(const RiverStrength& strength, uint64_t count,
                                                    uint64_t seed, const Work& work);

// How many hands are drawn for so many centres where nothing else is asked for.
constexpr uint64_t defaultSample(uint32_t centres) {
    return std::min<uint64_t>(std::max<uint64_t>(uint64_t{centres} * 200, 500'000), 2'000'000);
}

} // namespace tamarin
