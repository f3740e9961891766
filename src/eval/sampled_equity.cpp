#include "eval/sampled_equity.h"

#include "support/parallel_errors.h"

#include <array>
#include <atomic>
#include <bit>
#include <cassert>
#include <omp.h>
#include <vector>

namespace tamarin {
namespace {

// Draws deals for fixed ranges and board.
class Sampler {
public:
    Sampler(std::span<const HandRange> ranges, CardSet board, int randomOpponents)
        : board_(board), randomOpponents_(randomOpponents) {
        assert(!ranges.empty() &&
               ranges.size() + static_cast<size_t>(randomOpponents) <= maxOpponents + 1);
        for (const HandRange& range : ranges) {
            std::vector<CardSet> hands;
            for (const CardSet hand : range.hands)
                if ((hand & board) == 0)
                    hands.push_back(hand);
            assert(!hands.empty());
            ranges_.push_back(std::move(hands));
        }
    }

    void sampleBlockInto(DealCounts& counts, SplitMix random) const {
        for (uint64_t deal = 0; deal < sampleBlock; ++deal)
            sampleDeal(counts, random);
    }

private:
    // One hand a range; all are drawn again when two share a card, which keeps every combination
    // equally likely.
    CardSet drawHands(std::array<CardSet, maxOpponents + 1>& hands, SplitMix& random) const {
        while (true) {
            CardSet used = board_;
            size_t i = 0;
            for (; i < ranges_.size(); ++i) {
                const auto size = static_cast<uint32_t>(ranges_[i].size());
                hands[i] = ranges_[i][size == 1 ? 0 : random.below(size)];
                if ((hands[i] & used) != 0)
                    break;
                used |= hands[i];
            }
            if (i == ranges_.size())
                return used;
        }
    }

    static CardSet drawCard(CardSet& used, SplitMix& random) {
        while (true) {
            const CardSet card = cardBit(static_cast<uint8_t>(random.below(52)));
            if ((used & card) == 0) {
                used |= card;
                return card;
            }
        }
    }

    void sampleDeal(DealCounts& counts, SplitMix& random) const {
        std::array<CardSet, maxOpponents + 1> hands;
        CardSet used = drawHands(hands, random);
        CardSet board = board_;
        for (int cards = std::popcount(board); cards < 5; ++cards)
            board |= drawCard(used, random);
        ++counts.deals;
        const int own = rankCardSet(board | hands[0]);
        size_t tied = 0;
        for (size_t i = 1; i < ranges_.size(); ++i) {
            const int other = rankCardSet(board | hands[i]);
            if (other > own)
                return;
            tied += other == own;
        }
        for (int i = 0; i < randomOpponents_; ++i) {
            const CardSet first = drawCard(used, random);
            const int other = rankCardSet(board | first | drawCard(used, random));
            if (other > own)
                return;
            tied += other == own;
        }
        ++counts.best[tied];
    }

    std::vector<std::vector<CardSet>> ranges_;
    CardSet board_;
    int randomOpponents_;
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
