// Training on random deals, and the plain recursion that says what a visit does.

#include "abstraction/EquityTables.h"
#include "solver/cfr.h"
#include "solver/compiled_training.h"
#include "solver/training_progress.h"
#include "tree/compiled_game.h"
#include "tree/deck.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <vector>

void CFR::train(unsigned long long iterations) {
    runTraining(iterations, Form::compiled);
}

void CFR::trainPlain(unsigned long long iterations) {
    runTraining(iterations, Form::plain);
}

void CFR::runTraining(unsigned long long iterations, Form form) {
    std::vector<uint8_t> deck = tamarin::solverDeck(*game);
    const bool standardDeck = deck.size() == 52;
    if (standardDeck) {
        if (equityTables == nullptr)
            throw "Deve carregar equity tables para correr cfr no hold'em poker";
        equityTables->load();
    }
    const int cards = tamarin::cardsNeeded(*game);
    const auto board = static_cast<unsigned char>(tamarin::boardCardsOf(*game));
    tamarin::TrainingProgress progress(iterations, 100);

    if (!treeReady) {
        if (standardDeck)
            std::terminate(); // its deals cannot be enumerated
        const unsigned long long count = buildNodes(form);
        std::cout << "Number of starting nodes: " << count << std::endl;
        eliminateActions();
        treeReady = true;
    }
    std::cout << "Number of information sets: " << numInformationSets() << std::endl;

    double utilSum[MAX_PLAYERS] = {};
    tamarin::CompiledGame* const known = form == Form::compiled ? compiledGame() : nullptr;
    std::optional<tamarin::InformationSets> sets;
    if (known != nullptr)
        sets = tamarin::InformationSets::read(known->tree, *game, nodeMaps);
    if (sets) {
        tamarin::CompiledTraining training(*game, known->tree, known->payoffs, *sets);
        for (unsigned long long it = 0; it < iterations;) {
            const unsigned long long until = progress.at(it);
            training.run(until - it, utilSum);
            it = until;
        }
        sets->write();
    } else {
        double reach[MAX_PLAYERS];
        std::fill_n(reach, MAX_PLAYERS, 1.0);
        for (unsigned long long it = 0; it < iterations; ++it) {
            progress.at(it);
            State state;
            initState(game, 0, &state);
            shuffle(deck.data(), cards, static_cast<int>(deck.size()));
            dealCards(game, &state, deck.data(), board);
            double util[MAX_PLAYERS];
            calc(&state, reach, 0, util);
            for (int p = 0; p < game->numPlayers; ++p)
                utilSum[p] += util[p];
        }
    }

    if (gameUtility == nullptr)
        gameUtility = new double[game->numPlayers]();
    for (int p = 0; p < game->numPlayers; ++p)
        gameUtility[p] += utilSum[p] / static_cast<double>(iterations);
}

void CFR::dealCards(Game* rules, State* state, unsigned char* cards, unsigned char boardCount) {
    for (int p = 0; p < rules->numPlayers; ++p)
        for (int i = 0; i < rules->numHoleCards; ++i)
            state->holeCards[p][i] = *cards++;
    std::copy_n(cards, boardCount, state->boardCards);
}

void CFR::calc(State* state, double* reach, unsigned char lastPlayer, double* util) {
    const int players = game->numPlayers;
    if (state->finished) {
        for (int p = 0; p < players; ++p)
            util[p] = valueOfState(game, state, static_cast<uint8_t>(p));
        return;
    }
    useMaps();
    const uint8_t p = currentPlayer(game, state);
    CFRNode* const node = nodeOf(state);
    double strategy[numAbstractedActions];
    double actionValue[numAbstractedActions];
    node->getStrategy(reach[p], strategy);
    std::fill_n(util, players, 0.0);
    for (int a = 0; a < numAbstractedActions; ++a) {
        if (!node->isActionValid(a))
            continue;
        Action action;
        getAbstractedAction(a, state, &action);
        State child = *state;
        doAction(game, &action, &child);
        double childReach[MAX_PLAYERS];
        std::copy_n(reach, players, childReach);
        childReach[p] = reach[p] * strategy[a];
        double childUtil[MAX_PLAYERS];
        calc(&child, childReach, p, childUtil);
        actionValue[a] = childUtil[p];
        for (int q = 0; q < players; ++q)
            util[q] += strategy[a] * childUtil[q];
    }
    for (int a = 0; a < numAbstractedActions; ++a)
        if (node->isActionValid(a))
            node->regretSum[a] += reach[lastPlayer] * (actionValue[a] - util[p]);
}
