#include "eval/preflop_equity.h"

#include "eval/hand_evaluator.h"
#include "eval/opponent_tally.h"
#include "eval/rank_masks.h"
#include "support/choose.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <vector>

namespace tamarin {
namespace {

constexpr uint32_t ranks = 13;
constexpr uint32_t allRanks = (1U << ranks) - 1;
constexpr int boardSize = 5;

uint32_t powersOf(uint32_t rankMask) {
    uint32_t sum = 0;
    for (; rankMask != 0; rankMask &= rankMask - 1)
        sum += rankPowers[static_cast<size_t>(std::countr_zero(rankMask))];
    return sum;
}

using RankCounts = std::array<uint8_t, ranks>;

// A number for each multiset of up to five ranks: its counts, weighted so that the sum identifies
// it. Ranks added one by one give consecutive digits of base 14 in rank order, 0 for none.
uint32_t multisetKey(const RankCounts& counts) {
    uint32_t key = 0;
    for (uint32_t rank = 0; rank < ranks; ++rank)
        for (uint8_t n = 0; n < counts[rank]; ++n)
            key = key * 14 + rank + 1;
    return key;
}
constexpr size_t multisetKeys = 14 * 14 * 14 * 14 * 14;

// Calls visit(counts, sum, ways) for every multiset of `left` ranks with at most available[r]
// cards of rank r, added to what counts and sum hold; ways is the number of card sets it stands
// for.
template <class Visit>
void forEachMultiset(const RankCounts& available, RankCounts& counts, uint32_t sum, uint32_t from,
                     int left, uint64_t ways, const Visit& visit) {
    if (left == 0) {
        visit(counts, sum, ways);
        return;
    }
    for (uint32_t rank = from; rank < ranks; ++rank) {
        uint32_t next = sum;
        const auto most = std::min<int>(left, available[rank]);
        for (int n = 1; n <= most; ++n) {
            next += rankPowers[rank];
            counts[rank] = static_cast<uint8_t>(counts[rank] + 1);
            forEachMultiset(available, counts, next, rank + 1, left - n,
                            ways * choose(available[rank], static_cast<uint64_t>(n)), visit);
        }
        counts[rank] = static_cast<uint8_t>(counts[rank] - std::max(most, 0));
    }
}

// A class of boards, and the cards it leaves unknown.
struct BoardClass {
    uint32_t sum;          // of the powers of the board's ranks
    uint32_t flushRanks;   // its ranks in the flush suit; 0 when no flush is possible
    uint32_t flushUnknown; // ranks of that suit that are unknown
    RankCounts
        restUnknown; // unknown cards of each rank in the other suits (in all, without a flush)
    uint64_t boards; // how many boards it stands for
};

// Counts the classes of boards for one set of known hands.
class PreflopCounter {
public:
    PreflopCounter(std::span<const CardSet> hands, int randomOpponents)
        : evaluator_(HandEvaluator::shared()), hands_(hands), opponents_(randomOpponents) {
        for (size_t i = 0; i < hands_.size(); ++i) {
            assert(std::popcount(hands_[i]) == 2 && (known_ & hands_[i]) == 0);
            known_ |= hands_[i];
            sums_[i] = static_cast<uint32_t>(keyOfCards(hands_[i]).sum);
        }
        for (uint32_t rank = 0; rank < ranks; ++rank)
            unknown_[rank] = static_cast<uint8_t>(
                4 - std::popcount(known_ & CardSet{0x0001000100010001} << rank));
        dealsPerBoard_ = opponentDeals(
            static_cast<uint64_t>(52 - boardSize - std::popcount(known_)), opponents_);
    }

    DealCounts count() {
        // Flush suits first: what they cover is not left for the classes by rank alone.
        for (uint32_t suit = 0; suit < 4; ++suit) {
            uint64_t alike = 0;
            bool first = true;
            for (uint32_t other = 0; other < 4; ++other) {
                if (!looksAlike(suit, other))
                    continue;
                first &= other >= suit;
                ++alike;
            }
            if (first)
                countFlushBoards(suit, alike);
        }
        countPlainBoards();
        return counts_;
    }

private:
    // Whether every known hand holds the same ranks in both suits.
    bool looksAlike(uint32_t a, uint32_t b) const {
        return std::all_of(hands_.begin(), hands_.end(),
                           [&](CardSet hand) { return suitMask(hand, a) == suitMask(hand, b); });
    }

    void countFlushBoards(uint32_t suit, uint64_t alike) {
        const uint32_t available = allRanks & ~suitMask(known_, suit);
        RankCounts rest = unknown_;
        for (uint32_t rank = 0; rank < ranks; ++rank)
            rest[rank] = static_cast<uint8_t>(rest[rank] - (available >> rank & 1));
        for (size_t i = 0; i < hands_.size(); ++i)
            suitedRanks_[i] = suitMask(hands_[i], suit);

        for (uint32_t flush = available; flush != 0; flush = (flush - 1) & available) {
            const int size = std::popcount(flush);
            if (size < 3 || size > boardSize)
                continue;
            RankCounts counts{};
            forEachMultiset(
                rest, counts, powersOf(flush), 0, boardSize - size, 1,
                [&](const RankCounts& others, uint32_t sum, uint64_t ways) {
                    BoardClass board{sum, flush, available & ~flush, rest, ways * alike};
                    RankCounts all = others;
                    for (uint32_t rank = 0; rank < ranks; ++rank) {
                        board.restUnknown[rank] =
                            static_cast<uint8_t>(board.restUnknown[rank] - others[rank]);
                        all[rank] = static_cast<uint8_t>(all[rank] + (flush >> rank & 1));
                    }
                    flushBoards_[multisetKey(all)] += static_cast<uint32_t>(board.boards);
                    countClass(board);
                });
        }
    }

    void countPlainBoards() {
        RankCounts counts{};
        forEachMultiset(unknown_, counts, 0, 0, boardSize, 1,
                        [&](const RankCounts& board, uint32_t sum, uint64_t ways) {
                            BoardClass plain{sum, 0, 0, unknown_, ways};
                            plain.boards -= flushBoards_[multisetKey(board)];
                            for (uint32_t rank = 0; rank < ranks; ++rank)
                                plain.restUnknown[rank] =
                                    static_cast<uint8_t>(plain.restUnknown[rank] - board[rank]);
                            countClass(plain);
                        });
    }

    uint32_t valueOfKnown(const BoardClass& board, size_t hand) const {
        const uint32_t plain = evaluator_.valueOfSevenRanks(board.sum + sums_[hand]);
        if (board.flushRanks == 0)
            return plain;
        return std::max(plain, evaluator_.valueOfSuit(board.flushRanks | suitedRanks_[hand]));
    }

    void countClass(const BoardClass& board) {
        if (board.boards == 0)
            return;
        counts_.deals += board.boards * dealsPerBoard_;
        const uint32_t own = valueOfKnown(board, 0);
        size_t tied = 0;
        for (size_t i = 1; i < hands_.size(); ++i) {
            const uint32_t other = valueOfKnown(board, i);
            if (other > own)
                return;
            tied += other == own;
        }
        OpponentTally tally;
        if (opponents_ > 0)
            tally = opponents_ == 1 ? tallyOpponents<false>(board, own)
                                    : tallyOpponents<true>(board, own);
        countBoard(counts_, tally, opponents_, tied, board.boards);
    }

    // Beaten and tied hands that a kind of card takes part in: beaten in the low half of the word,
    // tied in the high half. A hand of that value adds 0, the low one or the high one.
    static uint64_t outcome(uint32_t value, uint32_t own) {
        return static_cast<uint64_t>(value < own) | static_cast<uint64_t>(value == own) << 32U;
    }

    // Kinds of cards: per rank, the one of the flush suit and the others.
    template <bool perCard>
    OpponentTally tallyOpponents(const BoardClass& board, uint32_t own) const {
        std::array<uint64_t, ranks> inFlush{};
        std::array<uint64_t, ranks> inRest{};
        uint64_t total = 0;
        const bool flushes = board.flushRanks != 0;
        const uint32_t onBoard = evaluator_.valueOfSuit(board.flushRanks);
        std::array<uint32_t, ranks> ones; // the flush of the board and one card more, if any
        for (uint32_t a = 0; a < ranks; ++a)
            ones[a] = evaluator_.valueOfSuit(board.flushRanks | (board.flushUnknown & 1U << a));

        for (uint32_t a = 0; a < ranks; ++a) {
            const uint64_t restA = board.restUnknown[a];
            const uint32_t flushA = board.flushUnknown >> a & 1;
            if (restA + flushA == 0)
                continue;
            const uint32_t withA = board.sum + rankPowers[a];
            const uint32_t oneA = ones[a];
            for (uint32_t b = a; b < ranks; ++b) {
                const uint64_t restB = board.restUnknown[b];
                const uint32_t flushB = board.flushUnknown >> b & 1;
                if (restB + flushB == 0 || (a == b && restA + flushA == 1))
                    continue; // there are no two such cards
                const uint32_t plain = evaluator_.valueOfSevenRanks(withA + rankPowers[b]);
                const uint64_t neither = outcome(std::max(plain, onBoard), own);
                if (a == b) {
                    // Two of one rank: both of the other suits, or one of them of the flush suit.
                    const uint64_t mixed = outcome(std::max(plain, oneA), own);
                    if (restA >= 2) {
                        total += neither * choose2(restA);
                        if constexpr (perCard)
                            inRest[a] += neither * (restA - 1);
                    }
                    if (flushA != 0) {
                        total += mixed * restA;
                        if constexpr (perCard) {
                            inRest[a] += mixed;
                            inFlush[a] += mixed * restA;
                        }
                    }
                    continue;
                }
                total += neither * (restA * restB);
                if constexpr (perCard) {
                    inRest[a] += neither * restB;
                    inRest[b] += neither * restA;
                }
                if (!flushes)
                    continue;
                const uint32_t oneB = ones[b];
                const uint64_t onlyA = flushA * outcome(std::max(plain, oneA), own);
                const uint64_t onlyB = flushB * outcome(std::max(plain, oneB), own);
                const uint32_t two = evaluator_.valueOfSuit(board.flushRanks | 1U << a | 1U << b);
                const uint64_t both = flushA * flushB * outcome(std::max(plain, two), own);
                total += onlyA * restB + onlyB * restA + both;
                if constexpr (perCard) {
                    inFlush[a] += onlyA * restB + both;
                    inRest[b] += onlyA;
                    inFlush[b] += onlyB * restA + both;
                    inRest[a] += onlyB;
                }
            }
        }

        OpponentTally tally;
        tally.beaten = total & 0xffffffff;
        tally.tied = total >> 32;
        if constexpr (perCard)
            for (uint32_t rank = 0; rank < ranks; ++rank) {
                tally.addCard(inFlush[rank] & 0xffffffff, inFlush[rank] >> 32,
                              board.flushUnknown >> rank & 1);
                tally.addCard(inRest[rank] & 0xffffffff, inRest[rank] >> 32,
                              board.restUnknown[rank]);
            }
        return tally;
    }

    const HandEvaluator& evaluator_;
    std::span<const CardSet> hands_;
    int opponents_;
    CardSet known_ = 0;
    RankCounts unknown_{}; // unknown cards of each rank
    uint64_t dealsPerBoard_ = 0;
    std::array<uint32_t, maxOpponents + 1> sums_{};        // of the powers of each hand's ranks
    std::array<uint32_t, maxOpponents + 1> suitedRanks_{}; // of each hand, in the flush suit walked
    std::vector<uint32_t> flushBoards_ = std::vector<uint32_t>(multisetKeys);
    DealCounts counts_;
};

} // namespace

DealCounts exactPreflopEquity(std::span<const CardSet> hands, int randomOpponents) {
    assert(!hands.empty() && randomOpponents >= 0 && randomOpponents <= 2);
    assert(hands.size() + static_cast<size_t>(randomOpponents) <= maxOpponents + 1);
    return PreflopCounter(hands, randomOpponents).count();
}

} // namespace tamarin
