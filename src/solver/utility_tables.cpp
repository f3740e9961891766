// EquityTables::loadUtility: the one member of the equity tables that needs the solver.

#include "abstraction/EquityTables.h"
#include "abstraction/table_names.h"
#include "solver/cfr.h"
#include "support/util.h"

#include <iostream>

namespace {

// 50,000 would do for three players; the computation runs for two.
constexpr unsigned long long trainingIterations = 100'000;
constexpr int utilityPlayers = 2;

} // namespace

void EquityTables::loadUtility() {
    constexpr int players = utilityPlayers;
    for (int round = 0; round < tamarin::holdemRounds; ++round) {
        const size_t size = getRoundSize(round);
        double** const tables = utilities[players][round];
        bool missing = false;
        for (int seat = 0; seat < players && !missing; ++seat) {
            const std::string path = tamarin::utilityPath(players, round, seat);
            if (tamarin::usableFile(path, size * sizeof(double))) {
                std::cout << "Loading table " << path << "!" << std::endl;
                tables[seat] = store.doubles(path, size).table;
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
        CFR solver(game.get());
        solver.setEquityTables(this);
        solver.trainIS(trainingIterations, indexer(round),
                       static_cast<int>(tamarin::lastIndexRound(round)), round);
        for (int seat = 0; seat < players; ++seat)
            tables[seat] = new double[size];
        solver.fillUtility(tables, size, round);
        for (int seat = 0; seat < players; ++seat)
            saveDoubleTable(tamarin::utilityPath(players, round, seat).c_str(), tables[seat], size);
    }
}
