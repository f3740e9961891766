// A playing directory whose hold'em tables are all there and all but empty: sparse files of the
// right sizes, so every hand has bucket 0 and equity 0 until a test writes other ones. Of buckets
// and equities the last hand's differ, for a table of one value alone counts as damaged.
#pragma once

#include "abstraction/table_names.h"
#include "driver/scratch.h"
#include "index/hand_index.h"
#include "table_builder/table_plan.h"

#include <cstdint>
#include <fstream>
#include <string>

namespace tamarin::test {

class HoldemDirectory : public PlayingDirectory {
public:
    HoldemDirectory() {
        std::filesystem::create_directories("lookup");
        for (const TableFile& file : allTables()) {
            std::ofstream(file.path, std::ios::binary).flush();
            std::filesystem::resize_file(file.path, file.bytes);
            if (file.group == TableGroup::holdem)
                writeEntry<uint8_t>(file.path, file.bytes - 1, 9);
            else if (file.group == TableGroup::equities)
                writeEntry(file.path, file.bytes / sizeof(double) - 1, 0.5);
        }
    }

    // Puts one entry of a table.
    template <class T>
    static void writeEntry(const std::string& path, uint64_t index, T value) {
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(index * sizeof(T)));
        file.write(reinterpret_cast<const char*>(&value), sizeof value);
        ASSERT_TRUE(file.good()) << path;
    }
};

} // namespace tamarin::test
