#include "holdem/auxiliary_equilibrium.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

// Shares of what is positive among the open actions; alike where nothing is. As matchRegrets, for
// all buckets at once.
template <class Actions>
void shareOut(const Actions& open, const Actions& numbers, Actions& shares) {
    for (size_t b = 0; b < shares[0].size(); ++b) {
        double total = 0;
        double count = 0;
        for (size_t a = 0; a < shares.size(); ++a) {
            total += std::max(numbers[a][b], 0.0);
            count += open[a][b];
        }
        for (size_t a = 0; a < shares.size(); ++a)
            shares[a][b] = total > 0   ? std::max(numbers[a][b], 0.0) / total
                           : count > 0 ? open[a][b] / count
                                       : 0;
    }
}

} // namespace

AuxiliaryEquilibrium::AuxiliaryEquilibrium(AuxiliaryGame& auxiliary,
                                           const ClusterMeetings& meetings)
    : auxiliary_(auxiliary), open_(auxiliary.tree_.nodes().size()), regrets_(open_.size()),
      current_(open_.size()), sums_(open_.size()) {
    assert(auxiliary.numPlayers() == 2);
    for (size_t n = 0; n < open_.size(); ++n) {
        for (size_t b = 0; b < buckets; ++b) {
            const SetActions& actions = auxiliary.actions_[b * open_.size() + n];
            for (uint8_t i = 0; i < actions.count; ++i)
                open_[n][actions.action[i]][b] = 1;
        }
        shareOut(open_[n], regrets_[n], current_[n]);
    }

    uint64_t total = 0;
    for (size_t a = 0; a < buckets; ++a)
        for (size_t b = 0; b < buckets; ++b)
            total += meetings.any(a, b);
    assert(total > 0);
    constexpr std::array<AuxiliaryGame::Ranks, 3> orders{{{0, 1, -1}, {0, 0, -1}, {1, 0, -1}}};
    const size_t settlements = auxiliary.tree_.settlements().size();
    for (size_t seat = 0; seat < 2; ++seat)
        payoffs_[seat].assign(settlements, std::vector<Vector>(buckets));
    for (size_t s = 0; s < settlements; ++s)
        for (size_t zero = 0; zero < buckets; ++zero)
            for (size_t one = 0; one < buckets; ++one) {
                // Seat 0 worse, as good, better.
                const std::array<uint64_t, 3> count{
                    meetings.better(zero, one) + meetings.beaten(one, zero),
                    meetings.tied(zero, one) + meetings.tied(one, zero),
                    meetings.beaten(zero, one) + meetings.better(one, zero)};
                for (size_t order = 0; order < orders.size(); ++order) {
                    const double* const settled =
                        auxiliary.settled_[AuxiliaryGame::outcome(orders[order])] +
                        s * auxiliary.stride_;
                    const double probability =
                        static_cast<double>(count[order]) / static_cast<double>(2 * total);
                    payoffs_[0][s][one][zero] += probability * settled[0];
                    payoffs_[1][s][zero][one] += probability * settled[1];
                }
            }
}

AuxiliaryEquilibrium::Vector AuxiliaryEquilibrium::settle(size_t settlement, size_t seat,
                                                          const Vector& other) const {
    Vector value{};
    const std::vector<Vector>& rows = payoffs_[seat][settlement];
    for (size_t b = 0; b < buckets; ++b)
        for (size_t own = 0; own < lanes; ++own)
            value[own] += other[b] * rows[b][own];
    return value;
}

template <class Choose>
AuxiliaryEquilibrium::Vector
AuxiliaryEquilibrium::below(int32_t child, size_t seat, const std::vector<Actions>& strategies,
                            const Vector& own, const Vector& other, const Choose& choose) const {
    if (child < 0)
        return settle(static_cast<size_t>(~child), seat, other);
    const auto n = static_cast<size_t>(child);
    const CompiledTree::Node& node = auxiliary_.tree_.nodes()[n];
    const bool acts = node.player == seat;
    Actions values{};
    Vector sum{};
    for (size_t a = 0; a < numAbstractedActions; ++a) {
        if (node.child[a] == CompiledTree::noChild)
            continue;
        Vector reach = acts ? own : other;
        for (size_t b = 0; b < lanes; ++b)
            reach[b] *= strategies[n][a][b];
        values[a] = acts ? below(node.child[a], seat, strategies, reach, other, choose)
                         : below(node.child[a], seat, strategies, own, reach, choose);
        for (size_t b = 0; b < lanes; ++b)
            sum[b] += values[a][b];
    }
    return acts ? choose(n, own, values) : sum;
}

void AuxiliaryEquilibrium::run(size_t iterations) {
    Vector ones{};
    std::fill_n(ones.begin(), buckets, 1.0);
    for (size_t it = 0; it < iterations; ++it) {
        const auto weight = static_cast<double>(++iterations_);
        for (size_t seat = 0; seat < 2; ++seat) {
            const auto learn = [&](size_t n, const Vector& own, const Actions& values) {
                Vector value{};
                for (size_t a = 0; a < numAbstractedActions; ++a)
                    for (size_t b = 0; b < lanes; ++b) {
                        value[b] += current_[n][a][b] * values[a][b];
                        sums_[n][a][b] += weight * own[b] * current_[n][a][b];
                    }
                for (size_t a = 0; a < numAbstractedActions; ++a)
                    for (size_t b = 0; b < lanes; ++b)
                        regrets_[n][a][b] = std::max(
                            0.0, regrets_[n][a][b] + open_[n][a][b] * (values[a][b] - value[b]));
                return value;
            };
            below(0, seat, current_, ones, ones, learn);
            for (size_t n = 0; n < open_.size(); ++n)
                if (auxiliary_.tree_.nodes()[n].player == seat)
                    shareOut(open_[n], regrets_[n], current_[n]);
        }
    }
}

std::vector<AuxiliaryEquilibrium::Actions> AuxiliaryEquilibrium::averages() const {
    std::vector<Actions> averages(open_.size());
    for (size_t n = 0; n < open_.size(); ++n)
        shareOut(open_[n], sums_[n], averages[n]);
    return averages;
}

double AuxiliaryEquilibrium::bestResponse(size_t seat, const std::vector<Actions>& averages) const {
    Vector ones{};
    std::fill_n(ones.begin(), buckets, 1.0);
    const auto best = [&](size_t n, const Vector&, const Actions& values) {
        Vector value{};
        for (size_t b = 0; b < buckets; ++b) {
            bool first = true;
            for (size_t a = 0; a < numAbstractedActions; ++a)
                if (open_[n][a][b] > 0 && (first || values[a][b] > value[b])) {
                    value[b] = values[a][b];
                    first = false;
                }
        }
        return value;
    };
    const Vector value = below(0, seat, averages, ones, ones, best);
    double sum = 0;
    for (const double ofBucket : value)
        sum += ofBucket;
    return sum;
}

double AuxiliaryEquilibrium::nashConv() const {
    const std::vector<Actions> averages = this->averages();
    // What one seat wins the other loses, so the values of the averages themselves add up to zero.
    return bestResponse(0, averages) + bestResponse(1, averages);
}

void AuxiliaryEquilibrium::write() const {
    for (size_t n = 0; n < open_.size(); ++n)
        for (size_t b = 0; b < buckets; ++b) {
            const size_t set = b * open_.size() + n;
            const SetActions& actions = auxiliary_.actions_[set];
            for (uint8_t i = 0; i < actions.count; ++i) {
                auxiliary_.numbers_[set].regret[i] = regrets_[n][actions.action[i]][b];
                auxiliary_.numbers_[set].strategy[i] = sums_[n][actions.action[i]][b];
            }
        }
}

} // namespace tamarin
