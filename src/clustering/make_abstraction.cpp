#include "clustering/make_abstraction.h"

#include "clustering/abstraction_run.h"
#include "clustering/card_abstraction.h"
#include "clustering/deck_samples.h"
#include "support/file.h"
#include "support/lock.h"
#include "support/util.h"

#include <cerrno>
#include <cstring>

namespace tamarin {

namespace {

Status checkOptions(const MakeOptions& made) {
    if (const auto counts = readBucketCounts(abstractionName(made.counts, AbstractionMethod::emd));
        !counts)
        return Error{counts.error()};
    const AbstractionOptions& options = made.options;
    if (static_cast<size_t>(options.method) >= methodNames.size())
        return Error{"there is no such method of making a card abstraction"};
    if (options.clusters == 0 || options.clusters > strengthWidth)
        return Error{"a card abstraction takes 1 to " + std::to_string(strengthWidth) +
                     " clusters of starting hands, not " + std::to_string(options.clusters)};
    if (options.sample > mostSample)
        return Error{"a card abstraction takes a sample of at most " + std::to_string(mostSample) +
                     " hands, not " + std::to_string(options.sample)};
    if (options.restarts == 0 || options.iterations == 0 || options.tolerance == 0)
        return Error{"a card abstraction takes at least 1 restart, 1 iteration and a tolerance of "
                     "one part in 1"};
    return {};
}

Status removeFile(const std::string& path) {
    if (systemFiles().unlink(path.c_str()) != 0 && errno != ENOENT)
        return Error{path + ": cannot be removed: " + std::strerror(errno)};
    return {};
}

Status removeUnfinished(const std::string& folder) {
    return removeFile(folder + "/" + unfinishedFileName);
}

void log(const MakeOptions& options, const std::string& line) {
    if (options.log)
        options.log(line);
}

// What is there already is the answer or is refused; where nothing is, it is to be made.
struct Found {
    bool whole = false; // and described below
    AbstractionDescription description;
};
Result<Found> lookForWhole(const MakeOptions& options, const std::string& folder) {
    const std::string path = folder + "/" + descriptionFileName;
    if (options.force || !file_exist(path))
        return Found{};
    auto opened = CardAbstraction::open(options.directory, options.nameOrOwn());
    if (!opened)
        return Error{opened.error() + "; --force makes it anew"};
    const AbstractionDescription& there = opened->description();
    const std::string difference =
        differenceOf(there.options, there.counts(), options.options, options.counts);
    if (!difference.empty())
        return Error{folder + ": made with other options: " + difference +
                     "; choose another name with --name, or make it anew with --force"};
    return Found{true, there};
}

// Rounds whose files are no longer what they were are made again.
void checkRounds(const MakeOptions& options, const std::string& folder, Unfinished& state) {
    for (size_t round = 0; round < state.rounds.size(); ++round) {
        RoundDescription& description = state.rounds[round];
        if (description.buckets == 0)
            continue;
        const std::string path = folder + "/" + bucketFileNames[round];
        const auto mapped = MappedFile::open(path, roundSizes[round] * sizeof(uint16_t));
        if (mapped && bucketChecksum(mapped->as<uint16_t>()) == description.checksum)
            continue;
        log(options, path + " is not as it was left; making it again");
        description = {};
    }
}

Result<Unfinished> lookForUnfinished(const MakeOptions& options, const std::string& folder) {
    const std::string path = folder + "/" + unfinishedFileName;
    Unfinished fresh;
    fresh.options = options.options;
    fresh.counts = options.counts;
    if (options.force || !file_exist(path))
        return fresh;
    auto read = readUnfinished(path);
    if (!read) {
        const auto aside = setAsideBadFile(path);
        if (!aside)
            return Error{aside.error()};
        log(options, read.error() + "; kept as " + *aside + ", beginning anew");
        return fresh;
    }
    const std::string difference =
        differenceOf(read->options, read->counts, options.options, options.counts);
    if (!difference.empty())
        return Error{folder + ": begun with other options: " + difference +
                     "; choose another name with --name, or begin anew with --force"};
    checkRounds(options, folder, *read);
    return read;
}

Result<MadeAbstraction> make(const MakeOptions& options, const std::string& folder) {
    auto state = lookForUnfinished(options, folder);
    if (!state)
        return Error{state.error()};
    const std::string description = folder + "/" + descriptionFileName;
    // Files of two makings together are no abstraction: what said that they are one goes first.
    if (Status removed = removeFile(description); !removed)
        return Error{removed.error()};
    AbstractionRun run(options, folder, std::move(*state));
    if (Status saved = run.save(); !saved)
        return Error{saved.error()};
    const Status made = options.options.method == AbstractionMethod::percentile
                            ? makeByPercentile(run)
                            : makeByDistance(run);
    if (!made)
        return Error{made.error()};
    MadeAbstraction result{folder, true, {}, std::move(run.steps)};
    result.description = {options.options, run.state.rounds, run.state.startingHandClusters};
    if (Status written = writeDescription(description, result.description); !written)
        return Error{written.error()};
    if (Status removed = removeUnfinished(folder); !removed)
        return Error{removed.error()};
    return result;
}

} // namespace

uint64_t MakeOptions::sampleOf(size_t round) const {
    return options.sample != 0 ? options.sample : defaultSample(counts[round]);
}

Result<MadeAbstraction> makeAbstraction(const MakeOptions& asked) {
    if (const Status good = checkOptions(asked); !good)
        return Error{good.error()};
    MakeOptions options = asked;
    options.options = asked.options.normalised();
    const std::string name = options.nameOrOwn();
    if (const Status good = checkAbstractionName(name); !good)
        return Error{good.error()};
    const std::string folder = abstractionFolder(options.directory, name);
    if (const Status made = makeDirectories(folder); !made)
        return Error{made.error()};
    const auto lock = FileLock::take(folder + "/.lock");
    if (!lock)
        return Error{lock.error()};
    auto found = lookForWhole(options, folder);
    if (!found)
        return Error{found.error()};
    if (!found->whole)
        return make(options, folder);
    // A making that was killed in its last moment leaves its state beside what it made.
    if (Status removed = removeUnfinished(folder); !removed)
        return Error{removed.error()};
    return MadeAbstraction{folder, false, std::move(found->description), {}};
}

} // namespace tamarin
