// EquityTables::loadForPlay: what a start needs, and not the computing that load() would begin.

#include "abstraction/EquityTables.h"
#include "abstraction/table_names.h"

#include <iostream>
#include <stdexcept>

// Zeros are no stand-in for a file that play needs and that cannot be read: every hand would be
// played as the weakest.
template <class T>
void EquityTables::takeForPlay(Table<T>& table, const std::string& path, size_t size, bool needed) {
    if (needed && !tamarin::usableFile(path, size * sizeof(T)))
        throw std::runtime_error(path + " is missing: make it with 'tamarin tables'");
    if (const auto mapped = store.map<T>(path, size))
        table = {*mapped, true};
    else if (needed)
        throw std::runtime_error(mapped.error());
}

void EquityTables::loadForPlay(int players) {
    printSizes();
    for (int round = 0; round < tamarin::holdemRounds; ++round)
        for (int of = 2; of <= 3; ++of) {
            const std::string path = tamarin::equityPath(of, round);
            const size_t size = getRoundSize(round);
            takeForPlay(equity(of, round), path, size, of <= players);
        }
    std::cout << "Equity tables loaded from file!" << std::endl;
    std::cout << "Calculating max and min equities" << std::endl; // when somebody asks for them
    for (int of = 2; of <= 3; ++of)
        for (int round = 0; round < tamarin::holdemRounds; ++round)
            for (int seat = 0; seat < of; ++seat) {
                const std::string path = tamarin::holdemPath(of, round, seat);
                const size_t size = getRoundSize(round);
                Table<unsigned char>& table = holdemTables[of][round][seat];
                takeForPlay(table, path, size, of <= players);
                if (table.table != nullptr)
                    std::cout << "Loading table " << path << "!" << std::endl;
            }
}
