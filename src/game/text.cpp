#include "game/text.h"

#include "support/scan.h"

#include <array>
#include <charconv>
#include <cstring>

namespace {

constexpr int noValue = -1;

// The rank or suit of a letter in either case, or -1.
using LetterTable = std::array<int8_t, 256>;

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr LetterTable letterTable(const char* letters) {
    LetterTable table{};
    table.fill(noValue);
    for (int i = 0; letters[i] != '\0'; ++i) {
        table[static_cast<unsigned char>(lower(letters[i]))] = static_cast<int8_t>(i);
        table[static_cast<unsigned char>(upper(letters[i]))] = static_cast<int8_t>(i);
    }
    return table;
}

constexpr LetterTable rankOfChar = letterTable(rankChars);
constexpr LetterTable suitOfChar = letterTable(suitChars);

constexpr int numCards = MAX_RANKS * MAX_SUITS;

// Writes into a buffer of known size. Once something has not fitted, nothing more is written.
class TextWriter {
public:
    TextWriter(char* buffer, int maxLen) : buffer_(buffer), maxLen_(maxLen) {}

    void put(char c) {
        if (ok_ && used_ + 1 < maxLen_)
            buffer_[used_++] = c;
        else
            ok_ = false;
    }

    template <class Number>
    void putNumber(Number number) {
        char digits[16];
        const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        put(digits, end - digits);
    }

    void put(const char* text, ptrdiff_t length) {
        if (ok_ && used_ + length < maxLen_) {
            std::memcpy(buffer_ + used_, text, static_cast<size_t>(length));
            used_ += static_cast<int>(length);
        } else {
            ok_ = false;
        }
    }

    void putCards(int count, const uint8_t* cards) {
        for (int i = 0; i < count; ++i) {
            if (cards[i] >= numCards) {
                ok_ = false;
                return;
            }
            const char text[2] = {rankChars[cards[i] / MAX_SUITS], suitChars[cards[i] % MAX_SUITS]};
            put(text, 2);
        }
    }

    void putAction(const Game* game, const Action& action) {
        if (action.type < actionFold || action.type >= actionInvalid) {
            ok_ = false;
            return;
        }
        put(actionChars[action.type]);
        if (action.type == actionRaise && game->bettingRule == noLimitRule)
            putNumber(action.size);
    }

    // Terminates the text; its length, or -1 when something did not fit.
    int finish() {
        if (maxLen_ < 1)
            return -1;
        buffer_[used_] = '\0';
        return ok_ ? used_ : -1;
    }

private:
    char* buffer_;
    int maxLen_;
    int used_ = 0;
    bool ok_ = true;
};

// Replays the betting. Characters consumed, including the ":" that ends it, or -1.
int readBetting(const char* string, const Game* game, State* state) {
    const char* at = string;
    for (;;) {
        if (*at == '\0')
            return static_cast<int>(at - string);
        if (*at == ':')
            return static_cast<int>(at + 1 - string);
        if (*at == '/') { // the rules decide when a round ends
            ++at;
            continue;
        }
        Action action;
        const int consumed = readAction(at, game, &action);
        if (consumed < 0 || !isValidAction(game, state, 0, &action))
            return -1;
        doAction(game, &action, state);
        at += consumed;
    }
}

int readHoleCards(const char* string, const Game* game, State* state) {
    const char* at = string;
    for (int p = 0; p < game->numPlayers; ++p) {
        if (p != 0 && *at == '|')
            ++at;
        int consumed = 0;
        const int count = readCards(at, game->numHoleCards, state->holeCards[p], &consumed);
        if (count != 0 && count != game->numHoleCards)
            return -1;
        at += consumed;
    }
    return static_cast<int>(at - string);
}

int readBoardCards(const char* string, const Game* game, State* state) {
    const char* at = string;
    for (int r = 0; r <= state->round; ++r) {
        if (r != 0 && *at == '/')
            ++at;
        int consumed = 0;
        const int count =
            readCards(at, game->numBoardCards[r], state->boardCards + bcStart(game, r), &consumed);
        if (count != game->numBoardCards[r])
            return -1;
        at += consumed;
    }
    return static_cast<int>(at - string);
}

// ":" hand-number ":" betting ":" hole-cards board
int readCommon(const char* string, const Game* game, State* state) {
    const char* at = string;
    uint32_t handId = 0;
    if (*at != ':')
        return -1;
    ++at;
    const int digits = tamarin::scanUnsigned(at, handId);
    if (digits < 0)
        return -1;
    at += digits;
    initState(game, handId, state);
    if (*at != ':')
        return -1;
    ++at;
    for (const auto read : {readBetting, readHoleCards, readBoardCards}) {
        const int consumed = read(at, game, state);
        if (consumed < 0)
            return -1;
        at += consumed;
    }
    return static_cast<int>(at - string);
}

// The part of the text that states and match states share. shows(p) says whose cards are printed.
template <class Shows>
void printStateCommon(const Game* game, const State* state, Shows shows, TextWriter& out) {
    out.put(':');
    out.putNumber(state->handId);
    out.put(':');
    for (int r = 0; r <= state->round; ++r) {
        if (r != 0)
            out.put('/');
        for (int i = 0; i < state->numActions[r]; ++i)
            out.putAction(game, state->action[r][i]);
    }
    out.put(':');
    for (int p = 0; p < game->numPlayers; ++p) {
        if (p != 0)
            out.put('|');
        if (shows(p))
            out.putCards(game->numHoleCards, state->holeCards[p]);
    }
    for (int r = 0; r <= state->round; ++r) {
        if (r != 0)
            out.put('/');
        out.putCards(game->numBoardCards[r], state->boardCards + bcStart(game, r));
    }
}

constexpr std::array<ActionType, 256> actionTable() {
    std::array<ActionType, 256> table{};
    table.fill(actionInvalid);
    table['f'] = table['F'] = actionFold;
    table['c'] = table['C'] = table['k'] = table['K'] = actionCall;
    table['r'] = table['R'] = table['b'] = table['B'] = actionRaise;
    return table;
}

bool sameBetting(const State* a, const State* b) {
    if (a->handId != b->handId || a->round != b->round)
        return false;
    for (int r = 0; r <= a->round; ++r) {
        if (a->numActions[r] != b->numActions[r])
            return false;
        for (int i = 0; i < a->numActions[r]; ++i) {
            const Action& x = a->action[r][i];
            const Action& y = b->action[r][i];
            if (x.type != y.type || x.size != y.size)
                return false;
        }
    }
    return true;
}

bool sameHoleCards(const Game* game, const State* a, const State* b, int p) {
    return std::memcmp(a->holeCards[p], b->holeCards[p], game->numHoleCards) == 0;
}

bool sameBoard(const Game* game, const State* a, const State* b) {
    return std::memcmp(a->boardCards, b->boardCards, sumBoardCards(game, a->round)) == 0;
}

} // namespace

const std::array<ActionType, 256> charToAction = actionTable();

int readCard(const char* string, uint8_t* card) {
    const int rank = rankOfChar[static_cast<unsigned char>(string[0])];
    if (rank < 0)
        return -1;
    const int suit = suitOfChar[static_cast<unsigned char>(string[1])];
    if (suit < 0)
        return -1;
    *card = static_cast<uint8_t>(rank * MAX_SUITS + suit);
    return 2;
}

int readCards(const char* string, int maxCards, uint8_t* cards, int* consumed) {
    int count = 0;
    while (count < maxCards && readCard(string + 2 * count, &cards[count]) > 0)
        ++count;
    *consumed = 2 * count;
    return count;
}

int printCard(uint8_t card, int maxLen, char* string) {
    return printCards(1, &card, maxLen, string);
}

int printCards(int numCards, const uint8_t* cards, int maxLen, char* string) {
    if (numCards <= 0)
        return 0;
    TextWriter out(string, maxLen);
    out.putCards(numCards, cards);
    return out.finish();
}

int readAction(const char* string, const Game* game, Action* action) {
    action->type = charToAction[static_cast<unsigned char>(string[0])];
    action->size = 0;
    if (action->type != actionRaise || game->bettingRule != noLimitRule)
        return 1;
    const int digits = tamarin::scanInt(string + 1, action->size);
    return digits < 0 ? -1 : 1 + digits;
}

int printAction(const Game* game, const Action* action, int maxLen, char* string) {
    TextWriter out(string, maxLen);
    out.putAction(game, *action);
    return out.finish();
}

int readState(const char* string, const Game* game, State* state) {
    constexpr int prefix = 5;
    if (std::strncmp(string, "STATE", prefix) != 0)
        return -1;
    const int consumed = readCommon(string + prefix, game, state);
    return consumed < 0 ? -1 : prefix + consumed;
}

int readMatchState(const char* string, const Game* game, MatchState* state) {
    constexpr int prefix = 11;
    if (std::strncmp(string, "MATCHSTATE:", prefix) != 0)
        return -1;
    const int digits = tamarin::scanUnsigned8(string + prefix, state->viewingPlayer);
    if (digits < 0 || state->viewingPlayer >= game->numPlayers)
        return -1;
    const int consumed = readCommon(string + prefix + digits, game, &state->state);
    return consumed < 0 ? -1 : prefix + digits + consumed;
}

int printState(const Game* game, const State* state, int maxLen, char* string) {
    TextWriter out(string, maxLen);
    out.put("STATE", 5);
    printStateCommon(
        game, state, [](int) { return true; }, out);
    return out.finish();
}

int printMatchState(const Game* game, const MatchState* state, int maxLen, char* string) {
    const State& hand = state->state;
    const bool showdown = hand.finished && numFolded(game, &hand) + 1 < game->numPlayers;
    const auto shows = [&](int p) {
        return p == state->viewingPlayer || (showdown && !hand.playerFolded[p]);
    };
    TextWriter out(string, maxLen);
    out.put("MATCHSTATE:", 11);
    out.putNumber(unsigned{state->viewingPlayer});
    printStateCommon(game, &hand, shows, out);
    return out.finish();
}

int statesEqual(const Game* game, const State* a, const State* b) {
    if (!sameBetting(a, b))
        return 0;
    for (int p = 0; p < game->numPlayers; ++p)
        if (!sameHoleCards(game, a, b, p))
            return 0;
    return sameBoard(game, a, b);
}

int matchStatesEqual(const Game* game, const MatchState* a, const MatchState* b) {
    return a->viewingPlayer == b->viewingPlayer && sameBetting(&a->state, &b->state) &&
           sameHoleCards(game, &a->state, &b->state, a->viewingPlayer) &&
           sameBoard(game, &a->state, &b->state);
}
