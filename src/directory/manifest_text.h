// The text of a manifest, apart from the files that it speaks of (manifest.h says what they mean).
#pragma once

#include "support/result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

// As it was read: entries that make no sense stay where they are.
struct ManifestText {
    nlohmann::ordered_json files = nlohmann::ordered_json::array();
    nlohmann::ordered_json begun = nlohmann::ordered_json::array();
};

// Takes any bytes; the error is "is no manifest".
Result<ManifestText> parseManifest(const std::string& text);
std::string printManifest(const ManifestText& manifest);

// What it says of a file that is there, or that was announced. A field is empty or absent when the
// manifest lacks it or holds something else in its place.
struct ManifestRecord {
    std::string name;
    std::optional<uint64_t> size;
    std::string hash;
    std::string made;
    std::string from;
    std::optional<int64_t> since; // of an announced one, in nanoseconds since 1970
};

// The records that name a file, in order: a name of one component, and of two records with the same
// name the first.
std::vector<ManifestRecord> recordsIn(const nlohmann::ordered_json& list);

// Removes all records of that name.
void removeRecord(nlohmann::ordered_json& list, const std::string& name);

// Puts the record in the place of the first of its name, or at the end.
void putRecord(nlohmann::ordered_json& list, const nlohmann::ordered_json& record);

} // namespace tamarin
