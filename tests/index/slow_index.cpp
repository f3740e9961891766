#include "index/slow_index.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <stdexcept>

namespace tamarin {

namespace {

// Calls visit with every way to split n cards over the suits, suit s taking at most room[s].
void forEachSplit(unsigned n, const std::array<unsigned, 4>& room,
                  const std::function<void(const std::array<unsigned, 4>&)>& visit) {
    for (unsigned a = 0; a <= std::min(n, room[0]); ++a)
        for (unsigned b = 0; b <= std::min(n - a, room[1]); ++b)
            for (unsigned c = 0; c <= std::min(n - a - b, room[2]); ++c)
                if (n - a - b - c <= room[3])
                    visit({a, b, c, n - a - b - c});
}

} // namespace

SlowIndexer::SlowIndexer(std::vector<uint8_t> cardsPerRound)
    : cardsPerRound_(std::move(cardsPerRound)) {
    std::array<uint64_t, 14> next{};
    for (uint32_t set = 0; set < 1U << 13; ++set) {
        const auto count = static_cast<size_t>(std::popcount(set));
        numberOfSet_[count][set] = next[count]++;
    }

    const std::function<void(size_t, Words, std::array<unsigned, 4>)> walk =
        [&](size_t round, Words words, std::array<unsigned, 4> room) {
            if (round == cardsPerRound_.size()) {
                std::sort(words.rbegin(), words.rend());
                configurations_[words] = {};
                return;
            }
            forEachSplit(cardsPerRound_[round], room, [&](const std::array<unsigned, 4>& split) {
                Words longer = words;
                std::array<unsigned, 4> less = room;
                for (size_t s = 0; s < 4; ++s) {
                    longer[s] = words[s] * 16 + split[s];
                    less[s] -= split[s];
                }
                walk(round + 1, longer, less);
            });
        };
    walk(0, {}, {13, 13, 13, 13});

    uint64_t largest = 1;
    for (const auto& [words, unused] : configurations_)
        for (uint32_t w : words)
            largest = std::max(largest, suitSize(w));
    multisets_[0].assign(largest + 1, 1);
    for (unsigned m = 1; m <= 4; ++m) {
        multisets_[m].assign(largest + 1, 0);
        for (uint64_t s = 1; s <= largest; ++s) // the top number is s - 1, or all lie below it
            multisets_[m][s] = multisets_[m][s - 1] + multisets_[m - 1][s];
    }

    for (auto& [words, configuration] : configurations_) {
        configuration = {size_, 1};
        for (size_t first = 0, end; first < 4; first = end) {
            end = first;
            while (end < 4 && words[end] == words[first])
                ++end;
            configuration.size *= multisets_[end - first][suitSize(words[first])];
        }
        size_ += configuration.size;
    }
}

uint32_t SlowIndexer::word(const Sets& sets) const {
    uint32_t w = 0;
    for (uint32_t set : sets)
        w = w * 16 + static_cast<uint32_t>(std::popcount(set));
    return w;
}

// All contents of a suit with these counts, in order: every round's set runs through the free ranks
// in ascending order, the first round fastest.
std::vector<SlowIndexer::Sets> SlowIndexer::contents(uint32_t w) const {
    std::vector<Sets> list;
    const size_t rounds = cardsPerRound_.size();
    const auto countOf = [&](size_t r) { return w >> 4 * (rounds - 1 - r) & 15U; };
    const auto freeBefore = [&](size_t round) {
        unsigned left = 13;
        for (size_t r = 0; r < round; ++r)
            left -= countOf(r);
        return left;
    };
    // Sets among the free ranks, chosen from the last round to the first; then put on the ranks.
    Sets relative(rounds);
    const std::function<void(size_t)> choose = [&](size_t rest) {
        if (rest == 0) {
            Sets sets(rounds);
            uint32_t used = 0;
            for (size_t r = 0; r < rounds; ++r) {
                unsigned position = 0;
                for (unsigned rank = 0; rank < 13; ++rank)
                    if (!(used >> rank & 1U))
                        sets[r] |= (relative[r] >> position++ & 1U) << rank;
                used |= sets[r];
            }
            list.push_back(sets);
            return;
        }
        const size_t r = rest - 1;
        for (uint32_t set = 0; set < 1U << freeBefore(r); ++set)
            if (static_cast<unsigned>(std::popcount(set)) == countOf(r)) {
                relative[r] = set;
                choose(r);
            }
    };
    choose(rounds);
    return list;
}

uint64_t SlowIndexer::suitSize(uint32_t w) const {
    const size_t rounds = cardsPerRound_.size();
    uint64_t size = 1;
    unsigned left = 13;
    for (size_t r = 0; r < rounds; ++r) {
        const unsigned count = w >> 4 * (rounds - 1 - r) & 15U;
        uint64_t sets = 0;
        for (const auto& [set, number] : numberOfSet_[count])
            sets += set < 1U << left;
        size *= sets;
        left -= count;
    }
    return size;
}

uint64_t SlowIndexer::suitIndex(const Sets& sets) const {
    uint64_t index = 0;
    uint64_t multiplier = 1;
    uint32_t used = 0;
    unsigned left = 13;
    for (uint32_t set : sets) {
        uint32_t among = 0; // the set, its ranks counted among the free ones
        unsigned position = 0;
        for (unsigned rank = 0; rank < 13; ++rank)
            if (!(used >> rank & 1U))
                among |= (set >> rank & 1U) << position++;
        const auto count = static_cast<unsigned>(std::popcount(set));
        index += numberOfSet_[count].at(among) * multiplier;
        uint64_t choices = 1; // C(left, count)
        for (unsigned i = 0; i < count; ++i)
            choices = choices * (left - i) / (i + 1);
        multiplier *= choices;
        used |= set;
        left -= count;
    }
    return index;
}

// Multisets are ordered by their largest member, then by the next, and so on.
uint64_t SlowIndexer::groupRank(const uint64_t sorted[], unsigned m) const {
    uint64_t before = 0;
    for (unsigned k = m; k >= 1; --k)
        before += multisets_[k][sorted[k - 1]]; // those whose k-th lies below it
    return before;
}

uint64_t SlowIndexer::index(const uint8_t cards[]) const {
    const size_t rounds = cardsPerRound_.size();
    std::array<Sets, 4> suits;
    suits.fill(Sets(rounds));
    for (size_t r = 0; r < rounds; ++r)
        for (unsigned i = 0; i < cardsPerRound_[r]; ++i, ++cards)
            suits[*cards % 4U][r] |= 1U << *cards / 4U;
    Words words{};
    std::array<uint64_t, 4> indices{};
    for (size_t s = 0; s < 4; ++s) {
        words[s] = word(suits[s]);
        indices[s] = suitIndex(suits[s]);
    }

    // Of the 24 renamings, the one with the largest words and then the smallest indices.
    std::array<size_t, 4> renaming = {0, 1, 2, 3};
    Words bestWords{};
    std::array<uint64_t, 4> best{};
    bool first = true;
    do {
        Words w{};
        std::array<uint64_t, 4> x{};
        for (size_t s = 0; s < 4; ++s) {
            w[s] = words[renaming[s]];
            x[s] = indices[renaming[s]];
        }
        if (first || w > bestWords || (w == bestWords && x < best)) {
            bestWords = w;
            best = x;
        }
        first = false;
    } while (std::next_permutation(renaming.begin(), renaming.end()));

    uint64_t sum = configurations_.at(bestWords).offset;
    uint64_t multiplier = 1;
    for (size_t start = 0, end; start < 4; start = end) {
        end = start;
        while (end < 4 && bestWords[end] == bestWords[start])
            ++end;
        const auto m = static_cast<unsigned>(end - start);
        sum += groupRank(&best[start], m) * multiplier;
        if (end < 4)
            multiplier *= multisets_[m][suitSize(bestWords[start])];
    }
    return sum;
}

void SlowIndexer::forEachHand(
    const std::function<void(uint64_t, const std::vector<uint8_t>&)>& visit) const {
    uint64_t next = 0;
    for (const auto& [words, unused] : configurations_) {
        std::map<uint32_t, std::vector<Sets>> of;
        for (uint32_t w : words)
            of[w] = contents(w);
        std::array<const Sets*, 4> suits{};

        // Suits are fixed from the last to the first: so the first group runs fastest, and within a
        // group the largest member is fixed first. above: the number of the suit fixed before.
        const std::function<void(size_t, size_t)> fix = [&](size_t rest, size_t above) {
            if (rest == 0) {
                std::vector<uint8_t> cards;
                for (size_t r = 0; r < cardsPerRound_.size(); ++r)
                    for (uint8_t card = 0; card < 52; ++card)
                        if ((*suits[card % 4U])[r] >> card / 4U & 1U)
                            cards.push_back(card);
                visit(next++, cards);
                return;
            }
            const size_t suit = rest - 1;
            const auto& all = of.at(words[suit]);
            const bool tied = suit + 1 < 4 && words[suit] == words[suit + 1];
            for (size_t x = 0; x < (tied ? above + 1 : all.size()); ++x) {
                suits[suit] = &all[x];
                fix(suit, x);
            }
        };
        fix(4, 0);
    }
}

uint64_t countHands(const std::vector<uint8_t>& cardsPerRound) {
    uint64_t hands = 1;
    unsigned left = 52;
    for (unsigned n : cardsPerRound)
        for (unsigned i = 0; i < n; ++i, --left)
            hands = hands * left / (i + 1);
    return hands;
}

uint64_t countClasses(const std::vector<uint8_t>& cardsPerRound) {
    const size_t rounds = cardsPerRound.size();
    std::array<std::array<uint64_t, 14>, 14> choose{};
    for (size_t n = 0; n <= 13; ++n)
        for (size_t k = 0; k <= n; ++k)
            choose[n][k] = k == 0 || k == n ? 1 : choose[n - 1][k - 1] + choose[n - 1][k];

    uint64_t fixedInAll = 0;
    std::array<size_t, 4> renaming = {0, 1, 2, 3};
    do {
        // Along a cycle of suits, a rank is in the same round in every suit or in none.
        std::vector<unsigned> cycles;
        std::array<bool, 4> seen{};
        for (size_t s = 0; s < 4; ++s) {
            unsigned length = 0;
            for (size_t t = s; !seen[t]; t = renaming[t], ++length)
                seen[t] = true;
            if (length > 0)
                cycles.push_back(length);
        }
        // Ways to deal what is left of the rounds to the cycles from this one on.
        const std::function<uint64_t(size_t, size_t, unsigned, const std::vector<unsigned>&)> ways =
            [&](size_t cycle, size_t round, unsigned room,
                const std::vector<unsigned>& left) -> uint64_t {
            if (cycle == cycles.size())
                return std::all_of(left.begin(), left.end(), [](unsigned n) { return n == 0; });
            if (round == rounds)
                return ways(cycle + 1, 0, 13, left);
            uint64_t sum = 0;
            for (unsigned k = 0; k <= room && k * cycles[cycle] <= left[round]; ++k) {
                std::vector<unsigned> less = left;
                less[round] -= k * cycles[cycle];
                sum += choose[room][k] * ways(cycle, round + 1, room - k, less);
            }
            return sum;
        };
        fixedInAll += ways(0, 0, 13, {cardsPerRound.begin(), cardsPerRound.end()});
    } while (std::next_permutation(renaming.begin(), renaming.end()));
    return fixedInAll / 24;
}

OwnedIndexer::OwnedIndexer(std::vector<uint8_t> structure) : cardsPerRound(std::move(structure)) {
    if (!hand_indexer_init(rounds(), cardsPerRound.data(), &indexer))
        throw std::runtime_error("refused " + show(cardsPerRound));
}

unsigned OwnedIndexer::cards() const {
    return std::accumulate(cardsPerRound.begin(), cardsPerRound.end(), 0U);
}

std::string show(const std::vector<uint8_t>& cardsPerRound) {
    std::string text;
    for (uint8_t n : cardsPerRound) {
        if (!text.empty())
            text += ',';
        text += std::to_string(n);
    }
    return text;
}

} // namespace tamarin
