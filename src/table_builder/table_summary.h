// What a table holds: its range, how its entries are spread, and for pre-flop every hand.
#pragma once

#include "support/result.h"
#include "table_builder/table_plan.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tamarin {

// What an entry is.
enum class EntryKind : uint8_t { number, cluster, bucket, value }; // value: of the seven-card table
EntryKind kindOf(const TableFile& file);

struct TableSummary {
    struct Extreme {
        double value = 0;
        uint64_t index = 0; // the first entry of that value
    };
    // Entries from <= entry < to, the last bin's end included; one value when the two are equal.
    struct Bin {
        double from;
        double to;
        uint64_t entries;
    };
    const TableFile* file = nullptr;
    uint64_t entries = 0;
    uint64_t notNumbers = 0; // and infinite ones; not counted below
    Extreme least;
    Extreme greatest;
    double mean = 0;
    std::vector<Bin> histogram;
    std::vector<double> all; // the 169 entries of a pre-flop table, else none
};

inline constexpr int summaryBins = 20;

// Reads the table at path. Numbers are spread over summaryBins equal parts of their range; clusters
// and buckets have a bin each, up to the last that there may be (or is). The same with any number
// of threads. An error when the file cannot be read or is of another size.
Result<TableSummary> summarise(const TableFile& file, const std::string& path, int threads = 0);

// The table of that name ("lookup/flop_2p", "flop_2p"), whatever directory stands before it; null
// for any other name.
const TableFile* tableNamed(const std::string& path);

// A starting hand's place in a square of ranks, aces first: suited hands above the diagonal.
struct StartingHand {
    int row;
    int column;
    std::string name; // "AKs", "T9o", "22"
    int combinations; // 4, 12 or 6 of the 1,326
};
// By hand index.
const std::array<StartingHand, 169>& startingHands();

// "AsKd Qs8h3d" for an index of a round's table.
std::string handAt(int round, uint64_t index);

} // namespace tamarin
