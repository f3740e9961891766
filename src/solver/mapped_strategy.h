// A strategy file looked up where it lies.
//
// The file is mapped and a node is found by binary search in its section's sorted records, so that
// a 10 GB strategy costs the memory of the pages that play touches, and is ready as soon as the
// disk has shown its keys once.
#pragma once

#include "solver/node_store.h"
#include "solver/strategy_record.h"
#include "support/file.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tamarin {

class MappedStrategy : public NodeStore {
public:
    // numMaps: players * rounds. Looks at every key: refuses a file that is cut, a key that fills
    // its field without an end, and a key that a section has twice, as CFR::load does of small
    // files. Sections out of order cost four bytes a node. Trailing bytes are ignored.
    static Result<MappedStrategy> open(const std::string& path, int numMaps);

    size_t count(int m) const override { return sections_[static_cast<size_t>(m)].size(); }
    bool forEach(int m, const Visit& visit) const override;
    bool find(int m, const std::string& key, CFRNode& node) const override;

private:
    // Of one player and round, its i-th record in key order.
    struct Section {
        std::span<const StrategyRecord> records;
        std::vector<uint32_t> order; // empty where the records are in order

        size_t size() const { return records.size(); }
        const StrategyRecord& operator[](size_t i) const {
            return records[order.empty() ? i : order[i]];
        }
    };

    explicit MappedStrategy(MappedFile file) : file_(std::move(file)) {}
    // What is wrong with a section's keys, or nothing.
    std::string sortKeys(Section& section) const;

    MappedFile file_;
    std::vector<Section> sections_;
};

} // namespace tamarin
