#include "clustering/river_equities.h"

#include "abstraction/showdown_sweep.h"
#include "eval/hand_evaluator.h"

#include <cassert>

namespace tamarin {

void riverPots(const uint8_t* board, uint16_t* pots) {
    std::array<uint16_t, riverHoldings> values;
    HandEvaluator::shared().rankHoldings({board, 5}, values.data());
    const HoldingOrder order(values.data(), 47);
    using Row = WeightRow<int16_t, 1>;
    static constexpr auto ones = [] {
        std::array<Row, riverHoldings> rows{};
        rows.fill({Row::Lanes{1}});
        return rows;
    }();
    sweepShowdowns(order, ones.data(),
                   [&](size_t holding, const Row& beaten, const Row& notBetter, const Row&) {
                       pots[holding] = static_cast<uint16_t>(beaten.lane[0] + notBetter.lane[0]);
                   });
}

Result<RiverTable<uint8_t>> riverBins(const BoardSet& rivers, const Work& work) {
    static const auto bins = [] {
        std::array<uint8_t, riverPotMost + 1> made{};
        for (uint32_t pot = 0; pot <= riverPotMost; ++pot)
            made[pot] = static_cast<uint8_t>(equityBin(pot));
        return made;
    }();
    return RiverTable<uint8_t>::compute(rivers, work, [](uint16_t pot) { return bins[pot]; });
}

Result<RiverTable<uint16_t>> riverPotTable(const BoardSet& rivers, const Work& work) {
    return RiverTable<uint16_t>::compute(rivers, work, [](uint16_t pot) { return pot; });
}

GrownBoard growToRiver(const BoardSet& rivers, const uint8_t* board, int cards, const uint8_t* left,
                       size_t cardsLeft, const size_t* dealt) {
    assert(rivers.cards() == 5);
    const auto missing = static_cast<size_t>(5 - cards);
    uint8_t grownCards[5];
    std::copy_n(board, cards, grownCards);
    for (size_t i = 0; i < missing; ++i)
        grownCards[static_cast<size_t>(cards) + i] = left[dealt[i]];
    const BoardSet::Place place = rivers.find(grownCards);
    GrownBoard grown{place.number};
    std::array<uint8_t, deckCards> placeOf;
    uint8_t leftThere[deckCards];
    const size_t count = cardsWithout(rivers.board(place.number), 5, leftThere);
    for (size_t i = 0; i < count; ++i)
        placeOf[leftThere[i]] = static_cast<uint8_t>(i);
    for (size_t i = 0; i < cardsLeft; ++i) {
        if (std::find(dealt, dealt + missing, i) != dealt + missing)
            continue;
        grown.position[grown.count] = static_cast<uint8_t>(i);
        grown.place[grown.count++] = placeOf[(left[i] & ~3U) | place.suit[left[i] & 3U]];
    }
    return grown;
}

} // namespace tamarin
