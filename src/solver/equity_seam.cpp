#include "solver/equity_seam.h"

#include "abstraction/EquityTables.h"

namespace tamarin {

void loadEquityTables(EquityTables& tables) {
    tables.load();
}

double clusterWinProb(EquityTables& tables, uint8_t cluster, int numPlayers, int round) {
    return tables.clusterToEquity(cluster, numPlayers, round);
}

} // namespace tamarin
