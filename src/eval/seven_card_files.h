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
    bad, // of the wrong size, or with contents that are not the table's
};

struct TableFileCheck {
    TableFileState state = TableFileState::missing;
    std::string problem; // of a bad one: "lookup/tpt has 12 bytes, not 129951336"
};

// Looks at a file without changing it. An error is a file about which nothing can be said: it
// cannot be read, or is no regular file.
Result<TableFileCheck> checkSevenCardFile(const std::string& path);
// The same of every entry, where checkSevenCardFile looks at a few dozen hands: right is a table
// that was generated. Half a second of reading, and as much before for generating.
Result<TableFileCheck> compareSevenCardFile(const std::string& path, const SevenCardTable& right);
Result<TableFileCheck> checkDenseRankFile(const std::string& path);

struct SevenCardBuild {
    bool madeTable = false; // lookup/tpt
    bool madeRanks = false; // lookup/tpt.indexes
};

// Makes DIRECTORY/tpt and DIRECTORY/tpt.indexes where they are missing or bad, or in any case with
// force; the directory too. A bad file is announced on standard error ("ERROR: ...: rebuilding it")
// and kept as NAME.bad. Each file appears whole or not at all. An interrupt before the writing is
// an error. done is that of generateSevenCardTable.
Result<SevenCardBuild> buildSevenCardFiles(const std::string& directory, bool force = false,
                                           int threads = 0,
                                           const std::function<void(uint64_t)>& done = {});

// For work that builds on every entry: generates the table and compares the file with it; where
// they differ, the file is announced, kept as NAME.bad and made anew as above. A missing one is an
// error.
Status mendSevenCardFile(const std::string& path, int threads = 0);

} // namespace tamarin
