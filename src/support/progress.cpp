#include "support/progress.h"

#include <algorithm>
#include <cmath>
#include <unistd.h>
#include <utility>

namespace tamarin {
namespace {

constexpr std::chrono::milliseconds redrawInterval{100};
constexpr std::chrono::seconds lineInterval{5};
constexpr int barWidth = 24;

template <class... Args>
std::string formatted(const char* format, Args... args) {
    char text[96];
    const int size = std::snprintf(text, sizeof text, format, args...);
    return {text, static_cast<size_t>(std::clamp(size, 0, static_cast<int>(sizeof text) - 1))};
}

std::string bar(double fraction) {
    const auto filled = static_cast<size_t>(std::floor(fraction * barWidth));
    std::string text(barWidth, '-');
    text.replace(0, filled, filled, '#');
    return '[' + text + ']';
}

std::string describeRate(double rate) {
    return rate >= 100 ? describeCount(static_cast<uint64_t>(std::min(rate, 1e18)))
                       : formatted("%.1f", rate);
}

} // namespace

std::string describeDuration(double duration) {
    if (!(duration >= 0))
        return "0.0 s";
    if (duration < 59.95) // what the line below rounds to at most 59.9
        return formatted("%.1f s", duration);
    const auto whole = static_cast<int64_t>(std::llround(std::min(duration, 1e15)));
    if (whole < 3600)
        return formatted("%d min %02d s", static_cast<int>(whole / 60),
                         static_cast<int>(whole % 60));
    const int64_t minutes = (whole + 30) / 60;
    if (minutes < 48 * 60)
        return formatted("%d h %02d min", static_cast<int>(minutes / 60),
                         static_cast<int>(minutes % 60));
    const int64_t hours = (whole + 1800) / 3600;
    return formatted("%lld d %02d h", static_cast<long long>(hours / 24),
                     static_cast<int>(hours % 24));
}

std::string describeBytes(uint64_t bytes) {
    if (bytes < 1000)
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    static constexpr const char* units[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
    size_t unit = 0;
    double value = static_cast<double>(bytes) / 1000;
    for (; value >= 999.95 && unit + 1 < std::size(units); ++unit)
        value /= 1000;
    return formatted("%.1f %s", value, units[unit]);
}

std::string describeCount(uint64_t count) {
    std::string text = std::to_string(count);
    for (size_t end = text.size(); end > 3; end -= 3)
        text.insert(end - 3, 1, ',');
    return text;
}

Progress::Progress(std::string what, std::string unit, uint64_t total, FILE* out,
                   const Clock& clock)
    : what_(std::move(what)), unit_(std::move(unit)), total_(total), out_(out), clock_(clock),
      terminal_(isatty(fileno(out)) == 1), start_(clock.now()), lastPrint_(start_) {}

Progress::~Progress() {
    if (terminal_ && drawn_ && !finished_)
        std::fputc('\n', out_);
}

void Progress::resumeAt(uint64_t done) {
    resumedAt_ = done;
}

void Progress::update(uint64_t done, const std::string& note) {
    const TimePoint now = clock_.now();
    const Duration interval = terminal_ ? Duration(redrawInterval) : Duration(lineInterval);
    if (finished_ || now - lastPrint_ < interval)
        return;
    lastPrint_ = now;
    print(done, note, false);
}

void Progress::finish(uint64_t done, const std::string& note) {
    if (finished_)
        return;
    finished_ = true;
    print(done, note, true);
}

// What:  [######------]  25 %  1,000 of 4,000 hands, 500/s, 6.0 s left  note
void Progress::print(uint64_t done, const std::string& note, bool last) {
    const double elapsed = seconds(clock_.now() - start_);
    const uint64_t here = done - std::min(done, resumedAt_);
    const double rate = elapsed > 0 ? static_cast<double>(here) / elapsed : 0;

    std::string line = what_ + ": ";
    if (!last && total_ > 0) {
        const double fraction =
            std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
        if (terminal_)
            line += bar(fraction) + " ";
        line += formatted("%3d %%  ", static_cast<int>(fraction * 100));
    }
    line += describeCount(done);
    if (!last && total_ > 0)
        line += " of " + describeCount(total_);
    if (!unit_.empty())
        line += " " + unit_;
    if (last)
        line += " in " + describeDuration(elapsed);
    if (rate > 0)
        line += ", " + describeRate(rate) + "/s";
    if (!last && rate > 0 && total_ > done)
        line += ", " + describeDuration(static_cast<double>(total_ - done) / rate) + " left";
    if (!note.empty())
        line += "  " + note;

    // Carriage return and "erase to the end of the line": a shorter line leaves no rest behind.
    if (terminal_)
        std::fprintf(out_, "\r%s\x1b[K%s", line.c_str(), last ? "\n" : "");
    else
        std::fprintf(out_, "%s\n", line.c_str());
    std::fflush(out_);
    drawn_ = true;
}

} // namespace tamarin
