#include "support/resources.h"

#include "support/progress.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

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

// How a version of the control groups names what is asked of it.
struct GroupFiles {
    const char* limit;
    const char* used;
    // Pages of files that can be dropped, those of the groups below included, as the use includes
    // them.
    const char* activeFiles;
    const char* inactiveFiles;
};
constexpr GroupFiles versions[] = {
    {"memory.max", "memory.current", "active_file", "inactive_file"},
    {"memory.limit_in_bytes", "memory.usage_in_bytes", "total_active_file", "total_inactive_file"},
};

// Of one group alone.
uint64_t leftIn(const std::filesystem::path& group) {
    for (const GroupFiles& files : versions) {
        uint64_t limit = 0;
        uint64_t used = 0;
        // No limit is the word "max", and in the first version a number beyond any memory.
        if (!(std::ifstream(group / files.limit) >> limit) ||
            !(std::ifstream(group / files.used) >> used))
            continue;
        if (limit >= uint64_t{1} << 62)
            continue;
        std::ifstream statistics(group / "memory.stat");
        std::string label;
        uint64_t droppable = 0;
        for (uint64_t bytes = 0; statistics >> label >> bytes;)
            if (label == files.activeFiles || label == files.inactiveFiles)
                droppable += bytes;
        used -= std::min(used, droppable);
        return limit - std::min(limit, used);
    }
    return UINT64_MAX;
}

// Whether "cpu,memory" names the memory.
bool namesMemory(const std::string& controllers) {
    return ("," + controllers + ",").find(",memory,") != std::string::npos;
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

uint64_t memoryLeftInGroups(const std::string& mounts, const std::string& membership) {
    uint64_t left = UINT64_MAX;
    std::istringstream lines(membership);
    for (std::string line; std::getline(lines, line);) {
        const size_t first = line.find(':');
        const size_t second = line.find(':', first == std::string::npos ? first : first + 1);
        if (second == std::string::npos)
            continue;
        const std::string controllers = line.substr(first + 1, second - first - 1);
        const std::string group = line.substr(second + 1);
        if (controllers.empty())
            left = std::min(left, memoryLeftInGroup(mounts, group));
        else if (namesMemory(controllers))
            left = std::min(left, memoryLeftInGroup(mounts + "/" + controllers, group));
    }
    return left;
}

uint64_t availableMemory() {
    const uint64_t machine = machineMemory();
    std::ostringstream membership;
    membership << std::ifstream("/proc/self/cgroup").rdbuf();
    const uint64_t left = memoryLeftInGroups("/sys/fs/cgroup", membership.str());
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
