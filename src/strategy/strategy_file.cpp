#include "strategy/strategy_file.h"

#include "strategy/strategy_record.h"
#include "support/file.h"

#include <cstring>

namespace {

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

} // namespace tamarin
