// The builder's steps; table_builder.cpp calls them in order.
#pragma once

#include "abstraction/work.h"
#include "support/result.h"
#include "table_builder/table_builder.h"

#include <string>
#include <vector>

namespace tamarin {

using Files = std::vector<const TableFile*>;

// The work of one step, whose progress goes to options under the step's name. options must outlive
// it.
Work reporting(const BuildOptions& options, const Work& work, const std::string& step);

// Makes the files, all of one group. Their sources are there.
Status buildEquities(const BuildOptions& options, const Work& work, const Files& files);
Status buildClusters(const BuildOptions& options, const Work& work, const Files& files);
Status buildUtilities(const BuildOptions& options, const Work& work, const Files& files);
Status buildHoldem(const BuildOptions& options, const Work& work, const Files& files);

// What is wrong with the entries of a table of the right size, in the words of table_contents.h;
// empty when nothing is wrong, or when the file cannot be read.
std::string damageOf(const TableFile& file, const std::string& path, int threads);

// What every step takes besides its tables, and the least window on the hands of a round.
inline constexpr uint64_t otherMemory = uint64_t{64} << 20;
inline constexpr uint64_t leastWindow = uint64_t{32} << 20;

// The least memory that buildEquities and buildUtilities can do with.
uint64_t leastEquityMemory();
uint64_t leastUtilityMemory();

} // namespace tamarin
