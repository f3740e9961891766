// A strategy file looked up where it lies.
//
// The file is mapped and a node is found by binary search in its section's sorted records, so that
// a 10 GB strategy costs the memory of the pages that play touches and is ready at once.
#pragma once

#include "strategy/node_store.h"
#include "strategy/strategy_record.h"
#include "support/file.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tamarin {

class MappedStrategy : public NodeStore {
public:
    // How many keys are looked at before the strategy is used. Every one of them costs a read of
    // the whole file; a few hundred, spread over it, take milliseconds and find a file that is
    // another game's, out of order or torn, but not one damaged key.
    enum class Look : uint8_t { everyKey, someKeys };
    // numMaps: players * rounds. Refuses a file that is cut, a key that fills its field without an
    // end, and a key that a section has twice, as CFR::load does of small files; with someKeys, as
    // far as those show it: find() gives no node for a damaged key, and one of the two for a key
    // that is there twice. Sections out of order are looked at in full and cost four bytes a node.
    // Trailing bytes are ignored.
    static Result<MappedStrategy> open(const std::string& path, int numMaps,
                                       Look look = Look::everyKey);

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
    // Whether some of them, with their neighbours, have ends and ascend.
    static bool someKeysAscend(std::span<const StrategyRecord> records);

    MappedFile file_;
    std::vector<Section> sections_;
};

} // namespace tamarin
