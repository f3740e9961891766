// The player of three-player Kuhn poker.
//
// It holds one solver a seat, from strategy files or trained at construction, and chooses at every
// hand between three ways of playing by what each has earned over its last ten hands:
//   mode 0  the own seat's strategy
//   mode 1  the strategy of a seat drawn at random, at every decision anew
//   mode 2  a fixed rule on the card: raise with the two highest, else check, else fold
#pragma once

#include "driver/PokerAgent.h"
#include "driver/fallback.h"
#include "solver/cfr.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>

// Seat s reads and writes entry s; the game has three seats.
extern const char* const KuhnStrategyFiles[10];

// What is known of one line of play. Nothing in the play path fills it.
struct NodeUtility {
    explicit NodeUtility(std::string nodeName) : name(std::move(nodeName)) { counters.fill(3); }

    std::string name;
    std::array<int32_t, 10> counters;
    std::array<unsigned char, 5> flags{};
};

class KuhnAgent : public PokerAgent {
public:
    static constexpr int numModes = 3;

    // How long the agent trains when its strategy is not there: attempts times iterations.
    struct Training {
        int attempts = 100;
        unsigned long long iterations = 1000000;
    };

    // Loads strategies/kuhn.limit.3p/strategy0..2, or trains and writes them. A file that is not a
    // strategy of this game is kept as NAME.bad.
    explicit KuhnAgent(const char* gameFile) : KuhnAgent(gameFile, Training{}) {}
    KuhnAgent(const char* gameFile, Training training,
              tamarin::SocketCalls& calls = tamarin::systemSockets());
    ~KuhnAgent() override;

    void holeCards(unsigned char* cards, unsigned char player) override;
    void getAction(Action& action) override;
    void actionEvent(unsigned char player, Action action) override;
    void stageEvent(int round) override;
    void showdownEvent(unsigned char player, unsigned char* cards) override;
    void gameOverEvent(double value) override;
    void winEvent(unsigned char player, int amount) override;

    // Mean of the mode's last ten results, in chips; those not yet played count as 0.
    double getEv(int mode);
    // Records a result of the mode in place of its oldest.
    void updateEv(int mode, double value);
    // The mode of the current hand.
    int getMode() const { return mode; }

    // "player:round:rank:" of the player to act, then every action of the hand.
    std::string getHistory(const Game* game, const State* state);

private:
    // The last ten results of a mode.
    struct Ring {
        double results[10] = {};
        int32_t position = 0; // where the next goes; 10 wraps to 0
    };

    bool loadStrategies();
    void trainStrategies(Training training);
    void saveStrategies();
    void releaseSolvers();
    bool playStrategy(int strategySeat, Action& action);
    void playCardRule(Action& action);

    CFR* solver[3] = {}; // after training all three are one
    int32_t mode = 0;
    std::map<std::string, NodeUtility*> histories; // owned
    Ring rings[numModes];
    tamarin::FallbackCount fallback{"the fixed card rule"};
};
