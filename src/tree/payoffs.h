// What every settlement is worth to every seat, by the outcome of the deal.
//
// A showdown depends on the cards only through who beats whom: the outcome, the weak order of all
// seats' hand ranks. A table of settlements x seats is therefore kept for each outcome met so far
// (13 outcomes at most for three players), filled through valueOfState itself, so that its values
// are that function's to the last bit.
#pragma once

#include "tree/compiled_tree.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tamarin {

class Payoffs {
public:
    // game and settlements, or the tree that has them, must outlive the object.
    Payoffs(const Game& game, const std::vector<CompiledTree::Settlement>& settlements);
    Payoffs(const Game& game, const CompiledTree& tree) : Payoffs(game, tree.settlements()) {}

    // Values per row: the number of players, padded to an even count of whole vectors (2, 4, 8, 12)
    // with zeros.
    size_t stride() const { return stride_; }

    // The outcome of the cards that the state holds (all hole cards and the whole board).
    uint32_t outcomeOf(const State& state);

    // Row r of the table is the settlement r: table + r * stride(), one value a seat. The table
    // stays where it is as long as the object lives.
    const double* table(uint32_t outcome) const { return tables_[outcome].get(); }
    size_t numOutcomes() const { return tables_.size(); }

private:
    const Game& game_;
    const std::vector<CompiledTree::Settlement>& settlements_;
    size_t stride_;
    std::unordered_map<uint64_t, uint32_t> outcomes_; // by order code
    std::vector<std::unique_ptr<double[]>> tables_;
};

} // namespace tamarin
