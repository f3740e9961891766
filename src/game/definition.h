// Game definitions: the record that drives every rule, and its text form.
//
// Seats and rounds count from 0. A card is one byte, rank * 4 + suit, rank 0 ("2") to 12 ("A"),
// suit 0 to 3 ("c", "d", "h", "s"); the factor is MAX_SUITS and not the game's numSuits, so the
// cards of a game with fewer suits have gaps.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>

inline constexpr int MAX_PLAYERS = 10;
inline constexpr int MAX_ROUNDS = 4;
inline constexpr int MAX_NUM_ACTIONS = 64; // per round
inline constexpr int MAX_SUITS = 4;
inline constexpr int MAX_RANKS = 13;
inline constexpr int MAX_HOLE_CARDS = 3;
inline constexpr int MAX_BOARD_CARDS = 7; // over all rounds
inline constexpr int MAX_LINE_LEN = 4096; // of a definition line, terminator included

enum BettingRule : int32_t {
    limitRule = 0,   // every raise has the fixed size of its round
    noLimitRule = 1, // a raise may have any size from a minimum up to the stack
};

// A stack that is never exhausted.
inline constexpr int32_t unboundedStack = INT32_MAX;
// maxRaises of a round without a cap.
inline constexpr uint8_t uncappedRaises = 255;

// Read once, never changed. All money in chips.
struct Game {
    int32_t stack[MAX_PLAYERS]; // the most a seat may put into the pot
    int32_t blind[MAX_PLAYERS]; // what a seat has put in before the first action
    int32_t raiseSize[MAX_ROUNDS];
    BettingRule bettingRule;
    uint8_t numPlayers;              // 2..10
    uint8_t numRounds;               // 1..4
    uint8_t firstPlayer[MAX_ROUNDS]; // the seat that acts first
    uint8_t maxRaises[MAX_ROUNDS];
    uint8_t numSuits;                  // 1..4
    uint8_t numRanks;                  // 1..13
    uint8_t numHoleCards;              // 1..3, per player
    uint8_t numBoardCards[MAX_ROUNDS]; // dealt at the start of the round, not cumulative
};
static_assert(std::is_trivially_copyable_v<Game>);

// The largest blind, by whose thousandths (mbb) winnings are counted; 0 in a game without blinds.
int32_t bigBlind(const Game& game);

// Reads a definition from the stream's position up to "end gamedef" or the end of the stream.
// Returns a new record, released with free(), or null after one line on standard error that says
// which value is wrong. Raise sizes after the fourth are ignored.
Game* readGame(FILE* file);

// Writes the record in the form that readGame reads. One definition does not survive the trip: with
// more than four seats whose stacks are all unbounded no stack line is written, and the reader's
// default covers four seats only.
void printGame(FILE* file, const Game* game);

namespace tamarin {

// What printGame writes.
std::string gameAsText(const Game& game);

struct FreeGame {
    void operator()(Game* game) const { std::free(game); }
};
using GamePtr = std::unique_ptr<Game, FreeGame>;

// What readGame makes of the text.
GamePtr gameFromText(const std::string& text);

} // namespace tamarin
