// One pass over every hand of a round, board by board, which leaves each hand's bucket at its hand
// index.
#pragma once

#include "abstraction/boards.h"
#include "abstraction/holding_index.h"
#include "abstraction/work.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tamarin {

// What is not the number of a bucket.
inline constexpr uint16_t noBucket = 65535;

struct BucketChoice {
    uint32_t bucket;
    uint32_t distance; // of the hand from its centre
};

// Over all hands of the deck.
struct PassTotals {
    uint64_t distance = 0;
    uint64_t hands = 0;
};

// The holdings of one board, of which a renaming of the suits may turn some into each other: each
// of those hands is looked at once.
struct DistinctHands {
    std::vector<uint32_t> indices;   // of every holding
    std::vector<uint16_t> slot;      // of every holding: its hand among the different ones
    std::vector<uint16_t> different; // the first holding of each different hand
    std::vector<uint32_t> distance;  // of each different hand

    // buckets must hold noBucket for all these hands. A hand belongs to one class of boards, so no
    // other thread is at its entry, which tells until the end which slot the hand has.
    void collect(std::span<uint16_t> buckets) {
        different.clear();
        for (size_t holding = 0; holding < indices.size(); ++holding) {
            uint16_t& entry = buckets[indices[holding]];
            if (entry == noBucket) {
                entry = static_cast<uint16_t>(different.size());
                different.push_back(static_cast<uint16_t>(holding));
            }
            slot[holding] = entry;
        }
        distance.resize(different.size());
    }
};

// round: 1..3. buckets: an entry for each hand index of the round. makeRows(board, rows) fills one
// row for each holding of a board, numbered as in boards.h; choose(row) is that hand's
// BucketChoice, the same for hands that a renaming of the suits turns into each other. Nothing when
// the work was stopped. Reported in boards.
template <class Row, class MakeRows, class Choose>
std::optional<PassTotals> passOverRound(int round, std::span<uint16_t> buckets, const Work& work,
                                        const MakeRows& makeRows, const Choose& choose) {
    const BoardSet boards(roundBoardCards[static_cast<size_t>(round)]);
    const RoundIndexer indexer(round);
    const HoldingIndexer holdingIndexer(round, *indexer.get());
    assert(buckets.size() == roundSizes[static_cast<size_t>(round)]);
    std::fill(buckets.begin(), buckets.end(), noBucket);
    std::atomic<uint64_t> distance{0};
    std::atomic<uint64_t> hands{0};
    const bool done = forEach(work, boards.size(), [&](size_t b) {
        thread_local std::vector<Row> rows;
        thread_local DistinctHands board;
        rows.resize(boards.holdings());
        board.indices.resize(boards.holdings());
        board.slot.resize(boards.holdings());
        makeRows(boards.board(b), rows.data());
        holdingIndexer.indices(boards.board(b), board.indices.data());
        board.collect(buckets);
        for (size_t i = 0; i < board.different.size(); ++i) {
            const size_t holding = board.different[i];
            const BucketChoice choice = choose(rows[holding]);
            assert(choice.bucket < noBucket);
            buckets[board.indices[holding]] = static_cast<uint16_t>(choice.bucket);
            board.distance[i] = choice.distance;
        }
        uint64_t sum = 0;
        for (const uint16_t slot : board.slot)
            sum += board.distance[slot];
        distance += sum * boards.multiplicity(b);
        hands += uint64_t{boards.holdings()} * boards.multiplicity(b);
    });
    if (!done)
        return std::nullopt;
    return PassTotals{distance, hands};
}

} // namespace tamarin
