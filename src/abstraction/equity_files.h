// The equity files of a round, from exact counts.
//
// Counts are gathered by hand index, a window of the index range at a time (all of it, when memory
// allows), turned into equities and appended to the files.
#pragma once

#include "abstraction/equity_counts.h"
#include "support/background_commits.h"

#include <cstddef>
#include <string>

namespace tamarin {

// Writes the equities of every hand of the round (0..3) against one opponent to pathOverOne and
// against two to pathOverTwo; an empty path leaves that file out. memory: bytes that the window may
// take; it takes four or eight a hand at most, and at least a megabyte. The files are written when
// it returns, and in their places when the commits are done.
Status writeEquityFiles(const EquityCounts& counts, int round, const std::string& pathOverOne,
                        const std::string& pathOverTwo, size_t memory, const Work& work,
                        BackgroundCommits& commits);

} // namespace tamarin
