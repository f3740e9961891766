#include "driver/PokerAgent.h"

#include "driver/possible_state.h"
#include "game/definition_file.h"

#include <algorithm>
#include <cstdlib>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <unistd.h>

namespace {

constexpr char versionLine[] = "VERSION:2.0.0\n";
constexpr int versionLength = sizeof versionLine - 1;

// How much of a line that cannot be read is shown, and how many such lines: a dealer that sends
// nothing but garbage must not fill the disk with our complaints.
constexpr size_t shownLength = 200;
constexpr long shownLines = 10000;

Game* loadDefinition(const char* gameFile) {
    tamarin::GamePtr game = tamarin::readDefinitionFile(gameFile);
    if (!game)
        std::exit(1);
    return game.release();
}

// Lets the kernel notice, within about two minutes, a dealer whose machine is gone: reading then
// fails instead of waiting for ever. Answers go out at once. Best effort.
void tuneSocket(int fd) {
    const auto set = [fd](int level, int option, int value) {
        (void)setsockopt(fd, level, option, &value, sizeof value);
    };
    set(IPPROTO_TCP, TCP_NODELAY, 1);
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, 60);
    set(IPPROTO_TCP, TCP_KEEPINTVL, 10);
    set(IPPROTO_TCP, TCP_KEEPCNT, 6);
}

bool isComment(const char* line) {
    return line[0] == '#' || line[0] == ';';
}

} // namespace

// What the loop knows of the hand between two lines.
struct PokerAgent::Progress {
    bool newHand = true;
    int nextRound = 0;
    uint8_t lastPlayer = 0; // who was to act in the previous state
};

PokerAgent::PokerAgent(const char* gameFile, tamarin::SocketCalls& calls)
    : game(loadDefinition(gameFile)), calls_(calls) {}

PokerAgent::~PokerAgent() {
    std::free(game);
}

bool PokerAgent::connect(const char* host, unsigned short port) {
    if (isConnected())
        return false;
    socket_ = connectTo(host, port, calls_);
    if (socket_ < 0)
        std::exit(1);
    tuneSocket(socket_);
    toServer_ = tamarin::openSocketStream(socket_, "w", calls_);
    fromServer_ = toServer_ ? tamarin::openSocketStream(socket_, "r", calls_) : nullptr;
    if (!fromServer_) {
        std::fprintf(stderr, "ERROR: could not get socket streams\n");
        return false;
    }
    // The streams are buffered: whether anything was written is known only once they are flushed.
    if (std::fprintf(toServer_, "%s", versionLine) != versionLength ||
        std::fflush(toServer_) != 0) {
        std::fprintf(stderr, "ERROR: could not get send version to server\n");
        return false;
    }
    return true;
}

void PokerAgent::disconnect() {
    close(socket_);
    socket_ = 0;
}

// Reads one line, its end included, into line_. A line that does not fit is read to its end; its
// beginning stays in line_.
PokerAgent::Line PokerAgent::readLine() {
    lineLength_ = 0;
    bool tooLong = false;
    for (;;) {
        const int c = getc_unlocked(fromServer_);
        if (c == EOF) {
            // What a broken connection cut off is no line; the end of the stream does end one.
            if (ferror_unlocked(fromServer_))
                return Line::end;
            break;
        }
        if (lineLength_ < sizeof line_ - 1)
            line_[lineLength_++] = static_cast<char>(c);
        else
            tooLong = true;
        if (c == '\n')
            break;
    }
    line_[lineLength_] = '\0';
    if (lineLength_ == 0)
        return Line::end;
    return tooLong ? Line::tooLong : Line::read;
}

void PokerAgent::reportUnreadable(size_t length) {
    if (++unreadable_ > shownLines)
        return;
    while (length > 0 && (line_[length - 1] == '\n' || line_[length - 1] == '\r'))
        --length;
    std::string shown;
    for (size_t i = 0; i < std::min(length, shownLength); ++i) {
        const auto byte = static_cast<unsigned char>(line_[i]);
        if (byte >= ' ' && byte <= '~') {
            shown += line_[i];
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", unsigned{byte});
            shown += escaped;
        }
    }
    std::fprintf(stderr, "ERROR: could not read match state: %s\n", shown.c_str());
    if (unreadable_ == shownLines)
        std::fprintf(stderr, "ERROR: further lines that cannot be read are passed over silently\n");
}

// Raises the events of the state just read.
void PokerAgent::raiseEvents(Progress& progress) {
    State& hand = state.state;
    if (progress.newHand) {
        holeCards(hand.holeCards[state.viewingPlayer], state.viewingPlayer);
        progress.newHand = false;
    } else {
        const int actions = hand.numActions[hand.round];
        actionEvent(progress.lastPlayer,
                    actions > 0 ? hand.action[hand.round][actions - 1] : Action{actionInvalid, 0});
    }
    progress.lastPlayer = currentPlayer(game, &hand);
    if (hand.round == progress.nextRound) {
        stageEvent(hand.round);
        ++progress.nextRound;
    }
}

// Asks the agent for its action and sends it behind the state text as it was read. False when the
// answer could not be sent.
bool PokerAgent::answer(int consumed) {
    State& hand = state.state;
    Action action{actionInvalid, 0};
    getAction(action);
    // A fold is illegal, too, where nothing is owed.
    if (!isValidAction(game, &hand, true, &action))
        action = {actionCall, 0};

    int length = consumed;
    line_[length++] = ':';
    const int room = static_cast<int>(sizeof line_) - 2 - length;
    const int printed = printAction(game, &action, room, line_ + length);
    if (printed < 0) { // a state that fills the whole buffer leaves no room for an answer
        reportUnreadable(static_cast<size_t>(consumed));
        return true;
    }
    length += printed;
    line_[length++] = '\r';
    line_[length++] = '\n';
    const auto size = static_cast<size_t>(length);
    if (std::fwrite(line_, 1, size, toServer_) != size || std::fflush(toServer_) != 0) {
        std::fprintf(stderr, "ERROR: could not get send response to server\n");
        return false;
    }
    return true;
}

bool PokerAgent::play() {
    Progress progress;
    for (;;) {
        const Line kind = readLine();
        if (kind == Line::end)
            return true;
        if (isComment(line_))
            continue;
        // Read aside, so that a line that fails half-way leaves the last good state standing.
        MatchState next = tamarin::unseenState();
        const int consumed = kind == Line::read ? readMatchState(line_, game, &next) : -1;
        if (consumed < 0 || !tamarin::isPossible(*game, next)) {
            reportUnreadable(lineLength_);
            continue;
        }
        state = next;
        raiseEvents(progress);

        const State& hand = state.state;
        if (!hand.finished) {
            if (progress.lastPlayer == state.viewingPlayer && !answer(consumed))
                return false;
        } else {
            progress.newHand = true;
            progress.nextRound = 0;
            gameOverEvent(valueOfState(game, &hand, state.viewingPlayer));
        }
    }
}
