// Every board dealt one by one, random opponents counted on each (slow): the whole of the counting
// by classes at once.
#include "eval/preflop_equity.h"

#include "eval/exact_equity.h"
#include "eval/plain_equity.h"

#include <array>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

void expectSumOverBoards(const std::string& hand, int opponents) {
    const CardSet hole = plain::cards(hand);
    const std::array<CardSet, 1> hands{hole};
    DealCounts sum;
    for (uint8_t a = 0; a < 52; ++a)
        for (uint8_t b = 0; b < a; ++b)
            for (uint8_t c = 0; c < b; ++c)
                for (uint8_t d = 0; d < c; ++d)
                    for (uint8_t e = 0; e < d; ++e) {
                        const CardSet board =
                            cardBit(a) | cardBit(b) | cardBit(c) | cardBit(d) | cardBit(e);
                        if ((board & hole) == 0)
                            sum += exactEquity(hands, board, opponents);
                    }
    EXPECT_EQ(sum, exactPreflopEquity(hands, opponents)) << hand;
}

} // namespace

TEST(PreflopEquity, OffsuitAgainstTwoBoardByBoard) {
    expectSumOverBoards("Kd7h", 2);
}
TEST(PreflopEquity, SuitedAgainstTwoBoardByBoard) {
    expectSumOverBoards("5s4s", 2);
}

// A random opponent, counted by kinds of cards, is every known hand in turn.
TEST(PreflopEquity, ARandomOpponentIsEveryHandInTurn) {
    const CardSet hero = plain::cards("Ts9s");
    const std::array<CardSet, 1> alone{hero};
    DealCounts sum;
    for (const CardSet hand : plain::handsWithout(hero)) {
        const std::array<CardSet, 2> hands{hero, hand};
        sum += exactPreflopEquity(hands, 0);
    }
    EXPECT_EQ(sum, exactPreflopEquity(alone, 1));
}

} // namespace tamarin::test
