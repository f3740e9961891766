// What each seat wins against a strategy on one flop: exact, over every turn, river and hand.
#pragma once

#include "abstraction/work.h"
#include "response/betting_rounds.h"
#include "response/hand_strategy.h"
#include "response/public_deck.h"
#include "support/result.h"

#include <array>
#include <memory>
#include <vector>

namespace tamarin {

// A game for two and a strategy in it, ready to be measured: everything must outlive the object.
struct MeasuredGame {
    const Game& game;
    const CompiledTree& tree;
    const BettingRounds& rounds;
    const PublicDeck& deck;
    const HandStrategy& strategy;
};

// Counterfactual values on a flop, by [line that reaches it][class of starting hands]: the mean
// over the hands of the class of what such a hand wins there, summed over the opponent's hands,
// each weighed with the probability of its own actions, and averaged over turns and rivers; in
// chips. Hands that share a card with the flop win 0.
struct FlopValues {
    // [seat]: with the best play from the flop on, against the strategy of the other seat; and with
    // the strategy's own play.
    std::array<std::vector<double>, 2> best;
    std::array<std::vector<double>, 2> value;
    // [seat][rounds]: with the strategy's own play on the flop and so many rounds after it, and the
    // best from the next one on; up to the last round alone. Empty where nobody looked.
    std::array<std::vector<std::vector<double>>, 2> later;
};

// Numbers are computed with floats (float), or with doubles for comparisons.
enum class LaneNumbers : uint8_t { floats, doubles };

class FlopResponse {
public:
    explicit FlopResponse(const MeasuredGame& game, LaneNumbers numbers = LaneNumbers::floats);
    ~FlopResponse();
    FlopResponse(const FlopResponse&) = delete;
    FlopResponse& operator=(const FlopResponse&) = delete;

    // Bytes that so many threads need, but for the strategy.
    uint64_t memory(int threads) const;

    // flop: one of deck.extend(deck.empty(), ...), or any board of so many cards with its
    // symmetries. The numbers do not depend on the number of threads. stopped() when work was
    // stopped.
    Result<FlopValues> on(const PublicBoard& flop, const Work& work) const;

private:
    class Walks;
    template <class Weight>
    class TypedWalks;
    std::unique_ptr<Walks> walks_;
};

} // namespace tamarin
