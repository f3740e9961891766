#include "toolbox/manifest.h"

#include "support/file.h"
#include "support/util.h"

#include <algorithm>
#include <ctime>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t largestManifest = size_t{16} << 20U;

std::string hashOf(std::span<const std::byte> bytes) {
    return fmt::format("{:016x}", XXH3_64bits(bytes.data(), bytes.size()));
}

// The manifest's files, or none when there is no manifest that makes sense.
Json filesIn(const std::string& path) {
    const auto text = readWholeFile(path, largestManifest);
    if (!text)
        return Json::array();
    const Json manifest = Json::parse(*text, nullptr, false);
    if (!manifest.is_object() || !manifest.contains("files") || !manifest["files"].is_array())
        return Json::array();
    return manifest["files"];
}

} // namespace

Result<std::string> hashOfFile(const std::string& path) {
    const auto file = MappedFile::open(path);
    if (!file)
        return Error{file.error()};
    return hashOf(file->bytes());
}

Status recordFiles(const std::string& directory, const std::vector<ManifestEntry>& entries) {
    const std::string path = directory + "/manifest.json";
    Json files = filesIn(path);
    const std::string now = fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)));
    for (const ManifestEntry& entry : entries) {
        const auto file = MappedFile::open(directory + '/' + entry.name);
        if (!file)
            return Error{file.error()};
        const Json record = {
            {"name", entry.name}, {"size", file->size()}, {"xxh3", hashOf(file->bytes())},
            {"made", entry.made}, {"from", entry.from},   {"when", now}};
        const auto old = std::find_if(files.begin(), files.end(), [&](const Json& other) {
            return other.is_object() && other.value("name", "") == entry.name;
        });
        if (old == files.end())
            files.push_back(record);
        else
            *old = record;
    }
    return writeWholeFile(path, Json{{"files", files}}.dump(2) + '\n');
}

Result<std::vector<std::string>> compareWithManifest(const std::string& directory,
                                                     std::vector<std::string>& good) {
    const std::string path = directory + "/manifest.json";
    if (!file_exist(path))
        return Error{"there is no " + path};
    std::vector<std::string> differences;
    for (const Json& record : filesIn(path)) {
        const std::string name = record.is_object() ? record.value("name", "") : "";
        const std::string file = directory + '/' + name;
        if (name.empty() || !file_exist(file))
            continue;
        const auto hash = hashOfFile(file);
        const std::string wanted = record.value("xxh3", "");
        if (!hash)
            differences.push_back(hash.error());
        else if (*hash != wanted)
            differences.push_back(file + ": its hash is " + *hash + ", not " + wanted +
                                  " as in the manifest");
        else
            good.push_back(name);
    }
    return differences;
}

} // namespace tamarin
