// Training of the auxiliary one-round games, and the utilities of hands in them.

#include "abstraction/EquityTables.h"
#include "abstraction/boards.h"
#include "holdem/auxiliary_deals.h"
#include "solver/cfr.h"
#include "solver/training_progress.h"
#include "support/flag_guard.h"
#include "tree/deck.h"

#include <algorithm>
#include <iostream>
#include <typeinfo>
#include <vector>

namespace {

using tamarin::FlagGuard;

// The remaining deck in ascending order: all cards but those.
std::vector<uint8_t> deckWithout(const uint8_t* cards, int count) {
    std::vector<uint8_t> left(52);
    left.resize(tamarin::cardsWithout(cards, count, left.data()));
    return left;
}

void printFilled(size_t index, unsigned long size) {
    std::cout << static_cast<double>(index) / static_cast<double>(size) * 100 << "% done"
              << std::endl;
}

} // namespace

// The compiled form of the game with the numbers of the node maps, or null where only the plain
// form will do.
std::unique_ptr<tamarin::AuxiliaryGame> CFR::auxiliaryGame() {
    if (typeid(*this) != typeid(CFR) || !tamarin::AuxiliaryGame::fits(*game))
        return nullptr;
    useMaps();
    auto auxiliary = std::make_unique<tamarin::AuxiliaryGame>(*game);
    return auxiliary->read(nodeMaps) ? std::move(auxiliary) : nullptr;
}

void CFR::trainIS(unsigned long long iterations, hand_indexer_t* indexer, int indexerRound,
                  int round) {
    runAuxiliaryTraining(iterations, indexer, indexerRound, round, Form::compiled);
}

void CFR::trainISPlain(unsigned long long iterations, hand_indexer_t* indexer, int indexerRound,
                       int round) {
    runAuxiliaryTraining(iterations, indexer, indexerRound, round, Form::plain);
}

void CFR::runAuxiliaryTraining(unsigned long long iterations, hand_indexer_t* indexer,
                               int indexerRound, int round, Form form) {
    const FlagGuard buckets(useCardAbstraction, FlagGuard::After::off);
    const FlagGuard clusters(useClusterEquity, FlagGuard::After::off);
    equityRound = round;
    tamarin::TrainingProgress progress(iterations, 10);
    if (!treeReady) {
        const auto size = hand_indexer_size(indexer, static_cast<unsigned>(indexerRound));
        State state{};
        initState(game, 0, &state);
        for (int b = 0; b < tamarin::AuxiliaryGame::numBuckets; ++b) {
            if (b % 100000 == 0)
                std::cout << "Estou aqui: "
                          << static_cast<double>(1 + b) / static_cast<double>(size) * 100 << "%"
                          << std::endl;
            std::fill_n(currentBucket[0], MAX_PLAYERS, static_cast<uint64_t>(b));
            createAbstractedGameTree(&state);
        }
        eliminateActions();
        treeReady = true;
    }
    std::cout << "Number of information sets: " << numInformationSets() << std::endl;

    const auto auxiliary = form == Form::compiled ? auxiliaryGame() : nullptr;
    if (auxiliary) {
        tamarin::AuxiliaryTraining training(
            *auxiliary,
            {equityTables->indexer(round), equityTables->getClusterTable(game->numPlayers, round)});
        for (unsigned long long it = 0; it < iterations;) {
            const unsigned long long until = progress.at(it);
            training.run(until - it);
            it = until;
        }
        auxiliary->write();
    } else {
        for (unsigned long long it = 0; it < iterations; ++it) {
            progress.at(it);
            trainEveryHand(round);
        }
    }
}

// One iteration of trainIS: every starting hand of every seat, against random cards.
void CFR::trainEveryHand(int round) {
    const int players = game->numPlayers;
    const int boardCards = tamarin::boardCardsOf(*game);
    double reach[MAX_PLAYERS];
    std::fill_n(reach, MAX_PLAYERS, 1.0);
    State state{};
    initState(game, 0, &state);
    for (int hero = 0; hero < players; ++hero)
        for (size_t i = 0; i < tamarin::roundSizes[0]; ++i) {
            if (!hand_unindex(equityTables->indexer(0), 0, i, state.holeCards[hero]))
                continue;
            std::vector<uint8_t> left = deckWithout(state.holeCards[hero], 2);
            shuffle(left.data(), (players - 1) * 2 + boardCards, static_cast<int>(left.size()));
            const uint8_t* next = left.data();
            for (int p = 0; p < players; ++p)
                if (p != hero) {
                    std::copy_n(next, 2, state.holeCards[p]);
                    next += 2;
                }
            // One card each: a board of one card repeated is no board.
            std::copy_n(next, boardCards, state.boardCards);
            for (int p = 0; p < players; ++p) {
                uint8_t hand[2 + MAX_BOARD_CARDS] = {};
                std::copy_n(state.holeCards[p], 2, hand);
                std::copy_n(state.boardCards, boardCards, hand + 2);
                currentBucket[0][p] =
                    static_cast<uint8_t>(equityTables->getCluster(hand, players, round));
            }
            double seatValues[MAX_PLAYERS];
            calc(&state, reach, 0, seatValues);
        }
}

void CFR::fillUtility(double** tables, unsigned long size, int round) {
    const FlagGuard abstraction(useCardAbstraction, FlagGuard::After::asBefore);
    const auto auxiliary = auxiliaryGame();
    if (!auxiliary || game->numBoardCards[0] != tamarin::roundBoardCards[size_t(round)] ||
        size > equityTables->getRoundSize(round)) {
        fillUtilityPlain(tables, size, round);
        return;
    }
    const tamarin::UtilityFiller filler(
        *auxiliary,
        {equityTables->indexer(round), equityTables->getClusterTable(game->numPlayers, round)},
        round);
    constexpr size_t printedEvery = 1000;
    for (size_t begin = 0; begin < size; begin += printedEvery) {
        printFilled(begin, size);
        double* at[tamarin::AuxiliaryGame::maxPlayers];
        for (int p = 0; p < game->numPlayers; ++p)
            at[p] = tables[p] + begin;
        filler.fill(begin, std::min(begin + printedEvery, size_t{size}), at);
    }
}

void CFR::fillUtilityPlain(double** tables, unsigned long size, int round) {
    const FlagGuard abstraction(useCardAbstraction, FlagGuard::After::asBefore);
    const int players = game->numPlayers;
    const int boardCards = tamarin::boardCardsOf(*game);
    // Deliberately without the hero's own cards in place of one more opponent's.
    const int restSize = 52 - boardCards - game->numHoleCards * (players - 1);
    const int samples = tamarin::samplesOfRound(round);
    for (int p = 0; p < players; ++p)
        std::fill_n(tables[p], size, 0.0);
    State state{};
    initState(game, 0, &state);
    for (size_t i = 0; i < size; ++i) {
        if (i % 1000 == 0)
            printFilled(i, size);
        uint8_t cards[2 + MAX_BOARD_CARDS] = {};
        if (!hand_unindex(equityTables->indexer(round), tamarin::lastIndexRound(round), i, cards))
            continue;
        for (int sample = 0; sample < samples; ++sample)
            for (int hero = 0; hero < players; ++hero) {
                std::copy_n(cards, 2, state.holeCards[hero]);
                std::copy_n(cards + 2, boardCards, state.boardCards);
                uint8_t hand[2 + MAX_BOARD_CARDS] = {};
                std::copy_n(cards + 2, boardCards, hand + 2);
                std::vector<uint8_t> left = deckWithout(cards, 2 + boardCards);
                shuffle(left.data(), players * 2, restSize);
                const uint8_t* next = left.data();
                for (int p = 0; p < players; ++p)
                    if (p != hero) {
                        std::copy_n(next, 2, state.holeCards[p]);
                        std::copy_n(next, 2, hand);
                        next += 2;
                        currentBucket[0][p] =
                            static_cast<uint8_t>(equityTables->getCluster(hand, players, round));
                    }
                // By index, of which this look-up deliberately takes the low byte.
                currentBucket[0][hero] = static_cast<uint8_t>(
                    equityTables->getCluster(static_cast<unsigned char>(i), players, round));
                double seatValues[MAX_PLAYERS];
                calcUtil(&state, seatValues);
                tables[hero][i] += seatValues[hero];
            }
    }
    for (int p = 0; p < players; ++p)
        for (size_t i = 0; i < size; ++i)
            tables[p][i] /= samples;
}
