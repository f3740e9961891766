#include "toolbox/convergence_log.h"

#include "support/file.h"
#include "toolbox/json.h"

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

} // namespace

ConvergenceLog::ConvergenceLog(const std::string& directory, std::optional<uint64_t> resumedAt)
    : path_(directory + "/convergence.jsonl") {
    if (resumedAt)
        if (const auto old = readWholeFile(path_, largestLog))
            failed_ = !writeWholeFile(path_, linesUpTo(*old, *resumedAt)).ok();
    file_ = std::fopen(path_.c_str(), resumedAt ? "a" : "w");
}

ConvergenceLog::~ConvergenceLog() {
    if (file_ != nullptr)
        std::fclose(file_);
}

void ConvergenceLog::add(const std::string& line) {
    if (good())
        failed_ = std::fputs((line + '\n').c_str(), file_) < 0 || std::fflush(file_) != 0;
}

} // namespace tamarin
