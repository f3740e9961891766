// Any bytes as what the players of a match say, in any pieces, from the first word to the last. The
// first byte picks the game and the second the cards, and whether a token is asked for. Then come
// the words of one player after the other. Among them stand for
//
//   \1   the state that the player was sent last; a piece that begins with it waits for its turn
//   \2   the end of a piece, as the network cuts them
//   \3   the next player's words
//
// Only who has greeted properly has a seat; every hand is played to its end by legal actions; the
// log of it reads back, and nobody's chips are lost.
#include "dealer/greeting.h"
#include "dealer/hand_log.h"
#include "dealer/match.h"
#include "fuzz/games.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace tamarin;

namespace {

constexpr const char* token = "s3cret";

std::vector<std::string> cut(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text)
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    return parts;
}

// The far end of a player's connection.
class Words : public SocketCalls {
public:
    Words(const Game& game, const std::string& text) : game_(game), pieces_(cut(text, '\2')) {}

    ssize_t receive(int, void* buffer, size_t size) override {
        if (rest_.empty() && !takeNextPiece())
            return next_ == pieces_.size() ? 0 : (errno = EAGAIN, -1);
        const size_t count = std::min(size, rest_.size());
        std::memcpy(buffer, rest_.data(), count);
        said.append(rest_, 0, count);
        rest_.erase(0, count);
        return static_cast<ssize_t>(count);
    }

    ssize_t send(int, const void* buffer, size_t size) override {
        expect(size > 0, "nothing is never sent");
        for (const char c : std::string(static_cast<const char*>(buffer), size)) {
            if (c != '\n') {
                coming_ += c;
                continue;
            }
            expect(!coming_.empty() && coming_.back() == '\r', "a state's line ends with CR LF");
            coming_.pop_back();
            state_ = std::move(coming_);
            coming_.clear();
            answered_ = false;
        }
        return static_cast<ssize_t>(size);
    }

    std::string said;

private:
    // Whether the last state waits for this player.
    bool hasItsTurn() const {
        if (answered_)
            return false;
        MatchState state{};
        expect(readMatchState(state_.c_str(), &game_, &state) == static_cast<int>(state_.size()),
               "a state that is sent can be read");
        return !state.state.finished && currentPlayer(&game_, &state.state) == state.viewingPlayer;
    }

    bool takeNextPiece() {
        constexpr int patience = 64;
        if (pauses_) { // between two pieces there is nothing for a moment
            pauses_ = false;
            return false;
        }
        if (next_ == pieces_.size())
            return false;
        const std::string& piece = pieces_[next_];
        if (piece.starts_with('\1') && !hasItsTurn()) {
            if (++waited_ > patience)
                next_ = pieces_.size(); // its turn does not come any more
            return false;
        }
        waited_ = 0;
        answered_ = answered_ || piece.starts_with('\1');
        for (const char c : piece)
            if (c == '\1')
                rest_ += state_;
            else
                rest_ += c;
        ++next_;
        pauses_ = true;
        return !rest_.empty();
    }

    const Game& game_;
    std::vector<std::string> pieces_;
    size_t next_ = 0;
    std::string rest_; // of a piece
    std::string state_;
    std::string coming_;   // of a line still being sent
    bool answered_ = true; // what was sent last, if anything
    bool pauses_ = false;
    int waited_ = 0;
};

// Whether somebody who has said this has greeted, told in another way than the dealer's.
bool hasGreeted(const std::string& said, bool askForToken) {
    std::string text = said;
    const auto take = [&](const std::string& line) {
        for (const char* end : {"\n", "\r\n"})
            if (text.starts_with(line + end)) {
                text.erase(0, line.size() + std::strlen(end));
                return true;
            }
        return false;
    };
    return (!askForToken || take(std::string("#token ") + token)) && take("VERSION:2.0.0");
}

bool greets(Connection& connection, const Words& words, bool askForToken) {
    Greeting greeting(askForToken ? token : "");
    auto outcome = Greeting::Outcome::unfinished;
    std::string line;
    for (bool over = false; !over && outcome == Greeting::Outcome::unfinished;) {
        over = connection.ended();
        connection.receive();
        while (outcome == Greeting::Outcome::unfinished && connection.nextLine(line))
            outcome = greeting.hear(line);
    }
    const bool welcome = outcome == Greeting::Outcome::welcome;
    expect(welcome == hasGreeted(words.said, askForToken), "who has greeted is welcome, no other");
    expect((outcome == Greeting::Outcome::refused) == !greeting.complaint().empty(),
           "a refusal says why");
    return welcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const Game& game = gameOf(data[0]);
    if (!checkDealable(&game))
        return 0;
    const bool askForToken = data[1] & 1;
    const auto texts = cut(std::string(reinterpret_cast<const char*>(data + 2), size - 2), '\3');

    static const int always = ::open("/dev/null", O_RDWR | O_CLOEXEC); // ready, as poll() sees it
    std::vector<std::unique_ptr<Words>> words;
    std::vector<Player> players(game.numPlayers);
    std::vector<std::string> names;
    for (size_t i = 0; i < players.size(); ++i) {
        words.push_back(std::make_unique<Words>(game, i < texts.size() ? texts[i] : ""));
        Connection connection(::fcntl(always, F_DUPFD_CLOEXEC, 0), *words[i]);
        if (greets(connection, *words[i], askForToken))
            players[i].connection.emplace(std::move(connection));
        names.push_back("p" + std::to_string(i));
    }

    MatchOptions options;
    options.seed = data[1];
    options.duplicate = data[1] & 2;
    options.hands = options.duplicate ? game.numPlayers : 3;
    options.fixedSeats = data[1] & 4;
    options.actionLimit = options.handLimit = std::chrono::hours(1);
    MatchEvents events;
    uint64_t hands = 0;
    uint64_t actions = 0;
    events.handFinished = [&](const FinishedHand& hand) -> Status {
        expect(hand.state->finished, "a hand ends");
        expect(hand.state->handId == hands++, "hands are numbered");
        double sum = 0;
        for (const double chips : hand.chips)
            sum += chips;
        expect(std::fabs(sum) <= 1e-6, "chips are neither made nor lost");
        for (int round = 0; round < game.numRounds; ++round)
            actions += hand.state->numActions[round];
        LoggedHand logged{*hand.state, {hand.chips.begin(), hand.chips.end()}, names};
        const auto again = parseHand(&game, formatHand(&game, logged));
        expect(again.ok() && statesEqual(&game, &again->state, hand.state),
               "the log of a hand reads back");
        return {};
    };
    events.faulty = [&](size_t player, Fault, uint32_t hand, const std::string&) {
        expect(player < players.size() && hand < options.hands, "a fault is somebody's");
    };
    uint64_t asked = 0;
    events.keepPlaying = [&] { return ++asked < 1000000; };
    const MatchResult result = playMatch(&game, players, options, events);

    expect(!result.stopped, "a match comes to its end");
    expect(result.failure.empty() ? result.played == options.hands
                                  : result.failure == "every player is gone",
           "nothing but everybody's leaving ends it before its time");
    expect(result.played == hands, "every hand is told of");
    uint64_t played = 0;
    for (const PlayerResult& player : result.players)
        for (const uint64_t count : player.actions)
            played += count;
    // Of a hand that was given up the actions were played, too.
    expect(result.failure.empty() ? played == actions : played >= actions,
           "every action is somebody's");
    return 0;
}
