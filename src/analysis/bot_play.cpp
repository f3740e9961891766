#include "analysis/bot_play.h"

#include "response/simple_play.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

RulePlay::RulePlay(const Game& game, const CompiledTree& tree)
    : game_(game), actions_(tree.nodes().size()) {
    State state{};
    initState(&game, 0, &state);
    ask(tree, 0, state);
}

// The bot itself is asked at every node, for every class of hands.
void RulePlay::ask(const CompiledTree& tree, int32_t node, const State& state) {
    for (size_t c = 0; c < handClasses; ++c) {
        const Action chosen = ruleChoiceWith(&game_, &state, static_cast<HandClass>(c));
        actions_[static_cast<size_t>(node)][c] = static_cast<uint8_t>(chosen.type);
    }
    for (size_t a = 0; a < numAbstractedActions; ++a) {
        const int32_t child = tree.nodes()[static_cast<size_t>(node)].child[a];
        if (child == CompiledTree::noChild || child < 0)
            continue;
        State next = state;
        const Action action{static_cast<ActionType>(a), 0};
        doAction(&game_, &action, &next);
        ask(tree, child, next);
    }
}

uint16_t RulePlay::classOf(int seat, int round, std::span<const uint8_t> cards) const {
    MatchState view{};
    view.viewingPlayer = static_cast<uint8_t>(seat);
    view.state.round = static_cast<uint8_t>(round);
    assert(cards.size() == size_t{game_.numHoleCards} + sumBoardCards(&game_, round));
    std::copy_n(cards.begin(), game_.numHoleCards, view.state.holeCards[seat]);
    std::copy(cards.begin() + game_.numHoleCards, cards.end(), view.state.boardCards);
    return static_cast<uint16_t>(classifyHand(&game_, &view));
}

ActionShares RulePlay::shares(int32_t node, size_t handClass) const {
    ActionShares shares{};
    shares[actions_[static_cast<size_t>(node)][handClass]] = 1;
    return shares;
}

std::unique_ptr<HandStrategy> botPlay(std::string_view bot, const Game& game,
                                      const CompiledTree& tree) {
    if (bot == "rule")
        return std::make_unique<RulePlay>(game, tree);
    // The random bot draws among what the rules allow, each as likely.
    const auto play = simplePlayNamed(bot == "random" ? "uniform" : bot);
    if (!play || (bot != "random" && bot != "call" && bot != "raise"))
        return nullptr;
    return std::make_unique<SimpleStrategy>(tree, *play);
}

} // namespace tamarin
