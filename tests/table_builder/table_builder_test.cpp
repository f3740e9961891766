#include "table_builder/table_builder.h"

#include "abstraction/table_store.h"
#include "eval/seven_card_files.h"
#include "support/file.h"
#include "support/lock.h"
#include "support/resources.h"
#include "table_builder/build_steps.h"
#include "table_builder/later_rounds.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <limits>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class Builder : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        writeLaterRounds();
    }

    static std::string contents(const std::string& path) {
        const auto text = readWholeFile(path);
        EXPECT_TRUE(text.ok());
        return text.ok() ? *text : "";
    }
    static std::vector<std::string> made(const Result<BuildReport>& report) {
        std::vector<std::string> paths;
        EXPECT_TRUE(report.ok()) << report.error();
        if (report)
            for (const BuiltTable& table : report->tables)
                if (table.made)
                    paths.push_back(table.file->path);
        return paths;
    }
    static std::string preflopUtilities() {
        return contents(utilityPath(2, 0, 0)) + contents(utilityPath(2, 0, 1));
    }

    BuildOptions options;
};

TEST_F(Builder, MakesWhatIsMissingAndThenNothing) {
    EXPECT_EQ(made(buildTables(options)).size(), 9U);
    for (const TableFile& file : allTables())
        EXPECT_TRUE(usableFile(file.path, file.bytes)) << file.path;
    const std::string clusters = contents(clusterPath(2, 0));
    for (size_t i = 0; i < clusters.size(); ++i)
        EXPECT_EQ(static_cast<size_t>(clusters[i]), (i * 100 + 84) / 168) << i;
    const auto utility = MappedFile::open(utilityPath(2, 0, 0));
    ASSERT_TRUE(utility.ok());
    const auto [least, most] = std::ranges::minmax(utility->as<double>());
    EXPECT_GE(least, -2); // the ante and one raise
    EXPECT_LE(most, 2);
    EXPECT_LT(least, most);
    // The last two seats share their utilities.
    EXPECT_EQ(contents(holdemPath(3, 0, 1)), contents(holdemPath(3, 0, 2)));
    EXPECT_TRUE(made(buildTables(options)).empty());
}

TEST_F(Builder, BytesDoNotDependOnTheThreads) {
    options.groups = {TableGroup::utilities};
    options.threads = 1;
    made(buildTables(options));
    const std::string first = preflopUtilities();
    options.force = false;
    for (int seat = 0; seat < 2; ++seat)
        std::filesystem::remove(utilityPath(2, 0, seat));
    options.threads = 3;
    made(buildTables(options));
    EXPECT_EQ(preflopUtilities(), first);
}

// Both were once written whichever was missing, and the manifest then knew one of them no more.
TEST_F(Builder, LeavesTheOtherSeatsUtilitiesAlone) {
    options.groups = {TableGroup::utilities};
    made(buildTables(options));
    const std::string first = contents(utilityPath(2, 0, 0));
    const std::string second = contents(utilityPath(2, 0, 1));
    std::filesystem::remove(utilityPath(2, 0, 1));
    EXPECT_EQ(made(buildTables(options)), std::vector<std::string>{utilityPath(2, 0, 1)});
    EXPECT_EQ(contents(utilityPath(2, 0, 1)), second);
    // As another version may have left it.
    writeSparse<double>(utilityPath(2, 0, 0), roundSizes[0], {0.5, -0.25});
    const std::string other = contents(utilityPath(2, 0, 0));
    std::filesystem::remove(utilityPath(2, 0, 1));
    EXPECT_EQ(made(buildTables(options)), std::vector<std::string>{utilityPath(2, 0, 1)});
    EXPECT_EQ(contents(utilityPath(2, 0, 0)), other);
    EXPECT_NE(other, first);
    EXPECT_EQ(contents(utilityPath(2, 0, 1)), second);
}

TEST_F(Builder, SetsAFileOfTheWrongSizeAside) {
    made(buildTables(options));
    const std::string good = contents(holdemPath(2, 0, 1));
    std::filesystem::resize_file(holdemPath(2, 0, 1), 100);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(made(buildTables(options)), std::vector<std::string>{holdemPath(2, 0, 1)});
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: lookup/holdem_preflop_2p_1 has 100 bytes, not 169: rebuilding it\n");
    EXPECT_EQ(contents(holdemPath(2, 0, 1)), good);
    EXPECT_EQ(std::filesystem::file_size(holdemPath(2, 0, 1) + ".bad"), 100U);
}

TEST_F(Builder, StopsWhereItIsToldToAndGoesOnFromThere) {
    // Clusters are made before the stop, utilities are not.
    std::atomic<bool> counting{false};
    options.progress = [&](const std::string& step, uint64_t, uint64_t) {
        counting = counting || step == "Counting pre-flop meetings";
    };
    options.stop = [&] { return counting.load(); };
    const auto stopped = buildTables(options);
    ASSERT_FALSE(stopped.ok());
    EXPECT_EQ(stopped.error(), "stopped");
    EXPECT_TRUE(std::filesystem::exists(clusterPath(2, 0)));
    EXPECT_FALSE(std::filesystem::exists(utilityPath(2, 0, 0)));
    for (const auto& entry : std::filesystem::directory_iterator("lookup"))
        EXPECT_EQ(entry.path().string().find(".tmp."), std::string::npos) << entry.path();
    options.stop = nullptr;
    EXPECT_EQ(made(buildTables(options)).size(), 7U);
}

// An exception on a worker would end the process if it left the parallel region there.
TEST_F(Builder, AnExceptionOfACallbackReachesTheCaller) {
    options.groups = {TableGroup::utilities};
    for (const bool afterSolving : {false, true}) {
        std::atomic<bool> solved{false};
        options.progress = [&](const std::string& step, uint64_t, uint64_t) {
            solved = solved || step == "Counting pre-flop utilities";
        };
        options.stop = [&]() -> bool {
            if (solved || !afterSolving)
                throw std::runtime_error("enough");
            return false;
        };
        EXPECT_THROW((void)buildTables(options), std::runtime_error) << afterSolving;
        EXPECT_EQ(solved, afterSolving);
        EXPECT_FALSE(std::filesystem::exists(utilityPath(2, 0, 0)));
    }
}

TEST_F(Builder, TwoInOneDirectoryTakeTurns) {
    std::atomic<int> waits{0};
    std::atomic<bool> locked{false};
    BuildOptions slow = options;
    slow.log =
        options.log = [&](const std::string& line) { waits += line.starts_with("waiting: "); };
    // The first holds the directory until the second has come and said that it waits.
    slow.begin = [&](const auto&) {
        locked = true;
        for (int i = 0; i < 6000 && waits == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    };
    std::vector<std::string> first;
    std::thread other([&] { first = made(buildTables(slow)); });
    while (!locked)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const std::vector<std::string> second = made(buildTables(options));
    other.join();
    EXPECT_EQ(waits, 1);
    EXPECT_EQ(first.size(), 9U);
    EXPECT_TRUE(second.empty());
}

// It was once left as it was, and said to be made, unless it was the only group asked for.
TEST_F(Builder, ForceMakesTheSevenCardTableBesideOtherGroups) {
    if (availableMemory() < leastEquityMemory() * 2)
        GTEST_SKIP() << "too little memory";
    const std::string ranks = "lookup/tpt.indexes";
    // A look into them ends at once.
    for (int players = 2; players <= 3; ++players)
        for (int round = 1; round < holdemRounds; ++round)
            writeSparse<double>(equityPath(players, round), roundSizes[static_cast<size_t>(round)],
                                {2.0});
    std::filesystem::remove("lookup/tpt"); // an empty one
    ASSERT_TRUE(buildSevenCardFiles("lookup", true).ok());
    for (const std::vector<TableGroup>& groups :
         {std::vector<TableGroup>{TableGroup::sevenCards, TableGroup::clusters},
          std::vector<TableGroup>{}}) {
        const auto before = std::filesystem::last_write_time(ranks);
        options.groups = groups;
        options.force = true;
        options.memory = leastEquityMemory();
        // The other groups take long and come after it.
        std::atomic<bool> after{false};
        options.progress = [&](const std::string& step, uint64_t, uint64_t) {
            after = after ||
                    (step != "Computing the seven-card table" && step != "Looking into tables");
        };
        options.stop = [&] { return after.load(); };
        (void)buildTables(options);
        EXPECT_NE(std::filesystem::last_write_time(ranks), before) << groups.size();
    }
}

// Only signals were once asked for here.
TEST_F(Builder, StopsWhileItWaitsForItsTurn) {
    const auto lock = FileLock::take(tableLockPath("lookup"));
    ASSERT_TRUE(lock.ok());
    std::atomic<bool> waiting{false};
    options.log = [&](const std::string& line) { waiting = line.starts_with("waiting: "); };
    options.stop = [&] { return waiting.load(); };
    const auto stopped = buildTables(options);
    ASSERT_FALSE(stopped.ok());
    EXPECT_EQ(stopped.error(), "stopped");
}

TEST_F(Builder, TellsOfEveryStepWhileTheDirectoryIsLocked) {
    std::vector<std::string> told;
    const auto tell = [&](const char* what, const std::vector<const TableFile*>& files) {
        EXPECT_FALSE(FileLock::take(tableLockPath("lookup")).ok());
        told.push_back(what + std::string(nameOf(files[0]->group)) + std::to_string(files.size()));
        EXPECT_EQ(usableFile(files[0]->path, files[0]->bytes), what == std::string("made "));
    };
    options.begin = [&](const auto& files) { tell("begin ", files); };
    options.made = [&](const auto& files) { tell("made ", files); };
    made(buildTables(options));
    EXPECT_EQ(told, (std::vector<std::string>{"begin clusters2", "made clusters2", "begin utility2",
                                              "made utility2", "begin holdem5", "made holdem5"}));
}

TEST_F(Builder, LeavesWhatIsNoFileToAPerson) {
    std::filesystem::create_directory(clusterPath(2, 0));
    const auto refused = buildTables(options);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(),
              "lookup/preflop_2p_c is a directory: move it away, a table belongs there");
    std::filesystem::remove(clusterPath(2, 0));
    ASSERT_EQ(mkfifo(clusterPath(2, 0).c_str(), 0600), 0);
    const auto pipe = buildTables(options);
    ASSERT_FALSE(pipe.ok());
    EXPECT_EQ(pipe.error(),
              "lookup/preflop_2p_c is not a regular file: move it away, a table belongs there");
    // A link to nowhere is as good as nothing: the table appears behind it.
    std::filesystem::remove(clusterPath(2, 0));
    std::filesystem::create_symlink("elsewhere", clusterPath(2, 0));
    made(buildTables(options));
    EXPECT_TRUE(std::filesystem::is_regular_file("lookup/elsewhere"));
    EXPECT_TRUE(std::filesystem::is_symlink(clusterPath(2, 0)));
}

TEST_F(Builder, RefusesTooLittleMemoryBeforeTheWork) {
    std::filesystem::remove(equityPath(2, 0));
    options.memory = uint64_t{100} << 20;
    const auto refused = buildTables(options);
    ASSERT_FALSE(refused.ok());
    EXPECT_NE(refused.error().find("of memory at least, more than the"), std::string::npos)
        << refused.error();
    EXPECT_FALSE(std::filesystem::exists(clusterPath(2, 0)));
}

// Sources of what is missing are looked into, whoever asks. They were once taken as they lay: no
// numbers among the equities gave buckets without sense, and status 0.
TEST_F(Builder, DamagedSourcesAreMadeAnew) {
    made(buildTables(options));
    const std::string good = contents(clusterPath(2, 0));
    const std::string utilities = preflopUtilities();
    const std::string buckets = contents(holdemPath(2, 0, 1));
    writeSparse<uint8_t>(clusterPath(2, 0), roundSizes[0], {200});
    std::filesystem::remove(utilityPath(2, 0, 1));
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(made(buildTables(options)),
              (std::vector<std::string>{clusterPath(2, 0), utilityPath(2, 0, 1)}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: lookup/preflop_2p_c holds cluster 200 at hand 0 (byte 0), not 0..100: "
              "rebuilding it\n");
    EXPECT_EQ(contents(clusterPath(2, 0)), good);
    EXPECT_EQ(contents(clusterPath(2, 0) + ".bad")[0], static_cast<char>(200));
    EXPECT_EQ(preflopUtilities(), utilities);

    writeSparse<double>(utilityPath(2, 0, 1), roundSizes[0]);
    std::filesystem::remove(holdemPath(2, 0, 1));
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(made(buildTables(options)),
              (std::vector<std::string>{utilityPath(2, 0, 1), holdemPath(2, 0, 1)}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: lookup/utility_preflop_2p_1 holds nothing but utility 0: rebuilding it\n");
    EXPECT_EQ(preflopUtilities(), utilities);
    EXPECT_EQ(contents(holdemPath(2, 0, 1)), buckets);
}

// Equities are counted from the rules alone. Here the counting begins, and is stopped.
TEST_F(Builder, DamagedEquitiesAreCountedAnew) {
    made(buildTables(options));
    std::vector<double> equities(roundSizes[0], 0.5);
    equities[7] = std::numeric_limits<double>::quiet_NaN();
    writeSparse(equityPath(3, 0), roundSizes[0], equities);
    std::filesystem::remove(holdemPath(3, 0, 2));
    std::vector<std::string> begun;
    options.begin = [&](const std::vector<const TableFile*>& files) {
        for (const TableFile* file : files)
            begun.push_back(file->path);
    };
    options.memory = std::max(leastEquityMemory(), uint64_t{1} << 30);
    options.stop = [&] { return !begun.empty(); };
    ::testing::internal::CaptureStderr();
    const auto stopped = buildTables(options);
    const std::string said = ::testing::internal::GetCapturedStderr();
    ASSERT_FALSE(stopped.ok());
    EXPECT_EQ(begun, (std::vector<std::string>{equityPath(3, 0)})) << stopped.error();
    EXPECT_EQ(said, "ERROR: lookup/preflop_3p holds equity nan at hand 7 (byte 56), not 0..1: "
                    "rebuilding it\n");
}

TEST_F(Builder, LooksIntoWhatItIsAskedTo) {
    made(buildTables(options));
    const std::string good = contents(holdemPath(3, 0, 2));
    writeSparse<uint8_t>(holdemPath(3, 0, 2), roundSizes[0], {0, 255});
    EXPECT_TRUE(made(buildTables(options)).empty()); // sizes alone
    options.groups = {TableGroup::clusters};
    options.lookInto = {TableGroup::holdem, TableGroup::utilities};
    EXPECT_TRUE(made(buildTables(options)).empty()); // not wanted
    options.groups = {TableGroup::holdem};
    options.lookInto = {TableGroup::utilities};
    EXPECT_TRUE(made(buildTables(options)).empty()); // another group

    options.lookInto = {TableGroup::holdem};
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(made(buildTables(options)), std::vector<std::string>{holdemPath(3, 0, 2)});
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: lookup/holdem_preflop_3p_2 holds bucket 255 at hand 1 (byte 1), not 0..9: "
              "rebuilding it\n");
    EXPECT_EQ(contents(holdemPath(3, 0, 2)), good);
    EXPECT_TRUE(std::filesystem::exists(holdemPath(3, 0, 2) + ".bad"));
    EXPECT_TRUE(made(buildTables(options)).empty());
    options.stop = [] { return true; };
    const auto stopped = buildTables(options);
    ASSERT_FALSE(stopped.ok());
    EXPECT_EQ(stopped.error(), "stopped");
}

uint64_t hashOf(const std::string& bytes) { // FNV-1a
    uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<uint8_t>(byte)) * 0x100000001b3U;
    return hash;
}

// The same bytes from every compiler, on every machine, for ever.
TEST_F(Builder, BytesAreThese) {
    made(buildTables(options));
    EXPECT_EQ(hashOf(contents(utilityPath(2, 0, 0))), 12350001085752434136U);
    EXPECT_EQ(hashOf(contents(utilityPath(2, 0, 1))), 3349312552723825628U);
    EXPECT_EQ(hashOf(contents(clusterPath(2, 0))), 17746868345063829487U);
    EXPECT_EQ(hashOf(contents(holdemPath(2, 0, 0))), 12887711156307647126U);
    EXPECT_EQ(hashOf(contents(holdemPath(2, 0, 1))), 16237797713814249318U);
}

TEST_F(Builder, ForeignGameIsRefused) {
    ASSERT_TRUE(writeWholeFile("kuhn.preflop.2p.game", "GAMEDEF\nlimit\nEND GAMEDEF\n").ok());
    ::testing::internal::CaptureStderr(); // the reader's own line
    const auto refused = buildTables(options);
    ::testing::internal::GetCapturedStderr();
    ASSERT_FALSE(refused.ok());
    EXPECT_NE(refused.error().find("kuhn.preflop.2p.game"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
