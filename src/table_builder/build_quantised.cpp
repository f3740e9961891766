// Clusters and hold'em buckets: levels of what the equity and utility files hold.

#include "abstraction/large_buffer.h"
#include "abstraction/quantise.h"
#include "abstraction/table_names.h"
#include "support/file.h"
#include "support/util.h"
#include "table_builder/build_steps.h"
#include "table_builder/table_parts.h"

#include <map>

namespace tamarin {

namespace {

// A table of doubles and its range.
struct Source {
    MappedFile file;
    TableRange range;
};

Result<Source> openSource(const BuildOptions& options, const Work& work, const std::string& path,
                          uint64_t hands) {
    auto file = MappedFile::open(inDirectory(options.directory, path), hands * sizeof(double));
    if (!file)
        return Error{file.error()};
    const TableRange range = rangeOfFile(*file, work.threads);
    return Source{std::move(*file), range};
}

Status saveBytes(const BuildOptions& options, const TableFile& file,
                 const LargeBuffer<uint8_t>& bytes) {
    return saveTable(inDirectory(options.directory, file.path).c_str(), bytes.data(), file.bytes);
}

void report(const BuildOptions& options, const char* step, uint64_t done, size_t total) {
    if (options.progress)
        options.progress(step, done, total);
}

} // namespace

Status buildClusters(const BuildOptions& options, const Work& work, const Files& files) {
    for (size_t i = 0; i < files.size(); ++i) {
        const TableFile& file = *files[i];
        report(options, "Cutting equities into clusters", i, files.size());
        if (work.shouldStop())
            return stopped();
        auto equities = openSource(options, work, equityPath(file.players, file.round), file.bytes);
        auto clusters = LargeBuffer<uint8_t>::take(file.bytes, "clusters");
        if (!equities)
            return Error{equities.error()};
        if (!clusters)
            return Error{clusters.error()};
        inParts(file.bytes, [&](size_t begin, size_t count) {
            clustersOf(equities->file.as<double>().subspan(begin, count), equities->range,
                       clusters->data() + begin, work.threads);
            equities->file.forgetPages();
        });
        if (Status saved = saveBytes(options, file, *clusters); !saved)
            return saved;
        report(options, "Cutting equities into clusters", i + 1, files.size());
    }
    return {};
}

Status buildHoldem(const BuildOptions& options, const Work& work, const Files& files) {
    // A round's utilities serve several tables: their ranges are found once.
    std::map<std::string, Source> sources;
    const auto sourceAt = [&](const std::string& path, uint64_t hands) -> Result<const Source*> {
        auto at = sources.find(path);
        if (at == sources.end()) {
            auto source = openSource(options, work, path, hands);
            if (!source)
                return Error{source.error()};
            at = sources.emplace(path, std::move(*source)).first;
        }
        return &at->second;
    };
    size_t done = 0;
    for (int round = 0; round < 4; ++round) {
        sources.clear();
        for (const TableFile* file : files) {
            if (file->round != round)
                continue;
            report(options, "Making hold'em buckets", done, files.size());
            if (work.shouldStop())
                return stopped();
            const auto utilities =
                sourceAt(utilityPath(2, round, utilitySeatOf(file->seat)), file->bytes);
            const auto equities = sourceAt(equityPath(file->players, round), file->bytes);
            auto buckets = LargeBuffer<uint8_t>::take(file->bytes, "hold'em buckets");
            if (!utilities)
                return Error{utilities.error()};
            if (!equities)
                return Error{equities.error()};
            if (!buckets)
                return Error{buckets.error()};
            const MappedFile& utilityFile = (*utilities)->file;
            const MappedFile& equityFile = (*equities)->file;
            inParts(file->bytes, [&](size_t begin, size_t count) {
                holdemBucketsOf(utilityFile.as<double>().subspan(begin, count), (*utilities)->range,
                                equityFile.as<double>().subspan(begin, count), (*equities)->range,
                                buckets->data() + begin, work.threads);
                utilityFile.forgetPages();
                equityFile.forgetPages();
            });
            if (Status saved = saveBytes(options, *file, *buckets); !saved)
                return saved;
            report(options, "Making hold'em buckets", ++done, files.size());
        }
    }
    return {};
}

} // namespace tamarin
