#include "training/best_response.h"

#include "support/parallel_errors.h"

#include <algorithm>

namespace tamarin {

namespace {

// One walk of the tree with a number for every deal; the numbers of a depth live in one buffer.
class DealVectors {
public:
    explicit DealVectors(size_t size) : size_(size) {}
    // A buffer that stays good until the scope that asked for it ends (release).
    double* take() {
        if (used_ == buffers_.size())
            buffers_.push_back(std::make_unique<double[]>(size_));
        return buffers_[used_++].get();
    }
    void release(size_t count) { used_ -= count; }

private:
    size_t size_;
    size_t used_ = 0;
    std::vector<std::unique_ptr<double[]>> buffers_;
};

class Walk {
public:
    Walk(const SmallGame& game, const Profile& profile)
        : game_(game), deals_(game.deals()), nodes_(game.tree().nodes()), profile_(profile),
          vectors_(game.deals().size) {}

    // Adds every seat's value, with reach the probability of each deal and of the play to here.
    void addValues(int32_t child, const double* reach, std::vector<double>& sum) {
        if (child < 0) {
            const size_t row = static_cast<size_t>(~child) * game_.payoffs().stride();
            for (size_t d = 0; d < deals_.size; ++d) {
                const double* const paid = game_.payoffs().table(deals_.outcome[d]) + row;
                for (size_t p = 0; p < sum.size(); ++p)
                    sum[p] += reach[d] * paid[p];
            }
            return;
        }
        const CompiledTree::Node& node = nodes_[static_cast<size_t>(child)];
        double* const below = vectors_.take();
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            if (multiply(node, a, reach, below))
                addValues(node.child[a], below, sum);
        }
        vectors_.release(1);
    }

    // For each deal, reach times what the seat gets from here on with a best response; reach is the
    // probability of the deal and of the others' play to here.
    void respond(int32_t child, size_t seat, const double* reach, double* value) {
        if (child < 0) {
            const size_t at = static_cast<size_t>(~child) * game_.payoffs().stride() + seat;
            for (size_t d = 0; d < deals_.size; ++d)
                value[d] = reach[d] * game_.payoffs().table(deals_.outcome[d])[at];
            return;
        }
        const CompiledTree::Node& node = nodes_[static_cast<size_t>(child)];
        if (node.player == seat)
            choose(node, seat, reach, value);
        else
            wait(node, seat, reach, value);
    }

private:
    // below = reach x the probability of the action; whether any of it is left.
    bool multiply(const CompiledTree::Node& node, size_t action, const double* reach,
                  double* below) {
        const size_t start = game_.layout().index(node, 0);
        const size_t stride = game_.layout().index(node, 1) - start;
        const uint32_t* const field = deals_.field[node.player].data();
        bool any = false;
        for (size_t d = 0; d < deals_.size; ++d) {
            below[d] = reach[d] * profile_[start + field[d] * stride][action];
            any |= below[d] != 0.0;
        }
        return any;
    }

    void wait(const CompiledTree::Node& node, size_t seat, const double* reach, double* value) {
        double* const below = vectors_.take();
        double* const part = vectors_.take();
        std::fill_n(value, deals_.size, 0.0);
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild || !multiply(node, a, reach, below))
                continue;
            respond(node.child[a], seat, below, part);
            for (size_t d = 0; d < deals_.size; ++d)
                value[d] += part[d];
        }
        vectors_.release(2);
    }

    // The seat takes one action for all the deals that look the same to it.
    void choose(const CompiledTree::Node& node, size_t seat, const double* reach, double* value) {
        const size_t known = node.round * size_t{game_.game().numPlayers} + seat;
        const uint32_t* const view = deals_.view[known].data();
        double* part[numAbstractedActions] = {};
        std::vector<double> total[numAbstractedActions];
        size_t taken = 0;
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            part[a] = vectors_.take();
            ++taken;
            respond(node.child[a], seat, reach, part[a]);
            total[a].assign(deals_.numViews[known], 0.0);
            for (size_t d = 0; d < deals_.size; ++d)
                total[a][view[d]] += part[a][d];
        }
        std::vector<const double*> best(deals_.numViews[known], nullptr);
        std::vector<double> most(best.size());
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (part[a] == nullptr)
                continue;
            for (size_t v = 0; v < best.size(); ++v)
                if (best[v] == nullptr || total[a][v] > most[v]) {
                    best[v] = part[a];
                    most[v] = total[a][v];
                }
        }
        for (size_t d = 0; d < deals_.size; ++d)
            value[d] = best[view[d]][d];
        vectors_.release(taken);
    }

    const SmallGame& game_;
    const DealTable& deals_;
    const std::vector<CompiledTree::Node>& nodes_;
    const Profile& profile_;
    DealVectors vectors_;
};

} // namespace

double ProfileValue::nashConv() const {
    double sum = 0.0;
    for (size_t p = 0; p < value.size(); ++p)
        sum += gain(p);
    return sum;
}

std::vector<double> profileValues(const SmallGame& game, const Profile& profile) {
    std::vector<double> sum(game.game().numPlayers, 0.0);
    Walk(game, profile).addValues(0, game.deals().weight.data(), sum);
    return sum;
}

double bestResponseValue(const SmallGame& game, const Profile& profile, size_t seat) {
    std::vector<double> value(game.deals().size);
    Walk(game, profile).respond(0, seat, game.deals().weight.data(), value.data());
    double sum = 0.0;
    for (const double part : value)
        sum += part;
    return sum;
}

ProfileValue evaluateProfile(const SmallGame& game, const Profile& profile, int threads) {
    ProfileValue result;
    result.value = profileValues(game, profile);
    result.best.resize(result.value.size());
    const auto seats = static_cast<int>(result.value.size());
    const int team = threads > 0 ? threads : seats;
    ParallelErrors errors;
#pragma omp parallel for schedule(dynamic) num_threads(team) if (team > 1)
    for (int p = 0; p < seats; ++p)
        errors.run([&] {
            const auto seat = static_cast<size_t>(p);
            result.best[seat] = bestResponseValue(game, profile, seat);
        });
    errors.rethrow();
    return result;
}

} // namespace tamarin
