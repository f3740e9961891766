#include "holdem/cluster_meetings.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace tamarin {

namespace {

constexpr size_t lanes = ClusterMeetings::lanes;
using Counts = std::array<uint16_t, lanes>; // of holdings by cluster

// Some holdings of one cluster: how many, and what they weigh, together and of those with each
// card. So few that the weight of all that they meet in a cluster fits into 16 bits.
class Kind {
public:
    static constexpr uint32_t most =
        UINT16_MAX / (ClusterMeetings::mostWeight * numHoldings(deckCards - 2));

    void start(size_t ofCluster) {
        cluster_ = ofCluster;
        cards_ = 0;
        sum_ = 0;
        with_.fill(0);
    }
    void add(const HoldingOrder::Holding& holding, uint8_t weight) {
        const auto both = static_cast<uint16_t>(uint32_t{weight} << weightShift | 1U);
        sum_ += both;
        cards_ |= uint64_t{1} << holding.low | uint64_t{1} << holding.high;
        with_[holding.low] = static_cast<uint16_t>(with_[holding.low] + both);
        with_[holding.high] = static_cast<uint16_t>(with_[holding.high] + both);
    }
    size_t cluster() const { return cluster_; }
    uint32_t count() const { return sum_ & countMask; }
    uint16_t weight() const { return static_cast<uint16_t>(sum_ >> weightShift); }
    uint64_t cards() const { return cards_; } // of any of them, by position, a bit each
    uint32_t countWith(size_t card) const { return with_[card] & countMask; }
    uint16_t weightWith(size_t card) const {
        return static_cast<uint16_t>(with_[card] >> weightShift);
    }

private:
    static constexpr unsigned weightShift = 8;
    static constexpr unsigned countMask = (1U << weightShift) - 1;
    static_assert(most <= countMask && most * ClusterMeetings::mostWeight <= countMask);

    // Nothing is set before start(): a board has room for more kinds than it needs.
    size_t cluster_;
    uint64_t cards_;
    uint32_t sum_; // weight << weightShift | count
    alignas(64) std::array<uint16_t, 64> with_;
};

// Holdings sorted by their clusters, into as many kinds as they need.
class Kinds {
public:
    Kinds() { place_.fill(none); }
    void add(const HoldingOrder::Holding& holding, size_t cluster, uint8_t weight) {
        uint8_t& place = place_[cluster];
        if (place == none || kinds_[place].count() == Kind::most) {
            place = static_cast<uint8_t>(size_);
            kinds_[size_++].start(cluster);
        }
        kinds_[place].add(holding, weight);
    }
    void clear() {
        for (const Kind& kind : *this)
            place_[kind.cluster()] = none;
        size_ = 0;
    }
    const Kind* begin() const { return kinds_.data(); }
    const Kind* end() const { return kinds_.data() + size_; }

private:
    static constexpr size_t most =
        ClusterMeetings::numClusters + numHoldings(deckCards) / Kind::most;
    static constexpr uint8_t none = 255;
    static_assert(most < none);
    std::array<uint8_t, ClusterMeetings::numClusters> place_; // of the cluster's last kind
    std::array<Kind, most> kinds_;
    size_t size_ = 0;
};

// The holdings added so far, by cluster: all of them, and those with each card.
struct Holdings {
    alignas(64) Counts sum{};
    alignas(64) std::array<Counts, deckCards> with{};

    void add(const HoldingOrder::Holding& holding, size_t cluster) {
        ++sum[cluster];
        ++with[holding.low][cluster];
        ++with[holding.high][cluster];
    }
    // Adds, for each holding of the kind, times x its weight x those that share no card with it.
    // One with both its cards, the holding itself if it is there, has then been taken off twice:
    // itself is to be the kind's weight if its holdings have been added, and else 0.
    void addDisjoint(const Kind& kind, uint32_t itself, uint32_t times, uint32_t* to) const {
        const uint32_t weight = kind.weight();
        alignas(64) Counts met;
        for (size_t i = 0; i < lanes; ++i)
            met[i] = static_cast<uint16_t>(weight * sum[i]);
        for (uint64_t cards = kind.cards(); cards != 0;)
            subtractFour(kind, cards, met);
        met[kind.cluster()] = static_cast<uint16_t>(met[kind.cluster()] + itself);
        for (size_t i = 0; i < lanes; ++i)
            to[i] += times * met[i];
    }

private:
    // Takes four cards from the set, so that sums are fetched less often than counts; where it has
    // fewer, another counts for nothing.
    void subtractFour(const Kind& kind, uint64_t& cards, Counts& from) const {
        std::array<const uint16_t*, 4> row;
        std::array<uint16_t, 4> weight;
        for (size_t k = 0; k < 4; ++k) {
            const bool left = cards != 0;
            const size_t card = left ? static_cast<size_t>(std::countr_zero(cards)) : 0;
            row[k] = with[card].data();
            weight[k] = left ? kind.weightWith(card) : uint16_t{0};
            cards &= cards - 1;
        }
        for (size_t i = 0; i < lanes; ++i)
            from[i] =
                static_cast<uint16_t>(from[i] - weight[0] * row[0][i] - weight[1] * row[1][i] -
                                      weight[2] * row[2][i] - weight[3] * row[3][i]);
    }
};

// Weight of the one kind x those of the other that share no card: as above.
uint32_t disjoint(const Kind& own, const Kind& other) {
    uint32_t met = uint32_t{own.weight()} * other.count();
    for (uint64_t cards = own.cards() & other.cards(); cards != 0; cards &= cards - 1) {
        const auto card = static_cast<size_t>(std::countr_zero(cards));
        met -= uint32_t{own.weightWith(card)} * other.countWith(card);
    }
    return &own == &other ? met + own.weight() : met;
}

} // namespace

ClusterMeetings::ClusterMeetings() {
    for (auto& sums : sums_)
        sums.resize(cells);
    for (auto& sums : recent_)
        sums.resize(cells);
}

// Holdings of one cluster are met together, as many as may be: they add to one row, and have fewer
// cards between them.
void ClusterMeetings::addBoard(const HoldingOrder& order, const uint8_t* cluster,
                               const uint8_t* weight, uint32_t times) {
    assert(times <= mostTimes);
    if (recentBoards_ == boardsOfASum)
        flush();
    ++recentBoards_;
    const auto clusterAt = [&](size_t place) { return size_t{cluster[order[place].number]}; };
    const auto sort = [&](size_t begin, size_t end, Kinds& kinds) {
        for (size_t i = begin; i < end; ++i)
            kinds.add(order[i], clusterAt(i), weight[order[i].number]);
    };
    const auto addAll = [&](size_t begin, size_t end, Holdings& holdings) {
        for (size_t i = begin; i < end; ++i)
            holdings.add(order[i], clusterAt(i));
    };
    Kinds kinds;
    Holdings holdings;
    for (size_t begin = 0; begin < order.size();) {
        const size_t end = order.groupEnd(begin);
        sort(begin, end, kinds);
        for (const Kind& own : kinds) {
            holdings.addDisjoint(own, 0, times, &recent_[0][own.cluster() * lanes]);
            for (const Kind& other : kinds)
                recent_[1][own.cluster() * lanes + other.cluster()] += times * disjoint(own, other);
        }
        kinds.clear();
        addAll(begin, end, holdings);
        begin = end;
    }
    sort(0, order.size(), kinds);
    for (const Kind& own : kinds)
        holdings.addDisjoint(own, own.weight(), times, &recent_[2][own.cluster() * lanes]);
}

void ClusterMeetings::flush() {
    for (size_t which = 0; which < sums_.size(); ++which) {
        for (size_t cell = 0; cell < cells; ++cell)
            sums_[which][cell] += recent_[which][cell];
        std::fill(recent_[which].begin(), recent_[which].end(), 0);
    }
    recentBoards_ = 0;
}

void ClusterMeetings::add(size_t own, size_t other, uint64_t worse, uint64_t asGood,
                          uint64_t better) {
    assert(own < numClusters && other < numClusters);
    const size_t cell = own * lanes + other;
    sums_[0][cell] += worse;
    sums_[1][cell] += asGood;
    sums_[2][cell] += worse + asGood + better;
}

void ClusterMeetings::add(const ClusterMeetings& other) {
    for (size_t which = 0; which < sums_.size(); ++which)
        for (size_t cell = 0; cell < cells; ++cell)
            sums_[which][cell] += other.sums_[which][cell] + other.recent_[which][cell];
}

} // namespace tamarin
