// tamarin analyse: takes the log of a match apart.
#include "report/analysis_page.h"
#include "report/analysis_report.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "toolbox/command.h"
#include "toolbox/known_strategies.h"
#include "toolbox/output_place.h"

#include <fstream>
#include <optional>

namespace tamarin {

namespace {

struct AnalyseArguments {
    std::string log;
    std::string game;
    std::string directory = ".";
    std::vector<std::string> strategies;
    std::string page;
    int threads = 0;
    bool json = false;
    bool quiet = false;
};

// The game that the log's first line names: "# tamarin match GAME seed 7 duplicate".
std::string gameOfLog(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    constexpr std::string_view head = "# tamarin match ";
    if (!std::getline(file, line) || !line.starts_with(head))
        return {};
    return line.substr(head.size(), line.find(' ', head.size()) - head.size());
}

// Hands as they come out of the log, freed of luck some thousands at a time.
class Reader {
public:
    Reader(const Game& game, MatchAnalysis& analysis, KnownStrategies* known,
           const AnalyseArguments& options)
        : game_(game), analysis_(analysis), known_(known), options_(options) {
        if (!options.quiet)
            progress_.emplace("Analysing hands", "hands", 0);
        work_.threads = options.threads;
        work_.stop = interrupted;
    }

    Status read() {
        // What the strategies take is spent on a log that can be read.
        if (known_ != nullptr)
            if (Status whole = followHandLog(&game_, options_.log,
                                             [](const LoggedHand&, size_t) { return Status(); });
                !whole)
                return whole;
        if (Status followed = followHandLog(
                &game_, options_.log,
                [&](const LoggedHand& hand, size_t line) { return take(hand, line); });
            !followed)
            return followed;
        if (Status done = addBatch(); !done)
            return done;
        if (progress_)
            progress_->finish(analysis_.hands());
        return {};
    }

private:
    struct Kept {
        LoggedHand hand;
        size_t line;
    };

    Status take(const LoggedHand& hand, size_t line) {
        constexpr size_t batch = 2048;
        if (names_.empty() && known_ != nullptr)
            if (Status told = tell(hand); !told)
                return told;
        kept_.push_back({hand, line});
        return kept_.size() < batch ? Status() : addBatch();
    }

    Status tell(const LoggedHand& first) {
        names_ = first.names;
        for (const std::string& text : options_.strategies) {
            const std::string name = parseNamedStrategy(text).name;
            if (std::ranges::find(names_, name) == names_.end())
                return Error{"--strategy: nobody in " + options_.log + " is named '" + name + "'"};
        }
        for (size_t player = 0; player < names_.size(); ++player)
            known_->tell(names_[player], player);
        if (!options_.quiet)
            remark("comparing all hands before the flop, some seconds");
        return known_->results().prepare(work_);
    }

    size_t numberOf(const std::string& name) const {
        return static_cast<size_t>(std::ranges::find(names_, name) - names_.begin());
    }

    Status addBatch() {
        std::vector<FreedHand> freed(kept_.size());
        if (known_ != nullptr) {
            std::vector<SeatedHand> seated;
            for (const Kept& kept : kept_)
                seated.push_back({playedHand(game_, kept.hand.state),
                                  {numberOf(kept.hand.names[0]), numberOf(kept.hand.names[1])},
                                  kept.hand.state.handId});
            auto all = known_->results().of(seated, work_);
            if (!all)
                return Error{all.error()};
            freed = std::move(*all);
        }
        for (size_t i = 0; i < kept_.size(); ++i)
            if (Status added = analysis_.add(kept_[i].hand, freed[i]); !added)
                return Error{options_.log + ":" + std::to_string(kept_[i].line) + ": " +
                             added.error()};
        kept_.clear();
        if (progress_)
            progress_->update(analysis_.hands());
        return interrupted() ? Status(stopped()) : Status();
    }

    const Game& game_;
    MatchAnalysis& analysis_;
    KnownStrategies* known_;
    const AnalyseArguments& options_;
    Work work_;
    std::vector<std::string> names_; // of the players, by number
    std::vector<Kept> kept_;
    std::optional<Progress> progress_;
};

int analyse(const AnalyseArguments& options) {
    std::vector<NamedStrategy> named;
    for (const std::string& text : options.strategies)
        named.push_back(parseNamedStrategy(text));
    const std::string name = options.game.empty() ? gameOfLog(options.log) : options.game;
    if (name.empty())
        throw UsageError("the log does not begin with the game's name; say it with --game");
    const auto game = openGameFile(name, options.directory);
    if (!game)
        return fail(game.error());
    if (!options.page.empty())
        if (Status place = checkOutputPlace(options.page, "<!doctype html>", "a page", "--html");
            !place)
            return fail(place.error());
    std::unique_ptr<KnownStrategies> known;
    if (!named.empty()) {
        auto opened = KnownStrategies::open(*game, options.directory, named);
        if (!opened)
            return fail(opened.error());
        known = std::move(*opened);
    }
    MatchAnalysis analysis(*game->rules);
    Reader reader(*game->rules, analysis, known.get(), options);
    if (Status read = reader.read(); !read)
        return stoppedOrFailed(read.error());
    if (analysis.hands() == 0)
        return fail(options.log + ": there is no hand in this log");
    const AnalysisReport report{options.log, game->name, game->rules.get(), &analysis};
    if (!options.page.empty())
        if (Status written = writeWholeFile(options.page, analysisPage(report)); !written)
            return fail(written.error());
    if (options.json)
        printJson(analysisAsJson(report));
    else if (options.page.empty())
        fmt::print("{}", analysisAsTable(report));
    return exitDone;
}

} // namespace

void addAnalyseCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<AnalyseArguments>();
    CLI::App& command = addCommand(
        app, "analyse", "Take the log of a match apart: who won what, where, and by luck or not",
        "tamarin analyse hands.log --dir run --strategy me=player --strategy other=rule\n\n"
        "Results come by seat, position, first action, round and cards, with 95 % intervals, and,\n"
        "where the log is one of duplicate deals, over their blocks. With the strategy of one\n"
        "player of a limit game for two they come freed of luck (AIVAT), unbiased whatever the\n"
        "other does; with both strategies every deal comes with its exact expectation, too.");
    command.add_option("LOG", options->log, "What 'tamarin match --log' has written")->required();
    command.add_option("--game", options->game,
                       "Game definition: a path, or a name in --dir or games/ (default: as the log "
                       "says)");
    command
        .add_option("--strategy", options->strategies,
                    "What a player plays by: call, raise, fold, uniform, rule, player (the file in "
                    "--dir), a folder with a file 'strategy', or a blueprint; once for each player")
        ->take_all()
        ->type_name("NAME=STRATEGY")
        ->default_str("");
    addDirectoryOption(command, options->directory);
    command.add_option("--html", options->page, "Write a self-contained page")->type_name("FILE");
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = analyse(*options); });
}

} // namespace tamarin
