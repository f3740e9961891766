#include "directory/manifest_text.h"

#include "directory/json.h"

#include <algorithm>
#include <set>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

// A member's text; empty where there is no such text.
std::string textOf(const Json& record, const char* member) {
    const auto at = record.is_object() ? record.find(member) : record.end();
    return at != record.end() && at->is_string() ? at->get<std::string>() : "";
}

// A member that is a whole number of this type.
template <class Number>
std::optional<Number> numberOf(const Json& record, const char* member) {
    const auto at = record.find(member);
    if (at == record.end() || !at->is_number_integer())
        return std::nullopt;
    const bool fits = at->is_number_unsigned() ? std::in_range<Number>(at->template get<uint64_t>())
                                               : std::in_range<Number>(at->template get<int64_t>());
    return fits ? std::optional(at->template get<Number>()) : std::nullopt;
}

// Within the directory, and not above or below it.
bool namesFile(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string("/\0", 2)) == std::string::npos;
}

bool hasName(const Json& record, const std::string& name) {
    return textOf(record, "name") == name;
}

} // namespace

Result<ManifestText> parseManifest(const std::string& text) {
    const Json manifest = readJson(text);
    if (!manifest.is_object() || !manifest.contains("files") || !manifest["files"].is_array())
        return Error{"is no manifest"};
    ManifestText parsed{manifest["files"], Json::array()};
    if (manifest.contains("begun") && manifest["begun"].is_array())
        parsed.begun = manifest["begun"];
    return parsed;
}

std::string printManifest(const ManifestText& manifest) {
    Json whole = {{"files", manifest.files}};
    if (!manifest.begun.empty())
        whole["begun"] = manifest.begun;
    return jsonText(whole) + '\n';
}

std::vector<ManifestRecord> recordsIn(const Json& list) {
    std::vector<ManifestRecord> records;
    std::set<std::string> seen;
    for (const Json& record : list) {
        const std::string name = textOf(record, "name");
        if (!namesFile(name) || !seen.insert(name).second)
            continue;
        records.push_back({name, numberOf<uint64_t>(record, "size"), textOf(record, "xxh3"),
                           textOf(record, "made"), textOf(record, "from"),
                           numberOf<int64_t>(record, "since")});
    }
    return records;
}

void removeRecord(Json& list, const std::string& name) {
    for (auto at = list.begin(); at != list.end();)
        at = hasName(*at, name) ? list.erase(at) : at + 1;
}

void putRecord(Json& list, const Json& record) {
    const std::string name = textOf(record, "name");
    const auto old = std::find_if(list.begin(), list.end(),
                                  [&](const Json& other) { return hasName(other, name); });
    if (old != list.end())
        *old = record;
    else
        list.push_back(record);
}

} // namespace tamarin
