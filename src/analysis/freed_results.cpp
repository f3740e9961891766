#include "analysis/freed_results.h"

#include "analysis/deal_value.h"
#include "response/betting_rounds.h"

#include <algorithm>
#include <stdexcept>

namespace tamarin {

Status FreedResults::check(const Game& game) {
    if (game.numPlayers != 2 || game.bettingRule != limitRule || game.numHoleCards != 2)
        return Error{"results are freed of luck in limit games for two with two hole cards alone"};
    constexpr size_t mostNodes = 200'000; // many times those of limit hold'em for two, 6,378
    try {
        const CompiledTree tree(game, mostNodes);
        if (const auto rounds = BettingRounds::of(game, tree); !rounds)
            return Error{rounds.error()};
    } catch (const std::length_error& tooLarge) {
        return Error{std::string(tooLarge.what()) + ", too many for results freed of luck"};
    }
    return {};
}

FreedResults::FreedResults(const Game& game, const CompiledTree& tree)
    : game_(game), tree_(tree), deck_(game), margins_(game, deck_) {}

void FreedResults::know(size_t player, std::shared_ptr<const HandStrategy> strategy) {
    Known known;
    known.estimate = std::make_unique<EquityEstimate>(tree_, *strategy, margins_);
    known.luckFree = std::make_unique<LuckFree>(game_, tree_, deck_, *strategy, *known.estimate);
    known.strategy = std::move(strategy);
    known_[player] = std::move(known);
}

Result<FreedHand> FreedResults::of(const SeatedHand& seated) const {
    FreedHand freed;
    double sum = 0;
    int count = 0;
    std::array<const HandStrategy*, 2> strategies{};
    for (int seat = 0; seat < 2; ++seat) {
        const auto known = known_.find(seated.players[static_cast<size_t>(seat)]);
        if (known == known_.end())
            continue;
        const auto won = known->second.luckFree->of(seated.hand, seat);
        if (!won)
            return Error{"hand " + std::to_string(seated.number) + ": " + won.error()};
        sum += seat == 0 ? *won : -*won;
        ++count;
        strategies[static_cast<size_t>(seat)] = known->second.strategy.get();
    }
    if (count > 0)
        freed.luckFree = sum / count;
    if (count == 2)
        freed.expected = dealValue(game_, tree_, strategies, seated.hand.hole,
                                   wholeBoard(game_, deck_, seated.hand));
    return freed;
}

Result<std::vector<FreedHand>> FreedResults::of(std::span<const SeatedHand> hands,
                                                const Work& work) const {
    std::vector<FreedHand> freed(hands.size());
    std::vector<std::string> errors(hands.size());
    const bool whole = forEach(work, hands.size(), [&](size_t i) {
        auto one = of(hands[i]);
        if (one)
            freed[i] = *one;
        else
            errors[i] = one.error();
    });
    if (!whole)
        return stopped();
    // The first of them, whichever thread came first.
    const auto wrong = std::ranges::find_if(errors, [](const auto& e) { return !e.empty(); });
    if (wrong != errors.end())
        return Error{*wrong};
    return freed;
}

} // namespace tamarin
