#include "sampling/external_walk.h"

#include <algorithm>

namespace tamarin {

namespace {

__extension__ using Wide = unsigned __int128;

// Uniform below a bound, up to one part in 2^64 / bound.
uint64_t numberBelow(SplitMix& random, uint64_t bound) {
    return static_cast<uint64_t>(static_cast<Wide>(random()) * bound >> 64U);
}

// To the nearest, halves away from 0.
int32_t rounded(double value) {
    return static_cast<int32_t>(value + (value < 0 ? -0.5 : 0.5));
}

} // namespace

ExternalWalk::ExternalWalk(const MenuSets& sets)
    : sets_(sets), tree_(sets.tree()), lastRound_(static_cast<int>(sets.buckets().size()) - 1) {}

int32_t ExternalWalk::run(const SampledDeal& deal, size_t traverser, const int32_t* payoffs,
                          uint64_t random, Pruning pruning, WalkLog& log) {
    for (size_t round = 0; round < sets_.buckets().size(); ++round)
        for (size_t seat = 0; seat < static_cast<size_t>(sets_.seats()); ++seat)
            starts_[round][seat] = sets_.bucketStart(round, seat, deal.buckets[round][seat]);
    traverser_ = traverser;
    payoffs_ = payoffs;
    random_ = SplitMix(random);
    pruning_ = pruning;
    log_ = &log;
    return visit(0);
}

int32_t ExternalWalk::visit(int32_t child) {
    while (child >= 0) {
        const MenuTree::Node& node = tree_.node(child);
        if (node.numEdges == 1)
            child = tree_.edges(node)[0].child;
        else if (node.seat == traverser_)
            return explore(node, static_cast<size_t>(child));
        else
            child = sample(node, static_cast<size_t>(child));
    }
    return payoffs_[~child];
}

// Regrets come from far away: they are on their way while the first edge is walked.
void ExternalWalk::fetchBelow(const MenuTree::Node& node) const {
    for (const MenuTree::Edge& edge : tree_.edges(node))
        if (edge.child >= 0)
            __builtin_prefetch(regretsOf(tree_.node(edge.child)));
}

bool ExternalWalk::isPruned(const MenuTree::Node& node, size_t edge, int32_t regret) const {
    return pruning_.on && regret < pruning_.below && node.round < lastRound_ &&
           tree_.edges(node)[edge].child >= 0;
}

int32_t ExternalWalk::explore(const MenuTree::Node& node, size_t number) {
    const int32_t* const regrets = regretsOf(node);
    const auto edges = tree_.edges(node);
    fetchBelow(node);
    std::array<int32_t, MenuTree::mostEdges> values;
    std::array<bool, MenuTree::mostEdges> pruned;
    int64_t total = 0;
    for (size_t i = 0; i < edges.size(); ++i)
        total += std::max(regrets[i], 0);
    int64_t weighted = 0;
    int64_t plain = 0;
    for (size_t i = 0; i < edges.size(); ++i) {
        // Where none is positive every action has its share.
        pruned[i] = total > 0 && isPruned(node, i, regrets[i]);
        values[i] = pruned[i] ? 0 : visit(edges[i].child);
        weighted += int64_t{std::max(regrets[i], 0)} * values[i];
        plain += values[i];
    }
    // Regrets end at 2^30 and values at 2^18, so both sums are below 2^53 and exact as doubles.
    const int32_t value =
        total > 0 ? rounded(static_cast<double>(weighted) / static_cast<double>(total))
                  : rounded(static_cast<double>(plain) / static_cast<double>(edges.size()));
    int32_t* const more = log_->add(WalkLog::Kind::regrets, number,
                                    static_cast<uint64_t>(regrets - sets_.regrets()), edges.size());
    for (size_t i = 0; i < edges.size(); ++i)
        more[i] = pruned[i] ? 0 : values[i] - value;
    return value;
}

int32_t ExternalWalk::sample(const MenuTree::Node& node, size_t number) {
    const int32_t* const regrets = regretsOf(node);
    const auto edges = tree_.edges(node);
    int64_t total = 0;
    for (size_t i = 0; i < edges.size(); ++i)
        total += std::max(regrets[i], 0);
    int32_t* const parts =
        log_->add(WalkLog::Kind::sums, number, static_cast<uint64_t>(regrets - sets_.regrets()),
                  edges.size());
    if (total == 0) {
        std::fill_n(parts, edges.size(), wholeStrategy / static_cast<int32_t>(edges.size()));
        return edges[numberBelow(random_, edges.size())].child;
    }
    const double whole = wholeStrategy / static_cast<double>(total);
    auto left = static_cast<int64_t>(numberBelow(random_, static_cast<uint64_t>(total)));
    size_t drawn = edges.size();
    for (size_t i = 0; i < edges.size(); ++i) {
        const int32_t share = std::max(regrets[i], 0);
        parts[i] = rounded(share * whole);
        if (drawn == edges.size() && left < share)
            drawn = i;
        left -= share;
    }
    return edges[drawn].child;
}

} // namespace tamarin
