#include "solver/cfr.h"
#include "solver/games.h"
#include "strategy/strategy_record.h"
#include "support/file.h"
#include "support/temp_directory.h"

#include <csignal>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

class StrategyFile : public ::testing::Test {
protected:
    StrategyFile() {
        directory = fs::path(::testing::TempDir()) / ("strategy_file." + std::to_string(getpid()));
        fs::create_directories(directory);
        path = (directory / "strategy").string();
        const QuietOutput quiet;
        solver.train(500);
    }
    ~StrategyFile() override { fs::remove_all(directory); }

    std::string saved() {
        EXPECT_TRUE(solver.save(path));
        return *readWholeFile(path);
    }
    // Whether a file loads, which must not depend on where the nodes are then kept.
    bool loads(const std::string& bytes) {
        test::putContents(path, bytes); // thousands of them, which need not reach the disk
        CFR fresh(game.get());
        const bool result = fresh.load(path);
        EXPECT_EQ(fresh.isTreeReady(), result);
        CFR large(game.get());
        large.setMapLimits({0, 0});
        EXPECT_EQ(large.load(path), result);
        EXPECT_EQ(large.isTreeReady(), result);
        if (result) {
            EXPECT_EQ(dumpOf(large), dumpOf(fresh));
        }
        return result;
    }
    static std::string dumpOf(const CFR& of) {
        std::ostringstream text;
        text << of;
        return text.str();
    }
    // A solver that looks its strategy up in the file.
    std::unique_ptr<CFR> mapped() {
        saved();
        auto solverOfFile = std::make_unique<CFR>(game.get());
        solverOfFile->setMapLimits({0, 0});
        EXPECT_TRUE(solverOfFile->load(path));
        EXPECT_TRUE(solverOfFile->nodeMap(0, 0).empty());
        return solverOfFile;
    }
    static std::string bytesOf(CFR& of, const std::string& to) {
        EXPECT_TRUE(of.save(to));
        return *readWholeFile(to);
    }

    GamePtr game = kuhn3();
    CFR solver{game.get()};
    fs::path directory;
    std::string path;
};

TEST_F(StrategyFile, HasNoHeaderAndRecordsOf108BytesInKeyOrder) {
    const std::string bytes = saved();
    ASSERT_EQ(bytes.size(), 3 * 4 + 48 * 108U);
    StrategyCount count = 0;
    std::memcpy(&count, bytes.data(), sizeof count);
    EXPECT_EQ(count, 16U);
    size_t at = 4;
    for (const auto& [key, node] : solver.nodeMap(0, 0)) {
        EXPECT_EQ(bytes.substr(at, 60), key + std::string(60 - key.size(), '\0'));
        EXPECT_EQ(std::memcmp(bytes.data() + at + 60, node->regretSum, 24), 0);
        EXPECT_EQ(std::memcmp(bytes.data() + at + 84, node->strategySum, 24), 0);
        at += 108;
    }
}

TEST_F(StrategyFile, LoadsWhatWasSavedBitForBit) {
    const std::string bytes = saved();
    CFR fresh(game.get());
    ASSERT_TRUE(fresh.load(path));
    EXPECT_TRUE(fresh.isTreeReady());
    for (int p = 0; p < 3; ++p) {
        ASSERT_EQ(fresh.nodeMap(p, 0).size(), solver.nodeMap(p, 0).size());
        for (const auto& [key, node] : solver.nodeMap(p, 0)) {
            const CFRNode& other = *fresh.nodeMap(p, 0).at(key);
            EXPECT_EQ(std::memcmp(node->regretSum, other.regretSum, 24), 0) << key;
            EXPECT_EQ(std::memcmp(node->strategySum, other.strategySum, 24), 0) << key;
        }
    }
    ASSERT_TRUE(fresh.save(path));
    EXPECT_EQ(*readWholeFile(path), bytes);
}

TEST_F(StrategyFile, LoadedTreeTrainsOnWithoutConstruction) {
    saved();
    CFR fresh(game.get());
    ASSERT_TRUE(fresh.load(path));
    ::testing::internal::CaptureStdout();
    fresh.train(10);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Number of information sets: 48\n");
}

TEST_F(StrategyFile, EmptyMapsAreBareCounts) {
    CFR empty(game.get());
    ASSERT_TRUE(empty.save(path));
    EXPECT_FALSE(empty.isTreeReady());
    EXPECT_EQ(*readWholeFile(path), std::string(12, '\0'));
}

// Others may read it, and only its owner write: where the umask would allow more, too.
TEST_F(StrategyFile, MayBeReadByOthersAndWrittenByNone) {
    const mode_t before = umask(0);
    for (const mode_t mask : {0U, 022U, 027U}) {
        umask(mask);
        saved();
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0644U & ~mask);
        fs::remove(path);
    }
    umask(before);
}

TEST_F(StrategyFile, KeepsThePermissionsOfTheOneItReplaces) {
    saved();
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    saved();
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(StrategyFile, AbsentFileLeavesTheMapsAlone) {
    CFR other(game.get());
    other.buildTree();
    EXPECT_FALSE(other.load(path + ".absent"));
    EXPECT_EQ(other.numInformationSets(), 48U);
    EXPECT_TRUE(other.isTreeReady());
}

TEST_F(StrategyFile, CutAnywhereIsRefused) {
    const std::string bytes = saved();
    // Five shares no factor with a record's 108 bytes: each of its places is the end of some file.
    for (size_t length = 0; length < bytes.size(); length += 5)
        ASSERT_FALSE(loads(bytes.substr(0, length))) << length;
    EXPECT_FALSE(loads(bytes.substr(0, bytes.size() - 1)));
}

TEST_F(StrategyFile, AFailedLoadKeepsWhatWasReadAndTheReadiness) {
    const std::string bytes = saved();
    ASSERT_TRUE(writeWholeFile(path, bytes.substr(0, 4 + 108 * 5 + 50)).ok());
    CFR fresh(game.get());
    EXPECT_FALSE(fresh.load(path));
    EXPECT_FALSE(fresh.isTreeReady());
    EXPECT_EQ(fresh.nodeMap(0, 0).size(), 5U);
    CFR ready(game.get());
    ready.buildTree();
    EXPECT_FALSE(ready.load(path));
    EXPECT_TRUE(ready.isTreeReady());
    EXPECT_EQ(ready.nodeMap(0, 0).size(), 5U);
    EXPECT_EQ(ready.nodeMap(1, 0).size(), 16U);
}

TEST_F(StrategyFile, TrailingBytesAreIgnored) {
    EXPECT_TRUE(loads(saved() + "more"));
}

TEST_F(StrategyFile, RepeatedKeyIsRefused) {
    std::string bytes = saved();
    bytes.replace(4 + 108, 60, bytes.substr(4, 60));
    EXPECT_FALSE(loads(bytes));
}

TEST_F(StrategyFile, RepeatedKeysFarApartAreRefused) {
    std::string bytes = saved();
    bytes.replace(4 + 108 * 15, 60, bytes.substr(4, 60)); // the last of the section like its first
    EXPECT_FALSE(loads(bytes));
}

TEST_F(StrategyFile, TheSameKeyInTwoSectionsIsNoRepetition) {
    std::string bytes = saved();
    bytes.replace(4 + 108 * 16 + 4, 60, bytes.substr(4, 60));
    EXPECT_TRUE(loads(bytes));
}

TEST_F(StrategyFile, KeyWithoutAnEndIsRefused) {
    for (const size_t record : {0U, 7U, 15U}) {
        std::string bytes = saved();
        bytes.replace(4 + 108 * record, 60, std::string(60, '7'));
        EXPECT_FALSE(loads(bytes)) << record;
        bytes[4 + 108 * record + 59] = '\0';
        EXPECT_TRUE(loads(bytes)) << record;
    }
}

TEST_F(StrategyFile, WhatStandsBehindAKeysEndDoesNotMatter) {
    std::string bytes = saved();
    bytes.replace(4 + 108 * 3 + 40, 20, std::string(20, 'x'));
    EXPECT_TRUE(loads(bytes));
}

TEST_F(StrategyFile, RecordsMayBeOutOfOrder) {
    const std::string inOrder = saved();
    std::string bytes = inOrder;
    for (size_t i = 0; i < 16; ++i)
        bytes.replace(4 + 108 * i, 108, inOrder.substr(4 + 108 * (15 - i), 108));
    ASSERT_TRUE(loads(bytes));
    CFR large(game.get());
    large.setMapLimits({0, 0});
    ASSERT_TRUE(large.load(path));
    for (const auto& [key, node] : solver.nodeMap(0, 0)) {
        CFRNode found;
        ASSERT_TRUE(large.nodes().find(0, key, found)) << key;
        EXPECT_EQ(std::memcmp(found.strategySum, node->strategySum, 24), 0) << key;
    }
    EXPECT_TRUE(bytesOf(large, path + ".again") == inOrder);
}

// ---- Files that are looked up where they lie

TEST_F(StrategyFile, OnlyWhatTheSectionsTakeCountsAsLarge) {
    const CFR::MapLimits usual;
    EXPECT_EQ(usual.fileBytes, size_t{64} << 20U);
    EXPECT_EQ(usual.informationSets, 2'000'000U);
    const std::string bytes = saved();
    ASSERT_TRUE(writeWholeFile(path, bytes + std::string(5000, 'x')).ok());
    for (const size_t limit : {bytes.size() - 1, bytes.size()}) {
        CFR fresh(game.get());
        fresh.setMapLimits({limit, 0});
        ASSERT_TRUE(fresh.load(path));
        EXPECT_EQ(fresh.numInformationSets(), 48U);
        EXPECT_EQ(fresh.nodeMap(0, 0).size(), limit < bytes.size() ? 0U : 16U);
    }
}

// With the usual limits: seventy megabytes, all but five thousand bytes of them behind the
// strategy.
TEST_F(StrategyFile, AGrownFileOfASmallGameIsReadIntoTheMaps) {
    saved();
    fs::resize_file(path, size_t{70} << 20U);
    CFR fresh(game.get());
    ASSERT_TRUE(fresh.load(path));
    EXPECT_EQ(fresh.nodeMap(2, 0).size(), 16U);
}

TEST_F(StrategyFile, AMappedStrategyShowsAndSavesTheSame) {
    const auto large = mapped();
    EXPECT_EQ(large->numInformationSets(), 48U);
    EXPECT_TRUE(bytesOf(*large, path + ".again") == *readWholeFile(path));
    // gameUtility is no part of a file.
    EXPECT_EQ(dumpOf(*large), dumpOf(solver).substr(0, dumpOf(*large).size()));
    double values[2][3];
    solver.calcUtility(values[0]);
    large->calcUtility(values[1]);
    for (int p = 0; p < 3; ++p)
        EXPECT_EQ(values[0][p], values[1][p]);
}

TEST_F(StrategyFile, AFoundNodeOfAMappedStrategyIsACopyForOneCall) {
    const auto large = mapped();
    State state{};
    initState(game.get(), 0, &state);
    for (int p = 0; p < 3; ++p)
        state.holeCards[p][0] = static_cast<uint8_t>(p * 4);
    CFRNode* const root = large->findNode(&state);
    EXPECT_EQ(root->strategySum[1], solver.findNode(&state)->strategySum[1]);
    root->strategySum[1] += 1.0;
    EXPECT_EQ(large->findNode(&state)->strategySum[1], solver.findNode(&state)->strategySum[1]);
    Action call{actionCall, 0};
    doAction(game.get(), &call, &state);
    EXPECT_EQ(large->findNode(&state), root);
    EXPECT_EQ(root->strategySum[1], solver.findNode(&state)->strategySum[1]);
}

// Whatever changes nodes works on them as objects, wherever they came from.
TEST_F(StrategyFile, AMappedStrategyTrainsOnLikeOneInTheMaps) {
    const QuietOutput quiet;
    for (const auto train : {&CFR::train, &CFR::trainPlain}) {
        const auto large = mapped();
        CFR small(game.get());
        ASSERT_TRUE(small.load(path));
        global_urng().seed(3);
        (large.get()->*train)(200);
        global_urng().seed(3);
        (small.*train)(200);
        EXPECT_TRUE(bytesOf(*large, path + ".a") == bytesOf(small, path + ".b"));
        EXPECT_FALSE(*readWholeFile(path) == *readWholeFile(path + ".a"));
    }
}

TEST_F(StrategyFile, AMappedStrategyIsChangedLikeOneInTheMaps) {
    const QuietOutput quiet;
    State state{};
    initState(game.get(), 0, &state);
    for (int p = 0; p < 3; ++p)
        state.holeCards[p][0] = static_cast<uint8_t>(p * 4);
    const std::vector<std::function<void(CFR&)>> changes = {
        [](CFR& of) { of.eliminateActions(); }, [](CFR& of) { of.buildTree(); },
        [&](CFR& of) { of.createAbstractedGameTree(&state); },
        [&](CFR& of) {
            double reach[3] = {0.5, 0.25, 1.0};
            double util[3];
            of.calc(&state, reach, 0, util);
        }};
    solver.buildTree(); // as before any training, so that elimination has its work
    for (size_t i = 0; i < changes.size(); ++i) {
        if (i == 1) {
            solver.train(100);
        }
        const auto large = mapped();
        CFR small(game.get());
        ASSERT_TRUE(small.load(path));
        changes[i](*large);
        changes[i](small);
        EXPECT_TRUE(bytesOf(*large, path + ".a") == bytesOf(small, path + ".b")) << i;
        EXPECT_FALSE(*readWholeFile(path) == *readWholeFile(path + ".a")) << i;
        EXPECT_EQ(large->nodeMap(1, 0).size(), 16U) << i;
    }
}

TEST_F(StrategyFile, AFailedLoadLeavesAMappedStrategy) {
    const std::string bytes = saved();
    const auto large = mapped();
    ASSERT_TRUE(writeWholeFile(path + ".cut", bytes.substr(0, bytes.size() - 1)).ok());
    for (const size_t limit : {size_t{0}, size_t{1} << 20U}) {
        large->setMapLimits({limit, 0});
        EXPECT_FALSE(large->load(path + ".cut"));
        EXPECT_TRUE(large->isTreeReady());
        EXPECT_TRUE(large->nodeMap(0, 0).empty());
        EXPECT_TRUE(bytesOf(*large, path + ".again") == bytes);
    }
}

TEST_F(StrategyFile, LoadingAgainReplacesWhereverTheNodesWere) {
    const auto large = mapped();
    {
        const QuietOutput quiet;
        solver.train(50);
    }
    const std::string later = bytesOf(solver, path + ".later");
    large->setMapLimits({});
    ASSERT_TRUE(large->load(path + ".later"));
    EXPECT_EQ(large->nodeMap(0, 0).size(), 16U);
    EXPECT_TRUE(bytesOf(*large, path + ".again") == later);
    large->setMapLimits({0, 0});
    ASSERT_TRUE(large->load(path));
    EXPECT_TRUE(large->nodeMap(0, 0).empty());
    EXPECT_TRUE(bytesOf(*large, path + ".again") == *readWholeFile(path));
}

TEST_F(StrategyFile, CountsBeyondTheFileAreRefusedWithoutTheMemory) {
    const std::string bytes = saved();
    for (const StrategyCount count : {17U, 49U, 1U << 20U, 1U << 31U, UINT32_MAX - 1, UINT32_MAX}) {
        std::string hostile = bytes;
        std::memcpy(hostile.data(), &count, sizeof count);
        EXPECT_FALSE(loads(hostile)) << count;
    }
}

// With fewer sections than the game has maps. One with more can fill them; checkStrategyFile, which
// knows the game's keys, refuses that too.
TEST_F(StrategyFile, AShorterGamesFileIsRefused) {
    const GamePtr otherGame = kuhn2();
    CFR other(otherGame.get());
    other.buildTree();
    ASSERT_TRUE(other.save(path));
    EXPECT_FALSE(loads(*readWholeFile(path)));
}

TEST_F(StrategyFile, RandomBytesAreRefused) {
    std::mt19937 random(1);
    for (int i = 0; i < 100; ++i) {
        std::string bytes(random() % 6000, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        EXPECT_FALSE(loads(bytes));
    }
}

TEST_F(StrategyFile, DirectoriesPipesAndDevicesAreRefused) {
    const std::string pipe = (directory / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string dangling = (directory / "dangling").string();
    fs::create_symlink(directory / "nowhere", dangling);
    CFR fresh(game.get());
    for (const std::string& bad : {directory.string(), pipe, dangling, std::string("/dev/zero"),
                                   std::string("/dev/null"), std::string()}) {
        EXPECT_FALSE(fresh.load(bad)) << bad;
        EXPECT_FALSE(fresh.isTreeReady());
    }
}

TEST_F(StrategyFile, SavingWhereItCannotBeIsFalse) {
    EXPECT_FALSE(solver.save((directory / "none" / "strategy").string()));
    EXPECT_FALSE(solver.save(directory.string()));
}

TEST_F(StrategyFile, KeysThatDoNotFitAreNotSaved) {
    // Forty checks and raises a round make keys of more than 59 bytes.
    const GamePtr rules =
        gameFrom("GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = 1\nblind = 1 1\nraiseSize = 1\n"
                 "firstPlayer = 1\nnumSuits = 1\nnumRanks = 3\nnumHoleCards = 1\n"
                 "numBoardCards = 0\nEND GAMEDEF\n");
    CFR longKeys(rules.get());
    longKeys.buildTree();
    saved();
    const std::string before = *readWholeFile(path);
    EXPECT_FALSE(longKeys.save(path));
    EXPECT_EQ(*readWholeFile(path), before); // the old file is still there, whole
    EXPECT_EQ(std::distance(fs::directory_iterator(directory), fs::directory_iterator()), 1);
}

TEST_F(StrategyFile, AKillLeavesTheOldFileOrTheNewOne) {
    const std::string before = saved();
    {
        const QuietOutput quiet;
        solver.train(1000);
    }
    const std::string other = path + ".other";
    ASSERT_TRUE(solver.save(other));
    const std::string after = *readWholeFile(other);
    fs::remove(other);
    ASSERT_NE(before, after);
    std::mt19937 random(7);
    int old = 0;
    for (int i = 0; i < 60; ++i) {
        ASSERT_TRUE(writeWholeFile(path, before).ok());
        const pid_t child = fork();
        if (child == 0) {
            solver.save(path);
            _exit(0);
        }
        usleep(static_cast<useconds_t>(random() % 1500));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string found = *readWholeFile(path);
        ASSERT_TRUE(found == before || found == after);
        old += found == before;
    }
    EXPECT_GT(old, 0);
}

} // namespace
} // namespace tamarin::test
