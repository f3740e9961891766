// Building the abstracted tree, and taking hopeless actions out of it.

#include "abstraction/EquityTables.h"
#include "solver/card_rank_solving.h"
#include "solver/cfr.h"
#include "solver/combinator.h"
#include "tree/deck.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

void CFR::createAbstractedGameTree(State* state) {
    if (state->finished)
        return;
    useMaps();
    const uint8_t p = currentPlayer(game, state);
    CFRNode*& at = mapOf(p, state->round)[abstraction(state)];
    if (at == nullptr)
        at = new CFRNode;
    CFRNode* const node = at;
    bool valid[numAbstractedActions];
    for (int a = 0; a < numAbstractedActions; ++a) {
        Action action;
        getAbstractedAction(a, state, &action);
        valid[a] = false;
        if (action.type == actionInvalid ||
            (action.type == actionFold && state->spent[p] == state->maxSpent))
            continue;
        State child = *state;
        if (!isValidAction(game, &child, 0, &action))
            continue;
        doAction(game, &action, &child);
        createAbstractedGameTree(&child);
        valid[a] = true;
    }
    // Every visit starts the node anew; the tree is whole before any training.
    node->initialize(valid);
}

unsigned long long CFR::buildNodes(Form form) {
    if (form == Form::compiled) {
        if (tamarin::CompiledGame* const known = compiledGame()) {
            tamarin::addCardRankNodes(known->tree, *game, nodeMaps);
            return tamarin::countDeals(*game);
        }
    }
    return forEachDeal([this](State& state) { createAbstractedGameTree(&state); });
}

unsigned long long CFR::forEachDeal(const std::function<void(State&)>& visit) {
    std::vector<uint8_t> deck = tamarin::solverDeck(*game);
    const int cards = tamarin::cardsNeeded(*game);
    const auto board = static_cast<unsigned char>(tamarin::boardCardsOf(*game));
    State state;
    initState(game, 0, &state);
    unsigned long long count = 0;
    combinator combinations(deck.data(), static_cast<int>(deck.size()), cards);
    while (combinations.next()) {
        unsigned char* const current = combinations.getCurrent();
        std::sort(current, current + cards);
        do {
            dealCards(game, &state, current, board);
            visit(state);
            ++count;
        } while (std::next_permutation(current, current + cards));
    }
    return count;
}

void CFR::buildTree() {
    buildNodes(Form::compiled);
    treeReady = true;
}

void CFR::eliminateActions() {
    useMaps();
    std::cout << "Eliminating useless actions..." << std::endl;
    int removed = 0;
    // Keys read "player:round:card:actions" with a one-digit player and round.
    const auto fieldFrom = [](const std::string& key, size_t start) {
        return std::atoi(key.substr(start, key.find(':', start) - start).c_str());
    };
    for (int m = 0; m < numMaps(); ++m)
        for (const auto& [key, node] : nodeMaps[m])
            if (winProb(fieldFrom(key, 4)) >= 0.95) {
                node->setActionInvalid(0);
                ++removed;
            }
    for (int m = 0; m < numMaps(); ++m)
        for (const auto& [key, node] : nodeMaps[m])
            if (fieldFrom(key, 2) == game->numRounds - 1 && !node->isActionValid(2) &&
                winProb(fieldFrom(key, 4)) <= 0.05) {
                node->setActionInvalid(1);
                ++removed;
            }
    std::cout << removed << " actions were eliminated!" << std::endl;
}

double CFR::winProb(int bucket) {
    if (useCardAbstraction) {
        if (!useClusterEquity)
            throw "Not working... only at 5am";
        return equityTables->clusterToEquity(static_cast<uint8_t>(bucket), game->numPlayers,
                                             equityRound);
    }
    if (game->numRanks == MAX_RANKS && game->numSuits == MAX_SUITS)
        throw "not implemented";
    if (game->numRounds == 1 && game->numBoardCards[0] == 0 && game->numHoleCards == 1)
        return bucket / (game->numRanks - 1.0);
    throw "not implemented";
}
