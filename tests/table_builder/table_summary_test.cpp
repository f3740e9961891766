#include "table_builder/table_summary.h"

#include "abstraction/sparse_tables.h"

#include <cmath>
#include <limits>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Summary = PlayingDirectory;

TableSummary summaryOf(const std::string& path, int threads = 0) {
    const TableFile* const file = tableNamed(path);
    EXPECT_NE(file, nullptr) << path;
    const auto summary = summarise(*file, path, threads);
    EXPECT_TRUE(summary.ok()) << summary.error();
    return summary ? *summary : TableSummary{};
}

TEST_F(Summary, NumbersAreSpreadOverTheirRange) {
    std::vector<double> equities(roundSizes[0]);
    for (size_t i = 0; i < equities.size(); ++i)
        equities[i] = (static_cast<double>(168 - i) + (i % 168 == 0 ? 0 : 0.3)) / 168; // no edges
    writeSparse(equityPath(2, 0), roundSizes[0], equities);
    const TableSummary summary = summaryOf(equityPath(2, 0));
    EXPECT_EQ(summary.entries, 169U);
    EXPECT_EQ(summary.least.value, 0);
    EXPECT_EQ(summary.least.index, 168U);
    EXPECT_EQ(summary.greatest.value, 1);
    EXPECT_EQ(summary.greatest.index, 0U);
    EXPECT_NEAR(summary.mean, 0.5 + 167 * 0.3 / 168 / 169, 1e-12);
    EXPECT_EQ(summary.all, equities);
    ASSERT_EQ(summary.histogram.size(), 20U);
    uint64_t sum = 0;
    for (const TableSummary::Bin& bin : summary.histogram) {
        uint64_t inside = 0;
        for (const double equity : equities)
            inside += equity >= bin.from && (equity < bin.to || bin.to == 1);
        EXPECT_EQ(bin.entries, inside) << bin.from;
        sum += bin.entries;
    }
    EXPECT_EQ(sum, 169U);
}

TEST_F(Summary, LevelsHaveABinEach) {
    writeSparse<uint8_t>(holdemPath(3, 0, 2), roundSizes[0], {9, 9, 3});
    TableSummary summary = summaryOf(holdemPath(3, 0, 2));
    ASSERT_EQ(summary.histogram.size(), 10U);
    EXPECT_EQ(summary.histogram[0].entries, 166U);
    EXPECT_EQ(summary.histogram[3].entries, 1U);
    EXPECT_EQ(summary.histogram[9].entries, 2U);
    EXPECT_EQ(summary.histogram[9].from, 9);
    EXPECT_EQ(summary.histogram[9].to, 9);
    // A damaged one shows what is in it.
    writeSparse<uint8_t>(clusterPath(2, 0), roundSizes[0], {200});
    summary = summaryOf(clusterPath(2, 0));
    ASSERT_EQ(summary.histogram.size(), 201U);
    EXPECT_EQ(summary.histogram[200].entries, 1U);
}

TEST_F(Summary, CountsWhatIsNoNumber) {
    const double none = std::nan("");
    writeSparse<double>(equityPath(3, 0), roundSizes[0], {none, 0.5, none});
    TableSummary summary = summaryOf(equityPath(3, 0));
    EXPECT_EQ(summary.notNumbers, 2U);
    EXPECT_EQ(summary.greatest.index, 1U);
    EXPECT_EQ(summary.histogram.front().entries, 166U);
    EXPECT_EQ(summary.histogram.back().entries, 1U);
    writeSparse(equityPath(3, 0), roundSizes[0], std::vector<double>(roundSizes[0], none));
    summary = summaryOf(equityPath(3, 0));
    EXPECT_EQ(summary.notNumbers, 169U);
    EXPECT_TRUE(summary.histogram.empty());
}

// No range has room for it: places in the histogram were once computed from infinity.
TEST_F(Summary, InfinityIsNoNumber) {
    const double infinity = std::numeric_limits<double>::infinity();
    writeSparse<double>(equityPath(2, 0), roundSizes[0], {infinity, 0.5, -infinity});
    const TableSummary summary = summaryOf(equityPath(2, 0));
    EXPECT_EQ(summary.notNumbers, 2U);
    EXPECT_EQ(summary.least.value, 0);
    EXPECT_EQ(summary.greatest.value, 0.5);
    EXPECT_EQ(summary.histogram.front().entries, 166U);
    EXPECT_EQ(summary.histogram.back().entries, 1U);
}

TEST_F(Summary, OneValueIsOneBin) {
    writeSparse<double>(equityPath(2, 0), roundSizes[0]);
    const TableSummary summary = summaryOf(equityPath(2, 0));
    ASSERT_EQ(summary.histogram.size(), 1U);
    EXPECT_EQ(summary.histogram[0].entries, 169U);
}

TEST_F(Summary, IsTheSameWithAnyNumberOfThreads) {
    std::vector<double> equities(roundSizes[1]);
    for (size_t i = 0; i < equities.size(); ++i)
        equities[i] = std::sin(static_cast<double>(i)) * 1e3;
    writeSparse(equityPath(2, 1), roundSizes[1], equities);
    const TableSummary one = summaryOf(equityPath(2, 1), 1);
    const TableSummary three = summaryOf(equityPath(2, 1), 3);
    EXPECT_EQ(one.mean, three.mean);
    EXPECT_EQ(one.least.index, three.least.index);
    for (size_t b = 0; b < one.histogram.size(); ++b)
        EXPECT_EQ(one.histogram[b].entries, three.histogram[b].entries);
    EXPECT_TRUE(one.all.empty());
}

TEST_F(Summary, RefusesAnotherSize) {
    writeSparse<double>(equityPath(2, 0), 10);
    const auto summary = summarise(*tableNamed("preflop_2p"), equityPath(2, 0));
    ASSERT_FALSE(summary.ok());
    EXPECT_EQ(summary.error(), "lookup/preflop_2p has 80 bytes, not 1352");
}

TEST(TableNamed, KnowsTheTablesInAnyDirectory) {
    EXPECT_EQ(tableNamed("a/b/river_3p_c")->path, "lookup/river_3p_c");
    EXPECT_EQ(tableNamed("tpt.indexes")->path, "lookup/tpt.indexes");
    EXPECT_EQ(tableNamed("lookup/river_4p"), nullptr);
    EXPECT_EQ(tableNamed("river_3p.bad"), nullptr);
    EXPECT_EQ(tableNamed("strategies/x/strategy0"), nullptr);
    EXPECT_EQ(tableNamed(""), nullptr);
}

TEST(StartingHands, FillTheSquare) {
    std::set<std::pair<int, int>> places;
    std::set<std::string> names;
    int combinations = 0;
    for (size_t i = 0; i < startingHands().size(); ++i) {
        const StartingHand& hand = startingHands()[i];
        places.insert({hand.row, hand.column});
        names.insert(hand.name);
        combinations += hand.combinations;
        const std::string cards = handAt(0, i);
        ASSERT_EQ(cards.size(), 4U);
        if (hand.row < hand.column) {
            EXPECT_EQ(hand.name[2], 's');
            EXPECT_EQ(cards[1], cards[3]);
        }
    }
    EXPECT_EQ(places.size(), 169U);
    EXPECT_EQ(names.size(), 169U);
    EXPECT_EQ(combinations, 1326);
    EXPECT_TRUE(names.contains("AKs") && names.contains("AKo") && names.contains("22"));
    EXPECT_EQ(handAt(3, roundSizes[3]), "");
    EXPECT_EQ(handAt(1, 0).size(), 11U);
}

} // namespace
} // namespace tamarin::test
