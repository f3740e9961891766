#include "toolbox/file_play.h"

#include "holdem/read_strategy.h"
#include "response/bucket_play.h"
#include "toolbox/command.h"

#include <filesystem>
#include <utility>

namespace tamarin {

Result<FilePlay> openFilePlay(const std::string& game, const std::string& directory,
                              const std::string& strategies) {
    auto holdem = openHoldem(game, directory);
    if (!holdem)
        return Error{holdem.error()};
    if (!*holdem || (*holdem)->rules->numPlayers != 2)
        return Error{game +
                     ": strategy files are measured in two-player hold'em alone; other games "
                     "with --strategy uniform, fold, call or raise"};
    FilePlay opened;
    opened.path =
        !strategies.empty() ? strategies + "/strategy" : holdemStrategyPath(directory, **holdem);
    opened.game = std::move(**holdem);
    if (!std::filesystem::exists(opened.path))
        return Error{"there is no strategy " + opened.path + "; 'tamarin prepare " +
                     opened.game.name + "' makes it"};
    if (Status known = checkTablesByManifest(directory, 2); !known)
        return Error{known.error()};
    auto tables = HoldemTables::open(directory, 2);
    if (!tables)
        return Error{tables.error()};
    opened.tables = std::move(*tables);
    opened.sets = std::make_unique<HoldemSets>(*opened.game.rules);
    if (Status read = readStrategyFile(opened.path, *opened.sets); !read)
        return Error{read.error()};
    opened.strategy = std::make_unique<BucketPlay>(*opened.sets, opened.tables->buckets());
    return opened;
}

SimplePlay simplePlayAsked(const std::string& text) {
    const auto play = simplePlayNamed(text);
    if (!play)
        throw UsageError("--strategy: '" + text +
                         "' is not uniform, fold, call or raise; strategy files are named by "
                         "--strategies");
    return *play;
}

std::string describePlay(SimplePlay play, const std::string& name) {
    return play == SimplePlay::uniform ? "uniform play" : "always " + name;
}

} // namespace tamarin
