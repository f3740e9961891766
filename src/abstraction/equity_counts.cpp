#include "abstraction/equity_counts.h"

namespace tamarin {

size_t EquityCounts::memoryBytes() {
    return boardClasses[2] * riverHoldings * sizeof(RiverWins) +
           boardClasses[1] * turnHoldings * sizeof(Wins) +
           boardClasses[0] * flopHoldings * sizeof(Wins);
}

Result<EquityCounts> EquityCounts::compute(const Work& work) {
    EquityCounts counts;
    auto river = LargeBuffer<RiverWins>::take(boardClasses[2] * riverHoldings, "the river's wins");
    auto turn = LargeBuffer<Wins>::take(boardClasses[1] * turnHoldings, "the turn's wins");
    auto flop = LargeBuffer<Wins>::take(boardClasses[0] * flopHoldings, "the flop's wins");
    if (!river)
        return Error{river.error()};
    if (!turn)
        return Error{turn.error()};
    if (!flop)
        return Error{flop.error()};
    counts.river_ = std::move(*river);
    counts.turn_ = std::move(*turn);
    counts.flop_ = std::move(*flop);

    const BoardSet rivers(5);
    const BoardSet turns(4);
    const BoardSet flops(3);
    const bool swept = forEach(work, rivers.size(), [&](size_t b) {
        sweepRiver(rivers.board(b), &counts.river_[b * riverHoldings]);
    });
    // What remains is a third of the whole at most; the river's boards stand for it.
    Work silent = work;
    silent.progress = nullptr;
    const bool summed =
        swept &&
        forEach(silent, turns.size(),
                [&](size_t b) {
                    sumNextCards(
                        rivers, turns.board(b), [&](size_t next) { return counts.river(next); },
                        &counts.turn_[b * turnHoldings]);
                }) &&
        forEach(silent, flops.size(), [&](size_t b) {
            sumNextCards(
                turns, flops.board(b), [&](size_t next) { return counts.turn(next); },
                &counts.flop_[b * flopHoldings]);
        });
    if (!summed)
        return stopped();
    counts.sumPreflop(flops);
    return counts;
}

void EquityCounts::sumPreflop(const BoardSet& flops) {
    const RoundIndexer indexer(0);
    for (size_t b = 0; b < flops.size(); ++b) {
        uint8_t left[deckCards];
        const size_t cardsLeft = cardsWithout(flops.board(b), flops.cards(), left);
        const uint64_t weight = flops.multiplicity(b);
        for (size_t high = 1; high < cardsLeft; ++high)
            for (size_t low = 0; low < high; ++low) {
                const uint8_t cards[] = {left[low], left[high]};
                const Wins& wins = flop(b)[holdingNumber(low, high)];
                PreflopWins& sum = preflop_[hand_index_last(indexer.get(), cards)];
                sum.overOne += weight * wins.overOne;
                sum.overTwo += weight * wins.overTwo;
                sum.flops += weight;
            }
    }
}

} // namespace tamarin
