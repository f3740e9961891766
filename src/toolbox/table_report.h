// What is to be said of the tables in a playing directory; for `tables --verify` and `verify`.
#pragma once

#include <cstdint>
#include <string>

namespace tamarin {

// Checks every table (tables/table_check.h) and compares hashes with the manifest; prints one line
// a table, or JSON. exitDone when nothing is wrong.
int reportTables(const std::string& directory, uint64_t seed, int threads, bool json, bool quiet);

} // namespace tamarin
