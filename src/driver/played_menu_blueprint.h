// A blueprint with a tree of its own as an agent plays it: two-player no-limit, in which others bet
// what they like, and three-player limit.
//
// A state holds all actions of its hand, and each decision follows them from the first: whatever
// the dealer did not send, or sent twice, makes no difference. What is drawn on the way, such as
// which size of the tree a bet is taken for, is drawn from the hand's seed, so that it is the same
// at each of the hand's decisions.
#pragma once

#include "driver/played_strategy.h"
#include "game/game.h"
#include "sampling/menu_play.h"
#include "sampling/ready_blueprint.h"
#include "support/result.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tamarin {

class PlayedMenuBlueprint : public PlayedStrategy {
public:
    // Whether such blueprints of a game of hold'em are played; else why not.
    static Status fits(const Game& game);

    // The file, with its card abstraction below lookup/ of the directory; every byte of both is
    // checked. The game must outlive the object. Refuses games that do not fit, and whatever
    // ReadyBlueprint::open() refuses.
    static Result<std::unique_ptr<PlayedMenuBlueprint>>
    open(const std::string& path, const std::string& directory, const Game& game);

    // Always legal. For two seats there is always an answer: where a bet was taken for none, so
    // that the tree is done with the round, it is a call. Nothing where the hand has left the tree,
    // out of turn, and for actions that the rules do not allow.
    std::optional<Action> draw(const MatchState& seen) override;
    std::string describe() const override;

private:
    PlayedMenuBlueprint(std::string path, const Game& game, std::unique_ptr<ReadyBlueprint> ready);
    uint64_t seedOf(const MatchState& seen);

    std::string path_;
    const Game& game_;
    std::unique_ptr<ReadyBlueprint> ready_;
    MenuPlay play_;
    MatchState last_; // whose hand the seed is of
    uint64_t seed_ = 0;
};

// Whether a state of a match may be a later one, or the same one, of the other's hand: it has the
// same number, seat and hole cards, and begins with all actions of the other.
bool goesOnFrom(const MatchState& before, const MatchState& seen, const Game& game);

} // namespace tamarin
