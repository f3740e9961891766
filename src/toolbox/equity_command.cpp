// tamarin equity: what a hand is worth against others, exactly where that takes seconds.
#include "eval/equity_question.h"
#include "support/clock.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "toolbox/abstraction_place.h"
#include "toolbox/command.h"
#include "toolbox/numbers.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

namespace tamarin {

namespace {

struct EquityArguments {
    std::string hand;
    std::string board;
    std::vector<std::string> against;
    int players = 0; // 0: two, or as many as are given
    bool exact = false;
    uint64_t deals = 0; // 0: exact if feasible, else the default sample
    uint64_t seed = 1;
    int threads = 0;
    AbstractionPlace place; // no name: no bucket is wanted
    bool json = false;
    bool quiet = false;
};

EquityQuestion readQuestion(const EquityArguments& options) {
    EquityQuestion question;
    std::vector<std::string> texts{options.hand};
    texts.insert(texts.end(), options.against.begin(), options.against.end());
    for (const std::string& text : texts) {
        auto range = parseHandRange(text);
        if (!range)
            throw UsageError(range.error());
        question.players.push_back(std::move(*range));
    }
    const auto board = parseCards(options.board);
    if (!board)
        throw UsageError(board.error());
    question.board = cardSetOf(*board);
    const int given = static_cast<int>(texts.size());
    const int players = options.players == 0 ? std::max(given, 2) : options.players;
    if (players < given)
        throw UsageError(
            fmt::format("--players {} is fewer than the {} hands given", players, given));
    question.randomOpponents = players - given;
    return question;
}

std::string describeOpponents(const EquityArguments& options, int randomOpponents) {
    std::vector<std::string> opponents = options.against;
    if (randomOpponents > 0)
        opponents.push_back(
            fmt::format("{} random hand{}", randomOpponents, randomOpponents == 1 ? "" : "s"));
    return fmt::format("{}", fmt::join(opponents, " and "));
}

// The hand's bucket, where one is wanted; nothing also for cards that no hand has, which the
// counting refuses. Ahead of the counting, which may take long.
Result<std::optional<HandBucket>> findBucket(const EquityArguments& options) {
    if (options.place.name.empty())
        return std::optional<HandBucket>{};
    const auto hole = parseCards(options.hand);
    if (!hole || hole->size() != 2) // a list has many buckets
        throw UsageError("--abstraction wants two hole cards, such as AsKd, not " + options.hand);
    const auto cards = parseCards(options.hand + " " + options.board);
    if (!cards || cards->size() == 3 || cards->size() == 4 || cards->size() > 7)
        return std::optional<HandBucket>{};
    const auto bucket = bucketOf(options.place, *cards);
    if (!bucket)
        return Error{bucket.error()};
    return std::optional{*bucket};
}

// Shown only when the answer takes its time.
class LateProgress {
public:
    explicit LateProgress(bool quiet) : quiet_(quiet), start_(steadyClock().now()) {}
    void update(uint64_t done, uint64_t total) {
        if (quiet_)
            return;
        if (!progress_) {
            if (steadyClock().now() - start_ < std::chrono::seconds(1))
                return;
            progress_.emplace("Comparing hands", "steps", total);
        }
        progress_->update(done);
    }

private:
    bool quiet_;
    TimePoint start_;
    std::optional<Progress> progress_;
};

int equity(const EquityArguments& options) {
    const EquityQuestion question = readQuestion(options);
    const auto bucket = findBucket(options);
    if (!bucket)
        return fail(bucket.error());
    EquityOptions how;
    how.seed = options.seed;
    how.threads = options.threads;
    if (options.exact)
        how.method = EquityMethod::exact;
    if (options.deals > 0) {
        how.method = EquityMethod::sampled;
        how.deals = options.deals;
    }
    LateProgress progress(options.quiet);
    how.progress = [&](uint64_t done, uint64_t total) { progress.update(done, total); };
    const auto answer = answerEquity(question, how);
    if (!answer) {
        complain(answer.error());
        return interrupted() ? interruptStatus() : exitFailed;
    }

    const Equity shares = equityOf(answer->counts);
    const double error = standardErrorOfPot(answer->counts);
    if (options.json) {
        nlohmann::ordered_json json{
            {"hand", options.hand},
            {"board", options.board},
            {"against", options.against},
            {"randomOpponents", question.randomOpponents},
            {"method", answer->exact ? "exact" : "sampled"},
            {"deals", answer->counts.deals},
            {"win", shares.win},
            {"tie", shares.tie},
            {"loss", shares.loss},
            {"pot", shares.pot},
        };
        if (!answer->exact) {
            json["seed"] = options.seed;
            json["potStandardError"] = error;
            if (std::isfinite(answer->exactSeconds))
                json["exactSeconds"] = std::round(answer->exactSeconds);
        }
        if (*bucket)
            json["abstraction"] = (*bucket)->json();
        printJson(json);
        return exitDone;
    }
    fmt::print("{} against {}{}{}\n", options.hand,
               describeOpponents(options, question.randomOpponents),
               options.board.empty() ? "" : " on ", options.board);
    fmt::print("  win {:.3f} %  tie {:.3f} %  loss {:.3f} %  pot equity {:.3f} %\n",
               100 * shares.win, 100 * shares.tie, 100 * shares.loss, 100 * shares.pot);
    if (answer->exact)
        fmt::print("  exact: {} deals counted\n", describeCount(answer->counts.deals));
    else
        fmt::print("  sampled: {} deals, seed {}; pot equity within {:.3f} % (95 %)\n",
                   describeCount(answer->counts.deals), options.seed, 196 * error);
    if (!answer->exact && std::isfinite(answer->exactSeconds))
        fmt::print("  --exact counts every deal, in about {:.0f} s of one core\n",
                   answer->exactSeconds);
    if (*bucket)
        fmt::print("  {}\n", (*bucket)->text());
    return exitDone;
}

} // namespace

void addEquityCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<EquityArguments>();
    CLI::App& command = addCommand(
        app, "equity", "Win, tie, loss and pot equity of a hand against others",
        "tamarin equity AsKd\n"
        "  tamarin equity AsKd Qs8h3d --players 3\n"
        "  tamarin equity AsKd Qs8h3d --abstraction 169-200-200-200 --dir run\n"
        "  tamarin equity TT+,AKs --vs QQ --vs AKo,A5s-A2s\n"
        "  tamarin equity AA --players 6 --deals 10000000 --seed 7 --json\n\n"
        "Hands: AsKd, AKs, AKo, AK, TT, TT+, ATs+, 77-TT, A5s-A2s, random, and lists with commas.\n"
        "The answer is exact where that takes five seconds of two cores at most: nearly always "
        "for\n"
        "two or three players. Else it is sampled. Pot equity is the mean share of the pot, a tie "
        "being split.");
    command.add_option("HAND", options->hand, "The hand, or a list of hands")->required();
    command.add_option("BOARD", options->board, "Board of 3, 4 or 5 cards");
    command.add_option("--vs", options->against, "An opponent's hand, or list of hands")
        ->take_all()
        ->expected(1)
        ->type_name("HAND");
    addWholeNumber(command, "--players", options->players, 2, 10,
                   "Players in all; those without a hand get random cards")
        ->default_str("2, or as many as have hands");
    CLI::Option* exact =
        command.add_flag("--exact", options->exact, "Count every deal, however long that takes");
    addWholeNumber(command, "--deals", options->deals, 1, uint64_t{1} << 50,
                   "Sample this many deals (rounded up to 1,024s)")
        ->default_str("1000000 where it is not exact")
        ->excludes(exact);
    addAbstractionOption(command, options->place);
    addSeedOption(command, options->seed);
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.callback([options, &status] { status = equity(*options); });
}

} // namespace tamarin
