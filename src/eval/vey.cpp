#include "eval/vey.h"

#include "eval/sampling.h"
#include "eval/seven_card_table.h"
#include "game/text.h"
#include "support/file.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <span>
#include <string>
#include <utility>

namespace {

constexpr size_t conversionEntries = 36875; // one a value, up to 9 * 4096 + 10
constexpr size_t startingHandEntries = 52 * 52;
constexpr size_t veyEntries = 1261078;
constexpr int deals = 10000;

int* twoPlusTwoTable;
int* twoPlusTwoConversion;
int* veyIndexes;
double* veyPreFlop;
double* veyFlop;
double* veyTurn;
double* veyRiver;
rng_state_t* vey_rng;

const std::string handNames[9] = {"High card",       "One pair",       "Two pair",
                                  "Three of a kind", "Straight",       "Flush",
                                  "Full house",      "Four of a kind", "Straight flush"};

// The file's size elements. One that cannot be read or is of another size is not used: the table is
// all zeros, and one line on standard error says so, as the loaders of support/util.h do. One
// element more is allocated and stays zero: the self-tests' number 52 steps one entry beyond the
// row of a state, which may be the table's last.
template <class T>
T* loadTable(const char* path, size_t size) {
    T* const table = new T[size + 1]();
    const auto file = tamarin::MappedFile::open(path, size * sizeof(T));
    if (file)
        std::copy_n(file->template as<T>().data(), size, table);
    else
        std::fprintf(stderr, "WARNING: %s: the table is all zeros\n", file.error().c_str());
    return table;
}

int* loadIntTable(const char* path, size_t size) {
    return loadTable<int>(path, size);
}
double* loadDoubleTable(const char* path, size_t size) {
    return loadTable<double>(path, size);
}

// The table that hands are ranked through: no hand may lead outside of it.
int* loadRankTable(const char* path) {
    int* const table = loadIntTable(path, tamarin::sevenCardEntries);
    const std::span<int> entries(table, tamarin::sevenCardEntries);
    if (!tamarin::SevenCardTable::staysInside(entries)) {
        std::fprintf(stderr, "WARNING: %s leads outside of itself: the table is all zeros\n", path);
        std::fill(entries.begin(), entries.end(), 0);
    }
    return table;
}

// A damaged table may name a value that there is not.
int conversionOf(uint32_t value) {
    return value < conversionEntries ? twoPlusTwoConversion[value] : 0;
}

template <int cardCount>
int walk(const unsigned char* cards) {
    int state = twoPlusTwoTable[54 + cards[0]];
    for (int i = 1; i < cardCount; ++i)
        state = twoPlusTwoTable[state + cards[i] + 1];
    return state;
}

// Each of the first count positions changes places with one drawn from the whole deck: a partial
// shuffle that is deliberately not uniform, like the shared one (support/rng.h) but from vey_rng.
// In this file it hides that one.
void shuffle(unsigned char* deck, int count, int size) {
    for (int i = 0; i < count; ++i) {
        const uint32_t j = genrand_int32(vey_rng) % static_cast<uint32_t>(size);
        std::swap(deck[i], deck[j]);
    }
}

template <int knownCards>
double evaluate(const unsigned char* cards, unsigned int players) {
    return tamarin::sampleWinRate<knownCards>(cards, players, deals, shuffle,
                                              [](unsigned char* hand) { return rankHand7(hand); });
}

// Moves on to the next strictly increasing tuple of numbers up to 52; false after the last.
template <size_t cardCount>
bool nextTuple(unsigned char (&cards)[cardCount]) {
    size_t i = cardCount;
    while (i > 0 && cards[i - 1] == 52 - (cardCount - i))
        --i;
    if (i == 0)
        return false;
    ++cards[i - 1];
    for (; i < cardCount; ++i)
        cards[i] = static_cast<unsigned char>(cards[i - 1] + 1);
    return true;
}

template <size_t cardCount>
void testRankHand(uint32_t (*rank)(unsigned char*)) {
    std::printf("Rank %zu hand cards:\n", cardCount);
    int max = -10000000;
    int min = 10000000;
    int count = 0;
    int counters[9] = {};
    unsigned char cards[cardCount];
    for (size_t i = 0; i < cardCount; ++i)
        cards[i] = static_cast<unsigned char>(i + 1);
    do {
        const auto value = static_cast<int>(rank(cards));
        ++count;
        max = std::max(max, value);
        min = std::min(min, value);
        const int category = (value >> 12) - 1;
        if (category >= 0 && category < 9)
            ++counters[category];
    } while (nextTuple(cards));
    std::printf("Min value: %d\n", min);
    std::printf("Max value: %d\n", max);
    std::printf("Count: %d\n", count);
    for (int i = 0; i < 9; ++i)
        std::printf("Rank %s: %d\n", handNames[i].c_str(), counters[i]);
    std::printf("--------------------------------------\n");
}

} // namespace

void loadLookupTables() {
    twoPlusTwoTable = loadRankTable("lookup/tpt");
    twoPlusTwoConversion = loadIntTable("lookup/tpt.indexes", conversionEntries);
    veyIndexes = loadIntTable("lookup/vey.indexes", startingHandEntries);
    veyPreFlop = loadDoubleTable("lookup/vey.preflop", startingHandEntries);
    veyFlop = loadDoubleTable("lookup/vey.flop", veyEntries);
    veyTurn = loadDoubleTable("lookup/vey.turn", veyEntries);
    veyRiver = loadDoubleTable("lookup/vey.river", veyEntries);
}

void freeLookupTables() {
    delete[] twoPlusTwoTable;
    delete[] twoPlusTwoConversion;
    delete[] veyIndexes;
    delete[] veyPreFlop;
    delete[] veyFlop;
    delete[] veyTurn;
    delete[] veyRiver;
}

uint32_t rankHand5(unsigned char* cards) {
    return static_cast<uint32_t>(twoPlusTwoTable[walk<5>(cards)]);
}
uint32_t rankHand6(unsigned char* cards) {
    return static_cast<uint32_t>(twoPlusTwoTable[walk<6>(cards)]);
}
uint32_t rankHand7(unsigned char* cards) {
    return static_cast<uint32_t>(walk<7>(cards));
}

int rankHand5C(unsigned char* cards) {
    return conversionOf(rankHand5(cards));
}
int rankHand6C(unsigned char* cards) {
    return conversionOf(rankHand6(cards));
}
int rankHand7C(unsigned char* cards) {
    return conversionOf(rankHand7(cards));
}

void testRankHand5() {
    testRankHand<5>(rankHand5);
}
void testRankHand6() {
    testRankHand<6>(rankHand6);
}
void testRankHand7() {
    testRankHand<7>(rankHand7);
}

void setVEYRNG(rng_state_t* rng) {
    vey_rng = rng;
}

double evaluateHand2(unsigned char* cards, unsigned int players) {
    return evaluate<2>(cards, players);
}
double evaluateHand5(unsigned char* cards, unsigned int players) {
    return evaluate<5>(cards, players);
}
double evaluateHand6(unsigned char* cards, unsigned int players) {
    return evaluate<6>(cards, players);
}
double evaluateHand7(unsigned char* cards, unsigned int players) {
    return evaluate<7>(cards, players);
}
double evaluateHand2(unsigned char* cards) {
    return evaluateHand2(cards, 2);
}
double evaluateHand5(unsigned char* cards) {
    return evaluateHand5(cards, 2);
}
double evaluateHand6(unsigned char* cards) {
    return evaluateHand6(cards, 2);
}
double evaluateHand7(unsigned char* cards) {
    return evaluateHand7(cards, 2);
}

void winProb(MatchState* state, double* result) {
    double (*evaluateKnown)(unsigned char*, unsigned int) = nullptr;
    int boardCards = 0;
    switch (state->state.round) {
    case 0:
        evaluateKnown = evaluateHand2;
        break;
    case 1:
        evaluateKnown = evaluateHand5;
        boardCards = 3;
        break;
    case 2:
        evaluateKnown = evaluateHand6;
        boardCards = 4;
        break;
    case 3:
        evaluateKnown = evaluateHand7;
        boardCards = 5;
        break;
    default:
        result[1] = result[2] = result[3] = 0;
        return;
    }
    unsigned char cards[7] = {state->state.holeCards[state->viewingPlayer][0],
                              state->state.holeCards[state->viewingPlayer][1]};
    std::copy_n(state->state.boardCards, boardCards, cards + 2);
    for (unsigned int players = 1; players <= 3; ++players)
        result[players] = evaluateKnown(cards, players);
}

void printHand(unsigned char* cards, int count) {
    char text[30] = {};
    printCards(count, cards, sizeof text, text);
    std::printf("%s\n", text);
}
