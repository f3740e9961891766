// The four rounds of hold'em, and the numbering of their hands.
//
// A hand of a round is two hole cards and then all board cards of that round as one group, so that
// the order in which the board came makes no difference: {2}, {2, 3}, {2, 4} and {2, 5} cards. All
// tables of this room are arrays over these indices.
#pragma once

#include "index/hand_index.h"

#include <array>
#include <cstddef>

namespace tamarin {

inline constexpr int holdemRounds = 4;
inline constexpr std::array<int, holdemRounds> roundBoardCards{0, 3, 4, 5};
inline constexpr std::array<const char*, holdemRounds> roundNames{"pre-flop", "flop", "turn",
                                                                  "river"};
// Hands that are distinct up to suits.
inline constexpr std::array<size_t, holdemRounds> roundSizes{169, 1286792, 13960050, 123156254};

// The indexer's last round: 0 for pre-flop, else 1.
constexpr unsigned lastIndexRound(int round) {
    return round == 0 ? 0 : 1;
}

// Builds the indexer of a round (0..3); false when memory runs out.
[[nodiscard]] bool initRoundIndexer(int round, hand_indexer_t* indexer);

// An indexer that releases itself.
class RoundIndexer {
public:
    explicit RoundIndexer(int round);
    ~RoundIndexer() { hand_indexer_free(&indexer_); }
    RoundIndexer(const RoundIndexer&) = delete;
    RoundIndexer& operator=(const RoundIndexer&) = delete;

    const hand_indexer_t* get() const { return &indexer_; }

private:
    hand_indexer_t indexer_{};
};

} // namespace tamarin
