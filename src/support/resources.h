// What the machine has left, so that long work can be refused before it starts.
#pragma once

#include "support/result.h"

#include <cstdint>
#include <string>

namespace tamarin {

// Bytes of memory that are available without swapping, on the machine and within the limits of this
// process's control groups (a container has some); 0 when the system does not say.
uint64_t availableMemory();

// What the limits of a control group (of either version) and of those above it leave: limit less
// use, file pages that can be dropped not counted. mount is where the groups lie, group the path
// below it. UINT64_MAX where there is no limit.
uint64_t memoryLeftInGroup(const std::string& mount, const std::string& group);

// The same for all the groups that a process is in, told as /proc/PID/cgroup tells it: those of
// version 2 lie below mounts, the memory's of version 1 below mounts/memory.
uint64_t memoryLeftInGroups(const std::string& mounts, const std::string& membership);

// Free bytes on the disk that holds the path, or would hold it: of the nearest directory above it
// that exists. 0 when the system does not say.
uint64_t freeDisk(const std::string& path);

// Refuses work that needs more than there is, with the figures: "this needs 8.1 GB of disk at DIR,
// and 2.0 GB are free; ...".
Status checkResources(uint64_t memoryNeeded, uint64_t diskNeeded, const std::string& path);

} // namespace tamarin
