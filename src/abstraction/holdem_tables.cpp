// The hold'em tables: ten buckets a seat, out of a hand's utility and its equity.

#include "abstraction/EquityTables.h"
#include "abstraction/table_names.h"
#include "support/util.h"

#include <iostream>
#include <stdexcept>

namespace {

using tamarin::holdemPath;
using tamarin::utilityPath;

} // namespace

void EquityTables::loadHoldemTables() {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < tamarin::holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat) {
                const std::string path = holdemPath(players, round, seat);
                const size_t size = getRoundSize(round);
                unsigned char*& table = holdemTables[players][round][seat];
                if (tamarin::usableFile(path, size)) {
                    std::cout << "Loading table " << path << "!" << std::endl;
                    table = store.bytes(path, size).table;
                    continue;
                }
                std::cout << "File " << path << " is missing!" << std::endl;
                std::cout << "Computing hsut for " << players << " players and round " << round
                          << std::endl;
                table = makeHoldemTable(players, round, seat);
                saveByteTable(path.c_str(), table, size);
            }
}

unsigned char* EquityTables::makeHoldemTable(int players, int round, int seat) {
    const std::span<const double> utility = utilityContents(round, tamarin::utilitySeatOf(seat));
    const std::span<const double> equity = equityContents(players, round);
    auto* const table = new unsigned char[equity.size()];
    tamarin::holdemBucketsOf(utility, tamarin::rangeOf(utility), equity,
                             equityRange(players, round), table);
    return table;
}

std::span<const double> EquityTables::utilityContents(int round, int seat) {
    const size_t size = getRoundSize(round);
    double*& table = utilities[2][round][seat];
    if (table == nullptr) {
        const std::string path = utilityPath(2, round, seat);
        if (!tamarin::usableFile(path, size * sizeof(double)))
            throw std::runtime_error(
                path + " is missing: make it with 'tamarin tables', or call loadUtility()");
        const auto loaded = store.doubles(path, size);
        if (!loaded.whole) {
            store.release(loaded.table);
            throw std::runtime_error(path + " cannot be read: nothing is made from it");
        }
        table = loaded.table;
    }
    return {table, size};
}

void EquityTables::freeHoldemTables() {
    for (auto& ofPlayers : holdemTables)
        for (auto& ofRound : ofPlayers)
            for (unsigned char* const table : ofRound)
                store.release(table);
}

void EquityTables::freeUtility() {
    for (auto& ofPlayers : utilities)
        for (auto& ofRound : ofPlayers)
            for (double* const table : ofRound)
                store.release(table);
}

unsigned int EquityTables::holdemTableIndex(int players, int round, int seat,
                                            unsigned char* cards) {
    return holdemTables[players][round][seat][hand_index_last(indexer(round), cards)];
}

const unsigned char* EquityTables::getHoldemTable(int players, int round, int seat) const {
    return isTable(players, round) && seat >= 0 && seat < players
               ? holdemTables[players][round][seat]
               : nullptr;
}

const double* EquityTables::getUtilityTable(int players, int round, int seat) const {
    return isTable(players, round) && seat >= 0 && seat < players ? utilities[players][round][seat]
                                                                  : nullptr;
}
