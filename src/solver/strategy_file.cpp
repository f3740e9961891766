// Strategy files: writing a solver's nodes, reading them back.

#include "solver/strategy_file.h"

#include "solver/cfr.h"
#include "solver/holdem_sets.h"
#include "solver/mapped_strategy.h"
#include "solver/strategy_record.h"
#include "support/file.h"

#include <algorithm>
#include <cstring>

namespace {

using tamarin::StrategyCount;
using tamarin::StrategyRecord;

bool writeNode(tamarin::AtomicFile& file, const std::string& key, const CFRNode& node) {
    StrategyRecord record{};
    if (key.size() >= sizeof record.key)
        return false;
    std::memcpy(record.key, key.data(), key.size());
    std::memcpy(record.regretSum, node.regretSum, sizeof record.regretSum);
    std::memcpy(record.strategySum, node.strategySum, sizeof record.strategySum);
    return file.write(&record, sizeof record).ok();
}

// Bytes up to the end of the last section; all of them where a section is cut.
size_t sectionBytes(std::span<const std::byte> bytes, int numMaps) {
    size_t at = 0;
    for (int m = 0; m < numMaps; ++m) {
        StrategyCount count = 0;
        if (bytes.size() - at < sizeof count)
            return bytes.size();
        std::memcpy(&count, bytes.data() + at, sizeof count);
        at += sizeof count;
        if ((bytes.size() - at) / sizeof(StrategyRecord) < count)
            return bytes.size();
        at += size_t{count} * sizeof(StrategyRecord);
    }
    return at;
}

// Takes values off the front of a file's bytes.
class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <class T>
    bool take(T& value) {
        if (bytes_.size() < sizeof value)
            return false;
        std::memcpy(&value, bytes_.data(), sizeof value);
        bytes_ = bytes_.subspan(sizeof value);
        return true;
    }

private:
    std::span<const std::byte> bytes_;
};

// Nothing is set aside for the count that the file claims: every node costs its 108 bytes first.
bool readMap(Reader& reader, tamarin::NodeMap& map) {
    StrategyCount count = 0;
    if (!reader.take(count))
        return false;
    map.clear();
    for (StrategyCount i = 0; i < count; ++i) {
        StrategyRecord record;
        if (!reader.take(record))
            return false;
        const size_t length = strnlen(record.key, sizeof record.key);
        if (length == sizeof record.key)
            return false; // no key of ours fills its field
        const auto [at, isNew] = map.try_emplace(std::string(record.key, length), nullptr);
        if (!isNew)
            return false;
        at->second = new CFRNode;
        std::memcpy(at->second->regretSum, record.regretSum, sizeof record.regretSum);
        std::memcpy(at->second->strategySum, record.strategySum, sizeof record.strategySum);
    }
    return true;
}

} // namespace

namespace tamarin {

Result<AtomicFile> stageStrategyFile(const std::string& path, int numMaps, const NodeStore& nodes,
                                     const std::function<bool(uint64_t done)>& goOn,
                                     FileSystem& files) {
    constexpr uint64_t askEvery = 1 << 16U;
    constexpr mode_t mode = 0644;
    Result<AtomicFile> file = AtomicFile::create(path, files, mode);
    if (!file)
        return file;
    uint64_t done = 0;
    std::string problem;
    for (int m = 0; m < numMaps; ++m) {
        const size_t held = nodes.count(m);
        const auto count = static_cast<StrategyCount>(held);
        if (count != held)
            return Error{path + ": section " + std::to_string(m) + " has too many nodes"};
        (void)file->write(&count, sizeof count); // a failure is told by finish()
        const bool whole = nodes.forEach(m, [&](const std::string& key, const CFRNode& node) {
            if (!writeNode(*file, key, node))
                problem = key.size() >= sizeof(StrategyRecord::key)
                              ? "the key " + key + " is too long"
                              : "disk";
            else if (++done % askEvery == 0 && goOn && !goOn(done))
                problem = "stopped";
            return problem.empty();
        });
        if (!whole && problem != "disk")
            return Error{path + ": " + problem};
        if (!whole)
            break;
    }
    if (Status finished = file->finish(); !finished)
        return Error{finished.error()};
    return file;
}

Status writeStrategyFile(const std::string& path, int numMaps, const NodeStore& nodes,
                         const std::function<bool(uint64_t done)>& goOn, FileSystem& files) {
    Result<AtomicFile> file = stageStrategyFile(path, numMaps, nodes, goOn, files);
    return file ? file->commit() : Status(Error{file.error()});
}

Status readStrategyFile(const std::string& path, HoldemSets& sets) {
    const auto& slots = sets.tree().slots();
    int numMaps = 0; // a tree has slots in every map up to the last
    for (const CompiledTree::Slot& slot : slots)
        numMaps = std::max(numMaps, slot.player + 1);
    numMaps *= sets.numRounds();
    const auto strategy = MappedStrategy::open(path, numMaps);
    if (!strategy)
        return Error{strategy.error()};
    for (int m = 0; m < numMaps; ++m) {
        if (strategy->count(m) != sets.count(m))
            return Error{path + ": section " + std::to_string(m) + " has " +
                         std::to_string(strategy->count(m)) + " nodes, the game has " +
                         std::to_string(sets.count(m)) + " there"};
        std::string last;
        const bool good = strategy->forEach(m, [&](const std::string& key, const CFRNode& node) {
            last = key;
            return sets.set(m, key, node);
        });
        if (!good)
            return Error{path + ": the node \"" + last + "\" of section " + std::to_string(m) +
                         " is damaged or another game's"};
    }
    return {};
}

} // namespace tamarin

bool CFR::save(const std::string& path) {
    return tamarin::writeStrategyFile(path, numMaps(), nodes()).ok();
}

bool CFR::load(const std::string& path) {
    const tamarin::Result<tamarin::MappedFile> file = tamarin::MappedFile::open(path);
    if (!file)
        return false;
    const size_t bytes = sectionBytes(file->bytes(), numMaps());
    if (bytes > mapLimits.fileBytes) {
        using Look = tamarin::MappedStrategy::Look;
        tamarin::Result<tamarin::MappedStrategy> strategy = tamarin::MappedStrategy::open(
            path, numMaps(), bytes > mapLimits.everyKeyBytes ? Look::someKeys : Look::everyKey);
        if (!strategy)
            return false;
        store = std::make_unique<tamarin::MappedStrategy>(std::move(*strategy));
        for (int m = 0; m < numMaps(); ++m)
            nodeMaps[m].clear();
        treeReady = true;
        return true;
    }
    Reader reader(file->bytes());
    for (int m = 0; m < numMaps(); ++m)
        if (!readMap(reader, nodeMaps[m])) {
            if (store) // the nodes are still there
                for (int read = 0; read <= m; ++read)
                    nodeMaps[read].clear();
            return false;
        }
    store.reset();
    treeReady = true;
    return true;
}
