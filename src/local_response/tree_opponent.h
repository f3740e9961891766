// An opponent that plays a strategy of the game's betting tree, and by pot odds outside it: as
// `player` does in hold'em.
#pragma once

#include "local_response/opponent.h"
#include "response/hand_strategy.h"
#include "tree/compiled_tree.h"

#include <functional>

namespace tamarin {

class TreeOpponent : public Opponent {
public:
    // The probability that a hand (two hole cards, then the board of a round) beats a random one; a
    // tie counts as lost. Asked by many threads at once.
    using EquityOf = std::function<double(int round, const uint8_t* cards)>;

    // equity: of the hands that play by pot odds; empty in limit games, whose trees hold every
    // state. Everything must outlive the object.
    TreeOpponent(const Game& game, const CompiledTree& tree, const HandStrategy& strategy,
                 EquityOf equity = {})
        : game_(game), tree_(tree), strategy_(strategy), equity_(std::move(equity)) {}

    void look(const PublicDeck& deck, int seat, int round, std::span<const uint8_t> board,
              std::span<const uint16_t> holdings, SeenHands& seen) const override;
    void answer(const State& state, size_t hands, const SeenHands& seen,
                RangeAnswer& answer) const override;

    // The tree's node for a state, or noNode: the tree has no raises in no-limit.
    static constexpr int32_t noNode = -1;
    int32_t nodeOf(const State& state) const;

private:
    void answerInTree(int32_t node, size_t hands, const SeenHands& seen, RangeAnswer& answer) const;
    void answerByPotOdds(const State& state, size_t hands, const SeenHands& seen,
                         RangeAnswer& answer) const;

    const Game& game_;
    const CompiledTree& tree_;
    const HandStrategy& strategy_;
    EquityOf equity_;
};

} // namespace tamarin
