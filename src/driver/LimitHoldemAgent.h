// The player of hold'em: two- and three-player limit, and two-player no-limit with the same class.
//
// It holds one solver over ten card buckets a round and the tables that give a hand's bucket. At
// every decision it looks its buckets up and draws from the solver's average strategy. The solver
// never raises in a no-limit game (its raises have no size), so once somebody has raised there the
// state is outside its tree; such decisions are made by pot odds on the hand's exact equity.
#pragma once

#include "driver/PokerAgent.h"
#include "driver/fallback.h"
#include "driver/holdem_hands.h"
#include "solver/cfr.h"

#include <memory>

// By number of players, 0..3; "n/a" where there is no such game.
extern const char* const HoldemStrategyFiles[4];
extern const char* const NoLimiHoldemStrategyFiles[4]; // misspelt, and fixed as it is

namespace tamarin {

// The game's, which is hold'em for two or three.
const char* holdemStrategyFile(const Game& game);

} // namespace tamarin

class LimitHoldemAgent : public PokerAgent {
public:
    // Iterations of the training when there is no strategy.
    static constexpr unsigned long long trainingIterations = 100000;

    // Loads the game's strategy, or trains one and writes it. Before that it makes those tables
    // that play reads and that are missing. A file that is not a strategy of this game is kept as
    // NAME.bad. A game that is not hold'em for two or three players ends the process with status 1.
    explicit LimitHoldemAgent(const char* gameFile)
        : LimitHoldemAgent(gameFile, trainingIterations) {}
    LimitHoldemAgent(const char* gameFile, unsigned long long iterations,
                     tamarin::SocketCalls& calls = tamarin::systemSockets());
    // Plays a strategy and hands that the caller has prepared: of all files it reads the definition
    // only. The solver's own game must outlive the agent.
    LimitHoldemAgent(const char* gameFile, std::unique_ptr<CFR> solver,
                     std::unique_ptr<tamarin::HoldemHands> hands,
                     tamarin::SocketCalls& calls = tamarin::systemSockets());
    ~LimitHoldemAgent() override;

    void holeCards(unsigned char* cards, unsigned char player) override;
    void getAction(Action& action) override;
    void actionEvent(unsigned char player, Action action) override;
    void stageEvent(int round) override;
    void showdownEvent(unsigned char player, unsigned char* cards) override;
    void gameOverEvent(double value) override;
    void winEvent(unsigned char player, int amount) override;

private:
    void gatherCards(uint8_t* cards) const;
    void lookUpBuckets();
    bool playStrategy(Action& action);
    void playPotOdds(Action& action);
    double equity() const;

    std::unique_ptr<tamarin::HoldemHands> hands;
    std::unique_ptr<CFR> solver; // released before the tables that it points to
    tamarin::FallbackCount fallback{"pot odds"};
};
