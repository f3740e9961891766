// An agent that writes down every event, and matches of it against a scripted dealer.
#pragma once

#include "driver/PokerAgent.h"
#include "driver/loopback_dealer.h"
#include "game/games.h"
#include "game/random_hand.h"
#include "game/text.h"

#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

// A definition as a file, for as long as the test lasts.
class DefinitionFile {
public:
    explicit DefinitionFile(const std::string& text) {
        path_ = testing::TempDir() + "definition." + std::to_string(getpid()) + ".game";
        FILE* file = std::fopen(path_.c_str(), "w");
        std::fputs(text.c_str(), file);
        std::fclose(file);
    }
    ~DefinitionFile() { std::remove(path_.c_str()); }
    const char* path() const { return path_.c_str(); }

private:
    std::string path_;
};

// Writes down every event and answers by a rule of the test's.
class RecordingAgent : public PokerAgent {
public:
    using Rule = std::function<Action(const Game&, const State&)>;

    RecordingAgent(const char* file, Rule rule, SocketCalls& calls = systemSockets())
        : PokerAgent(file, calls), rule_(std::move(rule)) {}

    void holeCards(unsigned char* cards, unsigned char player) override {
        char text[16] = "";
        printCards(game->numHoleCards, cards, sizeof text, text);
        note("hole " + std::string(text) + " seat " + std::to_string(player));
    }
    void getAction(Action& action) override {
        note("act");
        action = rule_(*game, state.state);
    }
    void actionEvent(unsigned char player, Action action) override {
        note("action " + std::to_string(player) + " type " + std::to_string(action.type) +
             " size " + std::to_string(action.size));
    }
    void stageEvent(int round) override { note("stage " + std::to_string(round)); }
    void showdownEvent(unsigned char, unsigned char*) override { note("showdown"); }
    void gameOverEvent(double value) override {
        char text[32];
        std::snprintf(text, sizeof text, "over %g", value);
        note(text);
    }
    void winEvent(unsigned char, int) override { note("win"); }

    std::vector<std::string> events;

private:
    void note(std::string event) { events.push_back(std::move(event)); }
    Rule rule_;
};

inline RecordingAgent::Rule always(Action action) {
    return [action](const Game&, const State&) { return action; };
}
inline constexpr Action foldAction{actionFold, 0};
inline constexpr Action callAction{actionCall, 0};
inline constexpr Action raiseAction{actionRaise, 0};

// What a match left behind.
struct Played {
    bool result = false;
    std::vector<std::string> events;
    std::string sent; // everything the player sent
    std::string errors;
};

// Plays one match against a dealer that sends the script (after the version line has come) and then
// closes its side.
inline Played playScript(const std::string& definition, const RecordingAgent::Rule& rule,
                         const std::function<void(LoopbackDealer&)>& script) {
    const DefinitionFile file(definition);
    LoopbackDealer dealer;
    Played played;
    std::thread dealing([&] {
        if (dealer.accept()) {
            script(dealer);
            dealer.halfClose();
            played.sent += dealer.readAll();
        }
    });
    testing::internal::CaptureStderr();
    RecordingAgent agent(file.path(), rule);
    EXPECT_FALSE(agent.isConnected());
    EXPECT_TRUE(agent.connect("localhost", dealer.port()));
    EXPECT_TRUE(agent.isConnected());
    EXPECT_FALSE(agent.connect("localhost", dealer.port())) << "a second connection";
    played.result = agent.play();
    agent.disconnect();
    EXPECT_FALSE(agent.isConnected());
    dealing.join();
    played.errors = testing::internal::GetCapturedStderr();
    played.events = agent.events;
    return played;
}

inline Played playText(const std::string& definition, const RecordingAgent::Rule& rule,
                       const std::string& text) {
    return playScript(definition, rule, [&](LoopbackDealer& dealer) { dealer.send(text); });
}

// A session of random hands, as the lines that a dealer sends to one seat.
inline std::string randomSession(const Game& game, int hands) {
    std::string session;
    for (int hand = 0; hand < hands; ++hand) {
        const auto seat = static_cast<uint8_t>(hand % game.numPlayers);
        playRandomHand(game, static_cast<uint32_t>(hand), [&](const State& state) {
            char text[4096];
            const MatchState view{state, seat};
            printMatchState(&game, &view, sizeof text, text);
            session += std::string(text) + "\r\n";
        });
    }
    return session;
}

} // namespace tamarin::test
