// One hand in progress: who put in how much, every action, the cards; and the rules that move it.
//
// Everything here is a function of the records it is given: no shared state, any thread. Illegal
// input is refused by isValidAction; doAction asserts.
#pragma once

#include "game/definition.h"
#include "support/rng.h"

enum ActionType : int32_t {
    actionFold = 0,
    actionCall = 1,  // also a check
    actionRaise = 2, // also a bet
    actionInvalid = 3,
};

struct Action {
    ActionType type;
    int32_t size; // a no-limit raise: the total put in after it (raise to); otherwise 0
};

// A plain value of about 2.5 KB, copied by assignment.
struct State {
    uint32_t handId;
    int32_t maxSpent;           // the largest amount any seat has put in
    int32_t minRaiseTo;         // the smallest legal raise of a no-limit game; 0 in limit games
    int32_t spent[MAX_PLAYERS]; // over the whole hand
    Action action[MAX_ROUNDS][MAX_NUM_ACTIONS];
    uint8_t actingPlayer[MAX_ROUNDS][MAX_NUM_ACTIONS];
    uint8_t numActions[MAX_ROUNDS];
    uint8_t round;
    uint8_t finished;
    uint8_t playerFolded[MAX_PLAYERS];
    uint8_t boardCards[MAX_BOARD_CARDS]; // round r's begin at bcStart(game, r)
    uint8_t holeCards[MAX_PLAYERS][MAX_HOLE_CARDS];
};
static_assert(std::is_trivially_copyable_v<State>);

// A hand as one seat sees it; the other seats' hole cards may be unknown.
struct MatchState {
    State state;
    uint8_t viewingPlayer;
};

// Starts a hand: blinds are in, nobody has acted. Cards are left as they were.
void initState(const Game* game, uint32_t handId, State* state);

// Deals every hole and board card from the generator; the same seed gives the same deal.
void dealCards(const Game* game, rng_state_t* rng, State* state);

// Board cards dealt before round (0..numRounds).
uint8_t bcStart(const Game* game, int round);
// Board cards visible in round (0..numRounds - 1).
uint8_t sumBoardCards(const Game* game, int round);

// The seat to act. Where nobody can act (all are all-in) it is the seat after the last one, folded
// or not, so that the call always returns.
uint8_t currentPlayer(const Game* game, const State* state);
// Raises made so far in the current round.
uint8_t numRaises(const State* state);
// Seats that have folded.
uint8_t numFolded(const Game* game, const State* state);
// Seats, not all-in, that have called or made the current bet of the round.
uint8_t numCalled(const Game* game, const State* state);
// Seats whose whole stack is in; a folded one still counts.
uint8_t numAllIn(const Game* game, const State* state);
// Seats that have neither folded nor put in their stack.
uint8_t numActingPlayers(const Game* game, const State* state);

// Whether the seat to act may raise, and between which totals (both 0 in limit games). May warn on
// standard error when a round's action list is nearly full.
int raiseIsValid(const Game* game, const State* state, int32_t* minSize, int32_t* maxSize);

// Whether the action is legal now. An action that takes no size has its size set to 0, with a
// warning on standard error. With fixSize, a no-limit raise of a wrong size is moved to the nearest
// legal one, with a warning, instead of being refused.
int isValidAction(const Game* game, const State* state, int fixSize, Action* action);

// Applies a legal action, and ends the round or the hand when it was the last one.
void doAction(const Game* game, const Action* action, State* state);

// Chips that the seat wins (positive) or loses in a finished hand. Pots are split exactly, without
// a rule for the odd chip.
double valueOfState(const Game* game, const State* state, uint8_t player);
