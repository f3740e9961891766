#include "strategy/mapped_strategy.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string_view>

namespace tamarin {

namespace {

// Keys have an end within their field.
int compareKeys(const StrategyRecord& a, const StrategyRecord& b) {
    return std::strcmp(a.key, b.key);
}

// While keys are looked at, the file is not to be in memory as a whole: a hundred megabytes at a
// time.
constexpr size_t forgetEvery = 1'000'000;

// Places of a section where a quick look reads a key and its neighbour: the disk shows a page for
// each, and there are at most twelve sections.
constexpr size_t placesOfAQuickLook = 64;

bool hasEnd(const StrategyRecord& record) {
    return std::memchr(record.key, '\0', sizeof record.key) != nullptr;
}

// The key as far as its field goes.
std::string_view keyOf(const StrategyRecord& record) {
    return {record.key, strnlen(record.key, sizeof record.key)};
}

} // namespace

// Records are packed, so that one may stand at any address.
static_assert(alignof(StrategyRecord) == 1);

Result<MappedStrategy> MappedStrategy::open(const std::string& path, int numMaps, Look look) {
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
    for (size_t m = 0; m < strategy.sections_.size(); ++m) {
        Section& section = strategy.sections_[m];
        if (look == Look::someKeys && someKeysAscend(section.records))
            continue;
        if (const std::string wrong = strategy.sortKeys(section); !wrong.empty())
            return Error{path + ": section " + std::to_string(m) + " " + wrong};
    }
    return strategy;
}

bool MappedStrategy::someKeysAscend(std::span<const StrategyRecord> records) {
    const StrategyRecord* before = nullptr;
    const auto isNext = [&](const StrategyRecord& record) {
        const bool good = hasEnd(record) && (before == nullptr || compareKeys(*before, record) < 0);
        before = &record;
        return good;
    };
    const size_t step = std::max<size_t>(1, records.size() / placesOfAQuickLook);
    for (size_t i = 0; i < records.size(); i += step) {
        if (!isNext(records[i]))
            return false;
        if (step > 1 && i + 1 < records.size() && !isNext(records[i + 1]))
            return false;
    }
    return true;
}

std::string MappedStrategy::sortKeys(Section& section) const {
    const std::span<const StrategyRecord> records = section.records;
    bool ascending = true;
    for (size_t i = 0; i < records.size(); ++i) {
        if (!hasEnd(records[i])) // no key of ours fills its field
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
        if (keyOf(section[first + half]) < key) {
            first += half + 1;
            left -= half + 1;
        } else {
            left = half;
        }
    }
    if (first == section.size() || keyOf(section[first]) != key)
        return false;
    node = nodeOf(section[first]);
    return true;
}

} // namespace tamarin
