#include "clustering/fit_centres.h"

#include "clustering/seed_centres.h"
#include "support/split_mix.h"

#include <atomic>
#include <set>
#include <span>

namespace tamarin {

namespace {

// The points of each centre, one centre after the other: numbers of points, and where each begins.
struct Members {
    std::vector<uint32_t> points;
    std::vector<size_t> start;
};

Members membersOf(const Assignment& assignment, size_t centres) {
    Members members;
    members.start.resize(centres + 1);
    for (const uint32_t centre : assignment.centre)
        ++members.start[centre + 1];
    std::partial_sum(members.start.begin(), members.start.end(), members.start.begin());
    members.points.resize(assignment.centre.size());
    std::vector<size_t> next(members.start.begin(), members.start.end() - 1);
    for (size_t i = 0; i < assignment.centre.size(); ++i)
        members.points[next[assignment.centre[i]]++] = static_cast<uint32_t>(i);
    return members;
}

// The lower weighted median of each entry.
void moveCentre(const PointSet<HistogramMetric>& points, std::span<const uint32_t> members,
                uint8_t* centre) {
    std::array<std::array<uint64_t, 256>, HistogramMetric::width> weights{};
    uint64_t total = 0;
    for (const uint32_t i : members) {
        const uint8_t* const row = points.row(i);
        const uint64_t weight = points.weight(i);
        total += weight;
        for (size_t entry = 0; entry < HistogramMetric::width; ++entry)
            weights[entry][row[entry]] += weight;
    }
    for (size_t entry = 0; entry < HistogramMetric::width; ++entry) {
        uint64_t sum = weights[entry][0];
        uint8_t median = 0;
        while (2 * sum < total)
            sum += weights[entry][++median];
        centre[entry] = median;
    }
}

// The mean of each entry, rounded to the nearest, a half up.
void moveCentre(const PointSet<StrengthMetric>& points, std::span<const uint32_t> members,
                uint8_t* centre) {
    std::array<uint64_t, StrengthMetric::width> sums{};
    uint64_t total = 0;
    for (const uint32_t i : members) {
        const uint8_t* const row = points.row(i);
        const uint64_t weight = points.weight(i);
        total += weight;
        for (size_t entry = 0; entry < StrengthMetric::width; ++entry)
            sums[entry] += weight * row[entry];
    }
    for (size_t entry = 0; entry < StrengthMetric::width; ++entry)
        centre[entry] = static_cast<uint8_t>((2 * sums[entry] + total) / (2 * total));
}

// The points that lie farthest from their centres, farthest first, of equals the first; none that
// lies on its centre, and no two with the same row.
template <class Metric>
std::vector<uint32_t> farthestPoints(const PointSet<Metric>& points, const Assignment& assignment,
                                     size_t count) {
    std::vector<uint32_t> order;
    for (size_t i = 0; i < points.size(); ++i)
        if (assignment.distance[i] > 0)
            order.push_back(static_cast<uint32_t>(i));
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        const uint32_t ofA = assignment.distance[a];
        const uint32_t ofB = assignment.distance[b];
        return ofA != ofB ? ofA > ofB : a < b;
    });
    std::vector<uint32_t> chosen;
    std::set<typename PointSet<Metric>::Row> rows; // of those
    for (size_t next = 0; next < order.size() && chosen.size() < count; ++next) {
        typename PointSet<Metric>::Row row;
        std::copy_n(points.row(order[next]), Metric::width, row.begin());
        if (rows.insert(row).second)
            chosen.push_back(order[next]);
    }
    return chosen;
}

// Centres without points move to the points that are served worst.
template <class Metric>
void fillEmptyCentres(const PointSet<Metric>& points, const Assignment& assignment,
                      const Members& members, std::vector<uint8_t>& centres) {
    std::vector<size_t> empty;
    for (size_t k = 0; k + 1 < members.start.size(); ++k)
        if (members.start[k] == members.start[k + 1])
            empty.push_back(k);
    if (empty.empty())
        return;
    const std::vector<uint32_t> farthest = farthestPoints(points, assignment, empty.size());
    for (size_t i = 0; i < farthest.size(); ++i)
        std::copy_n(points.row(farthest[i]), Metric::width,
                    centres.begin() + static_cast<ptrdiff_t>(empty[i] * Metric::width));
}

uint64_t seedOfRestart(const FitOptions& options, uint32_t restart) {
    return mixBits(options.seed + splitMixStep) + restart;
}

} // namespace

template <class Metric>
bool assignPoints(const PointSet<Metric>& points, const NearestCentres<Metric>& centres,
                  const Work& work, Assignment& assignment) {
    const bool guessed = assignment.centre.size() == points.size();
    assignment.centre.resize(points.size());
    assignment.distance.resize(points.size());
    std::atomic<uint64_t> sum{0};
    const bool done = forEach(work, chunksOf(points.size()), [&](size_t chunk) {
        const size_t end = std::min((chunk + 1) * chunkPoints, points.size());
        uint64_t sumOfChunk = 0;
        for (size_t i = chunk * chunkPoints; i < end; ++i) {
            const Nearest nearest = guessed ? centres.find(points.row(i), assignment.centre[i])
                                            : centres.find(points.row(i));
            assignment.centre[i] = nearest.number;
            assignment.distance[i] = nearest.distance;
            sumOfChunk += uint64_t{points.weight(i)} * nearest.distance;
        }
        sum += sumOfChunk;
    });
    assignment.sum = sum;
    return done;
}

template <class Metric>
std::vector<uint8_t> movedCentres(const PointSet<Metric>& points, const Assignment& assignment,
                                  const std::vector<uint8_t>& centres, const Work& work) {
    const size_t count = centres.size() / Metric::width;
    const Members members = membersOf(assignment, count);
    std::vector<uint8_t> moved = centres;
    Work whole = work; // short, and half of it would be of no use
    whole.stop = nullptr;
    whole.progress = nullptr;
    forEach(whole, count, [&](size_t k) {
        const std::span<const uint32_t> own(&members.points[0] + members.start[k],
                                            members.start[k + 1] - members.start[k]);
        if (!own.empty())
            moveCentre(points, own, &moved[k * Metric::width]);
    });
    fillEmptyCentres(points, assignment, members, moved);
    return moved;
}

template <class Metric>
Status fitCentres(const PointSet<Metric>& points, const FitOptions& options, const Work& asked,
                  const std::function<void(const FitState&)>& iterated, FitState& state) {
    Work work = asked;
    if (chunksOf(points.size()) <= 16) // waiting for each other would take longer than the work
        work.threads = 1;
    const auto tell = [&] {
        if (iterated)
            iterated(state);
    };
    for (; state.restart < options.restarts; ++state.restart) {
        if (state.centres.empty()) {
            auto seeds =
                seedCentres(points, options.centres, seedOfRestart(options, state.restart), work);
            if (!seeds)
                return stopped();
            state.centres = std::move(*seeds);
            tell();
        }
        Assignment assignment;
        while (true) {
            sortCentres<Metric>(state.centres);
            const NearestCentres<Metric> nearest(state.centres);
            if (!assignPoints(points, nearest, work, assignment))
                return stopped();
            const uint64_t won =
                state.iteration == 0 ? assignment.sum : state.distance - assignment.sum;
            if (state.iteration >= options.iterations || won <= state.distance / options.tolerance)
                break;
            state.centres = movedCentres(points, assignment, state.centres, work);
            state.distance = assignment.sum;
            ++state.iteration;
            tell();
        }
        if (state.best.empty() || assignment.sum < state.bestDistance) {
            state.best = state.centres;
            state.bestDistance = assignment.sum;
        }
        state.centres.clear();
        state.iteration = 0;
        state.distance = 0;
    }
    tell();
    return {};
}

template Status fitCentres(const PointSet<HistogramMetric>&, const FitOptions&, const Work&,
                           const std::function<void(const FitState&)>&, FitState&);
template Status fitCentres(const PointSet<StrengthMetric>&, const FitOptions&, const Work&,
                           const std::function<void(const FitState&)>&, FitState&);
template bool assignPoints(const PointSet<HistogramMetric>&, const NearestCentres<HistogramMetric>&,
                           const Work&, Assignment&);
template bool assignPoints(const PointSet<StrengthMetric>&, const NearestCentres<StrengthMetric>&,
                           const Work&, Assignment&);
template std::vector<uint8_t> movedCentres(const PointSet<HistogramMetric>&, const Assignment&,
                                           const std::vector<uint8_t>&, const Work&);
template std::vector<uint8_t> movedCentres(const PointSet<StrengthMetric>&, const Assignment&,
                                           const std::vector<uint8_t>&, const Work&);

} // namespace tamarin
