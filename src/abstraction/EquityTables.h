// The card abstraction of hold'em: for every hand, distinct up to suits, of every round, its equity
// against one and two random opponents, its cluster of equity, its utility in a small betting game,
// and the bucket that the player's strategy knows it by.
//
// Every table is a flat array over the hand indices of its round (round_indexers.h) and is kept as
// a bare file below lookup/ in the playing directory (table_names.h):
//
//   equity    double    for 2 and 3 players: wins / deals, ties lose; in [0, 1]
//   cluster   byte      0..100: where the equity lies between the table's least and greatest
//   utility   double    two players, each seat: chips won in the round's auxiliary game
//   hold'em   byte      0..9: 5 x (utility in the upper half) + quarter of the equity range, for
//                       2 and 3 players, each seat
//
// Files that are there are mapped, not read: a table that comes from one must not be written to.
// What is missing is computed in the plain form, which for the equities means sampling for most of
// a day. The table builder makes every file exactly and in minutes, so a player runs it first. A
// file of the wrong size is never used (table_store.h).
//
// Nothing is ever made from a table without contents, nor from a damaged one (table_contents.h).
// Where a table is needed that load() left empty, or that could not be read, its file is read; when
// the file is missing or damaged, that is a std::runtime_error with one line that says what to do.
// Play looks at a few bytes of a table and does not read it through first: a bucket that no
// strategy holds is played by the agents' rule.
//
// Single-threaded. Several objects may stand in one process, each with a directory of its own; they
// share the process-wide random numbers, and nothing else. Complaints about files go to standard
// error, whatever the sink of the messages.
#pragma once

#include "abstraction/quantise.h"
#include "abstraction/round_indexers.h"
#include "abstraction/table_contents.h"
#include "abstraction/table_names.h"
#include "abstraction/table_store.h"
#include "game/game.h"
#include "index/hand_index.h"

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

class EquityTables {
public:
    // Files lie in the working directory, whatever that is when one is read or written; messages go
    // to standard output. The first is "Creating indexers... done!".
    EquityTables();
    // The same with files below another directory, and with another sink, which must live as long.
    // Every line that names a file says the directory, too.
    EquityTables(std::string directory, std::ostream& sink);
    // Releases the equity tables, and whatever is mapped. Tables of other kinds that were computed
    // here or set by a caller stay.
    virtual ~EquityTables();
    EquityTables(const EquityTables&) = delete;
    EquityTables& operator=(const EquityTables&) = delete;

    // Fills the eight equity tables from their files or, where one is missing, by sampling. Where
    // some files are there and some are not, the turn and river tables that have both their files
    // are left allocated without contents.
    void load();
    // Fills what play of a game for so many players (2 or 3) reads, out of files alone and at once:
    // the equity and hold'em tables of two players and, for three, of three. The other equity and
    // hold'em tables are taken where their files are there. Says what load() and loadHoldemTables()
    // say. std::runtime_error when a file that is needed is not there, has the wrong size or cannot
    // be read. For tables that hold nothing yet.
    void loadForPlay(int players);
    // Releases the equity tables. Until then a pointer from getEquityTable stays valid, even when
    // another table has taken its place.
    void free();

    // Hands of round 0..3; 0 for any other.
    size_t getRoundSize(int round);
    // For players 2 and 3 and round 0..3; null for any others, and while there is no table.
    double* getEquityTable(int players, int round);
    unsigned char* getClusterTable(int players, int round);
    // Keep the pointer (an array made with new[]), without releasing what was there; ignored for
    // other players and rounds. An equity table set here counts as having contents.
    void setEquityTable(int players, int round, double* table);
    void setClusterTable(int players, int round, unsigned char* table);

    // Fills the cluster tables: all eight from their files, or all eight anew where one is missing
    // or damaged.
    void loadCluster();
    // Does nothing: clusters are never released.
    void freeCluster();
    // The cluster at an index; a byte, so of the first 256 hands only.
    int getCluster(unsigned char index, int players, int round);
    // The cluster of a hand: two hole cards and the round's board cards.
    int getCluster(unsigned char* cards, int players, int round);
    // The equity that a cluster stands for, by the range of the equity table.
    double clusterToEquity(unsigned char cluster, int players, int round);
    // The inverse, rounded to the nearest and not clamped.
    int equityToCluster(double equity, int players, int round);
    // The first hand of the cluster; only for clusters that occur.
    size_t findClusterIndex(unsigned char cluster, int players, int round);
    // Writes to cards the hole cards of the last of the cluster's indices that the indexer's first
    // round knows; returns 0.
    int findClusterIndexHand(unsigned char cluster, int players, int round, unsigned char* cards);

    // Fills the two-player utility tables, each round from its files or by solving its auxiliary
    // game, whose definition lies in the same directory. That takes the round's clusters, out of
    // their file where loadCluster() has not been called. The solver says how it gets on, on
    // standard output. Defined in solver/utility_tables.cpp.
    void loadUtility();
    void freeUtility();

    // Fills the twenty hold'em tables from their files or from equities and utilities.
    void loadHoldemTables();
    void freeHoldemTables();
    // Throws std::runtime_error unless the hold'em tables for 2 to so many players are fit to be
    // trained on: whole, in range, not all the same. Reads each of them once.
    void requireHoldemTables(int players = 3);
    // The bucket of a hand (two hole cards and the round's board), 0..9; whatever a damaged table
    // holds there, up to 255. players 2 or 3, seat below players.
    unsigned int holdemTableIndex(int players, int round, int seat, unsigned char* cards);

    // The tables that have no setter; null before they are loaded.
    const unsigned char* getHoldemTable(int players, int round, int seat) const;
    const double* getUtilityTable(int players, int round, int seat) const;

    // The indexer of round 0..3.
    hand_indexer_t* indexer(int round);

    hand_indexer_t preflop_indexer{};
    hand_indexer_t flop_indexer{};
    hand_indexer_t turn_indexer{};
    hand_indexer_t river_indexer{};

    // Training iterations of each auxiliary game that loadUtility() solves. Another number makes
    // other tables; a smaller one is for experiments.
    unsigned long long utilityIterations = 100'000;

private:
    template <class T>
    struct Table {
        T* table = nullptr;
        bool hasContents = false; // not left empty by load(), nor zeros for an unreadable file
        bool fromCaller = false;
        bool checked = false; // every entry: good
    };
    using EquityTable = Table<double>;
    static bool isTable(int players, int round) {
        return (players == 2 || players == 3) && round >= 0 && round < tamarin::holdemRounds;
    }
    EquityTable& equity(int players, int round) { return equities[players - 2][round]; }

    // The path of a file with a name of table_names.h.
    std::string pathOf(const std::string& name) const {
        return tamarin::inDirectory(playingDirectory, name);
    }
    void printSizes();
    void generateEquities(const bool (&usable)[2][tamarin::holdemRounds]);
    void sampleRound(int round, int* sevenCardTable);
    // A table's entries, good to make something from: taken from its file where the table has no
    // contents, and checked once. loader: what a caller may call instead of making the file.
    template <class T>
    std::span<const T> contents(Table<T>& known, const std::string& path, int round,
                                const tamarin::EntryLimits& limits, const char* loader);
    std::span<const double> equityContents(int players, int round);
    std::span<const double> utilityContents(int round, int seat); // of two players
    std::span<const unsigned char> clusterContents(int players, int round);
    // The least and greatest equity, found when first asked for.
    const tamarin::TableRange& equityRange(int players, int round);
    // The table is the file; a file that cannot be read gives zeros, without contents.
    template <class T>
    void take(Table<T>& table, const std::string& path, int round) {
        const auto loaded = store.load<T>(path, getRoundSize(round));
        table = {loaded.table, loaded.whole};
    }
    template <class T>
    void takeForPlay(Table<T>& table, const std::string& path, int round, bool needed);
    unsigned char* makeHoldemTable(int players, int round, int seat);

    const std::string playingDirectory;
    std::ostream& messages;
    tamarin::TableStore store;
    EquityTable equities[2][tamarin::holdemRounds];                 // [players - 2][round]
    Table<unsigned char> clusters[2][tamarin::holdemRounds];        // [players - 2][round]
    Table<unsigned char> holdemTables[4][tamarin::holdemRounds][3]; // [players][round][seat]
    Table<double> utilities[4][tamarin::holdemRounds][3];           // [players][round][seat]
    std::optional<tamarin::TableRange> ranges[2][tamarin::holdemRounds];
    // Tables without contents that have been handed out, and replaced since by their files.
    std::vector<std::unique_ptr<double[]>> replacedDoubles;
    std::vector<std::unique_ptr<unsigned char[]>> replacedBytes;
};

// Cuts equities into clusters by where they lie in their range, writes them to the file of that
// name and returns them as a new array.
unsigned char* doCluster(unsigned long size, double* equities, std::string name);

// Reads a game definition; ends the program with status 1 after "ERROR: could not open game PATH"
// or "ERROR: could not read game PATH" on standard error.
Game* loadGame(char const* path);
