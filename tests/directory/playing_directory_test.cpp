#include "directory/playing_directory.h"

#include "support/tree_paths.h"
#include "toolbox/tamarin_process.h"

#include <algorithm>
#include <fstream>

namespace tamarin::test {

namespace {

constexpr const char* kuhn = "kuhn.limit.3p.game";
const std::string source = tamarin::test::inTree(std::string("games/") + kuhn);

void write(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

} // namespace

TEST(FindGameFile, TakesAPathAsItStands) {
    const Scratch scratch;
    write(scratch / "my.game", "x");
    EXPECT_EQ(*findGameFile(scratch / "my.game", "/"), scratch / "my.game");
    const auto missing = findGameFile(scratch / "none.game", "/");
    ASSERT_FALSE(missing.ok());
    EXPECT_EQ(missing.error(), "no game definition at " + (scratch / "none.game"));
}

TEST(FindGameFile, LooksInThePlayingDirectoryFirst) {
    const Scratch scratch;
    EXPECT_EQ(*findGameFile(kuhn, scratch.path()), source);
    write(scratch / kuhn, "x");
    EXPECT_EQ(*findGameFile(kuhn, scratch.path()), scratch / kuhn);
    const auto missing = findGameFile("none.game", scratch.path());
    ASSERT_FALSE(missing.ok());
    EXPECT_TRUE(missing.error().starts_with("no game definition none.game in " + scratch.path()));
}

TEST(GameNames, AreThoseOfTheDirectoryAndOfTheProgram) {
    const Scratch scratch;
    const std::vector<std::string> own = gameNames(scratch.path());
    EXPECT_TRUE(std::ranges::find(own, kuhn) != own.end());
    EXPECT_TRUE(std::ranges::is_sorted(own));
    write(scratch / "aaa.game", "x");
    write(scratch / kuhn, "x");
    write(scratch / "notes.txt", "x");
    std::filesystem::create_directory(scratch / "folder.game");
    const std::vector<std::string> both = gameNames(scratch.path());
    ASSERT_EQ(both.size(), own.size() + 1);
    EXPECT_EQ(both[0], "aaa.game");
    EXPECT_EQ(gameNames(scratch / "nowhere"), own);
}

TEST(ReadGameFile, ReadsOrSaysWhyNot) {
    const auto game = readGameFile(source);
    ASSERT_TRUE(game.ok());
    EXPECT_EQ((*game)->numPlayers, 3);
    EXPECT_EQ(readGameFile("/nonexistent").error(),
              "could not open game /nonexistent: No such file or directory");
    const Scratch scratch;
    write(scratch / "bad.game", "GAMEDEF\nnumplayers = 3\nEND GAMEDEF\n");
    testing::internal::CaptureStderr();
    const auto bad = readGameFile(scratch / "bad.game");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "invalid number of rounds: 0\n");
    ASSERT_FALSE(bad.ok());
    EXPECT_EQ(bad.error(), "could not read game " + (scratch / "bad.game"));
}

TEST(OpenGameFile, FindsReadsAndNames) {
    const auto game = openGameFile(source, "/");
    ASSERT_TRUE(game.ok());
    EXPECT_EQ(game->path, source);
    EXPECT_EQ(game->name, kuhn);
    EXPECT_EQ(game->rules->numPlayers, 3);
    EXPECT_EQ(openGameFile("/nonexistent/my.game", "/").error(),
              "no game definition at /nonexistent/my.game");
}

TEST(PlaceGameFile, MakesTheDirectory) {
    const Scratch scratch;
    const std::string below = scratch / "a/b";
    testing::internal::CaptureStderr();
    EXPECT_EQ(*placeGameFile(source, below), kuhn);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "tamarin: copied " + source + " to " + below + "/" + kuhn + "\n");
    EXPECT_TRUE(readGameFile(below + "/" + kuhn).ok());
}

TEST(PlaceGameFile, CopiesItOnce) {
    const Scratch scratch;
    testing::internal::CaptureStderr();
    EXPECT_EQ(*placeGameFile(source, scratch.path()), kuhn);
    EXPECT_EQ(*placeGameFile(source, scratch.path()), kuhn);
    EXPECT_EQ(*placeGameFile(scratch / kuhn, scratch.path()), kuhn);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "tamarin: copied " + source + " to " + (scratch / kuhn) + "\n");
    EXPECT_TRUE(readGameFile(scratch / kuhn).ok());
}

TEST(PlaceGameFile, RefusesToReplaceAnotherGame) {
    const Scratch scratch;
    write(scratch / kuhn, "another game\n");
    const auto placed = placeGameFile(source, scratch.path());
    ASSERT_FALSE(placed.ok());
    EXPECT_EQ(placed.error(), (scratch / kuhn) + " differs from " + source +
                                  ": use another --dir, or the definition that is there");
}

} // namespace tamarin::test
