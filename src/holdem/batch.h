// Many deals walked down the compiled hold'em tree together, by all threads.
//
// The tree is cut into subtrees of a few thousand nodes at most, and the few nodes above them, the
// trunk. Each subtree is walked by one thread for all deals of the batch, one after another, so
// that its numbers stay in that core's cache and each deal finds what the deal before it left. The
// trunk's strategies stay as they are during a batch, and its sums are added deal by deal at its
// end. So the result depends on how many deals are a batch, and on nothing else: not on the number
// of threads, not on who walks what. A batch of one deal leaves the sums of HoldemWalk, to the bit.
#pragma once

#include "holdem/walk.h"

#include <span>

namespace tamarin {

// One deal of a batch.
struct BatchDeal {
    State cards; // all hole cards and the whole board
    DealBuckets buckets;
    double weight = 1.0;
    double value[MAX_PLAYERS] = {}; // what the walk found: the value to each seat
};

class HoldemBatch {
public:
    // The game and the sets must outlive the object. threads: 0 for all cores.
    HoldemBatch(const Game& game, HoldemSets& sets, int threads = 0);
    ~HoldemBatch();

    // As HoldemWalk's; any rule but respond.
    void iterate(HoldemRule rule, std::span<BatchDeal> deals);
    // The rule respond: seat's numbers are those of responder, HoldemSets of the same game.
    void respond(HoldemSets& responder, int seat, std::span<BatchDeal> deals);
    // Everybody plays the average strategy, seat that of responder.
    void valueOfResponse(HoldemSets& responder, int seat, std::span<BatchDeal> deals);

    size_t numTrunkNodes() const;
    size_t numSubtrees() const;

private:
    void place(std::span<BatchDeal> deals);
    void replaceSeat(HoldemSets& responder, int seat);
    template <HoldemRule rule>
    void walk(std::span<BatchDeal> deals);
    template <HoldemRule rule, size_t stride>
    class CutWalk;
    template <HoldemRule rule, size_t stride>
    void walkCut(std::span<BatchDeal> deals);

    struct Parts;
    const Game& game_;
    HoldemSets& sets_;
    int threads_;
    std::unique_ptr<Parts> parts_;
};

} // namespace tamarin
