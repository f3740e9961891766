#include "clustering/deck_samples.h"

#include "support/split_mix.h"

#include <algorithm>

namespace tamarin {

namespace {

template <class Row, class MakeRow>
std::optional<std::vector<Row>> sample(uint64_t count, uint64_t seed, int cardCount,
                                       const Work& work, const MakeRow& makeRow) {
    constexpr size_t together = 256;
    std::vector<Row> rows(count);
    const bool done = forEach(work, (count + together - 1) / together, [&](size_t part) {
        const size_t end = std::min<size_t>((part + 1) * together, count);
        for (size_t i = part * together; i < end; ++i) {
            uint8_t cards[7];
            drawCards(seed, i, cardCount, cards);
            rows[i] = makeRow(cards);
        }
    });
    if (!done)
        return std::nullopt;
    return rows;
}

} // namespace

void drawCards(uint64_t seed, uint64_t number, int count, uint8_t* cards) {
    SplitMix random(mixBits((mixBits(seed + splitMixStep) ^ number) + splitMixStep));
    for (uint8_t* next = cards; next < cards + count;) {
        const auto card = static_cast<uint8_t>(random.below(deckCards));
        if (std::find(cards, next, card) == next)
            *next++ = card;
    }
}

std::optional<std::vector<HistogramRow>>
sampleTurn(const EquityHistograms& histograms, uint64_t count, uint64_t seed, const Work& work) {
    return sample<HistogramRow>(count, seed, 6, work,
                                [&](const uint8_t* cards) { return histograms.turnRow(cards); });
}

std::optional<std::vector<StrengthRow>> sampleRiver(const RiverStrength& strength, uint64_t count,
                                                    uint64_t seed, const Work& work) {
    return sample<StrengthRow>(count, seed, 7, work,
                               [&](const uint8_t* cards) { return strength.row(cards); });
}

} // namespace tamarin
