#include "support/resources.h"

#include "support/progress.h"

#include <filesystem>
#include <fstream>

namespace tamarin {

uint64_t availableMemory() {
    std::ifstream file("/proc/meminfo");
    std::string label;
    uint64_t kibibytes = 0;
    for (std::string unit; file >> label >> kibibytes; std::getline(file, unit))
        if (label == "MemAvailable:")
            return kibibytes * 1024;
    return 0;
}

uint64_t freeDisk(const std::string& path) {
    std::error_code error;
    std::filesystem::path place = std::filesystem::absolute(path, error);
    while (!std::filesystem::exists(place, error) && place.has_relative_path())
        place = place.parent_path();
    const auto space = std::filesystem::space(place, error);
    return error ? 0 : space.available;
}

Status checkResources(uint64_t memoryNeeded, uint64_t diskNeeded, const std::string& path) {
    if (const uint64_t memory = availableMemory(); memory != 0 && memory < memoryNeeded)
        return Error{"this needs " + describeBytes(memoryNeeded) + " of memory, and " +
                     describeBytes(memory) + " can be had; close something first"};
    if (const uint64_t disk = freeDisk(path); disk != 0 && disk < diskNeeded)
        return Error{"this needs " + describeBytes(diskNeeded) + " of disk at " + path + ", and " +
                     describeBytes(disk) + " are free; make room, or use another --dir"};
    return {};
}

} // namespace tamarin
