#include "abstraction/table_names.h"

#include <cassert>

namespace tamarin {

namespace {

// "flop_2p"
std::string roundOf(int players, int round, char separator) {
    assert((players == 2 || players == 3) && round >= 0 && round < 4);
    return std::string(roundFileNames[static_cast<size_t>(round)]) + separator +
           std::to_string(players) + 'p';
}

std::string inLookup(const std::string& name) {
    return std::string(lookupDirectory) + '/' + name;
}

} // namespace

std::string equityPath(int players, int round) {
    return inLookup(roundOf(players, round, '_'));
}

std::string clusterPath(int players, int round) {
    return inLookup(roundOf(players, round, '_') + "_c");
}

std::string holdemPath(int players, int round, int seat) {
    return inLookup("holdem_" + roundOf(players, round, '_') + '_' + std::to_string(seat));
}

std::string utilityPath(int players, int round, int seat) {
    return inLookup("utility_" + roundOf(players, round, '_') + '_' + std::to_string(seat));
}

std::string auxiliaryGameName(int players, int round) {
    return "kuhn." + roundOf(players, round, '.') + ".game";
}

std::string inDirectory(const std::string& directory, const std::string& name) {
    if (directory.empty() || directory == ".")
        return name;
    return directory.back() == '/' ? directory + name : directory + '/' + name;
}

} // namespace tamarin
