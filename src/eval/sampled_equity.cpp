#include "eval/sampled_equity.h"

#include "eval/hand_evaluator.h"
#include "support/batched_draws.h"
#include "support/parallel_errors.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cassert>
#include <omp.h>
#include <utility>
#include <vector>

namespace tamarin {
namespace {

// Draws deals for fixed ranges and board.
//
// Cards are drawn independently of each other, several from one word (batched_draws.h), and those
// that are taken already are passed over: what is left is a uniform choice, without a deck to keep
// in order, and without a branch for each card.
class Sampler {
public:
    Sampler(std::span<const HandRange> ranges, CardSet board, int randomOpponents)
        : board_(keyOfCards(board)), used_(board), ranges_(ranges.size()),
          missing_(static_cast<size_t>(5 - std::popcount(board))),
          cards_(missing_ + 2 * static_cast<size_t>(randomOpponents)) {
        assert(!ranges.empty() &&
               ranges.size() + static_cast<size_t>(randomOpponents) <= maxOpponents + 1);
        for (size_t i = 0; i < ranges.size(); ++i) {
            for (const CardSet hand : ranges[i].hands)
                if ((hand & board) == 0)
                    ranges_[i].push_back(keyOfCards(hand));
            assert(!ranges_[i].empty());
            hands_[i] = ranges_[i][0];
            if (ranges_[i].size() == 1) {
                used_ |= hands_[i].cards;
            } else {
                drawnHands_.push_back(i);
                handDraws_.add(static_cast<uint32_t>(ranges_[i].size()));
            }
        }
    }

    void sampleBlockInto(DealCounts& counts, SplitMix random) const {
        // By how many tie with the hand; the last is for lost deals, so that no branch is needed.
        std::array<uint64_t, lost + 1> deals{};
        Hands hands = hands_;
        for (uint64_t deal = 0; deal < sampleBlock; ++deal) {
            const CardSet used = drawnHands_.empty() ? used_ : drawHands(hands, random);
            ++deals[dealTo(hands, used, random)];
        }
        for (size_t tied = 0; tied < counts.best.size(); ++tied)
            counts.best[tied] += deals[tied];
        counts.deals += sampleBlock;
    }

private:
    using Hands = std::array<HandKey, maxOpponents + 1>;
    static constexpr size_t lost = maxOpponents + 1;
    static constexpr size_t cardsOfDraw = 10; // as many as one word has room for

    // One hand a range; all are drawn again when two share a card, which keeps every combination
    // equally likely. Returns the cards used, the board's too.
    CardSet drawHands(Hands& hands, SplitMix& random) const {
        std::array<uint32_t, BatchedDraws::most> drawn;
        while (true) {
            handDraws_.draw(random, drawn.data());
            CardSet used = used_;
            bool apart = true;
            for (size_t i = 0; i < drawnHands_.size(); ++i) {
                const HandKey& hand = ranges_[drawnHands_[i]][drawn[i]];
                hands[drawnHands_[i]] = hand;
                apart &= (used & hand.cards) == 0;
                used |= hand.cards;
            }
            if (apart)
                return used;
        }
    }

    // At least cards_ different cards, none of them used.
    void drawCards(uint8_t* cards, CardSet used, SplitMix& random) const {
        std::array<uint32_t, cardsOfDraw> drawn;
        size_t count = 0;
        while (count < cards_) {
            drawAlike<52>(random, drawn);
            for (const uint32_t card : drawn) {
                const CardSet bit = cardBit(static_cast<uint8_t>(card));
                cards[count] = static_cast<uint8_t>(card);
                count += (used & bit) == 0;
                used |= bit;
            }
        }
    }

    // How many opponents tie with the first hand, or lost. All are ranked: to stop at the first
    // better one would take branches that nothing foretells.
    size_t dealTo(const Hands& hands, CardSet used, SplitMix& random) const {
        std::array<uint8_t, 52> cards; // the last draw may bring more than are needed
        drawCards(cards.data(), used, random);
        HandKey board = board_;
        for (size_t i = 0; i < missing_; ++i)
            board = board + cardKeys[cards[i]];
        const uint32_t own = evaluator_.value<7>(board + hands[0]);
        uint32_t best = 0;
        size_t tied = 0;
        const auto meet = [&](const HandKey& hand) {
            const uint32_t other = evaluator_.value<7>(board + hand);
            best = std::max(best, other);
            tied += other == own;
        };
        for (size_t i = 1; i < ranges_.size(); ++i)
            meet(hands[i]);
        for (size_t i = missing_; i < cards_; i += 2)
            meet(cardKeys[cards[i]] + cardKeys[cards[i + 1]]);
        return best > own ? lost : tied;
    }

    const HandEvaluator& evaluator_ = HandEvaluator::shared();
    HandKey board_;
    CardSet used_; // the board and the hands of the ranges that have one alone
    std::vector<std::vector<HandKey>> ranges_;
    size_t missing_;
    size_t cards_; // that a deal needs besides the ranges' hands
    Hands hands_;
    std::vector<size_t> drawnHands_; // the ranges that have more than one
    BatchedDraws handDraws_;
};

} // namespace

DealCounts sampledEquity(std::span<const HandRange> ranges, CardSet board, int randomOpponents,
                         uint64_t deals, uint64_t seed, int threads,
                         const std::function<void(uint64_t)>& progress,
                         const std::function<bool()>& stop) {
    const Sampler sampler(ranges, board, randomOpponents);
    const auto blocks = static_cast<int64_t>((deals + sampleBlock - 1) / sampleBlock);
    DealCounts total;
    std::atomic<uint64_t> done{0};
    std::atomic<bool> stopped{false};
    ParallelErrors errors;
#pragma omp parallel num_threads(threads > 0 ? threads : omp_get_max_threads())
    {
        DealCounts counts;
        const auto sample = [&](int64_t block) {
            sampler.sampleBlockInto(counts,
                                    SplitMix(SplitMix(seed)() + static_cast<uint64_t>(block) *
                                                                    uint64_t{0xd1342543de82ef95}));
            done += sampleBlock;
            if (omp_get_thread_num() == 0) {
                if (progress)
                    progress(done);
                if (stop && stop())
                    stopped = true;
            }
        };
#pragma omp for schedule(dynamic, 16)
        for (int64_t block = 0; block < blocks; ++block)
            if (!stopped)
                errors.run([&] { sample(block); });
#pragma omp critical
        total += counts;
    }
    errors.rethrow();
    return total;
}

} // namespace tamarin
