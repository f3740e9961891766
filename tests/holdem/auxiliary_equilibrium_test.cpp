#include "holdem/auxiliary_equilibrium.h"

#include "solver/auxiliary_fixture.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

void start(AuxiliaryGame& auxiliary, double chance) {
    std::array<double, AuxiliaryGame::numBuckets> chances;
    chances.fill(chance);
    auxiliary.start(chances);
}

// What the average strategies that lie in the game are worth to seat 0.
double valueOf(const AuxiliaryGame& auxiliary, const ClusterMeetings& meetings) {
    const AuxiliaryGame::Values values(auxiliary);
    double sum = 0;
    double total = 0;
    for (uint8_t a = 0; a < AuxiliaryGame::numBuckets; ++a)
        for (uint8_t b = 0; b < AuxiliaryGame::numBuckets; ++b) {
            const uint8_t zeroLooked[] = {a, b};
            const uint8_t oneLooked[] = {b, a};
            const auto add = [&](const uint8_t* buckets, const AuxiliaryGame::Ranks& ranks,
                                 uint64_t times) {
                sum += static_cast<double>(times) *
                       values.ofPair(buckets, AuxiliaryGame::outcome(ranks))[0];
                total += static_cast<double>(times);
            };
            add(zeroLooked, {1, 0, -1}, meetings.beaten(a, b));
            add(zeroLooked, {0, 0, -1}, meetings.tied(a, b));
            add(zeroLooked, {0, 1, -1}, meetings.better(a, b));
            add(oneLooked, {0, 1, -1}, meetings.beaten(a, b));
            add(oneLooked, {0, 0, -1}, meetings.tied(a, b));
            add(oneLooked, {1, 0, -1}, meetings.better(a, b));
        }
    return sum / total;
}

// Three clusters that never tie and never meet themselves make the auxiliary game Kuhn's: an ante
// and a bet of one chip. It is worth -1/18 to whoever begins (Kuhn 1950), who is seat 0 here.
TEST(AuxiliaryEquilibrium, OfThreeCardsIsKuhns) {
    const GamePtr game = auxiliaryGameOf(2, 0);
    AuxiliaryGame auxiliary(*game);
    start(auxiliary, 0.5);
    ClusterMeetings meetings;
    // Whichever seat is looked at: every pair is there in both orders, not equally often.
    for (const auto& [weak, strong] : {std::pair{7U, 40U}, {7U, 100U}, {40U, 100U}}) {
        meetings.add(strong, weak, 3, 0, 0);
        meetings.add(weak, strong, 0, 0, 1);
    }
    AuxiliaryEquilibrium equilibrium(auxiliary, meetings);
    equilibrium.run(1);
    const double early = equilibrium.nashConv();
    equilibrium.run(1'999);
    const double late = equilibrium.nashConv();
    EXPECT_GT(early, 0.1);
    EXPECT_GE(late, 0);
    EXPECT_LT(late, 1e-4);
    equilibrium.write();
    EXPECT_NEAR(valueOf(auxiliary, meetings), -1.0 / 18, 1e-4);

    // Kuhn's equilibria: the middle card is never bet, the weakest calls no bet, the strongest
    // calls every one. Ends in order of the tree: check check, check bet fold, check bet call, bet
    // fold, bet call.
    const auto endings = AuxiliaryGame::Values(auxiliary).endings();
    ASSERT_EQ(endings.size(), 5U);
    EXPECT_NEAR(endings[3].reach[0][40], 0, 1e-3);
    EXPECT_NEAR(endings[4].reach[1][7], 0, 1e-3);
    EXPECT_NEAR(endings[4].reach[1][100], 1, 1e-3);
    EXPECT_NEAR(endings[4].reach[1][40], 1.0 / 3, 1e-2);
    EXPECT_NEAR(endings[2].reach[1][7], 1.0 / 3, 1e-2); // bluffs after a check
    EXPECT_EQ(endings[4].payoff[0], (std::array<double, 3>{-2, 0, 2}));
    EXPECT_EQ(endings[3].payoff[1], (std::array<double, 3>{-1, -1, -1}));
}

TEST(AuxiliaryEquilibrium, TiesAreWorthNothing) {
    const GamePtr game = auxiliaryGameOf(2, 3);
    AuxiliaryGame auxiliary(*game);
    start(auxiliary, 0.5);
    ClusterMeetings meetings;
    meetings.add(3, 3, 0, 9, 0);
    AuxiliaryEquilibrium equilibrium(auxiliary, meetings);
    equilibrium.run(200);
    EXPECT_LT(equilibrium.nashConv(), 1e-3);
    equilibrium.write();
    EXPECT_NEAR(valueOf(auxiliary, meetings), 0, 1e-3);
}

// Buckets that win nearly always never fold, whatever the meetings say, and those that hardly ever
// win never call a bet.
TEST(AuxiliaryEquilibrium, KeepsToTheActionsOfEachBucket) {
    const GamePtr game = auxiliaryGameOf(2, 0);
    AuxiliaryGame auxiliary(*game);
    std::array<double, AuxiliaryGame::numBuckets> chances;
    chances.fill(0.5);
    chances[7] = 0.99;
    chances[100] = 0.01;
    auxiliary.start(chances);
    ClusterMeetings meetings;
    meetings.add(100, 7, 5, 0, 0);
    meetings.add(7, 100, 0, 0, 5);
    AuxiliaryEquilibrium equilibrium(auxiliary, meetings);
    equilibrium.run(50);
    EXPECT_LT(equilibrium.nashConv(), 1e-2);
    equilibrium.write();
    for (const auto& ending : AuxiliaryGame::Values(auxiliary).endings()) {
        const bool folds = ending.payoff[0][0] == ending.payoff[0][2];
        const bool seatOneFolds = ending.payoff[0][0] > 0;
        if (folds) {
            EXPECT_EQ(ending.reach[seatOneFolds ? 1 : 0][7], 0);
        }
        if (!folds && ending.payoff[0][2] == 2) {
            // One seat bet, the other called.
            EXPECT_EQ(ending.reach[0][100] * ending.reach[1][100], 0);
        }
    }
}

} // namespace
} // namespace tamarin::test
