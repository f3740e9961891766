#include "toolbox/known_strategies.h"

#include "analysis/bot_play.h"
#include "directory/holdem_game.h"
#include "holdem/read_strategy.h"
#include "response/bucket_play.h"
#include "response/simple_play.h"
#include "toolbox/command.h"

#include <algorithm>
#include <filesystem>

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

// Reads what is named, once for each file.
class KnownStrategies::Opener {
public:
    Opener(KnownStrategies& into, const GameFile& game, const std::string& directory)
        : into_(into), game_(game), directory_(directory) {}

    Result<std::shared_ptr<const HandStrategy>> open(const std::string& what) {
        if (what == "rule")
            return std::shared_ptr<const HandStrategy>(
                std::make_shared<RulePlay>(*game_.rules, *into_.tree_));
        if (const auto simple = simplePlayNamed(what))
            return std::shared_ptr<const HandStrategy>(
                std::make_shared<SimpleStrategy>(*into_.tree_, *simple));
        return openFile(what);
    }

private:
    Result<std::shared_ptr<const HandStrategy>> openFile(const std::string& what) {
        const auto holdem = openHoldem(game_.path, directory_);
        if (!holdem)
            return Error{holdem.error()};
        if (!*holdem)
            return Error{"strategy files are known in hold'em alone; other games with call, raise, "
                         "fold, uniform or rule"};
        const std::string path =
            what == "player" ? holdemStrategyPath(directory_, **holdem) : what + "/strategy";
        if (!std::filesystem::exists(path))
            return Error{"there is no strategy " + path};
        if (!into_.tables_) {
            auto tables = HoldemTables::open(directory_, 2);
            if (!tables)
                return Error{tables.error()};
            into_.tables_ = std::make_unique<HoldemTables>(std::move(*tables));
        }
        auto sets = std::make_unique<HoldemSets>(*game_.rules);
        if (Status read = readStrategyFile(path, *sets); !read)
            return Error{read.error()};
        auto play = std::make_shared<BucketPlay>(*sets, into_.tables_->buckets());
        into_.sets_.push_back(std::move(sets));
        return std::shared_ptr<const HandStrategy>(std::move(play));
    }

    KnownStrategies& into_;
    const GameFile& game_;
    const std::string& directory_;
};

KnownStrategies::~KnownStrategies() = default;

Result<std::unique_ptr<KnownStrategies>>
KnownStrategies::open(const GameFile& game, const std::string& directory,
                      const std::vector<NamedStrategy>& named) {
    if (Status fits = FreedResults::check(*game.rules); !fits)
        return Error{game.name + ": " + fits.error()};
    std::unique_ptr<KnownStrategies> known(new KnownStrategies);
    known->tree_ = std::make_unique<CompiledTree>(*game.rules);
    Opener opener(*known, game, directory);
    for (const NamedStrategy& one : named) {
        auto strategy = opener.open(one.what);
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
