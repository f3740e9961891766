// One step of training: public chance sampling in vector form (Johanson, Bard, Lanctot, Gibson and
// Bowling 2012).
//
// The whole betting tree is walked on one board, for all hands of both seats at once. Down go the
// reach probabilities, up come the counterfactual values; the regrets of an information set gain
// the sum over its hands of what each action would have won more than the strategy, and its
// strategy sums gain the strategy, weighed with its own reach. The seats are updated together: all
// strategies of a step are those before it.
//
// A strategy knows a hand by its bucket, and buckets are fewer than hands. Within a round the reach
// of a hand is therefore its reach where the round began, times a factor of its bucket; and of what
// it wins at an ending, regrets need only the sum over a bucket. So hands are looked at where the
// betting of a round begins and ends, and nodes have rows of buckets (those of the board alone).
// What a hand wins from the round's beginning on is, summed over the endings, what the ending gives
// times its own factor there.
//
// Whatever the number of threads, the same bytes come out: a thread has a block of lines
// (line_blocks.h) for itself, its numbers are no other's, and what blocks give to the one above
// them is added there, in their order.
#pragma once

#include "blueprint/blueprint_sets.h"
#include "blueprint/dealt_board.h"
#include "blueprint/ending_sweep.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

class BoardStep {
public:
    // hands: of every board. threads: at least 1. The sets must outlive the object. Allocates all
    // that it ever needs.
    BoardStep(BlueprintSets& sets, size_t hands, int threads);

    // weight: of this step's regrets and strategies. Values are in chips, divided by the hands of a
    // board.
    void run(const DealtBoard& board, float weight);

    static uint64_t memory(const BlueprintSets& sets, size_t hands, int threads);

private:
    // Rows by hand, of the beginning of a block.
    struct Start {
        std::array<std::vector<FloatRow>, 2> reach; // [seat]
        std::array<std::vector<FloatRow>, 2> value;
    };
    // Rows by place of a bucket. Of the last round they are used and done with at once.
    struct Rows {
        std::vector<FloatRow> shares;                // [edge]: of the current strategy
        std::vector<FloatRow> factors;               // [edge]: reach of the seat that took it
        std::array<std::vector<FloatRow>, 2> values; // [seat][edge]: of what it leads to
        std::array<std::vector<FloatRow>, 2> starts; // [seat]: reach of the bucket's hands
    };
    struct Thread {
        Rows last;
        EndingSweep sweep;
    };

    Rows& rowsOf(size_t block, Thread& thread) {
        return block < rows_.size() ? rows_[block] : thread.last;
    }
    void enter(size_t block);
    void goDown(size_t block, Rows& rows);
    void settle(size_t block, Rows& rows, EndingSweep& sweep);
    void takeFromBelow(const LineBlock& block, const LineBlock::Ending& ending, Rows& rows,
                       Start& start, size_t seat) const;
    void goUp(size_t block, Rows& rows);
    template <class Body>
    void forBlocks(int round, const Body& body);

    const DealtBoard::Buckets& bucketsOf(const LineBlock& block) const {
        return board_->rounds[block.round];
    }
    const FloatRow* factorAt(const Rows& rows, int32_t edge, size_t places) const {
        return edge == LineBlock::none ? nullptr
                                       : rows.factors.data() + static_cast<size_t>(edge) * places;
    }

    BlueprintSets& sets_;
    const LineBlocks& lines_;
    size_t hands_;
    float chip_;                // what a chip counts
    std::vector<Start> starts_; // by block
    std::vector<Rows> rows_;    // by block, of all rounds but the last
    std::vector<Thread> threads_;
    const DealtBoard* board_ = nullptr;
    float weight_ = 0;
};

} // namespace tamarin
