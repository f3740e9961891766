// A blueprint as an agent plays it (two players, limit): the node of the betting tree is followed
// from the actions, the bucket looked up in the card abstraction that the blueprint names.
//
// Both are mapped, and every byte of them is checked before the first hand: a checksum of a quarter
// of a gigabyte takes a tenth of a second, and a damaged byte in a range of good ones could not be
// told in play. What was looked at is given back at once, so that in memory are only the pages that
// hands ask for. No other table is needed.
#pragma once

#include "blueprint/blueprint_play.h"
#include "driver/played_strategy.h"
#include "game/game.h"
#include "support/result.h"
#include "tree/compiled_tree.h"

#include <array>
#include <memory>
#include <span>

namespace tamarin {

// Beside a game's other strategies; see blueprint/blueprint_file.h.
inline constexpr const char* blueprintName = "blueprint";
std::string blueprintBeside(const std::string& strategy);

class PlayedBlueprint : public PlayedStrategy {
public:
    // Whether blueprints of such games are played; else why not.
    static Status fits(const Game& game);

    // The file, with its card abstraction below lookup/ of the directory. Refuses games that do not
    // fit, and whatever BlueprintPlay::open refuses.
    static Result<std::unique_ptr<PlayedBlueprint>>
    open(const std::string& path, const std::string& directory, const Game& game);

    std::optional<Action> draw(const MatchState& seen) override;
    std::string describe() const override;

private:
    PlayedBlueprint(std::string path, std::unique_ptr<CompiledTree> tree, BlueprintPlay play)
        : path_(std::move(path)), tree_(std::move(tree)), play_(std::move(play)) {}
    uint16_t bucket(const MatchState& seen);

    std::string path_;
    std::unique_ptr<CompiledTree> tree_; // before what points into it
    BlueprintPlay play_;

    // The hand that was looked up last: its cards are asked for at every decision of a round.
    std::array<uint8_t, 7> cards_{};
    size_t numCards_ = 0;
    uint16_t bucket_ = 0;
};

// The decision node at which a state of the tree's game is; nothing where the tree has none. Raises
// are all of one size.
std::optional<int32_t> nodeOf(const CompiledTree& tree, const State& state);

// An action as likely as its share; never one with no share.
ActionType drawAction(const ActionShares& shares);

} // namespace tamarin
