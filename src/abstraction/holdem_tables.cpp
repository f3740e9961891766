// The hold'em tables: ten buckets a seat, out of a hand's utility and its equity.

#include "abstraction/EquityTables.h"
#include "support/util.h"

#include <ostream>

void EquityTables::loadHoldemTables() {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < tamarin::holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat) {
                const std::string path = pathOf(tamarin::holdemPath(players, round, seat));
                const size_t size = getRoundSize(round);
                Table<unsigned char>& table = holdemTables[players][round][seat];
                if (tamarin::usableFile(path, size)) {
                    messages << "Loading table " << path << "!" << std::endl;
                    // Its size is all that is looked at: a player starts at once, and plays a
                    // bucket that cannot be as it plays a state that its strategy does not hold.
                    take(table, path, round);
                    continue;
                }
                messages << "File " << path << " is missing!" << std::endl;
                messages << "Computing hsut for " << players << " players and round " << round
                         << std::endl;
                table = {makeHoldemTable(players, round, seat), true};
                saveByteTable(path.c_str(), table.table, size);
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

void EquityTables::freeHoldemTables() {
    for (auto& ofPlayers : holdemTables)
        for (auto& ofRound : ofPlayers)
            for (const auto& table : ofRound)
                store.release(table.table);
}

void EquityTables::freeUtility() {
    for (auto& ofPlayers : utilities)
        for (auto& ofRound : ofPlayers)
            for (const auto& table : ofRound)
                store.release(table.table);
}

unsigned int EquityTables::holdemTableIndex(int players, int round, int seat,
                                            unsigned char* cards) {
    return holdemTables[players][round][seat].table[hand_index_last(indexer(round), cards)];
}

const unsigned char* EquityTables::getHoldemTable(int players, int round, int seat) const {
    return isTable(players, round) && seat >= 0 && seat < players
               ? holdemTables[players][round][seat].table
               : nullptr;
}

const double* EquityTables::getUtilityTable(int players, int round, int seat) const {
    return isTable(players, round) && seat >= 0 && seat < players
               ? utilities[players][round][seat].table
               : nullptr;
}
