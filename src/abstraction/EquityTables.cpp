#include "abstraction/EquityTables.h"

#include "game/definition_file.h"
#include "support/fixed_assert.h"

#include <array>
#include <cassert>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <type_traits>
#include <utility>

EquityTables::EquityTables() : EquityTables("", std::cout) {}

EquityTables::EquityTables(std::string directory, std::ostream& sink)
    : playingDirectory(std::move(directory)), messages(sink) {
    // What watchers may rely on, whichever constructor runs.
    static constexpr std::array<const char*, tamarin::holdemRounds> texts{
        "hand_indexer_init(1, preflop_structure, &preflop_indexer)",
        "hand_indexer_init(2, flop_structure, &flop_indexer)",
        "hand_indexer_init(2, turn_structure, &turn_indexer)",
        "hand_indexer_init(2, river_structure, &river_indexer)"};
    messages << "Creating indexers... ";
    for (int round = 0; round < tamarin::holdemRounds; ++round)
        TAMARIN_FIXED_ASSERT(tamarin::initRoundIndexer(round, indexer(round)),
                             texts[static_cast<size_t>(round)], "src/abstraction/EquityTables.cpp",
                             "EquityTables::EquityTables()");
    messages << "done!" << std::endl;
}

EquityTables::~EquityTables() {
    free();
    for (int round = 0; round < tamarin::holdemRounds; ++round)
        hand_indexer_free(indexer(round));
}

void EquityTables::free() {
    for (auto& ofPlayers : equities)
        for (EquityTable& table : ofPlayers) {
            store.release(table.table);
            table = {};
        }
    replacedDoubles.clear();
}

hand_indexer_t* EquityTables::indexer(int round) {
    switch (round) {
    case 0:
        return &preflop_indexer;
    case 1:
        return &flop_indexer;
    case 2:
        return &turn_indexer;
    default:
        return &river_indexer;
    }
}

size_t EquityTables::getRoundSize(int round) {
    if (round < 0 || round >= tamarin::holdemRounds)
        return 0;
    return hand_indexer_size(indexer(round), tamarin::lastIndexRound(round));
}

double* EquityTables::getEquityTable(int players, int round) {
    return isTable(players, round) ? equity(players, round).table : nullptr;
}

unsigned char* EquityTables::getClusterTable(int players, int round) {
    return isTable(players, round) ? clusters[players - 2][round].table : nullptr;
}

void EquityTables::setEquityTable(int players, int round, double* table) {
    if (!isTable(players, round))
        return;
    equity(players, round) = {table, true, true};
    ranges[players - 2][round].reset();
}

void EquityTables::setClusterTable(int players, int round, unsigned char* table) {
    if (isTable(players, round))
        clusters[players - 2][round] = {table, true, true};
}

template <class T>
std::span<const T> EquityTables::contents(Table<T>& known, const std::string& path, int round,
                                          const tamarin::EntryLimits& limits, const char* loader) {
    const size_t size = getRoundSize(round);
    if (known.table == nullptr || !known.hasContents) {
        if (!tamarin::usableFile(path, size * sizeof(T)))
            throw std::runtime_error(path + " is missing: make it with 'tamarin tables', or call " +
                                     loader);
        const auto mapped = store.map<T>(path, size);
        if (!mapped)
            throw std::runtime_error(mapped.error() + ": nothing is made from it");
        // Somebody may hold the pointer.
        if constexpr (std::is_same_v<T, double>)
            replacedDoubles.emplace_back(known.table);
        else
            replacedBytes.emplace_back(known.table);
        known = {*mapped, true};
    }
    const std::span<const T> entries(known.table, size);
    if (!known.checked) {
        const std::string problem = tamarin::problemOfEntries(
            entries, limits, 0, [&] { store.forgetPages(entries.data()); });
        if (!problem.empty())
            throw std::runtime_error(
                (known.fromCaller ? "the table set for " : "") + path + ' ' + problem +
                ": nothing is made from it; 'tamarin tables' makes the file anew");
        known.checked = true;
    }
    return entries;
}

std::span<const double> EquityTables::equityContents(int players, int round) {
    return contents(equity(players, round), pathOf(tamarin::equityPath(players, round)), round,
                    tamarin::equityEntries, "load()");
}

std::span<const double> EquityTables::utilityContents(int round, int seat) {
    return contents(utilities[2][round][seat], pathOf(tamarin::utilityPath(2, round, seat)), round,
                    tamarin::utilityEntries, "loadUtility()");
}

std::span<const unsigned char> EquityTables::clusterContents(int players, int round) {
    return contents(clusters[players - 2][round], pathOf(tamarin::clusterPath(players, round)),
                    round, tamarin::clusterEntries, "loadCluster()");
}

void EquityTables::requireHoldemTables(int players) {
    for (int p = 2; p <= players; ++p)
        for (int round = 0; round < tamarin::holdemRounds; ++round)
            for (int seat = 0; seat < p; ++seat)
                contents(holdemTables[p][round][seat], pathOf(tamarin::holdemPath(p, round, seat)),
                         round, tamarin::bucketEntries, "loadHoldemTables()");
}

const tamarin::TableRange& EquityTables::equityRange(int players, int round) {
    assert(isTable(players, round));
    std::optional<tamarin::TableRange>& range = ranges[players - 2][round];
    if (!range)
        range = tamarin::rangeOf(equityContents(players, round));
    return *range;
}

Game* loadGame(char const* path) {
    tamarin::GamePtr game = tamarin::readDefinitionFile(path);
    if (!game)
        std::exit(1);
    return game.release();
}
