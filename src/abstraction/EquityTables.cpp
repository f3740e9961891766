#include "abstraction/EquityTables.h"

#include "abstraction/table_names.h"
#include "game/definition_file.h"

#include <cassert>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

EquityTables::EquityTables() {
    std::cout << "Creating indexers... ";
    const uint8_t preflop_structure[] = {2};
    const uint8_t flop_structure[] = {2, 3};
    const uint8_t turn_structure[] = {2, 4};
    const uint8_t river_structure[] = {2, 5};
    // The texts of these assertions are promises.
    // clang-format off
    assert(hand_indexer_init(1, preflop_structure, &preflop_indexer));
    assert(hand_indexer_init(2, flop_structure, &flop_indexer));
    assert(hand_indexer_init(2, turn_structure, &turn_indexer));
    assert(hand_indexer_init(2, river_structure, &river_indexer));
    // clang-format on
    std::cout << "done!" << std::endl;
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
    return isTable(players, round) ? clusters[players - 2][round] : nullptr;
}

void EquityTables::setEquityTable(int players, int round, double* table) {
    if (!isTable(players, round))
        return;
    equity(players, round) = {table, true};
    ranges[players - 2][round].reset();
}

void EquityTables::setClusterTable(int players, int round, unsigned char* table) {
    if (isTable(players, round))
        clusters[players - 2][round] = table;
}

std::span<const double> EquityTables::equityContents(int players, int round) {
    EquityTable& known = equity(players, round);
    const size_t size = getRoundSize(round);
    if (known.table == nullptr || !known.hasContents) {
        const std::string path = tamarin::equityPath(players, round);
        if (!tamarin::usableFile(path, size * sizeof(double)))
            throw std::runtime_error(path +
                                     " is missing: make it with 'tamarin tables', or call load()");
        const auto loaded = store.doubles(path, size);
        if (!loaded.whole) {
            store.release(loaded.table);
            throw std::runtime_error(path + " cannot be read: nothing is made from it");
        }
        store.release(known.table);
        known = {loaded.table, true};
    }
    return {known.table, size};
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
