// CFR::train's iterations on the compiled tree: the same draws, the same additions in the same
// order, and so the same sums, to the bit, as the plain recursion CFR::calc leaves.
#pragma once

#include "solver/deal_programs.h"

#include <cstdint>
#include <vector>

namespace tamarin {

class CompiledTraining {
public:
    // game, payoffs and sets must outlive the object. The deck is in its starting order.
    CompiledTraining(const Game& game, const CompiledTree& tree, Payoffs& payoffs,
                     InformationSets& sets);

    // Plays this many random deals, drawn from the process-wide engine, updating every set visited
    // and adding the root's values to utilSum (one entry a seat).
    void run(unsigned long long iterations, double* utilSum);

private:
    size_t numPlayers_;
    size_t numCards_;
    std::vector<uint32_t> deck_; // positions in solverDeck
    DealPrograms programs_;
};

} // namespace tamarin
