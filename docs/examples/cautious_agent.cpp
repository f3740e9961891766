// An agent that bets good cards and gives up bad ones. Build it, then let it play:
//
//   tamarin match kuhn.limit.3p.game --seat me=cautious_agent --seat a=bot:rule --seat b=bot:call
#include "driver/PokerAgent.h"
#include "support/interrupt.h"

#include <cstdio>
#include <cstdlib>

class CautiousAgent : public PokerAgent {
public:
    using PokerAgent::PokerAgent;

    // The one event that matters: state.state is the hand as the dealer last sent it, and it is
    // seat state.viewingPlayer's turn. Whatever is left in action will be made legal before it is
    // sent: a raise that the rules do not allow becomes a call.
    void getAction(Action& action) override {
        const State& hand = state.state;
        const uint8_t seat = state.viewingPlayer;
        const int rank = hand.holeCards[seat][0] / MAX_SUITS; // 0 is a two, 12 an ace
        const bool owes = hand.spent[seat] < hand.maxSpent;

        if (rank == 12)
            action = {actionRaise, 0};
        else if (rank == 11 || !owes)
            action = {actionCall, 0};
        else
            action = {actionFold, 0};
    }

    // What happens meanwhile. An agent that learns from the others keeps books here.
    void holeCards(unsigned char*, unsigned char) override { ++hands_; }
    void actionEvent(unsigned char, Action) override {}
    void stageEvent(int) override {}
    void showdownEvent(unsigned char, unsigned char*) override {}
    void gameOverEvent(double value) override { won_ += value; }
    void winEvent(unsigned char, int) override {}

    void report() const { std::printf("%ld hands, %+g chips\n", hands_, won_); }

private:
    long hands_ = 0;
    double won_ = 0;
};

// The dealer appends the game, its host and its port.
int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: cautious_agent game server port\n");
        return 1;
    }
    tamarin::ignoreBrokenPipes(); // a dealer that goes away is no reason to die
    CautiousAgent agent(argv[1]);
    if (!agent.connect(argv[2], static_cast<unsigned short>(std::atoi(argv[3]))))
        return 1;
    const bool done = agent.play();
    agent.report();
    return done ? 0 : 1;
}
