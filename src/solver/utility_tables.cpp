// EquityTables::loadUtility: the one member of the equity tables that needs the solver.

#include "abstraction/EquityTables.h"
#include "solver/cfr.h"
#include "support/util.h"

#include <ostream>

void EquityTables::loadUtility() {
    constexpr int players = 2; // the computation runs for no others
    for (int round = 0; round < tamarin::holdemRounds; ++round) {
        const size_t size = getRoundSize(round);
        Table<double>* const tables = utilities[players][round];
        bool missing = false;
        for (int seat = 0; seat < players && !missing; ++seat) {
            const std::string path = pathOf(tamarin::utilityPath(players, round, seat));
            if (tamarin::usableTable<double>(path, size, tamarin::utilityEntries)) {
                messages << "Loading table " << path << "!" << std::endl;
                take(tables[seat], path, round);
                continue;
            }
            messages << "File " << path << " is missing!" << std::endl;
            messages << "Computing ne for " << players << " players and round " << round
                     << std::endl;
            missing = true;
        }
        CFR::logProgress = true;
        if (!missing)
            continue;
        const std::string gamePath = pathOf(tamarin::auxiliaryGameName(players, round));
        messages << "Loading game " << gamePath << "!" << std::endl;
        const tamarin::GamePtr game(loadGame(gamePath.c_str()));
        (void)clusterContents(players, round);
        CFR solver(game.get());
        solver.setEquityTables(this);
        solver.trainIS(utilityIterations, indexer(round),
                       static_cast<int>(tamarin::lastIndexRound(round)), round);
        double* filled[players];
        for (int seat = 0; seat < players; ++seat)
            filled[seat] = new double[size];
        solver.fillUtility(filled, size, round);
        for (int seat = 0; seat < players; ++seat) {
            tables[seat] = {filled[seat], true};
            saveDoubleTable(pathOf(tamarin::utilityPath(players, round, seat)).c_str(),
                            filled[seat], size);
        }
    }
}
