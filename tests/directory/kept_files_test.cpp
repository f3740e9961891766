#include "directory/kept_files.h"

#include "support/file.h"
#include "toolbox/program.h"

namespace tamarin::test {
namespace {

using KeptFilesTest = ProgramTest;

TEST_F(KeptFilesTest, AreThereUnderBothNamesUntilTheyAreReplaced) {
    const std::string path = (directory / "strategy").string();
    writeFile(path, "old");
    KeptFiles kept;
    ASSERT_TRUE(kept.keep(path).ok());
    EXPECT_EQ(contentsOf(path), "old");
    ASSERT_TRUE(writeWholeFile(path, "new").ok());
    ::testing::internal::CaptureStderr();
    kept.replaced();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "tamarin: the " + path + " that was there is kept as " + path + ".bad\n");
    EXPECT_EQ(contentsOf(path + ".bad"), "old");
    EXPECT_FALSE(kept.keep((directory / "absent").string()).ok());
}

TEST_F(KeptFilesTest, GoBackWhenNothingReplacesThem) {
    const std::string path = (directory / "strategy").string();
    writeFile(path, "old");
    writeFile(path + ".bad", "older");
    {
        KeptFiles kept;
        ASSERT_TRUE(kept.keep(path).ok());
        EXPECT_EQ(contentsOf(path + ".bad.2"), "old");
    }
    EXPECT_FALSE(std::filesystem::exists(path + ".bad.2"));
    EXPECT_EQ(contentsOf(path), "old");
    EXPECT_EQ(contentsOf(path + ".bad"), "older");
    { // one of several, before the writing failed
        KeptFiles kept;
        ASSERT_TRUE(kept.keep(path).ok());
        ASSERT_TRUE(writeWholeFile(path, "new").ok());
    }
    EXPECT_EQ(contentsOf(path), "new");
    EXPECT_EQ(contentsOf(path + ".bad.2"), "old");
    std::filesystem::rename(path + ".bad.2", path);
    { // as where there are no hard links
        KeptFiles kept;
        ASSERT_TRUE(kept.keep(path).ok());
        std::filesystem::remove(path);
    }
    EXPECT_EQ(contentsOf(path), "old");
    EXPECT_FALSE(std::filesystem::exists(path + ".bad.2"));
}

} // namespace
} // namespace tamarin::test
