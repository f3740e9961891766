// A strategy file looked up where it lies.
//
// The file is mapped and a node is found by binary search in its section's sorted records, so that
// a 10 GB strategy is ready at once and costs the memory of the pages that play touches.
#pragma once

#include "solver/node_store.h"
#include "solver/strategy_record.h"
#include "support/file.h"

#include <span>
#include <string>
#include <vector>

namespace tamarin {

class MappedStrategy : public NodeStore {
public:
    // numMaps: players * rounds. Checks that the sections fit into the file; that their keys ascend
    // is taken on trust (a key out of order is not found). Trailing bytes are ignored.
    static Result<MappedStrategy> open(const std::string& path, int numMaps);

    size_t count(int m) const override { return sections_[static_cast<size_t>(m)].size(); }
    bool forEach(int m, const Visit& visit) const override;
    bool find(int m, const std::string& key, CFRNode& node) const override;

    std::span<const StrategyRecord> section(int m) const {
        return sections_[static_cast<size_t>(m)];
    }
    // The file's bytes up to the end of its last section.
    std::span<const std::byte> bytes() const { return bytes_; }

private:
    explicit MappedStrategy(MappedFile file) : file_(std::move(file)) {}

    MappedFile file_;
    std::vector<std::span<const StrategyRecord>> sections_;
    std::span<const std::byte> bytes_;
};

} // namespace tamarin
