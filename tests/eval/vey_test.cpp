#include "eval/vey.h"

#include "eval/hand_table.h"
#include "eval/hand_value.h"
#include "eval/scratch_directory.h"
#include "eval/seven_card_table.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

std::string printed(void (*print)()) {
    testing::internal::CaptureStdout();
    print();
    return testing::internal::GetCapturedStdout();
}

std::string saidWhileLoading() {
    testing::internal::CaptureStderr();
    loadLookupTables();
    return testing::internal::GetCapturedStderr();
}

size_t lines(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

struct Known {
    const char* path;
    size_t bytes;
};
constexpr std::array<Known, 7> files{{
    {"lookup/tpt", 32487834 * 4UL},
    {"lookup/tpt.indexes", 36875 * 4UL},
    {"lookup/vey.indexes", 2704 * 4UL},
    {"lookup/vey.preflop", 2704 * 8UL},
    {"lookup/vey.flop", 1261078 * 8UL},
    {"lookup/vey.turn", 1261078 * 8UL},
    {"lookup/vey.river", 1261078 * 8UL},
}};

void resize(const char* path, size_t bytes) {
    if (!std::filesystem::exists(path))
        std::ofstream(path).close();
    std::filesystem::resize_file(path, bytes);
}

// As the table saves itself, but without waiting for the disk.
void writeRankTable() {
    const SevenCardTable table = SevenCardTable::generate();
    std::ofstream file("lookup/tpt", std::ios::binary);
    file.write(reinterpret_cast<const char*>(table.data()),
               static_cast<std::streamsize>(sevenCardBytes));
    ASSERT_TRUE(file.good());
}

// The module with its two tables, loaded once: they are large.
class Vey : public testing::Test {
protected:
    static void SetUpTestSuite() {
        directory = std::make_unique<ScratchDirectory>();
        directory->enter();
        std::filesystem::create_directory("lookup");
        writeRankTable();
        ASSERT_TRUE(saveDenseRankTable().ok());
        said = saidWhileLoading();
    }
    static void TearDownTestSuite() {
        freeLookupTables();
        directory.reset();
    }
    void SetUp() override {
        setVEYRNG(&rng);
        init_genrand(&rng, 4711);
    }

    static std::unique_ptr<ScratchDirectory> directory;
    static std::string said;
    rng_state_t rng;
};
std::unique_ptr<ScratchDirectory> Vey::directory;
std::string Vey::said;

// The share of won deals by a shuffle and a showdown that are written out here.
double plainSample(std::vector<unsigned char> cards, size_t players, rng_state_t& rng) {
    std::vector<unsigned char> deck;
    for (unsigned char card = 0; card < 52; ++card)
        if (std::find(cards.begin(), cards.end(), card) == cards.end())
            deck.push_back(card);
    const size_t known = cards.size();
    const size_t drawn = 7 - known;
    cards.resize(7);
    int wins = 0;
    for (int deal = 0; deal < 10000; ++deal) {
        for (size_t i = 0; i < drawn + 2 * (players - 1); ++i)
            std::swap(deck[i], deck[genrand_int32(&rng) % deck.size()]);
        std::copy_n(deck.begin(), drawn, cards.begin() + static_cast<std::ptrdiff_t>(known));
        bool won = true;
        for (size_t k = 0; k + 1 < players; ++k) {
            std::vector<unsigned char> other = cards;
            other[0] = deck[drawn + 2 * k];
            other[1] = deck[drawn + 2 * k + 1];
            won = won && rankHand7(cards.data()) > rankHand7(other.data());
        }
        wins += won;
    }
    return wins / 10000.0;
}

using Evaluate = double (*)(unsigned char*, unsigned int);
using EvaluateTwo = double (*)(unsigned char*);
struct Street {
    size_t known;
    Evaluate evaluate;
    EvaluateTwo evaluateTwo;
};
// By round.
constexpr std::array<Street, 4> streets{{{2, evaluateHand2, evaluateHand2},
                                         {5, evaluateHand5, evaluateHand5},
                                         {6, evaluateHand6, evaluateHand6},
                                         {7, evaluateHand7, evaluateHand7}}};
const std::vector<unsigned char> river{50, 44, 3, 17, 29, 41, 8};

std::vector<unsigned char> firstOf(size_t count) {
    return {river.begin(), river.begin() + static_cast<std::ptrdiff_t>(count)};
}

} // namespace

TEST_F(Vey, RanksFiveToSevenCards) {
    EXPECT_EQ(lines(said), 5U) << said; // the vey.* files, which nobody makes
    EXPECT_EQ(said.find("tpt"), std::string::npos) << said;
    EXPECT_EQ(said.rfind("WARNING: lookup/vey.indexes", 0), 0U) << said;

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
}

// The tuples are of the numbers 1 to 52, which lie one card too high: those of five without a 52
// are the 2,349,060 hands of the cards 2d to As, and these are their categories (0 to 51 would give
// the familiar 1,302,540 high cards and so on). The rest of the numbers is what the table holds.
TEST_F(Vey, SelfTests) {
    EXPECT_EQ(printed(testRankHand5), "Rank 5 hand cards:\n"
                                      "Min value: 0\n"
                                      "Max value: 723662\n"
                                      "Count: 2598960\n"
                                      "Rank High card: 1176825\n"
                                      "Rank One pair: 992640\n"
                                      "Rank Two pair: 111672\n"
                                      "Rank Three of a kind: 49632\n"
                                      "Rank Straight: 9690\n"
                                      "Rank Flush: 4615\n"
                                      "Rank Full house: 3384\n"
                                      "Rank Four of a kind: 564\n"
                                      "Rank Straight flush: 38\n"
                                      "--------------------------------------\n");
    EXPECT_EQ(printed(testRankHand6), "Rank 6 hand cards:\n"
                                      "Min value: 0\n"
                                      "Max value: 823779\n"
                                      "Count: 20358520\n"
                                      "Rank High card: 5839050\n"
                                      "Rank One pair: 8603742\n"
                                      "Rank Two pair: 2240568\n"
                                      "Rank Three of a kind: 647680\n"
                                      "Rank Straight: 334938\n"
                                      "Rank Flush: 181964\n"
                                      "Rank Full house: 146832\n"
                                      "Rank Four of a kind: 12972\n"
                                      "Rank Straight flush: 1714\n"
                                      "--------------------------------------\n");
    EXPECT_EQ(printed(testRankHand7), "Rank 7 hand cards:\n"
                                      "Min value: 0\n"
                                      "Max value: 36874\n"
                                      "Count: 133784560\n"
                                      "Rank High card: 24348855\n"
                                      "Rank One pair: 59197946\n"
                                      "Rank Two pair: 30248853\n"
                                      "Rank Three of a kind: 6712755\n"
                                      "Rank Straight: 5816523\n"
                                      "Rank Flush: 3976373\n"
                                      "Rank Full house: 3221448\n"
                                      "Rank Four of a kind: 220127\n"
                                      "Rank Straight flush: 41674\n"
                                      "--------------------------------------\n");
}

TEST_F(Vey, SamplesTheDescribedDealsOnEveryStreet) {
    for (const Street& street : streets)
        for (unsigned players = 2; players <= 3; ++players) {
            std::vector<unsigned char> cards = firstOf(street.known);
            rng_state_t again;
            init_genrand(&again, 4711);
            init_genrand(&rng, 4711);
            EXPECT_EQ(street.evaluate(cards.data(), players), plainSample(cards, players, again))
                << street.known << " cards, " << players << " players";
            EXPECT_EQ(genrand_int32(&rng), genrand_int32(&again)) << "another number of draws";
        }
}

TEST_F(Vey, WithoutANumberOfPlayersThereAreTwo) {
    for (const Street& street : streets) {
        std::vector<unsigned char> cards = firstOf(street.known);
        init_genrand(&rng, 1);
        const double alone = street.evaluateTwo(cards.data());
        init_genrand(&rng, 1);
        EXPECT_EQ(alone, street.evaluate(cards.data(), 2)) << street.known << " cards";
        init_genrand(&rng, 1);
        EXPECT_NE(alone, street.evaluate(cards.data(), 3)) << street.known << " cards";
    }
}

TEST_F(Vey, KnownEquities) {
    unsigned char aces[2] = {51, 50};
    EXPECT_NEAR(evaluateHand2(aces), 0.84932, 0.02);
    EXPECT_EQ(evaluateHand2(aces, 1), 1.0);
    unsigned char tied[7] = {0, 5, 51, 47, 43, 39, 35};
    EXPECT_EQ(evaluateHand7(tied), 0.0);
    unsigned char royal[7] = {51, 47, 43, 39, 35, 0, 5};
    EXPECT_EQ(evaluateHand5(royal), 1.0);
}

TEST_F(Vey, ChancesOfAStateAreThoseOfItsRound) {
    MatchState match{};
    match.viewingPlayer = 1;
    std::copy_n(river.begin(), 2, match.state.holeCards[1]);
    std::copy_n(river.begin() + 2, 5, match.state.boardCards);
    for (uint8_t round = 0; round < 4; ++round) {
        const Street& street = streets[round];
        std::vector<unsigned char> cards = firstOf(street.known);
        init_genrand(&rng, 9);
        const double two = street.evaluate(cards.data(), 2);
        const double three = street.evaluate(cards.data(), 3);
        match.state.round = round;
        double result[4] = {-7, -7, -7, -7};
        init_genrand(&rng, 9);
        winProb(&match, result);
        EXPECT_EQ(result[0], -7);
        EXPECT_EQ(result[1], 1.0);
        EXPECT_EQ(result[2], two) << "round " << int{round};
        EXPECT_EQ(result[3], three) << "round " << int{round};
    }
    match.state.round = 4;
    double result[4] = {-7, -7, -7, -7};
    winProb(&match, result);
    EXPECT_EQ(result[0], -7);
    for (int n = 1; n <= 3; ++n)
        EXPECT_EQ(result[n], 0.0);
}

TEST(VeyFiles, HaveTheseSizesAndNoOthers) {
    const ScratchDirectory directory;
    directory.enter();
    std::filesystem::create_directory("lookup");
    for (const Known& file : files)
        resize(file.path, file.bytes);
    EXPECT_EQ(saidWhileLoading(), "");
    freeLookupTables();
    for (const int difference : {-1, 4, 8}) {
        std::string expected;
        for (const Known& file : files) {
            const size_t bytes = file.bytes + static_cast<size_t>(difference);
            resize(file.path, bytes);
            expected += "WARNING: " + std::string(file.path) + " has " + std::to_string(bytes) +
                        " bytes, not " + std::to_string(file.bytes) + ": the table is all zeros\n";
        }
        EXPECT_EQ(saidWhileLoading(), expected);
        freeLookupTables();
    }
}

// The beginning of a table that is cut was once used, with zeros after it.
TEST(VeyFiles, OfAnotherSizeAreNotUsed) {
    const ScratchDirectory directory;
    directory.enter();
    std::string said = saidWhileLoading();
    EXPECT_EQ(lines(said), 7U) << said;
    unsigned char royal[7] = {51, 47, 43, 39, 35, 0, 5};
    EXPECT_EQ(rankHand7(royal), 0U);
    freeLookupTables();

    std::filesystem::create_directory("lookup");
    writeRankTable();
    resize("lookup/tpt", sevenCardBytes - 1);
    saidWhileLoading();
    EXPECT_EQ(rankHand7(royal), 0U);
    freeLookupTables();
}

TEST(VeyFiles, DamagedEntriesLeadNowhere) {
    const ScratchDirectory directory;
    directory.enter();
    std::filesystem::create_directory("lookup");
    writeRankTable();
    ASSERT_TRUE(saveDenseRankTable().ok());
    const auto write = [](size_t entry, int32_t value) {
        std::fstream file("lookup/tpt", std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(entry * 4));
        file.write(reinterpret_cast<const char*>(&value), sizeof value);
    };
    unsigned char hand[7] = {0, 4, 8, 12, 21, 30, 39};
    for (const int32_t outside : {-1, static_cast<int32_t>(sevenCardEntries - 52)}) {
        write(54, outside);
        const std::string said = saidWhileLoading();
        EXPECT_EQ(said.rfind("WARNING: lookup/tpt leads outside of itself: the table is all "
                             "zeros\n",
                             0),
                  0U)
            << said;
        EXPECT_EQ(rankHand7(hand), 0U);
        freeLookupTables();
    }
}

// Every look-up leads to the last state that is inside, and none out of the tables: not that of the
// self-tests' number 52, nor the conversion of what is no value.
TEST(VeyFiles, OfNothingButTheLastStateAreSafe) {
    const ScratchDirectory directory;
    directory.enter();
    std::filesystem::create_directory("lookup");
    {
        const std::vector<int32_t> entries(sevenCardEntries,
                                           static_cast<int32_t>(sevenCardEntries - 53));
        std::ofstream file("lookup/tpt", std::ios::binary);
        file.write(reinterpret_cast<const char*>(entries.data()),
                   static_cast<std::streamsize>(sevenCardBytes));
    }
    ASSERT_TRUE(saveDenseRankTable().ok());
    saidWhileLoading();
    unsigned char hand[7] = {0, 4, 8, 12, 21, 30, 51};
    EXPECT_EQ(rankHand7(hand), sevenCardEntries - 53);
    EXPECT_EQ(rankHand5C(hand), 0);
    EXPECT_EQ(rankHand6C(hand), 0);
    EXPECT_EQ(rankHand7C(hand), 0);
    (void)printed(testRankHand5);
    freeLookupTables();
}

TEST(VeyHands, ArePrinted) {
    testing::internal::CaptureStdout();
    unsigned char hand[7] = {51, 47, 43, 39, 35, 0, 5};
    printHand(hand, 7);
    printHand(hand, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "AsKsQsJsTs2c3d\n\n");
}

} // namespace tamarin::test
