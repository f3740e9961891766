#include "solver/mapped_strategy.h"

#include <algorithm>
#include <cstring>

namespace tamarin {

namespace {

CFRNode nodeOf(const StrategyRecord& record) {
    CFRNode node;
    std::memcpy(node.regretSum, record.regretSum, sizeof record.regretSum);
    std::memcpy(node.strategySum, record.strategySum, sizeof record.strategySum);
    return node;
}

} // namespace

// Records are packed, so that one may stand at any address.
static_assert(alignof(StrategyRecord) == 1);

Result<MappedStrategy> MappedStrategy::open(const std::string& path, int numMaps) {
    Result<MappedFile> file = MappedFile::open(path);
    if (!file)
        return Error{file.error()};
    MappedStrategy strategy(std::move(*file));
    const std::span<const std::byte> all = strategy.file_.bytes();
    size_t at = 0;
    for (int m = 0; m < numMaps; ++m) {
        StrategyCount count = 0;
        const size_t left = all.size() - at;
        if (left >= sizeof count)
            std::memcpy(&count, all.data() + at, sizeof count);
        if (left < sizeof count || (left - sizeof count) / sizeof(StrategyRecord) < count) {
            return Error{path + " is cut in section " + std::to_string(m) + " (at byte " +
                         std::to_string(at) + ")"};
        }
        at += sizeof count;
        strategy.sections_.emplace_back(reinterpret_cast<const StrategyRecord*>(all.data() + at),
                                        count);
        at += size_t{count} * sizeof(StrategyRecord);
    }
    strategy.bytes_ = all.first(at);
    return strategy;
}

bool MappedStrategy::forEach(int m, const Visit& visit) const {
    for (const StrategyRecord& record : section(m)) {
        const std::string key(record.key, strnlen(record.key, sizeof record.key));
        if (!visit(key, nodeOf(record)))
            return false;
    }
    return true;
}

bool MappedStrategy::find(int m, const std::string& key, CFRNode& node) const {
    char padded[sizeof(StrategyRecord::key)] = {};
    if (key.size() >= sizeof padded)
        return false;
    std::memcpy(padded, key.data(), key.size());
    const std::span<const StrategyRecord> records = section(m);
    const auto at =
        std::partition_point(records.begin(), records.end(), [&](const StrategyRecord& record) {
            return std::memcmp(record.key, padded, sizeof padded) < 0;
        });
    if (at == records.end() || std::memcmp(at->key, padded, sizeof padded) != 0)
        return false;
    node = nodeOf(*at);
    return true;
}

} // namespace tamarin
