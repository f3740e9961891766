#include "eval/seven_card_generator.h"

#include "eval/hand_value.h"
#include "eval/rank_masks.h"
#include "support/parallel_errors.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>
#include <omp.h>

namespace tamarin {
namespace {

constexpr uint64_t rankInEverySuit = 0x0001000100010001;

// The cards whose suit is kept, as a card set, and the others as one four-bit count a rank.
struct HandState {
    CardSet suited = 0;
    uint64_t loose = 0;
    friend bool operator==(const HandState&, const HandState&) = default;
};

uint32_t countOfRank(const HandState& state, uint32_t rank) {
    return static_cast<uint32_t>(state.loose >> (4 * rank) & 0xf) +
           static_cast<uint32_t>(std::popcount(state.suited & rankInEverySuit << rank));
}

// A count of one for each rank of the mask.
uint64_t onePerRank(uint32_t mask) {
    uint64_t counts = 0;
    for (; mask != 0; mask &= mask - 1)
        counts += uint64_t{1} << (4 * std::countr_zero(mask));
    return counts;
}

// Forgets every suit that can no longer reach five cards once `cards` cards have been seen.
HandState forgetHopelessSuits(HandState state, int cards) {
    for (uint32_t suit = 0; suit < 4; ++suit) {
        const uint32_t mask = suitMask(state.suited, suit);
        if (std::popcount(mask) < cards - 2) {
            state.suited &= ~(CardSet{0x1fff} << (16 * suit));
            state.loose += onePerRank(mask);
        }
    }
    return state;
}

RankMasks ranksOf(const HandState& state) {
    RankMasks masks;
    for (uint32_t rank = 0; rank < 13; ++rank)
        for (uint32_t n = countOfRank(state, rank); n > 0; --n)
            masks = withRank(masks, rank);
    return masks;
}

// The flush that the kept suits hold, on the showdown scale, or 0.
int flushOf(const ShowdownTables& tables, CardSet suited) {
    int best = 0;
    for (uint32_t suit = 0; suit < 4; ++suit)
        best = std::max<int>(best, tables.oneSuitVal[suitMask(suited, suit)]);
    return best;
}

// The states of one size in order of discovery, found by their contents. Open addressing with
// linear probing; the load stays below a half for the largest size (350,000 states of six cards).
class StateSet {
public:
    explicit StateSet(size_t slots) : slots_(slots, emptySlot) {
        assert(std::has_single_bit(slots));
    }

    // The number of the state within the set, added if it is new.
    uint32_t number(const HandState& state) {
        const uint64_t hash =
            (state.suited * 0x9e3779b97f4a7c15 ^ std::rotl(state.loose * 0xc2b2ae3d27d4eb4f, 32)) *
            0x9e3779b97f4a7c15;
        const size_t last = slots_.size() - 1;
        for (size_t slot = hash >> 32 & last;; slot = (slot + 1) & last) {
            uint32_t& number = slots_[slot];
            if (number == emptySlot) {
                number = static_cast<uint32_t>(states_.size());
                states_.push_back(state);
                assert(2 * states_.size() < slots_.size());
                return number;
            }
            if (states_[number] == state)
                return number;
        }
    }

    const std::vector<HandState>& states() const { return states_; }

private:
    static constexpr uint32_t emptySlot = std::numeric_limits<uint32_t>::max();
    std::vector<uint32_t> slots_;
    std::vector<HandState> states_;
};

// Fills the 52 steps of a state of `cards` cards into states of one card more. nextFirst is the
// first entry of that size's first row.
void fillSteps(const HandState& state, int cards, StateSet& next, size_t nextFirst, int32_t* row) {
    const auto entryOf = [&](const HandState& after) {
        return static_cast<int32_t>(nextFirst + sevenCardRowEntries * next.number(after));
    };
    for (uint32_t rank = 0; rank < 13; ++rank) {
        if (countOfRank(state, rank) == 4)
            continue;
        int32_t loose = 0; // where a card of this rank leads whose suit no longer matters
        for (uint32_t suit = 0; suit < 4; ++suit) {
            const CardSet bit = CardSet{1} << (16 * suit + rank);
            if ((state.suited & bit) != 0)
                continue;
            int32_t& step = row[1 + 4 * rank + suit];
            const bool matters = std::popcount(suitMask(state.suited | bit, suit)) >= cards - 1;
            if (!matters && loose != 0) {
                step = loose;
                continue;
            }
            step = entryOf(forgetHopelessSuits({state.suited | bit, state.loose}, cards + 1));
            if (!matters)
                loose = step;
        }
    }
}

// Fills the 52 seventh cards of a six-card state with the hands' values. At most one suit is kept.
void fillValues(const ShowdownTables& tables, const HandState& state, int32_t* row) {
    const RankMasks six = ranksOf(state);
    for (uint32_t rank = 0; rank < 13; ++rank) {
        if (countOfRank(state, rank) == 4)
            continue;
        const int plain = rankWithoutFlush(tables, withRank(six, rank));
        for (uint32_t suit = 0; suit < 4; ++suit) {
            const CardSet bit = CardSet{1} << (16 * suit + rank);
            if ((state.suited & bit) != 0)
                continue;
            const int flush = state.suited == 0 ? 0 : flushOf(tables, state.suited | bit);
            row[1 + 4 * rank + suit] =
                static_cast<int32_t>(handValueOfRank(std::max(plain, flush)));
        }
    }
}

int32_t closingValue(const ShowdownTables& tables, const HandState& state) {
    return static_cast<int32_t>(handValueOfRank(
        std::max(rankWithoutFlush(tables, ranksOf(state)), flushOf(tables, state.suited))));
}

} // namespace

void generateSevenCardTable(std::span<int32_t> table, int threads,
                            const std::function<void(uint64_t)>& done) {
    assert(table.size() == sevenCardEntries);
    const ShowdownTables& tables = showdownTables();
    const auto report = [&](size_t rows) {
        if (done)
            done(rows);
    };
    std::fill(table.begin(), table.end(), 0);

    std::vector<HandState> states{HandState{}};
    size_t firstRow = 1;
    for (int cards = 0; cards < 6; ++cards) {
        StateSet next(size_t{1} << (cards < 3 ? 16 : 20));
        const size_t nextRow = firstRow + states.size();
        for (size_t i = 0; i < states.size(); ++i) {
            int32_t* row = &table[(firstRow + i) * sevenCardRowEntries];
            fillSteps(states[i], cards, next, nextRow * sevenCardRowEntries, row);
            if (cards == 5)
                row[0] = closingValue(tables, states[i]);
            if (i % 10000 == 0)
                report(firstRow + i);
        }
        states = next.states();
        firstRow = nextRow;
    }
    assert(firstRow + states.size() == sevenCardStates + 1);
    report(firstRow);

    handValueOfRank(0); // build the scales before the threads ask for them
    const auto count = static_cast<int64_t>(states.size());
    ParallelErrors errors;
#pragma omp parallel for schedule(static) num_threads(threads > 0 ? threads : omp_get_max_threads())
    for (int64_t i = 0; i < count; ++i)
        errors.run([&] {
            const auto at = static_cast<size_t>(i);
            int32_t* row = &table[(firstRow + at) * sevenCardRowEntries];
            fillValues(tables, states[at], row);
            row[0] = closingValue(tables, states[at]);
        });
    errors.rethrow();
    report(sevenCardStates);
}

std::vector<int32_t> makeDenseRankTable() {
    std::vector<int32_t> dense(handValueCount);
    for (uint32_t value = 0; value < handValueCount; ++value)
        dense[value] = static_cast<int32_t>(denseRankOfValue(value));
    return dense;
}

} // namespace tamarin
