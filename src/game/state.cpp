#include "game/state.h"

#include "game/game_assert.h"
#include "game/showdown.h"

#include <algorithm>
#include <cstdio>

namespace {

bool canAct(const Game* game, const State* state, int p) {
    return !state->playerFolded[p] && state->spent[p] < game->stack[p];
}

int32_t clampChips(int64_t chips) {
    return static_cast<int32_t>(std::clamp(chips, int64_t{INT32_MIN}, int64_t{INT32_MAX}));
}

// The sum of numBoardCards over rounds 0..rounds - 1.
uint8_t boardCardsOf(const Game* game, int rounds) {
    int sum = 0;
    for (int r = 0; r < rounds; ++r)
        sum += game->numBoardCards[r];
    return static_cast<uint8_t>(sum);
}

int showdownRank(const Game* game, const State* state, int p) {
    CardSet cards = 0;
    for (int c = 0; c < game->numHoleCards; ++c)
        cards |= cardBit(state->holeCards[p][c]);
    for (int c = 0; c < sumBoardCards(game, state->round); ++c)
        cards |= cardBit(state->boardCards[c]);
    return rankCardSet(cards);
}

// The seats of a showdown in seat order: what each still has in the pot, and its hand (-1 for a
// folded seat, which pays but cannot win).
struct Stakes {
    int numPlayers = 0;
    uint8_t seat[MAX_PLAYERS];
    int32_t spent[MAX_PLAYERS];
    int rank[MAX_PLAYERS];

    void add(uint8_t seatOf, int32_t spentOf, int rankOf) {
        seat[numPlayers] = seatOf;
        spent[numPlayers] = spentOf;
        rank[numPlayers] = rankOf;
        ++numPlayers;
    }
};

// What the player wins or loses in the pot to which every listed seat pays size.
double shareOfPot(const Stakes& stakes, int32_t size, uint8_t player) {
    int best = 0;
    int winners = 0;
    int playerRank = -1;
    for (int p = 0; p < stakes.numPlayers; ++p) {
        if (stakes.rank[p] > best) {
            best = stakes.rank[p];
            winners = 0;
        }
        winners += stakes.rank[p] == best;
        if (stakes.seat[p] == player)
            playerRank = stakes.rank[p];
    }
    if (playerRank != best)
        return -static_cast<double>(size);
    return static_cast<double>(size) * static_cast<double>(stakes.numPlayers - winners) /
           static_cast<double>(winners);
}

// What the player wins over all pots, cut from the smallest stake upward.
double shareOfPots(Stakes stakes, uint8_t player) {
    const int numPlayers = stakes.numPlayers;
    ASSERT_IN_GAME(numPlayers > 1, "numPlayers > 1");
    double value = 0.0;
    for (bool playerIn = true; playerIn;) {
        const int32_t* spent = stakes.spent;
        int32_t size = INT32_MAX;
        for (int p = 0; p < stakes.numPlayers; ++p) {
            ASSERT_IN_GAME(spent[p] > 0, "spent[ p ] > 0");
            size = std::min(size, spent[p]);
        }
        value += shareOfPot(stakes, size, player);

        Stakes left;
        playerIn = false;
        for (int p = 0; p < stakes.numPlayers; ++p) {
            if (spent[p] > size) {
                left.add(stakes.seat[p], spent[p] - size, stakes.rank[p]);
                playerIn = playerIn || stakes.seat[p] == player;
            }
        }
        stakes = left;
    }
    return value;
}

} // namespace

void initState(const Game* game, uint32_t handId, State* state) {
    state->handId = handId;
    state->maxSpent = bigBlind(*game);
    std::copy_n(game->blind, MAX_PLAYERS, state->spent);
    if (game->bettingRule == noLimitRule)
        state->minRaiseTo = state->maxSpent > 0 ? clampChips(int64_t{2} * state->maxSpent) : 1;
    else
        state->minRaiseTo = 0;
    std::fill_n(state->playerFolded, MAX_PLAYERS, uint8_t{0});
    std::fill_n(state->numActions, MAX_ROUNDS, uint8_t{0});
    state->round = 0;
    state->finished = 0;
}

void dealCards(const Game* game, rng_state_t* rng, State* state) {
    uint8_t deck[MAX_SUITS * MAX_RANKS];
    uint32_t left = 0;
    for (int suit = MAX_SUITS - game->numSuits; suit < MAX_SUITS; ++suit)
        for (int rank = MAX_RANKS - game->numRanks; rank < MAX_RANKS; ++rank)
            deck[left++] = static_cast<uint8_t>(rank * MAX_SUITS + suit);
    const auto draw = [&] {
        const uint32_t i = genrand_int32(rng) % left;
        const uint8_t card = deck[i];
        deck[i] = deck[--left];
        return card;
    };
    for (int p = 0; p < game->numPlayers; ++p)
        for (int c = 0; c < game->numHoleCards; ++c)
            state->holeCards[p][c] = draw();
    const int board = boardCardsOf(game, game->numRounds);
    for (int c = 0; c < board; ++c)
        state->boardCards[c] = draw();
}

uint8_t bcStart(const Game* game, int round) {
    return boardCardsOf(game, round);
}

uint8_t sumBoardCards(const Game* game, int round) {
    return boardCardsOf(game, round + 1);
}

uint8_t currentPlayer(const Game* game, const State* state) {
    const int players = game->numPlayers;
    const int actions = state->numActions[state->round];
    int p = actions != 0 ? state->actingPlayer[state->round][actions - 1]
                         : game->firstPlayer[state->round] + players - 1;
    const int next = (p + 1) % players;
    for (int step = 0; step < players; ++step) {
        p = (p + 1) % players;
        if (canAct(game, state, p))
            return static_cast<uint8_t>(p);
    }
    return static_cast<uint8_t>(next);
}

uint8_t numRaises(const State* state) {
    const Action* actions = state->action[state->round];
    return static_cast<uint8_t>(
        std::count_if(actions, actions + state->numActions[state->round],
                      [](const Action& action) { return action.type == actionRaise; }));
}

uint8_t numFolded(const Game* game, const State* state) {
    int count = 0;
    for (int p = 0; p < game->numPlayers; ++p)
        count += state->playerFolded[p] != 0;
    return static_cast<uint8_t>(count);
}

uint8_t numCalled(const Game* game, const State* state) {
    int count = 0;
    for (int i = state->numActions[state->round] - 1; i >= 0; --i) {
        const ActionType type = state->action[state->round][i].type;
        const int p = state->actingPlayer[state->round][i];
        const bool hasChips = state->spent[p] < game->stack[p];
        if (type == actionRaise)
            return static_cast<uint8_t>(count + hasChips);
        count += type == actionCall && hasChips;
    }
    return static_cast<uint8_t>(count);
}

uint8_t numAllIn(const Game* game, const State* state) {
    int count = 0;
    for (int p = 0; p < game->numPlayers; ++p)
        count += state->spent[p] >= game->stack[p];
    return static_cast<uint8_t>(count);
}

uint8_t numActingPlayers(const Game* game, const State* state) {
    int count = 0;
    for (int p = 0; p < game->numPlayers; ++p)
        count += canAct(game, state, p);
    return static_cast<uint8_t>(count);
}

int raiseIsValid(const Game* game, const State* state, int32_t* minSize, int32_t* maxSize) {
    if (numRaises(state) >= game->maxRaises[state->round])
        return 0;
    // One raise and everybody's answer to it must still fit in the round.
    if (state->numActions[state->round] + game->numPlayers > MAX_NUM_ACTIONS) {
        std::fprintf(stderr, "WARNING: #actions in round is too close to MAX_NUM_ACTIONS, "
                             "forcing call/fold\n");
        return 0;
    }
    if (numActingPlayers(game, state) <= 1)
        return 0;
    if (game->bettingRule == limitRule) {
        *minSize = 0;
        *maxSize = 0;
        return 1;
    }
    const int p = currentPlayer(game, state);
    *minSize = state->minRaiseTo;
    *maxSize = game->stack[p];
    if (state->maxSpent >= *maxSize)
        return 0; // also where the smallest raise, past what 32 bits hold, was cut to the stack
    *minSize = std::min(*minSize, *maxSize); // a short stack may only go all-in
    return 1;
}

int isValidAction(const Game* game, const State* state, int fixSize, Action* action) {
    if (state->finished || action->type == actionInvalid)
        return 0;
    if (action->type == actionRaise) {
        int32_t minSize = 0;
        int32_t maxSize = 0;
        if (!raiseIsValid(game, state, &minSize, &maxSize))
            return 0;
        if (game->bettingRule == limitRule)
            return 1;
        if (action->size < minSize) {
            if (!fixSize)
                return 0;
            std::fprintf(stderr, "WARNING: raise of %d increased to %d\n", action->size, minSize);
            action->size = minSize;
        } else if (action->size > maxSize) {
            if (!fixSize)
                return 0;
            std::fprintf(stderr, "WARNING: raise of %d decreased to %d\n", action->size, maxSize);
            action->size = maxSize;
        }
        return 1;
    }
    if (action->type == actionFold) {
        const int p = currentPlayer(game, state);
        if (state->spent[p] == state->maxSpent || state->spent[p] == game->stack[p])
            return 0; // nothing is owed
        if (action->size != 0) {
            std::fprintf(stderr, "WARNING: size given for fold\n");
            action->size = 0;
        }
        return 1;
    }
    if (action->type != actionCall)
        return 0;
    if (action->size != 0) {
        std::fprintf(stderr, "WARNING: size given for something other than a no-limit raise\n");
        action->size = 0;
    }
    return 1;
}

void doAction(const Game* game, const Action* action, State* state) {
    const uint8_t p = currentPlayer(game, state);
    static_assert(MAX_NUM_ACTIONS == 64);
    ASSERT_IN_GAME(state->numActions[state->round] < 64, "state->numActions[ state->round ] < 64");
    const int slot = state->numActions[state->round]++;
    state->action[state->round][slot] = *action;
    state->actingPlayer[state->round][slot] = p;

    switch (action->type) {
    case actionFold:
        state->playerFolded[p] = 1;
        break;
    case actionCall:
        state->spent[p] = std::min(state->maxSpent, game->stack[p]);
        break;
    case actionRaise:
        if (game->bettingRule == noLimitRule) {
            ASSERT_IN_GAME(action->size > state->maxSpent, "action->size > state->maxSpent");
            ASSERT_IN_GAME(action->size <= game->stack[p], "action->size <= game->stack[ p ]");
            // The next raise must add at least as much as this one did.
            const int64_t next = int64_t{2} * action->size - state->maxSpent;
            state->minRaiseTo = std::max(state->minRaiseTo, clampChips(next));
            state->maxSpent = action->size;
        } else {
            const int64_t raised = int64_t{state->maxSpent} + game->raiseSize[state->round];
            state->maxSpent = clampChips(std::min(raised, int64_t{game->stack[p]}));
        }
        state->spent[p] = state->maxSpent;
        break;
    default:
        std::fprintf(stderr, "ERROR: trying to do invalid action %d", action->type);
        ASSERT_IN_GAME(false, "a legal action");
    }

    if (numFolded(game, state) + 1 >= game->numPlayers) {
        state->finished = 1;
        return;
    }
    const int acting = numActingPlayers(game, state);
    if (numCalled(game, state) < acting)
        return;
    if (acting <= 1) {
        // The rest are all-in: every board card counts at the showdown.
        state->finished = 1;
        state->round = static_cast<uint8_t>(game->numRounds - 1);
    } else if (state->round + 1 < game->numRounds) {
        ++state->round;
        state->minRaiseTo = clampChips(int64_t{state->maxSpent} + std::max(1, bigBlind(*game)));
    } else {
        state->finished = 1;
    }
}

double valueOfState(const Game* game, const State* state, uint8_t player) {
    if (state->playerFolded[player])
        return -static_cast<double>(state->spent[player]);
    if (numFolded(game, state) + 1 == game->numPlayers) {
        double pot = 0.0;
        for (int p = 0; p < game->numPlayers; ++p)
            pot += p == player ? 0.0 : static_cast<double>(state->spent[p]);
        return pot;
    }

    Stakes stakes;
    for (int p = 0; p < game->numPlayers; ++p) {
        if (state->spent[p] > 0) {
            const int rank = state->playerFolded[p] ? -1 : showdownRank(game, state, p);
            stakes.add(static_cast<uint8_t>(p), state->spent[p], rank);
        }
    }
    // A seat with nothing in the pot can neither win nor lose; without blinds that may be
    // everybody.
    if (state->spent[player] <= 0)
        return 0.0;
    return shareOfPots(stakes, player);
}
