// A playing directory that has everything but the pre-flop tables, so that building is quick:
// sparse files of the right sizes, and pre-flop equities that rise with the hand index. Their first
// byte is another one than the rest, so that nobody who looks into them takes them for damaged; of
// the seven-card table that makes nothing good.
#pragma once

#include "abstraction/sparse_tables.h"
#include "table_builder/table_plan.h"

namespace tamarin::test {

inline void writeLaterRounds() {
    for (const TableFile& file : allTables())
        if (file.group == TableGroup::sevenCards || file.group == TableGroup::equities ||
            file.round > 0)
            writeSparse<uint8_t>(file.path, file.bytes, {1});
    std::vector<double> equities(roundSizes[0]);
    for (size_t i = 0; i < equities.size(); ++i)
        equities[i] = 0.3 + 0.5 * static_cast<double>(i) / 168;
    writeSparse(equityPath(2, 0), roundSizes[0], equities);
    writeSparse(equityPath(3, 0), roundSizes[0], equities);
}

} // namespace tamarin::test
