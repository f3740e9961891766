// A solver as text.

#include "solver/cfr.h"

#include <ostream>

std::ostream& operator<<(std::ostream& out, CFR const& cfr) {
    for (int m = 0; m < cfr.numMaps(); ++m)
        cfr.nodes().forEach(m, [&](const std::string& key, CFRNode node) {
            out << key << " \u00bb " << node << '\n';
            return out.good();
        });
    out << '\n';
    if (cfr.gameUtility != nullptr) {
        out << "Game utility: ( ";
        for (int p = 0; p < cfr.game->numPlayers; ++p)
            out << cfr.gameUtility[p] << ' ';
        out << " )\n";
    }
    return out;
}
