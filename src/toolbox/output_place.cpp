#include "toolbox/output_place.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <unistd.h>

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

Status checkOutputFolder(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return Error{path + " is a directory"};
    std::string folder = std::filesystem::path(path).parent_path().string();
    if (folder.empty())
        folder = ".";
    if (access((folder + "/").c_str(), W_OK | X_OK) != 0)
        return Error{"could not write to " + folder + ": " + std::strerror(errno)};
    return {};
}

} // namespace tamarin
