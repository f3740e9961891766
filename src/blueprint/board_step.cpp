#include "blueprint/board_step.h"

#include <algorithm>
#include <cassert>
#include <omp.h>

namespace tamarin {

namespace {

// Places that a round's buckets can take on a board.
size_t mostPlaces(const BlueprintSets& sets, int round, size_t hands) {
    return std::min(sets.numBuckets(round), hands);
}

size_t edgeRows(const BlueprintSets& sets, size_t block, size_t hands) {
    const LineBlock& lines = sets.lines().blocks()[block];
    return lines.edges.size() * mostPlaces(sets, lines.round, hands);
}

size_t mostEdgeRows(const BlueprintSets& sets, int round, size_t hands) {
    size_t most = 0;
    for (size_t b = sets.lines().roundStart(round); b < sets.lines().roundEnd(round); ++b)
        most = std::max(most, edgeRows(sets, b, hands));
    return most;
}

// Regret matching, lane by lane: shares of the positive regrets, uniform where there are none. The
// shares of an action lie a stride apart from the next one's. 0 divided by 0 is thrown away.
void matchRegretRows(const FloatRow* regrets, size_t actions, size_t stride, FloatRow* shares) {
    const FloatRow::Lanes zero{};
    FloatRow::Lanes total{};
    for (size_t a = 0; a < actions; ++a) {
        const FloatRow::Lanes positive = regrets[a].lanes > zero ? regrets[a].lanes : zero;
        shares[a * stride].lanes = positive;
        total += positive;
    }
    const FloatRow::Lanes uniform = zero + 1.0F / static_cast<float>(actions);
    for (size_t a = 0; a < actions; ++a) {
        const FloatRow::Lanes share = shares[a * stride].lanes / total;
        shares[a * stride].lanes = total > zero ? share : uniform;
    }
}

} // namespace

BoardStep::BoardStep(BlueprintSets& sets, size_t hands, int threads)
    : sets_(sets), lines_(sets.lines()), hands_(hands), starts_(lines_.blocks().size()) {
    assert(threads > 0 && hands > 1);
    chip_ = 1.0F / static_cast<float>(hands);
    for (Start& start : starts_)
        for (size_t seat = 0; seat < 2; ++seat) {
            start.reach[seat].resize(hands);
            start.value[seat].resize(hands);
        }
    const auto make = [](size_t edges, size_t places) {
        Rows rows;
        rows.shares.resize(edges);
        rows.factors.resize(edges);
        for (size_t seat = 0; seat < 2; ++seat) {
            rows.values[seat].resize(edges);
            rows.starts[seat].resize(places);
        }
        return rows;
    };
    const int last = lines_.rounds() - 1;
    for (size_t b = 0; b < lines_.roundStart(last); ++b)
        rows_.push_back(
            make(edgeRows(sets, b, hands), mostPlaces(sets, lines_.blocks()[b].round, hands)));
    for (int t = 0; t < threads; ++t)
        threads_.push_back({make(mostEdgeRows(sets, last, hands), mostPlaces(sets, last, hands)),
                            EndingSweep(hands)});
}

uint64_t BoardStep::memory(const BlueprintSets& sets, size_t hands, int threads) {
    const LineBlocks& lines = sets.lines();
    const int last = lines.rounds() - 1;
    uint64_t rows = lines.blocks().size() * 4 * hands;
    for (size_t b = 0; b < lines.roundStart(last); ++b)
        rows += 4 * edgeRows(sets, b, hands);
    rows += static_cast<uint64_t>(threads) * (4 * mostEdgeRows(sets, last, hands) + 4 * hands);
    return rows * sizeof(FloatRow);
}

// body: allocates nothing.
template <class Body>
void BoardStep::forBlocks(int round, const Body& body) {
    const size_t begin = lines_.roundStart(round);
    const size_t end = lines_.roundEnd(round);
    const int threads = static_cast<int>(std::min(threads_.size(), end - begin));
    // Nothing in here throws.
#pragma omp parallel for schedule(dynamic, 1) num_threads(threads)
    for (size_t block = begin; block < end; ++block)
        body(block, threads_[static_cast<size_t>(omp_get_thread_num())]);
}

void BoardStep::run(const DealtBoard& board, float weight) {
    assert(board.hands.size() == hands_);
    board_ = &board;
    weight_ = weight;
    const int last = lines_.rounds() - 1;
    for (int round = 0; round < last; ++round)
        forBlocks(round, [&](size_t block, Thread& thread) {
            enter(block);
            goDown(block, rowsOf(block, thread));
        });
    forBlocks(last, [&](size_t block, Thread& thread) {
        Rows& rows = rowsOf(block, thread);
        enter(block);
        goDown(block, rows);
        settle(block, rows, thread.sweep);
        goUp(block, rows);
    });
    for (int round = last - 1; round >= 0; --round)
        forBlocks(round, [&](size_t block, Thread& thread) {
            Rows& rows = rowsOf(block, thread);
            settle(block, rows, thread.sweep);
            goUp(block, rows);
        });
}

// The reach with which each hand comes to the block's lines.
void BoardStep::enter(size_t number) {
    const LineBlock& block = lines_.blocks()[number];
    Start& start = starts_[number];
    for (size_t seat = 0; seat < 2; ++seat) {
        FloatRow* const reach = start.reach[seat].data();
        if (block.above == LineBlock::none) {
            FloatRow one;
            one.lanes[0] = 1;
            std::fill_n(reach, hands_, one);
            continue;
        }
        const auto aboveNumber = static_cast<size_t>(block.above);
        const LineBlock& above = lines_.blocks()[aboveNumber];
        const Rows& rows = rows_[aboveNumber];
        const DealtBoard::Buckets& buckets = bucketsOf(above);
        const uint16_t* const places = buckets.places.data();
        const FloatRow* const reachAbove = starts_[aboveNumber].reach[seat].data();
        for (size_t lane = 0; lane < block.origins.size(); ++lane) {
            const LineBlock::Ending& ending = above.endings[block.origins[lane]];
            const FloatRow* const factor =
                factorAt(rows, ending.last[seat], buckets.present.size());
            if (block.gathered) {
                for (size_t i = 0; i < hands_; ++i)
                    reach[i].lanes[lane] = reachAbove[i].lanes[0] *
                                           (factor == nullptr ? 1.0F : factor[places[i]].lanes[0]);
            } else {
                for (size_t i = 0; i < hands_; ++i)
                    reach[i].lanes = factor == nullptr
                                         ? reachAbove[i].lanes
                                         : reachAbove[i].lanes * factor[places[i]].lanes;
            }
        }
    }
}

// The strategy at every node, and the factors behind every action. A node comes after the one that
// leads to it.
void BoardStep::goDown(size_t number, Rows& rows) {
    const LineBlock& block = lines_.blocks()[number];
    const DealtBoard::Buckets& buckets = bucketsOf(block);
    const size_t places = buckets.present.size();
    for (size_t seat = 0; seat < 2; ++seat) {
        FloatRow* const sums = rows.starts[seat].data();
        const FloatRow* const reach = starts_[number].reach[seat].data();
        std::fill_n(sums, places, FloatRow{});
        for (size_t i = 0; i < hands_; ++i)
            sums[buckets.places[i]].add(reach[i]);
    }
    for (size_t n = 0; n < block.nodes.size(); ++n) {
        const LineBlock::Node& node = block.nodes[n];
        const FloatRow* const regrets = sets_.regrets(number, n);
        FloatRow* const shares = rows.shares.data() + node.firstEdge * places;
        FloatRow* const factors = rows.factors.data() + node.firstEdge * places;
        for (size_t p = 0; p < places; ++p)
            matchRegretRows(regrets + buckets.present[p] * node.edges, node.edges, places,
                            shares + p);
        const FloatRow* const before = factorAt(rows, node.last[node.seat], places);
        for (size_t a = 0; a < node.edges; ++a)
            for (size_t p = 0; p < places; ++p)
                factors[a * places + p].lanes =
                    before == nullptr ? shares[a * places + p].lanes
                                      : before[p].lanes * shares[a * places + p].lanes;
    }
}

// What the endings give, to the edges that lead to them and to the hands at the beginning.
void BoardStep::settle(size_t number, Rows& rows, EndingSweep& sweep) {
    const LineBlock& block = lines_.blocks()[number];
    const DealtBoard::Buckets& buckets = bucketsOf(block);
    const size_t places = buckets.present.size();
    Start& start = starts_[number];
    for (size_t seat = 0; seat < 2; ++seat)
        std::fill_n(start.value[seat].data(), hands_, FloatRow{});
    sweep.forget();
    for (size_t seat = 0; seat < 2; ++seat)
        for (const LineBlock::Ending& ending : block.endings) {
            FloatRow* const sums = rows.values[seat].data() + ending.edge * places;
            std::fill_n(sums, places, FloatRow{});
            if (ending.kind == LineBlock::EndingKind::nextRound) {
                takeFromBelow(block, ending, rows, start, seat);
                continue;
            }
            const size_t other = 1 - seat;
            const EndingReach reach{start.reach[other].data(),
                                    factorAt(rows, ending.last[other], places),
                                    buckets.places.data(), places};
            EndingGain gain{
                sums, start.value[seat].data(), factorAt(rows, ending.last[seat], places), {}};
            const bool fold = ending.kind == LineBlock::EndingKind::fold;
            const float chip = fold && ending.folded == seat ? -chip_ : chip_;
            for (size_t lane = 0; lane < lanesInBlock; ++lane)
                gain.chips[lane] = chip * static_cast<float>(ending.stakes[lane]);
            if (fold)
                sweep.fold(*board_, reach, gain);
            else
                sweep.showdown(*board_, reach, gain);
        }
}

void BoardStep::takeFromBelow(const LineBlock& block, const LineBlock::Ending& ending, Rows& rows,
                              Start& start, size_t seat) const {
    const DealtBoard::Buckets& buckets = bucketsOf(block);
    const size_t places = buckets.present.size();
    const auto below = static_cast<size_t>(ending.below);
    const FloatRow* const values = starts_[below].value[seat].data();
    const FloatRow* const factor = factorAt(rows, ending.last[seat], places);
    FloatRow* const sums = rows.values[seat].data() + ending.edge * places;
    FloatRow* const own = start.value[seat].data();
    const bool gathered = lines_.blocks()[below].gathered;
    for (size_t i = 0; i < hands_; ++i) {
        const size_t place = buckets.places[i];
        FloatRow won;
        if (gathered)
            won.lanes[0] = values[i].lanes[ending.lane];
        else
            won = values[i];
        sums[place].add(won);
        own[i].lanes += factor == nullptr ? won.lanes : factor[place].lanes * won.lanes;
    }
}

// Values from the last node up, and what the sets gain. A node comes before what is below it.
void BoardStep::goUp(size_t number, Rows& rows) {
    const LineBlock& block = lines_.blocks()[number];
    const DealtBoard::Buckets& buckets = bucketsOf(block);
    const size_t places = buckets.present.size();
    for (size_t n = block.nodes.size(); n-- > 0;) {
        const LineBlock::Node& node = block.nodes[n];
        const size_t first = node.firstEdge * places;
        const FloatRow* const shares = rows.shares.data() + first;
        const FloatRow* const values = rows.values[node.seat].data() + first;
        const FloatRow* const others = rows.values[1 - node.seat].data() + first;
        const FloatRow* const starts = rows.starts[node.seat].data();
        const FloatRow* const before = factorAt(rows, node.last[node.seat], places);
        FloatRow* const regrets = sets_.regrets(number, n);
        FloatRow* const sums = sets_.sums(number, n);
        for (size_t p = 0; p < places; ++p) {
            FloatRow value;
            FloatRow other;
            for (size_t a = 0; a < node.edges; ++a) {
                value.lanes += shares[a * places + p].lanes * values[a * places + p].lanes;
                other.add(others[a * places + p]);
            }
            const FloatRow::Lanes reach =
                weight_ * (before == nullptr ? starts[p].lanes : starts[p].lanes * before[p].lanes);
            const size_t set = buckets.present[p] * node.edges;
            for (size_t a = 0; a < node.edges; ++a) {
                regrets[set + a].lanes += weight_ * (values[a * places + p].lanes - value.lanes);
                sums[set + a].lanes += reach * shares[a * places + p].lanes;
            }
            if (node.into != LineBlock::none) {
                const size_t into = static_cast<size_t>(node.into) * places + p;
                rows.values[node.seat][into] = value;
                rows.values[1 - node.seat][into] = other;
            }
        }
    }
}

} // namespace tamarin
