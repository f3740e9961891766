// What the architecture tests read from the tree: the files, their #include lines, the room list.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tamarin {

// A room and the rooms whose headers it may include.
using RoomUses = std::map<std::string, std::set<std::string>>;
const RoomUses& allowedUses();

struct Include {
    std::string file; // the including file, from the root of the tree
    int line;         // from 1
    std::string name; // what stands between the quotes or brackets
    bool quoted;      // "name", not <name>
};

// Every #include line of the sources below root/folder.
std::vector<Include> includesBelow(const std::filesystem::path& root, const std::string& folder);

// One line for each include below root/src that its room may not have; empty when all is well.
std::vector<std::string> backwardArrows(const std::filesystem::path& root);

// One line for each name that two places below root/src give to a type, outside unnamed namespaces:
// neither compiler nor linker tells when one room's type then runs the other's inline functions.
std::vector<std::string> typesDefinedTwice(const std::filesystem::path& root);

// The tracked files, from the root; without git, every file outside build, run and hidden folders.
std::vector<std::string> treeFiles(const std::filesystem::path& root);

} // namespace tamarin
