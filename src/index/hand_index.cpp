#include "index/hand_index.h"

#include "index/hand_index_tables.h"
#include "index/multiset.h"
#include "index/suit_configurations.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <span>
#include <vector>

namespace tamarin {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr unsigned maxRounds = 4;
constexpr unsigned maxCards = 52;
constexpr unsigned suits = indexSuits;
constexpr unsigned ranksPerSuit = indexRanks;

// Suit indices stay below 2^20, so a group's number fits above one of them in 32 bits.
constexpr unsigned groupShift = 24;
constexpr uint32_t suitIndexMask = (1U << groupShift) - 1;

// What indexing needs to know of a configuration: one cache line.
struct alignas(64) IndexPlan {
    uint64_t offset;
    std::array<uint64_t, suits> multiplier; // of the suit's group
    std::array<uint32_t, suits> group;      // number of the suit's group << groupShift
    std::array<uint8_t, suits> place;       // of the suit in its group, from 1
    uint8_t largestGroup;                   // suits in the largest group that holds cards
};
static_assert(sizeof(IndexPlan) == 64);

// What unindexing needs to know of a configuration: two cache lines. Groups by their first suit.
struct alignas(64) UnindexPlan {
    uint64_t offset;
    std::array<uint64_t, suits> groupSize;
    std::array<uint64_t, suits> groupReciprocal; // 2^64 / size, rounded down; 2^64 - 1 for size 1
    std::array<uint8_t, suits> groupLength;
    uint8_t largestGroup;
};
static_assert(sizeof(UnindexPlan) == 128);

// One round's digit of a suit index: how many rank sets there are to choose from, and where they
// are.
struct SetDigit {
    uint32_t reciprocal; // 2^31 / ways, rounded up
    uint16_t ways;
    uint16_t row; // in index_to_rank_set
};

// A suit index (below 2^20) divided by the ways of its digit. The reciprocal is too large by less
// than 1, which makes the quotient too large by less than 2^20 / 2^31; the next whole number is
// 1 / 1716 away or more.
inline uint32_t divide(uint32_t index, const SetDigit& digit) {
    return static_cast<uint32_t>(uint64_t{index} * digit.reciprocal >> 31U);
}

// What indexing needs to know of a permutation.
struct PermutationPlan {
    uint32_t configuration;
    std::array<uint8_t, suits> group; // of the suit as dealt
};

} // namespace

struct RoundPlan {
    Splits splits;
    std::vector<PermutationPlan> permutation;
    std::vector<std::array<uint32_t, suits>> multiplier; // for the next round, by permutation
    std::vector<IndexPlan> index;                        // by configuration
    std::vector<UnindexPlan> unindex;                    // by configuration
    std::vector<std::array<SetDigit, suits>> digits;     // by configuration and round up to this

    // Configuration of the first index of every stretch of 2^shift indices, and the last
    // configuration once more behind them.
    std::vector<uint32_t> stretch;
    unsigned shift = 0;

    uint32_t configurationOf(uint64_t at) const {
        uint32_t low = stretch[at >> shift];
        uint32_t high = stretch[(at >> shift) + 1];
        while (low < high) {
            const uint32_t middle = (low + high + 1) / 2;
            if (unindex[middle].offset <= at)
                low = middle;
            else
                high = middle - 1;
        }
        return low;
    }
};

namespace {

template <class Entry>
bool allocate(Entry*& table, uint64_t count) {
    table = new (std::nothrow) Entry[count]();
    return table != nullptr;
}

template <class Entry>
void release(Entry*& table) {
    delete[] table;
    table = nullptr;
}

unsigned countIn(uint32_t word, unsigned rounds, unsigned round) {
    return word >> wordShift(rounds, round) & 15U;
}

// How many contents a suit with these counts can have.
uint32_t suitSize(uint32_t word, unsigned rounds) {
    uint32_t size = 1;
    unsigned left = ranksPerSuit;
    for (unsigned round = 0; round < rounds; ++round) {
        const unsigned count = countIn(word, rounds, round);
        size *= handIndexTables.nCr_ranks[left][count];
        left -= count;
    }
    return size;
}

// One past the last suit of the group that starts at suit first.
unsigned groupEnd(unsigned equal, unsigned first) {
    unsigned end = first + 1;
    while (end < suits && handIndexTables.equal[equal][end])
        ++end;
    return end;
}

struct Configuration {
    SuitWords words;
    unsigned equal;
};

void checkGroupSize(uint32_t size) {
    // clang-format off
    assert(size+4-1 < 0x100000);
    // clang-format on
}

// Every configuration of every round, in the order in which offsets are given out.
std::array<std::vector<Configuration>, maxRounds>
sortedConfigurations(std::span<const uint8_t> cardsPerRound) {
    std::array<std::vector<Configuration>, maxRounds> found;
    const auto rounds = static_cast<unsigned>(cardsPerRound.size());
    forEachConfiguration(cardsPerRound,
                         [&](unsigned round, const SuitWords& words, unsigned equal) {
                             // Checked here already, so that hopeless structures end soon.
                             for (uint32_t word : words)
                                 checkGroupSize(suitSize(word, rounds));
                             found[round].push_back({words, equal});
                         });
    for (auto& round : found)
        std::sort(round.begin(), round.end(),
                  [](const Configuration& a, const Configuration& b) { return a.words < b.words; });
    return found;
}

// The digits of a configuration's suits: what each round's set of ranks counts, given how many
// ranks the rounds before it have left.
void planDigits(RoundPlan& plan, unsigned round, unsigned rounds, size_t c,
                const SuitWords& words) {
    for (unsigned suit = 0; suit < suits; ++suit) {
        unsigned left = ranksPerSuit;
        for (unsigned r = 0; r <= round; ++r) {
            const unsigned cards = countIn(words[suit], rounds, r);
            assert(cards <= left);
            const unsigned ways = handIndexTables.nCr_ranks[left][cards];
            plan.digits[c * (round + 1) + r][suit] = {((1U << 31U) + ways - 1) / ways,
                                                      static_cast<uint16_t>(ways),
                                                      handIndexTables.rank_set_row[cards]};
            left -= cards;
        }
    }
}

// The groups of equal suits of a configuration, each a digit of its hands' indices: a multiset of
// its suits' contents, which may come in any order. size receives the number of hands; false when
// it does not fit 64 bits.
bool planGroups(hand_indexer_t* indexer, unsigned round, size_t c,
                const Configuration& configuration, uint64_t& size) {
    const auto& [words, equal] = configuration;
    const auto rounds = static_cast<unsigned>(indexer->rounds);
    IndexPlan& forward = indexer->plan[round]->index[c];
    UnindexPlan& back = indexer->plan[round]->unindex[c];
    size = 1;
    for (unsigned first = 0, end, group = 0; first < suits; first = end, ++group) {
        end = groupEnd(equal, first);
        const unsigned length = end - first;
        const uint32_t suit = suitSize(words[first], rounds);
        checkGroupSize(suit);
        // Fits 64 bits: four equal suits would need more than 144,000 sets each not to, and
        // every structure that has them has a suit of more than 2^20 besides.
        const uint64_t contents = multisetCount(suit, length);
        back.groupSize[first] = contents;
        back.groupReciprocal[first] =
            contents == 1 ? UINT64_MAX : static_cast<uint64_t>((Wide{1} << 64U) / contents);
        back.groupLength[first] = static_cast<uint8_t>(length);
        if (words[first] != 0)
            forward.largestGroup = back.largestGroup =
                std::max(forward.largestGroup, back.groupLength[first]);
        for (unsigned i = first; i < end; ++i) {
            assert(words[i] == words[first]);
            indexer->configuration[round][c][i] = words[i];
            indexer->configuration_to_suit_size[round][c][i] = suit;
            forward.multiplier[i] = size;
            forward.group[i] = group << groupShift;
            forward.place[i] = static_cast<uint8_t>(i - first + 1);
        }
        if (__builtin_mul_overflow(size, contents, &size))
            return false;
    }
    return true;
}

// Cuts the indices of a round into equal stretches and keeps the configuration that each begins in:
// an index then finds its own in a step or two. About four stretches a configuration, so that few
// hold the start of more than one.
void planStretches(RoundPlan& plan, uint64_t roundSize) {
    const size_t count = plan.unindex.size();
    const auto indexBits = static_cast<unsigned>(std::bit_width(roundSize - 1));
    const auto stretchBits = static_cast<unsigned>(std::bit_width(count)) + 2;
    plan.shift = indexBits > stretchBits ? indexBits - stretchBits : 0;
    plan.stretch.resize(((roundSize - 1) >> plan.shift) + 2);
    uint32_t c = 0;
    for (size_t s = 0; s + 1 < plan.stretch.size(); ++s) {
        while (c + 1 < count && plan.unindex[c + 1].offset <= s << plan.shift)
            ++c;
        plan.stretch[s] = c;
    }
    plan.stretch.back() = static_cast<uint32_t>(count - 1);
}

// Fills the configuration tables of a round; false when memory or the 64 bits of an index run out.
bool fillConfigurations(hand_indexer_t* indexer, unsigned round,
                        const std::vector<Configuration>& configurations) {
    const size_t count = configurations.size();
    indexer->configurations[round] = count;
    if (!allocate(indexer->configuration_to_equal[round], count) ||
        !allocate(indexer->configuration[round], count) ||
        !allocate(indexer->configuration_to_suit_size[round], count) ||
        !allocate(indexer->configuration_to_offset[round], count))
        return false;
    RoundPlan* plan = indexer->plan[round];
    plan->index.resize(count);
    plan->unindex.resize(count);
    plan->digits.resize(count * (round + 1));

    uint64_t offset = 0;
    for (size_t c = 0; c < count; ++c) {
        indexer->configuration_to_equal[round][c] = static_cast<uint8_t>(configurations[c].equal);
        indexer->configuration_to_offset[round][c] = offset;
        plan->index[c].offset = plan->unindex[c].offset = offset;
        planDigits(*plan, round, static_cast<unsigned>(indexer->rounds), c,
                   configurations[c].words);
        uint64_t size = 0;
        if (!planGroups(indexer, round, c, configurations[c], size) ||
            __builtin_add_overflow(offset, size, &offset))
            return false;
    }
    indexer->round_size[round] = offset;
    planStretches(*plan, offset);
    return true;
}

// Fills the permutation tables of every round; false when memory runs out. permutation_to_order and
// permutation_to_configuration are the record's: indexing goes by the plan, where the configuration
// stands beside what follows from the order, and reads neither.
bool fillPermutations(hand_indexer_t* indexer,
                      const std::array<std::vector<Configuration>, maxRounds>& configurations) {
    const auto rounds = static_cast<unsigned>(indexer->rounds);
    std::vector<Splits> splits;
    uint64_t permutations = 1;
    for (unsigned round = 0; round < rounds; ++round) {
        splits.emplace_back(indexer->cards_per_round[round]);
        const uint64_t count = splits.back().count();
        splits.back().scale(static_cast<uint32_t>(permutations));
        permutations *= count;
        if (permutations > UINT32_MAX)
            return false;
        indexer->permutations[round] = permutations;
        RoundPlan* plan = indexer->plan[round];
        plan->splits = splits.back();
        plan->permutation.resize(permutations);
        plan->multiplier.resize(round + 1 < rounds ? permutations : 0);
        if (!allocate(indexer->permutation_to_configuration[round], permutations) ||
            !allocate(indexer->permutation_to_order[round], permutations))
            return false;
    }
    const auto& orders = handIndexTables.suit_permutations;
    forEachPermutation(
        {indexer->cards_per_round, rounds}, splits,
        [&](unsigned round, uint32_t permutation, const SuitWords& words) {
            std::array<uint8_t, suits> order = {0, 1, 2, 3};
            std::sort(order.begin(), order.end(), [&](uint8_t a, uint8_t b) {
                return words[a] != words[b] ? words[a] > words[b] : a < b;
            });
            const SuitWords sorted = {words[order[0]], words[order[1]], words[order[2]],
                                      words[order[3]]};
            const auto at = std::lower_bound(
                configurations[round].begin(), configurations[round].end(), sorted,
                [](const Configuration& c, const SuitWords& w) { return c.words < w; });
            assert(at != configurations[round].end() && at->words == sorted);
            const auto configuration = static_cast<uint32_t>(at - configurations[round].begin());
            indexer->permutation_to_configuration[round][permutation] = configuration;
            indexer->permutation_to_order[round][permutation] = static_cast<uint8_t>(
                std::lower_bound(orders.begin(), orders.end(), order) - orders.begin());

            PermutationPlan& plan = indexer->plan[round]->permutation[permutation];
            plan.configuration = configuration;
            uint8_t group = 0;
            for (unsigned i = 0; i < suits; ++i) {
                group += i > 0 && sorted[i] != sorted[i - 1];
                plan.group[order[i]] = group;
            }
            if (round + 1 < rounds)
                for (unsigned suit = 0; suit < suits; ++suit)
                    indexer->plan[round]->multiplier[permutation][suit] =
                        suitSize(words[suit], rounds);
        });
    return true;
}

// A hand being indexed, as hand_indexer_state_t but small enough to stay in registers.
struct Progress {
    std::array<uint32_t, suits> index = {}; // of the suits, below 2^20
    uint64_t used = 0;                      // rank sets side by side
    uint32_t permutation = 0;
};

constexpr std::array<uint32_t, suits> ones = {1, 1, 1, 1};

// Names the broken promise: walks the round again, card by card, with every check in its order.
[[gnu::cold, gnu::noinline, noreturn]] void refuseCards(const uint8_t cards[], unsigned count,
                                                        uint64_t used) {
    hand_indexer_state_t held = {};
    for (unsigned i = 0; i < suits; ++i)
        held.used_ranks[i] = static_cast<uint32_t>(used >> i * laneBits) & laneMask;
    const hand_indexer_state_t* state = &held;
    uint32_t ranks[suits] = {};
    // clang-format off
    for (unsigned i = 0; i < count; ++i) {
        assert(cards[i] < 52);
        const unsigned suit = cards[i] % suits;
        const uint32_t rank_bit = 1U << cards[i] / suits;
        assert(!(ranks[suit]&rank_bit));
        ranks[suit] |= rank_bit;
    }
    for (unsigned i = 0; i < suits; ++i)
        assert(!(state->used_ranks[i]&ranks[i]));
    // clang-format on
    std::abort(); // only bad rounds come here
}

// Adds a round of count cards to the suits' running indices, which it multiplies by multiplier.
inline void addRound(const RoundPlan& plan, const uint8_t cards[], unsigned count,
                     const std::array<uint32_t, suits>& multiplier, Progress& hand) {
    const HandIndexTables& tables = handIndexTables;

    // shifted: the same ranks, counted among those still free in the suit.
    uint64_t seen = 0;
    uint64_t shifted = 0;
    uint64_t counts = 0;
    for (unsigned i = 0; i < count; ++i) {
        const uint64_t bit = tables.cardBit[cards[i]];
        const uint64_t lower = tables.lowerRanks[cards[i]];
        seen |= bit;
        shifted |= bit >> std::popcount(lower & hand.used);
        counts += uint64_t{1} << cards[i] % suits * laneBits;
    }
    if (static_cast<unsigned>(std::popcount(seen)) != count || (seen & hand.used) != 0) [[unlikely]]
        refuseCards(cards, count, hand.used);

    for (unsigned i = 0; i < suits; ++i) {
        const auto set = static_cast<uint16_t>(shifted >> i * laneBits);
        hand.index[i] += tables.rank_set_to_index[set] * multiplier[i];
    }
    hand.used |= seen;
    hand.permutation += plan.splits.number(counts);
}

// Puts the smaller first, by arithmetic: on random hands a branch here is wrong every other time,
// and compilers make one of std::min.
inline void sortPair(uint32_t& low, uint32_t& high) {
    const uint32_t swap = (low ^ high) & -static_cast<uint32_t>(low > high);
    low ^= swap;
    high ^= swap;
}

// The index of the rounds up to this one.
inline hand_index_t combineSuits(const hand_indexer_t* indexer, uint64_t round,
                                 const Progress& hand) {
    const RoundPlan& roundPlan = *indexer->plan[round];
    const PermutationPlan& permutation = roundPlan.permutation[hand.permutation];
    const IndexPlan& plan = roundPlan.index[permutation.configuration];

    // Sorting by group and then by suit index sorts every group in its place, without a branch on
    // what the groups are.
    std::array<uint32_t, suits> x;
    for (unsigned i = 0; i < suits; ++i)
        x[i] = hand.index[i] | uint32_t{permutation.group[i]} << groupShift;
    sortPair(x[0], x[1]);
    sortPair(x[2], x[3]);
    sortPair(x[0], x[2]);
    sortPair(x[1], x[3]);
    sortPair(x[1], x[2]);

    hand_index_t index = plan.offset + x[0];
    if (plan.largestGroup <= 2) [[likely]] {
        for (unsigned i = 1; i < suits; ++i) {
            // Half of suit * 2 in the first place of a group, of suit * (suit + 1) in the second.
            const uint64_t suit = x[i] & suitIndexMask;
            const uint64_t second = plan.place[i] - 1U;
            index += (suit * ((suit & -second) + 2 - second) >> 1U) * plan.multiplier[i];
        }
    } else {
        for (unsigned i = 1; i < suits; ++i) {
            const uint64_t suit = x[i] & suitIndexMask;
            index += nCr_groups[suit + plan.place[i] - 1U][plan.place[i]] * plan.multiplier[i];
        }
    }
    return index;
}

// Takes the digit of the group that starts at suit first off the low end of rest.
inline uint64_t takeDigit(const UnindexPlan& plan, unsigned first, uint64_t& rest) {
    // The rounded reciprocal gives the quotient, or one less.
    const uint64_t size = plan.groupSize[first];
    auto quotient = static_cast<uint64_t>(Wide{rest} * plan.groupReciprocal[first] >> 64U);
    uint64_t digit = rest - quotient * size;
    quotient += digit >= size;
    digit -= digit >= size ? size : 0;
    rest = quotient;
    return digit;
}

// For the few configurations with three or four equal suits; apart, because the cube root is a
// call.
[[gnu::noinline]] void splitLargeGroups(const UnindexPlan& plan, uint64_t rest, uint32_t index[]) {
    for (unsigned first = 0; first < suits; first += plan.groupLength[first])
        multisetUnrank(takeDigit(plan, first, rest), plan.groupLength[first], &index[first]);
}

// The suit indices of the number that a hand has within its configuration.
inline void splitIntoSuits(const UnindexPlan& plan, uint64_t rest, uint32_t index[]) {
    if (plan.largestGroup > 2) [[unlikely]]
        return splitLargeGroups(plan, rest, index);
    // Empty suits, of which there may be more than two, are left at zero.
    for (unsigned first = 0; first < suits; first += plan.groupLength[first]) {
        const uint64_t digit = takeDigit(plan, first, rest);
        if (plan.groupLength[first] == 2) {
            const uint64_t top = pairTop(digit);
            index[first + 1] = static_cast<uint32_t>(top);
            index[first] = static_cast<uint32_t>(digit - top * (top + 1) / 2);
        } else {
            index[first] = static_cast<uint32_t>(digit);
        }
    }
}

// Writes the cards of so many rounds that the suits' indices stand for.
template <unsigned rounds>
inline void dealSuits(const std::array<SetDigit, suits> digits[],
                      std::array<uint32_t, suits>& suitIndex, uint8_t cards[]) {
    const HandIndexTables& tables = handIndexTables;
    uint64_t used = 0;
    for (unsigned r = 0; r < rounds; ++r) {
        // The round's rank sets, counted among the ranks still free in the suit.
        uint64_t sets = 0;
        for (unsigned suit = 0; suit < suits; ++suit) {
            const SetDigit& digit = digits[r][suit];
            const uint32_t rest = suitIndex[suit];
            const uint32_t more = r + 1 < rounds ? divide(rest, digit) : 0;
            const uint32_t set = rest - more * digit.ways;
            sets |= uint64_t{tables.index_to_rank_set[digit.row + set]} << suit * laneBits;
            suitIndex[suit] = more;
        }
        // Every rank in use, from the lowest, moves those at and above it up by one.
        for (uint64_t bits = used; bits != 0; bits &= bits - 1)
            sets += sets & tables.higherRanks[static_cast<size_t>(std::countr_zero(bits))];
        used |= sets;
        for (uint64_t bits = sets; bits != 0; bits &= bits - 1)
            *cards++ = tables.cardOfBit[static_cast<size_t>(std::countr_zero(bits))];
    }
}

} // namespace

} // namespace tamarin

using namespace tamarin;

bool hand_indexer_init(unsigned rounds, const uint8_t cardsPerRound[], hand_indexer_t* indexer) {
    *indexer = {};
    if (rounds == 0 || rounds > maxRounds)
        return false;
    unsigned total = 0;
    for (unsigned round = 0; round < rounds; ++round) {
        total += cardsPerRound[round];
        if (total > maxCards)
            return false;
    }

    unsigned start = 0;
    for (unsigned round = 0; round < rounds; ++round) {
        indexer->cards_per_round[round] = cardsPerRound[round];
        indexer->round_start[round] = static_cast<uint8_t>(start);
        start += cardsPerRound[round];
    }
    indexer->rounds = rounds;

    bool built = false;
    try {
        const auto configurations = sortedConfigurations({cardsPerRound, rounds});
        built = true;
        for (unsigned round = 0; round < rounds; ++round)
            indexer->plan[round] = new RoundPlan;
        for (unsigned round = 0; round < rounds && built; ++round)
            built = fillConfigurations(indexer, round, configurations[round]);
        built = built && fillPermutations(indexer, configurations);
    } catch (const std::bad_alloc&) {
        built = false;
    }
    if (!built)
        hand_indexer_free(indexer);
    return built;
}

void hand_indexer_free(hand_indexer_t* indexer) {
    for (unsigned round = 0; round < maxRounds; ++round) {
        release(indexer->permutation_to_configuration[round]);
        release(indexer->permutation_to_order[round]);
        release(indexer->configuration_to_equal[round]);
        release(indexer->configuration[round]);
        release(indexer->configuration_to_suit_size[round]);
        release(indexer->configuration_to_offset[round]);
        delete indexer->plan[round];
    }
    *indexer = {};
}

hand_index_t hand_indexer_size(const hand_indexer_t* indexer, unsigned round) {
    assert(round < indexer->rounds);
    return indexer->round_size[round];
}

void hand_indexer_state_init(const hand_indexer_t*, hand_indexer_state_t* state) {
    *state = {};
    std::fill(std::begin(state->suit_multiplier), std::end(state->suit_multiplier), uint64_t{1});
    state->permutation_multiplier = 1;
}

hand_index_t hand_index_next_round(const hand_indexer_t* indexer, const uint8_t cards[],
                                   hand_indexer_state_t* state) {
    const uint64_t round = state->round;
    assert(round < indexer->rounds);

    const RoundPlan& plan = *indexer->plan[round];
    Progress hand;
    std::array<uint32_t, suits> multiplier;
    for (unsigned i = 0; i < suits; ++i) {
        hand.index[i] = static_cast<uint32_t>(state->suit_index[i]);
        multiplier[i] = static_cast<uint32_t>(state->suit_multiplier[i]);
        hand.used |= uint64_t{state->used_ranks[i]} << i * laneBits;
    }
    hand.permutation = static_cast<uint32_t>(state->permutation_index);

    addRound(plan, cards, indexer->cards_per_round[round], multiplier, hand);

    state->round = round + 1;
    for (unsigned i = 0; i < suits; ++i) {
        state->suit_index[i] = hand.index[i];
        if (round + 1 < indexer->rounds)
            state->suit_multiplier[i] = plan.multiplier[hand.permutation][i];
        state->used_ranks[i] = static_cast<uint32_t>(hand.used >> i * laneBits) & laneMask;
    }
    state->permutation_index = hand.permutation;
    state->permutation_multiplier = indexer->permutations[round];
    return combineSuits(indexer, round, hand);
}

hand_index_t hand_index_all(const hand_indexer_t* indexer, const uint8_t cards[],
                            hand_index_t indices[]) {
    Progress hand;
    hand_index_t index = 0;
    const std::array<uint32_t, suits>* multiplier = &ones;
    for (unsigned round = 0; round < indexer->rounds; ++round) {
        const RoundPlan& plan = *indexer->plan[round];
        const unsigned count = indexer->cards_per_round[round];
        addRound(plan, cards, count, *multiplier, hand);
        cards += count;
        if (round + 1 < indexer->rounds) // the last round's has no entries
            multiplier = &plan.multiplier[hand.permutation];
        index = indices[round] = combineSuits(indexer, round, hand);
    }
    return index;
}

hand_index_t hand_index_last(const hand_indexer_t* indexer, const uint8_t cards[]) {
    if (indexer->rounds == 0)
        return 0;
    Progress hand;
    const std::array<uint32_t, suits>* multiplier = &ones;
    for (unsigned round = 0; round < indexer->rounds; ++round) {
        const RoundPlan& plan = *indexer->plan[round];
        const unsigned count = indexer->cards_per_round[round];
        addRound(plan, cards, count, *multiplier, hand);
        cards += count;
        if (round + 1 < indexer->rounds) // the last round's has no entries
            multiplier = &plan.multiplier[hand.permutation];
    }
    return combineSuits(indexer, indexer->rounds - 1, hand);
}

bool hand_unindex(const hand_indexer_t* indexer, unsigned round, hand_index_t index,
                  uint8_t cards[]) {
    if (round >= indexer->rounds || index >= indexer->round_size[round])
        return false;
    const RoundPlan& roundPlan = *indexer->plan[round];
    const uint32_t configuration = roundPlan.configurationOf(index);
    const UnindexPlan& plan = roundPlan.unindex[configuration];
    const auto* digits = &roundPlan.digits[size_t{configuration} * (round + 1)];
    std::array<uint32_t, suits> suitIndex = {};
    splitIntoSuits(plan, index - plan.offset, suitIndex.data());
    switch (round) { // once here, so that the loops over the rounds unroll
    case 0:
        dealSuits<1>(digits, suitIndex, cards);
        break;
    case 1:
        dealSuits<2>(digits, suitIndex, cards);
        break;
    case 2:
        dealSuits<3>(digits, suitIndex, cards);
        break;
    default:
        dealSuits<4>(digits, suitIndex, cards);
    }
    return true;
}
