#include "driver/KuhnAgent.h"

#include "driver/loopback_dealer.h"
#include "driver/scratch.h"
#include "game/text.h"
#include "support/rng.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const char* const kuhn = "kuhn.limit.3p.game";
constexpr KuhnAgent::Training shortTraining{3, 2000};

std::string strategy(int seat) {
    return KuhnStrategyFiles[seat];
}

// An agent whose state a test sets by hand.
class OpenKuhnAgent : public KuhnAgent {
public:
    explicit OpenKuhnAgent(KuhnAgent::Training training = shortTraining)
        : KuhnAgent(kuhn, training) {}

    // The action in the state that the text gives.
    Action actionIn(const std::string& text) {
        EXPECT_GT(readMatchState(text.c_str(), game, &state), 0) << text;
        Action action{actionInvalid, 77};
        getAction(action);
        return action;
    }
    void startHand() {
        unsigned char card = 0;
        holeCards(&card, 0);
    }
    const Game* definition() const { return game; }
    // The solvers know no cards of a full deck, and throw words when asked for them.
    void makeTheDeckFull() {
        game->numSuits = MAX_SUITS;
        game->numRanks = MAX_RANKS;
    }
    MatchState& current() { return state; }
};

// Constructs an agent and returns what it printed on standard output.
std::string trainQuietly(KuhnAgent::Training training = shortTraining) {
    testing::internal::CaptureStdout();
    { OpenKuhnAgent agent(training); }
    return testing::internal::GetCapturedStdout();
}

TEST(KuhnAgent, AnEmptyDirectoryIsTrainedAndSaved) {
    const PlayingDirectory directory;
    const std::string printed = trainQuietly();
    EXPECT_TRUE(printed.starts_with("Warning: could not load strategy from disk!\n"
                                    "Training kuhn agent with 3 iterations\n"
                                    "Finding equilibrium 0...\n"
                                    "Number of starting nodes: 24\n"
                                    "Eliminating useless actions...\n"))
        << printed;
    EXPECT_NE(printed.find("Finding equilibrium 2...\n"), std::string::npos);
    EXPECT_EQ(printed.find("Finding equilibrium 3...\n"), std::string::npos);
    EXPECT_EQ(printed.find("CFR progress"), std::string::npos);
    EXPECT_NE(printed.find("Avg strategy utility = ( "), std::string::npos);
    EXPECT_EQ(PlayingDirectory::read(strategy(0)).size(), 3U * 4 + 48 * 108);
    // One solver stands for all seats.
    EXPECT_EQ(PlayingDirectory::read(strategy(0)), PlayingDirectory::read(strategy(1)));
    EXPECT_EQ(PlayingDirectory::read(strategy(0)), PlayingDirectory::read(strategy(2)));
    EXPECT_FALSE(std::filesystem::exists(strategy(3)));
}

TEST(KuhnAgent, TrainsAsLongAsAlways) {
    EXPECT_EQ(KuhnAgent::Training{}.attempts, 100);
    EXPECT_EQ(KuhnAgent::Training{}.iterations, 1000000U);
}

// After each save: the one solver's address, and what it is worth to each seat.
TEST(KuhnAgent, PrintsTheSolverAndItsUtilityForEverySeat) {
    const PlayingDirectory directory;
    const std::string printed = trainQuietly();
    const std::regex lines("(0x[0-9a-f]+)\\nAvg strategy utility = \\(( [-+.e0-9]+){3} \\)\\n"
                           "\\1\\nAvg strategy utility = \\(( [-+.e0-9]+){3} \\)\\n"
                           "\\1\\nAvg strategy utility = \\(( [-+.e0-9]+){3} \\)\\n");
    const size_t start = printed.find("0x");
    ASSERT_NE(start, std::string::npos) << printed;
    EXPECT_TRUE(std::regex_match(printed.substr(start), lines)) << printed.substr(start);
}

// Every seat has a solver then, too: the one that has learned nothing.
TEST(KuhnAgent, PlaysWithoutASingleAttempt) {
    for (const KuhnAgent::Training none : {KuhnAgent::Training{0, 1000}, {1, 0}}) {
        const PlayingDirectory directory;
        const std::string printed = trainQuietly(none);
        EXPECT_TRUE(printed.ends_with(" )\n")) << printed;
        for (int seat = 0; seat < 3; ++seat)
            EXPECT_EQ(PlayingDirectory::read(strategy(seat)).size(), 3U * 4 + 48 * 108) << seat;
        testing::internal::CaptureStderr();
        OpenKuhnAgent agent;
        agent.startHand();
        EXPECT_NE(agent.actionIn("MATCHSTATE:2:1:cr:||Ks").type, actionInvalid);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the state is held";
    }
}

TEST(KuhnAgent, RestoresTheProgressSwitch) {
    const PlayingDirectory directory;
    CFR::logProgress = true;
    trainQuietly();
    EXPECT_TRUE(CFR::logProgress);
    CFR::logProgress = false;
}

TEST(KuhnAgent, LoadsWhatItSaved) {
    const PlayingDirectory directory;
    trainQuietly();
    const std::string before = PlayingDirectory::read(strategy(1));
    EXPECT_EQ(trainQuietly(), "");
    EXPECT_EQ(PlayingDirectory::read(strategy(1)), before);
}

TEST(KuhnAgent, AMissingSeatTrainsAllSeatsAfresh) {
    const PlayingDirectory directory;
    trainQuietly();
    const std::string before = PlayingDirectory::read(strategy(0));
    std::filesystem::remove(strategy(2));
    const std::string printed = trainQuietly();
    EXPECT_TRUE(printed.starts_with("Warning: could not load strategy from disk!\nTraining"));
    EXPECT_NE(PlayingDirectory::read(strategy(0)), before);
    EXPECT_EQ(PlayingDirectory::read(strategy(0)), PlayingDirectory::read(strategy(2)));
}

TEST(KuhnAgent, SaysWhenTheStrategyCannotBeSaved) {
    const PlayingDirectory directory;
    PlayingDirectory::write("strategies", "a file where the directory should be");
    testing::internal::CaptureStderr();
    const std::string printed = trainQuietly();
    testing::internal::GetCapturedStderr();
    const size_t before = printed.find("Warning: ", 10);
    EXPECT_LT(before, printed.find("Training kuhn agent"));
    size_t warnings = 0;
    for (size_t at = 0; (at = printed.find("Warning: the strategy was not saved to the disk!\n",
                                           at)) != std::string::npos;
         ++at)
        ++warnings;
    EXPECT_EQ(warnings, 3U);
}

// Whatever stands in a strategy's place: the agent says so, keeps the bad file, and trains.
TEST(KuhnAgent, DamagedFilesAreKeptAsideAndReplaced) {
    const PlayingDirectory directory;
    trainQuietly();
    const std::string good = PlayingDirectory::read(strategy(1));
    std::string repeated = good;
    repeated.replace(4 + 108, 60, good.substr(4, 60)); // the first key twice
    std::string unterminated = good;
    unterminated.replace(4, 60, std::string(60, 'k'));
    std::string hugeCount = good;
    hugeCount.replace(0, 4, "\xff\xff\xff\xff", 4);
    const std::string noNodes(12, '\0'); // reads well and holds nothing
    std::string otherKeys = good;
    otherKeys[4 + 4] = '9'; // a card that no deal of this game has
    std::string badSum = good;
    badSum.replace(4 + 84, 8, std::string(8, '\xff')); // a strategy sum that is not a number
    std::string random(good.size(), '\0');
    rng_state_t rng;
    init_genrand(&rng, 7);
    for (char& byte : random)
        byte = static_cast<char>(genrand_int32(&rng));
    for (const std::string& bad :
         {std::string(), good.substr(0, good.size() - 1), good.substr(0, 3), repeated, unterminated,
          hugeCount, noNodes, otherKeys, badSum, random}) {
        std::filesystem::remove(strategy(1) + ".bad");
        PlayingDirectory::write(strategy(1), bad);
        testing::internal::CaptureStderr();
        const std::string printed = trainQuietly({1, 200});
        const std::string error = testing::internal::GetCapturedStderr();
        EXPECT_EQ(error,
                  "ERROR: " + strategy(1) +
                      " is no strategy of this game: rebuilding it, the bad file is kept as " +
                      strategy(1) + ".bad\n");
        EXPECT_NE(printed.find("Training kuhn agent"), std::string::npos);
        EXPECT_EQ(PlayingDirectory::read(strategy(1) + ".bad"), bad);
        EXPECT_EQ(PlayingDirectory::read(strategy(1)).size(), good.size());
    }
}

TEST(KuhnAgent, CutAtEveryLengthNeverLoads) {
    const PlayingDirectory directory;
    trainQuietly();
    const std::string good = PlayingDirectory::read(strategy(0));
    FILE* file = std::fopen(kuhn, "r");
    const GamePtr game(readGame(file));
    std::fclose(file);
    PlayingDirectory::write("cut", good);
    for (size_t length = good.size(); length-- > 0;) {
        std::filesystem::resize_file("cut", length);
        CFR solver(game.get());
        EXPECT_FALSE(solver.load("cut")) << length;
        EXPECT_FALSE(solver.isTreeReady()) << length;
    }
}

TEST(KuhnAgentDeath, RefusesAnotherGameUnderItsName) {
    const PlayingDirectory directory;
    std::filesystem::copy_file("holdem.limit.3p.game", kuhn,
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_EXIT(trainQuietly(), testing::ExitedWithCode(1),
                "ERROR: kuhn.limit.3p.game is not Kuhn poker");
}

class KuhnAgentInPlay : public testing::Test {
protected:
    void SetUp() override {
        testing::internal::CaptureStdout();
        agent = std::make_unique<OpenKuhnAgent>();
        testing::internal::GetCapturedStdout();
    }
    PlayingDirectory directory;
    std::unique_ptr<OpenKuhnAgent> agent;
};

TEST_F(KuhnAgentInPlay, AModesValueIsTheMeanOfItsLastTenResults) {
    EXPECT_EQ(agent->getEv(1), 0.0);
    agent->updateEv(1, 5.0);
    EXPECT_EQ(agent->getEv(1), 0.5);
    for (int i = 0; i < 9; ++i)
        agent->updateEv(1, 1.0);
    EXPECT_DOUBLE_EQ(agent->getEv(1), 1.4);
    agent->updateEv(1, -5.0); // in place of the first
    EXPECT_DOUBLE_EQ(agent->getEv(1), 0.4);
    EXPECT_EQ(agent->getEv(0), 0.0);
}

TEST_F(KuhnAgentInPlay, TheBestModeOfTheLastHandsIsPlayed) {
    agent->startHand();
    EXPECT_EQ(agent->getMode(), 0);
    agent->gameOverEvent(-1.0); // recorded for mode 0
    EXPECT_DOUBLE_EQ(agent->getEv(0), -0.1);
    agent->startHand();
    EXPECT_EQ(agent->getMode(), 1) << "a mode never used comes before one that has lost";
    agent->gameOverEvent(-2.0);
    agent->startHand();
    EXPECT_EQ(agent->getMode(), 2);
    agent->gameOverEvent(-3.0);
    agent->startHand();
    EXPECT_EQ(agent->getMode(), 0);
    agent->gameOverEvent(4.0);
    agent->startHand();
    EXPECT_EQ(agent->getMode(), 0) << "it is kept while its average is the best";
}

TEST_F(KuhnAgentInPlay, ModeTwoPlaysByTheCard) {
    agent->gameOverEvent(-1.0);
    agent->updateEv(1, -1.0);
    agent->startHand();
    ASSERT_EQ(agent->getMode(), 2);
    for (const char* high : {"K", "A"}) {
        EXPECT_EQ(agent->actionIn(std::string("MATCHSTATE:0:1::") + high + "s||").type,
                  actionRaise);
        const Action facing = agent->actionIn(std::string("MATCHSTATE:1:1:cr:|") + high + "s|");
        EXPECT_EQ(facing.type, actionRaise);
        EXPECT_EQ(facing.size, 0);
    }
    for (const char* low : {"J", "Q"}) {
        EXPECT_EQ(agent->actionIn(std::string("MATCHSTATE:0:1::") + low + "s||").type, actionCall);
        const Action facing = agent->actionIn(std::string("MATCHSTATE:2:1:cr:||") + low + "s");
        EXPECT_EQ(facing.type, actionFold);
        EXPECT_EQ(facing.size, 0);
    }
    // Any other rank is its own strength.
    EXPECT_EQ(agent->actionIn("MATCHSTATE:0:1::2s||").type, actionCall);
    EXPECT_EQ(agent->actionIn("MATCHSTATE:0:1::4s||").type, actionRaise);
}

TEST_F(KuhnAgentInPlay, TheStrategyDecidesInModesZeroAndOne) {
    for (const int mode : {0, 1}) {
        if (mode == 1)
            agent->gameOverEvent(-1.0);
        agent->startHand();
        ASSERT_EQ(agent->getMode(), mode);
        std::set<int> seen;
        for (int i = 0; i < 200; ++i) {
            const Action action = agent->actionIn("MATCHSTATE:0:1:crf:As||");
            EXPECT_EQ(action.size, 0);
            seen.insert(action.type);
        }
        EXPECT_EQ(seen, (std::set<int>{actionCall})) << "nothing beats an ace";
    }
}

// Three files of which each raises in the first decision of its own seat, and calls in the others'.
class KuhnAgentWithThreeStrategies : public testing::Test {
protected:
    void SetUp() override {
        trainQuietly({1, 200});
        const std::string trained = PlayingDirectory::read(strategy(0));
        const char* const firstDecision[3] = {"0:0:2:", "1:0:2:c", "2:0:2:cc"};
        for (int file = 0; file < 3; ++file) {
            std::string bytes = trained;
            for (int seat = 0; seat < 3; ++seat) {
                std::string key(60, '\0');
                key.replace(0, std::strlen(firstDecision[seat]), firstDecision[seat]);
                const size_t at = bytes.find(key);
                ASSERT_NE(at, std::string::npos) << firstDecision[seat];
                const double sums[3] = {0, file == seat ? 0.0 : 1.0, file == seat ? 1.0 : 0.0};
                std::memcpy(&bytes[at + 60 + sizeof sums], sums, sizeof sums);
            }
            PlayingDirectory::write(strategy(file), bytes);
        }
        agent = std::make_unique<OpenKuhnAgent>();
    }
    // How often the seat raises in its first decision, of 600 times.
    int raises(int seat) {
        const char* const states[3] = {"MATCHSTATE:0:1::Ks||", "MATCHSTATE:1:1:c:|Ks|",
                                       "MATCHSTATE:2:1:cc:||Ks"};
        int count = 0;
        for (int i = 0; i < 600; ++i) {
            const ActionType type = agent->actionIn(states[seat]).type;
            EXPECT_TRUE(type == actionRaise || type == actionCall);
            count += type == actionRaise;
        }
        return count;
    }
    PlayingDirectory directory;
    std::unique_ptr<OpenKuhnAgent> agent;
};

TEST_F(KuhnAgentWithThreeStrategies, ModeZeroPlaysTheOwnSeats) {
    agent->startHand();
    ASSERT_EQ(agent->getMode(), 0);
    for (int seat = 0; seat < 3; ++seat)
        EXPECT_EQ(raises(seat), 600) << seat;
}

TEST_F(KuhnAgentWithThreeStrategies, ModeOneDrawsTheStrategyAtEveryDecision) {
    agent->gameOverEvent(-1.0);
    agent->startHand();
    ASSERT_EQ(agent->getMode(), 1);
    // A third of the draws; 600 of them deviate by 11.5.
    for (int seat = 0; seat < 3; ++seat)
        EXPECT_NEAR(raises(seat), 200, 60) << seat;
}

TEST_F(KuhnAgentInPlay, AStateOutsideTheStrategyFallsBackToTheCardRule) {
    testing::internal::CaptureStderr();
    agent->startHand();
    ASSERT_EQ(agent->getMode(), 0);
    // No deal of the training holds these cards.
    EXPECT_EQ(agent->actionIn("MATCHSTATE:0:1::7s||").type, actionRaise);
    EXPECT_EQ(agent->actionIn("MATCHSTATE:0:1::8s||").type, actionRaise);
    agent.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: the strategy does not hold this state: playing by the fixed card rule\n"
              "2 decisions were made by the fixed card rule in this match\n");
}

// Words are no std::exception.
TEST_F(KuhnAgentInPlay, WhateverASolverThrowsTheCardRuleAnswers) {
    testing::internal::CaptureStderr();
    agent->startHand();
    ASSERT_EQ(agent->getMode(), 0);
    agent->makeTheDeckFull();
    EXPECT_EQ(agent->actionIn("MATCHSTATE:0:1::Ks||").type, actionRaise);
    EXPECT_EQ(agent->actionIn("MATCHSTATE:2:1:cr:||Qs").type, actionFold);
    agent.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: the strategy does not hold this state: playing by the fixed card rule\n"
              "2 decisions were made by the fixed card rule in this match\n");
}

TEST_F(KuhnAgentInPlay, HistoriesNamePlayerRoundRankAndActions) {
    State state{};
    ASSERT_GT(readState("STATE:1:cr:Js|Qs|As", agent->definition(), &state), 0);
    EXPECT_EQ(agent->getHistory(agent->definition(), &state), "2:0:12:cr");
    ASSERT_GT(readState("STATE:1::Js|Qs|As", agent->definition(), &state), 0);
    EXPECT_EQ(agent->getHistory(agent->definition(), &state), "0:0:9:");
}

TEST(NodeUtility, StartsWithThrees) {
    const NodeUtility utility("name");
    EXPECT_EQ(utility.name, "name");
    EXPECT_EQ(utility.counters, (std::array<int32_t, 10>{3, 3, 3, 3, 3, 3, 3, 3, 3, 3}));
    EXPECT_EQ(utility.flags, (std::array<unsigned char, 5>{}));
}

} // namespace
} // namespace tamarin::test
