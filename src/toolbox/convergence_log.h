// The convergence log of a training: convergence.jsonl, a JSON object a line, each with its
// "iteration".
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace tamarin {

class ConvergenceLog {
public:
    // A new log; or, for a run that goes on from an iteration, the log that is there without the
    // lines after it: the run will write these again.
    ConvergenceLog(const std::string& directory, std::optional<uint64_t> resumedAt);
    ~ConvergenceLog();
    ConvergenceLog(const ConvergenceLog&) = delete;
    ConvergenceLog& operator=(const ConvergenceLog&) = delete;

    // Appends a line, which is on its way to the disk when the call returns.
    void add(const std::string& line);

    // Training does not stop for its log; says once, at the end, what became of it.
    bool good() const { return file_ != nullptr && !failed_; }
    const std::string& path() const { return path_; }

private:
    std::string path_;
    FILE* file_ = nullptr;
    bool failed_ = false;
};

} // namespace tamarin
