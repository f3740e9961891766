#include "training/checkpoint.h"

#include "solver/games.h"
#include "support/temp_directory.h"
#include "training/mended_checkpoint.h"

#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

class Checkpoint : public ::testing::Test {
protected:
    Checkpoint() {
        directory = ::testing::TempDir() + "checkpoint." + std::to_string(getpid());
        fs::remove_all(directory);
        fs::create_directories(directory);
    }
    ~Checkpoint() override { fs::remove_all(directory); }

    std::string saveAfter(uint64_t iterations) {
        const auto trainer = makeTrainer(*game, config);
        trainer->run(iterations);
        EXPECT_TRUE(saveCheckpoint(directory, text(), trainer->state()).ok());
        return listCheckpoints(directory).back();
    }
    std::string text() const { return checkpointConfig(*game, config); }

    GamePtr rules = kuhn3();
    std::unique_ptr<SmallGame> game = std::move(*SmallGame::make(*rules));
    TrainerConfig config;
    std::string directory;
};

bool same(const TrainerState& a, const TrainerState& b) {
    return a.iteration == b.iteration && a.random == b.random && a.sets.size() == b.sets.size() &&
           std::memcmp(a.sets.data(), b.sets.data(), a.sets.size() * sizeof a.sets[0]) == 0;
}

TEST_F(Checkpoint, ComesBackBitForBit) {
    config.sampledDeals = 2;
    config.seed = 99;
    const auto trainer = makeTrainer(*game, config);
    trainer->run(17);
    ASSERT_TRUE(saveCheckpoint(directory, text(), trainer->state()).ok());
    const auto read = readCheckpoint(listCheckpoints(directory)[0], text());
    ASSERT_TRUE(read.ok()) << read.error();
    EXPECT_TRUE(same(*read, trainer->state()));
}

TEST_F(Checkpoint, StoppedAndResumedRunsEndAsUnbrokenOnes) {
    for (const char* name : {"player", "cfr", "cfr+", "lcfr", "dcfr", "pcfr+"}) {
        fs::remove_all(directory);
        fs::create_directories(directory);
        config.algorithm = *algorithmNamed(name);
        const auto whole = makeTrainer(*game, config);
        const uint64_t block = whole->block();
        whole->run(block * 9);
        const TrainerState expected = whole->state();
        for (const uint64_t stop : {2U, 3U, 9U}) {
            const auto part = makeTrainer(*game, config);
            std::vector<std::string> warnings;
            if (const auto saved = newestCheckpoint(directory, text(), warnings))
                part->restore(*saved);
            part->run(block * stop - part->iteration());
            ASSERT_TRUE(saveCheckpoint(directory, text(), part->state()).ok());
        }
        std::vector<std::string> warnings;
        const auto found = newestCheckpoint(directory, text(), warnings);
        ASSERT_TRUE(found.ok());
        EXPECT_TRUE(same(*found, expected)) << name;
        EXPECT_TRUE(warnings.empty());
    }
}

TEST_F(Checkpoint, KeepsTheNewestTwo) {
    for (const uint64_t iterations : {1U, 5U, 30U, 200U})
        saveAfter(iterations);
    const auto left = listCheckpoints(directory);
    ASSERT_EQ(left.size(), 2U);
    EXPECT_EQ(fs::path(left[0]).filename(), "checkpoint.00000000000000000030");
    EXPECT_EQ(fs::path(left[1]).filename(), "checkpoint.00000000000000000200");
}

// Whatever else bears such a name: numbers of more than 64 bits, and what is no file.
TEST_F(Checkpoint, OnlyFilesWithANumberAreCheckpoints) {
    const std::string first = saveAfter(3);
    const auto named = [&](const char* number) { return directory + "/checkpoint." + number; };
    const std::string largest = named("18446744073709551615");
    ASSERT_TRUE(writeWholeFile(largest, "rubbish").ok());
    for (const char* number : {"18446744073709551616", "20000000000000000000",
                               "99999999999999999999", "1844674407370955161", "0000000000000000003",
                               "000000000000000000003", "0000000000000000000x", ""})
        ASSERT_TRUE(writeWholeFile(named(number), "rubbish").ok());
    fs::create_directory(named("00000000000000000050"));
    ASSERT_EQ(mkfifo(named("00000000000000000060").c_str(), 0600), 0);
    fs::create_symlink("nowhere", named("00000000000000000070"));
    EXPECT_EQ(listCheckpoints(directory), (std::vector<std::string>{first, largest}));
}

// A run that cannot use the newest and goes on from an older one still leaves two good ones.
TEST_F(Checkpoint, TheOneJustSavedStaysWhateverStandsAfterIt) {
    const std::string first = saveAfter(3);
    const auto named = [&](const char* number) { return directory + "/checkpoint." + number; };
    for (const char* number : {"99999999999999999998", "18446744073709551615"})
        ASSERT_TRUE(writeWholeFile(named(number), "rubbish").ok());
    ASSERT_TRUE(writeWholeFile(named("00000000000000000099"), "rubbish").ok());
    fs::create_directory(named("99999999999999999999"));
    const auto trainer = makeTrainer(*game, config);
    std::vector<std::string> warnings;
    const auto state = newestCheckpoint(directory, text(), warnings);
    ASSERT_TRUE(state.ok());
    EXPECT_EQ(warnings.size(), 2U);
    trainer->restore(*state);
    for (const uint64_t until : {5U, 6U}) {
        trainer->run(until - trainer->iteration());
        ASSERT_TRUE(saveCheckpoint(directory, text(), trainer->state()).ok());
        EXPECT_EQ(fs::exists(first), until == 5);
        EXPECT_TRUE(readCheckpoint(named("00000000000000000005"), text()).ok());
    }
    EXPECT_TRUE(readCheckpoint(named("00000000000000000006"), text()).ok());
    EXPECT_TRUE(fs::exists(named("00000000000000000099")));
    warnings.clear();
    EXPECT_EQ(newestCheckpoint(directory, text(), warnings)->iteration, 6U);
}

TEST_F(Checkpoint, EveryDamagedByteIsNoticed) {
    const std::string path = saveAfter(3);
    const std::string bytes = *readWholeFile(path);
    for (size_t at = 0; at < bytes.size(); ++at) {
        std::string other = bytes;
        other[at] = static_cast<char>(other[at] ^ 0x10);
        test::putContents(path, other);
        ASSERT_FALSE(readCheckpoint(path, text()).ok()) << at;
    }
}

TEST_F(Checkpoint, EveryCutAndAnyGrowthIsNoticed) {
    const std::string path = saveAfter(3);
    const std::string bytes = *readWholeFile(path);
    for (size_t length = 0; length < bytes.size(); length += 3) {
        test::putContents(path, bytes.substr(0, length));
        ASSERT_FALSE(readCheckpoint(path, text()).ok()) << length;
    }
    test::putContents(path, bytes + "x");
    EXPECT_FALSE(readCheckpoint(path, text()).ok());
}

// Length fields made to lie, with the checksums made right again.
TEST_F(Checkpoint, HostileLengthsAreRefusedWithoutTheMemory) {
    const std::string path = saveAfter(3);
    const std::string bytes = *readWholeFile(path);
    ASSERT_EQ(test::mended(bytes), bytes);
    for (const size_t field : {test::checkpointConfigLengthAt, test::checkpointPayloadLengthAt}) {
        const auto right = test::numberAt<uint64_t>(bytes, field);
        for (const uint64_t value : {uint64_t{0}, uint64_t{1}, right - 1, right + 1, right + 8,
                                     right - 72, uint64_t{1} << 31U, uint64_t{1} << 32U,
                                     uint64_t{1} << 63U, UINT64_MAX - 1, UINT64_MAX}) {
            std::string other = bytes;
            test::putNumber(other, field, value);
            test::putContents(path, test::mended(other));
            ASSERT_FALSE(readCheckpoint(path, text()).ok()) << field << ' ' << value;
        }
    }
}

// Payloads of a length that the file has, but that no information sets have.
TEST_F(Checkpoint, APayloadOfHalfASetIsRefused) {
    const std::string path = saveAfter(3);
    const std::string bytes = *readWholeFile(path);
    const size_t before = bytes.size() - 8 - (8 + 48 * sizeof(TrainerNumbers));
    for (const size_t left : {size_t{0}, size_t{4}, size_t{16}, size_t{72}, size_t{8 + 71}}) {
        std::string other = bytes.substr(0, before + left) + std::string(8, ' ');
        test::putNumber<uint64_t>(other, test::checkpointPayloadLengthAt, left);
        test::putContents(path, test::mended(other));
        const auto read = readCheckpoint(path, text());
        ASSERT_FALSE(read.ok()) << left;
        EXPECT_EQ(read.error(),
                  path + ": its numbers do not fit its " + std::to_string(other.size()) + " bytes");
    }
}

TEST_F(Checkpoint, TellsAnotherVersionAndAForeignFile) {
    const std::string path = saveAfter(3);
    std::string bytes = *readWholeFile(path);
    bytes[8] = 3;
    ASSERT_TRUE(writeWholeFile(path, bytes).ok());
    EXPECT_EQ(readCheckpoint(path, text()).error(),
              path + ": made by a newer version of this program, format 3");
    bytes[8] = 1;
    ASSERT_TRUE(writeWholeFile(path, bytes).ok());
    EXPECT_EQ(readCheckpoint(path, text()).error(),
              path + ": made by an older version of this program, format 1");
    ASSERT_TRUE(writeWholeFile(path, "GAMEDEF\n").ok());
    EXPECT_EQ(readCheckpoint(path, text()).error(), path + ": not a checkpoint");
}

TEST_F(Checkpoint, NamesTheFieldThatDiffers) {
    const std::string path = saveAfter(3);
    const auto complaint = [&] {
        const auto read = readCheckpoint(path, text());
        return read ? "" : read.error().substr(path.size());
    };
    EXPECT_EQ(complaint(), "");
    config.threads = 7;
    EXPECT_EQ(complaint(), "");
    config.seed = 2;
    EXPECT_EQ(complaint(), ": made with another configuration: seed is 1 there and 2 here");
    config.seed = 1;
    config.algorithm = Algorithm::cfrPlus;
    EXPECT_EQ(complaint(),
              ": made with another configuration: algorithm is dcfr there and cfr+ here");
    config.algorithm = Algorithm::discounted;
    config.sampledDeals = 4;
    EXPECT_EQ(complaint(), ": made with another configuration: sampledDeals is 0 there and 4 here");
    config.sampledDeals = 0;
    game = std::move(*SmallGame::make(*kuhn2()));
    EXPECT_EQ(complaint(),
              ": made with another configuration: game.numPlayers is 3 there and 2 here");
}

TEST_F(Checkpoint, FallsBackToTheOneBefore) {
    saveAfter(3);
    const std::string newest = saveAfter(8);
    ASSERT_TRUE(writeWholeFile(newest, "tmrnckpt rubbish").ok());
    std::vector<std::string> warnings;
    const auto found = newestCheckpoint(directory, text(), warnings);
    ASSERT_TRUE(found.ok());
    EXPECT_EQ(found->iteration, 3U);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_NE(warnings[0].find(newest), std::string::npos);
}

// Damage to the text of the configuration is damage, not another configuration.
TEST_F(Checkpoint, FallsBackFromADamagedConfiguration) {
    saveAfter(3);
    const std::string newest = saveAfter(8);
    std::string bytes = *readWholeFile(newest);
    ++bytes[bytes.find("seed = 1") + 7];
    test::putContents(newest, bytes);
    std::vector<std::string> warnings;
    const auto found = newestCheckpoint(directory, text(), warnings);
    ASSERT_TRUE(found.ok()) << found.error();
    EXPECT_EQ(found->iteration, 3U);
}

TEST_F(Checkpoint, WithoutAGoodOneThereIsNothingToResume) {
    std::vector<std::string> warnings;
    EXPECT_EQ(newestCheckpoint(directory, text(), warnings).error(),
              "no checkpoint in " + directory + " to resume from");
    ASSERT_TRUE(writeWholeFile(saveAfter(3), "").ok());
    EXPECT_EQ(newestCheckpoint(directory, text(), warnings).error(),
              "no checkpoint in " + directory + " can be used");
    EXPECT_EQ(listCheckpoints(directory).size(), 1U); // nothing is deleted
}

// A directory that cannot be written: the error names the path, and nothing is lost.
class FullDisk : public FileSystem {
public:
    ssize_t write(int, const void*, size_t) override {
        errno = ENOSPC;
        return -1;
    }
};

TEST_F(Checkpoint, AFullDiskLeavesTheOldOnes) {
    const std::string path = saveAfter(3);
    const auto trainer = makeTrainer(*game, config);
    trainer->run(9);
    FullDisk full;
    const Status status = saveCheckpoint(directory, text(), trainer->state(), full);
    ASSERT_FALSE(status.ok());
    EXPECT_NE(status.error().find(directory), std::string::npos);
    EXPECT_EQ(listCheckpoints(directory), std::vector<std::string>{path});
    EXPECT_TRUE(readCheckpoint(path, text()).ok());
}

} // namespace
} // namespace tamarin::test
