#include "toolbox/file_play.h"

#include "toolbox/command.h"
#include "toolbox/tamarin_process.h"

namespace tamarin::test {
namespace {

constexpr const char* limitForTwo = "holdem.limit.2p.reverse_blinds.game";

// Who opens a file that is there: the commands' own tests.
TEST(FilePlay, SaysWhatIsMissing) {
    const Scratch scratch;
    const auto none = openFilePlay(limitForTwo, scratch.path(), "");
    ASSERT_FALSE(none.ok());
    EXPECT_EQ(none.error(), "there is no strategy " +
                                (scratch / "strategies/holdem.limit.2p/strategy") +
                                "; 'tamarin prepare holdem.limit.2p.reverse_blinds.game' makes it");
    const auto elsewhere = openFilePlay(limitForTwo, scratch.path(), "mine");
    ASSERT_FALSE(elsewhere.ok());
    EXPECT_EQ(elsewhere.error(), "there is no strategy mine/strategy; 'tamarin prepare "
                                 "holdem.limit.2p.reverse_blinds.game' makes it");
}

TEST(FilePlay, IsOfHoldemForTwo) {
    for (const std::string game : {"kuhn.limit.3p.game", "holdem.limit.3p.game"}) {
        const auto refused = openFilePlay(game, ".", "");
        ASSERT_FALSE(refused.ok()) << game;
        EXPECT_EQ(refused.error(),
                  game + ": strategy files are measured in two-player hold'em alone; other games "
                         "with --strategy uniform, fold, call or raise");
    }
}

TEST(FilePlay, SimpleRulesAreAskedForByName) {
    EXPECT_EQ(simplePlayAsked("raise"), SimplePlay::raise);
    try {
        simplePlayAsked("rise");
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "--strategy: 'rise' is not uniform, fold, call or raise; "
                                   "strategy files are named by --strategies");
    }
    EXPECT_EQ(describePlay(SimplePlay::uniform, "uniform"), "uniform play");
    EXPECT_EQ(describePlay(SimplePlay::call, "call"), "always call");
}

} // namespace
} // namespace tamarin::test
