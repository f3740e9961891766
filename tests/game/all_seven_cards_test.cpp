// Every hand of seven cards through the showdown ranking.
#include "game/plain_ranking.h"
#include "game/showdown.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(RankCardSet, AllSevenCardHands) {
    std::vector<long> count(straightFlushRank + 13);
    const auto bit = [](int card) { return cardBit(static_cast<uint8_t>(card)); };
    for (int a = 0; a < 52; ++a) {
        for (int b = a + 1; b < 52; ++b) {
            for (int c = b + 1; c < 52; ++c) {
                for (int d = c + 1; d < 52; ++d) {
                    const CardSet four = bit(a) | bit(b) | bit(c) | bit(d);
                    for (int e = d + 1; e < 52; ++e) {
                        for (int f = e + 1; f < 52; ++f) {
                            const CardSet six = four | bit(e) | bit(f);
                            for (int g = f + 1; g < 52; ++g)
                                ++count[static_cast<size_t>(rankCardSet(six | bit(g)))];
                        }
                    }
                }
            }
        }
    }
    std::array<long, 9> classes{};
    long hands = 0;
    int values = 0;
    for (size_t value = 0; value < count.size(); ++value) {
        classes[static_cast<size_t>(handClass(static_cast<int>(value)))] += count[value];
        hands += count[value];
        values += count[value] != 0;
    }
    EXPECT_EQ(hands, 133784560);
    EXPECT_EQ(values, 4824);
    const std::array<long, 9> expected = {23294460, 58627800, 31433400, 6461620, 6180020,
                                          4047644,  3473184,  224848,   41584};
    EXPECT_EQ(classes, expected);
}

} // namespace
} // namespace tamarin::test
