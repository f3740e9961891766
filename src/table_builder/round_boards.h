// The boards of a round and what lies on them: the holdings' values, indices and how many hands of
// the deck each stands for. Before the flop there is one board, without cards.
#pragma once

#include "abstraction/boards.h"
#include "abstraction/holding_index.h"
#include "abstraction/round_indexers.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tamarin {

struct RankedBoard {
    size_t cardsLeft;
    // By holding, numbered as in boards.h.
    std::array<uint16_t, numHoldings(deckCards)> values;
    std::array<uint32_t, numHoldings(deckCards)> indices;
    // 12 / the combinations of the hole cards' starting hand (1, 2 for pairs, 3 for suited cards):
    // with these, and the boards in the class, every starting hand counts alike.
    std::array<uint8_t, numHoldings(deckCards)> weights;
    uint32_t multiplicity; // boards that a renaming of the suits turns into this one, itself too

    size_t holdings() const { return numHoldings(cardsLeft); }
};

class RoundBoards {
public:
    explicit RoundBoards(int round);

    size_t size() const { return boards_ ? boards_->size() : 1; }
    // Of a board below size(). Any number of threads may ask.
    void rank(size_t board, RankedBoard& ranked) const;

private:
    RoundIndexer indexer_;
    std::optional<BoardSet> boards_; // none before the flop
    std::optional<HoldingIndexer> holdings_;
};

} // namespace tamarin
