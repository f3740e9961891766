// A game that is small enough to look at every deal: its compiled tree, its information sets in the
// player's card-rank keys, and its deals, with what each seat knows of them.
#pragma once

#include "support/result.h"
#include "tree/compiled_game.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tamarin {

// Deals in arrays, deal by deal; equal ones are merged and weigh more.
struct DealTable {
    size_t size = 0;
    std::vector<double> weight;               // probability; adds up to 1
    std::vector<uint32_t> outcome;            // index into the payoffs' tables
    std::vector<std::vector<uint32_t>> field; // [seat][deal]: the card field of the seat's keys
    // [round * seats + seat][deal]: what the seat knows of the cards in that round, in full: all
    // its hole cards and the board so far, without regard to the order in which they were dealt.
    std::vector<std::vector<uint32_t>> view;
    std::vector<uint32_t> numViews; // [round * seats + seat]
};

// What looking at every deal costs.
struct SmallGameCost {
    uint64_t deals = 0;         // ordered
    uint64_t decisionNodes = 0; // 0: not counted, because the deals alone are too many
    uint64_t informationSets = 0;
    uint64_t bytes = 0; // of deal tables
};

class SmallGame {
public:
    // Ordered deals and nodes x deals that are still looked at: about a second a pass.
    static constexpr uint64_t maxDeals = 20'000'000;
    static constexpr uint64_t maxNodes = 2'000'000;
    static constexpr uint64_t maxWork = 4'000'000'000;

    // The game is copied. Refuses one that is too large, naming its deals and nodes; the full deck
    // has no card-rank keys and is refused too.
    static Result<std::unique_ptr<SmallGame>> make(const Game& game);

    const Game& game() const { return game_; }
    const CompiledTree& tree() const { return compiled_.tree; }
    const Payoffs& payoffs() const { return compiled_.payoffs; }
    const SetLayout& layout() const { return layout_; }
    const SmallGameCost& cost() const { return cost_; }

    // Merged by all that the seats know: for values and best responses.
    const DealTable& deals() const { return deals_; }
    // Merged by all that the keys tell and the outcome: far fewer, for training.
    const DealTable& keyDeals() const { return keyDeals_; }

private:
    explicit SmallGame(const Game& game);
    void dealAll();

    Game game_;
    CompiledGame compiled_;
    SetLayout layout_;
    SmallGameCost cost_;
    DealTable deals_;
    DealTable keyDeals_;
};

} // namespace tamarin
