#include "toolbox/output_place.h"

#include "toolbox/program.h"

#include <sys/stat.h>

namespace tamarin::test {
namespace {

class OutputPlace : public ProgramTest {
protected:
    Status check() const { return checkOutputPlace(path, "# log ", "a log", "--log"); }
    std::string path = (directory / "result").string();
};

TEST_F(OutputPlace, IsFreeOrHoldsAnOlderResult) {
    EXPECT_TRUE(check().ok());
    for (const char* older : {"", "# log ", "# log of old\n"}) {
        writeFile(path, older);
        EXPECT_TRUE(check().ok()) << older;
    }
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_TRUE(check().ok()); // at once, without a writer
}

TEST_F(OutputPlace, HoldsNothingElse) {
    for (const char* other : {"x", "# log", "#log  ", "\n# log "}) {
        writeFile(path, other);
        EXPECT_EQ(check().error(), path + " is there and is not a log: give --log another name, or "
                                          "move the file away");
        EXPECT_EQ(contentsOf(path), other);
    }
}

TEST_F(OutputPlace, HasAFolderToLieIn) {
    EXPECT_TRUE(checkOutputFolder(path).ok());
    EXPECT_TRUE(checkOutputFolder("page.html").ok());
    EXPECT_EQ(checkOutputFolder(directory.string()).error(),
              directory.string() + " is a directory");
    EXPECT_EQ(checkOutputFolder(path + "/page.html").error(),
              "could not write to " + path + ": No such file or directory");
    writeFile(path, "a file");
    EXPECT_EQ(checkOutputFolder(path + "/page.html").error(),
              "could not write to " + path + ": Not a directory");
}

} // namespace
} // namespace tamarin::test
