// What lies in a directory of generated files, and how it came there.
//
// DIR/manifest.json: {"files": [{"name", "size", "xxh3", "made", "from", "when"}, ...]}, one entry
// a file: its bytes, their 64-bit XXH3 hash in hexadecimal, the command that made it, what from,
// and the time in UTC. Nothing needs it in order to play.
//
// A file appears before it can be entered here, and a kill may fall between the two. So long work
// announces its files first, as "begun": [{"name", "made", "from", "since"}, ...] with the time in
// nanoseconds since 1970, and the next run enters those that have been written since.
//
// A change reads the file, edits it and writes it back: callers lock the directory where two might
// do so at once.
#pragma once

#include "support/result.h"

#include <functional>
#include <string>
#include <vector>

namespace tamarin {

struct ManifestEntry {
    std::string name; // within the directory
    std::string made; // how, in words
    std::string from; // what it was made from
};

// Adds or replaces the entries, taking sizes and hashes from the files, and takes them off the
// announced ones. A manifest that makes no sense is kept as manifest.json.bad, with a line on
// standard error, and a new one is begun; one that cannot be read is left alone and is an error.
// The next two functions treat a manifest in the same way.
Status recordFiles(const std::string& directory, const std::vector<ManifestEntry>& entries);

// Says that these files are about to be made; first records what was announced before.
Status announceFiles(const std::string& directory, const std::vector<ManifestEntry>& entries);

// Records the announced files that have been written since and forgets the others. A missing
// manifest is not an error.
Status recordAnnounced(const std::string& directory);

enum class ManifestState { absent, nonsense, read };

struct ManifestComparison {
    struct Difference {
        std::string name;    // of the file
        std::string problem; // "its hash is 0123456789abcdef, not ... as in the manifest"
        bool unread = false; // the file could not be read, so it may be right
    };
    struct Good {
        std::string name;
        std::string from; // what it was made from, as it was entered
    };
    ManifestState state = ManifestState::absent;
    std::vector<Difference> differences;
    std::vector<Good> good;

    // A good one; null where that file is not among them.
    const Good* find(const std::string& name) const;
};

// What differs from the manifest and what does not; files that are not there any more, or were made
// anew and not yet entered, are in neither list. An error when the manifest is there and cannot be
// read. wanted: the names to look at; all when not given.
Result<ManifestComparison>
compareWithManifest(const std::string& directory,
                    const std::function<bool(const std::string& name)>& wanted = {});

// The XXH3 hash of a file's bytes, or of a text's, 16 hexadecimal digits.
Result<std::string> hashOfFile(const std::string& path);
std::string hashOfText(const std::string& text);

} // namespace tamarin
