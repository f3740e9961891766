#include "dealer/hand_log.h"

#include "game/games.h"
#include "game/random_hand.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using namespace tamarin;
using tamarin::test::loadGameFile;

namespace {

LoggedHand randomHand(const Game& game, uint32_t seed) {
    LoggedHand hand{};
    test::playRandomHand(game, seed, [&](const State& state) { hand.state = state; });
    for (uint8_t seat = 0; seat < game.numPlayers; ++seat) {
        hand.chips.push_back(valueOfState(&game, &hand.state, seat));
        hand.names.push_back("p" + std::to_string(seat));
    }
    return hand;
}

std::string contents(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

class HandLogFile : public testing::Test {
protected:
    std::string path = testing::TempDir() + "hand_log_" + std::to_string(getpid());
    void TearDown() override { std::filesystem::remove(path); }
};

} // namespace

TEST(HandLine, OfAKuhnHand) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    LoggedHand hand{};
    ASSERT_GT(readState("STATE:7:crfc:Qs|Ks|As", game.get(), &hand.state), 0);
    hand.chips = {-2, 3, -1};
    hand.names = {"rule", "call", "random"};
    EXPECT_EQ(formatHand(game.get(), hand), "STATE:7:crfc:Qs|Ks|As:-2|3|-1:rule|call|random");
}

RC_GTEST_PROP(HandLine, ReadsBackAsItWas, (uint32_t seed)) {
    for (const char* name :
         {"kuhn.limit.3p.game", "holdem.limit.3p.game", "holdem.nolimit.2p.reverse_blinds.game"}) {
        const GamePtr game = loadGameFile(name);
        const LoggedHand hand = randomHand(*game, seed);
        const std::string line = formatHand(game.get(), hand);
        const auto read = parseHand(game.get(), line);
        RC_ASSERT(read.ok());
        RC_ASSERT(statesEqual(game.get(), &hand.state, &read->state) == 1);
        RC_ASSERT(read->chips == hand.chips);
        RC_ASSERT(read->names == hand.names);
        RC_ASSERT(formatHand(game.get(), *read) == line);
    }
}

TEST(HandLine, RefusesWhatItDidNotWrite) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    ASSERT_TRUE(parseHand(game.get(), "STATE:7:crfc:Qs|Ks|As:-2|3|-1:a|b|c").ok());
    const std::string good = "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b|c";
    ASSERT_TRUE(parseHand(game.get(), good).ok());
    for (const char* line :
         {"", "STATE", "STATE:7:crf:Qs|Ks|As:-1|2|-1:a|b|c", "STATE:7:crff:Qs|Ks|As",
          "STATE:7:crff:Qs|Ks|As:", "STATE:7:crff:Qs|Ks|As:-1|2|-1",
          "STATE:7:crff:Qs|Ks|As:-1|2:a|b|c", "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b",
          "STATE:7:crff:Qs|Ks|As:-1|2|x:a|b|c", "STATE:7:crff:Qs|Ks|As:-1|2|nan:a|b|c",
          "STATE:7:crff:Qs|Ks|As:-1|3|-2:a|b|c", "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b|c:d",
          "STATE:7:crff:Qs|Ks|As -1|2|-1:a|b|c"})
        EXPECT_FALSE(parseHand(game.get(), line).ok()) << line;
}

TEST_F(HandLogFile, IsReadWhileItIsWritten) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    auto log = HandLog::create(path);
    ASSERT_TRUE(log.ok());
    ASSERT_TRUE(log->comment("two words").ok());
    std::vector<LoggedHand> hands;
    for (uint32_t seed = 0; seed < 20; ++seed) {
        hands.push_back(randomHand(*game, seed));
        ASSERT_TRUE(log->add(game.get(), hands.back()).ok());
        size_t count = 0;
        ASSERT_TRUE(readHandLog(game.get(), path, [&](const LoggedHand& hand) {
                        EXPECT_EQ(hand.chips, hands[count].chips);
                        ++count;
                    }).ok());
        EXPECT_EQ(count, hands.size());
    }
    EXPECT_TRUE(log->close().ok());
    EXPECT_TRUE(contents(path).starts_with("# two words\nSTATE:0:"));
}

TEST_F(HandLogFile, ReplacesAnOlderOneWithItsFirstLine) {
    {
        auto log = HandLog::create(path);
        ASSERT_TRUE(log.ok());
        EXPECT_TRUE(std::filesystem::exists(path));
    }
    EXPECT_FALSE(std::filesystem::exists(path)) << "nothing was written";
    std::ofstream(path) << "an older and longer match\n";
    {
        auto log = HandLog::create(path);
        ASSERT_TRUE(log.ok());
    }
    EXPECT_EQ(contents(path), "an older and longer match\n");
    auto log = HandLog::create(path);
    ASSERT_TRUE(log.ok());
    ASSERT_TRUE(log->comment("new").ok());
    EXPECT_EQ(contents(path), "# new\n");
    EXPECT_TRUE(log->close().ok());
}

TEST_F(HandLogFile, ALineCutOffIsNoHand) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    std::ofstream(path) << "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b|c\nSTATE:8:crff:Qs|Ks|As:-1|2|-1:a|b";
    int count = 0;
    EXPECT_TRUE(readHandLog(game.get(), path, [&](const LoggedHand&) { ++count; }).ok());
    EXPECT_EQ(count, 1);
}

TEST_F(HandLogFile, ErrorsNameTheLine) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    std::ofstream(path) << "# comment\n\nSTATE:7:crff:Qs|Ks|As:-1|2|0:a|b|c\n";
    const Status status = readHandLog(game.get(), path, [](const LoggedHand&) {});
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error(), path + ":3: seat 2 did not win 0");
    EXPECT_FALSE(readHandLog(game.get(), path + ".none", [](const LoggedHand&) {}).ok());
}

TEST(HandLogErrors, AreReported) {
    EXPECT_FALSE(HandLog::create("/nonexistent/log").ok());
    auto full = HandLog::create("/dev/full");
    ASSERT_TRUE(full.ok());
    const Status status = full->comment("x");
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error(), "could not write /dev/full: No space left on device");
}
