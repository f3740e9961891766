// Clusters and hold'em buckets: levels of what the equity and utility files hold.
//
// The tables of a round are made side by side, a part of all of them at a time, so that every
// source is gone through once for its range and once more for its levels.

#include "abstraction/quantise.h"
#include "abstraction/round_indexers.h"
#include "abstraction/table_names.h"
#include "support/background_commits.h"
#include "support/parallel_errors.h"
#include "support/util.h"
#include "table_builder/build_steps.h"
#include "table_builder/table_parts.h"

#include <algorithm>
#include <map>

namespace tamarin {

namespace {

// A table of doubles and its range.
struct Source {
    MappedFile file;
    TableRange range;
};

// The sources of a round by path, each opened once.
class Sources {
public:
    Sources(const BuildOptions& options, const Work& work, uint64_t hands)
        : options_(options), work_(work), hands_(hands) {}

    Result<const Source*> at(const std::string& path) {
        auto known = sources_.find(path);
        if (known == sources_.end()) {
            auto file =
                MappedFile::open(inDirectory(options_.directory, path), hands_ * sizeof(double));
            if (!file)
                return Error{file.error()};
            const TableRange range = rangeOfFile(*file, work_.threads);
            known = sources_.emplace(path, Source{std::move(*file), range}).first;
        }
        return &known->second;
    }

    void forgetPages() const {
        for (const auto& [path, source] : sources_)
            source.file.forgetPages();
    }

private:
    const BuildOptions& options_;
    const Work& work_;
    uint64_t hands_;
    std::map<std::string, Source> sources_;
};

// Levels of one or two sources, and the files that hold them.
struct Quantised {
    const Source* equities;
    const Source* utilities; // none for clusters
    std::vector<AtomicFile> files;
    std::vector<uint8_t> part{};
};

void makePart(Quantised& table, size_t begin, size_t count, int threads) {
    table.part.resize(count);
    const Source& equities = *table.equities;
    const auto equityPart = equities.file.as<double>().subspan(begin, count);
    if (table.utilities == nullptr)
        clustersOf(equityPart, equities.range, table.part.data(), threads);
    else
        holdemBucketsOf(table.utilities->file.as<double>().subspan(begin, count),
                        table.utilities->range, equityPart, equities.range, table.part.data(),
                        threads);
}

// Writes the tables of a round, all of so many hands.
Status writeTables(const Work& work, const Sources& sources, uint64_t hands,
                   std::vector<Quantised>& tables, BackgroundCommits& commits) {
    if (tables.empty())
        return {};
    Status status;
    inParts(hands, [&](size_t begin, size_t count) {
        if (!status)
            return;
        if (work.shouldStop()) {
            status = stopped();
            return;
        }
        for (Quantised& table : tables)
            makePart(table, begin, count, work.threads);
        sources.forgetPages();
        std::vector<Status> written(tables.size());
        ParallelErrors errors;
#pragma omp parallel for schedule(dynamic, 1) num_threads(work.threadCount())
        for (size_t t = 0; t < tables.size(); ++t)
            errors.run([&] {
                for (AtomicFile& file : tables[t].files)
                    if (written[t])
                        written[t] = file.write(tables[t].part.data(), count);
            });
        errors.rethrow();
        for (Status& ofTable : written)
            if (!ofTable && status)
                status = std::move(ofTable);
    });
    if (!status)
        return status;
    for (Quantised& table : tables)
        for (AtomicFile& file : table.files)
            commits.add(std::move(file));
    return {};
}

// Adds the file to the table that it holds. Seats that share their utilities have the same table.
Status addTable(const BuildOptions& options, const TableFile& file, Sources& sources,
                std::vector<Quantised>& tables) {
    const auto equities = sources.at(equityPath(file.players, file.round));
    if (!equities)
        return Error{equities.error()};
    const Source* utilities = nullptr;
    if (file.group == TableGroup::holdem) {
        const auto opened = sources.at(utilityPath(2, file.round, utilitySeatOf(file.seat)));
        if (!opened)
            return Error{opened.error()};
        utilities = *opened;
    }
    auto table = std::find_if(tables.begin(), tables.end(), [&](const Quantised& known) {
        return known.equities == *equities && known.utilities == utilities;
    });
    if (table == tables.end())
        table = tables.insert(table, Quantised{*equities, utilities, {}});
    auto output = AtomicFile::create(inDirectory(options.directory, file.path));
    if (!output)
        return Error{output.error()};
    table->files.push_back(std::move(*output));
    return {};
}

Status buildRounds(const BuildOptions& options, const Work& work, const Files& files,
                   const char* step) {
    BackgroundCommits commits;
    const Work steps = reporting(options, work, step);
    size_t done = 0;
    for (int round = holdemRounds; round-- > 0;) { // the longest first
        const uint64_t hands = roundSizes[static_cast<size_t>(round)];
        Sources sources(options, work, hands);
        std::vector<Quantised> tables;
        steps.report(done, files.size());
        if (work.shouldStop())
            return stopped();
        for (const TableFile* file : files) {
            if (file->round != round)
                continue;
            if (Status added = addTable(options, *file, sources, tables); !added)
                return added;
            ++done;
        }
        if (Status written = writeTables(work, sources, hands, tables, commits); !written)
            return written;
    }
    steps.report(done, files.size());
    return commits.wait();
}

} // namespace

Status buildClusters(const BuildOptions& options, const Work& work, const Files& files) {
    return buildRounds(options, work, files, "Cutting equities into clusters");
}

Status buildHoldem(const BuildOptions& options, const Work& work, const Files& files) {
    return buildRounds(options, work, files, "Making hold'em buckets");
}

} // namespace tamarin
