#include "directory/manifest.h"

#include "directory/manifest_text.h"
#include "directory/notice.h"
#include "support/file.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <set>
#include <sys/stat.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <xxhash.h>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t largestManifest = size_t{16} << 20U;

std::string asHex(XXH64_hash_t hash) {
    return fmt::format("{:016x}", hash);
}

// Piece by piece, so that the largest file is not in memory whole.
std::string hashOf(const MappedFile& file) {
    constexpr size_t pieceSize = size_t{64} << 20U;
    const std::span<const std::byte> bytes = file.bytes();
    const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> state(XXH3_createState(),
                                                                                XXH3_freeState);
    if (!state)
        throw std::bad_alloc();
    XXH3_64bits_reset(state.get());
    for (size_t at = 0; at < bytes.size(); at += pieceSize) {
        XXH3_64bits_update(state.get(), bytes.data() + at, std::min(pieceSize, bytes.size() - at));
        file.forgetPages();
    }
    return asHex(XXH3_64bits_digest(state.get()));
}

std::string manifestOf(const std::string& directory) {
    return directory + "/manifest.json";
}

struct ReadManifest {
    ManifestState state = ManifestState::absent;
    ManifestText text;
};

// An error for one that cannot be read: what it says, nobody knows.
Result<ReadManifest> readManifest(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT)
            return ReadManifest{};
        return Error{path + ": could not examine: " + std::strerror(errno)};
    }
    const auto text = readWholeFile(path, largestManifest);
    if (!text)
        return Error{text.error()};
    auto parsed = parseManifest(*text);
    if (!parsed)
        return ReadManifest{ManifestState::nonsense, {}};
    return ReadManifest{ManifestState::read, std::move(*parsed)};
}

// For a change: without a manifest nothing, and one that makes no sense is put aside. One that
// cannot be read may be a good one, whatever kept it from being read, and stays.
Result<ManifestText> manifestToChange(const std::string& path) {
    auto manifest = readManifest(path);
    if (!manifest)
        return Error{manifest.error()};
    if (manifest->state == ManifestState::nonsense) {
        const auto aside = setAsideBadFile(path);
        if (!aside)
            return Error{aside.error()};
        complain("{} makes no sense as a manifest: it is kept as {}, and a new one begun", path,
                 *aside);
    }
    return std::move(manifest->text);
}

Status writeManifest(const std::string& path, const ManifestText& manifest) {
    return writeWholeFile(path, printManifest(manifest));
}

Status enter(ManifestText& manifest, const std::string& directory, const ManifestEntry& entry) {
    const auto file = MappedFile::open(directory + '/' + entry.name);
    if (!file)
        return Error{file.error()};
    const std::string now = fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)));
    putRecord(manifest.files, {{"name", entry.name},
                               {"size", file->size()},
                               {"xxh3", hashOf(*file)},
                               {"made", entry.made},
                               {"from", entry.from},
                               {"when", now}});
    removeRecord(manifest.begun, entry.name);
    return {};
}

// The file's last change, in nanoseconds since 1970; the least number where there is no file.
int64_t changeOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return INT64_MIN;
    return int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

// Whether an announced file has been written since.
bool writtenSince(const std::string& directory, const ManifestRecord& begun) {
    return begun.since && changeOf(directory + '/' + begun.name) >= *begun.since;
}

int64_t now() {
    timespec time = {};
    // The clock that stamps files, which ticks more coarsely than others.
    clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

Status enterAnnounced(ManifestText& manifest, const std::string& directory) {
    for (const ManifestRecord& begun : recordsIn(manifest.begun)) {
        if (!writtenSince(directory, begun))
            continue;
        if (Status entered = enter(manifest, directory, {begun.name, begun.made, begun.from});
            !entered)
            return entered;
    }
    manifest.begun = Json::array();
    return {};
}

} // namespace

std::string hashOfText(const std::string& text) {
    return asHex(XXH3_64bits(text.data(), text.size()));
}

Result<std::string> hashOfFile(const std::string& path) {
    const auto file = MappedFile::open(path);
    if (!file)
        return Error{file.error()};
    return hashOf(*file);
}

Status recordFiles(const std::string& directory, const std::vector<ManifestEntry>& entries) {
    const std::string path = manifestOf(directory);
    auto manifest = manifestToChange(path);
    if (!manifest)
        return Error{manifest.error()};
    for (const ManifestEntry& entry : entries)
        if (Status entered = enter(*manifest, directory, entry); !entered)
            return entered;
    return writeManifest(path, *manifest);
}

Status announceFiles(const std::string& directory, const std::vector<ManifestEntry>& entries) {
    const std::string path = manifestOf(directory);
    auto manifest = manifestToChange(path);
    if (!manifest)
        return Error{manifest.error()};
    if (Status entered = enterAnnounced(*manifest, directory); !entered)
        return entered;
    for (const ManifestEntry& entry : entries)
        manifest->begun.push_back(
            {{"name", entry.name}, {"made", entry.made}, {"from", entry.from}, {"since", now()}});
    return writeManifest(path, *manifest);
}

Status recordAnnounced(const std::string& directory) {
    const std::string path = manifestOf(directory);
    auto manifest = manifestToChange(path);
    if (!manifest)
        return Error{manifest.error()};
    if (manifest->begun.empty())
        return {};
    if (Status entered = enterAnnounced(*manifest, directory); !entered)
        return entered;
    return writeManifest(path, *manifest);
}

const ManifestComparison::Good* ManifestComparison::find(const std::string& name) const {
    const auto at =
        std::find_if(good.begin(), good.end(), [&](const Good& file) { return file.name == name; });
    return at != good.end() ? &*at : nullptr;
}

Result<ManifestComparison>
compareWithManifest(const std::string& directory,
                    const std::function<bool(const std::string&)>& wanted) {
    const auto manifest = readManifest(manifestOf(directory));
    if (!manifest)
        return Error{manifest.error()};
    ManifestComparison comparison;
    comparison.state = manifest->state;
    std::set<std::string> notEntered;
    for (const ManifestRecord& begun : recordsIn(manifest->text.begun))
        if (writtenSince(directory, begun))
            notEntered.insert(begun.name);
    for (const ManifestRecord& record : recordsIn(manifest->text.files)) {
        const std::string file = directory + '/' + record.name;
        struct stat status = {};
        if ((wanted && !wanted(record.name)) || notEntered.contains(record.name) ||
            stat(file.c_str(), &status) != 0)
            continue;
        const auto differs = [&](const std::string& problem, bool unread = false) {
            comparison.differences.push_back({record.name, problem, unread});
        };
        if (record.size && static_cast<uint64_t>(status.st_size) != *record.size) {
            differs(fmt::format("it has {} bytes, not {} as in the manifest", status.st_size,
                                *record.size));
            continue;
        }
        const auto hash = hashOfFile(file);
        if (!hash)
            differs("cannot be read: " + hash.error(), true);
        else if (*hash != record.hash)
            differs(fmt::format("its hash is {}, not {} as in the manifest", *hash, record.hash));
        else
            comparison.good.push_back({record.name, record.from});
    }
    return comparison;
}

} // namespace tamarin
