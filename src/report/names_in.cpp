#include "report/names_in.h"

#include <filesystem>
#include <system_error>

namespace tamarin {

// A loop over the iterator itself would throw where a step of it fails.
std::set<std::string> namesIn(const std::string& folder) {
    namespace fs = std::filesystem;
    std::set<std::string> names;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        names.insert(at->path().filename().string());
    return names;
}

} // namespace tamarin
