#include "index/suit_configurations.h"

#include <algorithm>

namespace tamarin {

namespace {

constexpr unsigned suits = 4;
constexpr unsigned ranks = 13;

// The counts chosen so far while the rounds and suits are walked depth first.
struct Walk {
    std::span<const uint8_t> cardsPerRound;
    SuitWords words{};
    std::array<unsigned, suits> used{}; // cards of the suit in all rounds so far

    // Calls next() with every count from 0 to most placed in the suit, the last suit taking exactly
    // what is left.
    template <class Next>
    void place(unsigned round, unsigned suit, unsigned left, unsigned bound, const Next& next) {
        const unsigned most = std::min({left, ranks - used[suit], bound});
        const unsigned least = suit == suits - 1 ? left : 0;
        const unsigned shift = wordShift(static_cast<unsigned>(cardsPerRound.size()), round);
        const uint32_t before = words[suit];
        for (unsigned count = least; count <= most; ++count) {
            words[suit] = before | count << shift;
            used[suit] += count;
            next(count);
            used[suit] -= count;
        }
        words[suit] = before;
    }
};

struct ConfigurationWalk : Walk {
    const std::function<void(unsigned, const SuitWords&, unsigned)>& visit;

    // equalBefore: which suits equalled their predecessor in all earlier rounds; equal: the same
    // with this round, for the suits already placed; previous: the predecessor's count.
    void suit(unsigned round, unsigned suit, unsigned left, unsigned previous, unsigned equalBefore,
              unsigned equal) {
        if (suit == suits) {
            visit(round, words, equal);
            if (round + 1 < cardsPerRound.size())
                this->suit(round + 1, 0, cardsPerRound[round + 1], 0, equal, 0);
            return;
        }
        const bool tied = suit > 0 && (equalBefore >> (suit - 1) & 1U);
        place(round, suit, left, tied ? previous : ranks, [&](unsigned count) {
            const unsigned flag = tied && count == previous ? 1U << (suit - 1) : 0;
            this->suit(round, suit + 1, left - count, count, equalBefore, equal | flag);
        });
    }
};

struct PermutationWalk : Walk {
    const std::function<void(unsigned, uint64_t, const SuitWords&)>& visit;
    std::array<uint32_t, suits> counts{};

    void suit(unsigned round, unsigned suit, unsigned left, uint64_t before, uint64_t multiplier) {
        if (suit == suits) {
            const uint64_t permutation =
                before + compositionIndex(counts[0], counts[1], counts[2]) * multiplier;
            visit(round, permutation, words);
            if (round + 1 < cardsPerRound.size()) {
                const auto saved = counts;
                this->suit(round + 1, 0, cardsPerRound[round + 1], permutation,
                           multiplier * compositionCount(cardsPerRound[round]));
                counts = saved;
            }
            return;
        }
        place(round, suit, left, ranks, [&](unsigned count) {
            counts[suit] = count;
            this->suit(round, suit + 1, left - count, before, multiplier);
        });
    }
};

} // namespace

void forEachConfiguration(
    std::span<const uint8_t> cardsPerRound,
    const std::function<void(unsigned round, const SuitWords& words, unsigned equal)>& visit) {
    ConfigurationWalk walk{{cardsPerRound}, visit};
    walk.suit(0, 0, cardsPerRound[0], 0, 7, 0);
}

void forEachPermutation(std::span<const uint8_t> cardsPerRound,
                        const std::function<void(unsigned round, uint64_t permutation,
                                                 const SuitWords& words)>& visit) {
    PermutationWalk walk{{cardsPerRound}, visit};
    walk.suit(0, 0, cardsPerRound[0], 0, 1);
}

} // namespace tamarin
