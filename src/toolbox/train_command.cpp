// tamarin train: trains a game towards an equilibrium, with a log, checkpoints and resumption.
#include "sampling/menu_blueprint.h"
#include "toolbox/blueprint_training.h"
#include "toolbox/command.h"
#include "toolbox/holdem_training.h"
#include "toolbox/numbers.h"
#include "toolbox/sampled_training.h"
#include "toolbox/small_game_training.h"

namespace tamarin {

namespace {

void refuseForHoldem(const TrainingRequest& request) {
    if (request.goal.nashConv)
        throw UsageError("--until-nashconv: a hold'em game's NashConv is not computed; "
                         "'tamarin exploit' estimates it");
    if (request.sampledDeals != 0)
        throw UsageError("--sampled-deals: hold'em is always trained on single deals");
    const char* const why = request.algorithm ? whyNotForHoldem(*request.algorithm) : nullptr;
    if (why != nullptr)
        throw UsageError(fmt::format("--algorithm {}: {}", algorithmName(*request.algorithm), why));
}

int trainOverCards(const HoldemGame& game, const SampledGame& over,
                   const TrainingRequest& request) {
    if (hasMenuBlueprints(*game.rules))
        return trainBySampling(game, over, request);
    if (!over.menu.empty() || over.ownSeat)
        throw UsageError("--menu, --seat: limit games have no choice of sizes");
    return trainBlueprint(game, over.cards, request);
}

int train(const std::string& name, const SampledGame& over, const TrainingRequest& request) {
    const auto holdem = openHoldem(name, request.directory);
    if (!holdem)
        return fail(holdem.error());
    if (request.measureFlops % 2 != 0)
        throw UsageError("--measure: flops are drawn in pairs; give an even number");
    if (request.measureFlops != 0 && over.cards.empty())
        throw UsageError(
            "--measure: only training over a card abstraction (--cards) is measured so");
    if (!over.cards.empty()) {
        if (*holdem)
            return trainOverCards(**holdem, over, request);
        throw UsageError("--cards: card abstractions are of hold'em");
    }
    if (!over.menu.empty() || over.ownSeat)
        throw UsageError("--menu, --seat: go with --cards");
    if (*holdem) {
        refuseForHoldem(request);
        return trainHoldemGame(**holdem, request);
    }
    if (request.algorithm == Algorithm::player && request.sampledDeals != 0)
        throw UsageError("--sampled-deals: the player's own training always samples one deal");
    const auto game = openSmallGame(name, request.directory);
    return game ? trainSmallGame(*game, request) : fail(game.error());
}

} // namespace

void addTrainCommand(CLI::App& app, int& status) {
    auto game = std::make_shared<std::string>();
    auto over = std::make_shared<SampledGame>();
    auto request = std::make_shared<TrainingRequest>();
    CLI::App& command = addCommand(
        app, "train", "Train a game towards an equilibrium",
        "tamarin train kuhn.limit.3p.game --algorithm dcfr --until-nashconv 1e-6\n"
        "  tamarin train holdem.limit.3p.game --seconds 1800\n"
        "  tamarin train holdem.limit.2p.reverse_blinds.game --cards 169-200-200-200\n"
        "  tamarin train holdem.nolimit.2p.reverse_blinds.game --cards 169-200-200-200 --menu "
        "menus/tiny.menu\n\n"
        "Ends at the first goal reached. With none given: small games at NashConv 1e-6 "
        "or after a\nminute, two-player hold'em after 500,000 iterations (limit) or "
        "100,000 (no-limit),\nthree-player hold'em after ten minutes. A signal ends "
        "it too, with everything so far saved.\n\n"
        "Hold'em is trained over the ten buckets of its tables, which are made first "
        "where they are\nmissing; an iteration is one random deal. Its strategy is "
        "the file that `player` reads. With --cards it is trained over that card "
        "abstraction instead,\nten minutes when no goal is given, and the strategy is "
        "DIR/strategies/GAME/blueprint: limit for\ntwo by boards with all hands, no-limit with a "
        "--menu of bets, and limit for three, by deals of\nwhich others' actions are sampled.");
    command.add_option("GAME", *game, "Game definition: a path, or a name in --dir")->required();
    command
        .add_option_function<std::string>(
            "--algorithm",
            [=](const std::string& given) { request->algorithm = algorithmNamed(given); },
            algorithmHelp())
        ->check(CLI::IsMember(algorithmNames()));
    command
        .add_option("--cards", over->cards,
                    "Hold'em: a card abstraction to train over, by its name or folder "
                    "('tamarin abstract' makes one)")
        ->type_name("NAME");
    command
        .add_option("--menu", over->menu,
                    "No-limit hold'em with --cards: the file that says which bets there are")
        ->type_name("FILE");
    addWholeNumber(command, "--seat", over->ownSeat, 0, MAX_PLAYERS - 1,
                   "Whose blueprint it is, where the menu has sizes of opponents");
    addWholeNumber(command, "--iterations", request->goal.iterations, 1, largestCount,
                   "Goal: iterations in all");
    addSeconds(command, "--seconds", request->goal.seconds, "Goal: seconds of this run");
    command.add_option("--until-nashconv", request->goal.nashConv, "Goal: NashConv, chips a hand")
        ->transform(decimalNumber(1e-300, 1e9))
        ->type_name("CHIPS");
    addWholeNumber(command, "--sampled-deals", request->sampledDeals, 1, 1'000'000,
                   "Deals drawn for each iteration; all of them when not given")
        ->default_str("");
    addWholeNumber(command, "--measure", request->measureFlops, 2, 10'000,
                   "With --cards: measure the strategy in the real game on so many flops, an even "
                   "number, after one, two, four... minutes and at the end, for the log")
        ->type_name("FLOPS")
        ->default_str("");
    command.add_option(
        "--out", request->out,
        "Where the results go; DIR/strategies/GAME, and where `player` looks for hold'em");
    CLI::Option* resume =
        command.add_flag("--resume", request->resume, "Go on from the newest checkpoint");
    command.add_flag("--fresh", request->fresh, "Start over where checkpoints are")
        ->excludes(resume);
    addWholeNumber(command, "--checkpoint-every", request->checkpointEvery, 1, largestCount,
                   "Iterations between checkpoints; one at the end when not given, and for "
                   "hold'em one every ten minutes too")
        ->default_str("");
    command.add_flag("--dry-run", request->dryRun, "Print what it would take");
    addDirectoryOption(command, request->directory);
    addSeedOption(command, request->seed);
    addWholeNumber(command, "--threads", request->threads, 0, mostThreads,
                   "Threads to use, 0 for all cores; 1 for small games and all for hold'em "
                   "when not given. The results do not depend on it");
    addJsonOption(command, request->json);
    addQuietOption(command, request->quiet);
    command.callback([=, &status] { status = train(*game, *over, *request); });
}

} // namespace tamarin
