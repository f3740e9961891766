#include "toolbox/manifest.h"

#include "support/file.h"
#include "support/util.h"
#include "toolbox/command.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <memory>
#include <new>
#include <sys/stat.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
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
    const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> state(
        XXH3_createState(), XXH3_freeState);
    if (!state)
        throw std::bad_alloc();
    XXH3_64bits_reset(state.get());
    for (size_t at = 0; at < bytes.size(); at += pieceSize) {
        XXH3_64bits_update(state.get(), bytes.data() + at, std::min(pieceSize, bytes.size() - at));
        file.forgetPages();
    }
    return asHex(XXH3_64bits_digest(state.get()));
}

struct Contents {
    Json files = Json::array();
    Json begun = Json::array();
};

std::string manifestOf(const std::string& directory) {
    return directory + "/manifest.json";
}

// A member's text; empty where there is no such text.
std::string textOf(const Json& record, const char* member) {
    const auto at = record.is_object() ? record.find(member) : record.end();
    return at != record.end() && at->is_string() ? at->get<std::string>() : "";
}

// An error for a manifest that is there and makes no sense.
Result<Contents> readManifest(const std::string& path) {
    const auto text = readWholeFile(path, largestManifest);
    if (!text)
        return Error{text.error()};
    const Json manifest = Json::parse(*text, nullptr, false);
    if (!manifest.is_object() || !manifest.contains("files") || !manifest["files"].is_array())
        return Error{path + " is no manifest: delete it"};
    Contents contents{manifest["files"], Json::array()};
    if (manifest.contains("begun") && manifest["begun"].is_array())
        contents.begun = manifest["begun"];
    return contents;
}

// For a change: without a manifest nothing, and one that makes no sense is put aside.
Result<Contents> contentsToChange(const std::string& path) {
    if (!file_exist(path))
        return Contents{};
    auto contents = readManifest(path);
    if (contents)
        return contents;
    if (const auto aside = setAsideBadFile(path); !aside)
        return Error{aside.error()};
    complain("{} could not be read as a manifest: it is kept as {}.bad, and a new one begun", path,
             path);
    return Contents{};
}

Status writeManifest(const std::string& path, const Contents& contents) {
    Json manifest = {{"files", contents.files}};
    if (!contents.begun.empty())
        manifest["begun"] = contents.begun;
    return writeWholeFile(path, manifest.dump(2) + '\n');
}

Json::iterator find(Json& records, const std::string& name) {
    return std::find_if(records.begin(), records.end(),
                        [&](const Json& record) { return textOf(record, "name") == name; });
}

Status enter(Contents& contents, const std::string& directory, const ManifestEntry& entry) {
    const auto file = MappedFile::open(directory + '/' + entry.name);
    if (!file)
        return Error{file.error()};
    const std::string now = fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)));
    const Json record = {{"name", entry.name}, {"size", file->size()}, {"xxh3", hashOf(*file)},
                         {"made", entry.made}, {"from", entry.from},   {"when", now}};
    if (const auto old = find(contents.files, entry.name); old != contents.files.end())
        *old = record;
    else
        contents.files.push_back(record);
    if (const auto begun = find(contents.begun, entry.name); begun != contents.begun.end())
        contents.begun.erase(begun);
    return {};
}

// The file's last change, in nanoseconds since 1970; the least number where there is no file.
int64_t changeOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return INT64_MIN;
    return int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

int64_t now() {
    timespec time = {};
    // The clock that stamps files, which ticks more coarsely than others.
    clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

Status enterAnnounced(Contents& contents, const std::string& directory) {
    for (const Json& begun : Json(contents.begun)) {
        const ManifestEntry entry{textOf(begun, "name"), textOf(begun, "made"),
                                  textOf(begun, "from")};
        if (entry.name.empty() || !begun.contains("since") || !begun["since"].is_number_integer() ||
            changeOf(directory + '/' + entry.name) < begun["since"].get<int64_t>())
            continue;
        if (Status entered = enter(contents, directory, entry); !entered)
            return entered;
    }
    contents.begun = Json::array();
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
    auto contents = contentsToChange(path);
    if (!contents)
        return Error{contents.error()};
    for (const ManifestEntry& entry : entries)
        if (Status entered = enter(*contents, directory, entry); !entered)
            return entered;
    return writeManifest(path, *contents);
}

Status announceFiles(const std::string& directory, const std::vector<ManifestEntry>& entries) {
    const std::string path = manifestOf(directory);
    auto contents = contentsToChange(path);
    if (!contents)
        return Error{contents.error()};
    if (Status entered = enterAnnounced(*contents, directory); !entered)
        return entered;
    for (const ManifestEntry& entry : entries)
        contents->begun.push_back(
            {{"name", entry.name}, {"made", entry.made}, {"from", entry.from}, {"since", now()}});
    return writeManifest(path, *contents);
}

Status recordAnnounced(const std::string& directory) {
    const std::string path = manifestOf(directory);
    auto contents = contentsToChange(path);
    if (!contents)
        return Error{contents.error()};
    if (contents->begun.empty())
        return {};
    if (Status entered = enterAnnounced(*contents, directory); !entered)
        return entered;
    return writeManifest(path, *contents);
}

std::string recordedSource(const std::string& directory, const std::string& name) {
    auto contents = readManifest(manifestOf(directory));
    if (!contents)
        return "";
    const auto record = find(contents->files, name);
    return record != contents->files.end() ? textOf(*record, "from") : "";
}

Result<std::vector<Difference>>
compareWithManifest(const std::string& directory, std::vector<std::string>& good,
                    const std::function<bool(const std::string&)>& wanted) {
    const std::string path = manifestOf(directory);
    if (!file_exist(path))
        return Error{"there is no " + path};
    const auto contents = readManifest(path);
    if (!contents)
        return Error{contents.error()};
    std::vector<Difference> differences;
    for (const Json& record : contents->files) {
        const std::string name = textOf(record, "name");
        const std::string file = directory + '/' + name;
        if (name.empty() || (wanted && !wanted(name)) || !file_exist(file))
            continue;
        struct stat status = {};
        const auto size = record.find("size");
        if (size != record.end() && size->is_number_unsigned() &&
            stat(file.c_str(), &status) == 0 &&
            static_cast<uint64_t>(status.st_size) != size->get<uint64_t>()) {
            differences.push_back({name, fmt::format("it has {} bytes, not {} as in the manifest",
                                                     status.st_size, size->get<uint64_t>())});
            continue;
        }
        const auto hash = hashOfFile(file);
        const std::string recorded = textOf(record, "xxh3");
        if (!hash)
            differences.push_back({name, "cannot be read: " + hash.error()});
        else if (*hash != recorded)
            differences.push_back(
                {name, fmt::format("its hash is {}, not {} as in the manifest", *hash, recorded)});
        else
            good.push_back(name);
    }
    return differences;
}

} // namespace tamarin
