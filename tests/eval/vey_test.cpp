#include "eval/vey.h"

#include "eval/hand_table.h"
#include "eval/hand_value.h"
#include "eval/scratch_directory.h"
#include "eval/seven_card_table.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace tamarin;

namespace {

std::string printed(void (*print)()) {
    testing::internal::CaptureStdout();
    print();
    return testing::internal::GetCapturedStdout();
}

size_t lines(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

// The number after the label at a line's start.
long numberAfter(const std::string& text, const std::string& label) {
    const size_t at = text.find("\n" + label);
    EXPECT_NE(at, std::string::npos) << label;
    return at == std::string::npos ? -1 : std::stol(text.substr(at + 1 + label.size()));
}

void checkSelfTest(void (*print)(), const std::string& cards, long tuples, long possible) {
    const std::string text = printed(print);
    EXPECT_EQ(text.rfind("Rank " + cards + " hand cards:\nMin value: ", 0), 0U) << text;
    EXPECT_EQ(lines(text), 14U) << text;
    EXPECT_EQ(numberAfter(text, "Count: "), tuples);
    EXPECT_EQ(text.substr(text.size() - 40), "\n" + std::string(38, '-') + "\n");
    long counted = 0;
    size_t last = 0;
    for (const char* name : categoryNames) {
        counted += numberAfter(text, "Rank " + std::string(name) + ": ");
        const size_t at = text.find("Rank " + std::string(name) + ": ");
        EXPECT_GT(at, last);
        last = at;
    }
    // Every tuple without a 52 is a hand of the cards 3c..As; the others may look like one.
    EXPECT_GE(counted, possible);
    EXPECT_LE(counted, tuples);
}

} // namespace

// One case for everything that needs the files, since they are large.
TEST(Vey, RanksAndSamplesFromItsFiles) {
    const ScratchDirectory directory;
    directory.enter();
    std::filesystem::create_directory("lookup");
    ASSERT_TRUE(SevenCardTable::generate().save("lookup/tpt").ok());
    ASSERT_TRUE(saveDenseRankTable().ok());
    testing::internal::CaptureStderr();
    loadLookupTables();
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(lines(said), 5U) << said; // the vey.* files, which nobody makes
    EXPECT_EQ(said.find("tpt"), std::string::npos) << said;

    // Ranking.
    unsigned char royal[7] = {51, 47, 43, 39, 35, 0, 5};
    EXPECT_EQ(rankHand5(royal), 36874U);
    EXPECT_EQ(rankHand6(royal), 36874U);
    EXPECT_EQ(rankHand7(royal), 36874U);
    EXPECT_EQ(rankHand5C(royal), 7462);
    EXPECT_EQ(rankHand6C(royal), 7462);
    EXPECT_EQ(rankHand7C(royal), 7462);
    unsigned char lowest[5] = {0, 4, 8, 12, 21};
    EXPECT_EQ(rankHand5(lowest), 4097U);
    EXPECT_EQ(rankHand5C(lowest), 1);

    // The same value as by a table that the caller holds.
    std::ifstream file("lookup/tpt", std::ios::binary);
    std::vector<int> entries(sevenCardEntries);
    file.read(reinterpret_cast<char*>(entries.data()),
              static_cast<std::streamsize>(sevenCardBytes));
    ASSERT_TRUE(file);
    unsigned char hand[7] = {3, 17, 44, 22, 9, 50, 31};
    EXPECT_EQ(rankHand7(hand), rankHand(entries.data(), hand));

    // Self-tests. 52 numbers give C(52, n) tuples; C(51, n) of them hold no 52.
    checkSelfTest(testRankHand5, "5", 2598960, 2349060);
    checkSelfTest(testRankHand6, "6", 20358520, 18009460);

    // Sampling: the same deals as a shuffle written out here.
    rng_state_t rng;
    init_genrand(&rng, 4711);
    setVEYRNG(&rng);
    unsigned char turn[6] = {50, 44, 3, 17, 29, 41};
    const double sampled = evaluateHand6(turn, 3);
    rng_state_t again;
    init_genrand(&again, 4711);
    std::vector<unsigned char> deck;
    for (unsigned char card = 0; card < 52; ++card)
        if (std::find(turn, turn + 6, card) == turn + 6)
            deck.push_back(card);
    int wins = 0;
    for (int deal = 0; deal < 10000; ++deal) {
        for (size_t i = 0; i < 5; ++i)
            std::swap(deck[i], deck[genrand_int32(&again) % 46]);
        unsigned char own[7] = {50, 44, 3, 17, 29, 41, deck[0]};
        unsigned char first[7] = {deck[1], deck[2], 3, 17, 29, 41, deck[0]};
        unsigned char second[7] = {deck[3], deck[4], 3, 17, 29, 41, deck[0]};
        wins += rankHand7(own) > rankHand7(first) && rankHand7(own) > rankHand7(second);
    }
    EXPECT_EQ(sampled, wins / 10000.0);
    EXPECT_EQ(genrand_int32(&rng), genrand_int32(&again));

    // Without a number of players there are two.
    unsigned char aces[2] = {51, 50};
    init_genrand(&rng, 1);
    const double alone = evaluateHand2(aces);
    init_genrand(&rng, 1);
    EXPECT_EQ(alone, evaluateHand2(aces, 2));
    EXPECT_NEAR(alone, 0.84932, 0.02);
    EXPECT_EQ(evaluateHand2(aces, 1), 1.0);
    unsigned char tied[7] = {0, 5, 51, 47, 43, 39, 35};
    EXPECT_EQ(evaluateHand7(tied), 0.0);
    EXPECT_EQ(evaluateHand5(royal), 1.0);

    // A state's chances by round.
    MatchState match{};
    match.viewingPlayer = 1;
    match.state.holeCards[1][0] = 51;
    match.state.holeCards[1][1] = 47;
    const uint8_t board[5] = {43, 39, 35, 2, 7};
    std::copy_n(board, 5, match.state.boardCards);
    for (uint8_t round = 0; round < 4; ++round) {
        match.state.round = round;
        double result[4] = {-7, -7, -7, -7};
        winProb(&match, result);
        EXPECT_EQ(result[0], -7);
        EXPECT_EQ(result[1], 1.0);
        EXPECT_EQ(result[2] == 1.0, round > 0) << int{round};
        EXPECT_GE(result[2], result[3]);
    }
    match.state.round = 4;
    double result[4] = {-7, -7, -7, -7};
    winProb(&match, result);
    EXPECT_EQ(result[0], -7);
    EXPECT_EQ(result[1] + result[2] + result[3], 0.0);
    freeLookupTables();
}

TEST(Vey, SaysWhenItsTableIsShortOrMissing) {
    const ScratchDirectory directory;
    directory.enter();
    testing::internal::CaptureStderr();
    loadLookupTables();
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(lines(said), 7U) << said;
    EXPECT_NE(said.find("ERROR: could not open lookup/tpt:"), std::string::npos) << said;
    unsigned char royal[7] = {51, 47, 43, 39, 35, 0, 5};
    EXPECT_EQ(rankHand7(royal), 0U);
    const std::string selfTest = printed(testRankHand5);
    EXPECT_EQ(numberAfter(selfTest, "Count: "), 2598960);
    EXPECT_EQ(numberAfter(selfTest, "Rank High card: "), 0);
    freeLookupTables();

    std::filesystem::create_directory("lookup");
    std::ofstream("lookup/tpt") << "abc";
    testing::internal::CaptureStderr();
    loadLookupTables();
    said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("ERROR: lookup/tpt holds 0 elements, not 32487834"), std::string::npos)
        << said;
    freeLookupTables();
}

TEST(Vey, PrintsHands) {
    testing::internal::CaptureStdout();
    unsigned char hand[7] = {51, 47, 43, 39, 35, 0, 5};
    printHand(hand, 7);
    printHand(hand, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "AsKsQsJsTs2c3d\n\n");
}
