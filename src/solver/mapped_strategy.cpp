#include "solver/mapped_strategy.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace tamarin {

namespace {

CFRNode nodeOf(const StrategyRecord& record) {
    CFRNode node;
    std::memcpy(node.regretSum, record.regretSum, sizeof record.regretSum);
    std::memcpy(node.strategySum, record.strategySum, sizeof record.strategySum);
    return node;
}

// Keys have an end within their field.
int compareKeys(const StrategyRecord& a, const StrategyRecord& b) {
    return std::strcmp(a.key, b.key);
}

// While keys are looked at, the file is not to be in memory as a whole: a hundred megabytes at a
// time.
constexpr size_t forgetEvery = 1'000'000;

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
        Section& section = strategy.sections_.emplace_back();
        section.records = {reinterpret_cast<const StrategyRecord*>(all.data() + at), count};
        at += size_t{count} * sizeof(StrategyRecord);
    }
    for (int m = 0; m < numMaps; ++m)
        if (const std::string wrong = strategy.sortKeys(strategy.sections_[static_cast<size_t>(m)]);
            !wrong.empty())
            return Error{path + ": section " + std::to_string(m) + " " + wrong};
    return strategy;
}

std::string MappedStrategy::sortKeys(Section& section) const {
    const std::span<const StrategyRecord> records = section.records;
    bool ascending = true;
    for (size_t i = 0; i < records.size(); ++i) {
        // No key of ours fills its field.
        if (std::memchr(records[i].key, '\0', sizeof records[i].key) == nullptr)
            return "has a key without an end, its record " + std::to_string(i);
        if (i > 0 && compareKeys(records[i - 1], records[i]) >= 0)
            ascending = false;
        if (i % forgetEvery == forgetEvery - 1)
            file_.forgetPages();
    }
    if (ascending)
        return "";
    section.order.resize(records.size());
    std::iota(section.order.begin(), section.order.end(), 0U);
    std::sort(section.order.begin(), section.order.end(),
              [&](uint32_t a, uint32_t b) { return compareKeys(records[a], records[b]) < 0; });
    for (size_t i = 1; i < section.size(); ++i)
        if (compareKeys(section[i - 1], section[i]) == 0)
            return "has the key " + std::string(section[i].key) + " twice";
    return "";
}

bool MappedStrategy::forEach(int m, const Visit& visit) const {
    const Section& section = sections_[static_cast<size_t>(m)];
    for (size_t i = 0; i < section.size(); ++i)
        if (!visit(section[i].key, nodeOf(section[i])))
            return false;
    return true;
}

bool MappedStrategy::find(int m, const std::string& key, CFRNode& node) const {
    const Section& section = sections_[static_cast<size_t>(m)];
    size_t first = 0;
    for (size_t left = section.size(); left > 0;) {
        const size_t half = left / 2;
        if (section[first + half].key < key) {
            first += half + 1;
            left -= half + 1;
        } else {
            left = half;
        }
    }
    if (first == section.size() || section[first].key != key)
        return false;
    node = nodeOf(section[first]);
    return true;
}

} // namespace tamarin
