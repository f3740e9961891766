// EquityTables::loadForPlay: what a start needs, and not the computing that load() would begin.

#include "abstraction/EquityTables.h"

#include <ostream>
#include <stdexcept>

// Zeros are no stand-in for a file that play needs and that cannot be read: every hand would be
// played as the weakest.
template <class T>
void EquityTables::takeForPlay(Table<T>& table, const std::string& path, int round, bool needed) {
    const size_t size = getRoundSize(round);
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
        for (int of = 2; of <= 3; ++of)
            takeForPlay(equity(of, round), pathOf(tamarin::equityPath(of, round)), round,
                        of <= players);
    messages << "Equity tables loaded from file!" << std::endl;
    messages << "Calculating max and min equities" << std::endl; // when somebody asks for them
    for (int of = 2; of <= 3; ++of)
        for (int round = 0; round < tamarin::holdemRounds; ++round)
            for (int seat = 0; seat < of; ++seat) {
                const std::string path = pathOf(tamarin::holdemPath(of, round, seat));
                Table<unsigned char>& table = holdemTables[of][round][seat];
                takeForPlay(table, path, round, of <= players);
                if (table.table != nullptr)
                    messages << "Loading table " << path << "!" << std::endl;
            }
}
