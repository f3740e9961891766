// EquityTables::loadForPlay: what a start needs, and not the computing that load() would begin.

#include "abstraction/EquityTables.h"
#include "abstraction/table_names.h"

#include <iostream>
#include <stdexcept>

namespace {

void requireFile(const std::string& path, size_t bytes) {
    if (!tamarin::usableFile(path, bytes))
        throw std::runtime_error(path + " is missing: make it with 'tamarin tables'");
}

} // namespace

void EquityTables::loadForPlay(int players) {
    printSizes();
    for (int round = 0; round < tamarin::holdemRounds; ++round)
        for (int of = 2; of <= 3; ++of) {
            const std::string path = tamarin::equityPath(of, round);
            const size_t size = getRoundSize(round);
            if (of <= players) {
                requireFile(path, size * sizeof(double));
                const auto loaded = store.doubles(path, size);
                equity(of, round) = {loaded.table, loaded.whole};
            } else if (const auto mapped = store.mapDoubles(path, size)) {
                equity(of, round) = {*mapped, true};
            }
        }
    std::cout << "Equity tables loaded from file!" << std::endl;
    std::cout << "Calculating max and min equities" << std::endl; // when somebody asks for them
    for (int of = 2; of <= 3; ++of)
        for (int round = 0; round < tamarin::holdemRounds; ++round)
            for (int seat = 0; seat < of; ++seat) {
                const std::string path = tamarin::holdemPath(of, round, seat);
                const size_t size = getRoundSize(round);
                unsigned char*& table = holdemTables[of][round][seat];
                if (of <= players) {
                    requireFile(path, size);
                    table = store.bytes(path, size).table;
                } else if (const auto mapped = store.mapBytes(path, size)) {
                    table = *mapped;
                }
                if (table != nullptr)
                    std::cout << "Loading table " << path << "!" << std::endl;
            }
}
