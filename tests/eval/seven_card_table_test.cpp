#include "eval/seven_card_table.h"

#include "eval/scratch_directory.h"
#include "eval/seven_card_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

// The file as a sparse one of the given size.
std::string fileOfSize(const ScratchDirectory& directory, uintmax_t size) {
    const std::string path = directory.at("tpt");
    std::ofstream(path).close();
    std::filesystem::resize_file(path, size);
    return path;
}

std::string refusal(const std::string& path) {
    const Result<SevenCardTable> opened = SevenCardTable::open(path);
    return opened ? "was opened" : opened.error();
}

} // namespace

TEST(SevenCardTable, SavedAndOpenedIsTheSame) {
    const ScratchDirectory directory;
    const SevenCardTable made = SevenCardTable::generate();
    ASSERT_TRUE(made.save(directory.at("tpt")).ok());
    EXPECT_EQ(std::filesystem::file_size(directory.at("tpt")), sevenCardBytes);
    const Result<SevenCardTable> opened = SevenCardTable::open(directory.at("tpt"));
    ASSERT_TRUE(opened) << opened.error();
    EXPECT_TRUE(
        std::equal(made.entries().begin(), made.entries().end(), opened->entries().begin()));

    // Flip the row of one state that the samples visit first: the root's.
    std::fstream file(directory.at("tpt"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(54 * 4);
    const std::string zeros(52 * 4, '\0');
    file.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
    file.close();
    EXPECT_NE(refusal(directory.at("tpt")).find("does not rank hands"), std::string::npos);
}

TEST(SevenCardTable, RefusesAMissingFile) {
    const ScratchDirectory directory;
    const std::string said = refusal(directory.at("tpt"));
    EXPECT_NE(said.find(directory.at("tpt")), std::string::npos) << said;
    EXPECT_NE(said.find("tamarin tables --only tpt"), std::string::npos) << said;
}

TEST(SevenCardTable, RefusesEveryOtherSize) {
    const ScratchDirectory directory;
    for (const uintmax_t size : {uintmax_t{0}, uintmax_t{1}, uintmax_t{sevenCardBytes - 4},
                                 uintmax_t{sevenCardBytes - 1}, uintmax_t{sevenCardBytes + 1}}) {
        const std::string said = refusal(fileOfSize(directory, size));
        EXPECT_NE(said.find(std::to_string(size) + " bytes"), std::string::npos) << said;
        EXPECT_NE(said.find(std::to_string(sevenCardBytes)), std::string::npos) << said;
    }
}

TEST(SevenCardTable, RefusesZerosOfTheRightSize) {
    const ScratchDirectory directory;
    EXPECT_NE(refusal(fileOfSize(directory, sevenCardBytes)).find("does not rank hands"),
              std::string::npos);
}

// A few dozen hands do not come by it; those that did were once led outside the table.
TEST(SevenCardTable, RefusesAnEntryThatLeadsOutside) {
    const ScratchDirectory directory;
    ASSERT_TRUE(SevenCardTable::generate().save(directory.at("tpt")).ok());
    const auto write = [&](int32_t entry) {
        std::fstream file(directory.at("tpt"), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(100'000'000);
        file.write(reinterpret_cast<const char*>(&entry), sizeof entry);
    };
    write(static_cast<int32_t>(sevenCardEntries - 53)); // wrong, but harmless
    EXPECT_EQ(refusal(directory.at("tpt")), "was opened");
    for (const int32_t outside :
         {static_cast<int32_t>(sevenCardEntries - 52), INT32_MAX, -1, INT32_MIN}) {
        write(outside);
        EXPECT_NE(refusal(directory.at("tpt")).find("does not rank hands"), std::string::npos)
            << outside;
        const auto check = checkSevenCardFile(directory.at("tpt"));
        ASSERT_TRUE(check.ok());
        EXPECT_EQ(check->state, TableFileState::bad) << outside;
    }
}

TEST(SevenCardTable, RefusesADirectory) {
    const ScratchDirectory directory;
    EXPECT_NE(refusal(directory.at(".")), "was opened");
}

TEST(SevenCardTable, ComputesWhatItCannotOpen) {
    const ScratchDirectory directory;
    testing::internal::CaptureStderr();
    const SevenCardTable table = SevenCardTable::openOrGenerate(directory.at("tpt"));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said.rfind("WARNING: ", 0), 0U) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
    const uint8_t royal[5] = {51, 47, 43, 39, 35};
    EXPECT_EQ(table.rank5(royal), 36874U);
}

} // namespace tamarin::test
