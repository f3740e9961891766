// The base of every agent: the dealer connection and the loop that plays a match.
//
// An agent is constructed on a game definition, connects, and plays until the dealer closes the
// connection; play() tells the agent what happens through the virtual events and asks it for an
// action whenever its seat is to act. Whatever the agent answers, only legal actions are sent: one
// that is illegal becomes a call. One thread.
#pragma once

#include "game/game.h"
#include "support/net.h"

#include <cstdio>

class PokerAgent {
public:
    // Reads the definition; every agent holds its own copy. A file that cannot be opened or read
    // ends the process with status 1 after one line on standard error. calls carries the match and
    // must outlive the agent.
    explicit PokerAgent(const char* gameFile,
                        tamarin::SocketCalls& calls = tamarin::systemSockets());
    PokerAgent(const PokerAgent&) = delete;
    PokerAgent& operator=(const PokerAgent&) = delete;

    // Releases the definition; the connection stays open until the process ends.
    virtual ~PokerAgent();

    // A new hand has begun: the viewing seat and its hole cards, unknownCard (possible_state.h) in
    // place of each while they are not known.
    virtual void holeCards(unsigned char* cards, unsigned char player) = 0;
    // The agent is to act, and its cards are known: fill in the action.
    virtual void getAction(Action& action) = 0;
    // An action was seen. When the state has just entered a round, there has been no action in it
    // yet: the action is then an actionInvalid of size 0.
    virtual void actionEvent(unsigned char player, Action action) = 0;
    // A betting round has begun. A round that passes between two lines is not announced, nor are
    // those after it.
    virtual void stageEvent(int round) = 0;
    // A player showed its cards; the play loop does not raise it.
    virtual void showdownEvent(unsigned char player, unsigned char* cards) = 0;
    // The hand is over; value is what the viewing seat won (positive) or lost, in chips.
    virtual void gameOverEvent(double value) = 0;
    // A player won an amount; the play loop does not raise it.
    virtual void winEvent(unsigned char player, int amount) = 0;

    // Connects and sends the protocol version. False when already connected, or when the streams or
    // the version line fail (one line on standard error). A dealer that cannot be reached ends the
    // process with status 1.
    bool connect(const char* host, unsigned short port);
    // Closes the socket.
    void disconnect();
    bool isConnected() const { return socket_ != 0; }

    // Plays until the dealer closes the connection or it breaks: true, in mid-hand too. False when
    // an answer could not be sent. A line that is not a state of this game, or an impossible one
    // (possible_state.h), is reported on standard error and passed over.
    bool play();

protected:
    MatchState state{}; // as of the last line that could be read
    Game* game;         // owned

private:
    enum class Line { read, tooLong, end };
    struct Progress;

    Line readLine();
    void raiseEvents(Progress& progress);
    bool answer(int consumed);
    void reportUnreadable(size_t length);

    FILE* toServer_ = nullptr;
    FILE* fromServer_ = nullptr;
    int socket_ = 0; // 0: not connected
    tamarin::SocketCalls& calls_;

    char line_[4096];
    size_t lineLength_ = 0;
    long unreadable_ = 0;
};
