// The convergence log of a training: convergence.jsonl, a JSON object a line, each with its
// "iteration".
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

namespace tamarin {

class ConvergenceLog {
public:
    // A new log; or, for a run that goes on from an iteration, the log that is there without the
    // lines after it: the run will write these again.
    ConvergenceLog(const std::string& directory, std::optional<uint64_t> resumedAt);

    // Appends a line, which is on its way to the disk when the call returns.
    void add(const std::string& line) { file_ << line << std::endl; }

    // Training does not stop for its log; says once, at the end, what became of it.
    bool good() const { return file_.is_open() && file_.good(); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::ofstream file_;
};

// How long a training took up to an iteration, all of its runs together, as far as the log in the
// directory has it: each run counts its seconds anew. 0 without a log.
double secondsTrained(const std::string& directory, uint64_t iteration);

} // namespace tamarin
