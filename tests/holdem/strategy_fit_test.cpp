#include "holdem/strategy_fit.h"

#include "game/games.h"
#include "holdem/read_strategy.h"
#include "holdem/sets.h"
#include "strategy/strategy_file.h"
#include "support/temp_directory.h"

#include <array>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

GamePtr withRaises(const char* definition, std::array<uint8_t, MAX_ROUNDS> raises) {
    GamePtr game = parseGame(definition);
    std::copy(raises.begin(), raises.end(), game->maxRaises);
    return game;
}

// The sets of a game, but for what stands under one key.
class Altered : public NodeStore {
public:
    using Change = std::function<void(CFRNode& node)>;

    explicit Altered(const HoldemSets& sets) : sets_(sets) {}
    Altered(const HoldemSets& sets, int map, std::string key, Change change)
        : sets_(sets), map_(map), key_(std::move(key)), change_(std::move(change)) {}

    size_t count(int m) const override { return sets_.count(m) - (m == map_ && !change_); }
    bool forEach(int m, const Visit& visit) const override {
        return sets_.forEach(m, [&](const std::string& key, const CFRNode&) {
            CFRNode node;
            return !find(m, key, node) || visit(key, node);
        });
    }
    bool find(int m, const std::string& key, CFRNode& node) const override {
        if (!sets_.find(m, key, node))
            return false;
        if (m != map_ || key != key_)
            return true;
        if (change_)
            change_(node);
        return static_cast<bool>(change_);
    }

private:
    const HoldemSets& sets_;
    int map_ = -1;
    std::string key_;
    Change change_; // none: the node is not there
};

void loseFold(CFRNode& node) {
    node.setActionInvalid(actionFold);
}
void damageSum(CFRNode& node) {
    node.strategySum[actionCall] = -1.0;
}
void damageRegret(CFRNode& node) {
    node.regretSum[actionCall] = std::numeric_limits<double>::infinity();
}

// The last key of each map: whoever looks at the first alone does not see it.
std::string lastKey(const HoldemSets& sets, int m) {
    std::string last;
    sets.forEach(m, [&](const std::string& key, const CFRNode&) {
        last = key;
        return true;
    });
    return last;
}

} // namespace

TEST(HoldemFit, OfTwoPlayersIsEverySetSound) {
    const GamePtr game = withRaises(twoPlayerLimit, {1, 2, 1, 1});
    const HoldemSets sets(*game);
    EXPECT_TRUE(holdsHoldemGame(sets, *game));
    EXPECT_TRUE(holdsHoldemGame(Altered(sets), *game));
    for (int m = 0; m < 8; ++m) {
        const std::string key = lastKey(sets, m);
        EXPECT_FALSE(holdsHoldemGame(Altered(sets, m, key, {}), *game)) << key;
        for (void (*const change)(CFRNode&) : {damageSum, damageRegret})
            EXPECT_FALSE(holdsHoldemGame(Altered(sets, m, key, change), *game)) << key;
    }
    EXPECT_FALSE(holdsHoldemGame(Altered(sets, 0, "0:0:7:r", loseFold), *game));
}

TEST(HoldemFit, OfThreePlayersIsWhatRandomHandsComeTo) {
    const GamePtr game = withRaises(threePlayerLimit, {1, 1, 0, 0});
    const HoldemSets sets(*game);
    EXPECT_TRUE(holdsHoldemGame(sets, *game));
    EXPECT_TRUE(holdsHoldemGame(Altered(sets), *game));
    // Each first decision is come to in every bucket; so is the last one after calls alone.
    for (const auto& [map, start] :
         {std::pair(8, "2:0:"), std::pair(0, "0:0:"), std::pair(4, "1:0:")})
        for (int bucket = 0; bucket < 10; ++bucket) {
            const std::string before = map == 8 ? "" : map == 0 ? "c" : "cc";
            const std::string key = start + std::to_string(bucket) + ':' + before;
            CFRNode node;
            ASSERT_TRUE(sets.find(map, key, node)) << key;
            EXPECT_FALSE(holdsHoldemGame(Altered(sets, map, key, {}), *game)) << key;
            EXPECT_FALSE(holdsHoldemGame(Altered(sets, map, key, damageSum), *game)) << key;
        }
    EXPECT_FALSE(holdsHoldemGame(Altered(sets, 0, "0:0:3:r", loseFold), *game));
}

TEST(HoldemFit, OfNoLimitIsATreeWithoutRaises) {
    const GamePtr game = parseGame(twoPlayerNoLimit);
    const HoldemSets sets(*game);
    EXPECT_TRUE(holdsHoldemGame(sets, *game));
    const GamePtr limit = withRaises(twoPlayerLimit, {0, 0, 0, 0});
    EXPECT_TRUE(holdsHoldemGame(sets, *limit)) << "the same decisions";
}

TEST(HoldemFit, IsNoneOfAnotherGame) {
    for (const char* const definition : {twoPlayerLimit, threePlayerLimit}) {
        const GamePtr small = withRaises(definition, {1, 1, 0, 0});
        const GamePtr large = withRaises(definition, {1, 1, 1, 0});
        EXPECT_FALSE(holdsHoldemGame(HoldemSets(*small), *large));
        EXPECT_FALSE(holdsHoldemGame(HoldemSets(*large), *small));
    }
}

TEST(ReadHoldemStrategy, TakesAWholeFileAndSaysWhatIsWrongWithOthers) {
    const TempDirectory scratch;
    const std::string path = scratch.file("strategy");
    const GamePtr game = withRaises(twoPlayerLimit, {1, 1, 0, 0});
    HoldemSets sets(*game);
    for (size_t set = 0; set < sets.numSets(); ++set)
        sets.numbers()[set].strategy[actionCall] = static_cast<double>(set);
    ASSERT_TRUE(writeStrategyFile(path, 8, sets));
    HoldemSets read(*game);
    const Status whole = readStrategyFile(path, read);
    ASSERT_TRUE(whole) << whole.error();
    for (size_t set = 0; set < sets.numSets(); ++set)
        ASSERT_EQ(read.numbers()[set].strategy[actionCall], static_cast<double>(set));

    const auto complaint = [&](const NodeStore& nodes) {
        EXPECT_TRUE(writeStrategyFile(path, 8, nodes));
        const Status status = readStrategyFile(path, read);
        return status ? "" : status.error().substr(path.size());
    };
    const std::string key = lastKey(sets, 5);
    EXPECT_EQ(complaint(Altered(sets, 5, key, {})),
              ": section 5 has " + std::to_string(sets.count(5) - 1) + " nodes, the game has " +
                  std::to_string(sets.count(5)) + " there");
    EXPECT_EQ(complaint(Altered(sets, 5, key, damageSum)),
              ": the node \"" + key + "\" of section 5 is damaged or another game's");
}

} // namespace tamarin::test
