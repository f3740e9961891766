// Any bytes as a manifest: what is read is printed and read again, and its records may name files
// of their own directory only.
#include "directory/manifest_text.h"
#include "fuzz/fuzz.h"

#include <set>
#include <string>

using namespace tamarin;

namespace {

void lookAt(const nlohmann::ordered_json& list) {
    std::set<std::string> names;
    for (const ManifestRecord& record : recordsIn(list)) {
        expect(!record.name.empty() && record.name != "." && record.name != ".." &&
                   record.name.find('/') == std::string::npos,
               "a record names a file of the directory");
        expect(names.insert(record.name).second, "a file has one record");
    }
}

// What is done when the file of that name has been made.
void enter(ManifestText& manifest, const std::string& name) {
    putRecord(manifest.files, {{"name", name}, {"size", 3}, {"xxh3", "0"}, {"from", "\xff"}});
    removeRecord(manifest.begun, name);
    size_t found = 0;
    for (const ManifestRecord& record : recordsIn(manifest.files))
        found += record.name == name && record.size == 3U && record.hash == "0";
    expect(found == 1, "an entered file is found");
    for (const ManifestRecord& record : recordsIn(manifest.begun))
        expect(record.name != name, "an entered file is no longer announced");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto manifest = parseManifest(std::string(reinterpret_cast<const char*>(data), size));
    if (!manifest) {
        expect(manifest.error() == "is no manifest", "a refusal has its reason");
        return 0;
    }
    lookAt(manifest->files);
    lookAt(manifest->begun);
    const std::string printed = printManifest(*manifest);
    const auto again = parseManifest(printed);
    expect(again.ok(), "what was printed can be read");
    expect(printManifest(*again) == printed, "and says the same");
    enter(*manifest, "table");
    for (const ManifestRecord& record : recordsIn(manifest->begun))
        enter(*manifest, record.name);
    expect(parseManifest(printManifest(*manifest)).ok(), "so does what was entered");
    return 0;
}
