#include "game/definition.h"

#include "game/game_assert.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <strings.h>

namespace {

// What a definition's text gave beyond the record itself: how many values each list had.
struct Counts {
    unsigned stacks = 4; // matches the default stacks, which cover four seats
    unsigned blinds = 0;
    unsigned raiseSizes = 0;
    unsigned boardCards = 0;
};

bool isSeparator(char c) {
    return c == '=' || c == ' ' || (c >= '\t' && c <= '\r');
}

// Reads up to maxItems numbers in the given scan format from the rest of a line into slots of T and
// returns how many there were. Spaces and "=" separate; the first thing that is no number ends it.
template <class T>
unsigned readItems(const char* format, unsigned maxItems, const char* text, T* items) {
    char* fmt = static_cast<char*>(std::malloc(std::strlen(format) + 3));
    ASSERT_IN_GAME(fmt != nullptr, "fmt != 0");
    std::strcpy(fmt, format);
    std::strcat(fmt, "%n");

    unsigned count = 0;
    while (count < maxItems) {
        while (isSeparator(*text))
            ++text;
        T item{};
        int consumed = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        const int scanned = std::sscanf(text, fmt, &item, &consumed);
#pragma GCC diagnostic pop
        if (scanned < 1)
            break;
        items[count++] = item;
        text += consumed;
    }
    std::free(fmt);
    return count;
}

unsigned readNumbers(unsigned maxItems, const char* text, int32_t* items) {
    return readItems("%d", maxItems, text, items);
}

unsigned readBytes(unsigned maxItems, const char* text, uint8_t* items) {
    return readItems("%hhu", maxItems, text, items);
}

void setDefaults(Game* game) {
    *game = Game{};
    std::fill_n(game->stack, 4, unboundedStack);
    game->bettingRule = limitRule;
    std::fill_n(game->firstPlayer, MAX_ROUNDS, uint8_t{1});
    std::fill_n(game->maxRaises, MAX_ROUNDS, uncappedRaises);
}

// The rest of the line when it begins with the keyword, in any mix of cases; else null. Only the
// prefix is compared, so "limitless" is "limit".
const char* afterKeyword(const char* line, const char* keyword) {
    const size_t length = std::strlen(keyword);
    return strncasecmp(line, keyword, length) == 0 ? line + length : nullptr;
}

// Applies one line to the record. True when it ends the definition.
bool readLine(const char* line, Game* game, Counts* counts) {
    const char* rest = nullptr;
    if (afterKeyword(line, "end gamedef"))
        return true;
    if (afterKeyword(line, "gamedef"))
        return false;
    if ((rest = afterKeyword(line, "stack")))
        counts->stacks = readNumbers(MAX_PLAYERS, rest, game->stack);
    else if ((rest = afterKeyword(line, "blind")))
        counts->blinds = readNumbers(MAX_PLAYERS, rest, game->blind);
    else if ((rest = afterKeyword(line, "raisesize")))
        counts->raiseSizes = readNumbers(MAX_ROUNDS, rest, game->raiseSize);
    else if (afterKeyword(line, "limit"))
        game->bettingRule = limitRule;
    else if (afterKeyword(line, "nolimit"))
        game->bettingRule = noLimitRule;
    else if ((rest = afterKeyword(line, "numplayers")))
        readBytes(1, rest, &game->numPlayers);
    else if ((rest = afterKeyword(line, "numrounds")))
        readBytes(1, rest, &game->numRounds);
    else if ((rest = afterKeyword(line, "firstplayer")))
        readBytes(MAX_ROUNDS, rest, game->firstPlayer);
    else if ((rest = afterKeyword(line, "maxraises")))
        readBytes(MAX_ROUNDS, rest, game->maxRaises);
    else if ((rest = afterKeyword(line, "numsuits")))
        readBytes(1, rest, &game->numSuits);
    else if ((rest = afterKeyword(line, "numranks")))
        readBytes(1, rest, &game->numRanks);
    else if ((rest = afterKeyword(line, "numholecards")))
        readBytes(1, rest, &game->numHoleCards);
    else if ((rest = afterKeyword(line, "numboardcards")))
        counts->boardCards = readBytes(MAX_ROUNDS, rest, game->numBoardCards);
    return false;
}

// Checks the record and turns its first players into seats. False after one line on standard error.
bool validate(Game* game, const Counts& counts) {
    const unsigned players = game->numPlayers;
    const unsigned rounds = game->numRounds;
    if (rounds == 0 || rounds > MAX_ROUNDS) {
        std::fprintf(stderr, "invalid number of rounds: %u\n", rounds);
        return false;
    }
    if (players < 2 || players > MAX_PLAYERS) {
        std::fprintf(stderr, "invalid number of players: %u\n", players);
        return false;
    }
    if (counts.stacks < players) {
        std::fprintf(stderr, "only read %u stack sizes, need %u\n", counts.stacks, players);
        return false;
    }
    if (counts.blinds < players) {
        std::fprintf(stderr, "only read %u blinds, need %u\n", counts.blinds, players);
        return false;
    }
    for (unsigned p = 0; p < players; ++p) {
        if (game->blind[p] > game->stack[p]) {
            std::fprintf(stderr, "blind for player %d is greater than stack size\n",
                         static_cast<int>(p + 1));
            return false;
        }
    }
    if (game->bettingRule == limitRule && counts.raiseSizes < rounds) {
        std::fprintf(stderr, "only read %u raise sizes, need %u\n", counts.raiseSizes, rounds);
        return false;
    }
    for (unsigned r = 0; r < rounds; ++r) {
        const unsigned first = game->firstPlayer[r];
        if (first == 0 || first > players) {
            std::fprintf(stderr, "invalid first player %u on round %d\n", first,
                         static_cast<int>(r + 1));
            return false;
        }
        game->firstPlayer[r] = static_cast<uint8_t>(first - 1);
    }
    if (game->numSuits == 0 || game->numSuits > MAX_SUITS) {
        std::fprintf(stderr, "invalid number of suits: %u\n", unsigned{game->numSuits});
        return false;
    }
    if (game->numRanks == 0 || game->numRanks > MAX_RANKS) {
        std::fprintf(stderr, "invalid number of ranks: %u\n", unsigned{game->numRanks});
        return false;
    }
    if (game->numHoleCards == 0 || game->numHoleCards > MAX_HOLE_CARDS) {
        std::fprintf(stderr, "invalid number of hole cards: %u\n", unsigned{game->numHoleCards});
        return false;
    }
    if (counts.boardCards < rounds) {
        std::fprintf(stderr, "only read %u board card numbers, need %u\n", counts.boardCards,
                     rounds);
        return false;
    }
    unsigned cards = game->numHoleCards * players;
    unsigned board = 0;
    for (unsigned r = 0; r < rounds; ++r)
        board += game->numBoardCards[r];
    cards += board;
    // The records hold MAX_BOARD_CARDS, so a longer board is refused with the same words.
    if (cards > unsigned{game->numSuits} * game->numRanks || board > MAX_BOARD_CARDS) {
        std::fprintf(stderr, "too many hole and board cards for specified deck\n");
        return false;
    }
    return true;
}

} // namespace

int32_t bigBlind(const Game& game) {
    return *std::max_element(game.blind, game.blind + game.numPlayers);
}

Game* readGame(FILE* file) {
    Game* game = static_cast<Game*>(std::malloc(sizeof(Game)));
    ASSERT_IN_GAME(game != nullptr, "game != 0");
    setDefaults(game);
    Counts counts;

    char line[MAX_LINE_LEN];
    while (std::fgets(line, sizeof line, file)) {
        if (line[0] == '#' || line[0] == '\n')
            continue;
        if (readLine(line, game, &counts))
            break;
    }
    if (!validate(game, counts)) {
        std::free(game);
        return nullptr;
    }
    return game;
}

void printGame(FILE* file, const Game* game) {
    const int players = game->numPlayers;
    const int rounds = game->numRounds;
    std::fprintf(file, "GAMEDEF\n");
    std::fprintf(file, game->bettingRule == noLimitRule ? "nolimit\n" : "limit\n");
    std::fprintf(file, "numPlayers = %u\n", unsigned{game->numPlayers});
    std::fprintf(file, "numRounds = %u\n", unsigned{game->numRounds});

    const auto numbers = [&](const char* name, const int32_t* values, int count) {
        std::fprintf(file, "%s =", name);
        for (int i = 0; i < count; ++i)
            std::fprintf(file, " %d", values[i]);
        std::fprintf(file, "\n");
    };
    const auto bytes = [&](const char* name, const uint8_t* values, unsigned add) {
        std::fprintf(file, "%s =", name);
        for (int r = 0; r < rounds; ++r) {
            std::fprintf(file, " %u", values[r] + add);
        }
        std::fprintf(file, "\n");
    };

    if (std::any_of(game->stack, game->stack + players,
                    [](int32_t stack) { return stack != unboundedStack; }))
        numbers("stack", game->stack, players);
    numbers("blind", game->blind, players);
    if (game->bettingRule == limitRule)
        numbers("raiseSize", game->raiseSize, rounds);
    if (std::any_of(game->firstPlayer, game->firstPlayer + rounds,
                    [](uint8_t seat) { return seat != 0; }))
        bytes("firstPlayer", game->firstPlayer, 1);
    if (std::any_of(game->maxRaises, game->maxRaises + rounds,
                    [](uint8_t cap) { return cap != uncappedRaises; }))
        bytes("maxRaises", game->maxRaises, 0);
    std::fprintf(file, "numSuits = %u\n", unsigned{game->numSuits});
    std::fprintf(file, "numRanks = %u\n", unsigned{game->numRanks});
    std::fprintf(file, "numHoleCards = %u\n", unsigned{game->numHoleCards});
    bytes("numBoardCards", game->numBoardCards, 0);
    std::fprintf(file, "END GAMEDEF\n");
}

std::string tamarin::gameAsText(const Game& game) {
    char* text = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&text, &size);
    if (stream == nullptr)
        throw std::bad_alloc();
    printGame(stream, &game);
    std::fclose(stream);
    std::string result(text, size);
    std::free(text);
    return result;
}

tamarin::GamePtr tamarin::gameFromText(const std::string& text) {
    std::string copy = text; // of a stream that is only read
    FILE* const stream = fmemopen(copy.data(), copy.size(), "r");
    if (stream == nullptr)
        throw std::bad_alloc();
    GamePtr game(readGame(stream));
    std::fclose(stream);
    return game;
}
