// Lloyd's iterations (Lloyd 1982) from several sets of seeds, the best of which is kept.
//
// An iteration gives every point to its nearest centre and moves every centre to where the weighted
// sum of the distances to its points is least among rows of bytes: entry by entry the weighted
// median for HistogramMetric (the lower one of two), the mean for StrengthMetric (to the nearest, a
// half up). A centre without points moves to the point that is farthest from its own centre. So the
// sum of all distances never rises, and a fit ends when an iteration wins less than one part in
// `tolerance` of it, or after so many iterations.
//
// Sums are whole numbers: the centres are the same with any number of threads.
#pragma once

#include "abstraction/work.h"
#include "clustering/nearest_centre.h"
#include "clustering/point_set.h"
#include "support/result.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace tamarin {

struct FitOptions {
    uint32_t centres = 1; // at least 1, as are the last three
    uint64_t seed = 1;
    uint32_t restarts = 3;
    uint32_t iterations = 50; // of a restart, at most
    uint32_t tolerance = 1000;
};

// How far a fit is: enough to go on from.
struct FitState {
    uint32_t restart = 0;
    uint32_t iteration = 0;       // of this restart, done
    std::vector<uint8_t> centres; // of this restart; none before its seeds are there
    uint64_t distance = 0;        // of the iteration before; its centres are not those above
    std::vector<uint8_t> best;    // of the restarts that are done, in ascending order of sums
    uint64_t bestDistance = 0;    // weighted sum of the distances of all points from those

    bool operator==(const FitState&) const = default;
};

// Goes on from the state until all restarts are done: state.best is the answer then. Stopped work
// leaves the state of the last iteration. points: at least one. iterated, or none, is told after
// every iteration, which is a good moment to save the state.
template <class Metric>
Status fitCentres(const PointSet<Metric>& points, const FitOptions& options, const Work& work,
                  const std::function<void(const FitState&)>& iterated, FitState& state);

// The parts of an iteration.
struct Assignment {
    std::vector<uint32_t> centre; // of each point
    std::vector<uint32_t> distance;
    uint64_t sum = 0; // of weight times distance
};
// Gives every point to its nearest centre. assignment: what it holds is where each point is looked
// for first. False when the work was stopped.
template <class Metric>
bool assignPoints(const PointSet<Metric>& points, const NearestCentres<Metric>& centres,
                  const Work& work, Assignment& assignment);
// The centres moved to the middle of their points.
template <class Metric>
std::vector<uint8_t> movedCentres(const PointSet<Metric>& points, const Assignment& assignment,
                                  const std::vector<uint8_t>& centres, const Work& work);

} // namespace tamarin
