#include "index/suit_configurations.h"

#include "index/hand_index_tables.h"

#include <algorithm>

namespace tamarin {

namespace {

// The counts chosen so far while the rounds and suits are walked depth first.
struct Walk {
    std::span<const uint8_t> cardsPerRound;
    SuitWords words{};
    std::array<unsigned, indexSuits> used{}; // cards of the suit in all rounds so far

    // Calls next() with every count from 0 to most placed in the suit, the last suit taking exactly
    // what is left.
    template <class Next>
    void place(unsigned round, unsigned suit, unsigned left, unsigned bound, const Next& next) {
        const unsigned most = std::min({left, indexRanks - used[suit], bound});
        const unsigned least = suit == indexSuits - 1 ? left : 0;
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
        if (suit == indexSuits) {
            visit(round, words, equal);
            if (round + 1 < cardsPerRound.size())
                this->suit(round + 1, 0, cardsPerRound[round + 1], 0, equal, 0);
            return;
        }
        const bool tied = suit > 0 && (equalBefore >> (suit - 1) & 1U);
        place(round, suit, left, tied ? previous : indexRanks, [&](unsigned count) {
            const unsigned flag = tied && count == previous ? 1U << (suit - 1) : 0;
            this->suit(round, suit + 1, left - count, count, equalBefore, equal | flag);
        });
    }
};

struct PermutationWalk : Walk {
    std::span<const Splits> splits;
    const std::function<void(unsigned, uint32_t, const SuitWords&)>& visit;

    void suit(unsigned round, unsigned suit, unsigned left, uint64_t lanes, uint32_t before) {
        if (suit == indexSuits) {
            const uint32_t permutation = before + splits[round].number(lanes);
            visit(round, permutation, words);
            if (round + 1 < cardsPerRound.size())
                this->suit(round + 1, 0, cardsPerRound[round + 1], 0, permutation);
            return;
        }
        place(round, suit, left, indexRanks, [&](unsigned count) {
            this->suit(round, suit + 1, left - count, lanes | uint64_t{count} << 16 * suit, before);
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

Splits::Splits(unsigned cards) {
    const unsigned most = std::min(cards, indexRanks);
    const uint64_t base = most + 1;
    // Lane 3 of the product is count 0 + base * count 1 + base^2 * count 2; lower lanes stay below
    // 2^16, so nothing is carried into it.
    factor_ = uint64_t{1} << 48U | base << 32U | base * base << 16U;
    numbers_.resize(base * base * base);
    for (unsigned third = 0; third <= most; ++third)
        for (unsigned second = 0; second <= most; ++second)
            for (unsigned first = 0; first <= most; ++first) {
                const unsigned three = first + second + third;
                if (three <= cards && cards - three <= most)
                    numbers_[first + base * (second + base * third)] = count_++;
            }
}

void Splits::scale(uint32_t multiplier) {
    for (uint32_t& number : numbers_)
        number *= multiplier;
}

void forEachPermutation(std::span<const uint8_t> cardsPerRound, std::span<const Splits> splits,
                        const std::function<void(unsigned round, uint32_t permutation,
                                                 const SuitWords& words)>& visit) {
    PermutationWalk walk{{cardsPerRound}, splits, visit};
    walk.suit(0, 0, cardsPerRound[0], 0, 0);
}

} // namespace tamarin
