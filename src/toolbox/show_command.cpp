// tamarin show: a strategy, a table or a card abstraction as text, as JSON or as a page.
#include "directory/blueprints.h"
#include "directory/holdem_game.h"
#include "directory/manifest.h"
#include "directory/playing_directory.h"
#include "directory/strategies.h"
#include "driver/played_blueprint.h"
#include "eval/hand_range.h"
#include "report/abstraction_page.h"
#include "report/abstraction_view.h"
#include "report/decision_tree.h"
#include "report/decision_view.h"
#include "report/holdem_chart.h"
#include "report/strategy_page.h"
#include "report/table_page.h"
#include "report/table_view.h"
#include "strategy/mapped_strategy.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "support/step_progress.h"
#include "toolbox/abstraction_place.h"
#include "toolbox/command.h"
#include "toolbox/numbers.h"
#include "toolbox/output_place.h"
#include "toolbox/round_argument.h"
#include "training/sequence_reach.h"
#include "tree/card_rank_keys.h"

#include <filesystem>
#include <iostream>
#include <optional>

namespace tamarin {

namespace {

struct ShowArguments {
    std::string what;
    std::string game;
    std::string directory = ".";
    std::string html;
    std::string round;              // of a card abstraction
    std::optional<uint32_t> bucket; // of that round
    std::string actions;            // of a blueprint, "rc/c"
    std::string board;              // likewise
    int threads = 0;
    bool json = false;
    bool quiet = false;

    bool wantsText() const { return !json && html.empty(); }
    bool asksForDecision() const { return !actions.empty() || !board.empty(); }
};

// What is shown: a game's files, or one file of a game.
struct Shown {
    std::string game;
    std::string source;
    std::vector<std::string> files; // one for each seat, or one for all
};

Result<Shown> find(const ShowArguments& options) {
    if (options.what.ends_with(".game")) {
        Shown shown{options.what, strategyDirectory(options.directory, bareName(options.what)), {}};
        for (size_t seat = 0; std::filesystem::exists(strategyPath(shown.source, seat)); ++seat)
            shown.files.push_back(strategyPath(shown.source, seat));
        if (shown.files.empty())
            return Error{"no strategies in " + shown.source + "; 'tamarin prepare " +
                         bareName(options.what) + "' makes them"};
        return shown;
    }
    if (!options.game.empty())
        return Shown{options.game, options.what, {options.what}};
    // Of a file that is not there the directory's name would be taken for the game's, and missed.
    if (!std::filesystem::exists(options.what))
        return Error{options.what + " is not there; name a file, or a game as NAME.game"};
    const auto path = std::filesystem::absolute(options.what).lexically_normal();
    return Shown{path.parent_path().filename().string() + ".game", options.what, {options.what}};
}

// The nodes of each file, in the order in which they lie there; files that are the same, once.
int showText(const Shown& shown, const std::string& directory) {
    const auto game = openGameFile(shown.game, directory);
    if (!game)
        return fail(game.error());
    std::vector<std::string> hashes;
    for (const std::string& path : shown.files) {
        const auto hash = hashOfFile(path);
        if (!hash)
            return fail(hash.error());
        hashes.push_back(*hash);
    }
    const bool same = std::equal(hashes.begin() + 1, hashes.end(), hashes.begin());
    for (size_t i = 0; i < (same ? 1 : hashes.size()); ++i) {
        CFR solver(game->rules.get());
        if (!solver.load(shown.files[i]))
            return fail(shown.files[i] + " is no whole strategy of " + shown.game);
        if (!same)
            std::cout << shown.files[i] << ":\n";
        std::cout << solver;
    }
    return exitDone;
}

Result<Profile> profileOf(const SmallGame& game, const Shown& shown) {
    if (shown.files.size() == 1)
        return readStrategy(game, shown.files[0]);
    return readStrategies(game, shown.source);
}

nlohmann::ordered_json asJson(const NamedGame& game, const Profile& profile,
                              const ProfileValue& value, const std::string& source) {
    const SequenceReach reach = sequenceReaches(*game.small, profile);
    nlohmann::ordered_json sets = nlohmann::ordered_json::array();
    const auto& nodes = game.small->tree().nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        for (uint32_t field = 0; field < reach.node[n].size(); ++field) {
            const auto id = static_cast<int32_t>(n);
            nlohmann::ordered_json set = {
                {"key", cardRankKey(game.small->tree(), id, static_cast<int>(field))},
                {"seat", nodes[n].player},
                {"round", nodes[n].round},
                {"card", cardLabel(*game.rules, field)},
                {"actions", game.small->tree().sequence(id)},
                {"reach", reach.node[n][field]}};
            for (size_t a = 0; a < numAbstractedActions; ++a)
                if (nodes[n].child[a] != CompiledTree::noChild)
                    set["strategy"][abstractedActionNames[a]] =
                        profile[game.small->layout().index(nodes[n], field)][a];
            sets.push_back(set);
        }
    return {{"game", game.name},
            {"source", source},
            {"value", value.value},
            {"bestResponse", value.best},
            {"nashConv", value.nashConv()},
            {"informationSets", sets}};
}

// What all kinds of views do: JSON, a page, or both; showView says it as text where neither was
// asked for.
template <class Json, class Page>
int showJsonOrPage(const ShowArguments& options, const Json& json, const Page& page) {
    if (options.json)
        printJson(json());
    if (options.html.empty())
        return exitDone;
    if (Status written = writeWholeFile(options.html, page()); !written)
        return fail(written.error());
    if (!options.json)
        fmt::print("wrote {}\n", options.html);
    return exitDone;
}

template <class Json, class Text, class Page>
int showView(const ShowArguments& options, const Json& json, const Text& text, const Page& page) {
    if (!options.wantsText())
        return showJsonOrPage(options, json, page);
    fmt::print("{}", text());
    return exitDone;
}

// The first decisions only: a hold'em strategy has thousands to millions of nodes.
int showHoldem(const HoldemGame& game, const ShowArguments& options) {
    const std::string path = options.what.ends_with(".game")
                                 ? holdemStrategyPath(options.directory, game)
                                 : options.what;
    if (!std::filesystem::exists(path))
        return fail("there is no strategy " + path + "; 'tamarin prepare " + game.name +
                    "' makes it");
    const auto tables = HoldemTables::open(options.directory, game.rules->numPlayers);
    if (!tables)
        return fail(tables.error());
    const auto strategy =
        MappedStrategy::open(path, game.rules->numPlayers * game.rules->numRounds);
    if (!strategy)
        return fail(strategy.error());
    const auto decisions =
        preflopDecisions(*game.rules, *tables, *strategy, options.wantsText() ? 1 : 2);
    if (!decisions)
        return fail(path + ": " + decisions.error());
    const auto json = [&] {
        auto list = nlohmann::ordered_json::array();
        for (const PreflopDecision& decision : *decisions)
            list.push_back(chartAsJson(decision));
        return nlohmann::ordered_json{{"game", game.name}, {"source", path}, {"preflop", list}};
    };
    const auto text = [&] {
        std::string charts;
        for (const PreflopDecision& decision : *decisions)
            charts += chartAsText(decision) + '\n';
        return charts;
    };
    return showView(options, json, text, [&] { return chartPage(game, *decisions, path); });
}

int showTable(const TableFile& file, const std::string& path, const ShowArguments& options) {
    const auto view = viewTable(file, path);
    if (!view)
        return fail(view.error());
    return showView(
        options, [&] { return tableJson(*view); }, [&] { return tableText(*view); },
        [&] { return tablePage(*view); });
}

int showAbstraction(const AbstractionPlace& place, const ShowArguments& options) {
    AbstractionQuestion question;
    question.directory = place.directory;
    question.name = place.name;
    question.threads = options.threads;
    if (!options.round.empty())
        question.round = readRound(options.round);
    question.bucket = options.bucket;
    question.stop = interrupted;
    StepProgress progress(options.quiet);
    question.progress = [&](const std::string& step, uint64_t done, uint64_t total) {
        progress.at(step, done, total);
    };
    const auto view = viewAbstraction(question);
    if (!view)
        return interrupted() ? interruptStatus() : fail(view.error());
    return showView(
        options, [&] { return abstractionJson(*view); }, [&] { return abstractionText(*view); },
        [&] { return abstractionPage(*view); });
}

// Of a file DIR/strategies/NAME/blueprint the playing directory is DIR, where none was named.
std::string directoryOf(const std::string& path, const std::string& named) {
    const auto folder = std::filesystem::absolute(path).lexically_normal().parent_path();
    if (named != "." || folder.parent_path().filename() != "strategies")
        return named;
    return folder.parent_path().parent_path().string();
}

// The blueprint that is meant: by its path, as it stands or below the playing directory, or by its
// game, where a decision is asked for or there is no other strategy.
std::optional<std::string> findBlueprint(const ShowArguments& options) {
    if (options.what.ends_with(".game")) {
        const auto holdem = openHoldem(options.what, options.directory);
        if (!holdem || !*holdem)
            return std::nullopt;
        const std::string strategy = holdemStrategyPath(options.directory, **holdem);
        const std::string path = blueprintBeside(strategy);
        const bool meant = options.asksForDecision() || !std::filesystem::exists(strategy);
        return meant && std::filesystem::exists(path) ? std::optional(path) : std::nullopt;
    }
    for (const std::string& path : {options.what, inDirectory(options.directory, options.what)})
        if (isBlueprint(path))
            return path;
    return std::nullopt;
}

std::unique_ptr<DecisionTree> decisionsOf(const OpenedBlueprint& blueprint) {
    if (blueprint.ready)
        return std::make_unique<MenuDecisions>(*blueprint.game.rules, *blueprint.ready);
    return std::make_unique<LimitDecisions>(*blueprint.tree, *blueprint.play);
}

std::optional<int> ownSeatOf(const OpenedBlueprint& blueprint) {
    return blueprint.ready ? blueprint.ready->blueprint().origin().ownSeat : std::nullopt;
}

// The menu's lines, and whose blueprint it is where seats have others.
std::string menuText(const OpenedBlueprint& blueprint) {
    std::string text = blueprint.menu();
    if (const auto seat = ownSeatOf(blueprint))
        text += fmt::format("for seat {}\n", *seat);
    return text;
}

int showBlueprint(const std::string& path, const ShowArguments& options) {
    if (!options.html.empty())
        throw UsageError("--html: a blueprint is shown as text or --json so far");
    const auto board = parseCards(options.board);
    if (!board)
        throw UsageError("--board: " + board.error());
    const auto blueprint = openBlueprint(path, directoryOf(path, options.directory), options.game);
    if (!blueprint)
        return fail(blueprint.error());
    const auto tree = decisionsOf(*blueprint);
    const auto way = followActions(*tree, options.actions);
    if (!way)
        throw UsageError("--actions: " + way.error());
    const auto view = viewDecision(*blueprint->game.rules, *tree, *way, *board);
    if (!view)
        throw UsageError("--board: " + view.error());
    const uint64_t bytes = std::filesystem::file_size(path);
    if (options.json) {
        const BlueprintOrigin& origin = blueprint->origin();
        nlohmann::ordered_json json{{"game", blueprint->game.name},
                                    {"source", path},
                                    {"cards", origin.abstraction},
                                    {"iterations", origin.steps},
                                    {"seed", origin.seed},
                                    {"informationSets", blueprint->informationSets()},
                                    {"bytes", bytes}};
        if (const std::string menu = blueprint->menu(); !menu.empty())
            json["menu"] = menu;
        if (const auto seat = ownSeatOf(*blueprint))
            json["seat"] = *seat;
        json["decision"] = decisionJson(*view);
        printJson(json);
        return exitDone;
    }
    fmt::print("{}: {}, {} information sets, {}\n{}\n{}", path, blueprint->describe(),
               describeCount(blueprint->informationSets()), describeBytes(bytes),
               menuText(*blueprint), decisionText(*view));
    return exitDone;
}

int show(const ShowArguments& options) {
    if (Status free = checkOutputPlace(options.html, "<!doctype html>", "a page", "--html"); !free)
        return fail(free.error());
    if (const auto place = findAbstraction(options.what, options.directory))
        return showAbstraction(*place, options);
    if (!options.round.empty())
        return fail("there is no card abstraction " + options.what + ", and --round is of one");
    if (const auto blueprint = findBlueprint(options))
        return showBlueprint(*blueprint, options);
    if (options.asksForDecision())
        return fail("there is no blueprint " + options.what +
                    ", and --actions and --board are of one");
    if (const TableFile* table = tableNamed(options.what)) {
        const bool here = options.directory == "." || std::filesystem::exists(options.what);
        return showTable(*table, here ? options.what : inDirectory(options.directory, options.what),
                         options);
    }
    // A hold'em file lies in a directory that does not bear its game's name.
    const std::string named = options.what.ends_with(".game") ? options.what : options.game;
    if (!named.empty()) {
        const auto holdem = openHoldem(named, options.directory);
        if (!holdem)
            return fail(holdem.error());
        if (*holdem)
            return showHoldem(**holdem, options);
    }
    const auto shown = find(options);
    if (!shown)
        return fail(shown.error());
    if (options.wantsText())
        return showText(*shown, options.directory);
    const auto game = openSmallGame(shown->game, options.directory);
    if (!game)
        return fail(game.error());
    const auto profile = profileOf(*game->small, *shown);
    if (!profile)
        return fail(profile.error());
    const ProfileValue value = evaluateProfile(*game->small, *profile);
    return showJsonOrPage(
        options, [&] { return asJson(*game, *profile, value, shown->source); },
        [&] { return strategyPage(*game, *profile, value, shown->source); });
}

} // namespace

void addShowCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<ShowArguments>();
    CLI::App& command = addCommand(
        app, "show", "Print a strategy, a table or a card abstraction as text, JSON or a page",
        "tamarin show kuhn.limit.3p.game --html kuhn.html\n"
        "  tamarin show holdem.limit.2p.reverse_blinds.game\n"
        "  tamarin show run/strategies/holdem.limit.2p/blueprint --actions rc/c --board AsKd7c\n"
        "  tamarin show lookup/preflop_2p --html preflop.html\n"
        "  tamarin show lookup/169-200-200-200 --round flop --bucket 17\n\n"
        "Of hold'em, the first decisions before the flop: by bucket, and as the grid of "
        "starting\nhands, each with its likeliest action (f, c, r) and that action's "
        "percentage; suited\nhands above the diagonal. --json and --html go one action "
        "further. Of a blueprint, one decision: what each of the 169 starting hands does there, "
        "as far\nas it comes there, and with --json every hand on the board.");
    command
        .add_option("GAME|FILE", options->what,
                    "A game, for the strategies in the playing directory; a strategy file; or a "
                    "table or card abstraction below lookup/")
        ->required();
    command.add_option("--game", options->game,
                       "The file's game, where its directory does not tell");
    command.add_option("--html", options->html, "Write a self-contained page")->type_name("FILE");
    CLI::Option* const round =
        command
            .add_option("--round", options->round,
                        "Of a card abstraction this round only: preflop, flop, turn, river")
            ->type_name("ROUND");
    addWholeNumber(command, "--bucket", options->bucket, 0, mostBuckets - 1,
                   "Of that round this bucket: what it holds, and ten of its hands")
        ->needs(round);
    command
        .add_option("--actions", options->actions,
                    "Of a blueprint the decision after these actions, f, c and r, in no-limit "
                    "with the total raised to (r300c); rounds may be parted by /")
        ->type_name("ACTIONS");
    command
        .add_option("--board", options->board,
                    "The board there: 3, 4 or 5 cards; its first three are the flop")
        ->type_name("CARDS");
    addThreadsOption(command, options->threads)
        ->description("Threads that weigh a card abstraction; 0 for all cores");
    addDirectoryOption(command, options->directory);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = show(*options); });
}

} // namespace tamarin
