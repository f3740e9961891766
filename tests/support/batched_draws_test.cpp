#include "support/batched_draws.h"

#include "support/split_mix.h"

#include <algorithm>
#include <map>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

BatchedDraws drawsBelow(const std::vector<uint32_t>& bounds) {
    BatchedDraws draws;
    for (const uint32_t bound : bounds)
        draws.add(bound);
    return draws;
}

// A generator that gives what it is told to.
struct Words {
    std::vector<uint64_t> words;
    size_t next = 0;
    uint64_t operator()() { return words.at(next++); }
};

} // namespace

TEST(BatchedDraws, AreTheDigitsOfAWordTimesTheBounds) {
    const BatchedDraws draws = drawsBelow({10, 7, 3});
    EXPECT_EQ(draws.size(), 3U);
    // (123 + 1/2) / 210 of 2^64: 5 of 10, then 6 of 7, then 0 of 3 (5 * 21 + 6 * 3 + 0 = 123).
    Words words{{static_cast<uint64_t>(0x1p64L / 210 * 123.5L)}};
    uint32_t drawn[3];
    draws.draw(words, drawn);
    EXPECT_EQ(drawn[0], 5U);
    EXPECT_EQ(drawn[1], 6U);
    EXPECT_EQ(drawn[2], 0U);
    EXPECT_EQ(words.next, 1U);
}

// 2^64 mod 210 is 16: of the words from 0 on, whose products with 210 leave 0, 210, 420, ..., the
// first alone is below that.
TEST(BatchedDraws, DrawWordsAgainThatWouldFavourSomeNumbers) {
    const BatchedDraws draws = drawsBelow({10, 7, 3});
    Words words{{0, 1}};
    uint32_t drawn[3];
    draws.draw(words, drawn);
    EXPECT_EQ(words.next, 2U);
    // A word whose product leaves 14, drawn again, and one that leaves 16, taken: 210 is twice an
    // odd number, so that only even rests are met; 14 and 16 are.
    const auto wordLeaving = [](uint64_t rest) { // 105 * inverse = 1 modulo 2^63
        uint64_t inverse = 1;
        for (int i = 0; i < 6; ++i)
            inverse *= 2 - 105 * inverse;
        return rest / 2 * inverse;
    };
    ASSERT_EQ(wordLeaving(14) * 210, 14U);
    ASSERT_EQ(wordLeaving(16) * 210, 16U);
    words = {{wordLeaving(14), wordLeaving(16), 1}};
    draws.draw(words, drawn);
    EXPECT_EQ(words.next, 2U);
}

TEST(BatchedDraws, TakeOneWordAsLongAsItHasRoom) {
    const auto wordsFor = [](uint32_t first, size_t count) {
        BatchedDraws draws;
        for (uint32_t i = 0; i < count; ++i)
            draws.add(first - i);
        Words words{std::vector<uint64_t>(3, splitMixStep)};
        std::vector<uint32_t> drawn(count);
        draws.draw(words, drawn.data());
        return words.next;
    };
    EXPECT_EQ(wordsFor(50, 1), 1U);
    EXPECT_EQ(wordsFor(50, 10), 1U);
    EXPECT_EQ(wordsFor(50, 11), 2U);
    EXPECT_EQ(wordsFor(50, 23), 3U);
}

// Pairs of numbers from one word, and across two words, as often as each other.
TEST(BatchedDraws, AreUniform) {
    std::vector<uint32_t> bounds(11, 50);
    const BatchedDraws draws = drawsBelow(bounds);
    SplitMix random(17);
    constexpr size_t count = 500'000;
    std::vector<uint32_t> neighbours(2500);
    std::vector<uint32_t> ends(2500);
    for (size_t i = 0; i < count; ++i) {
        uint32_t drawn[11];
        draws.draw(random, drawn);
        ASSERT_LT(*std::max_element(drawn, drawn + 11), 50U);
        ++neighbours[drawn[3] * 50 + drawn[4]];
        ++ends[drawn[0] * 50 + drawn[10]];
    }
    for (const auto& counts : {neighbours, ends}) {
        double chiSquare = 0;
        for (const uint32_t met : counts)
            chiSquare += (met - count / 2500.0) * (met - count / 2500.0) / (count / 2500.0);
        EXPECT_NEAR(chiSquare, 2499, 4 * 70.7); // four standard deviations; the seed is fixed
    }
}

// The same numbers, whether the bound is known to the compiler or not.
TEST(BatchedDraws, AlikeAreThoseBelowOneBound) {
    const BatchedDraws draws = drawsBelow(std::vector<uint32_t>(10, 52));
    SplitMix random(19);
    SplitMix again(19);
    for (int i = 0; i < 20'000; ++i) {
        std::array<uint32_t, 10> alike;
        std::array<uint32_t, 10> drawn;
        drawAlike<52>(random, alike);
        draws.draw(again, drawn.data());
        ASSERT_EQ(alike, drawn) << i;
    }
    EXPECT_EQ(random(), again()); // and as many words
}

} // namespace tamarin::test
