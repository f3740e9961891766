#include "holdem/cluster_meetings.h"

#include <map>
#include <random>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

struct Deal {
    Deal(std::mt19937& random, size_t left) : cardsLeft(left) {
        for (size_t h = 0; h < numHoldings(left); ++h) {
            values.push_back(static_cast<uint16_t>(random() % 50 * 1009));
            // Few clusters, the highest among them, and weights that go with neither.
            clusters.push_back(static_cast<uint8_t>(random() % 8 == 0 ? 100 : random() % 7 * 3));
            weights.push_back(static_cast<uint8_t>(random() % (ClusterMeetings::mostWeight + 1)));
        }
        times = 1 + static_cast<uint32_t>(random() % ClusterMeetings::mostTimes);
    }

    size_t cardsLeft;
    std::vector<uint16_t> values;
    std::vector<uint8_t> clusters;
    std::vector<uint8_t> weights;
    uint32_t times = 0;
};

// Own cluster, the other's, and -1, 0 or 1 as the own hand is worse, as good or better.
using Plain = std::map<std::tuple<size_t, size_t, int>, uint64_t>;

void addPlain(Plain& counts, const Deal& board) {
    const auto forEachHolding = [&](const auto& visit) {
        for (size_t high = 1; high < board.cardsLeft; ++high)
            for (size_t low = 0; low < high; ++low)
                visit(low, high, holdingNumber(low, high));
    };
    forEachHolding([&](size_t a, size_t b, size_t own) {
        forEachHolding([&](size_t c, size_t d, size_t other) {
            if (c == a || c == b || d == a || d == b)
                return;
            const int order = (board.values[own] > board.values[other]) -
                              (board.values[own] < board.values[other]);
            counts[{board.clusters[own], board.clusters[other], order}] +=
                uint64_t{board.weights[own]} * board.times;
        });
    });
}

void add(ClusterMeetings& meetings, const Deal& board) {
    meetings.addBoard(HoldingOrder(board.values.data(), board.cardsLeft), board.clusters.data(),
                      board.weights.data(), board.times);
}

void expectPlain(const ClusterMeetings& meetings, Plain& counts) {
    for (size_t own = 0; own < ClusterMeetings::numClusters; ++own)
        for (size_t other = 0; other < ClusterMeetings::numClusters; ++other) {
            const uint64_t better = counts[{own, other, -1}];
            const uint64_t tied = counts[{own, other, 0}];
            const uint64_t worse = counts[{own, other, 1}];
            ASSERT_EQ(meetings.beaten(own, other), worse) << own << ' ' << other;
            ASSERT_EQ(meetings.tied(own, other), tied) << own << ' ' << other;
            ASSERT_EQ(meetings.better(own, other), better) << own << ' ' << other;
            ASSERT_EQ(meetings.any(own, other), worse + tied + better) << own << ' ' << other;
        }
}

TEST(ClusterMeetings, CountEveryPairOfHoldings) {
    std::mt19937 random(4);
    ClusterMeetings meetings;
    Plain counts;
    for (const size_t cardsLeft : {47U, 49U, 52U}) {
        const Deal board(random, cardsLeft);
        add(meetings, board);
        addPlain(counts, board);
        expectPlain(meetings, counts);
    }
}

TEST(ClusterMeetings, AddUp) {
    std::mt19937 random(5);
    const Deal first(random, 20);
    const Deal second(random, 9);
    ClusterMeetings sum;
    add(sum, first);
    ClusterMeetings other;
    add(other, second);
    other.add(100, 3, 5, 7, uint64_t{11} << 40U);
    sum.add(other);
    Plain counts;
    addPlain(counts, first);
    addPlain(counts, second);
    counts[{100, 3, 1}] += 5;
    counts[{100, 3, 0}] += 7;
    counts[{100, 3, -1}] += uint64_t{11} << 40U;
    expectPlain(sum, counts);
}

// All holdings in one cluster at the greatest weight: what 32 bits hold is soon full.
TEST(ClusterMeetings, CountMoreThan32BitsHold) {
    std::mt19937 random(6);
    Deal board(random, deckCards);
    std::fill(board.values.begin(), board.values.end(), uint16_t{1});
    std::fill(board.clusters.begin(), board.clusters.end(), uint8_t{42});
    std::fill(board.weights.begin(), board.weights.end(), uint8_t{ClusterMeetings::mostWeight});
    board.times = ClusterMeetings::mostTimes;
    ClusterMeetings meetings;
    for (int i = 0; i < 100; ++i)
        add(meetings, board);
    EXPECT_EQ(meetings.tied(42, 42), uint64_t{100} * 72 * 1326 * 1225);
    EXPECT_EQ(meetings.any(42, 42), uint64_t{100} * 72 * 1326 * 1225);
    EXPECT_EQ(meetings.any(41, 42), 0U);
    EXPECT_EQ(meetings.any(42, 43), 0U);
}

} // namespace
} // namespace tamarin::test
