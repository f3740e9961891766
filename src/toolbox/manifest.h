// What lies in a directory of generated files, and how it came there.
//
// DIR/manifest.json: {"files": [{"name", "size", "xxh3", "made", "from", "when"}, ...]}, one entry
// a file: its bytes, their 64-bit XXH3 hash in hexadecimal, the command that made it, what from,
// and the time in UTC. Nothing needs it in order to play.
#pragma once

#include "support/result.h"

#include <string>
#include <vector>

namespace tamarin {

struct ManifestEntry {
    std::string name; // within the directory
    std::string made; // how, in words
    std::string from; // what it was made from
};

// Adds or replaces the entries, taking sizes and hashes from the files. A manifest that cannot be
// read is replaced.
Status recordFiles(const std::string& directory, const std::vector<ManifestEntry>& entries);

// What differs from the manifest, a line each; the names of the files that do not differ go to
// good. Files that are not there any more are left out. An error when there is no manifest.
Result<std::vector<std::string>> compareWithManifest(const std::string& directory,
                                                     std::vector<std::string>& good);

// The XXH3 hash of a file's bytes, 16 hexadecimal digits.
Result<std::string> hashOfFile(const std::string& path);

} // namespace tamarin
