#include "web/opponents.h"

#include "bots/bot.h"
#include "directory/holdem_game.h"
#include "directory/strategies.h"
#include "driver/player.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace tamarin {

namespace {

namespace fs = std::filesystem;

constexpr const char* kuhnOfPlayer = "kuhn.limit.3p.game";

std::string missingOfHoldem(const GameFile& game, const std::string& directory) {
    const auto holdem = openHoldem(game.path, directory);
    if (!holdem || !*holdem)
        return "it plays hold'em under this name";
    std::error_code error;
    if (!fs::exists(holdemStrategyPath(directory, **holdem), error))
        return "it has no strategy yet: tamarin prepare " + game.name;
    if (!missingTablesCost(directory, game.rules->numPlayers).empty())
        return "its tables are missing: tamarin prepare " + game.name;
    return "";
}

std::string missingOfKuhn(const GameFile& game, const std::string& directory) {
    const std::string strategies = strategyDirectory(directory, game.name);
    std::error_code error;
    for (size_t seat = 0; seat < game.rules->numPlayers; ++seat)
        if (!fs::exists(strategyPath(strategies, seat), error))
            return "it has no strategy yet: tamarin prepare " + game.name;
    return "";
}

std::string missingOfPlayer(const GameFile& game, const std::string& directory) {
    if (playsAsHoldem(game.name))
        return missingOfHoldem(game, directory);
    if (game.name == kuhnOfPlayer)
        return missingOfKuhn(game, directory);
    return "it does not play this game";
}

Child::Command startPlayer(const std::string& name, const std::string& directory,
                           const Programs& programs) {
    Child::Command command;
    command.file = "/bin/sh";
    command.arguments = {"/bin/sh", "-c", "exec player \"$@\"", "sh", name};
    command.directory = directory;
    command.firstPath = programs.folder;
    return command;
}

Child::Command startBot(const std::string& kind, const std::string& gamePath, uint64_t seed,
                        const Programs& programs) {
    Child::Command command;
    command.file = programs.toolbox;
    command.arguments = {
        "tamarin", "bot", kind, "--seed", std::to_string(seed), "--", fs::absolute(gamePath)};
    return command;
}

} // namespace

std::vector<WebOpponent> opponentsFor(const GameFile& game, const std::string& directory) {
    std::vector<WebOpponent> list = {{playerOpponent, "plays the strategy of the playing directory",
                                      missingOfPlayer(game, directory)}};
    for (const BotKind& kind : botKinds())
        list.push_back({kind.name, kind.description, ""});
    return list;
}

Programs ownPrograms() {
    Programs programs;
    std::error_code error;
    programs.folder = fs::read_symlink("/proc/self/exe", error).parent_path().string();
    return programs;
}

Result<std::vector<SeatPlan>> planOpponents(const GameFile& game, const std::string& directory,
                                            const std::vector<std::string>& opponents,
                                            uint64_t seed, const Programs& programs) {
    if (opponents.size() + 1 != game.rules->numPlayers)
        return Error{"the game has " + std::to_string(game.rules->numPlayers - 1) +
                     " seats beside yours"};
    const std::vector<WebOpponent> all = opponentsFor(game, directory);
    std::map<std::string, int> seated;
    std::vector<SeatPlan> plans;
    for (size_t i = 0; i < opponents.size(); ++i) {
        const auto found = std::ranges::find(all, opponents[i], &WebOpponent::name);
        if (found == all.end())
            return Error{"there is no such opponent"};
        if (!found->missing.empty())
            return Error{found->name + " cannot play: " + found->missing};
        SeatPlan plan;
        const int before = seated[found->name]++;
        plan.name = found->name + (before == 0 ? "" : std::to_string(before + 1));
        if (found->name == playerOpponent) {
            const auto placed = placeGameFile(game.path, directory);
            if (!placed)
                return Error{placed.error()};
            plan.command = startPlayer(*placed, directory, programs);
        } else {
            plan.command = startBot(found->name, game.path, seed + i + 1, programs);
        }
        plans.push_back(std::move(plan));
    }
    return plans;
}

} // namespace tamarin
