#include "driver/LimitHoldemAgent.h"

#include "abstraction/round_indexers.h"
#include "driver/holdem_directory.h"
#include "game/text.h"
#include "support/rng.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const char* const limit2 = "holdem.limit.2p.reverse_blinds.game";
const char* const limit3 = "holdem.limit.3p.game";
const char* const noLimit2 = "holdem.nolimit.2p.reverse_blinds.game";
constexpr unsigned long long shortTraining = 100; // progress comes in hundredths

// An agent whose state a test sets by hand.
class OpenHoldemAgent : public LimitHoldemAgent {
public:
    explicit OpenHoldemAgent(const char* gameFile, unsigned long long iterations = shortTraining)
        : LimitHoldemAgent(gameFile, iterations) {}

    Action actionIn(const std::string& text) {
        EXPECT_GT(readMatchState(text.c_str(), game, &state), 0) << text;
        Action action{actionInvalid, 77};
        getAction(action);
        return action;
    }
    const Game* definition() const { return game; }
};

// Constructs an agent and returns what it printed on standard output and standard error.
std::array<std::string, 2> construct(const char* gameFile) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    { OpenHoldemAgent agent(gameFile); }
    return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

// Where a hand's entry lies in its round's tables.
uint64_t indexOf(int round, std::initializer_list<const char*> names) {
    uint8_t cards[MAX_HOLE_CARDS + MAX_BOARD_CARDS];
    size_t count = 0;
    for (const char* name : names)
        EXPECT_EQ(readCard(name, &cards[count++]), 2);
    return hand_index_last(RoundIndexer(round).get(), cards);
}

// A strategy file in which the named information sets always do one thing: 0 fold, 1 call, 2 raise.
// The file is the agent's own, with the sums of those sets replaced.
void writeStrategy(const std::string& path, const std::map<std::string, int>& pure) {
    std::string bytes = PlayingDirectory::read(path);
    for (const auto& [key, action] : pure) {
        std::string field(60, '\0');
        std::copy(key.begin(), key.end(), field.begin());
        const size_t at = bytes.find(field);
        ASSERT_NE(at, std::string::npos) << key;
        double sums[3] = {0, 0, 0};
        sums[action] = 1;
        // A record is the key, the regret sums and the strategy sums.
        std::memcpy(&bytes[at + 60 + sizeof sums], sums, sizeof sums);
    }
    PlayingDirectory::write(path, bytes);
}

TEST(LimitHoldemAgent, TrainsAndSavesWhereThereIsNoStrategy) {
    const HoldemDirectory directory;
    const auto [printed, errors] = construct(limit2);
    EXPECT_NE(
        printed.find("Warning: could not load strategy from disk!\n"
                     "Training hold'em agent with 100 iterations for each information set!\n"),
        std::string::npos)
        << printed;
    EXPECT_NE(printed.find("Training hold'em agent with 100 iterations\n"), std::string::npos);
    EXPECT_NE(printed.find("Number of information sets: 63780\n"), std::string::npos) << printed;
    EXPECT_EQ(std::filesystem::file_size("strategies/holdem.limit.2p/strategy"),
              2U * 4 * 4 + 63780 * 108);
    EXPECT_EQ(construct(limit2)[0].find("Training"), std::string::npos);
}

TEST(LimitHoldemAgent, NoLimitHasAFileOfItsOwn) {
    const HoldemDirectory directory;
    construct(noLimit2);
    EXPECT_TRUE(std::filesystem::exists("strategies/holdem.nolimit.2p/strategy"));
    EXPECT_FALSE(std::filesystem::exists("strategies/holdem.limit.2p/strategy"));
}

TEST(LimitHoldemAgent, SetsADamagedStrategyAsideAndTrainsAnew) {
    const HoldemDirectory directory;
    const std::string file = "strategies/holdem.limit.2p/strategy";
    for (const std::string& damaged :
         {std::string(), std::string(100, '\xee'), std::string("\1\0\0\0", 4)}) {
        std::filesystem::remove(file + ".bad");
        PlayingDirectory::write(file, damaged);
        const auto [printed, errors] = construct(limit2);
        EXPECT_NE(printed.find("Warning: could not load strategy"), std::string::npos);
        EXPECT_EQ(errors, "ERROR: " + file +
                              " is no strategy of this game: rebuilding it, the bad file is kept "
                              "beside it as .bad\n");
        EXPECT_EQ(PlayingDirectory::read(file + ".bad"), damaged);
        EXPECT_EQ(std::filesystem::file_size(file), 2U * 4 * 4 + 63780 * 108);
    }
}

// Keys that fit, with numbers that no training leaves.
TEST(LimitHoldemAgent, SetsAStrategyOfDamagedSumsAside) {
    const HoldemDirectory directory;
    const std::string file = "strategies/holdem.limit.2p/strategy";
    construct(limit2);
    const std::string whole = PlayingDirectory::read(file);
    constexpr size_t record = 4 + 20 * 108;
    for (const double sum : {std::nan(""), -1.0, HUGE_VAL}) {
        std::string damaged = whole;
        std::memcpy(damaged.data() + record + 84 + 8, &sum, sizeof sum);
        std::filesystem::remove(file + ".bad");
        PlayingDirectory::write(file, damaged);
        EXPECT_NE(construct(limit2)[1].find("is no strategy of this game"), std::string::npos)
            << sum;
        EXPECT_EQ(PlayingDirectory::read(file + ".bad"), damaged);
    }
}

// The file reads well and knows nothing of the game that is asked for.
TEST(LimitHoldemAgent, AnotherGamesStrategyIsNone) {
    const HoldemDirectory directory;
    construct(noLimit2);
    std::filesystem::create_directories("strategies/holdem.limit.2p");
    std::filesystem::copy_file("strategies/holdem.nolimit.2p/strategy",
                               "strategies/holdem.limit.2p/strategy");
    const auto [printed, errors] = construct(limit2);
    EXPECT_NE(errors.find("is no strategy of this game"), std::string::npos) << printed;
    EXPECT_TRUE(std::filesystem::exists("strategies/holdem.limit.2p/strategy.bad"));
}

TEST(LimitHoldemAgent, PlaysTheBucketOfItsSeatAndRound) {
    const HoldemDirectory directory;
    construct(limit2);
    HoldemDirectory::writeEntry<uint8_t>(holdemPath(2, 0, 1), indexOf(0, {"As", "Ah"}), 7);
    HoldemDirectory::writeEntry<uint8_t>(holdemPath(2, 1, 0),
                                         indexOf(1, {"2c", "7d", "Ks", "9h", "4c"}), 3);
    writeStrategy("strategies/holdem.limit.2p/strategy",
                  {{"1:0:7:", 2}, {"1:0:0:", 0}, {"0:1:3:cc", 1}, {"0:1:0:cc", 2}});
    OpenHoldemAgent agent(limit2);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(agent.actionIn("MATCHSTATE:1:0::|AsAh").type, actionRaise);
        EXPECT_EQ(agent.actionIn("MATCHSTATE:1:0::|KsKh").type, actionFold);
        EXPECT_EQ(agent.actionIn("MATCHSTATE:0:0:cc/:2c7d|/Ks9h4c").type, actionCall);
        EXPECT_EQ(agent.actionIn("MATCHSTATE:0:0:cc/:2c8d|/Ks9h4c").type, actionRaise);
    }
}

TEST(LimitHoldemAgent, ARaiseInNoLimitIsAnsweredByPotOdds) {
    const HoldemDirectory directory;
    construct(noLimit2);
    // A raise to 300: 200 to call into a pot of 400 asks for a third.
    const uint64_t aces = indexOf(0, {"As", "Ah"});
    OpenHoldemAgent agent(noLimit2);
    testing::internal::CaptureStderr();
    EXPECT_EQ(agent.actionIn("MATCHSTATE:0:0:r300:AsAh|").type, actionFold);
    HoldemDirectory::writeEntry(equityPath(2, 0), aces, 0.34);
    EXPECT_EQ(OpenHoldemAgent(noLimit2).actionIn("MATCHSTATE:0:0:r300:AsAh|").type, actionCall);
    HoldemDirectory::writeEntry(equityPath(2, 0), aces, 0.33);
    EXPECT_EQ(OpenHoldemAgent(noLimit2).actionIn("MATCHSTATE:0:0:r300:AsAh|").type, actionFold);
    // Everything in: 19,900 to call into 20,100.
    EXPECT_EQ(agent.actionIn("MATCHSTATE:0:0:r20000:AsAh|").type, actionFold);
    HoldemDirectory::writeEntry(equityPath(2, 0), aces, 0.85);
    EXPECT_EQ(OpenHoldemAgent(noLimit2).actionIn("MATCHSTATE:0:0:r20000:AsAh|").type, actionCall);
    // Nothing owed: checked, whatever the hand.
    EXPECT_EQ(agent.actionIn("MATCHSTATE:0:0:r300c/:AsAh|/2c7dTh").type, actionCall);
    const std::string warnings = testing::internal::GetCapturedStderr();
    EXPECT_NE(warnings.find("WARNING:"), std::string::npos) << warnings;
}

TEST(LimitHoldemAgent, EveryAnswerIsLegalInRandomNoLimitHands) {
    const HoldemDirectory directory;
    construct(noLimit2);
    OpenHoldemAgent agent(noLimit2);
    const Game* const game = agent.definition();
    rng_state_t cards{};
    init_genrand(&cards, 7);
    testing::internal::CaptureStderr();
    for (int hand = 0; hand < 300; ++hand) {
        State state;
        initState(game, static_cast<uint32_t>(hand), &state);
        ::dealCards(game, &cards, &state);
        while (!state.finished) {
            const uint8_t actor = currentPlayer(game, &state);
            MatchState seen;
            seen.state = state;
            seen.viewingPlayer = actor;
            char text[MAX_LINE_LEN];
            ASSERT_GT(printMatchState(game, &seen, MAX_LINE_LEN, text), 0);
            Action action = agent.actionIn(text);
            ASSERT_TRUE(isValidAction(game, &state, 0, &action)) << text;
            // Half of the time somebody raises by a size of chance.
            int32_t least = 0;
            int32_t most = 0;
            if (pick_a_number(0, 1) == 0 && raiseIsValid(game, &state, &least, &most))
                action = {actionRaise, pick_a_number(least, most)};
            doAction(game, &action, &state);
        }
    }
    testing::internal::GetCapturedStderr();
}

TEST(LimitHoldemAgentDeathTest, RefusesAGameOfAnotherShape) {
    const HoldemDirectory directory;
    std::filesystem::copy_file("kuhn.limit.3p.game", "holdem.limit.3p.game",
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_EXIT(LimitHoldemAgent agent(limit3), testing::ExitedWithCode(1),
                "ERROR: holdem.limit.3p.game is not hold'em");
}

} // namespace
} // namespace tamarin::test
