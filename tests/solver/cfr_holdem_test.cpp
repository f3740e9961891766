// Hold'em training: the compiled walk against the plain recursion, and its strategy files.
#include "game/games.h"
#include "holdem/buckets.h"
#include "holdem/sets.h"
#include "solver/cfr.h"
#include "solver/fnv1a.h"
#include "solver/hashed_buckets.h"
#include "strategy/mapped_strategy.h"
#include "support/rng.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

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
    for (const auto train : {&CFR::trainHoldem, &CFR::trainHoldemPlain}) {
        CFR solver(game.get());
        try {
            (solver.*train)(100);
            FAIL();
        } catch (const char* text) {
            EXPECT_STREQ(text, "Deve carregar equity tables para correr cfr no hold'em poker");
        }
    }
}

TEST(TrainHoldem, LogsEachHundredthWhenAsked) {
    CFR::logProgress = true;
    for (const auto form : {&CFR::trainHoldem, &CFR::trainHoldemPlain}) {
        std::string text = fewerRaises(twoPlayerLimit);
        text.replace(text.find("1 1 1 1"), 7, "1 0 0 0");
        const Trained trained = train(text, [&](CFR& solver) { (solver.*form)(200); });
        std::istringstream lines(trained.printed.substr(trained.printed.find("Number of")));
        std::string line;
        std::getline(lines, line);
        for (int percent = 0; percent < 100; ++percent) {
            ASSERT_TRUE(std::getline(lines, line)) << percent;
            ASSERT_EQ(line, "CFR progress: " + std::to_string(percent) +
                                "% (elapsed time: some mins, expected time left: some mins)");
        }
        EXPECT_FALSE(std::getline(lines, line)) << line;
    }
    CFR::logProgress = false;
}

// Buckets that keep the first seat's seven cards of every deal.
class SeenCards : public HashedBuckets {
public:
    mutable std::vector<std::vector<uint8_t>> deals;
    uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const override {
        if (players == 2 && round == 3 && seat == 0)
            deals.emplace_back(cards, cards + 7);
        return HashedBuckets::bucket(players, round, seat, cards);
    }
};

// Each deal swaps on from the deck as the last one left it, every card with one of the whole deck.
TEST(TrainHoldem, NeverRestoresTheDeck) {
    std::string text = fewerRaises(twoPlayerLimit);
    text.replace(text.find("1 1 1 1"), 7, "0 0 0 0");
    const GamePtr game = parseGame(text);
    global_urng().seed(5);
    std::vector<uint8_t> deck;
    for (int suit = 0; suit < 4; ++suit)
        for (int rank = 0; rank < 13; ++rank)
            deck.push_back(static_cast<uint8_t>(rank * 4 + suit));
    std::vector<std::vector<uint8_t>> expected;
    for (int deal = 0; deal < 20; ++deal) {
        for (size_t i = 0; i < 9; ++i)
            std::swap(deck[i], deck[static_cast<size_t>(pick_a_number(0, 51))]);
        expected.push_back({deck[0], deck[1], deck[4], deck[5], deck[6], deck[7], deck[8]});
    }
    for (const auto form : {&CFR::trainHoldem, &CFR::trainHoldemPlain}) {
        const SeenCards buckets;
        CFR solver(game.get());
        solver.setHoldemBuckets(&buckets);
        global_urng().seed(5);
        testing::internal::CaptureStdout();
        (solver.*form)(20);
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(buckets.deals, expected);
    }
}

// What a seed leads to, for good: a change of both forms at once is a change of the player.
TEST(TrainHoldem, LeavesTheSumsItAlwaysLeft) {
    const Trained two = train(fewerRaises(twoPlayerLimit), [](CFR& s) { s.trainHoldem(300); });
    EXPECT_EQ(fnv1a(two.file), 12011498764912180051U);
    std::string text = fewerRaises(threePlayerLimit);
    text.replace(text.find("1 1 1 1"), 7, "1 1 0 0");
    const Trained three = train(text, [](CFR& s) { s.trainHoldem(300); });
    EXPECT_EQ(fnv1a(three.file), 5171841084733906260U);
}

// ---- Trees too large for the node maps

TEST(TrainHoldem, LeavesTheSameWhereTheTreeIsTooLargeForTheMaps) {
    const std::string text = fewerRaises(twoPlayerLimit);
    const auto twice = [](CFR& solver, const CFR::MapLimits& limits) {
        solver.setMapLimits(limits);
        solver.trainHoldem(50);
        solver.trainHoldem(70);
    };
    const size_t sets = HoldemSets(*parseGame(text)).numSets();
    for (const size_t limit : {size_t{0}, sets - 1, sets}) {
        const Trained flat = train(text, [&](CFR& solver) {
            twice(solver, {0, limit});
            EXPECT_EQ(solver.nodeMap(0, 0).empty(), limit < sets);
            EXPECT_EQ(solver.numInformationSets(), sets);
        });
        const Trained maps = train(text, [&](CFR& solver) { twice(solver, {}); });
        EXPECT_TRUE(flat.file == maps.file);
        EXPECT_EQ(flat.printed, maps.printed);
    }
}

TEST(TrainHoldem, GoesOnPlainlyFromATreeTooLargeForTheMaps) {
    const std::string text = fewerRaises(twoPlayerLimit);
    const auto both = [](CFR& solver, const CFR::MapLimits& limits) {
        solver.setMapLimits(limits);
        solver.trainHoldem(30);
        solver.trainHoldemPlain(20);
    };
    const Trained flat = train(text, [&](CFR& solver) { both(solver, {0, 0}); });
    const Trained maps = train(text, [&](CFR& solver) { both(solver, {}); });
    EXPECT_TRUE(flat.file == maps.file);
}

// Buckets that give out after so many deals.
class FailingBuckets : public HashedBuckets {
public:
    mutable int left = 1000;
    uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const override {
        if (--left <= 0)
            throw std::runtime_error("no more buckets");
        return HashedBuckets::bucket(players, round, seat, cards);
    }
};

TEST(TrainHoldem, AnExceptionLeavesTheNodesAndTheFlagsOff) {
    const GamePtr game = parseGame(fewerRaises(twoPlayerLimit));
    const size_t sets = HoldemSets(*game).numSets();
    for (const auto form : {&CFR::trainHoldem, &CFR::trainHoldemPlain})
        for (const size_t limit : {size_t{0}, sets}) {
            const FailingBuckets buckets;
            CFR solver(game.get());
            solver.setMapLimits({0, limit});
            solver.setHoldemBuckets(&buckets);
            testing::internal::CaptureStdout();
            EXPECT_THROW((solver.*form)(1000), std::runtime_error);
            EXPECT_FALSE(solver.useCardAbstraction);
            EXPECT_FALSE(solver.useHoldemTables);
            EXPECT_EQ(solver.numInformationSets(), sets);
            double sum = 0.0; // of what was trained before
            solver.nodes().forEach(0, [&](const std::string&, const CFRNode& node) {
                sum += node.strategySum[1];
                return true;
            });
            EXPECT_GT(sum, 0.0);
            const HashedBuckets good;
            solver.setHoldemBuckets(&good);
            (solver.*form)(10);
            testing::internal::GetCapturedStdout();
        }
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
