#include "eval/seven_card_files.h"

#include "eval/scratch_directory.h"
#include "eval/seven_card_table.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

SevenCardBuild build(const std::string& directory, std::string& said, bool force = false) {
    testing::internal::CaptureStderr();
    const auto built = buildSevenCardFiles(directory, force);
    said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(built.ok()) << built.error();
    return built ? *built : SevenCardBuild{};
}

TableFileState stateOf(const std::string& path) {
    const auto check = checkSevenCardFile(path);
    EXPECT_TRUE(check.ok()) << check.error();
    return check ? check->state : TableFileState::missing;
}

} // namespace

TEST(SevenCardFiles, MakesWhatIsMissingOrBadAndLeavesTheRest) {
    const ScratchDirectory scratch;
    const std::string directory = scratch.at("new/lookup");
    std::string said;
    EXPECT_EQ(stateOf(directory + "/tpt"), TableFileState::missing);
    SevenCardBuild built = build(directory, said);
    EXPECT_TRUE(built.madeTable && built.madeRanks);
    EXPECT_EQ(said, "");
    EXPECT_EQ(stateOf(directory + "/tpt"), TableFileState::good);
    EXPECT_TRUE(SevenCardTable::open(directory + "/tpt").ok());
    EXPECT_EQ(std::filesystem::file_size(directory + "/tpt.indexes"), 36875U * 4);

    built = build(directory, said);
    EXPECT_FALSE(built.madeTable || built.madeRanks);

    // A short table is announced, kept and made anew; the companion is left alone.
    std::filesystem::resize_file(directory + "/tpt", 1000);
    built = build(directory, said);
    EXPECT_TRUE(built.madeTable);
    EXPECT_FALSE(built.madeRanks);
    EXPECT_EQ(said, "ERROR: " + directory + "/tpt has 1000 bytes, not 129951336: rebuilding it\n");
    EXPECT_EQ(std::filesystem::file_size(directory + "/tpt.bad"), 1000U);
    EXPECT_EQ(stateOf(directory + "/tpt"), TableFileState::good);

    // So is a companion of the right size with another content.
    std::fstream ranks(directory + "/tpt.indexes", std::ios::in | std::ios::out | std::ios::binary);
    ranks.seekp(4 * 36874);
    ranks.put('x');
    ranks.close();
    built = build(directory, said);
    EXPECT_FALSE(built.madeTable);
    EXPECT_TRUE(built.madeRanks);
    EXPECT_NE(said.find("tpt.indexes does not rank hands as the rules do: rebuilding it"),
              std::string::npos);

    const auto before = std::filesystem::last_write_time(directory + "/tpt");
    built = build(directory, said, true);
    EXPECT_TRUE(built.madeTable && built.madeRanks);
    EXPECT_NE(std::filesystem::last_write_time(directory + "/tpt"), before);
    size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory))
        ++files;
    EXPECT_EQ(files, 4U); // two tables and two bad files, no temporary ones
}

TEST(SevenCardFiles, LeavesAloneWhatItDoesNotUnderstand) {
    const ScratchDirectory scratch;
    std::filesystem::create_directories(scratch.at("lookup/tpt"));
    const auto built = buildSevenCardFiles(scratch.at("lookup"));
    ASSERT_FALSE(built.ok());
    EXPECT_NE(built.error().find("not a regular file"), std::string::npos) << built.error();
    std::ofstream(scratch.at("file"));
    EXPECT_FALSE(buildSevenCardFiles(scratch.at("file/lookup")).ok());
}

} // namespace tamarin::test
