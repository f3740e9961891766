#include "toolbox/prepare_blueprint.h"

#include "blueprint/blueprint_trainer.h"
#include "clustering/abstraction_plan.h"
#include "directory/blueprints.h"
#include "directory/manifest.h"
#include "driver/played_blueprint.h"
#include "sampling/menu_blueprint.h"
#include "sampling/sampling_trainer.h"
#include "support/progress.h"
#include "toolbox/blueprint_training.h"
#include "toolbox/command.h"
#include "toolbox/making_cards.h"
#include "toolbox/sampled_training.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <filesystem>
#include <optional>

namespace tamarin {

namespace {

struct Quality {
    const char* name;
    BucketCounts buckets;
    std::optional<double> seconds; // of training; none: until it is stopped
};
using Qualities = std::array<Quality, 3>; // in rising order

// More buckets tell more hands apart and take longer until they are worth it.
constexpr Qualities forLimit{{{"quick", {169, 200, 200, 200}, 300.0},
                              {"good", {169, 1000, 1000, 1000}, 3600.0},
                              {"best", {169, 5000, 5000, 5000}, std::nullopt}}};
constexpr Qualities forNoLimit{{{"quick", {169, 200, 200, 200}, 600.0},
                                {"good", {169, 1000, 1000, 1000}, 3600.0},
                                {"best", {169, 5000, 5000, 5000}, std::nullopt}}};
// Nearly all of the tree is on the river, where a bucket takes 187 MB of memory.
constexpr Qualities forThree{{{"quick", {169, 200, 100, 20}, 600.0},
                              {"good", {169, 500, 200, 20}, 3600.0},
                              {"best", {169, 1000, 500, 40}, std::nullopt}}};

// The sizes of bets of no-limit, menus/middle.menu.
constexpr const char* preparedMenu = "bets = 1/2 1 2 A, 1 A, 1 A, A\n";

const Qualities& qualitiesOf(const Game& game) {
    if (game.numPlayers > 2)
        return forThree;
    return game.bettingRule == noLimitRule ? forNoLimit : forLimit;
}

std::string menuOf(const Game& game) {
    return game.bettingRule == noLimitRule ? preparedMenu : "";
}

std::string cardsOf(const Quality& quality) {
    return abstractionName(quality.buckets, AbstractionMethod::emd);
}

// Whether blueprints of a game can be made here; else why not.
Status canBePrepared(const Game& game) {
    if (!hasMenuBlueprints(game))
        return BlueprintTrainer::fits(game);
    if (game.numPlayers == 2 || game.bettingRule == limitRule)
        return SamplingTrainer::fits(game);
    return Error{"no-limit for more than two seats has no menu yet; 'tamarin train --cards --menu' "
                 "takes any"};
}

int trainAny(const HoldemGame& game, const std::string& cards, const TrainingRequest& request) {
    if (!hasMenuBlueprints(*game.rules))
        return trainBlueprint(game, cards, request);
    return trainBySampling(game, {cards, "", menuOf(*game.rules), {}}, request);
}

// What is there already, seen from the quality that is wanted.
enum class There { nothing, lower, begun, finished, higher, other };

// Whether the manifest has the whole file, of a training that came to the end of its time.
Result<bool> isFinished(const std::string& path, const Quality& quality) {
    const auto compared =
        compareWithManifest(std::filesystem::path(path).parent_path().string(),
                            [](const std::string& name) { return name == blueprintName; });
    if (!compared)
        return Error{compared.error()};
    const auto* whole = compared->find(blueprintName);
    return whole != nullptr && whole->from.ends_with(std::string(", quality ") + quality.name);
}

Result<There> lookAt(const std::string& path, const HoldemGame& game, const Quality& wanted,
                     const std::string& directory) {
    if (!std::filesystem::exists(path))
        return There::nothing;
    const auto blueprint = openBlueprint(path, directory, game.path);
    if (!blueprint) {
        complain("{}: making it anew", blueprint.error());
        return There::other;
    }
    const Qualities& qualities = qualitiesOf(*game.rules);
    const auto* const of = std::ranges::find(qualities, blueprint->origin().abstraction,
                                             [](const Quality& q) { return cardsOf(q); });
    if (of == qualities.end() || blueprint->menu() != menuOf(*game.rules))
        return There::other;
    if (of != &wanted)
        return of->buckets < wanted.buckets ? There::lower : There::higher;
    const auto finished = isFinished(path, wanted);
    if (!finished)
        return Error{finished.error()};
    return *finished ? There::finished : There::begun;
}

MakeOptions cardsToMake(const Quality& quality, const TrainingRequest& request) {
    MakeOptions make;
    make.directory = request.directory;
    make.counts = quality.buckets;
    make.threads = request.threads.value_or(0);
    return make;
}

int showCost(const HoldemGame& game, const Quality& quality, const TrainingRequest& request) {
    const AbstractionPlan plan = planAbstraction(cardsToMake(quality, request));
    if (!plan.problem.empty())
        return fail(plan.problem);
    if (plan.state != AbstractionPlan::State::whole)
        fmt::print("card abstraction {}: {} of disk, {} of memory, about {} on two cores\n",
                   cardsOf(quality), describeBytes(plan.disk), describeBytes(plan.memory),
                   describeDuration(plan.seconds));
    const std::string time = request.goal.seconds ? "for " + describeDuration(*request.goal.seconds)
                                                  : "until it is stopped";
    fmt::print("training of the blueprint {}\n", time);
    if (plan.state == AbstractionPlan::State::whole)
        return trainAny(game, cardsOf(quality), request);
    fmt::print("memory, disk and speed of training are said once the card abstraction is there\n");
    return exitDone;
}

} // namespace

std::vector<std::string> qualityNames() {
    std::vector<std::string> names;
    for (const Quality& quality : forLimit)
        names.emplace_back(quality.name);
    return names;
}

int prepareBlueprint(const HoldemGame& game, const std::string& name, TrainingRequest request) {
    const Qualities& qualities = qualitiesOf(*game.rules);
    const auto* const quality = std::ranges::find(qualities, name, &Quality::name);
    assert(quality != qualities.end());
    if (Status fits = canBePrepared(*game.rules); !fits)
        return fail("--quality: " + game.name + ": " + fits.error());
    if (const auto placed = placeGameFile(game.path, request.directory); !placed)
        return fail(placed.error());
    if (!request.goal.seconds)
        request.goal.seconds = quality->seconds;
    if (request.dryRun)
        return showCost(game, *quality, request);
    const std::string path = blueprintBeside(holdemStrategyPath(request.directory, game));
    const auto there = lookAt(path, game, *quality, request.directory);
    if (!there)
        return fail(there.error());
    if (!request.fresh && (*there == There::finished || *there == There::higher)) {
        fmt::print("{} is there and whole{}; --force trains it anew\n", path,
                   *there == There::higher ? ", and of a higher quality" : "");
        return exitDone;
    }
    if (const auto made = makeCards(cardsToMake(*quality, request), request.quiet); !made)
        return stoppedOrFailed(made.error());
    request.quality = quality->name;
    request.resumeIfThere = true;
    request.secondsInAll = true;
    // What is not gone on from is somebody's, and may have taken long.
    request.keepOther = *there == There::other ||
                        (*there == There::begun && !std::filesystem::exists(path + ".checkpoint"));
    request.made = std::string("tamarin prepare --quality ") + quality->name;
    const int status = trainAny(game, cardsOf(*quality), request);
    if (status == exitDone)
        fmt::print("'player {}' in {} plays it\n", game.name, request.directory);
    return status;
}

} // namespace tamarin
