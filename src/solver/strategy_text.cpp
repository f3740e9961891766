// A solver as text.

#include "solver/cfr.h"

#include <ostream>

std::ostream& operator<<(std::ostream& out, CFR const& cfr) {
    for (int m = 0; m < cfr.numMaps(); ++m)
        for (const auto& [key, node] : cfr.nodeMaps[m])
            out << key << " \u00bb " << *node << '\n';
    out << '\n';
    if (cfr.gameUtility != nullptr) {
        out << "Game utility: ( ";
        for (int p = 0; p < cfr.game->numPlayers; ++p)
            out << cfr.gameUtility[p] << ' ';
        out << " )\n";
    }
    return out;
}
