#include "driver/played_menu_blueprint.h"

#include "driver/possible_state.h"
#include "support/rng.h"

#include <algorithm>
#include <utility>

namespace tamarin {

Status PlayedMenuBlueprint::fits(const Game& game) {
    const bool two = game.numPlayers == 2 && game.bettingRule == noLimitRule;
    const bool three = game.numPlayers == 3 && game.bettingRule == limitRule;
    if (!two && !three)
        return Error{"blueprints by external sampling are played in no-limit games for two and "
                     "limit games for three"};
    return {};
}

Result<std::unique_ptr<PlayedMenuBlueprint>>
PlayedMenuBlueprint::open(const std::string& path, const std::string& directory, const Game& game) {
    if (const Status played = fits(game); !played)
        return Error{path + ": " + played.error()};
    auto ready = ReadyBlueprint::open(path, directory, game);
    if (!ready)
        return Error{ready.error()};
    return std::unique_ptr<PlayedMenuBlueprint>(
        new PlayedMenuBlueprint(path, game, std::move(*ready)));
}

PlayedMenuBlueprint::PlayedMenuBlueprint(std::string path, const Game& game,
                                         std::unique_ptr<ReadyBlueprint> ready)
    : path_(std::move(path)), game_(game), ready_(std::move(ready)),
      play_(game, ready_->blueprint(), ready_->buckets()), last_(unseenState()) {}

std::string PlayedMenuBlueprint::describe() const {
    const BlueprintOrigin& origin = ready_->blueprint().origin().training;
    return path_ + ", over " + origin.abstraction + ", " + std::to_string(origin.steps) +
           " iterations";
}

// One seed a hand, not one a number and cards: a dealer may give all hands the same number, and
// whoever sees our cards at showdowns would then know what we do with them.
uint64_t PlayedMenuBlueprint::seedOf(const MatchState& seen) {
    if (!goesOnFrom(last_, seen, game_))
        seed_ = static_cast<uint64_t>(pick_a_number(0.0, 1.0) * 0x1p53);
    last_ = seen;
    return seed_;
}

std::optional<Action> PlayedMenuBlueprint::draw(const MatchState& seen) {
    const State& now = seen.state;
    if (now.finished || currentPlayer(&game_, &now) != seen.viewingPlayer)
        return std::nullopt;
    play_.begin(seedOf(seen));
    State state = now;
    initState(&game_, now.handId, &state); // leaves the cards
    for (int round = 0; round <= now.round; ++round)
        for (int i = 0; i < now.numActions[round]; ++i) {
            Action action = now.action[round][i];
            if (state.round != round || !isValidAction(&game_, &state, 0, &action))
                return std::nullopt;
            if (currentPlayer(&game_, &state) == seen.viewingPlayer)
                play_.repeat(state, action);
            else
                play_.see(state, action);
            doAction(&game_, &action, &state);
        }
    if (state.round != now.round || play_.lost())
        return std::nullopt;
    return play_.act(state);
}

bool goesOnFrom(const MatchState& before, const MatchState& seen, const Game& game) {
    const State& first = before.state;
    const State& second = seen.state;
    const uint8_t seat = seen.viewingPlayer;
    if (first.handId != second.handId || before.viewingPlayer != seat ||
        !std::equal(first.holeCards[seat], first.holeCards[seat] + game.numHoleCards,
                    second.holeCards[seat]) ||
        first.round > second.round)
        return false;
    for (int round = 0; round <= first.round; ++round) {
        if (first.numActions[round] > second.numActions[round])
            return false;
        for (int i = 0; i < first.numActions[round]; ++i)
            if (first.action[round][i].type != second.action[round][i].type ||
                first.action[round][i].size != second.action[round][i].size)
                return false;
    }
    return true;
}

} // namespace tamarin
