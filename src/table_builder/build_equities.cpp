// Exact equities of all rounds at once.

#include "abstraction/equity_files.h"
#include "support/progress.h"
#include "table_builder/build_steps.h"

#include <algorithm>
#include <array>

namespace tamarin {

uint64_t leastEquityMemory() {
    return EquityCounts::memoryBytes() + leastWindow + otherMemory;
}

Status buildEquities(const BuildOptions& options, const Work& work, const Files& files) {
    auto counts = EquityCounts::compute(reporting(options, work, "Ranking river boards"));
    if (!counts)
        return Error{counts.error()};

    const uint64_t window =
        options.memory == 0
            ? uint64_t{1} << 30
            : std::max(leastWindow, options.memory - EquityCounts::memoryBytes() - otherMemory);
    BackgroundCommits commits;
    for (int round = holdemRounds; round-- > 0;) { // the longest first: the disk is the slower part
        std::array<std::string, 2> paths;
        for (const TableFile* file : files)
            if (file->round == round)
                paths[static_cast<size_t>(file->players - 2)] =
                    inDirectory(options.directory, file->path);
        if (paths[0].empty() && paths[1].empty())
            continue;
        const std::string name = roundNames[static_cast<size_t>(round)];
        const Work writing = reporting(options, work, "Writing " + name + " equities");
        if (Status written =
                writeEquityFiles(*counts, round, paths[0], paths[1], window, writing, commits);
            !written)
            return written;
    }
    return commits.wait();
}

} // namespace tamarin
