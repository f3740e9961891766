#include "support/rng.h"

#include <array>
#include <numeric>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

namespace {

// ---- The process-wide engine

// Run in a fresh process, because any other test may have drawn before.
TEST(GlobalEngineDeathTest, StartsFromSeedOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(global_urng() == std::minstd_rand0(1) ? 0 : 1),
                ::testing::ExitedWithCode(0), "");
}

TEST(GlobalEngine, IsTheMinimalStandardGenerator) {
    global_urng().seed(1);
    EXPECT_EQ(global_urng()(), 16807u);
    EXPECT_EQ(global_urng()(), 282475249u);
    for (int i = 3; i < 10'000; ++i)
        global_urng()();
    EXPECT_EQ(global_urng()(), 1043618065u); // the 10,000th
}

TEST(GlobalEngine, IsSeededByTheDevice) {
    std::set<uint_fast32_t> first;
    for (int i = 0; i < 8; ++i) {
        randomize();
        first.insert(global_urng()());
    }
    EXPECT_GT(first.size(), 6u); // eight draws of 31 bits: two equal ones are a rare accident
}

TEST(PickANumber, ReturnsTheOnlyChoice) {
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(pick_a_number(5, 5), 5);
}

TEST(PickANumber, ReturnsBothEnds) {
    global_urng().seed(1);
    int counts[2] = {};
    for (int i = 0; i < 1000; ++i)
        ++counts[pick_a_number(0, 1)];
    EXPECT_GT(counts[0], 400);
    EXPECT_GT(counts[1], 400);
}

TEST(PickANumber, StaysInItsRange) {
    const int lowest = std::numeric_limits<int>::min();
    const int highest = std::numeric_limits<int>::max();
    const std::pair<int, int> ranges[] = {
        {-3, 3}, {lowest, lowest + 1}, {highest - 2, highest}, {lowest, highest}, {0, 51}};
    for (const auto& [from, thru] : ranges)
        for (int i = 0; i < 1000; ++i) {
            const int number = pick_a_number(from, thru);
            EXPECT_GE(number, from);
            EXPECT_LE(number, thru);
        }
}

TEST(PickANumber, IsEven) {
    global_urng().seed(7);
    std::array<int, 52> counts{};
    constexpr int draws = 520'000;
    for (int i = 0; i < draws; ++i)
        ++counts[static_cast<size_t>(pick_a_number(0, 51))];
    double chiSquared = 0;
    for (const int count : counts)
        chiSquared += (count - draws / 52.0) * (count - draws / 52.0) / (draws / 52.0);
    EXPECT_LT(chiSquared, 100); // 51 degrees of freedom: beyond 99.99 % of fair samples
}

TEST(PickANumber, RealNeverReachesItsEnd) {
    global_urng().seed(1);
    for (int i = 0; i < 100'000; ++i) {
        const double number = pick_a_number(0.0, 1.0);
        ASSERT_GE(number, 0.0);
        ASSERT_LT(number, 1.0);
    }
}

// The published draws are those of the library's distributions, one after another, whatever ranges
// came before.
TEST(PickANumber, DrawsAsTheStandardDistributionsDo) {
    global_urng().seed(99);
    std::minstd_rand0 engine(99);
    for (int i = 0; i < 1000; ++i) {
        const int thru = i * i;
        EXPECT_EQ(pick_a_number(-i, thru), std::uniform_int_distribution<int>(-i, thru)(engine));
        const double upto = i + 0.5;
        EXPECT_EQ(pick_a_number(0.0, upto),
                  std::uniform_real_distribution<double>(0.0, upto)(engine));
    }
}

TEST(PickANumber, RepeatsFromTheSameSeed) {
    const auto draws = [] {
        global_urng().seed(1);
        std::vector<int> numbers;
        for (int i = 0; i < 100; ++i)
            numbers.push_back(pick_a_number(0, 1'000'000));
        return numbers;
    };
    EXPECT_EQ(draws(), draws());
}

// ---- Shuffling

using Deck = std::array<unsigned char, 52>;

Deck orderedDeck() {
    Deck deck;
    std::iota(deck.begin(), deck.end(), static_cast<unsigned char>(0));
    return deck;
}

TEST(Shuffle, DrawsOverTheWholeArray) {
    global_urng().seed(3);
    std::minstd_rand0 engine(3);
    for (int count = 0; count <= 52; ++count) {
        Deck deck = orderedDeck();
        shuffle(deck.data(), count, 52);
        Deck expected = orderedDeck();
        for (int i = 0; i < count; ++i) {
            const int j = std::uniform_int_distribution<int>(0, 51)(engine);
            const unsigned char card = expected[static_cast<size_t>(i)];
            expected[static_cast<size_t>(i)] = expected[static_cast<size_t>(j)];
            expected[static_cast<size_t>(j)] = card;
        }
        EXPECT_EQ(deck, expected);
    }
}

TEST(Shuffle, OfNothingDrawsNothing) {
    global_urng().seed(5);
    Deck deck = orderedDeck();
    shuffle(deck.data(), 0, 52);
    EXPECT_EQ(deck, orderedDeck());
    EXPECT_EQ(global_urng(), std::minstd_rand0(5));
}

TEST(Shuffle, OfTwoChangesAtMostFourPlaces) {
    global_urng().seed(11);
    for (int round = 0; round < 1000; ++round) {
        Deck deck = orderedDeck();
        shuffle(deck.data(), 2, 52);
        int changed = 0;
        for (size_t i = 0; i < deck.size(); ++i)
            changed += deck[i] != i;
        EXPECT_LE(changed, 4);
        EXPECT_EQ(std::set<unsigned char>(deck.begin(), deck.end()).size(), 52u);
    }
}

// ---- MT19937

std::vector<uint32_t> draw(rng_state_t& state, int count) {
    std::vector<uint32_t> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(genrand_int32(&state));
    return numbers;
}

TEST(MersenneTwister, GivesThePublishedNumbers) {
    rng_state_t state;
    init_genrand(&state, 5489);
    EXPECT_EQ(state.next, 624);
    EXPECT_EQ(genrand_int32(&state), 3499211612u);
    for (int i = 2; i < 10'000; ++i)
        genrand_int32(&state);
    EXPECT_EQ(genrand_int32(&state), 4123659995u); // the 10,000th
}

// The first numbers of the authors' own sample output.
TEST(MersenneTwister, GivesThePublishedNumbersForAnArray) {
    rng_state_t state;
    uint32_t key[] = {0x123, 0x234, 0x345, 0x456};
    init_by_array(&state, key, 4);
    EXPECT_EQ(state.words[0], 0x80000000u);
    EXPECT_EQ(draw(state, 5), (std::vector<uint32_t>{1067595299u, 955945823u, 477289528u,
                                                     4107218783u, 4228976476u}));
}

RC_GTEST_PROP(MersenneTwister, AgreesWithTheStandardLibrary, (uint32_t seed)) {
    rng_state_t state;
    init_genrand(&state, seed);
    std::mt19937 standard(seed);
    for (int i = 0; i < 2000; ++i)
        RC_ASSERT(genrand_int32(&state) == standard());
}

// The array seeding once more, in the plainest form: every step finds its word and the one before
// it by counting round the 623 words after the first, in 64 bits, and reduces afterwards.
std::vector<uint32_t> slowArrayState(const std::vector<uint32_t>& key) {
    constexpr uint64_t modulus = uint64_t{1} << 32;
    std::vector<uint64_t> s(624);
    s[0] = 19650218;
    for (size_t i = 1; i < 624; ++i)
        s[i] = (1812433253 * (s[i - 1] ^ (s[i - 1] >> 30)) + i) % modulus;
    const size_t first = std::max<size_t>(624, key.size());
    for (size_t step = 0; step < first + 623; ++step) {
        const size_t place = 1 + step % 623;
        // In front of word 1 stands word 0 at the very first, and the last word after each round.
        const uint64_t before = place > 1 ? s[place - 1] : step == 0 ? s[0] : s[623];
        const uint64_t mixed = before ^ (before >> 30);
        if (step < first) {
            const size_t j = step % key.size();
            s[place] = ((s[place] ^ (mixed * 1664525 % modulus)) + key[j] + j) % modulus;
        } else {
            s[place] = ((s[place] ^ (mixed * 1566083941 % modulus)) + modulus - place) % modulus;
        }
    }
    s[0] = 0x80000000;
    return {s.begin(), s.end()};
}

RC_GTEST_PROP(MersenneTwister, SeedsFromArraysOfAnyLength, ()) {
    auto key = *rc::gen::nonEmpty<std::vector<uint32_t>>();
    if (*rc::gen::inRange(0, 10) == 0)
        key.resize(*rc::gen::inRange<size_t>(600, 1400), 0x9E3779B9u);
    rng_state_t state;
    init_by_array(&state, key.data(), static_cast<int>(key.size()));
    RC_ASSERT(std::vector<uint32_t>(state.words, state.words + 624) == slowArrayState(key));
    RC_ASSERT(state.next == 624);
}

TEST(MersenneTwister, StatesAreIndependent) {
    rng_state_t first;
    rng_state_t second;
    init_genrand(&first, 1);
    init_genrand(&second, 1);
    const std::vector<uint32_t> alone = draw(first, 1000);
    rng_state_t other;
    init_genrand(&other, 2);
    for (const uint32_t number : alone) {
        genrand_int32(&other);
        EXPECT_EQ(genrand_int32(&second), number);
    }
}

} // namespace

} // namespace tamarin::test
