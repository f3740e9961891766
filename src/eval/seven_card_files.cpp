#include "eval/seven_card_files.h"

#include "eval/hand_value.h"
#include "eval/seven_card_table.h"
#include "support/file.h"
#include "support/interrupt.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace tamarin {
namespace {

// Whether the contents are right, given a regular file of the right size; `contents` judges them.
template <class Contents>
Result<TableFileCheck> checkFile(const std::string& path, size_t size, const Contents& contents) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT)
            return TableFileCheck{TableFileState::missing, {}};
        return Error{"cannot look at " + path + ": " + std::strerror(errno)};
    }
    if (!S_ISREG(status.st_mode))
        return Error{path + " is not a regular file; move it away, a table belongs there"};
    if (static_cast<size_t>(status.st_size) != size)
        return TableFileCheck{TableFileState::bad, path + " has " + std::to_string(status.st_size) +
                                                       " bytes, not " + std::to_string(size)};
    const Result<MappedFile> file = MappedFile::open(path, size);
    if (!file)
        return Error{file.error()};
    if (!contents(file->template as<int32_t>()))
        return TableFileCheck{TableFileState::bad, path + " does not rank hands as the rules do"};
    return TableFileCheck{TableFileState::good, {}};
}

// Says what is wrong with a bad file and moves it out of the way. Returns whether to make it anew.
Result<bool> clearTheWay(const std::string& path, const Result<TableFileCheck>& check, bool force) {
    if (!check)
        return Error{check.error()};
    if (check->state == TableFileState::bad) {
        std::fprintf(stderr, "ERROR: %s: rebuilding it\n", check->problem.c_str());
        if (const auto moved = setAsideBadFile(path); !moved)
            return Error{moved.error()};
    }
    return force || check->state != TableFileState::good;
}

} // namespace

Result<TableFileCheck> checkSevenCardFile(const std::string& path) {
    return checkFile(path, sevenCardBytes, [](std::span<const int32_t> entries) {
        return SevenCardTable::staysInside(entries) && SevenCardTable::ranksSampleHands(entries);
    });
}

Result<TableFileCheck> compareSevenCardFile(const std::string& path, const SevenCardTable& right) {
    return checkFile(path, sevenCardBytes, [&](std::span<const int32_t> entries) {
        return std::equal(entries.begin(), entries.end(), right.entries().begin());
    });
}

Result<TableFileCheck> checkDenseRankFile(const std::string& path) {
    return checkFile(path, handValueCount * sizeof(int32_t), [](std::span<const int32_t> entries) {
        const std::vector<int32_t> right = makeDenseRankTable();
        return std::equal(entries.begin(), entries.end(), right.begin(), right.end());
    });
}

Result<SevenCardBuild> buildSevenCardFiles(const std::string& directory, bool force, int threads,
                                           const std::function<void(uint64_t)>& done) {
    if (Status made = makeDirectories(directory); !made)
        return Error{made.error()};
    const std::string table = directory + "/tpt";
    const std::string ranks = directory + "/tpt.indexes";
    const Result<bool> tableNeeded = clearTheWay(table, checkSevenCardFile(table), force);
    if (!tableNeeded)
        return Error{tableNeeded.error()};
    const Result<bool> ranksNeeded = clearTheWay(ranks, checkDenseRankFile(ranks), force);
    if (!ranksNeeded)
        return Error{ranksNeeded.error()};

    SevenCardBuild build;
    if (*tableNeeded) {
        const SevenCardTable made = SevenCardTable::generate(threads, done);
        if (interrupted())
            return Error{"interrupted before " + table + " was written"};
        if (Status saved = made.save(table); !saved)
            return Error{saved.error()};
        build.madeTable = true;
    }
    if (*ranksNeeded) {
        if (Status saved = saveDenseRankTable(ranks); !saved)
            return Error{saved.error()};
        build.madeRanks = true;
    }
    return build;
}

} // namespace tamarin
