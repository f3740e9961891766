// Strategy files without a solver around them; the layout is strategy_record.h's.
#pragma once

#include "strategy/node_store.h"
#include "support/file.h"

#include <functional>
#include <string>

namespace tamarin {

// Writes all nodes of a store with so many maps (players * rounds) beside the file's place, whole
// and on the disk, for commit() to put there: several strategies, each written before the first is
// put in its place, are all new or all old but for a failure of the renames themselves. An error
// when it cannot be written, or when a key has 60 bytes or more. goOn is asked now and then with
// the nodes written so far; false gives the file up. A new file has mode 0644 less the umask.
Result<AtomicFile> stageStrategyFile(const std::string& path, int numMaps, const NodeStore& nodes,
                                     const std::function<bool(uint64_t done)>& goOn = nullptr,
                                     FileSystem& files = systemFiles());

// Writes all nodes of a store with so many maps (players * rounds), whole or not at all;
// otherwise as stageStrategyFile.
Status writeStrategyFile(const std::string& path, int numMaps, const NodeStore& nodes,
                         const std::function<bool(uint64_t done)>& goOn = nullptr,
                         FileSystem& files = systemFiles());

} // namespace tamarin
