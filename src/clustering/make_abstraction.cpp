#include "clustering/make_abstraction.h"

#include "clustering/abstraction_run.h"
#include "clustering/card_abstraction.h"
#include "support/file.h"
#include "support/lock.h"

#include <cerrno>
#include <cstring>

namespace tamarin {

namespace {

bool isThere(const std::string& path) {
    struct stat status {};
    return systemFiles().stat(path.c_str(), &status) == 0;
}

Status removeFile(const std::string& path) {
    if (systemFiles().unlink(path.c_str()) != 0 && errno != ENOENT)
        return Error{path + ": cannot be removed: " + std::strerror(errno)};
    return {};
}

void log(const MakeOptions& options, const std::string& line) {
    if (options.log)
        options.log(line);
}

// What is there already is the answer, is refused, or (with no value) is to be made.
struct Found {
    bool whole = false;
    AbstractionDescription description;
};
Result<Found> lookForWhole(const MakeOptions& options, const std::string& folder) {
    const std::string path = folder + "/" + descriptionFileName;
    if (options.force || !isThere(path))
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
    if (options.force || !isThere(path))
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
    if (Status removed = removeFile(folder + "/" + unfinishedFileName); !removed)
        return Error{removed.error()};
    return result;
}

} // namespace

Result<MadeAbstraction> makeAbstraction(const MakeOptions& options) {
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
    if (found->whole)
        return MadeAbstraction{folder, false, std::move(found->description), {}};
    return make(options, folder);
}

} // namespace tamarin
