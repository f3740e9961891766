#include "eval/hand_table.h"

#include "eval/seven_card_table.h"
#include "game/showdown.h"
#include "support/rng.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

// The table as the callers hold it.
int* table() {
    static std::vector<int> entries = [] {
        const auto made = tamarin::SevenCardTable::generate();
        return std::vector<int>(made.entries().begin(), made.entries().end());
    }();
    return entries.data();
}

// The sampling written out step by step, for `known` cards and p players, ranked by the rules.
double plainSample(const std::vector<unsigned char>& cards, int p) {
    std::vector<unsigned char> deck;
    for (int card = 0; card < 52; ++card)
        if (std::find(cards.begin(), cards.end(), card) == cards.end())
            deck.push_back(static_cast<unsigned char>(card));
    const size_t drawn = 7 - cards.size();
    const int positions = 2 * (p - 1) + static_cast<int>(drawn);
    int wins = 0;
    int losses = 0;
    for (int deal = 0; deal < 1000; ++deal) {
        for (int i = 0; i < positions; ++i)
            std::swap(
                deck[static_cast<size_t>(i)],
                deck[static_cast<size_t>(pick_a_number(0, static_cast<int>(deck.size()) - 1))]);
        CardSet board = 0;
        for (size_t i = 2; i < cards.size(); ++i)
            board |= cardBit(cards[i]);
        for (size_t i = 0; i < drawn; ++i)
            board |= cardBit(deck[i]);
        const int own = rankCardSet(board | cardBit(cards[0]) | cardBit(cards[1]));
        bool lost = false;
        for (size_t k = 0; k + 1 < static_cast<size_t>(p); ++k)
            lost |= own <= rankCardSet(board | cardBit(deck[drawn + 2 * k]) |
                                       cardBit(deck[drawn + 2 * k + 1]));
        lost ? ++losses : ++wins;
    }
    return static_cast<double>(wins) / (wins + losses);
}

using Evaluate = double (*)(unsigned char*, unsigned int, int*);

void expectSameDraws(Evaluate evaluate, std::vector<unsigned char> cards) {
    for (int players = 2; players <= 3; ++players) {
        global_urng().seed(77);
        const double sampled = evaluate(cards.data(), static_cast<unsigned>(players), table());
        const auto next = global_urng()();
        global_urng().seed(77);
        EXPECT_EQ(sampled, plainSample(cards, players)) << cards.size() << " cards";
        EXPECT_EQ(next, global_urng()()) << "another number of draws";
    }
    EXPECT_EQ(evaluate(cards.data(), 1, table()), 1.0);
    EXPECT_EQ(evaluate(cards.data(), 0, table()), 1.0);
}

} // namespace

TEST(HandTable, RanksSevenCards) {
    unsigned char royal[7] = {51, 0, 47, 5, 43, 39, 35};
    EXPECT_EQ(rankHand(table(), royal), 36874U);
    unsigned char pair[7] = {0, 1, 12, 21, 26, 35, 47};
    EXPECT_EQ(rankHand(table(), pair) >> 12, 2U);
}

// Same draws, same deals, same counts as the description followed to the letter.
TEST(HandTable, SamplesTheDescribedDeals) {
    expectSameDraws(evaluateHand2, {50, 44});
    expectSameDraws(evaluateHand5, {50, 44, 3, 17, 29});
    expectSameDraws(evaluateHand6, {50, 44, 3, 17, 29, 41});
    expectSameDraws(evaluateHand7, {50, 44, 3, 17, 29, 41, 8});
}

TEST(HandTable, NobodyToBeatDrawsNothing) {
    unsigned char cards[7] = {50, 44, 3, 17, 29, 41, 8};
    global_urng().seed(5);
    evaluateHand2(cards, 1, table());
    evaluateHand7(cards, 0, table());
    const auto next = global_urng()();
    global_urng().seed(5);
    EXPECT_EQ(next, global_urng()());
}

TEST(HandTable, ATieIsALoss) {
    unsigned char royalBoard[7] = {0, 5, 51, 47, 43, 39, 35};
    EXPECT_EQ(evaluateHand7(royalBoard, 2, table()), 0.0);
    unsigned char nuts[7] = {51, 47, 43, 39, 35, 0, 5};
    EXPECT_EQ(evaluateHand7(nuts, 3, table()), 1.0);
}

} // namespace tamarin::test
