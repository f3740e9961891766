#include "toolbox/output_place.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace tamarin {

Status checkOutputPlace(const std::string& path, const std::string& start, const std::string& kind,
                        const std::string& option) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return {};
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return Error{"could not read " + path + ": " + std::strerror(errno)};
    std::string there(start.size(), '\0');
    file.read(there.data(), static_cast<std::streamsize>(there.size()));
    there.resize(static_cast<size_t>(file.gcount()));
    if (there.empty() || there == start)
        return {};
    return Error{path + " is there and is not " + kind + ": give " + option +
                 " another name, or move the file away"};
}

} // namespace tamarin
