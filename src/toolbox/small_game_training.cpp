#include "toolbox/small_game_training.h"

#include "report/value_table.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "toolbox/command.h"
#include "training/checkpoint.h"

#include <cstdio>

namespace tamarin {

namespace {

int dryRun(const SmallGame& game, SmallGameTrainer& trainer) {
    const SmallGameCost& cost = game.cost();
    const uint64_t numbers = cost.informationSets * sizeof(TrainerNumbers);
    const double rate = measureSpeed(trainer, 0.2);
    fmt::print("{} deals, {} decision nodes, {} information sets\n", describeCount(cost.deals),
               describeCount(cost.decisionNodes), describeCount(cost.informationSets));
    fmt::print("memory about {}, each checkpoint {}, strategy files {}\n",
               describeBytes(numbers + cost.bytes), describeBytes(numbers),
               describeBytes(cost.informationSets * 108 * game.game().numPlayers));
    fmt::print("{} iterations/s\n", describeCount(static_cast<uint64_t>(rate)));
    return exitDone;
}

// Goes on from the newest good checkpoint, or refuses to forget an earlier run's unasked.
Status takeUp(const TrainingRequest& request, const std::string& config,
              SmallGameTrainer& trainer) {
    if (request.resume) {
        std::vector<std::string> warnings;
        const auto state = newestCheckpoint(request.out, config, warnings);
        for (const std::string& warning : warnings)
            complain("{}; passed over", warning);
        if (!state)
            return Error{state.error()};
        trainer.restore(*state);
        return {};
    }
    const std::vector<std::string> old = listCheckpoints(request.out);
    if (!old.empty() && !request.fresh)
        return Error{request.out + " holds checkpoints of an earlier run: --resume goes on from " +
                     "it, --fresh starts over"};
    for (const std::string& path : old)
        std::remove(path.c_str());
    return {};
}

} // namespace

int trainSmallGame(const NamedGame& game, TrainingRequest request) {
    TrainerConfig config;
    config.algorithm = request.algorithm.value_or(config.algorithm);
    config.sampledDeals = request.sampledDeals;
    config.seed = request.seed;
    config.threads = request.threads.value_or(1);
    if (!request.goal.any()) {
        request.goal.nashConv = 1e-6;
        request.goal.seconds = 60.0;
    }
    if (request.dryRun)
        return dryRun(*game.small, *makeTrainer(*game.small, config));
    if (request.out.empty())
        request.out = strategyDirectory(request.directory, game.name);
    const auto lock = lockResults(request.out);
    if (!lock)
        return fail(lock.error());
    const std::string configText = checkpointConfig(*game.small, config);
    const auto trainer = makeTrainer(*game.small, config);
    if (Status ready = takeUp(request, configText, *trainer); !ready)
        return fail(ready.error());

    const TrainingOutcome outcome = runWatched(*trainer, request, request.resume, [&] {
        return saveCheckpoint(request.out, configText, trainer->state());
    });
    const std::string made =
        fmt::format("{} --algorithm {} --seed {}, {} iterations", request.made,
                    algorithmName(config.algorithm), config.seed, trainer->iteration());
    if (Status written = writeStrategies(*game.small, *trainer, request.out, made, game.name);
        !written)
        return fail(written.error());

    if (request.json) {
        nlohmann::ordered_json json = asJson(outcome, config.algorithm);
        json["directory"] = request.out;
        printJson(json);
    } else {
        fmt::print("{}\n{}strategies, log and checkpoints are in {}\n",
                   describe(outcome, config.algorithm),
                   valueTable(*game.rules, std::get<ProfileValue>(outcome.last.measure)),
                   request.out);
    }
    if (!outcome.saved)
        return exitFailed;
    return outcome.end == TrainingEnd::stopped ? interruptStatus() : exitDone;
}

} // namespace tamarin
