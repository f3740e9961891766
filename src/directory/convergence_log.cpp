#include "directory/convergence_log.h"

#include "directory/json.h"
#include "support/file.h"

#include <algorithm>
#include <sstream>

namespace tamarin {

namespace {

constexpr size_t largestLog = size_t{64} << 20U;

std::string linesUpTo(const std::string& text, uint64_t iteration) {
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        const auto step = readJson(line);
        if (step.is_object() && step.contains("iteration") &&
            step["iteration"].is_number_unsigned() &&
            step["iteration"].get<uint64_t>() <= iteration)
            kept += line + '\n';
    }
    return kept;
}

constexpr const char* logName = "/convergence.jsonl";

} // namespace

ConvergenceLog::ConvergenceLog(const std::string& directory, std::optional<uint64_t> resumedAt)
    : path_(directory + logName) {
    if (resumedAt)
        if (const auto old = readWholeFile(path_, largestLog))
            if (!writeWholeFile(path_, linesUpTo(*old, *resumedAt)))
                return; // and is not good
    file_.open(path_, resumedAt ? std::ios::app : std::ios::trunc);
}

double secondsTrained(const std::string& directory, uint64_t iteration) {
    const auto log = readWholeFile(directory + logName, largestLog);
    if (!log)
        return 0;
    double before = 0; // of finished runs
    double last = 0;
    std::istringstream lines(linesUpTo(*log, iteration));
    for (std::string line; std::getline(lines, line);) {
        const auto step = readJson(line);
        if (!step.contains("seconds") || !step["seconds"].is_number())
            continue;
        const double seconds = std::max(0.0, step["seconds"].get<double>());
        if (seconds < last)
            before += last;
        last = seconds;
    }
    return before + last;
}

} // namespace tamarin
