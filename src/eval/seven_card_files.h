// Making the seven-card table's two files, and only when they are needed.
#pragma once

#include "eval/seven_card_table.h"
#include "support/result.h"

#include <cstdint>
#include <functional>
#include <string>

namespace tamarin {

enum class TableFileState {
    good,
    missing,
    bad, // wrong size or wrong contents
};

struct TableFileCheck {
    TableFileState state = TableFileState::missing;
    std::string problem; // of a bad one: "lookup/tpt has 12 bytes, not 129951336"
};

// Looks at a file without changing it. An error means that the file cannot be judged: it cannot be
// read, or it is not a regular file.
Result<TableFileCheck> checkSevenCardFile(const std::string& path);
// Compares every entry with right, a table that was just generated; checkSevenCardFile looks at a
// few dozen hands. It takes half a second, and generating takes as much before.
Result<TableFileCheck> compareSevenCardFile(const std::string& path, const SevenCardTable& right);
Result<TableFileCheck> checkDenseRankFile(const std::string& path);

struct SevenCardBuild {
    bool madeTable = false; // lookup/tpt
    bool madeRanks = false; // lookup/tpt.indexes
};

// Makes DIRECTORY/tpt and DIRECTORY/tpt.indexes where they are missing or bad, and with force
// always; makes the directory too. A bad file is announced on standard error ("ERROR: ...:
// rebuilding it") and kept as NAME.bad. Each file appears whole or not at all. An interrupt before
// the writing is an error. For done see generateSevenCardTable.
Result<SevenCardBuild> buildSevenCardFiles(const std::string& directory, bool force = false,
                                           int threads = 0,
                                           const std::function<void(uint64_t)>& done = {});

} // namespace tamarin
