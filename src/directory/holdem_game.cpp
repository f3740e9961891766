#include "directory/holdem_game.h"

#include "abstraction/EquityTables.h"
#include "directory/json.h"
#include "directory/manifest.h"
#include "directory/table_manifest.h"
#include "driver/LimitHoldemAgent.h"
#include "driver/player.h"
#include "holdem/deals.h"
#include "support/interrupt.h"
#include "support/step_progress.h"
#include "table_builder/table_builder.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

#include <fmt/format.h>

namespace tamarin {

namespace {

// Whether a game for so many players takes buckets from the table.
bool givesBuckets(const TableFile& file, int players) {
    return file.group == TableGroup::holdem && file.players <= players;
}

} // namespace

Result<std::unique_ptr<HoldemGame>> openHoldem(const std::string& name,
                                               const std::string& directory) {
    auto game = openGameFile(name, directory);
    if (!game)
        return Error{game.error()};
    if (!isHoldem(*game->rules))
        return std::unique_ptr<HoldemGame>();
    return std::make_unique<HoldemGame>(HoldemGame{std::move(*game)});
}

std::string holdemStrategyPath(const std::string& directory, const HoldemGame& game) {
    if (!playsAsHoldem(game.name)) {
        const std::string stem = std::filesystem::path(game.name).stem().string();
        return inDirectory(directory, "strategies/" + stem + "/strategy");
    }
    return inDirectory(directory, holdemStrategyFile(*game.rules));
}

std::string holdemStrategyDirectory(const std::string& directory, const HoldemGame& game) {
    return std::filesystem::path(holdemStrategyPath(directory, game)).parent_path().string();
}

bool isHoldemStrategy(const std::string& name) {
    return name == holdemStrategyName;
}

std::string strategySource(const HoldemGame& game, const HoldemBuckets& buckets) {
    // As it will come back from the manifest, where a name of other bytes could not be kept.
    return asJsonText(fmt::format("{}, definition {}, buckets {:016x}", game.name,
                                  hashOfText(gameAsText(*game.rules)),
                                  fingerprintOf(*game.rules, buckets)));
}

HoldemTables::HoldemTables() : messages_(std::make_unique<std::ostream>(nullptr)) {}
HoldemTables::HoldemTables(HoldemTables&&) noexcept = default;
HoldemTables& HoldemTables::operator=(HoldemTables&&) noexcept = default;
HoldemTables::~HoldemTables() = default;

Result<HoldemTables> HoldemTables::open(const std::string& directory, int players) {
    for (const PlannedTable& table : planTables(directory, {TableGroup::holdem}, false).tables) {
        if (!givesBuckets(*table.file, players) || table.state == TableState::good)
            continue;
        if (table.state == TableState::unusable)
            return Error{table.problem};
        return Error{(table.state == TableState::missing
                          ? inDirectory(directory, table.file->path) + " is missing"
                          : table.problem) +
                     "; 'tamarin tables --dir " + directory + "' makes it"};
    }
    HoldemTables tables;
    tables.tables_ = std::make_unique<EquityTables>(directory, *tables.messages_);
    tables.buckets_ = std::make_unique<TableBuckets>(*tables.tables_, players);
    return tables;
}

Status checkTablesByManifest(const std::string& directory, int players) {
    const std::string lookup = inDirectory(directory, "lookup");
    const auto read = [&](const std::string& name) {
        return std::any_of(allTables().begin(), allTables().end(), [&](const TableFile& file) {
            return givesBuckets(file, players) && bareName(file.path) == name;
        });
    };
    const auto compared = compareWithManifest(lookup, read);
    if (!compared)
        return Error{compared.error()};
    if (compared->differences.empty())
        return {};
    const auto& [name, problem, unread] = compared->differences.front();
    return Error{
        lookup + "/" + name + ": " + problem +
        (unread ? ""
                : "; move it away, and 'tamarin tables --dir " + directory + "' makes it anew")};
}

Status makeMissingTables(const std::string& directory, int players, int threads, bool quiet) {
    StepProgress progress(quiet);
    BuildOptions build;
    build.directory = directory;
    build.forPlayers = players;
    build.threads = threads;
    build.lookInto = {TableGroup::holdem}; // they are about to be trained on
    const auto built = buildForCommand(build, progress);
    return built ? Status() : Error{built.error()};
}

std::string missingTablesCost(const std::string& directory, int players) {
    const TablePlan plan = planTablesForPlay(directory, players);
    return plan.nothingToDo() ? ""
                              : fmt::format("{} of disk, {} of memory, about {} on two cores",
                                            describeBytes(plan.disk), describeBytes(plan.memory),
                                            describeDuration(plan.seconds));
}

} // namespace tamarin
