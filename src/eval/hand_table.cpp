#include "eval/hand_table.h"

#include "eval/sampling.h"
#include "support/rng.h"

namespace {

constexpr int deals = 1000;

template <int knownCards>
double evaluate(const unsigned char* cards, unsigned int players, int* table) {
    return tamarin::sampleWinRate<knownCards>(
        cards, players, deals,
        [](unsigned char* deck, int count, int size) { shuffle(deck, count, size); },
        [table](unsigned char* hand) { return rankHand(table, hand); });
}

} // namespace

uint32_t rankHand(int* table, unsigned char* cards) {
    int state = table[54 + cards[0]];
    for (int i = 1; i < 7; ++i)
        state = table[state + cards[i] + 1];
    return static_cast<uint32_t>(state);
}

double evaluateHand2(unsigned char* cards, unsigned int players, int* table) {
    return evaluate<2>(cards, players, table);
}
double evaluateHand5(unsigned char* cards, unsigned int players, int* table) {
    return evaluate<5>(cards, players, table);
}
double evaluateHand6(unsigned char* cards, unsigned int players, int* table) {
    return evaluate<6>(cards, players, table);
}
double evaluateHand7(unsigned char* cards, unsigned int players, int* table) {
    return evaluate<7>(cards, players, table);
}
