#include "driver/LimitHoldemAgent.h"

#include "abstraction/round_indexers.h"
#include "driver/holdem_directory.h"
#include "driver/small_holdem.h"
#include "game/games.h"
#include "game/text.h"
#include "support/rng.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const char* const limit2 = "holdem.limit.2p.reverse_blinds.game";
const char* const limit3 = "holdem.limit.3p.game";
const char* const noLimit2 = "holdem.nolimit.2p.reverse_blinds.game";
constexpr unsigned long long fewIterations = 100; // progress comes in hundredths

// An agent whose state a test sets by hand.
class OpenHoldemAgent : public LimitHoldemAgent {
public:
    explicit OpenHoldemAgent(const char* gameFile, unsigned long long iterations = fewIterations)
        : LimitHoldemAgent(gameFile, iterations) {}
    OpenHoldemAgent(const char* gameFile, std::unique_ptr<CFR> ready,
                    std::unique_ptr<HoldemHands> over)
        : LimitHoldemAgent(gameFile, std::move(ready), std::move(over)) {}

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
                              "as " +
                              file + ".bad\n");
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

// Turn and river, where all cards of the board count, and no others.
TEST(LimitHoldemAgent, PlaysTheBucketOfAllCardsOnTurnAndRiver) {
    const HoldemDirectory directory;
    construct(limit2);
    HoldemDirectory::writeEntry<uint8_t>(holdemPath(2, 2, 0),
                                         indexOf(2, {"2c", "7d", "Ks", "9h", "4c", "Jd"}), 6);
    HoldemDirectory::writeEntry<uint8_t>(holdemPath(2, 3, 1),
                                         indexOf(3, {"2c", "7d", "Ks", "9h", "4c", "Jd", "3s"}), 8);
    writeStrategy(
        "strategies/holdem.limit.2p/strategy",
        {{"0:2:6:cccc", 2}, {"0:2:0:cccc", 1}, {"1:3:8:ccccccr", 2}, {"1:3:0:ccccccr", 0}});
    OpenHoldemAgent agent(limit2);
    const std::string turn = "MATCHSTATE:0:0:cc/cc/:2c7d|/Ks9h4c/";
    const std::string river = "MATCHSTATE:1:0:cc/cc/cc/r:|2c7d/Ks9h4c/Jd/";
    EXPECT_EQ(agent.actionIn(turn + "Jd").type, actionRaise);
    EXPECT_EQ(agent.actionIn(turn + "Jh").type, actionCall);
    EXPECT_EQ(agent.actionIn(river + "3s").type, actionRaise);
    EXPECT_EQ(agent.actionIn(river + "3h").type, actionFold);
    EXPECT_EQ(agent.actionIn("MATCHSTATE:1:0:cc/cc/cc/r:|2c7d/Ks9h4c/Js/3s").type, actionFold);
}

// Training leaves the solver's switches off; the agent turns them on before it asks.
TEST(LimitHoldemAgent, PlaysWhatItHasJustTrained) {
    const HoldemDirectory directory;
    testing::internal::CaptureStdout();
    OpenHoldemAgent agent(limit2);
    testing::internal::GetCapturedStdout();
    testing::internal::CaptureStderr();
    for (int i = 0; i < 20; ++i)
        EXPECT_NE(agent.actionIn("MATCHSTATE:1:0::|AsAh").type, actionInvalid);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "no decision by pot odds";
}

TEST(LimitHoldemAgent, TrainsAsLongAsAlways) {
    EXPECT_EQ(LimitHoldemAgent::trainingIterations, 100000U);
}

TEST(LimitHoldemAgent, KeepsItsStrategiesWhereTheyAreLookedFor) {
    const std::vector<std::string> limit(std::begin(HoldemStrategyFiles),
                                         std::end(HoldemStrategyFiles));
    EXPECT_EQ(limit, (std::vector<std::string>{"n/a", "n/a", "strategies/holdem.limit.2p/strategy",
                                               "strategies/holdem.limit.3p/strategy"}));
    const std::vector<std::string> noLimit(std::begin(NoLimiHoldemStrategyFiles),
                                           std::end(NoLimiHoldemStrategyFiles));
    EXPECT_EQ(noLimit,
              (std::vector<std::string>{"n/a", "n/a", "strategies/holdem.nolimit.2p/strategy",
                                        "strategies/holdem.nolimit.3p/strategy"}));
}

// Unlike Kuhn's agent, which says so.
TEST(LimitHoldemAgent, IsSilentAboutAStrategyItCannotSave) {
    const HoldemDirectory directory;
    PlayingDirectory::write("strategies", "a file where the directory should be");
    const auto [printed, errors] = construct(limit2);
    EXPECT_EQ(errors, "");
    size_t warnings = 0;
    for (size_t at = 0; (at = printed.find("arning", at)) != std::string::npos; ++at)
        ++warnings;
    EXPECT_EQ(warnings, 2U) << "not loaded, and no directory to save to; " << printed;
    EXPECT_EQ(printed.find("not saved"), std::string::npos);
}

// What an agent was asked of a hand.
struct Asked {
    int players;
    int round;
    int seat;
    std::string cards;
    bool operator==(const Asked&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Asked& asked) {
    return out << asked.players << " players, round " << asked.round << ", seat " << asked.seat
               << ", " << asked.cards;
}

std::string cardsOf(int round, const uint8_t* cards) {
    char text[32];
    printCards(std::array{2, 5, 6, 7}[static_cast<size_t>(round)], cards, sizeof text, text);
    return text;
}

// An agent over the first round's strategy, with hands that write down what they are asked. The
// two-player buckets are 1 and 4, the three-player ones 5, 6 and 7, by seat.
struct Watched {
    Watched(const char* name, const std::function<int(const std::string&)>& choose)
        : game(loadGameFile(name)) {
        auto hands = std::make_unique<FunctionHands>();
        hands->bucketOf = [this](int players, int round, int seat, const uint8_t* cards) {
            asked.push_back({players, round, seat, cardsOf(round, cards)});
            return static_cast<uint8_t>(players == 3 ? 5 + seat : seat == 0 ? 1 : 4);
        };
        hands->equityOf = [this](int players, int round, const uint8_t* cards) {
            equities.push_back({players, round, 0, cardsOf(round, cards)});
            return equity;
        };
        agent = std::make_unique<OpenHoldemAgent>(
            name, solverOf(*game, firstRoundStrategy(*game, choose)), std::move(hands));
    }
    std::vector<Asked> askedIn(const std::string& text) {
        asked.clear();
        agent->actionIn(text);
        return asked;
    }

    PlayingDirectory directory;
    GamePtr game;
    double equity = 0.5;
    std::vector<Asked> asked;
    std::vector<Asked> equities;
    std::unique_ptr<OpenHoldemAgent> agent;
};

TEST(LimitHoldemAgent, AsksForTheTwoPlayerBucketAloneWhereTwoPlay) {
    Watched two(limit2, nullptr);
    testing::internal::CaptureStderr();
    using List = std::vector<Asked>;
    EXPECT_EQ(two.askedIn("MATCHSTATE:1:0::|AsKd"), (List{{2, 0, 1, "AsKd"}}));
    EXPECT_EQ(two.askedIn("MATCHSTATE:0:0:cc/:AsKd|/2c3d4h"), (List{{2, 1, 0, "AsKd2c3d4h"}}));
    EXPECT_EQ(two.askedIn("MATCHSTATE:1:0:cc/cc/c:|AsKd/2c3d4h/5s"),
              (List{{2, 2, 1, "AsKd2c3d4h5s"}}));
    EXPECT_EQ(two.askedIn("MATCHSTATE:0:0:cc/cc/cc/:AsKd|QhQc/2c3d4h/5s/6c"),
              (List{{2, 3, 0, "AsKd2c3d4h5s6c"}}));
    testing::internal::GetCapturedStderr();
}

// The third seat takes the second's two-player table.
TEST(LimitHoldemAgent, AsksForBothBucketsWhereThreePlay) {
    Watched three(limit3, nullptr);
    testing::internal::CaptureStderr();
    using List = std::vector<Asked>;
    EXPECT_EQ(three.askedIn("MATCHSTATE:2:0::||AsKd"),
              (List{{2, 0, 1, "AsKd"}, {3, 0, 2, "AsKd"}}));
    EXPECT_EQ(three.askedIn("MATCHSTATE:0:0:c:AsKd||"),
              (List{{2, 0, 0, "AsKd"}, {3, 0, 0, "AsKd"}}));
    EXPECT_EQ(three.askedIn("MATCHSTATE:1:0:ccc/c:|AsKd|/2c3d4h"),
              (List{{2, 1, 1, "AsKd2c3d4h"}, {3, 1, 1, "AsKd2c3d4h"}}));
    EXPECT_EQ(three.askedIn("MATCHSTATE:2:0:ccc/ccc/ccc/cc:||AsKd/2c3d4h/5s/6c"),
              (List{{2, 3, 1, "AsKd2c3d4h5s6c"}, {3, 3, 2, "AsKd2c3d4h5s6c"}}));
    testing::internal::GetCapturedStderr();
}

// The key takes the bucket for as many as can still act.
TEST(LimitHoldemAgent, PlaysTheBucketForAsManyAsAreLeft) {
    // Who has the bucket that it ought to have raises; everybody else calls.
    const std::map<std::string, std::string> right = {{"2:0", "7"},    {"0:0:c", "5"},
                                                      {"1:0:cc", "6"}, {"0:0:f", "1"},
                                                      {"1:0:fc", "4"}, {"2:0:rfr", "4"}};
    Watched three(limit3, [&](const std::string& key) {
        const std::string seat = key.substr(0, 3);
        const std::string actions = key.substr(key.rfind(':') + 1);
        const auto found = right.find(actions.empty() ? seat : seat + ":" + actions);
        const bool isRight = found != right.end() && key[4] == found->second[0];
        return isRight ? 2 : 1;
    });
    EXPECT_EQ(three.agent->actionIn("MATCHSTATE:2:0::||AsKd").type, actionRaise);
    EXPECT_EQ(three.agent->actionIn("MATCHSTATE:0:0:c:AsKd||").type, actionRaise);
    EXPECT_EQ(three.agent->actionIn("MATCHSTATE:1:0:cc:|AsKd|").type, actionRaise);
    EXPECT_EQ(three.agent->actionIn("MATCHSTATE:0:0:f:AsKd||").type, actionRaise);
    EXPECT_EQ(three.agent->actionIn("MATCHSTATE:1:0:fc:|AsKd|").type, actionRaise);
    EXPECT_EQ(three.agent->actionIn("MATCHSTATE:2:0:rfr:||AsKd").type, actionRaise);
}

// By the equity against as many as are still in, folded ones left out, on the cards of the round.
TEST(LimitHoldemAgent, TakesPotOddsAgainstThoseStillIn) {
    Watched three(limit3, nullptr);
    testing::internal::CaptureStderr();
    // 20 to call, into a pot of 70 or of 50.
    const std::string facing = "MATCHSTATE:2:0:ccc/ccc/rc:||AsKd/2c3d4h/5s";
    const std::string alone = "MATCHSTATE:2:0:ccc/ccc/rf:||AsKd/2c3d4h/5s";
    three.equity = 0.9;
    EXPECT_EQ(three.agent->actionIn(facing).type, actionCall);
    EXPECT_EQ(three.agent->actionIn(alone).type, actionCall);
    EXPECT_EQ(three.equities,
              (std::vector<Asked>{{3, 2, 0, "AsKd2c3d4h5s"}, {2, 2, 0, "AsKd2c3d4h5s"}}));
    three.equity = 0.05;
    EXPECT_EQ(three.agent->actionIn(facing).type, actionFold);
    three.agent.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: the strategy does not hold this state: playing by pot odds\n"
              "3 decisions were made by pot odds in this match\n");
}

// The solver throws character strings, too.
TEST(LimitHoldemAgent, NothingThatIsThrownEndsTheMatch) {
    class Throwing : public CFR {
    public:
        using CFR::CFR;
        std::string abstraction(State* state) override {
            switch (state->handId) {
            case 0:
                throw "a character string";
            case 1:
                throw std::bad_alloc();
            default:
                throw 7;
            }
        }
    };
    const PlayingDirectory directory;
    const GamePtr game = loadGameFile(limit2);
    auto hands = std::make_unique<FunctionHands>();
    hands->bucketOf = [](int, int, int, const uint8_t*) { return uint8_t{0}; };
    hands->equityOf = [](int, int, const uint8_t*) { return 0.0; };
    OpenHoldemAgent agent(limit2, std::make_unique<Throwing>(game.get()), std::move(hands));
    testing::internal::CaptureStderr();
    for (const char* hand : {"0", "1", "2"})
        EXPECT_EQ(agent.actionIn(std::string("MATCHSTATE:1:") + hand + "::|AsAh").type, actionFold);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: the strategy does not hold this state: playing by pot odds\n");
}

// A start makes what play reads, and neither misses nor makes anything else.
TEST(LimitHoldemAgent, NeedsTheTablesThatPlayReadsAndNoOthers) {
    const HoldemDirectory directory;
    construct(limit2);
    std::set<std::string> kept;
    for (const TableFile& file : allTables()) {
        if (playReads(file, 2))
            kept.insert(file.path);
        else
            std::filesystem::remove(file.path);
    }
    EXPECT_EQ(kept.size(), 12U);
    const auto [printed, errors] = construct(limit2);
    EXPECT_EQ(errors, "");
    EXPECT_NE(printed.find("Loading table lookup/holdem_river_2p_1!\n"), std::string::npos);
    std::set<std::string> there;
    for (const auto& entry : std::filesystem::directory_iterator("lookup"))
        there.insert("lookup/" + entry.path().filename().string());
    EXPECT_EQ(there, kept);
    OpenHoldemAgent agent(limit2);
    EXPECT_NE(agent.actionIn("MATCHSTATE:0:0:cc/cc/cc/:AsKd|/2c3d4h/5s/6c").type, actionInvalid);
}

// Progress belongs on standard output, where all the other lines of a start are.
TEST(LimitHoldemAgent, TellsOfTheTablesThatItMakes) {
    const HoldemDirectory directory;
    construct(limit2);
    std::filesystem::remove(holdemPath(2, 0, 1));
    std::filesystem::remove(holdemPath(3, 0, 1));
    for (uint64_t hand = 0; hand < 169; ++hand) {
        HoldemDirectory::writeEntry(equityPath(2, 0), hand,
                                    0.3 + 0.003 * static_cast<double>(hand));
        HoldemDirectory::writeEntry(utilityPath(2, 0, 1), hand, static_cast<double>(hand % 7));
    }
    const auto [printed, errors] = construct(limit2);
    EXPECT_EQ(errors, "");
    EXPECT_NE(printed.find("made hold'em buckets: 1 files, 169 bytes, in "), std::string::npos)
        << printed;
    EXPECT_TRUE(std::filesystem::exists(holdemPath(2, 0, 1)));
    EXPECT_FALSE(std::filesystem::exists(holdemPath(3, 0, 1)));
}

TEST(LimitHoldemAgentDeathTest, SaysWhyTablesCannotBeMade) {
    const HoldemDirectory directory;
    std::filesystem::remove(holdemPath(2, 0, 1));
    std::filesystem::create_directory(holdemPath(2, 0, 1));
    EXPECT_EXIT(
        LimitHoldemAgent agent(limit2), testing::ExitedWithCode(1),
        "^ERROR: could not make the tables: lookup/holdem_preflop_2p_1 is a directory: move "
        "it away, a table belongs there\n$");
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
