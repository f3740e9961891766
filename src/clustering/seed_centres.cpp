#include "clustering/seed_centres.h"

#include "support/split_mix.h"

namespace tamarin {

namespace {

template <class Metric>
class Seeding {
public:
    explicit Seeding(const PointSet<Metric>& points)
        : points_(points), distances_(points.size(), 1), chunks_(chunksOf(points.size())) {
        for (size_t c = 0; c < chunks_.size(); ++c)
            measure(c); // every distance is 1: the weights alone
    }

    // Drawn in proportion to weight times distance; the first point where every product is 0.
    size_t draw(uint64_t bits) const {
        uint64_t total = 0;
        for (const Chunk& chunk : chunks_)
            total += chunk.sum;
        if (total == 0)
            return 0;
        uint64_t left = scaledBelow(bits, total);
        size_t c = 0;
        for (; left >= chunks_[c].sum; ++c)
            left -= chunks_[c].sum;
        size_t i = c * chunkPoints;
        for (; left >= product(i); ++i)
            left -= product(i);
        return i;
    }

    void add(const uint8_t* centre, bool first) {
        const uint32_t sum = sumOfRow<Metric>(centre);
        for (size_t c = 0; c < chunks_.size(); ++c) {
            const Chunk& chunk = chunks_[c];
            const uint32_t apart = sum < chunk.low    ? chunk.low - sum
                                   : sum > chunk.high ? sum - chunk.high
                                                      : 0;
            if (!first && !Metric::canBeWithin(apart, chunk.farthest))
                continue;
            bool changed = false;
            for (size_t i = c * chunkPoints; i < end(c); ++i) {
                const uint32_t distance = Metric::distance(points_.row(i), centre);
                if (first || distance < distances_[i]) {
                    distances_[i] = distance;
                    changed = true;
                }
            }
            if (changed)
                measure(c);
        }
    }

private:
    // Points of nearly the same sum: bounds that spare a look at each of them.
    struct Chunk {
        uint32_t low = 0; // least and greatest sum of entries
        uint32_t high = 0;
        uint32_t farthest = 0;
        uint64_t sum = 0; // of weight times distance
    };

    size_t end(size_t chunk) const { return std::min((chunk + 1) * chunkPoints, points_.size()); }
    uint64_t product(size_t i) const { return uint64_t{points_.weight(i)} * distances_[i]; }

    void measure(size_t c) {
        Chunk& chunk = chunks_[c];
        chunk = {points_.sum(c * chunkPoints), points_.sum(end(c) - 1), 0, 0};
        for (size_t i = c * chunkPoints; i < end(c); ++i) {
            chunk.farthest = std::max(chunk.farthest, distances_[i]);
            chunk.sum += product(i);
        }
    }

    const PointSet<Metric>& points_;
    std::vector<uint32_t> distances_;
    std::vector<Chunk> chunks_;
};

} // namespace

template <class Metric>
std::optional<std::vector<uint8_t>> seedCentres(const PointSet<Metric>& points, uint32_t count,
                                                uint64_t seed, const Work& work) {
    assert(points.size() > 0);
    Seeding<Metric> seeding(points);
    SplitMix random(mixBits(seed));
    std::vector<uint8_t> centres;
    for (uint32_t k = 0; k < count; ++k) {
        if (work.shouldStop())
            return std::nullopt;
        const uint8_t* const centre = points.row(seeding.draw(random()));
        centres.insert(centres.end(), centre, centre + Metric::width);
        seeding.add(centre, k == 0);
        work.report(k + 1, count);
    }
    return centres;
}

template std::optional<std::vector<uint8_t>>
seedCentres<HistogramMetric>(const PointSet<HistogramMetric>&, uint32_t, uint64_t, const Work&);
template std::optional<std::vector<uint8_t>>
seedCentres<StrengthMetric>(const PointSet<StrengthMetric>&, uint32_t, uint64_t, const Work&);

} // namespace tamarin
