#include "solver/equity_seam.h"

#include <stdexcept>

namespace tamarin {

void loadEquityTables(EquityTables&) {
    throw std::logic_error("this build has no equity tables");
}

double clusterWinProb(EquityTables&, uint8_t, int, int) {
    throw std::logic_error("this build has no equity tables");
}

} // namespace tamarin
