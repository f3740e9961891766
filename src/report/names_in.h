// What lies in a folder, for reports that go through one.
#pragma once

#include <set>
#include <string>

namespace tamarin {

// The names of all files and folders there; those found so far where the reading fails, none where
// there is no folder.
std::set<std::string> namesIn(const std::string& folder);

} // namespace tamarin
