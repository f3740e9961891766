#include "game/definition_file.h"

#include "game/games.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string errorOfFile(const std::string& path) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(readDefinitionFile(path.c_str()), nullptr) << path;
    return testing::internal::GetCapturedStderr();
}

class DefinitionFileTest : public testing::Test {
protected:
    DefinitionFileTest() {
        std::string pattern = testing::TempDir() + "definition.XXXXXX";
        EXPECT_NE(mkdtemp(pattern.data()), nullptr);
        directory = pattern;
    }
    ~DefinitionFileTest() override { std::filesystem::remove_all(directory); }
    std::string directory;
};

TEST_F(DefinitionFileTest, IsReadWhole) {
    const std::string path = directory + "/kuhn.game";
    std::ofstream(path) << threePlayerKuhn;
    const GamePtr game = readDefinitionFile(path.c_str());
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(printToString(*game), printToString(*parseGame(threePlayerKuhn)));
    const std::string link = directory + "/link.game";
    std::filesystem::create_symlink(path, link);
    EXPECT_NE(readDefinitionFile(link.c_str()), nullptr);
}

TEST_F(DefinitionFileTest, SaysWhatItCannotOpenOrRead) {
    const std::string path = directory + "/none.game";
    EXPECT_EQ(errorOfFile(path), "ERROR: could not open game " + path + "\n");
    std::ofstream(path) << "GAMEDEF\nnumRounds = 9\n";
    EXPECT_EQ(errorOfFile(path),
              "invalid number of rounds: 9\nERROR: could not read game " + path + "\n");
    EXPECT_EQ(errorOfFile(directory), "ERROR: could not read game " + directory + "\n");
}

// A pipe that nobody writes would be waited for, and a device without an end read, for ever.
TEST_F(DefinitionFileTest, DoesNotWaitForWhatIsNoFile) {
    const std::string pipe = directory + "/pipe.game";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {pipe, std::string("/dev/zero"), std::string("/dev/null")})
        EXPECT_EQ(errorOfFile(path), "ERROR: could not read game " + path + "\n");
}

} // namespace
} // namespace tamarin::test
