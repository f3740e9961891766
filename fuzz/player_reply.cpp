// Any bytes as what a dealer sends, played by the agents themselves, from bytes to replies. The
// first byte picks one of the player's games, '0' Kuhn, '1' and '2' limit hold'em for two and
// three, '3' no-limit; the rest is the stream, which then breaks. Every line that asks for an
// answer gets one, of a legal action, and no other line does.
//
// Hold'em plays a strategy of the first round, so later rounds are played by pot odds; its hands
// are numbered by the real indexers, which take no card twice.
#include "abstraction/round_indexers.h"
#include "driver/KuhnAgent.h"
#include "driver/LimitHoldemAgent.h"
#include "driver/possible_state.h"
#include "fuzz/games.h"
#include "fuzz/memory_file.h"
#include "support/rng.h"
#include "tests/driver/small_holdem.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace tamarin;

namespace {

// A connection without a network: what is fed comes in, then the connection breaks; what goes out
// is kept.
class Wire : public SocketCalls {
public:
    int connect(int, const sockaddr*, socklen_t) override { return 0; }
    ssize_t receive(int, void* buffer, size_t size) override {
        const size_t count = std::min(size, in_.size() - at_);
        if (count == 0) {
            errno = ECONNRESET;
            return -1;
        }
        std::memcpy(buffer, in_.data() + at_, count);
        at_ += count;
        return static_cast<ssize_t>(count);
    }
    ssize_t send(int, const void* buffer, size_t size) override {
        out.append(static_cast<const char*>(buffer), size);
        return static_cast<ssize_t>(size);
    }

    void feed(std::string text) {
        in_ = std::move(text);
        at_ = 0;
        out.clear();
    }
    std::string out;

private:
    std::string in_;
    size_t at_ = 0;
};

// The hand's number among its round's: what a table would be read at.
uint64_t numberOf(int round, const uint8_t* cards) {
    static const std::array<RoundIndexer, holdemRounds> indexers{RoundIndexer(0), RoundIndexer(1),
                                                                 RoundIndexer(2), RoundIndexer(3)};
    const uint64_t number = hand_index_last(indexers[static_cast<size_t>(round)].get(), cards);
    expect(number < roundSizes[static_cast<size_t>(round)], "every hand has its place in a table");
    return number;
}

std::unique_ptr<HoldemHands> numberedHands(int players) {
    auto hands = std::make_unique<test::FunctionHands>();
    hands->bucketOf = [players](int of, int round, int seat, const uint8_t* cards) {
        expect((of == 2 || of == players) && seat >= 0 && seat < of, "there is such a table");
        return static_cast<uint8_t>(numberOf(round, cards) % 10);
    };
    hands->equityOf = [players](int of, int round, const uint8_t* cards) {
        expect(of == 2 || of == players, "there is such a table");
        return static_cast<double>(numberOf(round, cards) % 101) / 100;
    };
    return hands;
}

// Trained for a moment, in a directory that goes again.
std::unique_ptr<PokerAgent> makeKuhn(const std::string& file, Wire& wire) {
    namespace fs = std::filesystem;
    const fs::path before = fs::current_path();
    std::string directory = fs::temp_directory_path() / "tamarin_fuzz.XXXXXX";
    expect(mkdtemp(directory.data()) != nullptr, "there is a place for strategies");
    fs::current_path(directory);
    auto agent = std::make_unique<KuhnAgent>(file.c_str(), KuhnAgent::Training{1, 1000}, wire);
    fs::current_path(before);
    fs::remove_all(directory);
    return agent;
}

std::unique_ptr<PokerAgent> makeHoldem(const Game& definition, const std::string& file,
                                       Wire& wire) {
    auto* const game = new Game(definition); // the solver's own, as long as the process
    auto solver = test::solverOf(*game, test::firstRoundStrategy(*game));
    expect(solver != nullptr, "the strategy is one");
    return std::make_unique<LimitHoldemAgent>(file.c_str(), std::move(solver),
                                              numberedHands(game->numPlayers), wire);
}

// An agent and its connection, which live as long as the process.
struct Player {
    explicit Player(size_t number) : game(gameOf(static_cast<uint8_t>('0' + number))) {
        const std::string text = gameAsText(game);
        const MemoryFile file(text.data(), text.size());
        agent = number == 0 ? makeKuhn(file.name(), wire) : makeHoldem(game, file.name(), wire);
        expect(agent->connect("127.0.0.1", 1), "the agent connects");
    }
    const Game& game;
    Wire wire;
    std::unique_ptr<PokerAgent> agent;
};

Player& playerOf(uint8_t byte) {
    constexpr size_t games = 4;
    static Player* players[games];
    const size_t number = byte % games; // '0' is a multiple of four
    if (players[number] == nullptr)
        players[number] = new Player(number);
    return *players[number];
}

// A line that the player may answer.
struct Question {
    std::string text; // as much of the line as the reader takes
    State state;
    bool mayBeLeft; // so long that there may be no room for an answer
};

// As the loop is told to behave: a line has at most 4,095 characters, its end included; comments
// are none; what the break cut off is none.
std::vector<Question> questionsIn(const std::string& stream, const Game& game) {
    constexpr size_t longest = 4095;
    constexpr size_t room = 4000;
    std::vector<Question> questions;
    for (size_t at = 0, end; (end = stream.find('\n', at)) != std::string::npos; at = end + 1) {
        const std::string line = stream.substr(at, end + 1 - at);
        if (line.size() > longest || line[0] == '#' || line[0] == ';')
            continue;
        MatchState seen = unseenState();
        const int consumed = readMatchState(line.c_str(), &game, &seen);
        if (consumed < 0 || !isPossible(game, seen) || seen.state.finished ||
            currentPlayer(&game, &seen.state) != seen.viewingPlayer)
            continue;
        const auto length = static_cast<size_t>(consumed);
        questions.push_back({line.substr(0, length), seen.state, length > room});
    }
    return questions;
}

// What is asked about can lie on one table, by a count of its own.
void checkQuestion(const Game& game, const Question& question) {
    const State& hand = question.state;
    std::array<int, MAX_RANKS * MAX_SUITS> times{};
    const uint8_t own = currentPlayer(&game, &hand);
    for (int seat = 0; seat < game.numPlayers; ++seat)
        for (int c = 0; c < game.numHoleCards; ++c) {
            const uint8_t card = hand.holeCards[seat][c];
            if (seat == own || card != unknownCard)
                expect(card < times.size() && ++times[card] == 1, "every card is there once");
        }
    for (int c = 0; c < sumBoardCards(&game, hand.round); ++c)
        expect(hand.boardCards[c] < times.size() && ++times[hand.boardCards[c]] == 1,
               "and so is every card of the board");
}

// Takes the question's answer from the front of what was sent; false when there is none.
bool takeAnswer(const Game& game, const Question& question, std::string& sent) {
    const std::string front = question.text + ":";
    if (!sent.starts_with(front))
        return false;
    Action action{actionInvalid, 0};
    const int length = readAction(sent.c_str() + front.size(), &game, &action);
    const Action before = action;
    expect(length > 0 && isValidAction(&game, &question.state, 0, &action) != 0 &&
               action.size == before.size,
           "the answer is a legal action");
    const size_t end = front.size() + static_cast<size_t>(length);
    expect(sent.compare(end, 2, "\r\n") == 0, "and a line end, and nothing else");
    sent.erase(0, end + 2);
    return true;
}

} // namespace

// The connection is closed by the end of the process; the leak check does not see its streams.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:PokerAgent::connect\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    Player& player = playerOf(data[0]);
    const std::string stream(reinterpret_cast<const char*>(data + 1), size - 1);
    global_urng().seed(1);
    player.wire.feed(stream);
    expect(player.agent->play(), "a broken connection ends the match in order");

    std::string sent = player.wire.out;
    for (const Question& question : questionsIn(stream, player.game)) {
        checkQuestion(player.game, question);
        expect(takeAnswer(player.game, question, sent) || question.mayBeLeft,
               "every question is answered");
    }
    expect(sent.empty(), "and nothing else is said");
    return 0;
}
