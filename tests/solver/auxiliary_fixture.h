// Auxiliary games and cluster tables that are quick to make: clusters are a scrambling of the
// index, equities reach from 0 to 1.
#pragma once

#include "abstraction/EquityTables.h"
#include "abstraction/large_buffer.h"
#include "solver/cfr.h"
#include "solver/games.h"
#include "support/tree_paths.h"

#include <bit>

#include <gtest/gtest.h>

namespace tamarin::test {

inline GamePtr auxiliaryGameOf(int players, int round) {
    return GamePtr(loadGame((test::inTree("games/") +
                             (round == 0   ? "kuhn.preflop."
                              : round == 1 ? "kuhn.flop."
                              : round == 2 ? "kuhn.turn."
                                           : "kuhn.river.") +
                             std::to_string(players) + "p.game")
                                .c_str()));
}

// Tables of one round and player count. Their arrays are never released by the tables.
class QuickTables {
public:
    QuickTables(int players, int round) : players_(players), round_(round) {
        const size_t size = tables.getRoundSize(round);
        auto clusters = LargeBuffer<uint8_t>::take(size, "clusters");
        auto equities = LargeBuffer<double>::take(size, "equities");
        EXPECT_TRUE(clusters.ok() && equities.ok());
        clusters_ = std::move(*clusters);
        equities_ = std::move(*equities);
        for (size_t i = 0; i < size; ++i)
            clusters_[i] = static_cast<uint8_t>((i * 2654435761U >> 7U) % 101);
        equities_[0] = 1.0; // the range is 0 to 1; the rest stays unread zero pages
        tables.setClusterTable(players, round, clusters_.data());
        tables.setEquityTable(players, round, equities_.data());
    }
    ~QuickTables() { tables.setEquityTable(players_, round_, nullptr); }

    EquityTables tables;

private:
    int players_;
    int round_;
    LargeBuffer<uint8_t> clusters_;
    LargeBuffer<double> equities_;
};

inline void expectSameBits(double a, double b, const std::string& where) {
    EXPECT_EQ(std::bit_cast<uint64_t>(a), std::bit_cast<uint64_t>(b))
        << where << ": " << a << ' ' << b;
}

inline void expectSameNodes(const CFR& a, const CFR& b) {
    for (int p = 0; p < a.getGame().numPlayers; ++p) {
        const NodeMap& left = a.nodeMap(p, 0);
        const NodeMap& right = b.nodeMap(p, 0);
        ASSERT_EQ(left.size(), right.size());
        for (auto i = left.begin(), j = right.begin(); i != left.end(); ++i, ++j) {
            ASSERT_EQ(i->first, j->first);
            for (int k = 0; k < numAbstractedActions; ++k) {
                expectSameBits(i->second->regretSum[k], j->second->regretSum[k], i->first);
                expectSameBits(i->second->strategySum[k], j->second->strategySum[k], i->first);
            }
        }
    }
}

} // namespace tamarin::test
