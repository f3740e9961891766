// The hands of a match, freed of luck as far as the players' strategies are known.
#pragma once

#include "abstraction/work.h"
#include "analysis/equity_estimate.h"
#include "analysis/luck_free.h"
#include "showdown/board_margins.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tamarin {

// A hand and who sat where, by the players' numbers.
struct SeatedHand {
    PlayedHand hand;
    std::array<size_t, 2> players; // by seat
    uint32_t number;               // of the hand, for messages
};

// Of seat 0, in chips; nothing where too little is known.
struct FreedHand {
    std::optional<double> luckFree; // one strategy known; of two the mean of what either gives
    std::optional<double> expected; // both known: what the deal is worth (deal_value.h)
};

class FreedResults {
public:
    // Refuses other games than limit for two with two hole cards.
    static Status check(const Game& game);

    // Of a game that check() takes. Both must outlive the object.
    FreedResults(const Game& game, const CompiledTree& tree);
    FreedResults(const FreedResults&) = delete;
    FreedResults& operator=(const FreedResults&) = delete;

    // A player plays by this strategy, of the tree.
    void know(size_t player, std::shared_ptr<const HandStrategy> strategy);
    bool knows(size_t player) const { return known_.contains(player); }
    bool knowsAny() const { return !known_.empty(); }

    // Before the first hand, when any strategy is known: seconds. stopped() when work was stopped.
    Status prepare(const Work& work) { return margins_.prepare(work); }

    // An error when a player did what its strategy never does. Any thread.
    Result<FreedHand> of(const SeatedHand& hand) const;
    // The same for many, with threads; in the order of the hands.
    Result<std::vector<FreedHand>> of(std::span<const SeatedHand> hands, const Work& work) const;

private:
    struct Known {
        std::shared_ptr<const HandStrategy> strategy;
        std::unique_ptr<EquityEstimate> estimate;
        std::unique_ptr<LuckFree> luckFree;
    };
    const Game& game_;
    const CompiledTree& tree_;
    PublicDeck deck_;
    BoardMargins margins_;
    std::map<size_t, Known> known_;
};

} // namespace tamarin
