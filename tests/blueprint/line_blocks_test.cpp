#include "blueprint/line_blocks.h"

#include "blueprint/short_game.h"

#include <gtest/gtest.h>

namespace tamarin {
namespace {

CompiledTree treeOf(const std::string& text) {
    return CompiledTree(*test::parseGame(text));
}

const std::string deepHoldem = test::shortGame(4, 13, "3 4 4 4", "10 10 20 20", "0 3 1 1");

TEST(LineBlocks, LimitHoldemHasBlocksOfSevenLines) {
    const CompiledTree tree = treeOf(deepHoldem);
    const LineBlocks lines(tree);
    ASSERT_EQ(lines.rounds(), 4);
    std::vector<size_t> counts;
    for (int round = 0; round < 4; ++round)
        counts.push_back(lines.roundEnd(round) - lines.roundStart(round));
    EXPECT_EQ(counts, (std::vector<size_t>{1, 1, 9, 81}));
    EXPECT_EQ(lines.blocks()[0].lines, 1U);
    for (size_t b = 1; b < lines.blocks().size(); ++b)
        EXPECT_EQ(lines.blocks()[b].lines, 7U);
}

TEST(LineBlocks, EveryNodeHasOnePlace) {
    for (const auto& text : {deepHoldem, test::shortGame(4, 4, "6 2", "10 20", "0 3"),
                             test::shortGame(4, 4, "0 1 1", "10 20 20", "0 2 1")}) {
        const CompiledTree tree = treeOf(text);
        const LineBlocks lines(tree);
        size_t filled = 0;
        for (const LineBlock& block : lines.blocks())
            for (const auto& node : block.nodes)
                for (const int32_t treeNode : node.treeNodes)
                    filled += treeNode != LineBlock::none ? 1U : 0U;
        EXPECT_EQ(filled, tree.nodes().size());
        for (size_t n = 0; n < tree.nodes().size(); ++n) {
            const auto& place = lines.placeOf(static_cast<int32_t>(n));
            const auto& node = lines.blocks()[place.block].nodes[place.node];
            EXPECT_EQ(node.treeNodes[place.lane], static_cast<int32_t>(n));
            EXPECT_EQ(node.seat, tree.nodes()[n].player);
            EXPECT_EQ(lines.blocks()[place.block].round, tree.nodes()[n].round);
        }
    }
}

// Following edges and blocks leads where the tree leads.
TEST(LineBlocks, EdgesLeadWhereTheTreeLeads) {
    const CompiledTree tree = treeOf(test::shortGame(4, 5, "5 2 1", "10 20 20", "0 3 1"));
    const LineBlocks lines(tree);
    size_t gathered = 0;
    for (const LineBlock& block : lines.blocks())
        for (const auto& edge : block.edges)
            for (size_t lane = 0; lane < block.lines; ++lane) {
                const auto from = static_cast<size_t>(block.nodes[edge.from].treeNodes[lane]);
                const int32_t child = tree.nodes()[from].child[edge.action];
                ASSERT_NE(child, CompiledTree::noChild);
                if (edge.node != LineBlock::none) {
                    EXPECT_EQ(block.nodes[static_cast<size_t>(edge.node)].treeNodes[lane], child);
                    continue;
                }
                const auto& ending = block.endings[static_cast<size_t>(edge.ending)];
                if (ending.kind == LineBlock::EndingKind::nextRound) {
                    const LineBlock& below = lines.blocks()[static_cast<size_t>(ending.below)];
                    gathered += below.gathered ? 1U : 0U;
                    EXPECT_EQ(below.nodes[0].treeNodes[below.gathered ? ending.lane : lane], child);
                    continue;
                }
                const auto& settlement = tree.settlements()[static_cast<size_t>(~child)];
                EXPECT_EQ(settlement.folded[0] + settlement.folded[1],
                          ending.kind == LineBlock::EndingKind::fold ? 1 : 0);
                EXPECT_EQ(ending.stakes[lane], std::min(settlement.spent[0], settlement.spent[1]));
                if (ending.kind == LineBlock::EndingKind::fold) {
                    EXPECT_EQ(settlement.folded[ending.folded], 1);
                }
            }
    EXPECT_EQ(gathered, 11U); // lines that reach the second round, in two blocks
}

TEST(LineBlocks, LastEdgesAreTheSeatsOwn) {
    const LineBlocks lines(treeOf(deepHoldem));
    for (const LineBlock& block : lines.blocks())
        for (const auto& ending : block.endings)
            for (size_t seat = 0; seat < 2; ++seat) {
                if (ending.last[seat] == LineBlock::none)
                    continue;
                const auto& edge = block.edges[static_cast<size_t>(ending.last[seat])];
                EXPECT_EQ(block.nodes[edge.from].seat, seat);
            }
}

} // namespace
} // namespace tamarin
