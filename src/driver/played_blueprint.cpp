#include "driver/played_blueprint.h"

#include "abstraction/round_indexers.h"
#include "support/rng.h"

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <utility>

namespace tamarin {

std::string blueprintBeside(const std::string& strategy) {
    return std::filesystem::path(strategy).replace_filename(blueprintName).string();
}

Status PlayedBlueprint::fits(const Game& game) {
    if (game.numPlayers != 2 || game.bettingRule != limitRule)
        return Error{"blueprints are played in limit games for two"};
    return {};
}

Result<std::unique_ptr<PlayedBlueprint>>
PlayedBlueprint::open(const std::string& path, const std::string& directory, const Game& game) {
    if (const Status played = fits(game); !played)
        return Error{path + ": " + played.error()};
    auto tree = std::make_unique<CompiledTree>(game);
    auto play = BlueprintPlay::open(path, directory, game, *tree);
    if (!play)
        return Error{play.error()};
    return std::unique_ptr<PlayedBlueprint>(
        new PlayedBlueprint(path, std::move(tree), std::move(*play)));
}

std::string PlayedBlueprint::describe() const {
    return path_ + ", over " + play_.origin().abstraction + ", " +
           std::to_string(play_.origin().steps) + " iterations";
}

std::optional<Action> PlayedBlueprint::draw(const MatchState& seen) {
    const auto node = nodeOf(*tree_, seen.state);
    if (!node || tree_->nodes()[static_cast<size_t>(*node)].player != seen.viewingPlayer)
        return std::nullopt;
    return Action{drawAction(play_.shares(*node, bucket(seen))), 0};
}

// Of the viewing seat's hand in the present round.
uint16_t PlayedBlueprint::bucket(const MatchState& seen) {
    const auto round = static_cast<size_t>(seen.state.round);
    const auto board = static_cast<size_t>(roundBoardCards[round]);
    std::array<uint8_t, 7> cards{};
    std::copy_n(seen.state.holeCards[seen.viewingPlayer], 2, cards.begin());
    std::copy_n(seen.state.boardCards, board, cards.begin() + 2);
    if (numCards_ != 2 + board || cards != cards_) {
        cards_ = cards;
        numCards_ = 2 + board;
        bucket_ =
            play_.classOf(seen.viewingPlayer, seen.state.round, std::span(cards).first(numCards_));
    }
    return bucket_;
}

std::optional<int32_t> nodeOf(const CompiledTree& tree, const State& state) {
    int32_t node = 0;
    for (int round = 0; round <= state.round; ++round)
        for (int i = 0; i < state.numActions[round]; ++i) {
            const auto action = static_cast<size_t>(state.action[round][i].type);
            if (action >= numAbstractedActions)
                return std::nullopt;
            node = tree.nodes()[static_cast<size_t>(node)].child[action];
            if (node < 0) // the hand's end, or nothing that the rules allow
                return std::nullopt;
        }
    if (tree.nodes()[static_cast<size_t>(node)].round != state.round)
        return std::nullopt;
    return node;
}

ActionType drawAction(const ActionShares& shares) {
    double left = pick_a_number(0.0, 1.0);
    size_t drawn = shares.size();
    for (size_t a = 0; a < shares.size() && left >= 0; ++a) {
        if (shares[a] <= 0)
            continue;
        drawn = a; // the last one with a share has what rounding leaves
        left -= shares[a];
    }
    assert(drawn < shares.size());
    return static_cast<ActionType>(drawn);
}

} // namespace tamarin
