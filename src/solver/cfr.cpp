// The solver object: its life, the keys, the abstracted actions, looking nodes up.

#include "solver/cfr.h"

#include "holdem/sets.h"
#include "strategy/node_store.h"
#include "tree/compiled_game.h"
#include "tree/deck.h"

#include <stdexcept>
#include <typeinfo>

namespace {

constexpr int standardDeck = 52;

Action abstractedAction(int index) {
    switch (index) {
    case 0:
        return {actionFold, 0};
    case 1:
        return {actionCall, 0};
    case 2:
        return {actionRaise, 0};
    default:
        return {actionInvalid, 0};
    }
}

} // namespace

bool CFR::logProgress = false;

CFR::CFR(Game* game_)
    : useHoldemTables(false), useCardAbstraction(false),
      nodeMaps(new tamarin::NodeMap[static_cast<size_t>(game_->numPlayers * game_->numRounds)]),
      game(game_), useMonteCarlo(false), gameUtility(nullptr), treeReady(false),
      useClusterEquity(false), equityRound(0), equityTables(nullptr) {}

CFR::~CFR() {
    delete[] nodeMaps;
    delete[] gameUtility;
}

std::string CFR::abstraction(State* state) {
    const uint8_t p = currentPlayer(game, state);
    const uint8_t r = state->round;
    uint64_t card;
    if (!useCardAbstraction) {
        if (game->numSuits * game->numRanks == standardDeck)
            throw "Falta fazer tabela de abstracao do indice do indexador";
        card = static_cast<uint64_t>(tamarin::cardField(state->holeCards[p][0]));
    } else if (useHoldemTables) {
        card = holdemBucket[r][numActingPlayers(game, state)][p];
    } else {
        card = currentBucket[r][p];
    }
    std::string key = std::to_string(p) + ':' + std::to_string(r) + ':' + std::to_string(card);
    key += ':';
    char text[512];
    for (int round = 0; round <= r; ++round)
        for (int i = 0; i < state->numActions[round]; ++i) {
            printAction(game, &state->action[round][i], sizeof text, text);
            key += text;
        }
    return key;
}

Action* CFR::getAbstractedAction(int index, State*, Action* out) {
    *out = abstractedAction(index);
    return out;
}

Action& CFR::translate(int index, State*, Action& out) {
    out = abstractedAction(index);
    return out;
}

tamarin::NodeMap& CFR::mapOf(int player, int round) const {
    return nodeMaps[round + player * game->numRounds];
}

const tamarin::NodeMap& CFR::nodeMap(int player, int round) const {
    return mapOf(player, round);
}

CFRNode* CFR::nodeOf(State* state) {
    const int player = currentPlayer(game, state);
    const std::string key = abstraction(state);
    if (!store)
        return mapOf(player, state->round).at(key);
    if (!store->find(state->round + player * game->numRounds, key, found))
        throw std::out_of_range("map::at");
    return &found;
}

CFRNode* CFR::findNode(State* state) {
    return nodeOf(state);
}

Action CFR::getAction(State*) {
    return {actionFold, 0};
}

const tamarin::NodeStore& CFR::nodes() const {
    if (store)
        return *store;
    return inMaps;
}

// Nodes that are there already stay the objects they are.
void CFR::copyToMaps(const tamarin::NodeStore& from) {
    for (int m = 0; m < numMaps(); ++m)
        from.forEach(m, [&](const std::string& key, const CFRNode& node) {
            CFRNode*& place = nodeMaps[m][key];
            if (place == nullptr)
                place = new CFRNode;
            *place = node;
            return true;
        });
}

// Makes the nodes objects in the maps, where they are not.
void CFR::useMaps() {
    if (!store)
        return;
    copyToMaps(*store);
    store.reset();
}

size_t CFR::numInformationSets() const {
    size_t count = 0;
    for (int m = 0; m < numMaps(); ++m)
        count += nodes().count(m);
    return count;
}

tamarin::CompiledGame* CFR::compiledGame() {
    // A derived class may key its states, or offer actions, in its own way; buckets come from
    // outside and change without notice; and card ranks of a full deck have no keys at all.
    if (typeid(*this) != typeid(CFR) || useCardAbstraction ||
        game->numSuits * game->numRanks == standardDeck)
        return nullptr;
    useMaps();
    if (!compiled)
        compiled = std::make_unique<tamarin::CompiledGame>(*game);
    return compiled.get();
}
