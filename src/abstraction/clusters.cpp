// Clusters of equity: EquityTables' cluster tables, and the way from a cluster to hands and back.

#include "abstraction/EquityTables.h"
#include "support/util.h"

#include <cmath>
#include <ostream>

unsigned char* doCluster(unsigned long size, double* equities, std::string name) {
    const std::span<const double> entries(equities, size);
    auto* const clusters = new unsigned char[size];
    tamarin::clustersOf(entries, tamarin::rangeOf(entries), clusters);
    saveByteTable(name.c_str(), clusters, size);
    return clusters;
}

void EquityTables::loadCluster() {
    printSizes();
    messages << "loading clusters..." << std::endl;
    bool allThere = true;
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < tamarin::holdemRounds; ++round)
            allThere =
                tamarin::usableTable<unsigned char>(pathOf(tamarin::clusterPath(players, round)),
                                                    getRoundSize(round), tamarin::clusterEntries) &&
                allThere;
    for (int round = 0; round < tamarin::holdemRounds; ++round)
        for (int players = 2; players <= 3; ++players) {
            const std::string path = pathOf(tamarin::clusterPath(players, round));
            if (allThere) {
                take(clusters[players - 2][round], path, round);
                continue;
            }
            messages << "generating " << tamarin::roundNames[static_cast<size_t>(round)]
                     << " clusters " << players << "p" << std::endl;
            const std::span<const double> contents = equityContents(players, round);
            clusters[players - 2][round] = {
                doCluster(contents.size(), const_cast<double*>(contents.data()), path), true};
        }
    if (allThere)
        messages << "Cluster tables loaded from file!" << std::endl;
}

void EquityTables::freeCluster() {}

int EquityTables::getCluster(unsigned char index, int players, int round) {
    return getClusterTable(players, round)[index];
}

int EquityTables::getCluster(unsigned char* cards, int players, int round) {
    return getClusterTable(players, round)[hand_index_last(indexer(round), cards)];
}

double EquityTables::clusterToEquity(unsigned char cluster, int players, int round) {
    const tamarin::TableRange& range = equityRange(players, round);
    return cluster / 100.0 * (range.max - range.min) + range.min;
}

int EquityTables::equityToCluster(double equity, int players, int round) {
    const tamarin::TableRange& range = equityRange(players, round);
    return static_cast<int>(
        std::round((equity - range.min) / (range.max - range.min) * tamarin::clusterLevels));
}

size_t EquityTables::findClusterIndex(unsigned char cluster, int players, int round) {
    const unsigned char* const table = getClusterTable(players, round);
    const size_t size = getRoundSize(round);
    for (size_t index = 0; index < size; ++index)
        if (table[index] == cluster)
            return index;
    return size;
}

int EquityTables::findClusterIndexHand(unsigned char cluster, int players, int round,
                                       unsigned char* cards) {
    const unsigned char* const table = getClusterTable(players, round);
    const size_t size = getRoundSize(round);
    // Every indexer is deliberately asked for its round 0, which knows 169 indices and refuses the
    // others.
    for (size_t index = 0; index < size; ++index)
        if (table[index] == cluster && !hand_unindex(indexer(round), 0, index, cards))
            break;
    return 0;
}
