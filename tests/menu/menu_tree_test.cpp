#include "menu/menu_tree.h"

#include "game/games.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

BettingMenu menuOf(const std::string& text) {
    auto menu = BettingMenu::parse(text, "menu");
    EXPECT_TRUE(menu.ok()) << (menu ? "" : menu.error());
    return std::move(*menu);
}

BettingMenu menuFile(const std::string& name) {
    auto menu = BettingMenu::read(test::inTree("menus/" + name));
    EXPECT_TRUE(menu.ok());
    return std::move(*menu);
}

// Follows the rules beside the tree: each edge legal, each child where the hand then is, numbers
// without gaps.
class Follow {
public:
    Follow(const Game& game, const MenuTree& tree) : game_(game), tree_(tree) {}

    void whole() {
        State state{};
        initState(&game_, 0, &state);
        visit(0, state);
        EXPECT_EQ(next_, static_cast<int32_t>(tree_.nodes().size()));
        for (int round = 0; round < MAX_ROUNDS; ++round)
            for (int seat = 0; seat < MAX_PLAYERS; ++seat)
                EXPECT_EQ(tree_.numbersOf(round, seat), (numbers_[{round, seat}]));
    }

private:
    void visit(int32_t child, const State& state) {
        if (child < 0) {
            ASSERT_TRUE(state.finished);
            const auto& end = tree_.settlements()[static_cast<size_t>(~child)];
            for (size_t p = 0; p < game_.numPlayers; ++p) {
                ASSERT_EQ(end.spent[p], state.spent[p]);
                ASSERT_EQ(end.folded[p], state.playerFolded[p]);
            }
            return;
        }
        ASSERT_FALSE(state.finished);
        ASSERT_EQ(child, next_++);
        const MenuTree::Node& node = tree_.node(child);
        ASSERT_EQ(node.seat, currentPlayer(&game_, &state));
        ASSERT_EQ(node.round, state.round);
        size_t& numbers = numbers_[{node.round, node.seat}];
        ASSERT_EQ(node.numbers, numbers);
        numbers += node.numEdges;
        ASSERT_GT(node.numEdges, 0);
        for (size_t e = 0; e < node.numEdges; ++e) {
            Action action = tree_.action(node, e);
            const Action before = action;
            ASSERT_TRUE(isValidAction(&game_, &state, 0, &action));
            ASSERT_EQ(before.size, action.size);
            if (e > 0) {
                const Action last = tree_.action(node, e - 1);
                ASSERT_TRUE(last.type < action.type || last.size < action.size);
            }
            State below = state;
            doAction(&game_, &action, &below);
            visit(tree_.edges(node)[e].child, below);
        }
    }

    const Game& game_;
    const MenuTree& tree_;
    int32_t next_ = 0;
    std::map<std::pair<int, int>, size_t> numbers_;
};

const char* const threeSeats = R"(GAMEDEF
nolimit
numPlayers = 3
numRounds = 2
stack = 100 170 40
blind = 5 10 0
firstPlayer = 3 1
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3
END GAMEDEF
)";

TEST(MenuTree, IsWhatTheRulesHave) {
    const GamePtr noLimit = test::loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    for (const char* name : {"tiny.menu", "middle.menu"}) {
        const MenuTree tree(*noLimit, menuFile(name));
        Follow(*noLimit, tree).whole();
    }
    const GamePtr three = test::parseGame(threeSeats);
    const MenuTree tree(*three, menuOf("bets = 1/2 1 A\nopponents = min"), 1);
    EXPECT_GT(tree.nodes().size(), 1000U);
    Follow(*three, tree).whole();
    for (const char* name : {"holdem.limit.2p.reverse_blinds.game", "kuhn.limit.3p.game"}) {
        const GamePtr limit = test::loadGameFile(name);
        Follow(*limit, MenuTree(*limit)).whole();
    }
}

// A test of sizes alone would pass with a tree that lacks nodes.
TEST(MenuTree, HasSoManyNodes) {
    const GamePtr game = test::loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    const auto count = [&](const char* name) {
        const MenuTree tree(*game, menuFile(name));
        return std::array<size_t, 5>{tree.nodes().size(), tree.nodesIn(0), tree.nodesIn(1),
                                     tree.nodesIn(2), tree.nodesIn(3)};
    };
    EXPECT_EQ(count("tiny.menu"), (std::array<size_t, 5>{1360, 20, 100, 340, 900}));
    EXPECT_EQ(count("middle.menu"), (std::array<size_t, 5>{28352, 40, 568, 4504, 23240}));
    EXPECT_EQ(count("wide.menu"), (std::array<size_t, 5>{117552, 368, 3896, 22336, 90952}));
}

TEST(MenuTree, OfALimitGameIsTheCompiledTree) {
    for (const char* name :
         {"holdem.limit.2p.reverse_blinds.game", "leduc.limit.2p.game", "kuhn.limit.3p.game"}) {
        const GamePtr game = test::loadGameFile(name);
        const MenuTree tree(*game);
        const CompiledTree compiled(*game);
        ASSERT_EQ(tree.nodes().size(), compiled.nodes().size());
        for (size_t n = 0; n < tree.nodes().size(); ++n) {
            const MenuTree::Node& node = tree.nodes()[n];
            const CompiledTree::Node& other = compiled.nodes()[n];
            ASSERT_EQ(node.seat, other.player);
            ASSERT_EQ(node.round, other.round);
            size_t edge = 0;
            for (int a = 0; a < numAbstractedActions; ++a) {
                if (other.child[a] == CompiledTree::noChild)
                    continue;
                ASSERT_LT(edge, node.numEdges);
                ASSERT_EQ(tree.action(node, edge).type, a);
                ASSERT_EQ(tree.edges(node)[edge].child, other.child[a]);
                ++edge;
            }
            ASSERT_EQ(edge, node.numEdges);
        }
        ASSERT_EQ(tree.settlements().size(), compiled.settlements().size());
    }
}

TEST(MenuTree, OnlyOpponentsHaveTheirSizesBesides) {
    const GamePtr game = test::loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    const BettingMenu menu = menuOf("bets = 1 A\nopponents = min");
    for (const int own : {0, 1}) {
        const MenuTree tree(*game, menu, own);
        const MenuTree::Node& root = tree.node(0);
        EXPECT_EQ(root.seat, 1);
        EXPECT_EQ(root.numEdges, own == 1 ? 4 : 5);
        const MenuTree::Node& limped = tree.node(tree.edges(root)[1].child);
        EXPECT_EQ(limped.seat, 0);
        EXPECT_EQ(tree.action(limped, 1).size, own == 0 ? 300 : 200);
    }
    EXPECT_EQ(MenuTree(*game, menu).nodes().size(), 1360U);
    EXPECT_GT(MenuTree(*game, menu, 0).nodes().size(), 2000U);
}

TEST(MenuTree, LargeOnesAreRefused) {
    const GamePtr game = test::loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    EXPECT_THROW(MenuTree(*game, menuFile("tiny.menu"), {}, 1359), std::length_error);
    EXPECT_NO_THROW(MenuTree(*game, menuFile("tiny.menu"), {}, 1360));
}

} // namespace
} // namespace tamarin
