// Counterfactual regret minimisation over an abstracted game (Zinkevich, Johanson, Bowling and
// Piccione 2007): the information sets, the training that fills them, their file and their value.
//
// An information set is found by a text key, "player:round:card:actions"; player 1 in round 0 with
// the second-lowest card after one raise is "1:0:1:r". The card field is the rank of the first hole
// card (ranks 9..12 count as 0..3, which are the cards that the rules engine deals from a four-rank
// deck) or, with useCardAbstraction, a bucket. Board cards are no part of a key.
//
// Training updates regrets with the reach of the player who acted last, which is this player's own
// rule; the trainers of training/equilibrium.h have the published weights.
//
// The strings and maps are the plain form. train and calcUtility walk a compiled tree instead
// (tree/compiled_tree.h) and leave the same bits; trainPlain and calcUtilityPlain are the plain
// form, for tests and for derived classes that key their states in another way.
//
// Nodes are objects in node maps, or, where they would not fit there, numbers elsewhere (a
// NodeStore: flat after a large training, a mapped file after the load of a large strategy).
// Reading goes through nodes() and findNode(), whichever it is; what changes nodes one by one
// (building, elimination, calc and the trainers that use it) moves them into the maps first.
//
// Errors are thrown as character strings, some of them in Portuguese; a state that the tree does
// not hold is std::out_of_range ("map::at"). An exception leaves the flags as a return would.
// Single-threaded.
#pragma once

#include "game/game.h"
#include "strategy/cfr_node.h"
#include "strategy/node_maps.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

class EquityTables;
struct hand_indexer_t;

namespace tamarin {
class AuxiliaryGame;
class CompiledGame;
class HoldemBuckets;
class HoldemSets;
class TrainingProgress;
} // namespace tamarin

class CFR {
public:
    // An empty solver; the game must outlive it and stay as it is.
    explicit CFR(Game* game);
    // The nodes are deliberately left: a solver, and whatever points into it, lives as long as the
    // program.
    virtual ~CFR();
    CFR(const CFR&) = delete;
    CFR& operator=(const CFR&) = delete;

    // The key of the information set of the player to act. Throws the string "Falta fazer tabela de
    // abstracao do indice do indexador" for card ranks of a 52-card deck.
    virtual std::string abstraction(State* state);
    // 0 fold, 1 call, 2 raise, anything else invalid; size always 0.
    virtual Action* getAbstractedAction(int index, State* state, Action* out);
    // The probability that a card field wins, for eliminateActions(). Throws the strings "Not
    // working... only at 5am" (buckets outside trainIS) and "not implemented" (card ranks of any
    // game but one round, one hole card, no board).
    virtual double winProb(int bucket);
    virtual Action& translate(int index, State* state, Action& out);

    // The player to act's node; std::out_of_range when there is none. It stays as long as the
    // solver, and changing it changes the strategy, while the nodes are in the maps. Otherwise (see
    // setMapLimits) it is a copy, which the next call overwrites: copies of all that play comes
    // upon would fill the memory in time.
    CFRNode* findNode(State* state);

    // Adds the nodes of every state reachable from this one, for the cards it holds. A node that is
    // already there is set back to zero.
    void createAbstractedGameTree(State* state);

    // Trains on this many random deals; before the first, when the tree is not there yet, builds it
    // over all deals and eliminates useless actions. Prints its counts, and with logProgress a line
    // each 1 %, of fewer than 100 iterations a line each. Throws the string "Deve carregar equity
    // tables para correr cfr no hold'em poker" for a 52-card deck without equity tables; with them
    // and without a tree, ends the process: such a tree cannot be enumerated.
    void train(unsigned long long iterations);
    void trainPlain(unsigned long long iterations);

    // Trains a hold'em game of two or three players on this many random deals, over the ten buckets
    // of the hold'em tables; before the first, when the tree is not there yet, builds it. Prints
    // its progress. Throws "Deve carregar equity tables para correr cfr no hold'em poker" when
    // there are no tables. A large tree (see setMapLimits) stays in flat form and out of the node
    // maps. Leaves useHoldemTables and useCardAbstraction off.
    void trainHoldem(unsigned long long iterations);
    void trainHoldemPlain(unsigned long long iterations);
    // Buckets from elsewhere than the equity tables; null for the tables. Not owned.
    void setHoldemBuckets(const tamarin::HoldemBuckets* source) { bucketSource = source; }

    // Trains an auxiliary one-round game over the clusters of the equity tables, which must be
    // loaded: this many times every starting hand of every seat, against random cards. Before the
    // first, when the tree is not there yet, builds it for 101 buckets and eliminates useless
    // actions. The indexer serves a message. With logProgress a line each tenth, of fewer than 10
    // iterations a line each. Leaves useCardAbstraction and useClusterEquity off.
    void trainIS(unsigned long long iterations, hand_indexer_t* indexer, int indexerRound,
                 int round);
    void trainISPlain(unsigned long long iterations, hand_indexer_t* indexer, int indexerRound,
                      int round);
    // The utility of the round's hands 0 to size - 1 to each seat in the trained auxiliary game,
    // sampled, into tables[seat]. Prints a line each thousand hands.
    void fillUtility(double** tables, unsigned long size, int round);
    void fillUtilityPlain(double** tables, unsigned long size, int round);

    // One visit of the training, at state and below. reach: each player's probability of playing to
    // here. lastPlayer: who acted before (0 at the root). util receives each player's value.
    void calc(State* state, double* reach, unsigned char lastPlayer, double* util);

    // Takes fold from hands that win with probability 0.95 or more, and in the last round call from
    // those that win with 0.05 or less and cannot raise. Prints two lines.
    void eliminateActions();

    // The value of the game to each player, over all deals, when everybody plays the average
    // strategy.
    void calcUtility(double* result);
    void calcUtilityPlain(double* result);
    // The same from one state on, for the cards it holds.
    void calcUtil(State* state, double* util);

    // Writes every node; false when it could not, or when a key has 60 bytes or more. The old file
    // stays until the new one is whole. A new file has mode 0644 less the umask.
    // tamarin::stageStrategyFile() says why it failed, and writes several as one.
    bool save(const std::string& path);
    // Replaces the maps by a file's nodes and marks the tree ready. False for a file that is
    // absent, cut, damaged or not a regular file: the maps then hold what was read so far and the
    // tree is as ready as it was before, so a fresh solver stays unusable. Never takes more memory
    // than the file's true size asks for. Trailing bytes are ignored; checkStrategyFile() is
    // stricter. A large file (see setMapLimits) stays where it is and is looked up there; what
    // makes a file bad is the same, but a bad one then leaves the solver's nodes as they were. Of
    // one larger still, some keys are looked at and not all: MappedStrategy::Look.
    bool load(const std::string& path);

    // Up to where nodes are kept in the maps: files to load by the bytes of their sections, trees
    // to train as hold'em by their information sets. Maps take twice the memory of a file, and
    // three-player limit hold'em's strategy has ten gigabytes.
    struct MapLimits {
        size_t fileBytes = size_t{64} << 20U;
        size_t informationSets = 2'000'000;
        size_t everyKeyBytes = size_t{1} << 30U; // larger files are not read through to be played
    };
    void setMapLimits(const MapLimits& limits) { mapLimits = limits; }

    // A placeholder: fold. Agents draw from findNode()'s node instead.
    Action getAction(State* state);

    void setUseMonteCarlo(bool use) { useMonteCarlo = use; }
    bool getUseMonteCarlo() const { return useMonteCarlo; }
    void setEquityTables(EquityTables* tables) { equityTables = tables; }
    EquityTables* getEquityTables() const { return equityTables; }

    // Builds the tree over all deals with no elimination and nothing printed; for games in which
    // winProb knows no card's chances, and for trainers that want every action.
    void buildTree();
    bool isTreeReady() const { return treeReady; }
    const Game& getGame() const { return *game; }
    // All nodes, wherever they are kept; map m is that of round + player * numRounds.
    const tamarin::NodeStore& nodes() const;
    int numMaps() const { return game->numPlayers * game->numRounds; }
    size_t numInformationSets() const;
    // The map of one player in one round; empty where the nodes are not in the maps.
    const tamarin::NodeMap& nodeMap(int player, int round) const;

    // Switches train's progress lines; process-wide.
    static bool logProgress;

    friend std::ostream& operator<<(std::ostream& out, CFR const& cfr);

    // Card fields come from holdemBucket (else currentBucket) while both are on.
    bool useHoldemTables;
    bool useCardAbstraction;
    uint64_t holdemBucket[MAX_ROUNDS][MAX_PLAYERS][3] = {}; // [round][acting players][player]

protected:
    tamarin::NodeMap* nodeMaps; // [round + player * numRounds]
    Game* game;
    bool useMonteCarlo;
    double* gameUtility; // per player, or null before any training
    bool treeReady;
    bool useClusterEquity;
    int equityRound;
    EquityTables* equityTables;
    uint64_t currentBucket[MAX_ROUNDS][MAX_PLAYERS] = {}; // [round][player]

private:
    enum class Form { compiled, plain };

    tamarin::NodeMap& mapOf(int player, int round) const;
    CFRNode* nodeOf(State* state);
    void runTraining(unsigned long long iterations, Form form);
    // Adds the nodes of all deals and returns how many deals there are.
    unsigned long long buildNodes(Form form);
    // The plain form's walk over all deals, each in an otherwise fresh state; returns their number.
    unsigned long long forEachDeal(const std::function<void(State&)>& visit);
    // Deals boardCount board cards and everybody's hole cards from the front of cards.
    void dealCards(Game* game, State* state, unsigned char* cards, unsigned char boardCount);
    void runAuxiliaryTraining(unsigned long long iterations, hand_indexer_t* indexer,
                              int indexerRound, int round, Form form);
    void trainEveryHand(int round);
    std::unique_ptr<tamarin::AuxiliaryGame> auxiliaryGame();
    // The compiled game, made when first asked for; null where only the plain form will do.
    tamarin::CompiledGame* compiledGame();

    void copyToMaps(const tamarin::NodeStore& from);
    void useMaps();
    void runHoldemTraining(unsigned long long iterations, Form form);
    void trainHoldemSets(tamarin::HoldemSets& sets, unsigned long long iterations,
                         const tamarin::HoldemBuckets& source, tamarin::TrainingProgress& progress);
    void trainHoldemNodes(unsigned long long iterations, const tamarin::HoldemBuckets& source,
                          tamarin::TrainingProgress& progress);
    std::unique_ptr<tamarin::HoldemSets> takeHoldemSets();
    void keepHoldemSets(std::unique_ptr<tamarin::HoldemSets> sets);

    std::unique_ptr<tamarin::CompiledGame> compiled;
    tamarin::NodeMaps inMaps{nodeMaps};
    std::unique_ptr<tamarin::NodeStore> store; // the nodes, when they are not in the maps
    CFRNode found;                             // what findNode copied out of the store
    MapLimits mapLimits;
    const tamarin::HoldemBuckets* bucketSource = nullptr;
};

// One line a node, "KEY » ( call: 0.25 raise: 0.75 )", in file order, an empty line, and the game's
// utility when there has been training.
std::ostream& operator<<(std::ostream& out, CFR const& cfr);
