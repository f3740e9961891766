// The builder's steps; table_builder.cpp calls them in order.
#pragma once

#include "abstraction/work.h"
#include "support/result.h"
#include "tables/table_builder.h"

#include <string>
#include <vector>

namespace tamarin {

using Files = std::vector<const TableFile*>;

// Makes the files, all of one group. Their sources are there.
Status buildEquities(const BuildOptions& options, const Work& work, const Files& files);
Status buildClusters(const BuildOptions& options, const Work& work, const Files& files);
Status buildUtilities(const BuildOptions& options, const Work& work, const Files& files);
Status buildHoldem(const BuildOptions& options, const Work& work, const Files& files);

// The least memory that buildEquities can do with.
uint64_t leastEquityMemory();

} // namespace tamarin
