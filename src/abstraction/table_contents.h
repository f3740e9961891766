// What the entries of a table may be, and whether a table's are.
//
// The files have no checksum. A table in which one entry is impossible, or in which all are the
// same (a file of zeros), is damaged, and nothing may be made from it or trained on it: a bucket
// beyond the last would lead outside the strategy, and a NaN would spread to every bucket. One pass
// finds it, on all cores, in less time than a disk takes to read the file.
#pragma once

#include "abstraction/quantise.h"

#include <cfloat>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace tamarin {

struct EntryLimits {
    const char* entry; // what an entry is called
    double least;
    double most;
    const char* range; // the two in words
};
inline constexpr EntryLimits equityEntries{"equity", 0, 1, "0..1"};
inline constexpr EntryLimits utilityEntries{"utility", -DBL_MAX, DBL_MAX, "a finite number"};
inline constexpr EntryLimits clusterEntries{"cluster", 0, clusterLevels, "0..100"};
inline constexpr EntryLimits bucketEntries{"bucket", 0, holdemBuckets - 1, "0..9"};

// Empty for a good table, else the rest of a sentence that begins with its name: "holds bucket 255
// at hand 7 (byte 7), not 0..9", "holds nothing but bucket 0". partDone, if given, is called after
// each part of some megabytes, so that the caller can give the pages back.
std::string problemOfEntries(std::span<const double> table, const EntryLimits& limits,
                             int threads = 0, const std::function<void()>& partDone = {});
std::string problemOfEntries(std::span<const uint8_t> table, const EntryLimits& limits,
                             int threads = 0, const std::function<void()>& partDone = {});

} // namespace tamarin
