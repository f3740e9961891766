// The equity files of all rounds: some seconds, a gigabyte of memory and 300 MB of disk.
#include "abstraction/equity_files.h"

#include "abstraction/plain_equity.h"
#include "abstraction/random_cards.h"
#include "support/file.h"

#include <filesystem>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class EquityFiles : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        directory =
            std::filesystem::temp_directory_path() / ("tamarin_equity_" + std::to_string(getpid()));
        std::filesystem::create_directories(directory);
        auto made = EquityCounts::compute({});
        ASSERT_TRUE(made.ok());
        counts = new EquityCounts(std::move(*made));
    }
    static void TearDownTestSuite() {
        std::filesystem::remove_all(directory);
        delete counts;
    }

    static std::string at(const char* name) { return (directory / name).string(); }
    static void write(int round, const char* one, const char* two, size_t memory) {
        BackgroundCommits commits;
        const Status written =
            writeEquityFiles(*counts, round, at(one), at(two), memory, {}, commits);
        ASSERT_TRUE(written.ok()) << written.error();
        const Status committed = commits.wait();
        ASSERT_TRUE(committed.ok()) << committed.error();
    }
    static MappedFile map(const char* name) {
        auto file = MappedFile::open(at(name));
        EXPECT_TRUE(file.ok());
        return std::move(*file);
    }

    static std::filesystem::path directory;
    static EquityCounts* counts;
};
std::filesystem::path EquityFiles::directory;
EquityCounts* EquityFiles::counts = nullptr;

TEST_F(EquityFiles, EntriesAreTheExactEquitiesOfTheirHands) {
    std::mt19937 random(6);
    for (int round = 0; round < 3; ++round) {
        write(round, "one", "two", size_t{1} << 30);
        const MappedFile one = map("one");
        const MappedFile two = map("two");
        const size_t size = roundSizes[static_cast<size_t>(round)];
        ASSERT_EQ(one.size(), size * sizeof(double));
        ASSERT_EQ(two.size(), size * sizeof(double));
        for (const double equity : one.as<double>())
            ASSERT_TRUE(equity >= 0 && equity <= 1);
        if (round != 2)
            continue;
        const RoundIndexer indexer(round);
        for (int i = 0; i < 5; ++i) {
            const std::vector<uint8_t> cards = randomCards(random, 6);
            const Wins wins = plainWins({cards.begin() + 2, cards.end()}, cards[0], cards[1]);
            const size_t index = hand_index_last(indexer.get(), cards.data());
            EXPECT_EQ(one.as<double>()[index], double(wins.overOne) / (46 * 990));
            EXPECT_EQ(two.as<double>()[index], double(wins.overTwo) / (46.0 * 990 * 903));
        }
    }
}

TEST_F(EquityFiles, LittleMemoryGivesTheSameBytes) {
    write(2, "one", "two", size_t{1} << 30);
    write(2, "one.little", "two.little", size_t{20} << 20);
    EXPECT_TRUE(std::ranges::equal(map("one").bytes(), map("one.little").bytes()));
    EXPECT_TRUE(std::ranges::equal(map("two").bytes(), map("two.little").bytes()));
}

TEST_F(EquityFiles, StoppedWorkLeavesNothing) {
    Work work;
    work.stop = [] { return true; };
    BackgroundCommits commits;
    const Status status = writeEquityFiles(*counts, 2, at("a"), at("b"), 1U << 30, work, commits);
    EXPECT_FALSE(status.ok());
    EXPECT_FALSE(std::filesystem::exists(at("a")));
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        EXPECT_EQ(entry.path().string().find(".tmp."), std::string::npos) << entry.path();
}

TEST_F(EquityFiles, UnwritablePlaceIsAnError) {
    BackgroundCommits commits;
    const Status status =
        writeEquityFiles(*counts, 0, at("nowhere/one"), "", size_t{1} << 20, {}, commits);
    ASSERT_FALSE(status.ok());
    EXPECT_NE(status.error().find("nowhere/one"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
