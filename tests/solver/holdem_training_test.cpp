// Hold'em training: the compiled walk against the plain recursion, and its strategy files.
#include "game/games.h"
#include "solver/cfr.h"
#include "solver/hashed_buckets.h"
#include "solver/holdem_buckets.h"
#include "solver/holdem_sets.h"
#include "solver/mapped_strategy.h"
#include "support/rng.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Fewer raises, so that the plain form, with a string for every node, ends in a test's time.
std::string fewerRaises(const char* definition) {
    std::string text = definition;
    text.replace(text.find("3 4 4 4"), 7, "1 1 1 1");
    return text;
}

std::string contents(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

struct Trained {
    std::string file;    // the strategy as saved
    std::string printed; // standard output, without the times, which the clock has a say in
    uint64_t nextDraw;   // of the process-wide engine afterwards
};

template <class Train>
Trained train(const std::string& definition, Train body) {
    const GamePtr game = parseGame(definition);
    const HashedBuckets buckets;
    CFR solver(game.get());
    solver.setHoldemBuckets(&buckets);
    global_urng().seed(17);
    testing::internal::CaptureStdout();
    body(solver);
    Trained result;
    result.printed = std::regex_replace(testing::internal::GetCapturedStdout(),
                                        std::regex("[0-9.e+-]+ mins"), "some mins");
    result.nextDraw = global_urng()();
    EXPECT_FALSE(solver.useCardAbstraction);
    EXPECT_FALSE(solver.useHoldemTables);
    const std::string path = testing::TempDir() + "holdem." + std::to_string(getpid());
    EXPECT_TRUE(solver.save(path));
    result.file = contents(path);
    std::filesystem::remove(path);
    return result;
}

void expectSame(const std::string& definition, unsigned long long iterations) {
    const Trained compiled =
        train(definition, [&](CFR& solver) { solver.trainHoldem(iterations); });
    const Trained plain =
        train(definition, [&](CFR& solver) { solver.trainHoldemPlain(iterations); });
    EXPECT_TRUE(compiled.file == plain.file);
    EXPECT_EQ(compiled.printed, plain.printed);
    EXPECT_EQ(compiled.nextDraw, plain.nextDraw);
}

TEST(TrainHoldem, TwoPlayersEqualThePlainFormToTheBit) {
    expectSame(fewerRaises(twoPlayerLimit), 300);
}

TEST(TrainHoldem, ThreePlayersEqualThePlainFormToTheBit) {
    std::string text = fewerRaises(threePlayerLimit);
    text.replace(text.find("1 1 1 1"), 7, "1 1 0 0"); // the plain form builds its tree 10,000 times
    expectSame(text, 100);
}

TEST(TrainHoldem, ALaterCallGoesOnWhereTheFirstEnded) {
    const std::string text = fewerRaises(twoPlayerLimit);
    const auto twice = [](CFR& solver) {
        solver.trainHoldem(50);
        solver.trainHoldem(70);
    };
    const auto twicePlain = [](CFR& solver) {
        solver.trainHoldemPlain(50);
        solver.trainHoldemPlain(70);
    };
    EXPECT_TRUE(train(text, twice).file == train(text, twicePlain).file);
}

TEST(TrainHoldem, PrintsAHundredPercentLinesAndTheCount) {
    const Trained trained =
        train(fewerRaises(twoPlayerLimit), [](CFR& solver) { solver.trainHoldem(0); });
    EXPECT_TRUE(trained.printed.starts_with("1%\n2%\n3%\n"));
    EXPECT_NE(trained.printed.find("99%\n100%\nNumber of information sets: "), std::string::npos);
}

TEST(TrainHoldem, NeedsTables) {
    const GamePtr game = parseGame(twoPlayerLimit);
    CFR solver(game.get());
    EXPECT_THROW(solver.trainHoldem(100), const char*);
}

TEST(HoldemSets, FindWhatTheNodeMapsFind) {
    const GamePtr game = parseGame(fewerRaises(twoPlayerLimit));
    HoldemSets sets(*game);
    size_t count = 0;
    for (int m = 0; m < game->numPlayers * game->numRounds; ++m) {
        std::string last;
        sets.forEach(m, [&](const std::string& key, const CFRNode& node) {
            EXPECT_LT(last, key);
            CFRNode found;
            EXPECT_TRUE(sets.find(m, key, found)) << key;
            EXPECT_EQ(found.getNumValidActions(), node.getNumValidActions());
            last = key;
            ++count;
            return true;
        });
    }
    EXPECT_EQ(count, sets.numSets());
    CFRNode node;
    for (const char* key :
         {"", "0:0:0:", "1:0:", "1:0:a:", "1:0:0:x", "1:0:0:rrrrrrr", "1:1:0:", "1-0-0-"})
        EXPECT_FALSE(sets.find(1, key, node)) << key;
}

TEST(MappedStrategy, FindsEveryNodeOfAFileWhereItLies) {
    const std::string path = testing::TempDir() + "mapped." + std::to_string(getpid());
    const GamePtr game = parseGame(fewerRaises(twoPlayerLimit));
    const HashedBuckets buckets;
    CFR solver(game.get());
    solver.setHoldemBuckets(&buckets);
    testing::internal::CaptureStdout();
    solver.trainHoldem(20);
    testing::internal::GetCapturedStdout();
    ASSERT_TRUE(solver.save(path));
    const int maps = game->numPlayers * game->numRounds;
    {
        const Result<MappedStrategy> mapped = MappedStrategy::open(path, maps);
        ASSERT_TRUE(mapped.ok());
        for (int m = 0; m < maps; ++m) {
            const NodeMap& nodes = solver.nodeMap(m / game->numRounds, m % game->numRounds);
            ASSERT_EQ(mapped->count(m), nodes.size());
            for (const auto& [key, node] : nodes) {
                CFRNode found;
                ASSERT_TRUE(mapped->find(m, key, found)) << key;
                ASSERT_EQ(std::memcmp(found.regretSum, node->regretSum, sizeof found.regretSum), 0);
                ASSERT_EQ(
                    std::memcmp(found.strategySum, node->strategySum, sizeof found.strategySum), 0);
                ASSERT_FALSE(mapped->find(m, key + "z", found));
            }
        }
    }
    const auto size = std::filesystem::file_size(path);
    for (const auto cut :
         {size - 1, size - 108, size / 2, uintmax_t{5}, uintmax_t{3}, uintmax_t{0}}) {
        std::filesystem::resize_file(path, cut);
        EXPECT_FALSE(MappedStrategy::open(path, maps).ok()) << cut;
    }
    std::filesystem::remove(path);
}

} // namespace
} // namespace tamarin::test
