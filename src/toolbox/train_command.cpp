// tamarin train: trains a game towards an equilibrium, with a log, checkpoints and resumption.
#include "toolbox/command.h"
#include "toolbox/commands.h"
#include "toolbox/holdem_training.h"
#include "toolbox/numbers.h"
#include "toolbox/small_game_training.h"

namespace tamarin {

namespace {

struct Options {
    std::string game;
    std::string algorithm; // empty: the game's default
    double seconds = 0.0;
    TrainingRequest request;
};

void refuseForHoldem(const TrainingRequest& request) {
    if (request.goal.nashConv)
        throw UsageError("--until-nashconv: a hold'em game's NashConv is not computed; "
                         "'tamarin exploit' estimates it");
    if (request.sampledDeals != 0)
        throw UsageError("--sampled-deals: hold'em is always trained on single deals");
    const auto* why = request.algorithm ? algorithmInfo(*request.algorithm).notForHoldem : nullptr;
    if (why != nullptr)
        throw UsageError(fmt::format("--algorithm {}: {}", algorithmName(*request.algorithm), why));
}

int train(const Options& options) {
    TrainingRequest request = options.request;
    request.algorithm = algorithmNamed(options.algorithm);
    if (options.seconds > 0.0)
        request.goal.seconds = options.seconds;
    const auto holdem = openHoldem(options.game, request.directory);
    if (!holdem)
        return fail(holdem.error());
    if (*holdem) {
        refuseForHoldem(request);
        return trainHoldemGame(**holdem, request);
    }
    if (request.algorithm == Algorithm::player && request.sampledDeals != 0)
        throw UsageError("--sampled-deals: the player's own training always samples one deal");
    const auto game = openSmallGame(options.game, request.directory);
    return game ? trainSmallGame(*game, request) : fail(game.error());
}

std::vector<std::string> algorithmNames() {
    std::vector<std::string> names;
    for (const AlgorithmInfo& info : allAlgorithms())
        names.emplace_back(info.name);
    return names;
}

} // namespace

void addTrainCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<Options>();
    CLI::App& command =
        addCommand(app, "train", "Train a game towards an equilibrium",
                   "tamarin train kuhn.limit.3p.game --algorithm dcfr --until-nashconv 1e-6\n"
                   "  tamarin train holdem.limit.3p.game --seconds 1800\n\n"
                   "Ends at the first goal reached. With none given: small games at NashConv 1e-6 "
                   "or after a\nminute, two-player hold'em after 500,000 iterations (limit) or "
                   "100,000 (no-limit),\nthree-player hold'em after ten minutes. A signal ends "
                   "it too, with everything so far saved.\n\n"
                   "Hold'em is trained over the ten buckets of its tables, which are made first "
                   "where they are\nmissing; an iteration is one random deal. Its strategy is "
                   "the file that `player` reads.");
    TrainingRequest& request = options->request;
    command.add_option("GAME", options->game, "Game definition: a path, or a name in --dir")
        ->required();
    command.add_option("--algorithm", options->algorithm, algorithmHelp())
        ->check(CLI::IsMember(algorithmNames()));
    addWholeNumber(command, "--iterations", request.goal.iterations, 1, largestCount,
                   "Goal: iterations in all");
    addSeconds(command, "--seconds", options->seconds, "Goal: seconds of this run")
        ->default_str("");
    command.add_option("--until-nashconv", request.goal.nashConv, "Goal: NashConv, chips a hand")
        ->transform(decimalNumber(1e-300, 1e9))
        ->type_name("CHIPS");
    addWholeNumber(command, "--sampled-deals", request.sampledDeals, 1, 1'000'000,
                   "Deals drawn for each iteration; all of them when not given")
        ->default_str("");
    command.add_option(
        "--out", request.out,
        "Where the results go; DIR/strategies/GAME, and where `player` looks for hold'em");
    CLI::Option* resume =
        command.add_flag("--resume", request.resume, "Go on from the newest checkpoint");
    command.add_flag("--fresh", request.fresh, "Start over where checkpoints are")
        ->excludes(resume);
    addWholeNumber(command, "--checkpoint-every", request.checkpointEvery, 1, largestCount,
                   "Iterations between checkpoints; one at the end when not given, and for "
                   "hold'em one every ten minutes too")
        ->default_str("");
    command.add_flag("--dry-run", request.dryRun, "Print what it would take");
    addDirectoryOption(command, request.directory);
    addSeedOption(command, request.seed);
    addWholeNumber(command, "--threads", request.threads, 0, mostThreads,
                   "Threads to use, 0 for all cores; 1 for small games and all for hold'em "
                   "when not given. The results do not depend on it");
    addJsonOption(command, request.json);
    addQuietOption(command, request.quiet);
    command.callback([options, &status] { status = train(*options); });
}

} // namespace tamarin
