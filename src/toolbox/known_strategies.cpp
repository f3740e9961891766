#include "toolbox/known_strategies.h"

#include "analysis/bot_play.h"
#include "blueprint/blueprint_play.h"
#include "directory/blueprints.h"
#include "driver/played_blueprint.h"
#include "toolbox/command.h"
#include "toolbox/file_play.h"

#include <filesystem>
#include <utility>

namespace tamarin {

NamedStrategy parseNamedStrategy(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw UsageError("--strategy: '" + text + "' is not NAME=STRATEGY");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

std::vector<NamedStrategy> knownOfSeats(const std::vector<Seat>& seats) {
    std::vector<NamedStrategy> known;
    for (const Seat& seat : seats) {
        if (seat.kind == SeatKind::bot)
            known.push_back({seat.name, seat.bot == "random" ? "uniform" : seat.bot});
        else if (seat.kind == SeatKind::command && seat.command == "player")
            known.push_back({seat.name, "player"});
    }
    return known;
}

namespace {

// The blueprint that stands for a name: the file itself, or the one that `player` plays, which is
// none that cannot be opened. Empty where none does.
std::string blueprintMeant(const GameFile& game, const std::string& directory,
                           const std::string& what, const CompiledTree& tree) {
    if (what != "player")
        return isBlueprint(what) ? what : "";
    const auto holdem = openHoldem(game.path, directory);
    if (!holdem || !*holdem)
        return "";
    const std::string path = blueprintBeside(holdemStrategyPath(directory, **holdem));
    return std::filesystem::exists(path) && BlueprintPlay::open(path, directory, *game.rules, tree)
               ? path
               : "";
}

} // namespace

Result<std::shared_ptr<const HandStrategy>> KnownStrategies::openOne(const GameFile& game,
                                                                     const std::string& directory,
                                                                     const std::string& what) {
    using Shared = std::shared_ptr<const HandStrategy>;
    if (what == "rule")
        return Shared(std::make_shared<RulePlay>(*game.rules, *tree_));
    if (const auto simple = simplePlayNamed(what))
        return Shared(std::make_shared<SimpleStrategy>(*tree_, *simple));
    if (const auto path = blueprintMeant(game, directory, what, *tree_); !path.empty()) {
        auto blueprint = BlueprintPlay::open(path, directory, *game.rules, *tree_);
        if (!blueprint)
            return Error{blueprint.error()};
        return Shared(std::make_shared<BlueprintPlay>(std::move(*blueprint)));
    }
    auto file = openFilePlay(game.path, directory, what == "player" ? "" : what);
    if (!file)
        return Error{file.error()};
    const auto kept = std::make_shared<const FilePlay>(std::move(*file));
    return Shared(kept, kept->strategy.get());
}

Result<std::unique_ptr<KnownStrategies>>
KnownStrategies::open(const GameFile& game, const std::string& directory,
                      const std::vector<NamedStrategy>& named) {
    if (Status fits = FreedResults::check(*game.rules); !fits)
        return Error{game.name + ": " + fits.error()};
    std::unique_ptr<KnownStrategies> known(new KnownStrategies);
    known->tree_ = std::make_unique<CompiledTree>(*game.rules);
    for (const NamedStrategy& one : named) {
        auto strategy = known->openOne(game, directory, one.what);
        if (!strategy)
            return Error{one.name + ": " + strategy.error()};
        known->strategies_.emplace_back(one.name, std::move(*strategy));
    }
    known->results_ = std::make_unique<FreedResults>(*game.rules, *known->tree_);
    return known;
}

bool KnownStrategies::tell(const std::string& name, size_t player) {
    for (const auto& [known, strategy] : strategies_)
        if (known == name) {
            results_->know(player, strategy);
            return true;
        }
    return false;
}

} // namespace tamarin
