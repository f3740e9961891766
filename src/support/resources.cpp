#include "support/resources.h"

#include "support/progress.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace tamarin {

namespace {

uint64_t machineMemory() {
    std::ifstream file("/proc/meminfo");
    std::string label;
    uint64_t kibibytes = 0;
    for (std::string unit; file >> label >> kibibytes; std::getline(file, unit))
        if (label == "MemAvailable:")
            return kibibytes * 1024;
    return 0;
}

// Where the process stands among the groups of version 2: the line "0::PATH"; empty without any.
std::string ownGroup() {
    std::ifstream file("/proc/self/cgroup");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("0::/"))
            return line.substr(3);
    return "";
}

// Of one group alone.
uint64_t leftIn(const std::filesystem::path& group) {
    uint64_t limit = 0;
    uint64_t used = 0;
    // No limit is the word "max".
    if (!(std::ifstream(group / "memory.max") >> limit) ||
        !(std::ifstream(group / "memory.current") >> used))
        return UINT64_MAX;
    std::ifstream statistics(group / "memory.stat");
    std::string label;
    uint64_t droppable = 0;
    for (uint64_t bytes = 0; statistics >> label >> bytes;)
        if (label == "active_file" || label == "inactive_file")
            droppable += bytes;
    used -= std::min(used, droppable);
    return limit - std::min(limit, used);
}

} // namespace

uint64_t memoryLeftInGroup(const std::string& mount, const std::string& group) {
    const std::filesystem::path root(mount);
    uint64_t left = leftIn(root);
    std::filesystem::path place = root;
    for (const auto& part : std::filesystem::path(group).relative_path()) {
        place /= part;
        left = std::min(left, leftIn(place));
    }
    return left;
}

uint64_t availableMemory() {
    const uint64_t machine = machineMemory();
    const std::string group = ownGroup();
    if (group.empty())
        return machine;
    const uint64_t left = memoryLeftInGroup("/sys/fs/cgroup", group);
    if (machine == 0)
        return left == UINT64_MAX ? 0 : left;
    // 0 would mean that nothing is known.
    return std::max(std::min(machine, left), uint64_t{1});
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
