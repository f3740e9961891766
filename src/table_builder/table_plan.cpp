#include "table_builder/table_plan.h"

#include "abstraction/equity_counts.h"
#include "abstraction/table_names.h"
#include "eval/hand_value.h"
#include "eval/seven_card_table.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace tamarin {

namespace {

constexpr uint64_t working = uint64_t{64} << 20; // buffers, indexers and the program

struct GroupFacts {
    const char* name;
    const char* what;
    uint64_t memory;
    double secondsPerGigabyte; // of its files, on two cores of 2020's make, disk included
    double seconds;            // besides
};

constexpr std::array<GroupFacts, tableGroups> facts{{
    {"tpt", "the seven-card table and its ranks", sevenCardBytes + working, 4, 1},
    {"equity", "equities against one and two opponents",
     boardClasses[2] * riverHoldings * 4 + boardClasses[1] * numHoldings(48) * 8 +
         boardClasses[0] * numHoldings(49) * 8 + roundSizes[3] * 4 + working,
     6, 3},
    {"clusters", "clusters of equity", 4 * working, 10, 1},
    {"utility", "utilities in the auxiliary games", roundSizes[3] * 9 + working, 8, 6},
    {"holdem", "hold'em buckets", 5 * working, 8, 1},
}};

const GroupFacts& factsOf(TableGroup group) {
    return facts[static_cast<size_t>(group)];
}

std::vector<TableFile> makeList() {
    std::vector<TableFile> list;
    list.push_back({TableGroup::sevenCards, sevenCardTablePath, sevenCardBytes});
    list.push_back(
        {TableGroup::sevenCards, denseRankTablePath, uint64_t{handValueCount} * sizeof(int32_t)});
    for (int round = 0; round < holdemRounds; ++round)
        for (int players = 2; players <= 3; ++players)
            list.push_back({TableGroup::equities, equityPath(players, round),
                            roundSizes[size_t(round)] * sizeof(double), players, round});
    for (int round = 0; round < holdemRounds; ++round)
        for (int players = 2; players <= 3; ++players)
            list.push_back({TableGroup::clusters, clusterPath(players, round),
                            roundSizes[size_t(round)], players, round});
    for (int round = 0; round < holdemRounds; ++round)
        for (int seat = 0; seat < 2; ++seat)
            list.push_back({TableGroup::utilities, utilityPath(2, round, seat),
                            roundSizes[size_t(round)] * sizeof(double), 2, round, seat});
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            for (int seat = 0; seat < players; ++seat)
                list.push_back({TableGroup::holdem, holdemPath(players, round, seat),
                                roundSizes[size_t(round)], players, round, seat});
    return list;
}

// What lies in the file's place.
PlannedTable lookAt(const std::string& directory, const TableFile& file) {
    PlannedTable table{&file, TableState::good, 0, false, ""};
    const std::string path = inDirectory(directory, file.path);
    const auto unusable = [&](const std::string& why) {
        table.state = TableState::unusable;
        table.problem = path + why;
    };
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        // Where lookup/ itself is no directory, making it will say so.
        if (errno == ENOENT || errno == ENOTDIR)
            table.state = TableState::missing;
        else
            unusable(std::string(" cannot be looked at: ") + std::strerror(errno));
    } else if (!S_ISREG(status.st_mode)) {
        unusable(S_ISDIR(status.st_mode)
                     ? " is a directory: move it away, a table belongs there"
                     : " is not a regular file: move it away, a table belongs there");
    } else if (static_cast<uint64_t>(status.st_size) != file.bytes) {
        table.state = TableState::wrongSize;
        table.bytesThere = static_cast<uint64_t>(status.st_size);
        table.problem = path + " has " + std::to_string(table.bytesThere) + " bytes, not " +
                        std::to_string(file.bytes);
    } else if (access(path.c_str(), R_OK) != 0) {
        unusable(std::string(" cannot be read: ") + std::strerror(errno) +
                 ": allow it, or delete the file");
    }
    return table;
}

TablePlan planWanted(const std::string& directory,
                     const std::function<bool(const TableFile&)>& isWanted, bool force,
                     const DamagedTables& damaged) {
    const std::vector<TableFile>& files = allTables();
    std::vector<PlannedTable> tables;
    std::vector<bool> wanted;
    for (const TableFile& file : files) {
        PlannedTable table = lookAt(directory, file);
        if (const auto known = damaged.find(&file);
            known != damaged.end() && table.state == TableState::good) {
            table.state = TableState::damaged;
            table.problem = inDirectory(directory, file.path) + ' ' + known->second;
        }
        wanted.push_back(isWanted(file));
        table.make = wanted.back() && (force || table.state != TableState::good);
        tables.push_back(table);
    }
    // Backwards, so that a need is known before the file it falls on is looked at.
    for (size_t made = files.size(); made-- > 0;)
        for (size_t source = 0; tables[made].make && source < made; ++source)
            if (isMadeFrom(files[made], files[source])) {
                wanted[source] = true;
                tables[source].make =
                    tables[source].make || tables[source].state != TableState::good;
            }

    TablePlan plan;
    for (size_t i = 0; i < files.size(); ++i) {
        if (!wanted[i])
            continue;
        plan.tables.push_back(tables[i]);
        if (tables[i].make)
            plan.disk += files[i].bytes;
    }
    for (int g = 0; g < tableGroups; ++g) {
        const auto group = static_cast<TableGroup>(g);
        if (diskOf(plan, group) != 0)
            plan.memory = std::max(plan.memory, memoryOf(group));
        plan.seconds += secondsOf(plan, group);
    }
    return plan;
}

} // namespace

const char* nameOf(TableGroup group) {
    return factsOf(group).name;
}
const char* describe(TableGroup group) {
    return factsOf(group).what;
}

const std::vector<TableFile>& allTables() {
    static const std::vector<TableFile> list = makeList();
    return list;
}

bool isMadeFrom(const TableFile& made, const TableFile& source) {
    const bool sameRound = made.round == source.round && made.players == source.players;
    switch (made.group) {
    case TableGroup::sevenCards:
    case TableGroup::equities:
        return false;
    case TableGroup::clusters:
        return source.group == TableGroup::equities && sameRound;
    case TableGroup::utilities:
        return (source.group == TableGroup::equities || source.group == TableGroup::clusters) &&
               sameRound;
    case TableGroup::holdem:
        return (source.group == TableGroup::equities && sameRound) ||
               (source.group == TableGroup::utilities && source.round == made.round &&
                source.seat == utilitySeatOf(made.seat));
    }
    return false;
}

TablePlan planTables(const std::string& directory, const std::vector<TableGroup>& groups,
                     bool force, const DamagedTables& damaged) {
    const auto isWanted = [&](const TableFile& file) {
        return groups.empty() ||
               std::find(groups.begin(), groups.end(), file.group) != groups.end();
    };
    return planWanted(directory, isWanted, force, damaged);
}

bool playReads(const TableFile& file, int players) {
    return (file.group == TableGroup::equities || file.group == TableGroup::holdem) &&
           file.players <= players;
}

TablePlan planTablesForPlay(const std::string& directory, int players,
                            const DamagedTables& damaged) {
    const auto isWanted = [players](const TableFile& file) { return playReads(file, players); };
    return planWanted(directory, isWanted, false, damaged);
}

uint64_t diskOf(const TablePlan& plan, TableGroup group) {
    uint64_t bytes = 0;
    for (const PlannedTable& table : plan.tables)
        if (table.make && table.file->group == group)
            bytes += table.file->bytes;
    return bytes;
}

uint64_t memoryOf(TableGroup group) {
    return factsOf(group).memory;
}

double secondsOf(const TablePlan& plan, TableGroup group) {
    const uint64_t disk = diskOf(plan, group);
    return disk == 0 ? 0
                     : factsOf(group).seconds +
                           factsOf(group).secondsPerGigabyte * static_cast<double>(disk) * 1e-9;
}

} // namespace tamarin
