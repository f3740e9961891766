// States, actions and cards as the short text that travels between dealer and player.
//
//   state       = "STATE" common
//   match state = "MATCHSTATE:" viewing-seat common
//   common      = ":" hand-number ":" betting ":" hole-cards board
//
// betting: each action's letter, "/" before every later round; a no-limit raise carries the total
// it raises to. hole-cards: the seats in order with "|" between them, empty where unknown. board:
// "/" before each later round's cards. Example: MATCHSTATE:1:7:cc/r:|9hQd/8dAs8s
//
// Readers take terminated text, return the characters consumed, or -1 on a syntax or rule error,
// and never run past the terminator; they replay the betting, so an illegal sequence is refused,
// and so is a number that does not fit its field. Cards that the text leaves out stay as they were.
// Writers return the characters written, or -1 when the buffer is too small (it then holds a part).
#pragma once

#include "game/state.h"

#include <array>

inline constexpr char rankChars[] = "23456789TJQKA";
inline constexpr char suitChars[] = "cdhs";
inline constexpr char actionChars[] = "fcr";
// f F fold; c C k K call; r R b B raise; every other byte actionInvalid.
extern const std::array<ActionType, 256> charToAction;

// One card; 2 or -1. Either case is read.
int readCard(const char* string, uint8_t* card);
// Up to maxCards cards, stopping quietly at the first two characters that are not a card; returns
// how many.
int readCards(const char* string, int maxCards, uint8_t* cards, int* consumed);
// 2; needs maxLen >= 3. A byte that is not a card gives -1.
int printCard(uint8_t card, int maxLen, char* string);
int printCards(int numCards, const uint8_t* cards, int maxLen, char* string);

// An unknown letter is read as an actionInvalid of one character, and so is the terminator of an
// empty text. Check the action before you read on behind it: the rules refuse an actionInvalid.
int readAction(const char* string, const Game* game, Action* action);
int printAction(const Game* game, const Action* action, int maxLen, char* string);

int readState(const char* string, const Game* game, State* state);
int readMatchState(const char* string, const Game* game, MatchState* state);
// Every seat's cards are shown.
int printState(const Game* game, const State* state, int maxLen, char* string);
// The viewing seat's cards are shown, and at a showdown those of the seats still in.
int printMatchState(const Game* game, const MatchState* state, int maxLen, char* string);

// Whether two states agree in hand number, betting and cards; everything else follows from these.
int statesEqual(const Game* game, const State* a, const State* b);
// The same for one seat's view: only the viewing seat's hole cards are compared.
int matchStatesEqual(const Game* game, const MatchState* a, const MatchState* b);
