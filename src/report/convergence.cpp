#include "report/convergence.h"

#include "directory/json.h"
#include "support/progress.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

struct MeasureNames {
    const char* key; // in a log's line
    const char* name;
    const char* unit;
};
constexpr std::array<MeasureNames, 3> measures{{{"nashConv", "NashConv", "chips/hand"},
                                                {"averageRegret", "average regret", "chips"},
                                                {"exploitability", "exploitability", "mbb/hand"}}};

const MeasureNames& namesOf(ConvergenceMeasure measure) {
    return measures[static_cast<size_t>(measure)];
}

// Adds up the seconds of the runs that a training was divided into: each counts its own.
class TrainingTime {
public:
    double at(double seconds) {
        if (seconds < last_)
            before_ += last_;
        last_ = seconds;
        return before_ + seconds;
    }

private:
    double before_ = 0;
    double last_ = 0;
};

std::optional<double> numberIn(const Json& line, const char* key) {
    const auto found = line.find(key);
    if (found == line.end() || !found->is_number())
        return std::nullopt;
    return found->get<double>();
}

void add(const std::string& path, ConvergenceMeasure measure, const ConvergencePoint& point,
         std::vector<ConvergenceCurve>& curves) {
    auto curve = std::ranges::find(curves, measure, &ConvergenceCurve::measure);
    if (curve == curves.end())
        curve = curves.insert(curve, {path, measure, {}});
    curve->points.push_back(point);
}

} // namespace

const char* nameOf(ConvergenceMeasure measure) {
    return namesOf(measure).name;
}

const char* unitOf(ConvergenceMeasure measure) {
    return namesOf(measure).unit;
}

Result<std::vector<ConvergenceCurve>> readConvergence(const std::string& path,
                                                      std::string_view text) {
    std::vector<ConvergenceCurve> curves;
    TrainingTime time;
    for (size_t number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find('\n'), text.size());
        const Json line = readJson(std::string(text.substr(0, end)));
        const bool cut = end == text.size(); // being written, or broken off
        text.remove_prefix(std::min(end + 1, text.size()));
        const auto seconds = line.is_object() ? numberIn(line, "seconds") : std::nullopt;
        const auto iteration = line.is_object() ? line.find("iteration") : line.end();
        bool known = false;
        if (seconds && iteration != line.end() && iteration->is_number_unsigned()) {
            const double now = time.at(*seconds);
            for (size_t m = 0; m < measures.size(); ++m)
                if (const auto value = numberIn(line, measures[m].key)) {
                    add(path, static_cast<ConvergenceMeasure>(m),
                        {iteration->get<uint64_t>(), now, *value, numberIn(line, "interval95")},
                        curves);
                    known = true;
                }
        }
        if (!known && !cut)
            return Error{fmt::format("{}:{}: not a line of a training's log", path, number)};
    }
    if (curves.empty())
        return Error{path + ": there is no step of a training in it"};
    return curves;
}

std::vector<ConvergencePoint> thinned(const std::vector<ConvergencePoint>& points, size_t about) {
    if (points.size() <= about)
        return points;
    const auto place = [](const ConvergencePoint& point) {
        return std::log(std::max(point.seconds, 1e-3));
    };
    const double step = (place(points.back()) - place(points.front())) / static_cast<double>(about);
    std::vector<ConvergencePoint> kept{points.front()};
    for (size_t i = 1; i + 1 < points.size(); ++i)
        if (place(points[i]) - place(kept.back()) >= step &&
            place(points.back()) - place(points[i]) >= step / 2)
            kept.push_back(points[i]);
    kept.push_back(points.back());
    return kept;
}

std::string convergenceAsTable(const std::vector<ConvergenceCurve>& curves) {
    constexpr size_t lines = 16;
    std::string text;
    for (const ConvergenceCurve& curve : curves) {
        text += fmt::format("{}{}: {}, {}\n{:>15}{:>15}  {}\n", text.empty() ? "" : "\n", curve.log,
                            nameOf(curve.measure), unitOf(curve.measure), "iterations", "time",
                            nameOf(curve.measure));
        for (const ConvergencePoint& point : thinned(curve.points, lines))
            text +=
                fmt::format("{:>15}{:>15}  {:.4g}{}\n", describeCount(point.iteration),
                            describeDuration(point.seconds), point.value,
                            point.interval95 ? fmt::format(" +- {:.2g}", *point.interval95) : "");
    }
    return text;
}

Json convergenceAsJson(const std::vector<ConvergenceCurve>& curves) {
    Json all = Json::array();
    for (const ConvergenceCurve& curve : curves) {
        Json points = Json::array();
        for (const ConvergencePoint& point : curve.points) {
            points.push_back({{"iteration", point.iteration},
                              {"seconds", point.seconds},
                              {"value", point.value}});
            if (point.interval95)
                points.back()["interval95"] = *point.interval95;
        }
        all.push_back({{"log", curve.log},
                       {"measure", namesOf(curve.measure).key},
                       {"unit", unitOf(curve.measure)},
                       {"points", points}});
    }
    return {{"curves", all}};
}

} // namespace tamarin
