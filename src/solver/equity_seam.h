// The solver's calls on the equity tables, gathered in one place: the rest of the room sees the
// class only as a name.
#pragma once

#include <cstdint>

class EquityTables;

namespace tamarin {

// Makes the tables ready for use, computing what is missing.
void loadEquityTables(EquityTables& tables);

// The winning probability that an equity cluster stands for.
double clusterWinProb(EquityTables& tables, uint8_t cluster, int numPlayers, int round);

} // namespace tamarin
