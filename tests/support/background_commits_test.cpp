#include "support/background_commits.h"

#include "support/temp_directory.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

AtomicFile written(const std::string& path, const std::string& text) {
    auto file = AtomicFile::create(path);
    EXPECT_TRUE(file.ok());
    EXPECT_TRUE(file->write(text).ok());
    return std::move(*file);
}

TEST(BackgroundCommits, PutFilesInTheirPlaces) {
    const TempDirectory scratch;
    BackgroundCommits commits;
    for (const char* name : {"one", "two", "three"})
        commits.add(written(scratch.file(name), std::string("of ") + name));
    EXPECT_TRUE(commits.wait().ok());
    for (const char* name : {"one", "two", "three"})
        EXPECT_EQ(*readWholeFile(scratch.file(name)), std::string("of ") + name);
    EXPECT_TRUE(commits.wait().ok()) << "nothing to wait for";
}

TEST(BackgroundCommits, SayWhatFailedAndDoTheRest) {
    const TempDirectory scratch;
    std::filesystem::create_directory(scratch.file("there"));
    AtomicFile gone = written(scratch.file("there/gone"), "a");
    AtomicFile other = written(scratch.file("other"), "b");
    std::filesystem::remove_all(scratch.file("there"));
    BackgroundCommits commits;
    commits.add(std::move(gone));
    commits.add(std::move(other));
    const Status status = commits.wait();
    ASSERT_FALSE(status.ok());
    EXPECT_NE(status.error().find("there/gone"), std::string::npos) << status.error();
    EXPECT_EQ(*readWholeFile(scratch.file("other")), "b");
}

TEST(BackgroundCommits, EndWithTheObject) {
    const TempDirectory scratch;
    {
        BackgroundCommits commits;
        commits.add(written(scratch.file("file"), "text"));
    }
    EXPECT_EQ(*readWholeFile(scratch.file("file")), "text");
}

} // namespace
} // namespace tamarin::test
