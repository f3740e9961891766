// EquityTables::loadUtility: the one member of the equity tables that needs the solver.

#include "abstraction/EquityTables.h"
#include "abstraction/table_names.h"
#include "solver/cfr.h"
#include "support/util.h"

#include <iostream>

namespace {

// The computation runs for two players only.
constexpr int utilityPlayers = 2;

} // namespace

void EquityTables::loadUtility() {
    constexpr int players = utilityPlayers;
    for (int round = 0; round < tamarin::holdemRounds; ++round) {
        const size_t size = getRoundSize(round);
        Table<double>* const tables = utilities[players][round];
        bool missing = false;
        for (int seat = 0; seat < players && !missing; ++seat) {
            const std::string path = tamarin::utilityPath(players, round, seat);
            if (tamarin::usableTable<double>(path, size, tamarin::utilityEntries)) {
                std::cout << "Loading table " << path << "!" << std::endl;
                const auto loaded = store.doubles(path, size);
                tables[seat] = {loaded.table, loaded.whole};
                continue;
            }
            std::cout << "File " << path << " is missing!" << std::endl;
            std::cout << "Computing ne for " << players << " players and round " << round
                      << std::endl;
            missing = true;
        }
        CFR::logProgress = true;
        if (!missing)
            continue;
        const std::string gameName = tamarin::auxiliaryGameName(players, round);
        std::cout << "Loading game " << gameName << "!" << std::endl;
        const tamarin::GamePtr game(loadGame(gameName.c_str()));
        (void)clusterContents(players, round);
        CFR solver(game.get());
        solver.setEquityTables(this);
        solver.trainIS(utilityIterations, indexer(round),
                       static_cast<int>(tamarin::lastIndexRound(round)), round);
        double* filled[utilityPlayers];
        for (int seat = 0; seat < players; ++seat)
            filled[seat] = new double[size];
        solver.fillUtility(filled, size, round);
        for (int seat = 0; seat < players; ++seat) {
            tables[seat] = {filled[seat], true};
            saveDoubleTable(tamarin::utilityPath(players, round, seat).c_str(), filled[seat], size);
        }
    }
}
