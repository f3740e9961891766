#include "report/names_in.h"

#include "support/file.h"
#include "support/temp_directory.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(NamesIn, AreThoseOfFilesAndFolders) {
    const TempDirectory directory;
    EXPECT_EQ(namesIn(directory.path()), std::set<std::string>{});
    ASSERT_TRUE(writeWholeFile(directory.file("b"), "x").ok());
    ASSERT_TRUE(writeWholeFile(directory.file(".hidden"), "x").ok());
    std::filesystem::create_directories(directory.file("a/inner"));
    EXPECT_EQ(namesIn(directory.path()), (std::set<std::string>{".hidden", "a", "b"}));
}

TEST(NamesIn, ThereAreNoneWhereThereIsNoFolder) {
    const TempDirectory directory;
    ASSERT_TRUE(writeWholeFile(directory.file("file"), "x").ok());
    EXPECT_EQ(namesIn(directory.file("file")), std::set<std::string>{});
    EXPECT_EQ(namesIn(directory.file("absent")), std::set<std::string>{});
}

} // namespace tamarin::test
