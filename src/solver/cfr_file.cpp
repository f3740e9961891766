// A solver's strategy file.

#include "solver/cfr.h"
#include "strategy/mapped_strategy.h"
#include "strategy/strategy_file.h"
#include "strategy/strategy_record.h"
#include "support/file.h"

#include <cstring>

namespace {

using tamarin::StrategyCount;
using tamarin::StrategyRecord;

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
        at->second = new CFRNode(tamarin::nodeOf(record));
    }
    return true;
}

} // namespace

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
