#include "toolbox/sampled_training.h"

#include "abstraction/work.h"
#include "directory/json.h"
#include "directory/manifest.h"
#include "directory/strategies.h"
#include "sampling/menu_blueprint.h"
#include "sampling/sampling_trainer.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "support/resources.h"
#include "toolbox/abstraction_place.h"
#include "toolbox/blueprint_place.h"
#include "toolbox/command.h"

#include <filesystem>

namespace tamarin {

namespace {

constexpr const char* sampledName = "blueprint";
constexpr double secondsOfARun = 600;
constexpr double secondsBetweenSaves = 600;
constexpr uint64_t bytesOfProgram = 350'000'000; // the abstraction's pages in use, and the rest

// Bytes, known before the memory is taken.
struct SampledCost {
    SampledCost(const MenuTree& tree, std::span<const uint32_t> buckets, uint32_t batch)
        : checkpoint(MenuSets::memoryFor(tree, buckets)), blueprint(checkpoint / 8),
          memory(checkpoint + blueprint + bytesOfProgram + batch * uint64_t{65'536} +
                 tree.nodes().size() * sizeof(MenuTree::Node) +
                 tree.numEdges() * sizeof(MenuTree::Edge)) {}

    uint64_t checkpoint;
    uint64_t blueprint;
    uint64_t memory;
    uint64_t disk() const { return 2 * (checkpoint + blueprint); } // old and new while writing
};

// A game with what it is trained over, from its files.
struct SampledSetting {
    std::string cards; // the abstraction's name
    CardAbstraction abstraction;
    std::optional<BettingMenu> menu;
    std::optional<int> ownSeat;

    uint64_t buckets() const { return hashOfBuckets(abstraction.description()); }
    std::vector<uint32_t> counts() const {
        const BucketCounts counts = abstraction.description().counts();
        return {counts.begin(), counts.end()};
    }
    // Seats of which one has a tree of its own have another menu each.
    uint64_t menuHash() const {
        return menu ? menu->hash() + static_cast<uint64_t>(ownSeat.value_or(-1) + 1) : 0;
    }
    MenuTree tree(const Game& game) const {
        return menu ? MenuTree(game, *menu, ownSeat) : MenuTree(game);
    }
};

Result<SampledSetting> openSetting(const Game& game, const SampledGame& over,
                                   const std::string& directory) {
    const auto place = findAbstraction(over.cards, directory);
    if (!place)
        return Error{"--cards " + over.cards + ": no such card abstraction below " + directory +
                     "/lookup; 'tamarin abstract --help' says how to make one"};
    std::optional<BettingMenu> menu;
    if (!over.menu.empty() || !over.menuText.empty()) {
        auto read = over.menu.empty() ? BettingMenu::parse(over.menuText, "menu")
                                      : BettingMenu::read(over.menu);
        if (!read)
            return Error{read.error()};
        menu = std::move(*read);
    }
    if (over.ownSeat && *over.ownSeat >= game.numPlayers)
        return Error{fmt::format("--seat {}: the game's seats are 0 to {}", *over.ownSeat,
                                 game.numPlayers - 1)};
    if (menu && menu->hasBesides() != over.ownSeat.has_value())
        return Error{over.menu + (over.ownSeat ? ": has no sizes of opponents: leave --seat out"
                                               : ": has sizes of opponents: --seat says whose "
                                                 "blueprint it is")};
    auto abstraction = CardAbstraction::open(place->directory, place->name);
    if (!abstraction)
        return Error{abstraction.error()};
    return SampledSetting{place->name, std::move(*abstraction), std::move(menu), over.ownSeat};
}

// One run, from the place where its files lie.
struct SampledRun {
    const HoldemGame& game;
    const SampledSetting& setting;
    const TrainingRequest& request;
    SamplingTrainer& trainer;
    BlueprintPlace place{request};

    int run() {
        const auto resumed = place.takeUp([&] {
            return trainer.readCheckpoint(place.checkpoint, setting.buckets(), setting.menuHash());
        });
        if (!resumed)
            return fail(resumed.error());
        const TrainingRequest left = place.whatIsLeft(*resumed, trainer.iteration());
        const TrainingOutcome outcome = runWatched(trainer, left, *resumed, [&] {
            return trainer.writeCheckpoint(place.checkpoint, setting.buckets(), setting.menuHash());
        });
        const int status = outcome.end == TrainingEnd::stopped
                               ? place.stopped(outcome, trainer.iteration(), isBetter(),
                                               [&] { return finish(outcome); })
                               : finish(outcome);
        return outcome.saved ? status : exitFailed;
    }

    // Whether what was trained so far is worth more than what is there.
    bool isBetter() const {
        if (trainer.iteration() == 0)
            return false;
        if (!std::filesystem::exists(place.path))
            return true;
        const auto there = MenuBlueprint::open(place.path, *game.rules);
        return there && there->origin().training.abstractionHash == setting.buckets() &&
               there->origin().menu == origin().menu &&
               there->origin().ownSeat == setting.ownSeat &&
               there->origin().training.steps < trainer.iteration();
    }

    MenuOrigin origin() const {
        return {{hashOfGame(*game.rules), setting.cards, setting.buckets(), setting.counts(),
                 trainer.options().seed, trainer.iteration()},
                setting.menu ? setting.menu->text() : "",
                setting.ownSeat};
    }

    int finish(const TrainingOutcome& outcome) const {
        if (Status written = place.replace(
                [&] { return writeMenuBlueprint(place.path, trainer.sets(), origin()); });
            !written)
            return fail(written.error());
        const std::string made =
            fmt::format("{} --cards {}{} with seed {}, {} iterations", request.made, setting.cards,
                        setting.menu ? " --menu" : "", trainer.options().seed, trainer.iteration());
        const bool finished = outcome.end != TrainingEnd::stopped;
        const std::string from = asJsonText(fmt::format(
            "{}, definition {:016x}, buckets {:016x}, menu {:016x}{}", game.name,
            hashOfGame(*game.rules), setting.buckets(), setting.menuHash(),
            finished && !request.quality.empty() ? ", quality " + request.quality : ""));
        if (Status noted = recordFiles(request.out, {{sampledName, made, from}}); !noted)
            return fail(noted.error());
        if (request.json)
            printJson(asJson(outcome));
        else
            fmt::print("{} iterations over {}, {} ({}), average regret {:.3g} chips\n{}\n",
                       describeCount(outcome.last.iteration), setting.cards,
                       describeDuration(outcome.last.seconds), describe(outcome.end),
                       std::get<AverageRegret>(outcome.last.measure).chips, place.path);
        return exitDone;
    }

    nlohmann::ordered_json asJson(const TrainingOutcome& outcome) const {
        nlohmann::ordered_json json = readJson(stepAsJson(outcome.last));
        json["end"] = describe(outcome.end);
        json["cards"] = setting.cards;
        json["menu"] = setting.menu ? setting.menu->text() : "";
        json["blueprint"] = place.path;
        json["bytes"] = std::filesystem::file_size(place.path);
        json["decisionNodes"] = trainer.sets().tree().nodes().size();
        json["informationSets"] = trainer.sets().numSets();
        return json;
    }
};

// What it takes, and where memory is enough how fast it is.
int tellCost(const Game& game, const SampledSetting& setting, const MenuTree& tree,
             const SampledCost& cost, const TrainingRequest& request,
             const SamplingOptions& options) {
    uint64_t sets = 0;
    const auto counts = setting.counts();
    for (size_t round = 0; round < game.numRounds; ++round)
        sets += tree.nodesIn(static_cast<int>(round)) * uint64_t{counts[round]};
    const uint64_t available = availableMemory();
    fmt::print("{} decision nodes, {} information sets\n", describeCount(tree.nodes().size()),
               describeCount(sets));
    fmt::print("memory up to {} ({} can be had), each checkpoint {}, the blueprint {}; {} of disk "
               "while they are replaced ({} free)\n",
               describeBytes(cost.memory), describeBytes(available), describeBytes(cost.checkpoint),
               describeBytes(cost.blueprint), describeBytes(cost.disk()),
               describeBytes(freeDisk(request.out)));
    if (cost.memory > available)
        return exitDone;
    const AbstractionSeatBuckets buckets(setting.abstraction);
    SamplingTrainer trainer(game, tree, buckets, options);
    trainer.run(1); // finds memory that was never touched: not what training takes
    const double rate = measureSpeed(trainer, 2.0);
    if (interrupted())
        return interruptStatus();
    fmt::print("{:.1f} deals/s, each walked once a seat, with {} threads\n", rate,
               Work{request.threads.value_or(0), {}, {}}.threadCount());
    return exitDone;
}

void refuseForSampling(const Game& game, const SampledGame& over, const TrainingRequest& request) {
    if (game.bettingRule == noLimitRule && over.menu.empty() && over.menuText.empty())
        throw UsageError("--menu: a no-limit game needs a bet menu, such as menus/tiny.menu");
    if (game.bettingRule == limitRule && !over.menu.empty())
        throw UsageError("--menu: a limit game has no choice of sizes");
    if (over.ownSeat && over.menu.empty())
        throw UsageError("--seat: goes with a --menu that has sizes of opponents");
    if (request.algorithm)
        throw UsageError("--algorithm: over a card abstraction there is but one, linear weights, "
                         "here by external sampling");
    if (request.goal.nashConv)
        throw UsageError("--until-nashconv: over a card abstraction NashConv is not computed");
    if (request.sampledDeals != 0)
        throw UsageError("--sampled-deals: over a card abstraction an iteration is one deal");
    if (request.measureFlops != 0)
        throw UsageError("--measure: only limit games for two are measured so");
    if (request.goal.iterations > SamplingTrainer::mostIterations)
        throw UsageError(fmt::format("--iterations: at most {} over a card abstraction",
                                     SamplingTrainer::mostIterations));
}

} // namespace

int trainBySampling(const HoldemGame& game, const SampledGame& over, TrainingRequest request) {
    const Game& rules = *game.rules;
    refuseForSampling(rules, over, request);
    if (Status fits = SamplingTrainer::fits(rules); !fits)
        return fail(game.name + ": " + fits.error());
    if (!request.goal.any() && request.quality.empty())
        request.goal.seconds = secondsOfARun;
    if (request.checkpointEvery == 0)
        request.checkpointSeconds = secondsBetweenSaves;
    if (request.out.empty())
        request.out = holdemStrategyDirectory(request.directory, game);
    const auto setting = openSetting(rules, over, request.directory);
    if (!setting)
        return fail(setting.error());
    SamplingOptions options;
    options.seed = request.seed;
    options.threads = request.threads.value_or(0);
    const MenuTree tree = setting->tree(rules);
    const SampledCost cost(tree, setting->counts(), options.batch);
    if (request.dryRun)
        return tellCost(rules, *setting, tree, cost, request, options);
    const auto lock = lockResults(request.out);
    if (!lock)
        return fail(lock.error());
    if (Status enough = checkResources(cost.memory, cost.disk(), request.out); !enough)
        return fail(enough.error());
    if (!request.quiet)
        remark("{} decision nodes; up to {} of memory, a blueprint of {}, {}",
               describeCount(tree.nodes().size()), describeBytes(cost.memory),
               describeBytes(cost.blueprint), lengthOf(request.goal));
    const AbstractionSeatBuckets buckets(setting->abstraction);
    SamplingTrainer trainer(rules, tree, buckets, options);
    return SampledRun{game, *setting, request, trainer}.run();
}

} // namespace tamarin
